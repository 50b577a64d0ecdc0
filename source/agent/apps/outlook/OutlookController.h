#pragma once
#include <atomic>
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

class AsyncProcessingParams;

/// The centre of the add-in: decides for each item that Outlook is about to send whether it passes, stops
/// or waits for the agent. One per process, used on Outlook's UI thread; a worker of its own inspects what
/// is not inspected inside the send event.
class OutlookController {
public:
    OutlookController();
    OutlookController(const OutlookController&) = delete;
    OutlookController& operator=(const OutlookController&) = delete;
    virtual ~OutlookController();

    /// Learns what is needed of this Outlook: how it was started, its default folders and its version.
    /// Raises _com_error without a session's folders or without an application.
    void InitApplication(Outlook::_ApplicationPtr app);
    /// Sends the items that the ledger still lists from an earlier run, which inspects them from the start;
    /// Outlook before 2007 shows them instead. In an embedded Outlook they wait. The failure of one item is
    /// logged, and the item stays listed.
    void HandleIncompleteInspections();
    /// Whether the send of the item is to be cancelled. Raises what the agent link raises if the agent
    /// cannot be asked for its mode; every later failure lets the item pass.
    bool InspectItemBeforeSending(IDispatchPtr item);
    /// Gives the explorer window its own procedure back, if it was replaced.
    void RestoreExplorerWindow_();

private:
    friend struct OutlookControllerPeer; // the tests' view of what Outlook alone cannot bring about

    static constexpr std::uint64_t SENT_ITEM_GRACE_MS = 10000;

    /// From a worker to the explorer's window, each with its AsyncProcessingParams.
    static constexpr UINT WM_SEND_MAIL = WM_USER + 38;         ///< sent: the worker waits until the item has left
    static constexpr UINT WM_OPEN_BLOCKED_ITEM = WM_USER + 39; ///< posted: the parameters are the window's

    void InitInspectionFolder_(Outlook::_ApplicationPtr app);
    std::int32_t InitOutlookVersion_();

    bool Decide_(const IDispatchPtr& item);
    bool IsPluginDisabled_();
    bool IsEmbedded_();
    bool IsSentByPlugin_(const std::shared_ptr<ItemHandler>& handler);
    bool IsSentByPlugin_(const std::shared_ptr<ItemHandler>& handler, const DateTime& now);
    bool HandleSyncInspection_(const std::shared_ptr<ItemHandler>& handler);
    /// Makes the changes that the agent asks for. False: the attachments could not be replaced.
    bool ApplyModifications_(const std::shared_ptr<ItemHandler>& handler,
                             const std::shared_ptr<InspectionDecision>& decision);
    CInspectorMessage CreateInspectionMessage_(const std::shared_ptr<ItemHandler>& handler);
    std::shared_ptr<InspectionDecision> StartInspection_(const CInspectorMessage& message);

    void HandleAsyncInspection_(const std::shared_ptr<ItemHandler>& handler);
    /// The worker's procedure, with its AsyncProcessingParams; the result is 0. Nothing gets out of it.
    static DWORD WINAPI InspectItemAsync_(void* parameter);
    void InspectInWorker_(std::unique_ptr<AsyncProcessingParams> params, const CInspectorMessage& message);
    static void PostToOpen_(std::unique_ptr<AsyncProcessingParams> params);
    static void LogMessage_(const CInspectorMessage& message);
    /// Whether an item changed between two readings of its modification time, 0.0 being one that failed. If
    /// so, the user has been told.
    static bool CheckModified_(DATE before, DATE after);
    /// On the UI thread, for WM_SEND_MAIL. Raises what FindItem_ raises, and Exception for attachments that
    /// cannot be replaced: the item then stays.
    void SendMail_(const AsyncProcessingParams& params);
    /// On the UI thread, for WM_OPEN_BLOCKED_ITEM: shows the item to the user, whose it is again. Takes the
    /// parameters over. Raises what FindItem_ raises, and _com_error if the item cannot be shown.
    void OpenInspector_(AsyncProcessingParams* params);

    /// A new handler of the item with the ID, the caller's; null for an empty ID, without an application or
    /// a session, and for an item of no supported kind. Raises Exception if the item is nowhere. On any
    /// thread.
    ItemHandler* FindItem_(const std::wstring& itemId);
    /// Tries the stores of the folders of the first two levels. Null if none of them has the item.
    IDispatchPtr FindItemInAllFolders_(const std::wstring& itemId);
    IDispatchPtr TryStoreOf_(Outlook::_NameSpace& session, Outlook::MAPIFolder& folder, const std::wstring& itemId);
    /// As FindItem_, but raises _com_error where that gives null.
    std::shared_ptr<ItemHandler> RequireItem_(const std::wstring& itemId);
    /// Outlook's local time of the item's last save; 0.0 if it cannot be read.
    DATE GetLastModification_(const AsyncProcessingParams& params);
    void Resume_(const std::wstring& itemId);

    static HWND FindExplorerWindow_(const _bstr_t& caption);
    static BOOL CALLBACK IsExplorerWindow_(HWND window, LPARAM searched);
    /// Once per process, at the first inspection: puts NewSubclassProc_ before the window's own procedure.
    void SubclassExplorerWindow_();
    static LRESULT CALLBACK NewSubclassProc_(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    static LoggerHolder logger_;
    /// The caption looked for, and the window found: once found it is kept for the life of the process.
    static std::pair<const wchar_t*, HWND> foundWindow_;
    /// Null when no window is subclassed; the workers read it while the UI thread clears it.
    static std::atomic<HWND> explorerWindow_;
    static WNDPROC previousWndProc_;

    bool embeddedProcess_ = false;                    ///< Outlook was started for automation
    ThreadSafeMap<std::wstring, DateTime> sentItems_; ///< what the add-in sends itself, and when
    Outlook::_ApplicationPtr outlookApp_;
    Outlook::MAPIFolderPtr outboxFolder_;
    Outlook::MAPIFolderPtr draftsFolder_;
    _bstr_t draftsStoreId_;
    _bstr_t outboxStoreId_;
    PluginUtils::CConnectionManager connectionManager_;
};

} // namespace vorlek
