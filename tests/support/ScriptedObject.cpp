#include "tests/support/ScriptedObject.h"

#include <algorithm>

namespace test_support {

ScriptedObject& ScriptedObject::Member(const std::wstring& name, Body body) {
    members_.emplace_back(name, std::move(body));
    return *this;
}

ScriptedObject& ScriptedObject::Value(const std::wstring& name, const _variant_t& value) {
    return Member(name, [value](const ScriptedCall&, VARIANT* result, EXCEPINFO*) {
        return result == nullptr ? S_OK : VariantCopy(result, const_cast<_variant_t*>(&value));
    });
}

ScriptedObject& ScriptedObject::Answers(const IID& interfaceId) {
    interfaces_.push_back(interfaceId);
    return *this;
}

HRESULT ScriptedObject::QueryInterface(REFIID interfaceId, void** object) {
    const bool known = interfaceId == IID_IUnknown || interfaceId == IID_IDispatch ||
                       std::ranges::find(interfaces_, interfaceId) != interfaces_.end();
    *object = known ? this : nullptr;
    if (known) {
        AddRef();
    }
    return known ? S_OK : E_NOINTERFACE;
}

ULONG ScriptedObject::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT ScriptedObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) {
    const auto found =
        std::ranges::find(members_, std::wstring(names[0]), [](const auto& member) { return member.first; });
    if (found == members_.end()) {
        ids[0] = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }
    ids[0] = static_cast<DISPID>(found - members_.begin());
    return S_OK;
}

HRESULT ScriptedObject::Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                               EXCEPINFO* exception, UINT*) {
    ScriptedCall call{kind, {}, false};
    for (UINT index = parameters->cArgs; index > 0; --index) {
        call.arguments.emplace_back(parameters->rgvarg[index - 1]);
    }
    call.named = parameters->cNamedArgs == 1 && parameters->rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
    return members_[static_cast<std::size_t>(id)].second(call, result, exception);
}

} // namespace test_support
