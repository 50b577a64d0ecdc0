#include "plugin-link/Number.h"

#include <cstdint>

#include <gtest/gtest.h>

using vorlek::ParseNumber;

TEST(Number, IsDecimalUnlessMarked) {
    EXPECT_EQ(ParseNumber<std::int32_t>(L"-42"), -42);
    EXPECT_EQ(ParseNumber<std::uint32_t>(L"4294967295"), 4294967295U);
    EXPECT_EQ(ParseNumber<std::int32_t>(L"010"), 10);
}

TEST(Number, IsHexadecimalBehindItsMarkInEitherCase) {
    EXPECT_EQ(ParseNumber<std::int32_t>(L"0x2"), 2);
    EXPECT_EQ(ParseNumber<std::uint32_t>(L"0XfF"), 255U);
}

TEST(Number, IsNullForWhatIsNoNumber) {
    EXPECT_EQ(ParseNumber<std::int32_t>(L""), 0);
    EXPECT_EQ(ParseNumber<std::int32_t>(L"block"), 0);
    EXPECT_EQ(ParseNumber<std::uint32_t>(L"0x"), 0U);
    EXPECT_FALSE(ParseNumber<bool>(L"true"));
}

TEST(Number, ReadsOneAsTrue) {
    EXPECT_TRUE(ParseNumber<bool>(L"1"));
    EXPECT_TRUE(ParseNumber<bool>(L"0x1"));
    EXPECT_FALSE(ParseNumber<bool>(L"0"));
}
