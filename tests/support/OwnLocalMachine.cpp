#include "tests/support/OwnLocalMachine.h"

namespace test_support {

OwnLocalMachine::OwnLocalMachine() {
    RegOpenKeyExW(HKEY_CURRENT_USER, place_.Name().c_str(), 0, KEY_ALL_ACCESS, &key_);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, key_);
}

OwnLocalMachine::~OwnLocalMachine() {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegCloseKey(key_);
}

std::shared_ptr<RegistryKey> OwnLocalMachine::ShellFolders() const {
    return place_->CreateSubKey(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", true);
}

} // namespace test_support
