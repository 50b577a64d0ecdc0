#include "platform/atl/atldispevent.h"

namespace ATL {

HRESULT AtlGetEventArguments(const DISPPARAMS& parameters, const _ATL_FUNC_INFO& info,
                             const VARIANT* (&arguments)[_ATL_MAX_VARTYPES]) noexcept {
    const auto count = static_cast<UINT>(info.nParams);
    if (parameters.cArgs != count || count > _ATL_MAX_VARTYPES) {
        return DISP_E_BADPARAMCOUNT;
    }
    for (UINT index = 0; index < count; ++index) {
        const VARIANT* argument = &parameters.rgvarg[count - 1 - index];
        if (argument->vt == (VT_BYREF | VT_VARIANT)) {
            argument = argument->pvarVal;
        }
        if (argument->vt != info.pVarTypes[index]) {
            return DISP_E_TYPEMISMATCH;
        }
        arguments[index] = argument;
    }
    return S_OK;
}

} // namespace ATL
