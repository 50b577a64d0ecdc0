#pragma once
#include <atomic>
#include <memory>

#include "stand-ins/outlook/Com.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {

/// Where a program subscribes to the events of the application.
class ConnectionPoint : public IConnectionPoint {
public:
    explicit ConnectionPoint(std::shared_ptr<Session> session) : session_(std::move(session)) {}
    virtual ~ConnectionPoint() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* interfaceId) override;
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer** container) override;
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override;
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** connections) override;

private:
    std::shared_ptr<Session> session_;
    std::atomic<ULONG> references_ = 1;
};

/// Records a call that is no call by name, and applies its fault: the HRESULT that stands in, or S_OK.
HRESULT RecordCall(Session& session, const wchar_t* member);

} // namespace stand_ins
