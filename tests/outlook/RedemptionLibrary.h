#pragma once
#include <array>

#include "stand-ins/redemption/Coclasses.h"

namespace outlook_tests {

/// The Redemption library, registered and made in this process for as long as the object lives.
class RedemptionLibrary {
public:
    RedemptionLibrary();
    ~RedemptionLibrary();
    /// Takes out of the registry what a test left there that was killed.
    static void Forget();
    RedemptionLibrary(const RedemptionLibrary&) = delete;
    RedemptionLibrary& operator=(const RedemptionLibrary&) = delete;

private:
    std::array<DWORD, stand_ins::redemption::kCoclasses.size()> registrations_{};
};

} // namespace outlook_tests
