#include "agent/apps/outlook/ItemWrapper.h"

namespace vorlek {

bool AnswersInterface(const IDispatchPtr& object, const IID& interfaceId) {
    if (!object) {
        return false;
    }
    IUnknown* answer = nullptr;
    const HRESULT result = object->QueryInterface(interfaceId, reinterpret_cast<void**>(&answer));
    if (result == E_NOINTERFACE) {
        return false;
    }
    if (FAILED(result)) {
        _com_issue_error(result);
    }
    answer->Release();
    return true;
}

} // namespace vorlek
