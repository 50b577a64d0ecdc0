// What is answered: every fault as it stands on the wire.
#include "tests/stand-ins/agent_misbehaving.h"

#include <algorithm>

#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Text.h"

using namespace stand_ins;

namespace agent_tests {

using agent::FromWire;
using agent::ReplaceAll;

namespace {

/// Breaks XML wherever it stands.
const std::wstring kMarkup = L"<&garbage>";

std::size_t CountOf_(std::wstring_view text, std::wstring_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::wstring_view::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

} // namespace

Reply AgentMisbehaving::Misbehaved_(const Misbehaviour& misbehaviour) {
    agent_.Misbehave(misbehaviour, L"Inspect");
    EXPECT_TRUE(Serves_(agent_)) << "another method suffers";
    return Exchange(agent_.Port(), InspectCall());
}

std::wstring AgentMisbehaving::Text_(const Misbehaviour& misbehaviour) {
    const Reply reply = Misbehaved_(misbehaviour);
    EXPECT_EQ(reply.end, End::Closed);
    EXPECT_EQ(reply.bytes.size() % 2, 0u);
    return FromWire(reply.bytes);
}

std::wstring AgentMisbehaving::With_(const wchar_t* from, const std::wstring& to) {
    return ReplaceAll(Text_(Misbehaviour::None), from, to);
}

std::size_t AgentMisbehaving::Size_() {
    return Misbehaved_(Misbehaviour::None).bytes.size();
}

TEST_F(AgentMisbehaving, AnErrorHasTheWordsThatWereGiven) {
    agent_.Misbehave(Misbehaviour(L"error", L"Out of <paper>"), L"Inspect");
    EXPECT_EQ(Inspect_(agent_, MailDocument(L"", L"")), L"Error string: Out of <paper>");
    agent_.Misbehave(Misbehaviour::Error, L"Inspect");
    EXPECT_EQ(Inspect_(agent_, MailDocument(L"", L"")), L"Error string: The agent has failed.");
}

TEST_F(AgentMisbehaving, AnAnswerMayBeWithoutItsValue) {
    const std::wstring none = Text_(L"no-result");
    EXPECT_EQ(CountOf_(none, L"type=\"Response\""), 1u);
    EXPECT_EQ(CountOf_(none, L"<Key"), 0u);
    const std::wstring wordless = Text_(L"no-words");
    EXPECT_EQ(CountOf_(wordless, L"type=\"Error\""), 1u);
    EXPECT_EQ(CountOf_(wordless, L"<Key"), 0u);
}

TEST_F(AgentMisbehaving, AnAnswerMayBeOfAnyType) {
    EXPECT_EQ(Text_(L"wrong-type"), With_(L"\"Response\"", L"\"Test\""));
    EXPECT_EQ(Text_(L"wrong-type=Request"), With_(L"\"Response\"", L"\"Request\""));
    EXPECT_EQ(Text_(L"wrong-type=Wish"), With_(L"\"Response\"", L"\"Wish\""));
}

TEST_F(AgentMisbehaving, AResultMayHaveAnyTag) {
    EXPECT_EQ(Text_(L"wrong-tag"), With_(L"type=\"string\"", L"type=\"int\""));
    EXPECT_EQ(Text_(L"wrong-tag=byte[]").find(L"type=\"byte[]\" size=\""),
              Text_(Misbehaviour::None).find(L"type=\"string\""));
    agent_.Misbehave(L"wrong-tag", L"GetExecutionMode");
    EXPECT_EQ(Call(agent_.Port(), kData, L"GetExecutionMode", L"Email"), L"Response string: 1");
}

TEST_F(AgentMisbehaving, AVersionMayBeAnother) {
    EXPECT_EQ(Text_(L"wrong-version"), With_(L"<Msg version=\"1\"", L"<Msg version=\"2\""));
    EXPECT_EQ(Text_(L"wrong-version=one"), With_(L"<Msg version=\"1\"", L"<Msg version=\"one\""));
}

TEST_F(AgentMisbehaving, ASizeMayLie) {
    EXPECT_EQ(Text_(L"wrong-size"), With_(L"size=\"46\"", L"size=\"4294967295\""));
    EXPECT_EQ(Text_(L"wrong-size=-1"), With_(L"size=\"46\"", L"size=\"-1\""));
}

TEST_F(AgentMisbehaving, AValueMayBeNothingOfItsTag) {
    const std::wstring text = Text_(L"not-base64");
    EXPECT_EQ(CountOf_(text, L"type=\"byte[]\""), 1u);
    EXPECT_EQ(CountOf_(text, L">%%% no base64 %%%<"), 1u);
    agent_.Misbehave(L"not-a-number", L"GetExecutionMode");
    EXPECT_EQ(Call(agent_.Port(), kData, L"GetExecutionMode", L"Email"), L"Response int: many");
}

TEST_F(AgentMisbehaving, AValueMayEndInHalfASurrogate) {
    EXPECT_EQ(Text_(L"half-surrogate"), ReplaceAll(With_(L"</Key>", L"\xD83D</Key>"), L"size=\"46\"", L"size=\"48\""));
}

TEST_F(AgentMisbehaving, AnAnswerMayBeOfAnySizeAndStillRight) {
    const Reply reply = Misbehaved_(L"huge=1MB+pieces=4096");
    EXPECT_EQ(reply.bytes.size(), 1048576u);
    const std::wstring good = Text_(Misbehaviour::None);
    std::wstring text = FromWire(reply.bytes);
    const std::size_t blanks = CountOf_(text, L" ") - CountOf_(good, L" ");
    text.erase(text.find(L"  ", text.find(L"/&gt;")), blanks);
    EXPECT_EQ(ReplaceAll(text, L"size=\"" + std::to_wstring(2 * (23 + blanks)) + L"\"", L"size=\"46\""), good);
}

TEST_F(AgentMisbehaving, AHundredMegabytesGoOutInSmallPieces) {
    EXPECT_EQ(Misbehaved_(L"huge=100MB+pieces=4096").bytes.size(), 104857600u);
}

TEST_F(AgentMisbehaving, AResultMayBeDeeplyNested) {
    const std::wstring text = Text_(L"nested=1000");
    EXPECT_EQ(CountOf_(text, L"&lt;a&gt;"), 1000u);
    EXPECT_EQ(CountOf_(text, L"&lt;/a&gt;"), 1000u);
}

TEST_F(AgentMisbehaving, AMessageMayHoldManyKeys) {
    const std::wstring text = Text_(L"keys=1000");
    EXPECT_EQ(CountOf_(text, L"<Key "), 1001u);
    EXPECT_EQ(CountOf_(text, L"<Key name=\"k999\" type=\"int\" size=\"2\" hidden=\"0\">1</Key></Msg>###@@@###"), 1u);
}

TEST_F(AgentMisbehaving, AMessageMayBringATypeDefinition) {
    EXPECT_EQ(Text_(L"type-definition"), With_(L"<Msg ", L"<!DOCTYPE Msg [<!ELEMENT Msg ANY>]><Msg "));
}

TEST_F(AgentMisbehaving, AnEntityBombIsDefinedAndSetOff) {
    const std::wstring text = Text_(L"entity-bomb");
    EXPECT_EQ(CountOf_(text, L"<!ENTITY "), 10u);
    EXPECT_EQ(CountOf_(text, L"&e8;"), 10u);
    EXPECT_EQ(CountOf_(text, L"&e9;</Key>"), 1u);
}

TEST_F(AgentMisbehaving, GarbageMayStandAnywhere) {
    const std::wstring good = Text_(Misbehaviour::None);
    EXPECT_EQ(Text_(L"garbage"), L"This is no message.###@@@###");
    EXPECT_EQ(Text_(L"garbage-before"), kMarkup + good);
    EXPECT_EQ(Text_(L"garbage-inside"), std::wstring(good).insert(good.size() / 2, kMarkup));
    EXPECT_EQ(Text_(L"garbage-after"), With_(L"###@@@###", kMarkup + L"###@@@###"));
    EXPECT_EQ(Text_(L"garbage-behind"), good + L"This is no message.");
    EXPECT_EQ(Text_(L"second-garbage"), good + L"This is no message.###@@@###");
    EXPECT_EQ(Text_(L"byte-order-mark"), L"\xFEFF" + good);
}

TEST_F(AgentMisbehaving, DelimitersMayBeTooManyOrTooFew) {
    const std::wstring good = Text_(Misbehaviour::None);
    EXPECT_EQ(Text_(L"two-messages"), good + good);
    EXPECT_EQ(Text_(L"two-delimiters"), good + L"###@@@###");
    EXPECT_EQ(Text_(L"no-delimiter"), With_(L"###@@@###", L""));
    EXPECT_EQ(Text_(L"bare-delimiter"), With_(L"</Key>", L"###@@@###</Key>"));
    EXPECT_EQ(Text_(L"empty"), L"###@@@###");
}

TEST_F(AgentMisbehaving, BytesMayBeOdd) {
    const std::string good = Misbehaved_(Misbehaviour::None).bytes;
    EXPECT_EQ(Misbehaved_(L"extra-byte").bytes, good + "x");
    EXPECT_EQ(Misbehaved_(L"extra-byte=0").bytes, "x" + good);
    EXPECT_EQ(Misbehaved_(L"extra-byte=-3").bytes, std::string(good).insert(good.size() - 3, "x"));
    EXPECT_EQ(Misbehaved_(L"utf-8").bytes, agent::ToUtf8(FromWire(good)));
}

TEST_F(AgentMisbehaving, FaultsGoTogether) {
    EXPECT_EQ(Text_(L"wrong-tag+wrong-size=7+two-messages+garbage-before"),
              kMarkup + ReplaceAll(With_(L"type=\"string\"", L"type=\"int\""), L"size=\"46\"", L"size=\"7\"") +
                  ReplaceAll(With_(L"type=\"string\"", L"type=\"int\""), L"size=\"46\"", L"size=\"7\""));
}

TEST_F(AgentMisbehaving, AMailMayAskForItAndIsNotedDown) {
    const Reply reply = Exchange(agent_.Port(), InspectCall(L"Plans [[misbehave: wrong-type]]"));
    EXPECT_EQ(FromWire(reply.bytes), Text_(L"wrong-type"));
    EXPECT_EQ(Log_().at(0), L"Email \"Plans [[misbehave: wrong-type]]\": allowed (the mail asks for it; misbehaving: "
                            L"wrong-type)");
}

TEST_F(AgentMisbehaving, ARuleOfThePolicyMayAskForIt) {
    const std::wstring good = Text_(Misbehaviour::None);
    agent_.SetPolicy(Policy::FromText(
        R"({"rules": [{"name": "r", "match": {"subject": "plans"}, "then": {"misbehave": "two-messages"}}]})"));
    EXPECT_EQ(Text_(Misbehaviour::None), good + good);
    EXPECT_EQ(FromWire(Exchange(agent_.Port(), InspectCall(L"Lunch")).bytes), good);
}

TEST_F(AgentMisbehaving, AResponderMayAskForIt) {
    agent_.SetResponder([](const Request&) -> std::optional<Answer> {
        Answer answer = Answer::Bytes("abc");
        answer.misbehaviour = L"extra-byte+two-messages";
        return answer;
    });
    EXPECT_EQ(Exchange(agent_.Port(), InspectCall()).bytes, "abcx");
}

TEST_F(AgentMisbehaving, TheLaterOfTwoHoldsUntilItBehavesAgain) {
    agent_.Misbehave(L"garbage");
    EXPECT_EQ(Exchange(agent_.Port(), ModeCall()).Text(), L"This is no message.");
    agent_.Misbehave(L"empty", L"GetExecutionMode");
    EXPECT_EQ(Exchange(agent_.Port(), ModeCall()).Text(), L"");
    EXPECT_EQ(Exchange(agent_.Port(), InspectCall()).Text(), L"This is no message.");
    agent_.Misbehave(Misbehaviour::None);
    EXPECT_TRUE(Serves_(agent_));
}

} // namespace agent_tests
