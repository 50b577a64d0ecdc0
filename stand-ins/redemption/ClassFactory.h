#pragma once
#include <atomic>

#include "stand-ins/redemption/Coclasses.h"

namespace stand_ins::redemption {

/// The class object of one class.
class ClassFactory : public IClassFactory {
public:
    ClassFactory(REFCLSID classId, MakeObject make);
    virtual ~ClassFactory();
    ClassFactory(const ClassFactory&) = delete;
    ClassFactory& operator=(const ClassFactory&) = delete;

    /// How many there are in this module.
    static long Living();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID interfaceId, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    const CLSID classId_;
    const MakeObject make_;
    std::atomic<ULONG> references_ = 1;
};

} // namespace stand_ins::redemption
