#include "fuzz/driver/Mutator.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

using namespace fuzz;

namespace {

Material Example(wchar_t highest, std::size_t most) {
    return {.corpus = {L"<first a=\"17\">\x20AC</first>", L"second"},
            .tokens = {L"token"},
            .boundaries = L"<>",
            .highest = highest,
            .most = most};
}

std::vector<Units> Inputs(const Material& material, std::uint64_t seed, std::uint64_t first, std::uint64_t end) {
    Mutator mutator(material, seed);
    std::vector<Units> inputs;
    for (std::uint64_t run = first; run < end; ++run) {
        mutator.Make(run, inputs.emplace_back());
    }
    return inputs;
}

} // namespace

TEST(Mutator, BeginsWithTheExamplesAsTheyAre) {
    const Material material = Example(0xFFFF, 100);
    EXPECT_EQ(Inputs(material, 1, 0, 2), material.corpus);
}

TEST(Mutator, MakesTheSameOfTheSameSeedFromAnyRunOn) {
    const Material material = Example(0xFFFF, 100);
    const std::vector<Units> all = Inputs(material, 1, 0, 100);
    EXPECT_EQ(Inputs(material, 1, 50, 100), std::vector(all.begin() + 50, all.end()));
    EXPECT_NE(Inputs(material, 2, 50, 100), std::vector(all.begin() + 50, all.end()));
}

TEST(Mutator, MakesManyDifferentInputs) {
    const std::vector<Units> inputs = Inputs(Example(0xFFFF, 100), 1, 0, 1000);
    EXPECT_GT(std::set(inputs.begin(), inputs.end()).size(), 700U);
}

TEST(Mutator, KeepsToTheLengthAllowed) {
    std::size_t longest = 0;
    for (const Units& input : Inputs(Example(0xFFFF, 20), 1, 0, 1000)) {
        longest = std::max(longest, input.size());
    }
    EXPECT_EQ(longest, 20U);
}

TEST(Mutator, KeepsToBytesWhereTheyAreAsked) {
    Material material = Example(0xFF, 100);
    material.corpus = {L"a"};
    for (const Units& input : Inputs(material, 1, 0, 1000)) {
        for (const wchar_t unit : input) {
            EXPECT_LE(unit, 0xFF);
        }
    }
}

TEST(Mutator, UsesTokensOtherExamplesAndOtherNumbers) {
    const std::vector<Units> inputs = Inputs(Example(0xFFFF, 1000), 1, 2, 20000);
    const auto some = [&](auto condition) { return std::ranges::any_of(inputs, condition); };
    EXPECT_TRUE(some([](const Units& input) { return input.find(L"token") != input.npos; }));
    EXPECT_TRUE(some([](const Units& input) { return input.starts_with(L"<first") && input.ends_with(L"second"); }));
    EXPECT_TRUE(some([](const Units& input) { return input.find(L"4294967296") != input.npos; }));
    EXPECT_TRUE(some([](const Units& input) { return input.find(L"tokentokentokentoken") != input.npos; }));
    EXPECT_TRUE(some([](const Units& input) { return input.empty(); }));
}
