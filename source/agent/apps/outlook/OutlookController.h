#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "agent/apps/outlook/ItemHandler.h"
#include "foundation/DateTime.h"
#include "foundation/LoggerHolder.h"
#include "foundation/ThreadSafeMap.h"
#include "platform/outlook/Outlook.h"
#include "plugin-link/CInspectorMessage.h"
#include "plugin-link/ConnectionManager.h"
#include "plugin-link/InspectionDecision.h"

namespace vorlek {

/// The centre of the add-in: decides for each item that Outlook is about to send whether it passes, stops
/// or waits for the agent. One per process, used on Outlook's UI thread.
class OutlookController {
public:
    OutlookController();
    OutlookController(const OutlookController&) = delete;
    OutlookController& operator=(const OutlookController&) = delete;
    virtual ~OutlookController();

    /// Learns what is needed of this Outlook: how it was started, its default folders and its version.
    /// Raises _com_error without a session's folders or without an application.
    void InitApplication(Outlook::_ApplicationPtr app);
    /// Deals with the items that the ledger still lists from an earlier run. In an embedded Outlook they
    /// wait. Raises NotImplementedException where Outlook is not embedded.
    void HandleIncompleteInspections();
    /// Whether the send of the item is to be cancelled. Raises what the agent link raises if the agent
    /// cannot be asked for its mode; every later failure lets the item pass.
    bool InspectItemBeforeSending(IDispatchPtr item);
    /// Gives the explorer window its own procedure back, if it was replaced.
    void RestoreExplorerWindow_();

private:
    friend struct OutlookControllerPeer; // the tests' view of what Outlook alone cannot bring about

    static constexpr std::uint64_t SENT_ITEM_GRACE_MS = 10000;

    void InitInspectionFolder_(Outlook::_ApplicationPtr app);
    std::int32_t InitOutlookVersion_();

    bool Decide_(const IDispatchPtr& item);
    bool IsPluginDisabled_();
    bool IsEmbedded_();
    bool IsSentByPlugin_(const std::shared_ptr<ItemHandler>& handler);
    bool IsSentByPlugin_(const std::shared_ptr<ItemHandler>& handler, const DateTime& now);
    bool HandleSyncInspection_(const std::shared_ptr<ItemHandler>& handler);
    void HandleAsyncInspection_(const std::shared_ptr<ItemHandler>& handler);
    CInspectorMessage CreateInspectionMessage_(const std::shared_ptr<ItemHandler>& handler);
    std::shared_ptr<InspectionDecision> StartInspection_(const CInspectorMessage& message);
    static HWND FindExplorerWindow_(const _bstr_t& caption);
    static BOOL CALLBACK IsExplorerWindow_(HWND window, LPARAM searched);

    static LoggerHolder logger_;
    /// The caption looked for, and the window found: once found it is kept for the life of the process.
    static std::pair<const wchar_t*, HWND> foundWindow_;
    static HWND explorerWindow_;
    static WNDPROC previousWndProc_;

    bool embeddedProcess_ = false;
    ThreadSafeMap<std::wstring, DateTime> sentItems_; ///< what the add-in sends itself, and when
    Outlook::_ApplicationPtr outlookApp_;
    Outlook::MAPIFolderPtr outboxFolder_;
    Outlook::MAPIFolderPtr draftsFolder_;
    _bstr_t draftsStoreId_;
    _bstr_t outboxStoreId_;
    PluginUtils::CConnectionManager connectionManager_;
};

} // namespace vorlek
