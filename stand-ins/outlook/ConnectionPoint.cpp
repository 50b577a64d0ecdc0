#include "stand-ins/outlook/ConnectionPoint.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Interfaces.h"

namespace stand_ins {

HRESULT RecordCall(Session& session, const wchar_t* member) {
    const Call call{member, {}, GetCurrentThreadId()};
    session.calls.Add(call);
    try {
        session.failures.Apply(call);
        return S_OK;
    } catch (const Failure& failure) {
        return failure.result;
    }
}

HRESULT ConnectionPoint::QueryInterface(REFIID interfaceId, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (interfaceId != IID_IUnknown && interfaceId != IID_IConnectionPoint) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IConnectionPoint*>(this);
    AddRef();
    return S_OK;
}

ULONG ConnectionPoint::AddRef() {
    return ++references_;
}

ULONG ConnectionPoint::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* interfaceId) {
    if (interfaceId == nullptr) {
        return E_POINTER;
    }
    *interfaceId = kApplicationEventsId;
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    return session_->Root()->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(container));
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (sink == nullptr || cookie == nullptr) {
        return E_POINTER;
    }
    *cookie = 0;
    if (const HRESULT fault = RecordCall(*session_, L"Application.Advise"); FAILED(fault)) {
        return fault;
    }
    DispatchPtr events;
    if (FAILED(sink->QueryInterface(kApplicationEventsId, reinterpret_cast<void**>(&events))) || !events) {
        return CONNECT_E_CANNOTCONNECT;
    }
    *cookie = session_->Advise(events);
    return S_OK;
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie) {
    if (const HRESULT fault = RecordCall(*session_, L"Application.Unadvise"); FAILED(fault)) {
        return fault;
    }
    return session_->Unadvise(cookie) ? S_OK : CONNECT_E_NOCONNECTION;
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections**) {
    return E_NOTIMPL;
}

} // namespace stand_ins
