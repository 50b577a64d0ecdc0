#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {

Sink::Sink(IDispatch* application, OnSend onSend) : onSend_(std::move(onSend)) {
    _com_ptr_t<_com_IIID<IConnectionPointContainer, &IID_IConnectionPointContainer>> container(application);
    container->FindConnectionPoint(kApplicationEventsId, &point_);
    advised = point_->Advise(this, &cookie_);
}

Sink::~Sink() {
    Unadvise();
}

void Sink::Unadvise() {
    if (cookie_ != 0) {
        point_->Unadvise(cookie_);
        cookie_ = 0;
    }
}

HRESULT Sink::QueryInterface(REFIID interfaceId, void** object) {
    const bool known =
        interfaceId == IID_IUnknown || interfaceId == IID_IDispatch || interfaceId == kApplicationEventsId;
    *object = known ? this : nullptr;
    if (known) {
        AddRef();
    }
    return known ? S_OK : E_NOINTERFACE;
}

HRESULT Sink::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) {
    EXPECT_EQ(id, 0xF002);
    EXPECT_EQ(parameters->cArgs, 2u);
    EXPECT_EQ(parameters->rgvarg[1].vt, VT_DISPATCH);
    EXPECT_EQ(parameters->rgvarg[0].vt, VT_BOOL | VT_BYREF);
    ++calls;
    *parameters->rgvarg[0].pboolVal = onSend_(parameters->rgvarg[1].pdispVal) ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

} // namespace stand_ins
