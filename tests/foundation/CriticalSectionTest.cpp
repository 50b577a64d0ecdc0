#include "foundation/CriticalSection.h"

#include <gtest/gtest.h>

#include "foundation/Lock.h"
#include "tests/support/Threads.h"

using namespace vorlek;

TEST(CriticalSection, OwnerMayTakeItAgain) {
    CriticalSection section;
    const Lock outer(section);
    const Lock inner(section);
}

TEST(CriticalSection, KeepsOtherThreadsOut) {
    constexpr int kTurns = 20000;
    CriticalSection section;
    int counter = 0; // lost updates would show
    test_support::RunThreads(4, [&](int) {
        for (int turn = 0; turn < kTurns; ++turn) {
            const Lock guard(section);
            ++counter;
        }
    });
    EXPECT_EQ(counter, 4 * kTurns);
}
