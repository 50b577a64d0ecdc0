#pragma once
// What an Office program calls on an add-in: the AddInDesignerObjects 1.0 type library.
#include "platform/Windows.h"

#include <oaidl.h>

enum ext_ConnectMode : long {
    ext_cm_AfterStartup = 0,
    ext_cm_Startup = 1,
    ext_cm_External = 2,
    ext_cm_CommandLine = 3,
    ext_cm_Solution = 4,
    ext_cm_UISetup = 5
};

enum ext_DisconnectMode : long {
    ext_dm_HostShutdown = 0,
    ext_dm_UserClosed = 1,
    ext_dm_UISetupComplete = 2,
    ext_dm_SolutionClosed = 3
};

/// {AC0714F2-3D04-11D1-AE7D-00A0C90F26F4}, version 1.0
inline constexpr GUID LIBID_AddInDesignerObjects = {
    0xAC0714F2, 0x3D04, 0x11D1, {0xAE, 0x7D, 0x00, 0xA0, 0xC9, 0x0F, 0x26, 0xF4}};
inline constexpr IID IID__IDTExtensibility2 = {
    0xB65AD801, 0xABAF, 0x11D0, {0xBB, 0x8B, 0x00, 0xA0, 0xC9, 0x0F, 0x27, 0x44}};

/// Dual; the host calls the vtable. `custom` is an array that the host may pass along, and may be null.
struct _IDTExtensibility2 : IDispatch {
    /// Application: the host's object model. AddInInst: the host's object for this add-in.
    virtual HRESULT STDMETHODCALLTYPE OnConnection(IDispatch* Application, ext_ConnectMode ConnectMode,
                                                   IDispatch* AddInInst, SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnDisconnection(ext_DisconnectMode RemoveMode, SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnAddInsUpdate(SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnStartupComplete(SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnBeginShutdown(SAFEARRAY** custom) = 0;

protected:
    ~_IDTExtensibility2() = default;
};

__CRT_UUID_DECL(_IDTExtensibility2, 0xB65AD801, 0xABAF, 0x11D0, 0xBB, 0x8B, 0x00, 0xA0, 0xC9, 0x0F, 0x27, 0x44)
