// The user who reads message boxes.
#include "stand-ins/outlook/Reader.h"

#include <gmock/gmock.h>
#include <mutex>
#include <string>
#include <vector>

namespace stand_ins {
namespace {

TEST(OutlookReader, EveryBoxIsReadOnceAndAnswered) {
    std::mutex lock;
    std::vector<std::wstring> texts;
    {
        const Reader reader([&](const std::wstring& text) {
            const std::scoped_lock guard(lock);
            texts.push_back(text);
        });
        EXPECT_EQ(MessageBoxW(nullptr, L"The first", L"One", MB_OK), IDOK);
        EXPECT_EQ(MessageBoxW(nullptr, L"The second\nline", L"Another", MB_OK), IDOK);
    }
    EXPECT_THAT(texts, testing::ElementsAre(L"The first", L"The second\nline"));
}

} // namespace
} // namespace stand_ins
