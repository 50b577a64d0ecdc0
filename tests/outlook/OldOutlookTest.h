#pragma once
#include <optional>

#include "tests/outlook/OutlookTest.h"
#include "tests/outlook/RedemptionLibrary.h"

namespace outlook_tests {

inline constexpr wchar_t kVersion11[] = L"11.0.8169.0";

/// A test on a machine with Redemption.
template <class Test>
class WithRedemption : public Test {
protected:
    void RemoveRedemption() { redemption_.reset(); }

private:
    std::optional<RedemptionLibrary> redemption_{std::in_place};
};

/// An Outlook of version 11 on a machine with Redemption.
class OldOutlookTest : public WithRedemption<OutlookTest> {
protected:
    OldOutlookTest() {
        Restart({.version = kVersion11});
        SetVersion(kVersion11);
        log.Clear();
    }
};

} // namespace outlook_tests
