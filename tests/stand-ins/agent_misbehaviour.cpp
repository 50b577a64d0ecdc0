// The names of misbehaviour, and how they go together.
#include "stand-ins/agent/Misbehaviour.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace stand_ins;
using stand_ins::agent::Delivery;
using stand_ins::agent::Position;

namespace {

std::string FaultOf_(std::wstring_view text) {
    try {
        MisbehaviourRule::FromText(text);
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return "none";
}

std::size_t Place_(std::wstring_view text, std::size_t size) {
    return Position::FromText(text).value().In(size);
}

} // namespace

TEST(AgentMisbehaviour, AnyKindsGoTogether) {
    const Misbehaviour all(L"wrong-tag+ huge = 1MB + pieces=7 +gap=5ms+ split=-5+ reset=50%");
    EXPECT_EQ(all.spoilings.size(), 2u);
    EXPECT_EQ(all.delivery.piece, 7u);
    EXPECT_EQ(all.delivery.gap, 5u);
    EXPECT_EQ(all.delivery.splits.size(), 1u);
    EXPECT_EQ(all.delivery.end, Delivery::End::Reset);
    EXPECT_EQ(all.delivery.stop.value().In(200), 100u);
    EXPECT_FALSE(all.IsNone());
    EXPECT_TRUE(Misbehaviour(L" none ").IsNone());
    EXPECT_TRUE(Misbehaviour().IsNone());
}

TEST(AgentMisbehaviour, APlaceIsCountedFromEitherEndOrInPercent) {
    EXPECT_EQ(Place_(L"0", 10), 0u);
    EXPECT_EQ(Place_(L"7", 10), 7u);
    EXPECT_EQ(Place_(L"11", 10), 10u);
    EXPECT_EQ(Place_(L"-3", 10), 7u);
    EXPECT_EQ(Place_(L"-11", 10), 0u);
    EXPECT_EQ(Place_(L"50%", 11), 5u);
    EXPECT_EQ(Place_(L"100%", 11), 11u);
    for (const std::wstring_view none : {L"", L"-", L"%", L"101%", L"-5%", L"five", L"1000000000"}) {
        EXPECT_FALSE(Position::FromText(none));
    }
}

TEST(AgentMisbehaviour, ARuleHasAMethodAndWordsThatMayHoldAnything) {
    const auto rule = MisbehaviourRule::FromText(L"error+byte-by-byte:Inspect:All is lost: 1+1=3");
    EXPECT_EQ(rule.method, L"Inspect");
    EXPECT_EQ(rule.misbehaviour.kinds, L"error+byte-by-byte");
    EXPECT_EQ(MisbehaviourRule::FromText(L"silent").method, L"");
    EXPECT_EQ(MisbehaviourRule::FromText(L"error::All").method, L"");
}

TEST(AgentMisbehaviour, EachFaultIsToldInOneLine) {
    EXPECT_TRUE(FaultOf_(L"sulk").starts_with("unknown misbehaviour \"sulk\"; known are error, no-result, no-words,"));
    EXPECT_TRUE(FaultOf_(L"sulk").ends_with("unread, refuse, none"));
    EXPECT_EQ(FaultOf_(L"").substr(0, 23), "unknown misbehaviour \"\"");
    EXPECT_EQ(FaultOf_(L"error+").substr(0, 23), "unknown misbehaviour \"\"");
    EXPECT_EQ(FaultOf_(L"error++delay=1s").substr(0, 23), "unknown misbehaviour \"\"");
    EXPECT_EQ(FaultOf_(L"garbage=5"), "misbehaviour \"garbage=5\": takes no value");
    EXPECT_EQ(FaultOf_(L"refuse=5"), "misbehaviour \"refuse=5\": takes no value");
    EXPECT_EQ(FaultOf_(L"huge=2GB"), "misbehaviour \"huge=2GB\": needs a size such as 100MB, 1024MB at most");
    EXPECT_EQ(FaultOf_(L"keys=many"), "misbehaviour \"keys=many\": needs a number");
    EXPECT_EQ(FaultOf_(L"extra-byte=x"), "misbehaviour \"extra-byte=x\": needs a place such as 100, -5 or 50%");
    EXPECT_EQ(FaultOf_(L"split=x"), "misbehaviour \"split=x\": needs a place such as 100, -5 or 50%");
    EXPECT_EQ(FaultOf_(L"pieces=x"), "misbehaviour \"pieces=x\": needs a number");
    EXPECT_EQ(FaultOf_(L"pieces=0"), "misbehaviour \"pieces=0\": needs a number above 0");
    EXPECT_EQ(FaultOf_(L"delay"), "misbehaviour \"delay\": needs a time such as 2s or 500ms, 10 minutes at most");
    EXPECT_EQ(FaultOf_(L"close+reset"), "misbehaviour \"reset\": a connection ends once");
    EXPECT_EQ(FaultOf_(L"refuse:Inspect"), "misbehaviour \"refuse\" holds for all requests, not for one");
    EXPECT_EQ(FaultOf_(L"refuse"), "none");
}

TEST(AgentMisbehaviour, OnlyWhatIsSentWholeCanBeUnderstood) {
    EXPECT_TRUE(Misbehaviour(L"byte-by-byte").IsUnderstood(10, 10));
    EXPECT_FALSE(Misbehaviour(L"byte-by-byte").IsUnderstood(9, 10));
    EXPECT_TRUE(Misbehaviour(L"silent=100%").IsUnderstood(10, 10));
    EXPECT_FALSE(Misbehaviour(L"reset=100%").IsUnderstood(10, 10));
    EXPECT_TRUE(Misbehaviour(L"two-messages+wrong-size").IsUnderstood(10, 10));
    EXPECT_FALSE(Misbehaviour(L"wrong-tag").IsUnderstood(10, 10));
}
