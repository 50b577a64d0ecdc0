#include "foundation/ThreadSafeMap.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/HeldSections.h"
#include "tests/support/Threads.h"

using namespace vorlek;

namespace {

/// How many critical sections were held at each look at a key or end of a value.
std::vector<int> held_;
const test_support::HeldSections* sections_ = nullptr;

void Note_() {
    if (sections_ != nullptr) {
        held_.push_back(sections_->Count());
    }
}

struct NotedKey {
    int number;
    bool operator<(const NotedKey& other) const {
        Note_();
        return number < other.number;
    }
};

struct NotedValue {
    ~NotedValue() { Note_(); }
};

} // namespace

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

TEST(ThreadSafeMap, EveryOperationHoldsItsLock) {
    ThreadSafeMap<NotedKey, std::shared_ptr<NotedValue>> map;
    map.Insert({1}, std::make_shared<NotedValue>());
    map.Insert({2}, std::make_shared<NotedValue>());
    const std::vector<std::pair<const char*, std::function<void()>>> operations = {
        {"Find", [&] { map.Find({1}); }},
        {"Insert", [&] { map.Insert({3}, nullptr); }},
        {"Erase", [&] { map.Erase({1}); }},
        {"Clear", [&] { map.Clear(); }}};
    for (const auto& [name, operation] : operations) {
        const test_support::HeldSections sections;
        held_.clear();
        sections_ = &sections;
        operation();
        sections_ = nullptr;
        ASSERT_FALSE(held_.empty()) << name;
        EXPECT_EQ(held_, std::vector<int>(held_.size(), 1)) << name;
        EXPECT_EQ(sections.Count(), 0) << name;
    }
}
