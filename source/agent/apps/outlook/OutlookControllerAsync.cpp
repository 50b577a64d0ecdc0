// The inspection beside the send event: the worker that asks the agent, and what the UI thread makes of the answer.
#include "agent/apps/outlook/AsyncProcessingParams.h"
#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/OutlookController.h"
#include "agent/apps/outlook/WorkerThread.h"
#include "foundation/Border.h"
#include "foundation/Log.h"
#include "foundation/Throw.h"

namespace vorlek {
namespace {

constexpr std::size_t kRuleLength = 76;

/// What a failing worker says; a worker that cannot be started has failed.
constexpr BorderPhrases kWorkerPhrases = {
    .exception = {L"Exception:Failed to process message asynchronously: "},
    .comError = {L"Caught a com error: "},
    .stdException = {L"Outlook Exception"},
    .other = {L"Exception:Unknown error occured while processing item asynchronously."},
};

} // namespace

void OutlookController::HandleAsyncInspection_(const std::shared_ptr<ItemHandler>& handler) {
    LOG_INFO(logger_, L"Non-embedded Outlook -> Sending for \"async\" inspection. Stopping the send process until "
                      L"inspection ends.");
    const std::wstring itemId = handler->GetItemUniqueID();
    CommonUtils::AddToInspectedItems(itemId, handler->GetSentItemUniqueID(), logger_);
    handler->Close();
    SubclassExplorerWindow_();
    auto message = std::make_unique<CInspectorMessage>(CreateInspectionMessage_(handler));
    auto params = std::make_unique<AsyncProcessingParams>(this, itemId, message.get());
    // Without a worker the item stays where it is, saved and in the ledger; it does not leave uninspected.
    const bool started =
        Guard(logger_, LOG_SITE, kWorkerPhrases, [&] { WorkerThread::Start(InspectItemAsync_, params.get()); });
    if (!started) {
        CommonUtils::ShowUnsentItemsWarning(logger_);
        return;
    }
    static_cast<void>(params.release()); // both are the worker's now
    static_cast<void>(message.release());
}

DWORD WINAPI OutlookController::InspectItemAsync_(void* parameter) {
    std::unique_ptr<AsyncProcessingParams> params(static_cast<AsyncProcessingParams*>(parameter));
    const std::unique_ptr<CInspectorMessage> message(params->GetInspectorMessage());
    OutlookController& controller = *params->GetController();
    if (!Guard(logger_, LOG_SITE, kWorkerPhrases, [&] { controller.InspectInWorker_(std::move(params), *message); })) {
        CommonUtils::ShowUnsentItemsWarning(logger_);
    }
    return 0;
}

void OutlookController::InspectInWorker_(std::unique_ptr<AsyncProcessingParams> params,
                                         const CInspectorMessage& message) {
    LOG_INFO(logger_, std::wstring(kRuleLength, L'>'));
    LOG_INFO(logger_, L"Started Async inspection.");
    const DATE before = GetLastModification_(*params);
    LogMessage_(message);
    std::shared_ptr<InspectionDecision> decision = StartInspection_(message);
    if (decision->GetResult() != InspectionDecision::kBlock && !CheckModified_(before, GetLastModification_(*params))) {
        params->SetDecision(std::move(decision));
        LOG_INFO(logger_, L"Sending WM_SEND_MAIL");
        SendMessageW(explorerWindow_, WM_SEND_MAIL, reinterpret_cast<WPARAM>(params.get()), 0);
        params.reset();
    } else {
        LogMessage_(message);
        PostToOpen_(std::move(params));
    }
    LOG_INFO(logger_, L"Finished Async inspection successfully.");
    LOG_INFO(logger_, std::wstring(kRuleLength, L'<'));
}

void OutlookController::PostToOpen_(std::unique_ptr<AsyncProcessingParams> params) {
    const HWND window = explorerWindow_;
    if (window == nullptr) {
        LOG_WARN(logger_, L"No outlook explorer window was found");
    } else if (PostMessageW(window, WM_OPEN_BLOCKED_ITEM, reinterpret_cast<WPARAM>(params.get()), 0)) {
        static_cast<void>(params.release()); // the UI thread's, which may have destroyed them already
    } else {
        LOG_WARN(logger_, L"PostMessageW failed with: " << GetLastError());
    }
}

void OutlookController::LogMessage_(const CInspectorMessage& message) {
    if (log4cxx::Logger::isDebugEnabledFor(logger_)) {
        const std::wstring text = message.GetFormattedMessage();
        LOG_DEBUG(logger_, L"Inspection message of size " << text.size() << L": " << text);
    }
}

bool OutlookController::CheckModified_(DATE before, DATE after) {
    bool modified = false;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {},
           .stdException = {},
           .other = {L"Could not check if item was modified - returning false"}},
          [&] {
              LOG_INFO(logger_, L"The email wasn't blocked - make sure it wasn't modified.");
              constexpr DATE unknown = 0.0; // the reading failed
              if (after > before && before != unknown) {
                  LOG_ERROR(logger_, L"The mail item was modified during the inspection!!");
                  MessageBoxW(nullptr, L"The mail item was modified during inspection and was not sent.",
                              L"Microsoft Outlook", MB_OK | MB_ICONEXCLAMATION);
                  modified = true;
              }
          });
    return modified;
}

void OutlookController::SendMail_(const AsyncProcessingParams& params) {
    LOG_INFO(logger_, L"Sending (non-blocked) item." << params.GetItemId());
    const std::shared_ptr<ItemHandler> handler(FindItem_(params.GetItemId()));
    if (!handler) {
        LOG_ERROR(logger_, L"Could not send the mail item - NULL handler.");
        return;
    }
    if (!ApplyModifications_(handler, params.GetDecision())) {
        Throw(L"vorlek::OutlookController::SendMail_", L"Failed to replace attacments!");
    }
    // Before the send, which raises ItemSend inside itself and must then be known as our own.
    sentItems_.Insert(handler->GetSentItemUniqueID(), DateTime(DateTime::Utc));
    LOG_INFO(logger_, L"now doing the handler->send()");
    handler->Send();
    LOG_INFO(logger_, L"after handler->send. Item was sent.");
}

void OutlookController::OpenInspector_(AsyncProcessingParams* params) {
    const std::unique_ptr<AsyncProcessingParams> owned(params);
    LOG_INFO(logger_, L"Opening (blocked) item.");
    if (const std::shared_ptr<ItemHandler> handler(FindItem_(params->GetItemId())); handler) {
        handler->Display();
    } else {
        LOG_WARN(logger_, L"Couldn't find the outlook item which needs to be opened");
    }
    CommonUtils::RemoveFromInspectedItems(params->GetItemId(), logger_);
}

} // namespace vorlek
