#include "foundation/Lock.h"

#include <gtest/gtest.h>

#include "foundation/Throw.h"

using namespace vorlek;

namespace {

class Recorder : public Lockable {
public:
    void Lock() override {
        calls += L"Lock ";
        if (failsToLock) {
            Throw(L"Recorder::Lock", L"refused");
        }
    }
    void Unlock() override {
        calls += L"Unlock ";
        if (failsToUnlock) {
            Throw(L"Recorder::Unlock", L"refused");
        }
    }

    std::wstring calls;
    bool failsToLock = false;
    bool failsToUnlock = false;
};

} // namespace

TEST(Lock, HoldsItsTargetForTheScope) {
    Recorder recorder;
    {
        const Lock guard(recorder);
        EXPECT_EQ(recorder.calls, L"Lock ");
    }
    EXPECT_EQ(recorder.calls, L"Lock Unlock ");
}

TEST(Lock, ReleasesWhenAFailureLeavesTheScope) {
    Recorder recorder;
    EXPECT_THROW(
        {
            const Lock guard(recorder);
            throw 5;
        },
        int);
    EXPECT_EQ(recorder.calls, L"Lock Unlock ");
}

TEST(Lock, TargetThatFailsToLockIsNotUnlocked) {
    Recorder recorder;
    recorder.failsToLock = true;
    EXPECT_THROW(const Lock guard(recorder), Exception);
    EXPECT_EQ(recorder.calls, L"Lock ");
}

TEST(Lock, FailureToUnlockReachesTheCaller) {
    Recorder recorder;
    recorder.failsToUnlock = true;
    EXPECT_THROW(const Lock guard(recorder), Exception);
}

TEST(Lock, FailureToUnlockGivesWayToTheFailureThatLeavesTheScope) {
    Recorder recorder;
    recorder.failsToUnlock = true;
    EXPECT_THROW(
        {
            const Lock guard(recorder);
            throw 5;
        },
        int);
    EXPECT_EQ(recorder.calls, L"Lock Unlock ");
}
