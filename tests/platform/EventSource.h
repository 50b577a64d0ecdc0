#pragma once
#include "platform/Windows.h"

#include <comdef.h>
#include <ocidl.h>

namespace test_support {

/// An object with one connection point that holds one sink, on the stack of a test.
class EventSource : public IConnectionPointContainer, public IConnectionPoint {
public:
    explicit EventSource(REFIID events) : events_(events) {}

    /// Raises an event; the result is the sink's.
    HRESULT Raise(DISPID id, DISPPARAMS& parameters) {
        return sink->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, nullptr, nullptr,
                            nullptr);
    }

    static constexpr DWORD kCookie = 7;
    _com_ptr_t<_com_IIID<IDispatch, &IID_IDispatch>> sink;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
        *result = nullptr;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IConnectionPointContainer)) {
            *result = static_cast<IConnectionPointContainer*>(this);
        }
        return *result == nullptr ? E_NOINTERFACE : S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
        *point = IsEqualIID(iid, events_) ? static_cast<IConnectionPoint*>(this) : nullptr;
        return *point == nullptr ? CONNECT_E_NOCONNECTION : S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* unknown, DWORD* cookie) override {
        *cookie = kCookie;
        return unknown->QueryInterface(events_, reinterpret_cast<void**>(&sink));
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override {
        if (cookie != kCookie) {
            return CONNECT_E_NOCONNECTION;
        }
        sink = nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

private:
    const IID events_;
};

} // namespace test_support
