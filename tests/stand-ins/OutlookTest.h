#pragma once
#include <gmock/gmock.h>

#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Outlook.h"
#include "tests/support/TemporaryFolder.h"

namespace stand_ins {

inline const RecipientData kBen{.name = L"Ben", .address = L"ben@example.com"};

/// The HRESULT that a call by name failed with; S_OK when it did not fail.
template <class Body>
HRESULT ErrorOf(Body body) {
    try {
        body();
        return S_OK;
    } catch (const _com_error& error) {
        return error.Error();
    }
}

/// A profile of the test's own.
class OutlookTest : public testing::Test {
protected:
    test_support::TemporaryFolder folder_;
};

/// An Outlook over it.
class RunningOutlookTest : public OutlookTest {
protected:
    DispatchPtr Session() { return GetObject(outlook_.Application(), L"Session"); }
    DispatchPtr Mail() { return outlook_.NewMail({.subject = L"Plans", .body = L"Tuesday.", .recipients = {kBen}}); }

    Outlook outlook_{{.profile = folder_.Path()}};
};

/// A subscriber of the events of the application, by the real connection point. What it does at ItemSend is up to the
/// test: the result is Cancel.
class Sink : public IDispatch {
public:
    using OnSend = std::function<bool(IDispatch* item)>;

    Sink(IDispatch* application, OnSend onSend);
    virtual ~Sink();

    HRESULT advised = E_FAIL;
    int calls = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; } // the test owns it
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                                     UINT*) override;

    void Unadvise();

    ULONG references = 1;

private:
    OnSend onSend_;
    _com_ptr_t<_com_IIID<IConnectionPoint, &IID_IConnectionPoint>> point_;
    DWORD cookie_ = 0;
};

} // namespace stand_ins
