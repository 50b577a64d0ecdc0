#pragma once
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/com/LateBound.h"

namespace test_support {

/// A call as an object received it.
struct ScriptedCall {
    WORD kind;                         ///< DISPATCH_ constants
    std::vector<_variant_t> arguments; ///< in the order of the declaration
    bool named;                        ///< whether the argument came as DISPID_PROPERTYPUT
};

/// An object whose members are functions by name; it answers IDispatch and the interfaces given. Counted
/// like any COM object: it lives until the last pointer lets go.
class ScriptedObject : public IDispatch {
public:
    /// Answers the call, or fills the exception and returns DISP_E_EXCEPTION, or fails.
    using Body = std::function<HRESULT(const ScriptedCall&, VARIANT* result, EXCEPINFO* exception)>;

    static _com_ptr_t<_com_IIID<ScriptedObject, &IID_IDispatch>> Create() {
        return _com_ptr_t<_com_IIID<ScriptedObject, &IID_IDispatch>>(new ScriptedObject, false);
    }

    ScriptedObject& Member(const std::wstring& name, Body body);
    /// A member that answers a value.
    ScriptedObject& Value(const std::wstring& name, const _variant_t& value);
    ScriptedObject& Answers(const IID& interfaceId);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* exception, UINT*) override;

private:
    ScriptedObject() = default;
    virtual ~ScriptedObject() = default;

    ULONG references_ = 1;
    std::vector<std::pair<std::wstring, Body>> members_; ///< a member's number is its place
    std::vector<IID> interfaces_;
};

using ScriptedObjectPtr = _com_ptr_t<_com_IIID<ScriptedObject, &IID_IDispatch>>;

} // namespace test_support
