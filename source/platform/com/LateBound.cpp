#include "platform/com/LateBound.h"

#include <algorithm>

namespace platform {
namespace {

/// What a failing object said of itself; its strings are freed at the end.
class ExceptionInformation {
public:
    ExceptionInformation() = default;
    ExceptionInformation(const ExceptionInformation&) = delete;
    ExceptionInformation& operator=(const ExceptionInformation&) = delete;
    ~ExceptionInformation() {
        SysFreeString(info_.bstrSource);
        SysFreeString(info_.bstrDescription);
        SysFreeString(info_.bstrHelpFile);
    }

    EXCEPINFO* Get() { return &info_; }

    [[noreturn]] void Raise() {
        if (info_.pfnDeferredFillIn != nullptr) {
            info_.pfnDeferredFillIn(&info_);
        }
        // The object reports either its HRESULT or a number of its own.
        const HRESULT result = info_.scode != 0   ? info_.scode
                               : info_.wCode != 0 ? _com_error::WCodeToHRESULT(info_.wCode)
                                                  : DISP_E_EXCEPTION;
        throw _com_error(result, MakeErrorInformation_().Detach());
    }

private:
    _com_ptr_t<_com_IIID<IErrorInfo, &IID_IErrorInfo>> MakeErrorInformation_() const {
        _com_ptr_t<_com_IIID<ICreateErrorInfo, &IID_ICreateErrorInfo>> information;
        if (FAILED(CreateErrorInfo(&information))) {
            return {};
        }
        information->SetSource(info_.bstrSource);
        information->SetDescription(info_.bstrDescription);
        information->SetHelpFile(info_.bstrHelpFile);
        information->SetHelpContext(info_.dwHelpContext);
        return information;
    }

    EXCEPINFO info_{};
};

} // namespace

_variant_t InvokeByName(IDispatch& object, const wchar_t* member, WORD kind, const std::vector<_variant_t>& arguments) {
    DISPID id = DISPID_UNKNOWN;
    auto* name = const_cast<wchar_t*>(member); // the interface wants it so, and only reads
    if (const HRESULT result = object.GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id); FAILED(result)) {
        _com_issue_error(result);
    }

    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend()); // borrowed: the arguments stay the owners
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    DISPID put = DISPID_PROPERTYPUT;
    if (kind == DISPATCH_PROPERTYPUT) {
        parameters.rgdispidNamedArgs = &put;
        parameters.cNamedArgs = 1;
    }

    _variant_t value;
    ExceptionInformation exception;
    const HRESULT result = object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                                         kind == DISPATCH_PROPERTYPUT ? nullptr : &value, exception.Get(), nullptr);
    if (result == DISP_E_EXCEPTION) {
        exception.Raise();
    }
    if (FAILED(result)) {
        _com_issue_error(result);
    }
    if ((value.vt & VT_BYREF) != 0) {
        _variant_t own;
        if (const HRESULT copied = VariantCopyInd(&own, &value); FAILED(copied)) {
            _com_issue_error(copied);
        }
        value.Attach(own);
    }
    return value; // the one variable that is returned: a body is not copied on its way out
}

_variant_t Missing() {
    return _variant_t(DISP_E_PARAMNOTFOUND, VT_ERROR);
}

std::wstring ToWide(const _bstr_t& text) {
    return text.length() == 0 ? std::wstring() : std::wstring(static_cast<const wchar_t*>(text), text.length());
}

_bstr_t ToText(_variant_t&& value) {
    if (value.vt != VT_BSTR) {
        value.ChangeType(VT_BSTR);
    }
    return _bstr_t(value.Detach().bstrVal, false);
}

} // namespace platform
