#include "benchmarks/outlook/AddIn.h"

#include <filesystem>
#include <stdexcept>

namespace outlook_benchmarks {
namespace {

constexpr wchar_t kName[] = L"OutlookQLTPlugin.dll";
constexpr CLSID kConnect = {0xF7A9E3A1, 0x9D13, 0x4D56, {0x93, 0x3D, 0x5E, 0x5D, 0x79, 0x8C, 0xB0, 0x42}};

} // namespace

AddIn::AddIn(IDispatch* application) {
    module_ = LoadLibraryW((std::filesystem::path(L"Z:") / ADDIN_MODULE).make_preferred().c_str());
    using GetClassObject = HRESULT STDMETHODCALLTYPE(REFCLSID, REFIID, void**);
    auto* const getClassObject =
        reinterpret_cast<GetClassObject*>(reinterpret_cast<void*>(GetProcAddress(module_, "DllGetClassObject")));
    if (getClassObject == nullptr) {
        throw std::runtime_error("the add-in does not load");
    }
    _com_ptr_t<_com_IIID<IClassFactory, &IID_IClassFactory>> factory;
    getClassObject(kConnect, IID_PPV_ARGS(&factory));
    factory->CreateInstance(nullptr, IID_PPV_ARGS(&addIn_));
    addIn_->OnConnection(application, ext_cm_Startup, nullptr, nullptr);
}

AddIn::~AddIn() {
    addIn_->OnDisconnection(ext_dm_UserClosed, nullptr);
    addIn_.Release();
    FreeLibrary(module_);
}

bool AddIn::IsLoaded() {
    return GetModuleHandleW(kName) != nullptr;
}

} // namespace outlook_benchmarks
