// The demo's own policy.
#include <gtest/gtest.h>

#include "stand-ins/agent/Inspection.h"
#include "stand-ins/agent/Policy.h"
#include "tests/stand-ins/agent_client.h"

using namespace stand_ins;
using agent::Inspection;
using agent_tests::MailDocument;
using agent_tests::OwnFolder;

namespace {

class AgentDemoPolicy : public testing::Test {
protected:
    Verdict Judge_(const std::wstring& subject, const std::wstring& body, const std::wstring& attachment = L"") {
        const OwnFolder folder;
        const std::wstring path = attachment.empty() ? L"" : folder.Write(L"a.cip", "content");
        return policy_.Judge(Inspection::FromXml(MailDocument(subject, body, L"", path, attachment)));
    }

    const Policy policy_ = Policy::FromFile(DEMO_FOLDER L"/policy.json");
};

} // namespace

TEST_F(AgentDemoPolicy, WatchesMailAndNothingElse) {
    EXPECT_EQ(policy_.ExecutionMode(L"Email"), 1);
    EXPECT_EQ(policy_.ExecutionMode(L"FTP"), 0);
}

TEST_F(AgentDemoPolicy, BlocksCardAndAccountNumbers) {
    EXPECT_TRUE(Judge_(L"Invoice", L"My card: 4111 1111 1111 1111").actions.block);
    EXPECT_TRUE(Judge_(L"Invoice", L"IBAN DE89 3704 0044 0532 0130 00, thanks").actions.block);
    EXPECT_FALSE(Judge_(L"Invoice", L"order 4111 1111 1111 1112, phone +44 20 7946 0018").actions.block);
}

TEST_F(AgentDemoPolicy, MarksWhatIsConfidential) {
    EXPECT_EQ(Judge_(L"Confidential plans", L"").actions.subject, L"[Confidential] {subject}");
    EXPECT_EQ(Judge_(L"Plans", L"this is confidential").actions.bodyBefore,
              L"CONFIDENTIAL: for the people named above only.");
    EXPECT_EQ(Judge_(L"Plans", L"see you").why, L"no rule applies");
}

TEST_F(AgentDemoPolicy, ReplacesSalariesAndPriceLists) {
    EXPECT_EQ(Judge_(L"Numbers", L"", L"Salaries-2024.xlsx").actions.replacement->name, L"salaries");
    EXPECT_EQ(Judge_(L"Numbers", L"", L"price-list.csv").actions.replacement->name, L"price");
    EXPECT_FALSE(Judge_(L"Numbers", L"", L"minutes.txt").actions.replacement);
}
