#pragma once
#include "agent/apps/outlook/OutlookController.h"
#include "agent/apps/outlook/Resource.h"
#include "foundation/LoggerHolder.h"
#include "platform/atl/atlcom.h"
#include "platform/outlook/Extensibility.h"
#include "platform/outlook/Outlook.h"

namespace vorlek {

/// {F7A9E3A1-9D13-4D56-933D-5E5D798CB042}, the class that Outlook creates
inline constexpr CLSID CLSID_Connect = {0xF7A9E3A1, 0x9D13, 0x4D56, {0x93, 0x3D, 0x5E, 0x5D, 0x79, 0x8C, 0xB0, 0x42}};
/// {0006304E-0000-0000-C000-000000000046}, Outlook's ApplicationEvents
inline constexpr IID DIID_ApplicationEvents = {
    0x0006304E, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

inline constexpr UINT kApplicationSink = 1;
inline constexpr DISPID kItemSend = 0xF002;
inline constexpr ATL::_ATL_FUNC_INFO kItemSendInfo = {CC_STDCALL, VT_EMPTY, 2, {VT_DISPATCH, VT_BYREF | VT_BOOL}};

/// The whole surface between Outlook and the add-in: loaded and unloaded by Outlook, and asked before each
/// send. Nothing that fails in here gets through to Outlook. Runs on Outlook's UI thread only; a send may
/// arrive while another one is being handled.
class CConnect
    : public ATL::CComObjectRootEx<ATL::CComSingleThreadModel>,
      public ATL::CComCoClass<CConnect, &CLSID_Connect>,
      public ATL::IDispatchImpl<_IDTExtensibility2, &IID__IDTExtensibility2, &LIBID_AddInDesignerObjects, 1, 0>,
      public ATL::IDispEventSimpleImpl<kApplicationSink, CConnect, &DIID_ApplicationEvents> {
public:
    DECLARE_REGISTRY_RESOURCEID(IDR_OUTLOOKQLTPLUGIN)

    BEGIN_COM_MAP(CConnect)
    COM_INTERFACE_ENTRY(_IDTExtensibility2)
    COM_INTERFACE_ENTRY(IDispatch)
    END_COM_MAP()

    BEGIN_SINK_MAP(CConnect)
    SINK_ENTRY_INFO(kApplicationSink, DIID_ApplicationEvents, kItemSend, &CConnect::OnMailSend, &kItemSendInfo)
    END_SINK_MAP()

    CConnect();

    /// S_FALSE when Application is no Outlook, otherwise S_OK whatever went wrong: Outlook must not hold a
    /// failure of the add-in's own start against it.
    HRESULT STDMETHODCALLTYPE OnConnection(IDispatch* Application, ext_ConnectMode ConnectMode, IDispatch* AddInInst,
                                           SAFEARRAY** custom) override;
    /// Inspections under way are not waited for: the ledger keeps their items for the next start.
    HRESULT STDMETHODCALLTYPE OnDisconnection(ext_DisconnectMode RemoveMode, SAFEARRAY** custom) override;
    HRESULT STDMETHODCALLTYPE OnAddInsUpdate(SAFEARRAY** custom) override;
    HRESULT STDMETHODCALLTYPE OnStartupComplete(SAFEARRAY** custom) override;
    HRESULT STDMETHODCALLTYPE OnBeginShutdown(SAFEARRAY** custom) override;

    /// The event ItemSend. Cancel: true stops the send; stays true when the decision fails.
    void OnMailSend(IDispatch* item, VARIANT_BOOL* Cancel);

protected:
    virtual ~CConnect();

private:
    static LoggerHolder logger_;

    OutlookController outlookController_;
    Outlook::_ApplicationPtr application_;
};

} // namespace vorlek
