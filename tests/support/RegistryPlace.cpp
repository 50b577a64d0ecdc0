#include "tests/support/RegistryPlace.h"

namespace test_support {

RegistryPlace::RegistryPlace()
    : name_(L"Software\\VorlekTests-" + std::to_wstring(GetCurrentProcessId())),
      key_(RegistryKey::GetCurrentUser().CreateSubKey(name_, true)) {}

RegistryPlace::~RegistryPlace() {
    key_.reset();
    RegistryKey::GetCurrentUser().DeleteSubKeyTree(name_);
}

} // namespace test_support
