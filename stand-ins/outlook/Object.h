#pragma once
#include <atomic>
#include <memory>
#include <utility>

#include "stand-ins/outlook/Class.h"

namespace stand_ins {

class Session;

/// An object of the model: reference counts, its class's interface and calls by name. Every call is recorded and may
/// be made to fail on its way to the member.
class Object : public IDispatch {
public:
    Object(std::shared_ptr<Session> session, const Class& model);
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

    /// How many there are in this process.
    static std::size_t Living();

    Session& Owner() const { return *session_; }
    const std::shared_ptr<Session>& SharedOwner() const { return session_; }
    const Class& Model() const { return model_; }

protected:
    /// One more interface of the object's own, with its reference already taken; null for every other.
    virtual void* OwnInterface(REFIID interfaceId);

private:
    std::shared_ptr<Session> session_;
    const Class& model_;
    std::atomic<ULONG> references_ = 1;
};

/// The factory of objects of the model.
template <class T, class... Values>
DispatchPtr Make(Values&&... values) {
    return DispatchPtr(new T(std::forward<Values>(values)...), false);
}

} // namespace stand_ins
