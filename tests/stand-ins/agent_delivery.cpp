// How an answer goes out: every way as a client meets it.
#include <algorithm>

#include "stand-ins/agent/Message.h"
#include "tests/stand-ins/agent_misbehaving.h"

using namespace stand_ins;

namespace agent_tests {
namespace {

/// How often a client may be too busy to see two pieces apart.
constexpr int kTries = 20;

/// Asks until one read ends at the place.
template <class Ask>
bool EndsARead_(std::size_t place, Ask&& ask) {
    for (int i = 0; i < kTries; ++i) {
        std::size_t at = 0;
        for (const std::size_t size : ask().sizes) {
            at += size;
            if (at == place) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

TEST_F(AgentMisbehaving, AnAnswerInPiecesIsWholeInTheEnd) {
    const std::string good = Misbehaved_(Misbehaviour::None).bytes;
    for (const wchar_t* kinds :
         {L"byte-by-byte", L"odd-split", L"pieces=7", L"pieces", L"pieces=100000", L"split", L"split=-5+split=3",
          L"split=0+split=100%", L"pieces=100+gap=1ms", L"split=50%+pieces=9"}) {
        EXPECT_EQ(Misbehaved_(kinds).bytes, good) << kinds;
    }
}

TEST_F(AgentMisbehaving, TheDelimiterIsSplitAtAnyPlace) {
    const std::size_t size = Size_();
    for (std::size_t behind = 1; behind < 18; ++behind) {
        const std::wstring kinds = L"split=-" + std::to_wstring(behind);
        EXPECT_TRUE(EndsARead_(size - behind, [&] { return Misbehaved_(kinds); })) << behind;
    }
}

TEST_F(AgentMisbehaving, AnOddSplitLeavesHalfACodeUnitFourTimes) {
    const std::size_t size = Size_();
    for (const std::size_t percent : {20, 40, 60, 80}) {
        EXPECT_TRUE(EndsARead_(size * percent / 100 | 1, [&] { return Misbehaved_(L"odd-split"); })) << percent;
    }
}

TEST_F(AgentMisbehaving, PiecesComeNoFasterThanTheirGap) {
    const std::size_t gaps = (Size_() - 1) / 100;
    const ULONGLONG begin = GetTickCount64();
    Misbehaved_(L"pieces=100+gap=20ms");
    EXPECT_GE(GetTickCount64() - begin, gaps * 18);
}

TEST_F(AgentMisbehaving, AnAnswerComesNoSoonerThanItsDelay) {
    const ULONGLONG begin = GetTickCount64();
    Misbehaved_(L"delay=150ms");
    EXPECT_GE(GetTickCount64() - begin, 130u);
}

TEST_F(AgentMisbehaving, TheConnectionEndsAtAnyByte) {
    const std::string good = Misbehaved_(Misbehaviour::None).bytes;
    for (std::size_t at = 0; at <= good.size(); ++at) {
        agent_.Misbehave(L"close=" + std::to_wstring(at), L"Inspect");
        const Reply reply = Exchange(agent_.Port(), InspectCall());
        ASSERT_EQ(reply.bytes, good.substr(0, at));
        ASSERT_EQ(reply.end, End::Closed) << at;
    }
}

TEST_F(AgentMisbehaving, TheConnectionBreaksAtAnyByte) {
    const std::string good = Misbehaved_(Misbehaviour::None).bytes;
    for (std::size_t at = 0; at <= good.size(); ++at) {
        agent_.Misbehave(L"reset=" + std::to_wstring(at), L"Inspect");
        const Reply reply = Exchange(agent_.Port(), InspectCall());
        // A system may drop what a client has not read before the connection broke.
        ASSERT_TRUE(good.substr(0, at).starts_with(reply.bytes)) << at;
        ASSERT_EQ(reply.end, End::Reset) << at;
    }
}

TEST_F(AgentMisbehaving, TheAgentFallsSilentAtAnyByte) {
    const std::string good = Misbehaved_(Misbehaviour::None).bytes;
    for (const std::size_t at : {std::size_t{0}, std::size_t{1}, good.size() / 2, good.size() - 1, good.size()}) {
        agent_.Misbehave(L"silent=" + std::to_wstring(at), L"Inspect");
        Client client(agent_.Port());
        client.Send(InspectCall());
        EXPECT_EQ(client.Read(at).bytes, good.substr(0, at));
        EXPECT_FALSE(client.IsReadable(30)) << at;
    }
}

TEST_F(AgentMisbehaving, TheWholeOfAnAnswerMayBeCutAsWell) {
    const std::wstring text = agent::FromWire(Misbehaved_(L"two-messages+wrong-type+close=50%+pieces=3").bytes);
    EXPECT_TRUE(text.ends_with(L"</Msg>###@@@###"));
    EXPECT_EQ(text, With_(L"\"Response\"", L"\"Test\""));
}

TEST_F(AgentServing, ASilentAgentEndsWithItsOwner) {
    auto agent = std::make_unique<Agent>(Options_());
    agent->Misbehave(Misbehaviour::Silent);
    Client client(agent->Port());
    client.Send(InspectCall());
    ASSERT_TRUE(agent->WaitForRequests(1));
    EXPECT_FALSE(agent->WaitForInspections(1, 50));
    EXPECT_FALSE(client.IsReadable());
    agent.reset();
    EXPECT_EQ(client.Read().bytes, "");
}

TEST_F(AgentServing, ARefusingAgentIsPublishedAndListensAgainLater) {
    Agent agent(Options_());
    EXPECT_TRUE(Serves_(agent));
    agent.Misbehave(Misbehaviour::Refuse);
    EXPECT_NE(PublishedPortOf(service_), 0);
    EXPECT_EQ(Exchange(PublishedPortOf(service_), "").end, End::Refused);
    agent.Misbehave(Misbehaviour::None);
    EXPECT_EQ(Call(PublishedPortOf(service_), kData, L"GetExecutionMode", L"Email"), L"Response int: 1");
}

TEST_F(AgentServing, ARequestMayBeAnsweredUnread) {
    Agent agent(Options_());
    agent.Misbehave(L"unread=10");
    Client client(agent.Port());
    client.Send(ModeCall().substr(0, 10));
    const std::wstring answer = client.Read().Text();
    EXPECT_NE(answer.find(L"type=\"Error\""), std::wstring::npos);
    EXPECT_NE(answer.find(L"The request was not read."), std::wstring::npos);
    EXPECT_EQ(Log_(), std::vector<std::wstring>{L"A request was left unread."});
}

TEST_F(AgentServing, TheConnectionEndsAtAnyByteOfARequest) {
    Agent agent(Options_());
    const std::string call = ModeCall();
    for (std::size_t at = 0; at < call.size(); at += 13) {
        const std::wstring unread = L"unread=" + std::to_wstring(at);
        agent.Misbehave(unread + L"+close");
        const Reply closed = Exchange(agent.Port(), call);
        ASSERT_EQ(closed.bytes, "") << at;
        ASSERT_EQ(closed.end, End::Closed) << at;
        agent.Misbehave(unread + L"+reset");
        Client client(agent.Port());
        if (at != 0) { // of nothing it does not wait for the first byte, and a send may come too late
            client.Send(call.substr(0, at));
        }
        const Reply reset = client.Read();
        ASSERT_EQ(reset.bytes, "") << at;
        ASSERT_EQ(reset.end, End::Reset) << at;
    }
    EXPECT_EQ(agent.Requests().size(), 0u);
}

TEST_F(AgentServing, ARequestMayBeReadInPartAndNeverAnswered) {
    Agent agent(Options_());
    agent.Misbehave(L"unread=10+silent");
    Client client(agent.Port());
    client.Send(ModeCall());
    EXPECT_FALSE(client.IsReadable(50));
}

TEST_F(AgentServing, AMisbehaviourOfAllRequestsIsNotOneOfAMethod) {
    Agent agent(Options_());
    EXPECT_THROW(agent.Misbehave(Misbehaviour::Refuse, L"Inspect"), std::runtime_error);
    EXPECT_TRUE(Serves_(agent));
}

TEST_F(AgentServing, FilesOfAnAnswerAreTheClientsOnlyIfItIsUnderstood) {
    const OwnFolder folder;
    const std::string call =
        CallBytes(kData, L"Inspect",
                  MailDocument(L"[[replace attachment]]", L"", L"", folder.Write(L"a.cip", "content"), L"a.csv"));
    Agent agent(Options_());
    std::size_t inspections = 0;
    const auto isKept = [&](const wchar_t* kinds) {
        agent.Misbehave(kinds);
        const std::size_t before = work_.Count();
        Exchange(agent.Port(), call);
        EXPECT_TRUE(agent.WaitForInspections(++inspections));
        return work_.Count() != before;
    };
    for (const wchar_t* kinds : {L"none", L"byte-by-byte", L"two-messages", L"huge=1MB", L"wrong-size", L"delay=1ms"}) {
        EXPECT_TRUE(isKept(kinds)) << kinds;
    }
    for (const wchar_t* kinds : {L"close=-1", L"reset", L"garbage", L"error", L"wrong-tag", L"no-delimiter"}) {
        EXPECT_FALSE(isKept(kinds)) << kinds;
    }
}

} // namespace agent_tests
