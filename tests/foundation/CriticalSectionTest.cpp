#include "foundation/CriticalSection.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/Lock.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/Threads.h"

using namespace vorlek;
using test_support::ReplacedImport;

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

TEST(CriticalSection, TellsTheSystemOfItsBeginningAndItsEnd) {
    std::vector<CRITICAL_SECTION*> made;
    std::vector<CRITICAL_SECTION*> deleted;
    ReplacedImport<"InitializeCriticalSection", decltype(InitializeCriticalSection)> make(
        [&](CRITICAL_SECTION* section) {
            made.push_back(section);
            make.Original(section);
        });
    ReplacedImport<"DeleteCriticalSection", decltype(DeleteCriticalSection)> remove([&](CRITICAL_SECTION* section) {
        deleted.push_back(section);
        remove.Original(section);
    });
    std::unique_ptr<Lockable> section = std::make_unique<CriticalSection>();
    ASSERT_EQ(made.size(), 1U);
    EXPECT_TRUE(deleted.empty());
    section.reset();
    EXPECT_EQ(deleted, made);
}
