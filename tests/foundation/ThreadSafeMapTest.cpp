#include "foundation/ThreadSafeMap.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/Threads.h"

using namespace vorlek;

TEST(ThreadSafeMap, FindsWhatWasInserted) {
    ThreadSafeMap<std::wstring, int> map;
    EXPECT_EQ(map.Find(L"id"), std::nullopt);
    EXPECT_TRUE(map.Insert(L"id", 7));
    EXPECT_EQ(map.Find(L"id"), 7);
    EXPECT_EQ(map.Find(L"ID"), std::nullopt);
}

TEST(ThreadSafeMap, InsertNeverOverwrites) {
    ThreadSafeMap<std::wstring, int> map;
    map.Insert(L"id", 7);
    EXPECT_FALSE(map.Insert(L"id", 8));
    EXPECT_EQ(map.Find(L"id"), 7);
}

TEST(ThreadSafeMap, EraseRemovesOneKey) {
    ThreadSafeMap<std::wstring, int> map;
    map.Insert(L"one", 1);
    map.Insert(L"two", 2);
    EXPECT_TRUE(map.Erase(L"one"));
    EXPECT_FALSE(map.Erase(L"one"));
    EXPECT_EQ(map.Find(L"one"), std::nullopt);
    EXPECT_EQ(map.Find(L"two"), 2);
    EXPECT_TRUE(map.Insert(L"one", 3));
    EXPECT_EQ(map.Find(L"one"), 3);
}

TEST(ThreadSafeMap, ClearRemovesAll) {
    ThreadSafeMap<std::wstring, int> map;
    map.Insert(L"one", 1);
    map.Insert(L"two", 2);
    map.Clear();
    EXPECT_EQ(map.Find(L"one"), std::nullopt);
    EXPECT_EQ(map.Find(L"two"), std::nullopt);
}

TEST(ThreadSafeMap, ManyThreadsMayUseItAtOnce) {
    constexpr int kKeys = 500;
    ThreadSafeMap<int, int> map;
    test_support::RunThreads(4, [&](int thread) {
        for (int key = 0; key < kKeys; ++key) {
            map.Insert(key, thread);
            map.Insert(kKeys + thread * kKeys + key, key);
            map.Erase(kKeys + thread * kKeys + key);
        }
    });
    for (int key = 0; key < kKeys; ++key) {
        EXPECT_TRUE(map.Find(key).has_value());
        EXPECT_EQ(map.Find(kKeys + key), std::nullopt);
    }
}
