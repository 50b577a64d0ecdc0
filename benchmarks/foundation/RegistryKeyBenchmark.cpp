#include "benchmarks/support/Row.h"
#include "foundation/RegistryKey.h"

namespace {

const std::wstring kPlace = L"Software\\VorlekBenchmark";

void SetValue_(benchmark::State& state) {
    const auto key = RegistryKey::GetCurrentUser().CreateSubKey(kPlace, false);
    DWORD value = 0;
    for (auto turn : state) {
        key->SetValue(L"Number", ++value);
    }
    RegistryKey::GetCurrentUser().DeleteSubKeyTree(kPlace);
}

void RegSetValue_(benchmark::State& state) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, kPlace.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key,
                    nullptr);
    DWORD value = 0;
    for (auto turn : state) {
        ++value;
        RegSetValueExW(key, L"Number", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value));
    }
    RegCloseKey(key);
    RegDeleteTreeW(HKEY_CURRENT_USER, kPlace.c_str());
}

const benchmark_support::Row write("registry value / RegSetValueExW", "", SetValue_, RegSetValue_);

} // namespace
