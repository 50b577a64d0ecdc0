#include "agent/apps/outlook/OutlookController.h"

#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/EmbeddedStart.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "agent/apps/outlook/ItemHandlerFactory.h"
#include "foundation/Border.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "plugin-link/Vocabulary.h"

namespace vorlek {

LoggerHolder OutlookController::logger_;

OutlookController::OutlookController() {
    explorerWindow_ = nullptr;
    StartLog(nullptr, false);
    InitLogger(logger_, "vorlek::OutlookController::OutlookController", false);
}

OutlookController::~OutlookController() {
    RestoreExplorerWindow_(); // of an add-in that goes without having been disconnected
    sentItems_.Clear();
}

void OutlookController::InitApplication(Outlook::_ApplicationPtr app) {
    LOG_INFO(logger_, L"Initializing OutlookController");
    outlookApp_ = app;
    embeddedProcess_ = IsEmbeddedStart(GetProcessArguments());
    InitInspectionFolder_(app);
    InitOutlookVersion_();
    LOG_INFO(logger_, L"Initializiation of OutlookController finished.");
}

void OutlookController::InitInspectionFolder_(Outlook::_ApplicationPtr app) {
    const Outlook::_NameSpacePtr session = app->GetSession();
    if (!session) {
        return;
    }
    outboxFolder_ = session->GetDefaultFolder(Outlook::olFolderOutbox);
    if (!outboxFolder_) {
        LOG_ERROR(logger_, L"Failed to retrieve Outbox folder.");
    }
    outboxStoreId_ = outboxFolder_->GetStoreID(); // a null folder raises E_POINTER
    if (outboxStoreId_.length() == 0) {
        LOG_WARN(logger_, L"Outbox store ID is empty!");
    }
    draftsFolder_ = session->GetDefaultFolder(Outlook::olFolderDrafts);
    if (!draftsFolder_) {
        LOG_ERROR(logger_, L"Failed to retrieve Drafts folder.");
    }
    draftsStoreId_ = draftsFolder_->GetStoreID();
    if (draftsStoreId_.length() == 0) {
        LOG_WARN(logger_, L"Drafts store ID is empty!");
    }
}

std::int32_t OutlookController::InitOutlookVersion_() {
    const std::int32_t version = GlobalConfig::GetOutlookMajorVersion();
    if (outlookApp_ && version <= 0) {
        GlobalConfig::SetOutlookMajorVersion(platform::ToWide(outlookApp_->GetVersion()), logger_);
    }
    return version;
}

bool OutlookController::InspectItemBeforeSending(IDispatchPtr item) {
    LOG_INFO(logger_, L" InspectItemBeforeSending-----------------------------------------------------------------");
    // Outside the guarded region: an agent that is gone stops the mail here, while one that is lost in the
    // middle of an inspection lets it pass.
    if (IsPluginDisabled_()) {
        LOG_INFO(logger_, L"Plugin disabled. Canceling Inspecting outbox folder.");
        return false;
    }
    bool cancel = false;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"InspectItemBeforeSending:COM error= "},
           .stdException = {L"InspectItemBeforeSending:exception. what= "},
           .other = {L"InspectItemBeforeSending:exception occured "}},
          [&] { cancel = Decide_(item); });
    return cancel;
}

bool OutlookController::Decide_(const IDispatchPtr& item) {
    const std::shared_ptr<ItemHandler> handler(ItemHandlerFactory().CreateItemHandler(item));
    if (!handler) {
        LOG_INFO(logger_, L"Unsupported item was passed -> allowing to send the item");
        return false;
    }
    if (GlobalConfig::IsOutlookBefore2007()) {
        handler->Save();
    }
    if (IsEmbedded_() || handler->HandleOnSpot()) {
        return HandleSyncInspection_(handler);
    }
    if (IsSentByPlugin_(handler)) {
        LOG_INFO(logger_, L"InspectItemBeforeSending:success on async sentbyplugin.returning false");
        return false;
    }
    HandleAsyncInspection_(handler);
    return true;
}

bool OutlookController::IsPluginDisabled_() {
    return connectionManager_.GetExecutionMode(vocabulary::channel::kEmail) == 0;
}

bool OutlookController::IsEmbedded_() {
    if (embeddedProcess_) {
        LOG_DEBUG(logger_, L"Outlook process was loaded as embedded, embeddedProcess_ == true");
        return true;
    }
    if (!outlookApp_) {
        LOG_DEBUG(logger_, L"outlookApp_ == NULL");
        return false;
    }
    const Outlook::_ExplorerPtr explorer = outlookApp_->ActiveExplorer();
    if (!explorer) {
        LOG_DEBUG(logger_, L"Couldn't find active explorer - assuming Outlook is embedded");
        return true;
    }
    const bool enabled = IsWindowEnabled(FindExplorerWindow_(explorer->GetCaption())) != FALSE;
    LOG_DEBUG(logger_, L"Active explorer window IsWindowEnabled == " << enabled);
    return !enabled;
}

bool OutlookController::IsSentByPlugin_(const std::shared_ptr<ItemHandler>& handler) {
    return IsSentByPlugin_(handler, DateTime(DateTime::Utc));
}

bool OutlookController::IsSentByPlugin_(const std::shared_ptr<ItemHandler>& handler, const DateTime& now) {
    LOG_INFO(logger_, L"IsSentByPlugin_?");
    if (!handler) {
        LOG_INFO(logger_, L"Unsupported item was passed -> allowing to send the item");
        return true;
    }
    const std::wstring id = handler->GetSentItemUniqueID();
    LOG_INFO(logger_, L"Checking if item with ID " << id << L" should be inspected");
    const auto sent = sentItems_.Find(id);
    if (!sent) {
        LOG_INFO(logger_, L"Item should be inspected - wasn't sent by the plugin");
        return false;
    }
    // Unsigned: a clock that was set back in between gives a huge difference, and so an inspection.
    const auto elapsed =
        static_cast<std::uint64_t>(now.ToMilliseconds()) - static_cast<std::uint64_t>(sent->ToMilliseconds());
    sentItems_.Erase(id); // an entry answers one send only
    if (elapsed <= SENT_ITEM_GRACE_MS) {
        LOG_INFO(logger_, L"Item was already inspected by the plugin so we don't reinspect it");
        return true;
    }
    LOG_INFO(logger_, L"Item should be inspected - sent by the plugin - but " << elapsed << L" ms ago");
    return false;
}

bool OutlookController::HandleSyncInspection_(const std::shared_ptr<ItemHandler>& handler) {
    LOG_INFO(logger_, L"Embedded Outlook -> Sending for \"synchronized\" inspection");
    const auto decision = StartInspection_(CreateInspectionMessage_(handler));
    return decision->GetResult() == InspectionDecision::kBlock || !ApplyModifications_(handler, decision);
}

bool OutlookController::ApplyModifications_(const std::shared_ptr<ItemHandler>& handler,
                                            const std::shared_ptr<InspectionDecision>& decision) {
    if (decision->HasModifications()) {
        handler->ApplyDataLabel(decision);
        const InspectionDecision::Attachments attachments = decision->GetAttachments();
        if (!attachments.empty() && !handler->OverrideItemAttachments(attachments)) {
            LOG_ERROR(logger_, L"Failed to override attachments - cannot send the email");
            return false;
        }
    }
    return true;
}

CInspectorMessage OutlookController::CreateInspectionMessage_(const std::shared_ptr<ItemHandler>& handler) {
    CInspectorMessage message(vocabulary::channel::kEmail);
    handler->FillInspectorMessage(message);
    LOG_INFO(logger_, L"Finished gathering information for current message.");
    return message;
}

std::shared_ptr<InspectionDecision> OutlookController::StartInspection_(const CInspectorMessage& message) {
    auto decision = connectionManager_.Inspect(message);
    LOG_INFO(logger_, L"Got decision: " << decision->GetResult());
    if (decision->GetResult() == InspectionDecision::kBlock) {
        LOG_INFO(logger_, L"Message should be blocked!");
    } else {
        LOG_INFO(logger_, L"Message can be sent");
    }
    return decision;
}

} // namespace vorlek
