#pragma once
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The top of the object model, and the container of the one connection point.
class Application : public Object, public IConnectionPointContainer {
public:
    explicit Application(std::shared_ptr<Session> session);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override {
        return Object::QueryInterface(interfaceId, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return Object::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return Object::Release(); }
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** points) override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID interfaceId, IConnectionPoint** point) override;

protected:
    void* OwnInterface(REFIID interfaceId) override;
};

} // namespace stand_ins
