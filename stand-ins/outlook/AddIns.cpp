#include "stand-ins/outlook/AddIns.h"

#include <set>

#include "stand-ins/outlook/Text.h"

namespace {

// The interface that Outlook calls on its add-ins, through the vtable.
struct AddInInterface : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE OnConnection(IDispatch* application, long connectMode, IDispatch* addIn,
                                                   SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnDisconnection(long removeMode, SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnAddInsUpdate(SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnStartupComplete(SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnBeginShutdown(SAFEARRAY** custom) = 0;
};

} // namespace
