#include "stand-ins/redemption/ClassFactory.h"

namespace stand_ins::redemption {
namespace {

std::atomic<long> living = 0;

} // namespace

ClassFactory::ClassFactory(REFCLSID classId, MakeObject make) : classId_(classId), make_(make) {
    ++living;
}

ClassFactory::~ClassFactory() {
    --living;
}

long ClassFactory::Living() {
    return living;
}

HRESULT ClassFactory::QueryInterface(REFIID interfaceId, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = interfaceId == IID_IUnknown || interfaceId == IID_IClassFactory ? this : nullptr;
    if (*object == nullptr) {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG ClassFactory::AddRef() {
    return ++references_;
}

ULONG ClassFactory::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID interfaceId, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    return outer != nullptr ? CLASS_E_NOAGGREGATION : make_(classId_, interfaceId, object);
}

HRESULT ClassFactory::LockServer(BOOL lock) {
    living += lock ? 1 : -1;
    return S_OK;
}

} // namespace stand_ins::redemption
