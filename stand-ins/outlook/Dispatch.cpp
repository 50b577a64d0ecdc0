#include "stand-ins/outlook/Dispatch.h"

#include <algorithm>

namespace stand_ins {
namespace {

_variant_t CallByName(IDispatch* object, const wchar_t* member, WORD flags, const std::vector<_variant_t>& arguments) {
    if (object == nullptr) {
        throw _com_error(E_POINTER);
    }
    auto* name = const_cast<wchar_t*>(member);
    DISPID id = DISPID_UNKNOWN;
    HRESULT result = object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(result)) {
        throw _com_error(result);
    }
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPID put = DISPID_PROPERTYPUT;
    const bool isPut = (flags & DISPATCH_PROPERTYPUT) != 0;
    DISPPARAMS parameters{reversed.data(), isPut ? &put : nullptr, static_cast<UINT>(reversed.size()), isPut ? 1U : 0U};
    EXCEPINFO exception{};
    _variant_t answer;
    result = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, &answer, &exception, nullptr);
    if (result == DISP_E_EXCEPTION) {
        if (exception.pfnDeferredFillIn != nullptr) {
            exception.pfnDeferredFillIn(&exception);
        }
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrDescription);
        SysFreeString(exception.bstrHelpFile);
        result = FAILED(exception.scode) ? exception.scode : E_FAIL;
    }
    if (FAILED(result)) {
        throw _com_error(result);
    }
    return answer;
}

} // namespace

_variant_t Get(IDispatch* object, const wchar_t* member, const std::vector<_variant_t>& arguments) {
    return CallByName(object, member, DISPATCH_PROPERTYGET, arguments);
}

void Put(IDispatch* object, const wchar_t* member, const _variant_t& value) {
    CallByName(object, member, DISPATCH_PROPERTYPUT, {value});
}

_variant_t Invoke(IDispatch* object, const wchar_t* method, const std::vector<_variant_t>& arguments) {
    return CallByName(object, method, DISPATCH_METHOD, arguments);
}

std::wstring GetText(IDispatch* object, const wchar_t* member) {
    const _variant_t value = Get(object, member);
    if (value.vt != VT_BSTR) {
        throw _com_error(DISP_E_TYPEMISMATCH);
    }
    return {value.bstrVal != nullptr ? value.bstrVal : L"", SysStringLen(value.bstrVal)};
}

long GetNumber(IDispatch* object, const wchar_t* member) {
    return Get(object, member);
}

bool GetBool(IDispatch* object, const wchar_t* member) {
    return Get(object, member);
}

DispatchPtr GetObject(IDispatch* object, const wchar_t* member, const std::vector<_variant_t>& arguments) {
    const _variant_t value = Get(object, member, arguments);
    return value.vt == VT_DISPATCH ? DispatchPtr(value.pdispVal) : DispatchPtr();
}

} // namespace stand_ins
