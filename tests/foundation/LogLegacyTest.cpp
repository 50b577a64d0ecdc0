#include <gtest/gtest.h>

#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ReplacedImport.h"

using namespace vorlek;
using test_support::ChildProcess;
using test_support::FailingImport;
using test_support::LogCapture;

namespace {

constexpr std::uint32_t kCategory = 0x100000;

/// What the calls log in a process whose session has started: "LEVEL logger text" lines.
template <class Calls>
std::wstring Logged_(const Calls& calls) {
    StartLogSession(L"C:\\no\\such.properties", GetModuleHandleW(L"kernel32.dll"), false);
    const LogCapture log;
    calls();
    std::wstring lines;
    for (const auto& line : log.Lines()) {
        lines += line.level + L" " + line.logger + L" " + line.text + L"|";
    }
    return lines;
}

template <class... Arguments>
void Log_(int level, const char* format, Arguments... arguments) {
    LogLegacy(kCategory, level, format, "Old.cpp", "SwapInPlace", 7, arguments...);
}

std::wstring Levels_(const std::wstring& /*argument*/) {
    return Logged_([] {
        for (const int level : {0, 1, 2, 3, 4, -1}) {
            Log_(level, "level %d", level);
        }
    });
}

std::wstring Conversions_(const std::wstring& /*argument*/) {
    return Logged_([] {
        Log_(1, "(%s)ERROR: NULL pointer to function SwapInPlace", "SwapInPlace");
        Log_(1, "(%s) StringSid is %S\n", "SidToString", L"S-1-5-18");
        Log_(1, "%S %s %d %% %x", L"wide \x05D0", "narrow", -5, 255);
        Log_(1, "two line ends\n\n");
        Log_(1, "a line end\nin the middle");
    });
}

std::wstring Silence_(const std::wstring& /*argument*/) {
    return Logged_([] {
        Log_(1, "\n");
        Log_(1, "");
        Log_(1, "%s", "");
    });
}

std::wstring DisabledLevel_(const std::wstring& /*argument*/) {
    return Logged_([] {
        log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getWarn());
        Log_(3, "information");
        Log_(0, "debug");
        Log_(3, nullptr); // not looked at
        Log_(2, "warning");
    });
}

std::wstring WithoutSession_(const std::wstring& /*argument*/) {
    const LogCapture log;
    Log_(1, "too early");
    Log_(1, nullptr);
    return std::to_wstring(log.Lines().size());
}

std::wstring Unformattable_(const std::wstring& /*argument*/) {
    using Arguments = char*; // what a va_list is here
    using Measure = int(const wchar_t*, Arguments);
    using Format = int(wchar_t*, std::size_t, std::size_t, const wchar_t*, Arguments);
    return Logged_([] {
        {
            const FailingImport<"_vscwprintf", Measure> measure(0, -1);
            Log_(1, "cannot be measured");
        }
        {
            const FailingImport<"_vsnwprintf_s", Format> format(0, -1);
            Log_(1, "cannot be formatted");
        }
        Log_(1, "the next one");
    });
}

std::wstring Site_(const std::wstring& /*argument*/) {
    StartLogSession(L"C:\\no\\such.properties", nullptr, false);
    const LogCapture log;
    LogLegacy(0, 2, "any category", "source/foundation/Old.cpp", "SwapInPlace", 7);
    const std::string site = log.Lines().at(0).site;
    return {site.begin(), site.end()};
}

const test_support::ChildRoleName levels(L"LegacyLevels", Levels_);
const test_support::ChildRoleName conversions(L"LegacyConversions", Conversions_);
const test_support::ChildRoleName silence(L"LegacySilence", Silence_);
const test_support::ChildRoleName disabledLevel(L"LegacyDisabledLevel", DisabledLevel_);
const test_support::ChildRoleName withoutSession(L"LegacyWithoutSession", WithoutSession_);
const test_support::ChildRoleName unformattable(L"LegacyUnformattable", Unformattable_);
const test_support::ChildRoleName site(L"LegacySite", Site_);

} // namespace

TEST(LogLegacy, LevelsAreOneToThreeAndAllElseIsDebug) {
    EXPECT_EQ(ChildProcess(L"LegacyLevels").Result(), L"DEBUG kernel32.loglegacy level 0|"
                                                      L"ERROR kernel32.loglegacy level 1|"
                                                      L"WARN kernel32.loglegacy level 2|"
                                                      L"INFO kernel32.loglegacy level 3|"
                                                      L"DEBUG kernel32.loglegacy level 4|"
                                                      L"DEBUG kernel32.loglegacy level -1|");
}

TEST(LogLegacy, FormatsAsTheNarrowFamilyDoes) {
    EXPECT_EQ(ChildProcess(L"LegacyConversions").Result(),
              L"ERROR kernel32.loglegacy (SwapInPlace)ERROR: NULL pointer to function SwapInPlace|"
              L"ERROR kernel32.loglegacy (SidToString) StringSid is S-1-5-18|"
              L"ERROR kernel32.loglegacy wide \x05D0 narrow -5 % ff|"
              L"ERROR kernel32.loglegacy two line ends\n|"
              L"ERROR kernel32.loglegacy a line end\nin the middle|");
}

TEST(LogLegacy, EmptyTextIsNotLogged) {
    EXPECT_EQ(ChildProcess(L"LegacySilence").Result(), L"");
}

TEST(LogLegacy, DisabledLevelIsNotLogged) {
    EXPECT_EQ(ChildProcess(L"LegacyDisabledLevel").Result(), L"WARN kernel32.loglegacy warning|");
}

TEST(LogLegacy, IsSilentBeforeASession) {
    EXPECT_EQ(ChildProcess(L"LegacyWithoutSession").Result(), L"0");
}

TEST(LogLegacy, LosesATextThatCannotBeFormattedAndNothingElse) {
    EXPECT_EQ(ChildProcess(L"LegacyUnformattable").Result(), L"ERROR kernel32.loglegacy the next one|");
}

TEST(LogLegacy, TellsTheCallersSite) {
    EXPECT_EQ(ChildProcess(L"LegacySite").Result(), L"Old.cpp(7): SwapInPlace");
}
