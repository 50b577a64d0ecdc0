// The explorer's window: how it is found, and how the workers reach the UI thread through it.
#include "agent/apps/outlook/AsyncProcessingParams.h"
#include "agent/apps/outlook/OutlookController.h"
#include "foundation/Border.h"
#include "foundation/Log.h"

namespace vorlek {

std::pair<const wchar_t*, HWND> OutlookController::foundWindow_{nullptr, nullptr};
std::atomic<HWND> OutlookController::explorerWindow_ = nullptr;
WNDPROC OutlookController::previousWndProc_ = nullptr;

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

void OutlookController::SubclassExplorerWindow_() {
    if (explorerWindow_ != nullptr) {
        return;
    }
    const Outlook::_ExplorerPtr explorer = outlookApp_->ActiveExplorer();
    const HWND window = explorer ? FindExplorerWindow_(explorer->GetCaption()) : nullptr;
    if (window == nullptr) {
        return;
    }
    explorerWindow_ = window;
    const auto previous = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&NewSubclassProc_)));
    if (previous != &NewSubclassProc_) { // as after another controller: it must not come before itself
        previousWndProc_ = previous;
    }
}

void OutlookController::RestoreExplorerWindow_() {
    if (const HWND window = explorerWindow_.exchange(nullptr); window != nullptr) {
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previousWndProc_));
    }
}

LRESULT CALLBACK OutlookController::NewSubclassProc_(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const bool ours = message == WM_OPEN_BLOCKED_ITEM || message == WM_SEND_MAIL;
    if (AsyncProcessingParams* const params = ours ? AsyncProcessingParams::From(wParam) : nullptr) {
        const bool handled = Guard(logger_, LOG_SITE,
                                   {.exception = {L"Caught a vorlek exception: "},
                                    .comError = {L"Caught a com exception: "},
                                    .stdException = {L"Caught an exception: "},
                                    .other = {L"Caught for Unknown error"}},
                                   [&] {
                                       if (message == WM_OPEN_BLOCKED_ITEM) {
                                           params->GetController()->OpenInspector_(params);
                                       } else {
                                           LOG_INFO(logger_, L"Got WM_SEND_MAIL");
                                           params->GetController()->SendMail_(*params);
                                       }
                                   });
        if (handled) {
            return 1;
        }
    }
    return CallWindowProcW(previousWndProc_, window, message, wParam, lParam);
}

} // namespace vorlek
