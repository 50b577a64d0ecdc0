#include "stand-ins/agent/Policy.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "stand-ins/agent/Inspection.h"
#include "tests/stand-ins/agent_client.h"

using namespace stand_ins;
using agent::Inspection;
using agent_tests::MailDocument;
using agent_tests::OwnFolder;

namespace {

std::string FaultOf_(std::string_view json) {
    try {
        Policy::FromText(json, L"C:\\policies", L"p.json");
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return "none";
}

Verdict Judge_(std::string_view json, const std::wstring& subject, const std::wstring& body = L"") {
    return Policy::FromText(json).Judge(Inspection::FromXml(MailDocument(subject, body)));
}

} // namespace

TEST(AgentPolicy, AnEmptyPolicyWatchesEveryChannelAndAllows) {
    const Policy policy = Policy::FromText("{}");
    EXPECT_EQ(policy.ExecutionMode(L"Email"), 1);
    const Verdict verdict = policy.Judge({});
    EXPECT_FALSE(verdict.actions.block);
    EXPECT_EQ(verdict.why, L"no rule applies");
}

TEST(AgentPolicy, TheModeOfAChannelComesBeforeThatOfAllOthers) {
    const Policy policy = Policy::FromText(R"({"executionMode": {"Email": 0, "Web": -3, "*": 2}})");
    EXPECT_EQ(policy.ExecutionMode(L"Email"), 0);
    EXPECT_EQ(policy.ExecutionMode(L"Web"), -3);
    EXPECT_EQ(policy.ExecutionMode(L"FTP"), 2);
}

TEST(AgentPolicy, TheFirstRuleThatMatchesDecides) {
    const char* const json = R"({
        // comments are welcome
        "rules": [
            { "name": "one", "match": { "subject": "alpha", "recipient": "bob@" }, "then": { "block": true } },
            { "name": "two", "match": { "subject": ["beta", { "pattern": "^al" }] }, "then": { "subject": "X" } },
            { "name": "rest", "then": { "delay": "2s" } }
        ]
    })";
    EXPECT_EQ(Judge_(json, L"Alpha").why, L"rule \"one\"");
    EXPECT_TRUE(Judge_(json, L"Alpha").actions.block);
    EXPECT_EQ(Judge_(json, L"Beta").actions.subject, L"X");
    EXPECT_EQ(Judge_(json, L"Always").why, L"rule \"two\"");
    EXPECT_EQ(Judge_(json, L"gamma").actions.delay, 2000u);
}

TEST(AgentPolicy, ARuleNeedsAllItsConditions) {
    const char* const json =
        R"({"rules": [{"name": "r", "match": {"subject": "alpha", "body": "beta"}, "then": {"block": true}}]})";
    EXPECT_TRUE(Judge_(json, L"alpha", L"beta").actions.block);
    EXPECT_FALSE(Judge_(json, L"alpha", L"gamma").actions.block);
    EXPECT_FALSE(Judge_(json, L"gamma", L"beta").actions.block);
}

TEST(AgentPolicy, AMailsOwnWishComesFirstUnlessThePolicyIsDeaf) {
    const std::string rules = R"("rules": [{"name": "r", "then": {"subject": "X"}}]})";
    EXPECT_EQ(Judge_("{" + rules, L"[[block]]").why, L"the mail asks for it");
    EXPECT_EQ(Judge_("{\"directives\": false, " + rules, L"[[block]]").why, L"rule \"r\"");
}

TEST(AgentPolicy, AReplacementFileIsFoundBesideThePolicy) {
    const OwnFolder folder;
    folder.Write(L"notice.txt", "gone");
    const std::wstring file = folder.Write(
        L"policy.json", R"({"rules": [{"name": "r", "then": {"replaceAttachments": {"file": "notice.txt"}}}]})");
    EXPECT_EQ(Policy::FromFile(file).rules[0].actions.replacement->file, folder.Path() + L"\\notice.txt");
}

TEST(AgentPolicy, AFaultInTheTextIsToldWithLineAndColumn) {
    EXPECT_EQ(FaultOf_("{\n  \"rules\": [,]\n}").substr(0, 39), "p.json: line 2, column 13: syntax error");
    EXPECT_EQ(FaultOf_("{\n  \"rules\": [,]\n}").find('\n'), std::string::npos);
    EXPECT_EQ(FaultOf_("").substr(0, 24), "p.json: line 1, column 1");
}

TEST(AgentPolicy, AFaultInAFieldIsToldWithItsPath) {
    EXPECT_EQ(FaultOf_("[]"), "p.json: must be an object in braces");
    EXPECT_EQ(FaultOf_(R"({"rule": []})"), "p.json: rule: unknown; known here are executionMode, channels, "
                                           "inspectLaunch, filePermissions, directives, misbehave, rules");
    EXPECT_EQ(FaultOf_(R"({"rules": {}})"), "p.json: rules: must be a list");
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a"}]})"), "p.json: rules[0]: needs \"name\" and \"then\"");
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a", "then": {}}, {"name": "b", "then": {"block": 1}}]})"),
              "p.json: rules[1].then.block: must be true or false");
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a", "then": {"block": true, "allow": true}}]})"),
              "p.json: rules[0].then: cannot block and allow");
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a", "then": {"delay": "soon"}}]})"),
              "p.json: rules[0].then.delay: must be a time such as \"2s\" or \"500ms\", 10 minutes at most");
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a", "match": {"subject": []}, "then": {}}]})"),
              "p.json: rules[0].match.subject: nothing to look for");
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a", "then": {"replaceAttachments": {}}}]})"),
              "p.json: rules[0].then.replaceAttachments: needs one of \"file\" and \"text\"");
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a", "then": {"replaceAttachments": {"file": "none.txt"}}}]})"),
              "p.json: rules[0].then.replaceAttachments.file: no such file: C:\\policies\\none.txt");
    EXPECT_EQ(FaultOf_(R"({"executionMode": {"Email": 1.5}})"),
              "p.json: executionMode.Email: must be a whole number of 32 bits");
    EXPECT_EQ(FaultOf_(R"({"misbehave": ["sulk"]})").substr(0, 50),
              "p.json: misbehave[0]: unknown misbehaviour \"sulk\";");
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a", "match": {"body": {"pattern": "("}}, "then": {}}]})").substr(0, 60),
              "p.json: rules[0].match.body.pattern: no regular expression: ");
}

TEST(AgentPolicy, AFileThatCannotBeReadIsNamed) {
    try {
        Policy::FromFile(L"C:\\no such policy.json");
        FAIL() << "it was read";
    } catch (const std::runtime_error& failure) {
        EXPECT_STREQ(failure.what(), "Cannot read \"C:\\no such policy.json\": error 2");
    }
}

TEST(AgentPolicy, ARuleMayLetDownTheClientOfItsItems) {
    const char* const json = R"({"rules": [{"name": "r", "match": {"subject": "plans"},
                                            "then": {"block": true, "misbehave": "split=-5 + reset=-1"}}]})";
    const Actions actions = Judge_(json, L"Plans").actions;
    EXPECT_TRUE(actions.block);
    EXPECT_EQ(actions.misbehaviour.kinds, L"split=-5 + reset=-1");
    EXPECT_TRUE(Judge_(json, L"Lunch").actions.misbehaviour.IsNone());
}

TEST(AgentPolicy, AMisbehaviourOfAllMethodsIsNoneOfARule) {
    EXPECT_EQ(FaultOf_(R"({"rules": [{"name": "a", "then": {"misbehave": "refuse"}}]})"),
              "p.json: rules[0].then.misbehave: misbehaviour \"refuse\" holds for all requests, not for one");
    EXPECT_EQ(FaultOf_(R"({"misbehave": ["unread=5:Inspect"]})"),
              "p.json: misbehave[0]: misbehaviour \"unread=5\" holds for all requests, not for one");
}

TEST(AgentPolicy, AFilePermissionIsReadWithItsFaults) {
    EXPECT_EQ(FaultOf_(R"({"filePermissions": [{"path": 1}]})"), "p.json: filePermissions[0].path: must be a text");
    EXPECT_EQ(FaultOf_(R"({"filePermissions": [{"operator": "x"}]})"),
              "p.json: filePermissions[0].operator: must be a whole number of 32 bits");
    EXPECT_EQ(FaultOf_(R"({"inspectLaunch": 1})"), "p.json: inspectLaunch: must be true or false");
}
