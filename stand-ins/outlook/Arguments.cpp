#include "stand-ins/outlook/Arguments.h"

#include "stand-ins/outlook/Failure.h"

namespace stand_ins {

Arguments::Arguments(const DISPPARAMS& parameters) {
    for (UINT i = parameters.cArgs; i > 0; --i) {
        _variant_t value;
        const HRESULT result = VariantCopyInd(&value, &parameters.rgvarg[i - 1]);
        if (FAILED(result)) {
            throw BadCall{result, i - 1};
        }
        values_.push_back(value);
    }
}

bool Arguments::Has(size_t index) const {
    return index < values_.size() &&
           !(values_[index].vt == VT_ERROR && values_[index].scode == static_cast<SCODE>(DISP_E_PARAMNOTFOUND));
}

const _variant_t& Arguments::Value(size_t index) const {
    if (!Has(index)) {
        throw BadCall{static_cast<HRESULT>(DISP_E_PARAMNOTOPTIONAL)};
    }
    return values_[index];
}

_variant_t Arguments::As_(size_t index, VARTYPE type) const {
    _variant_t converted;
    const HRESULT result = VariantChangeType(&converted, const_cast<_variant_t*>(&Value(index)), 0, type);
    if (FAILED(result)) {
        throw BadCall{DISP_E_TYPEMISMATCH, static_cast<UINT>(values_.size() - 1 - index)};
    }
    return converted;
}

std::wstring Arguments::Text(size_t index) const {
    const _variant_t value = As_(index, VT_BSTR);
    return {value.bstrVal != nullptr ? value.bstrVal : L"", SysStringLen(value.bstrVal)};
}

long Arguments::Number(size_t index) const {
    return As_(index, VT_I4).lVal;
}

bool Arguments::Truth(size_t index) const {
    return As_(index, VT_BOOL).boolVal != VARIANT_FALSE;
}

DispatchPtr Arguments::Object(size_t index) const {
    const _variant_t& value = Value(index);
    if (value.vt == VT_EMPTY || value.vt == VT_NULL) {
        return {};
    }
    return As_(index, VT_DISPATCH).pdispVal;
}

_variant_t TextValue(std::wstring_view text) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (value.bstrVal == nullptr) {
        throw Failure{E_OUTOFMEMORY, L"Out of memory."};
    }
    return _variant_t(value, false);
}

_variant_t ObjectValue(const DispatchPtr& object) {
    return _variant_t(object.GetInterfacePtr());
}

} // namespace stand_ins
