#include "stand-ins/agent/Directives.h"

#include <gtest/gtest.h>

#include "stand-ins/agent/Inspection.h"

using namespace stand_ins;
using namespace stand_ins::agent;

namespace {

std::optional<Actions> Read_(const std::wstring& subject, const std::wstring& body = {}) {
    Inspection mail;
    mail.subject = subject;
    mail.body = body;
    return ReadDirectives(mail);
}

} // namespace

TEST(AgentDirectives, AMailMayAskToBeBlocked) {
    ASSERT_TRUE(Read_(L"Plans [[block]]"));
    EXPECT_TRUE(Read_(L"Plans [[block]]")->block);
    EXPECT_TRUE(Read_(L"", L"text\r\n[[ Block ]]\r\n")->block);
}

TEST(AgentDirectives, ALabelGoesBeforeSubjectAndBody) {
    const auto actions = Read_(L"Plans", L"[[label: For us only]]");
    ASSERT_TRUE(actions);
    EXPECT_EQ(actions->subject, L"[For us only] {subject}");
    EXPECT_EQ(actions->bodyBefore, L"For us only");
    EXPECT_FALSE(actions->block);
}

TEST(AgentDirectives, AttachmentsMayBeNamedOrNot) {
    EXPECT_EQ(Read_(L"[[replace attachment]]")->replacement->name, L"");
    EXPECT_EQ(Read_(L"[[replace attachment: Prices]]")->replacement->name, L"Prices");
}

TEST(AgentDirectives, SeveralStandTogether) {
    const auto actions = Read_(L"[[delay 2s]] [[label: X]]", L"[[replace attachment]]");
    ASSERT_TRUE(actions);
    EXPECT_EQ(actions->delay, 2000u);
    EXPECT_EQ(actions->bodyBefore, L"X");
    EXPECT_TRUE(actions->replacement);
}

TEST(AgentDirectives, AnythingElseInBracketsIsTheWritersOwn) {
    EXPECT_FALSE(Read_(L"see [[blocks]] and [[Main Page]]", L"[[label:]] [[delay soon]] [[block"));
}

TEST(AgentDirectives, AMailMayAskToBeLetDown) {
    const auto actions = Read_(L"Plans [[misbehave: wrong-tag + reset=100]] [[block]]");
    ASSERT_TRUE(actions);
    EXPECT_TRUE(actions->block);
    EXPECT_EQ(actions->misbehaviour.kinds, L"wrong-tag + reset=100");
    EXPECT_EQ(actions->misbehaviour.delivery.end, Delivery::End::Reset);
    EXPECT_EQ(Read_(L"[[Misbehave: error: no room]]")->misbehaviour.spoilings.size(), 1u);
}

TEST(AgentDirectives, AMisbehaviourThatDoesNotExistIsTheWritersOwn) {
    EXPECT_FALSE(Read_(L"[[misbehave: sulk]] [[misbehave]] [[misbehave: refuse]] [[misbehave: pieces=many]]"));
}
