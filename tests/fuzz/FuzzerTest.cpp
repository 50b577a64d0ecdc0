// What the fuzzer tells of planted faults, as a process.
#include <filesystem>

#include <gmock/gmock.h>

#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using test_support::TemporaryFolder;
using testing::HasSubstr;
using testing::StartsWith;

struct Report {
    DWORD status;
    std::string text;
};

Report Fuzz(const TemporaryFolder& folder, const std::vector<std::wstring>& arguments) {
    std::vector<std::wstring> line = {L"--folder", folder.Path().wstring()};
    line.insert(line.end(), arguments.begin(), arguments.end());
    const test_support::Program program(PLANTED_FAULTS, line, folder / L"report.txt");
    const DWORD status = program.Wait();
    return {status, program.Output()};
}

/// With the example alone, which is at fault.
Report RunExample(const TemporaryFolder& folder, const std::wstring& target) {
    return Fuzz(folder, {L"--runs", L"1", target});
}

std::string Boom() {
    const std::wstring word = L"boom";
    return {reinterpret_cast<const char*>(word.data()), word.size() * sizeof(wchar_t)};
}

/// The report without what differs from time to time: the figures of the first line.
std::string Outcomes(const Report& report) {
    return report.text.substr(report.text.find('\n'));
}

std::size_t Count(const std::string& text, const std::string& word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
        ++count;
    }
    return count;
}

struct Planted {
    const wchar_t* target;
    const char* words;
};

void PrintTo(const Planted& planted, std::ostream* out) {
    *out << planted.words;
}

class PlantedFault : public testing::TestWithParam<Planted> {};

} // namespace

TEST_P(PlantedFault, IsToldWithItsSmallestInput) {
    const TemporaryFolder folder;
    const Report report = RunExample(folder, GetParam().target);
    EXPECT_EQ(report.status, 1U);
    EXPECT_THAT(report.text, HasSubstr(std::string("FAULT in run 0: ") + GetParam().words));
    EXPECT_THAT(report.text, HasSubstr("smallest input of 4 units"));
    EXPECT_EQ(test_support::ReadBytes(folder / (std::wstring(GetParam().target) + L"-1.bin")), Boom());
}

const Planted kPlanted[] = {
    {L"crash", "access violation (0xc0000005) at 0x14"},
    {L"trap", "trap (0xc000001d) at 0x14"},
    {L"stack_overflow", "stack overflow"},
    {L"abort", "abort"},
    {L"end", "ended with status 0x5"},
    {L"violation", "a promise was broken"},
    {L"exception", "raised IOException: file    is gone"},
    {L"standard_exception", "raised std::length_error"},
    {L"unknown_exception", "raised something unknown"},
    {L"hang", "hang"},
    {L"growth", "growth"},
#ifdef CHECKED_BUILD
    {L"overrun", "access violation (0xc0000005) at 0x14"},
    {L"slack", "trap (0xc000001d) at 0x14"},
    {L"use_of_released", "access violation (0xc0000005) at 0x14"},
#endif
};

INSTANTIATE_TEST_SUITE_P(Kinds, PlantedFault, testing::ValuesIn(kPlanted), [](const auto& planted) {
    const std::wstring name = planted.param.target;
    return std::string(name.begin(), name.end());
});

TEST(Fuzzer, EndsWellWithoutAFault) {
    const TemporaryFolder folder;
    const Report report = Fuzz(folder, {L"--runs", L"300", L"without_fault"});
    EXPECT_EQ(report.status, 0U);
    EXPECT_THAT(report.text, StartsWith("without_fault: 300 runs, "));
    EXPECT_THAT(report.text, HasSubstr(", 3 outcomes, 0 faults"));
    EXPECT_THAT(report.text, HasSubstr("  boom"));
    EXPECT_THAT(report.text, HasSubstr("  no boom"));
    EXPECT_THAT(report.text, HasSubstr("  Exception: size  is no size"));
}

TEST(Fuzzer, MakesTheSameRunsOfTheSameSeed) {
    const TemporaryFolder folder;
    const std::vector<std::wstring> arguments = {L"--runs", L"200", L"without_fault", L"--seed"};
    const auto outcomes = [&](const std::wstring& seed) {
        std::vector<std::wstring> line = arguments;
        line.push_back(seed);
        return Outcomes(Fuzz(folder, line));
    };
    const std::string first = outcomes(L"7");
    EXPECT_EQ(outcomes(L"7"), first);
    EXPECT_NE(outcomes(L"8"), first);
}

TEST(Fuzzer, GoesOnAfterAFaultAndTellsItOnce) {
    const TemporaryFolder folder;
    const Report report = Fuzz(folder, {L"--runs", L"20", L"sometimes"});
    EXPECT_EQ(report.status, 1U);
    EXPECT_THAT(report.text, StartsWith("sometimes: 20 runs, "));
    EXPECT_EQ(Count(report.text, "FAULT"), 1U);
    EXPECT_THAT(report.text, HasSubstr("  even"));
}

TEST(Fuzzer, GivesUpWhereNearlyEveryRunIsAtFault) {
    const TemporaryFolder folder;
    const Report report = Fuzz(folder, {L"--runs", L"100000", L"sometimes"});
    EXPECT_EQ(report.status, 1U);
    EXPECT_THAT(report.text, HasSubstr("too many faults"));
}

TEST(Fuzzer, TellsAFaultThatItsInputAloneDoesNotBringAbout) {
    const TemporaryFolder folder;
    const Report report = Fuzz(folder, {L"--runs", L"5", L"with_memory"});
    EXPECT_EQ(report.status, 1U);
    EXPECT_THAT(report.text, HasSubstr("FAULT in run 4: the fifth run"));
    EXPECT_THAT(report.text, HasSubstr("not repeated alone"));
}

TEST(Fuzzer, StartsANewProcessAfterAsManyRunsAsATargetAllows) {
    const TemporaryFolder folder;
    const Report report = Fuzz(folder, {L"--runs", L"12", L"short_lived"});
    EXPECT_EQ(report.status, 0U);
    EXPECT_THAT(report.text, StartsWith("short_lived: 12 runs, "));
}

TEST(Fuzzer, EndsInTime) {
    const TemporaryFolder folder;
    const Report report = Fuzz(folder, {L"--milliseconds", L"3000", L"without_fault"});
    EXPECT_EQ(report.status, 0U);
    EXPECT_THAT(report.text, HasSubstr("  boom"));
}

TEST(Fuzzer, NamesItsTargets) {
    const TemporaryFolder folder;
    const test_support::Program program(PLANTED_FAULTS, {L"--list"}, folder / L"report.txt");
    EXPECT_EQ(program.Wait(), 0U);
    EXPECT_THAT(program.Output(), StartsWith("crash"));
}

TEST(Fuzzer, RefusesWhatItDoesNotKnow) {
    const TemporaryFolder folder;
    EXPECT_EQ(Fuzz(folder, {L"--runs", L"1", L"nothing"}).status, 2U);
    EXPECT_EQ(Fuzz(folder, {L"--walks", L"1", L"crash"}).status, 2U);
    EXPECT_EQ(Fuzz(folder, {L"--runs", L"one", L"crash"}).status, 2U);
    EXPECT_EQ(Fuzz(folder, {L"crash", L"--runs"}).status, 2U);
}
