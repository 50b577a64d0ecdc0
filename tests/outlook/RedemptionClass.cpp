#include "tests/outlook/RedemptionClass.h"

#include <stdexcept>

#include "foundation/RegistryKey.h"

namespace outlook_tests {
namespace {

class Factory : public IClassFactory {
public:
    explicit Factory(std::function<test_support::ScriptedObjectPtr()> make) : make_(std::move(make)) {}
    virtual ~Factory() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override {
        *object = interfaceId == IID_IUnknown || interfaceId == IID_IClassFactory ? this : nullptr;
        if (*object == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID interfaceId, void** object) override {
        *object = nullptr;
        const auto made = make_();
        return made ? made->QueryInterface(interfaceId, object) : CLASS_E_NOAGGREGATION;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    std::function<test_support::ScriptedObjectPtr()> make_;
    ULONG references_ = 1;
};

} // namespace

RedemptionClass::RedemptionClass(std::wstring progId, std::function<test_support::ScriptedObjectPtr()> make)
    : key_(L"SOFTWARE\\Classes\\" + progId) {
    GUID id;
    CoCreateGuid(&id);
    wchar_t text[39];
    StringFromGUID2(id, text, 39);
    RegistryKey::GetLocalMachine()
        .CreateSubKey(key_, true)
        ->CreateSubKey(L"CLSID", true)
        ->SetValue(L"", std::wstring(text) + L'\0'); // some readers want the terminator
    auto* const factory = new Factory(std::move(make));
    const HRESULT result = CoRegisterClassObject(id, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration_);
    factory->Release();
    if (FAILED(result)) {
        throw std::runtime_error("CoRegisterClassObject failed");
    }
}

RedemptionClass::~RedemptionClass() {
    CoRevokeClassObject(registration_);
    RegistryKey::GetLocalMachine().DeleteSubKeyTree(key_);
}

} // namespace outlook_tests
