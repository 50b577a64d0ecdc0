#pragma once
#include <filesystem>
#include <string>

#include "platform/Windows.h"

namespace stand_ins {

enum class ExplorerState { Shown, Disabled, Missing };

struct OutlookOptions {
    std::filesystem::path profile = {}; ///< folder that holds the stores and what was delivered
    std::wstring version = L"16.0.5.1";
    ExplorerState explorer = ExplorerState::Shown;
    bool strictThreads = false;           ///< direct calls from other threads: RPC_E_WRONG_THREAD
    bool keepsEntryIdOnMove = false;      ///< as a PST does; otherwise a move gives a new one
    HRESULT cancelledSendError = E_ABORT; ///< what a program's Send meets when the event is cancelled; S_OK: nothing
    HRESULT deletedItemError = static_cast<HRESULT>(0x8004010F); ///< what GetItemFromID says of an item that is gone
};

} // namespace stand_ins
