#include "fuzz/driver/Outcome.h"

#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

using namespace fuzz;

TEST(Outcome, LeavesOutWhatDiffersFromInputToInput) {
    EXPECT_EQ(WithoutVariables("Read failed with: -17"), "Read failed with");
    EXPECT_EQ(WithoutVariables("Missing name! (3:14"), "Missing name! (:");
    EXPECT_EQ(WithoutVariables("The element <a b> has no \"x\" at all"), "The element  has no  at all");
    EXPECT_EQ(WithoutVariables("open \"quote"), "open ");
    EXPECT_EQ(WithoutVariables(""), "");
}

TEST(Outcome, NamesTheClassOfAStandardException) {
    EXPECT_EQ(NameOfType(std::length_error("x")), "std::length_error");
}

TEST(Outcome, IsCountedByItsWords) {
    const auto board = std::make_unique<Board>();
    for (const char* words : {"one", "two", "one"}) {
        CountOutcome(*board, words);
    }
    ASSERT_EQ(board->outcomeCount, 2U);
    EXPECT_STREQ(board->outcomes[0].words, "one");
    EXPECT_EQ(board->outcomes[0].runs, 2U);
    EXPECT_EQ(board->outcomes[1].runs, 1U);
}

TEST(Outcome, IsCountedWithTheLastWhereThereIsNoRoom) {
    const auto board = std::make_unique<Board>();
    const std::size_t most = board->outcomes.size();
    for (std::size_t i = 0; i < most + 3; ++i) {
        CountOutcome(*board, "outcome " + std::to_string(i));
    }
    EXPECT_EQ(board->outcomeCount, most);
    EXPECT_EQ(board->outcomes.back().runs, 4U);
}

TEST(Outcome, IsCutToItsRoom) {
    const auto board = std::make_unique<Board>();
    CountOutcome(*board, std::string(1000, 'x'));
    CountOutcome(*board, std::string(2000, 'x'));
    EXPECT_EQ(board->outcomeCount, 1U);
    EXPECT_EQ(board->outcomes[0].words, std::string(sizeof(OutcomeCount::words) - 1, 'x'));
}
