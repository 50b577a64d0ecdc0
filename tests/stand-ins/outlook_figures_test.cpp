// What a process holds, counted.
#include "stand-ins/outlook/Figures.h"

#include <cstdlib>
#include <future>
#include <memory>
#include <vector>

#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

class OutlookFigures : public RunningOutlookTest {};

TEST_F(OutlookFigures, WhatComesIsCountedAndWhatGoesIsCountedOff) {
    const Figures before = Figures::Measure();
    {
        const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        const DispatchPtr session = Session();
        std::vector<std::unique_ptr<void, decltype(&std::free)>> blocks; // of the heap, in the checked build too
        for (int i = 0; i < 1000; ++i) {
            blocks.emplace_back(std::malloc(16), &std::free);
        }
        auto running = std::async(std::launch::async, [&] { WaitForSingleObject(event, INFINITE); });
        const Figures during = Figures::Measure();
        EXPECT_GE(during.handles, before.handles + 1);
        EXPECT_GE(during.heapBlocks, before.heapBlocks + 1000);
        EXPECT_GE(during.threads, before.threads + 1);
        EXPECT_EQ(during.objects, before.objects + 1);
        SetEvent(event);
        running.get();
        CloseHandle(event);
    }
    const Figures after = Figures::Measure();
    EXPECT_LT(after.heapBlocks, before.heapBlocks + 100);
    EXPECT_EQ(after.objects, before.objects);
}

TEST(OutlookFiguresText, IsOneLine) {
    EXPECT_EQ((Figures{1, 2, 3, 4}.ToString()), L"handles 1, heap blocks 2, threads 3, objects 4");
}

} // namespace
} // namespace stand_ins
