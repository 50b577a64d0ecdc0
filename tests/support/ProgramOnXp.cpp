#include "tests/support/ProgramOnXp.h"

#include <stdexcept>

#include "foundation/RegistryKey.h"

namespace test_support {

ProgramOnXp::ProgramOnXp() {
    // The bench's own way of giving one program an older system goes by the program's name.
    const std::wstring name = L"tests_on_xp_" + std::to_wstring(GetCurrentProcessId()) + L".exe";
    settings_ = L"Software\\Wine\\AppDefaults\\" + name;
    path_ = folder_ / name;
    wchar_t own[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    if (!CopyFileW(own, path_.c_str(), TRUE)) {
        throw std::runtime_error("the test program cannot be copied: " + std::to_string(GetLastError()));
    }
    RegistryKey::GetCurrentUser().CreateSubKey(settings_, true)->SetValue(L"Version", std::wstring(L"winxp64"));
}

ProgramOnXp::~ProgramOnXp() {
    RegistryKey::GetCurrentUser().DeleteSubKeyTree(settings_);
}

} // namespace test_support
