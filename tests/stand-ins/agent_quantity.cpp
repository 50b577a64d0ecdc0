#include "stand-ins/agent/Quantity.h"

#include <gtest/gtest.h>

using namespace stand_ins::agent;

TEST(AgentQuantity, ADurationHasAUnitAndALimit) {
    EXPECT_EQ(ReadDuration(L"2s"), 2000u);
    EXPECT_EQ(ReadDuration(L"15 ms"), 15u);
    EXPECT_EQ(ReadDuration(L"700"), 700u);
    EXPECT_EQ(ReadDuration(L"600s"), 600000u);
    EXPECT_EQ(ReadDuration(L"601s"), std::nullopt);
    EXPECT_EQ(ReadDuration(L"2h"), std::nullopt);
    EXPECT_EQ(ReadDuration(L""), std::nullopt);
    EXPECT_EQ(ReadDuration(L"s"), std::nullopt);
    EXPECT_EQ(ReadDuration(L"-1"), std::nullopt);
}

TEST(AgentQuantity, ASizeHasAUnitAndALimit) {
    EXPECT_EQ(ReadSize(L"4096"), 4096u);
    EXPECT_EQ(ReadSize(L"64KB"), 65536u);
    EXPECT_EQ(ReadSize(L"100 MB"), 104857600u);
    EXPECT_EQ(ReadSize(L"1024MB"), 1073741824u);
    EXPECT_EQ(ReadSize(L"1025MB"), std::nullopt);
    EXPECT_EQ(ReadSize(L"1TB"), std::nullopt);
}

TEST(AgentQuantity, ANumberIsDigitsAlone) {
    EXPECT_EQ(ReadNumber(L"0"), 0u);
    EXPECT_EQ(ReadNumber(L"999999999"), 999999999u);
    EXPECT_EQ(ReadNumber(L"1000000000"), std::nullopt);
    EXPECT_EQ(ReadNumber(L"+1"), std::nullopt);
    EXPECT_EQ(ReadNumber(L""), std::nullopt);
}
