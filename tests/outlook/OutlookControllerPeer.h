#pragma once
#include "agent/apps/outlook/AsyncProcessingParams.h"
#include "agent/apps/outlook/OutlookController.h"

namespace vorlek {

/// The tests' view of a controller's inside.
struct OutlookControllerPeer {
    static constexpr UINT kSendMail = OutlookController::WM_SEND_MAIL;
    static constexpr UINT kOpenBlockedItem = OutlookController::WM_OPEN_BLOCKED_ITEM;

    OutlookController& controller;

    void SetEmbedded(bool embedded) { controller.embeddedProcess_ = embedded; }
    bool IsEmbeddedProcess() const { return controller.embeddedProcess_; }
    void SetApplication(const Outlook::_ApplicationPtr& app) { controller.outlookApp_ = app; }
    bool IsEmbedded() { return controller.IsEmbedded_(); }
    bool IsSentByPlugin(const std::shared_ptr<ItemHandler>& handler, const DateTime& now) {
        return controller.IsSentByPlugin_(handler, now);
    }
    bool IsSentByPlugin(const std::shared_ptr<ItemHandler>& handler) { return controller.IsSentByPlugin_(handler); }
    void Remember(const std::wstring& id, const DateTime& sent) { controller.sentItems_.Insert(id, sent); }
    bool Remembers(const std::wstring& id) const { return controller.sentItems_.Find(id).has_value(); }
    CInspectorMessage CreateInspectionMessage(const std::shared_ptr<ItemHandler>& handler) {
        return controller.CreateInspectionMessage_(handler);
    }
    void HandleAsyncInspection(const std::shared_ptr<ItemHandler>& handler) {
        controller.HandleAsyncInspection_(handler);
    }
    static DWORD InspectItemAsync(AsyncProcessingParams* params) {
        return OutlookController::InspectItemAsync_(params);
    }
    static bool CheckModified(DATE before, DATE after) { return OutlookController::CheckModified_(before, after); }
    void SendMail(const AsyncProcessingParams& params) { controller.SendMail_(params); }
    void OpenInspector(AsyncProcessingParams* params) { controller.OpenInspector_(params); }
    std::shared_ptr<ItemHandler> FindItem(const std::wstring& id) {
        return std::shared_ptr<ItemHandler>(controller.FindItem_(id));
    }
    IDispatchPtr FindItemInAllFolders(const std::wstring& id) { return controller.FindItemInAllFolders_(id); }
    DATE GetLastModification(const std::wstring& id) {
        return controller.GetLastModification_(AsyncProcessingParams(&controller, id, nullptr));
    }
    void Subclass() { controller.SubclassExplorerWindow_(); }
    std::int32_t InitOutlookVersion() { return controller.InitOutlookVersion_(); }
    const _bstr_t& OutboxStoreId() const { return controller.outboxStoreId_; }
    const _bstr_t& DraftsStoreId() const { return controller.draftsStoreId_; }

    static HWND FoundWindow() { return OutlookController::foundWindow_.second; }
    /// As at the start of a process.
    static void ForgetWindows() {
        OutlookController::foundWindow_ = {nullptr, nullptr};
        OutlookController::explorerWindow_ = nullptr;
        OutlookController::previousWndProc_ = nullptr;
    }
    static HWND SubclassedWindow() { return OutlookController::explorerWindow_; }
    static void SetSubclassed(HWND window, WNDPROC previous) {
        OutlookController::explorerWindow_ = window;
        OutlookController::previousWndProc_ = previous;
    }
};

} // namespace vorlek
