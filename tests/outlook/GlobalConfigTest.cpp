#include "agent/apps/outlook/GlobalConfig.h"

#include "tests/outlook/OutlookTest.h"
#include "tests/support/ChildProcess.h"

namespace outlook_tests {
namespace {

using vorlek::GlobalConfig;

class GlobalConfigTest : public OutlookTest {
protected:
    GlobalConfigTest() { SetVersion(L"-1."); }

    const log4cxx::LoggerPtr logger_ = log4cxx::Logger::getLogger("caller");
};

std::wstring TellVersion_(const std::wstring&) {
    return std::to_wstring(GlobalConfig::GetOutlookMajorVersion());
}
const test_support::ChildRoleName tellVersion(L"TellVersion", TellVersion_);

TEST_F(GlobalConfigTest, AProcessThatHasNotAskedOutlookKnowsNoVersion) {
    test_support::ChildProcess process(L"TellVersion", L"");
    EXPECT_EQ(process.Result(), L"-1");
}

TEST_F(GlobalConfigTest, FirstPartOfTheVersionIsKept) {
    EXPECT_EQ(GlobalConfig::SetOutlookMajorVersion(L"12.0.6665.5003", logger_), 12);
    EXPECT_EQ(GlobalConfig::GetOutlookMajorVersion(), 12);
    EXPECT_FALSE(GlobalConfig::IsOutlookBefore2007());
    ASSERT_EQ(log.Lines().size(), 1u);
    EXPECT_EQ(log.Lines()[0].level, L"DEBUG");
    EXPECT_EQ(log.Lines()[0].logger, L"caller");
    EXPECT_EQ(log.Lines()[0].text, L"OutlookMajorVersion was set to = 12");
}

TEST_F(GlobalConfigTest, VersionElevenIsBefore2007) {
    EXPECT_EQ(GlobalConfig::SetOutlookMajorVersion(L"11.0.8169", logger_), 11);
    EXPECT_TRUE(GlobalConfig::IsOutlookBefore2007());
}

TEST_F(GlobalConfigTest, VersionOneIsTheFirstBefore2007) {
    EXPECT_EQ(GlobalConfig::SetOutlookMajorVersion(L"1.0", logger_), 1);
    EXPECT_TRUE(GlobalConfig::IsOutlookBefore2007());
}

TEST_F(GlobalConfigTest, VersionWithoutADotLeavesTheValue) {
    EXPECT_EQ(GlobalConfig::SetOutlookMajorVersion(L"16", logger_), -1);
    EXPECT_EQ(GlobalConfig::GetOutlookMajorVersion(), -1);
    EXPECT_FALSE(GlobalConfig::IsOutlookBefore2007());
    EXPECT_EQ(log.Texts(L"DEBUG"), std::vector<std::wstring>{L"OutlookMajorVersion failed to be set"});
}

TEST_F(GlobalConfigTest, VersionWithLettersIsZeroAndNotBefore2007) {
    EXPECT_EQ(GlobalConfig::SetOutlookMajorVersion(L"beta.1", logger_), 0);
    EXPECT_EQ(GlobalConfig::GetOutlookMajorVersion(), 0);
    EXPECT_FALSE(GlobalConfig::IsOutlookBefore2007());
    EXPECT_EQ(log.Texts(L"DEBUG"), std::vector<std::wstring>{L"OutlookMajorVersion was set to = 0"});
}

TEST_F(GlobalConfigTest, ApplicationIsHeldUntilItIsReplaced) {
    GlobalConfig::SetOutlookApplication({});
    EXPECT_EQ(GlobalConfig::GetOutlookApplication().GetInterfacePtr(), nullptr);

    const Outlook::_ApplicationPtr application(outlook->Application().GetInterfacePtr());
    const auto references = [&] {
        application->AddRef();
        return application->Release();
    };
    const ULONG before = references();
    GlobalConfig::SetOutlookApplication(application);
    EXPECT_EQ(references(), before + 1);
    EXPECT_EQ(GlobalConfig::GetOutlookApplication().GetInterfacePtr(), application.GetInterfacePtr());
    EXPECT_EQ(references(), before + 1);
    GlobalConfig::SetOutlookApplication(application);
    EXPECT_EQ(references(), before + 1);
    GlobalConfig::SetOutlookApplication({});
    EXPECT_EQ(references(), before);
}

} // namespace
} // namespace outlook_tests
