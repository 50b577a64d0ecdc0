#include "stand-ins/agent/Inspection.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/stand-ins/agent_client.h"

using namespace stand_ins::agent;

namespace {

Inspection Of_(const std::wstring& content) {
    return Inspection::FromXml(L"<?xml version=\"1.0\" ?><inspectorMessage version=\"1\" channel=\"Email\">" + content +
                               L"</inspectorMessage>");
}

std::string FaultOf_(std::wstring_view text) {
    try {
        Inspection::FromXml(text);
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return "none";
}

std::wstring Item_(const wchar_t* encoding, const std::wstring& data) {
    return std::wstring(L"<dataItem><dataEncoding>") + encoding + L"</dataEncoding><data>" + data +
           L"</data></dataItem>";
}

} // namespace

TEST(AgentInspection, EveryPartOfAMailIsFound) {
    const Inspection mail = Inspection::FromXml(
        agent_tests::MailDocument(L"Plans & \"more\"", L"two  spaces\n", L"C:\\b.txt", L"C:\\a.cip", L"a.csv"));
    EXPECT_EQ(mail.channel, L"Email");
    EXPECT_EQ(mail.subject, L"Plans & \"more\"");
    EXPECT_EQ(mail.sender, L"ada@example.com");
    EXPECT_EQ(mail.recipients, std::vector<std::wstring>{L"bob@example.org"});
    EXPECT_EQ(mail.body, L"two  spaces\n");
    EXPECT_EQ(mail.bodyFile, L"C:\\b.txt");
    ASSERT_EQ(mail.attachments.size(), 1u);
    EXPECT_EQ(mail.attachments[0].path, L"C:\\a.cip");
    EXPECT_EQ(mail.attachments[0].name, L"a.csv");
}

TEST(AgentInspection, BytesInTheDocumentAreLookedInto) {
    const Inspection item = Of_(Item_(L"base64", L"aGVsbG8=") + Item_(L"base64", L"") + Item_(L"base64", L"aGVsbG8h"));
    EXPECT_EQ(item.blocks, (std::vector<std::string>{"hello", "", "hello!"}));
    EXPECT_EQ(item.Contents(), (std::vector<std::wstring>{L"hello", L"", L"hello!"}));
    EXPECT_TRUE(item.attachments.empty());
}

TEST(AgentInspection, AnItemOfOneEncodingDoesNotLendItsTextToTheNext) {
    const Inspection item =
        Of_(Item_(L"text", L"one") + L"<dataItem><dataEncoding>text</dataEncoding><data/></dataItem>");
    EXPECT_EQ(item.body, L"one");
}

TEST(AgentInspection, AFolderHasNoContentOfItsOwn) {
    const Inspection item = Of_(Item_(L"folderPath", L"C:\\folder"));
    EXPECT_TRUE(item.Contents().empty());
    EXPECT_EQ(item.body, L"");
}

TEST(AgentInspection, EachFaultIsTold) {
    EXPECT_EQ(FaultOf_(L"<other/>"),
              "malformed inspector document at character 8: it does not begin with <inspectorMessage>");
    EXPECT_EQ(FaultOf_(L"<inspectorMessage version=\"2\" channel=\"\"/>"),
              "malformed inspector document at character 42: only version 1 is known");
    EXPECT_EQ(FaultOf_(L"<inspectorMessage version=\"1\"/>"),
              "malformed inspector document at character 31: <inspectorMessage> has no \"channel\"");
    const std::wstring root = L"<inspectorMessage version=\"1\" channel=\"\">";
    const char* const noBase64 =
        "malformed inspector document at character 117: a \"data\" that is not the base64 that it should be";
    EXPECT_EQ(FaultOf_(root + Item_(L"base64", L"aGVsbG8")), noBase64);
    EXPECT_EQ(FaultOf_(root + Item_(L"base64", L"a=VsbG8")), noBase64);
    EXPECT_EQ(FaultOf_(root + Item_(L"base64", L"a VsbG8")), noBase64);
    EXPECT_EQ(FaultOf_(root + Item_(L"morse", L"...")),
              "malformed inspector document at character 112: \"morse\" is no \"dataEncoding\"");
    EXPECT_EQ(FaultOf_(root + L"<context><item name=\"a\"/></context>"),
              "malformed inspector document at character 66: <item> has no \"value\"");
}
