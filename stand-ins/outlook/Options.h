#pragma once
#include <filesystem>
#include <string>

#include "platform/Windows.h"

namespace stand_ins {

enum class ExplorerState { Shown, Disabled, Missing };

/// What the user writes in, before Outlook 2007: Outlook's own editor, or Word, whose window is one of its own and may
/// bear another title than Outlook says. Later versions have Word's editor inside Outlook's window.
enum class Editor { Outlook, Word, WordUnderAnotherTitle };

struct OutlookOptions {
    std::filesystem::path profile = {}; ///< folder that holds the stores and what was delivered
    std::wstring version = L"16.0.5.1";
    ExplorerState explorer = ExplorerState::Shown;
    Editor editor = Editor::Outlook;
    std::wstring userAddress = L"anna@example.com"; ///< SMTP, of the user whose profile it is
    bool strictThreads = false;                     ///< direct calls from other threads: RPC_E_WRONG_THREAD
    bool keepsEntryIdOnMove = false;                ///< as a PST does; otherwise a move gives a new one
    HRESULT cancelledSendError = E_ABORT; ///< what a program's Send meets when the event is cancelled; S_OK: nothing
    HRESULT deletedItemError = static_cast<HRESULT>(0x8004010F); ///< what GetItemFromID says of an item that is gone
};

} // namespace stand_ins
