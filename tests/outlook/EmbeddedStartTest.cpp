#include "agent/apps/outlook/EmbeddedStart.h"

#include <gtest/gtest.h>

namespace vorlek {
namespace {

TEST(EmbeddedStart, NoArgumentsAtAllAreAnOrdinaryStart) {
    EXPECT_FALSE(IsEmbeddedStart({}));
}

TEST(EmbeddedStart, OutlookWithoutTheSwitchIsAnOrdinaryStart) {
    EXPECT_FALSE(IsEmbeddedStart({L"C:\\Program Files\\Office16\\OUTLOOK.EXE"}));
    EXPECT_FALSE(IsEmbeddedStart({L"outlook.exe", L"/recycle", L"C:\\a\\-embedding.msg"}));
}

TEST(EmbeddedStart, TheSwitchCountsInAnyCaseAndPlaceWithADashOrWithout) {
    EXPECT_TRUE(IsEmbeddedStart({L"C:\\Office\\OUTLOOK.EXE", L"-Embedding"}));
    EXPECT_TRUE(IsEmbeddedStart({L"C:\\Office\\Outlook.exe", L"/recycle", L"EMBEDDING"}));
    EXPECT_TRUE(IsEmbeddedStart({L"outlook.exe", L"embedding", L"/recycle"}));
}

TEST(EmbeddedStart, TheSwitchWithASlashIsNotKnown) {
    EXPECT_FALSE(IsEmbeddedStart({L"C:\\Office\\OUTLOOK.EXE", L"/Embedding"}));
}

TEST(EmbeddedStart, OnlyAWholeArgumentIsTheSwitch) {
    EXPECT_FALSE(IsEmbeddedStart({L"outlook.exe", L"-embedding2"}));
    EXPECT_FALSE(IsEmbeddedStart({L"outlook.exe", L"--embedding"}));
    EXPECT_FALSE(IsEmbeddedStart({L"outlook.exe", L" -embedding"}));
}

TEST(EmbeddedStart, TheSwitchInFrontOfThePathIsThePathItself) {
    EXPECT_TRUE(IsEmbeddedStart({L"-embedding", L"outlook.exe"})); // a program named "-embedding"
}

TEST(EmbeddedStart, EveryOtherProgramIsAHostOfAutomation) {
    EXPECT_TRUE(IsEmbeddedStart({L"C:\\Office\\outlook_tests.exe"}));
    EXPECT_TRUE(IsEmbeddedStart({L"C:\\outlook.exe\\host.exe"}));
    EXPECT_TRUE(IsEmbeddedStart({L"C:/Office/outlook.exe"})); // only a backslash ends a folder
    EXPECT_TRUE(IsEmbeddedStart({L""}));
}

TEST(EmbeddedStart, TheProcessKnowsItsOwnPathAsFirstArgument) {
    const std::vector<std::wstring> arguments = GetProcessArguments();
    ASSERT_FALSE(arguments.empty());
    const std::wstring name = L"outlook_tests.exe";
    ASSERT_GE(arguments.front().size(), name.size());
    EXPECT_EQ(arguments.front().substr(arguments.front().size() - name.size()), name);
}

} // namespace
} // namespace vorlek
