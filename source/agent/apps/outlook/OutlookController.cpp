#include "agent/apps/outlook/OutlookController.h"

#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/EmbeddedStart.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "agent/apps/outlook/ItemHandlerFactory.h"
#include "foundation/Border.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/Throw.h"
#include "plugin-link/Vocabulary.h"

namespace vorlek {

LoggerHolder OutlookController::logger_;
std::pair<const wchar_t*, HWND> OutlookController::foundWindow_{nullptr, nullptr};
HWND OutlookController::explorerWindow_ = nullptr;
WNDPROC OutlookController::previousWndProc_ = nullptr;

OutlookController::OutlookController() {
    explorerWindow_ = nullptr;
    StartLog(nullptr, false);
    InitLogger(logger_, "vorlek::OutlookController::OutlookController", false);
}

OutlookController::~OutlookController() {
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
    const bool decided = Guard(logger_, LOG_SITE,
                               {.exception = {},
                                .comError = {L"InspectItemBeforeSending:COM error= "},
                                .stdException = {L"InspectItemBeforeSending:exception. what= "},
                                .other = {L"InspectItemBeforeSending:exception occured "}},
                               [&] { cancel = Decide_(item); });
    return decided && cancel;
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

HWND OutlookController::FindExplorerWindow_(const _bstr_t& caption) {
    if (foundWindow_.second == nullptr) {
        foundWindow_.first = caption.length() == 0 ? L"" : static_cast<const wchar_t*>(caption);
        EnumThreadWindows(GetCurrentThreadId(), IsExplorerWindow_, reinterpret_cast<LPARAM>(&foundWindow_));
        foundWindow_.first = nullptr; // the caption goes with its owner
    }
    return foundWindow_.second;
}

BOOL CALLBACK OutlookController::IsExplorerWindow_(HWND window, LPARAM searched) {
    auto& [caption, found] = *reinterpret_cast<std::pair<const wchar_t*, HWND>*>(searched);
    // Reading no more than the caption's length makes a title that begins with it match too: Outlook was
    // seen to add to its title what the caption lacks.
    const std::wstring wanted = caption;
    std::wstring title(wanted.size() + 1, L'\0');
    title.resize(static_cast<std::size_t>(GetWindowTextW(window, title.data(), static_cast<int>(title.size()))));
    if (title.empty() || title != wanted) {
        return TRUE;
    }
    found = window;
    return FALSE;
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
    if (decision->GetResult() == InspectionDecision::kBlock) {
        return true;
    }
    if (decision->HasModifications()) {
        handler->ApplyDataLabel(decision);
        const InspectionDecision::Attachments attachments = decision->GetAttachments();
        if (!attachments.empty() && !handler->OverrideItemAttachments(attachments)) {
            LOG_ERROR(logger_, L"Failed to override attachments - cannot send the email");
            return true;
        }
    }
    return false;
}

void OutlookController::HandleAsyncInspection_(const std::shared_ptr<ItemHandler>&) {
    Throw<NotImplementedException>(L"vorlek::OutlookController::HandleAsyncInspection_",
                                   L"Inspection beside the send event is not available");
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

void OutlookController::HandleIncompleteInspections() {
    LOG_INFO(logger_, L"Sending items that were in the middle of inspection when Outlook was closed.");
    if (embeddedProcess_) {
        LOG_INFO(logger_, L"Outlook is embedded - skipping resending of inspected items");
        return;
    }
    Throw<NotImplementedException>(L"vorlek::OutlookController::HandleIncompleteInspections",
                                   L"Resending of inspected items is not available");
}

void OutlookController::RestoreExplorerWindow_() {
    if (explorerWindow_ != nullptr) {
        SetWindowLongPtrW(explorerWindow_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previousWndProc_));
        explorerWindow_ = nullptr;
    }
}

} // namespace vorlek
