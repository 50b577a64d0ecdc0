#include "stand-ins/agent/Message.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace stand_ins::agent;

namespace {

std::string FaultOf_(std::wstring_view text) {
    try {
        WireMessage::FromText(text);
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return "none";
}

} // namespace

TEST(AgentMessage, AnAnswerIsWrittenAsTheFormatHasIt) {
    WireMessage message;
    message.pid = 1288;
    message.entries[L"Result"] = {L"<decision result=\"1\" />"};
    EXPECT_EQ(message.ToText(), L"<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n"
                                L"<Msg version=\"1\" type=\"Response\" pid=\"1288\">\r\n"
                                L"  <Key name=\"Result\" type=\"string\" size=\"46\" hidden=\"0\">"
                                L"&lt;decision result=&quot;1&quot; /&gt;</Key>\r\n"
                                L"</Msg>");
}

TEST(AgentMessage, AnIntegerCarriesItsTagAndTwiceItsLength) {
    WireMessage message;
    message.entries[L"Result"] = {L"-12", L"int"};
    EXPECT_NE(message.ToText().find(L"type=\"int\" size=\"6\" hidden=\"0\">-12<"), std::wstring::npos);
}

TEST(AgentMessage, ARequestIsReadWithWhatItHolds) {
    const auto message = WireMessage::FromText(
        L"<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n<Msg version=\"1\" type=\"Request\" pid=\"0x1F\">\r\n"
        L"  <Key name=\"Method\" type=\"string\" size=\"14\" hidden=\"0\">Inspect</Key>\r\n"
        L"  <Key name='Param' type='string' size='0' hidden='1'>a &lt;b&gt; "
        L"&amp;&#xD;&#10;&#x1F600;<![CDATA[<c>]]></Key>\r\n"
        L"  <Key name=\"Empty\" type=\"string\" size=\"0\" hidden=\"0\"/>\r\n</Msg>\r\n");
    EXPECT_EQ(message.type, L"Request");
    EXPECT_EQ(message.pid, 31u);
    EXPECT_EQ(message.Value(L"Method"), L"Inspect");
    EXPECT_EQ(message.Value(L"Param"), L"a <b> &\r\n\xD83D\xDE00<c>");
    EXPECT_EQ(message.Value(L"Empty"), L"");
    EXPECT_EQ(message.entries.size(), 3u);
}

TEST(AgentMessage, ABareLineEndIsOneLineFeed) {
    const auto message = WireMessage::FromText(
        L"<Msg version=\"1\" type=\"Test\" pid=\"1\"><Key name=\"a\" type=\"string\" size=\"0\">x\r\ny\rz</Key></Msg>");
    EXPECT_EQ(message.Value(L"a"), L"x\ny\nz");
}

TEST(AgentMessage, WhatIsWrittenIsReadBackEqual) {
    WireMessage message;
    message.type = L"Error";
    message.pid = 4294967295;
    message.entries[L"Error"] = {L"\"quoted\" & <tagged>\r\n\x041F\x0440\x0438\x0432\x0435\x0442 \xD83D\xDE00"};
    const auto again = WireMessage::FromText(message.ToText());
    EXPECT_EQ(again.type, L"Error");
    EXPECT_EQ(again.pid, 4294967295u);
    EXPECT_EQ(again.Value(L"Error"), message.Value(L"Error"));
}

TEST(AgentMessage, EachFaultIsToldWithItsPlace) {
    EXPECT_EQ(FaultOf_(L""), "malformed message at character 0: it does not begin with <Msg>");
    EXPECT_EQ(FaultOf_(L"<Other/>"), "malformed message at character 8: it does not begin with <Msg>");
    EXPECT_EQ(FaultOf_(L"<Msg version=\"2\" type=\"Test\" pid=\"1\"/>"),
              "malformed message at character 38: only version 1 is known");
    EXPECT_EQ(FaultOf_(L"<Msg version=\"1\" type=\"Wish\" pid=\"1\"/>"),
              "malformed message at character 38: \"Wish\" is no type of message");
    EXPECT_EQ(FaultOf_(L"<Msg version=\"1\" type=\"Test\"/>"),
              "malformed message at character 30: <Msg> has no \"pid\"");
    EXPECT_EQ(FaultOf_(L"<Msg version=\"1\" type=\"Test\" pid=\"1\">"),
              "malformed message at character 37: <Msg> is not closed");
    EXPECT_EQ(FaultOf_(L"<Msg version=\"1\" type=\"Test\" pid=\"1\"><Key name=\"a\" size=\"0\">x"),
              "malformed message at character 60: <Key> has no \"type\"");
    EXPECT_EQ(FaultOf_(L"<Msg version=\"1\" type=\"Test\" pid=\"1\">&nbsp;</Msg>"),
              "malformed message at character 37: an unknown reference");
}

TEST(AgentMessage, ACodeUnitIsTwoBytesTheLowOneFirst) {
    EXPECT_EQ(ToWire(L"<\x20AC"), std::string("\x3C\x00\xAC\x20", 4));
    EXPECT_EQ(FromWire(std::string("\x3C\x00\xAC\x20\x41", 5)), L"<\x20AC");
    EXPECT_EQ(ToWire(kDelimiter).size(), 18u);
}
