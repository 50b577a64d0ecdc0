#pragma once
#include <memory>
#include <string>

#include "foundation/RegistryKey.h"

namespace test_support {

/// A key of the test's own below the user's, gone with the object.
class RegistryPlace {
public:
    RegistryPlace();
    RegistryPlace(const RegistryPlace&) = delete;
    RegistryPlace& operator=(const RegistryPlace&) = delete;
    ~RegistryPlace();

    const RegistryKey& Key() const { return *key_; }
    const RegistryKey* operator->() const { return key_.get(); }
    /// Its name below HKEY_CURRENT_USER.
    const std::wstring& Name() const { return name_; }

private:
    std::wstring name_;
    std::shared_ptr<RegistryKey> key_;
};

} // namespace test_support
