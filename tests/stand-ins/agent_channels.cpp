#include "stand-ins/agent/Channels.h"

#include <gtest/gtest.h>

#include "stand-ins/agent/Policy.h"
#include "tests/stand-ins/agent_serving.h"

using namespace stand_ins;
using namespace agent_tests;
using stand_ins::agent::ChannelsText;

TEST(AgentChannels, APolicyWithoutAWordWatchesNothing) {
    EXPECT_EQ(ChannelsText(Policy::FromText("{}")),
              L"<DataAccessChannelsMessage><channels></channels><ApplicationLaunch inspect=\"False\" />"
              L"</DataAccessChannelsMessage>");
}

TEST(AgentChannels, ChannelsLaunchAndPermissionsStandAsThePolicyHasThem) {
    const Policy policy = Policy::FromText(R"({
        "channels": ["Paste", "A&B"],
        "inspectLaunch": true,
        "filePermissions": [
            { "path": "C:\\a.txt", "operator": 3, "class": -1, "inspect": true },
            { "path": "C:\\\"b\".txt", "operator": 1, "class": 2 },
            { "path": "C:\\c.txt", "inspect": true }
        ]
    })");
    EXPECT_EQ(ChannelsText(policy),
              L"<DataAccessChannelsMessage><channels><channel>Paste</channel><channel>A&amp;B</channel></channels>"
              L"<ApplicationLaunch inspect=\"True\" />"
              L"<FilePermissions inspect=\"False\"><Application /><Files>"
              L"<FilePermission path=\"C:\\&quot;b&quot;.txt\" operator=\"1\" class=\"2\" />"
              L"</Files></FilePermissions>"
              L"<FilePermissions inspect=\"True\"><Application /><Files>"
              L"<FilePermission path=\"C:\\a.txt\" operator=\"3\" class=\"-1\" />"
              L"<FilePermission path=\"C:\\c.txt\" operator=\"0\" class=\"0\" />"
              L"</Files></FilePermissions></DataAccessChannelsMessage>");
}

TEST_F(AgentServing, ChannelsAreThoseOfThePolicyInForce) {
    Agent agent(Options_());
    agent.SetPolicy(Policy::FromText(R"({"channels": ["Print"]})"));
    EXPECT_EQ(Call(agent.Port(), kControl, L"StartAppMgrIdentifyChannels", MailDocument(L"", L"")),
              L"Response string: <DataAccessChannelsMessage><channels><channel>Print</channel></channels>"
              L"<ApplicationLaunch inspect=\"False\" /></DataAccessChannelsMessage>");
}
