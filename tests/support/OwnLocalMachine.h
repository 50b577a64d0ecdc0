#pragma once
#include <memory>

#include "tests/support/RegistryPlace.h"

namespace test_support {

/// This process's view of HKEY_LOCAL_MACHINE, moved to a place of the test's own.
class OwnLocalMachine {
public:
    OwnLocalMachine();
    OwnLocalMachine(const OwnLocalMachine&) = delete;
    OwnLocalMachine& operator=(const OwnLocalMachine&) = delete;
    ~OwnLocalMachine();

    /// The key under which Windows keeps the folders that all users share, made at the first call.
    std::shared_ptr<RegistryKey> ShellFolders() const;

private:
    RegistryPlace place_;
    HKEY key_ = nullptr;
};

} // namespace test_support
