#pragma once
#include <functional>
#include <string>

#include "tests/support/ScriptedObject.h"

namespace outlook_tests {

/// A class of the Redemption library, known by its ProgID and made in this process for as long as the
/// object lives. Nothing else of the library is there.
class RedemptionClass {
public:
    /// make: gives the object for each creation, null for a creation that fails.
    RedemptionClass(std::wstring progId, std::function<test_support::ScriptedObjectPtr()> make);
    ~RedemptionClass();
    RedemptionClass(const RedemptionClass&) = delete;
    RedemptionClass& operator=(const RedemptionClass&) = delete;

private:
    std::wstring key_;
    DWORD registration_ = 0;
};

} // namespace outlook_tests
