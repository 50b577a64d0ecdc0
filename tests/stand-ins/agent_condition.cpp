#include "stand-ins/agent/Condition.h"

#include <gtest/gtest.h>

#include "stand-ins/agent/Inspection.h"
#include "tests/stand-ins/agent_client.h"

using namespace stand_ins::agent;
using agent_tests::MailDocument;
using agent_tests::OwnFolder;

TEST(AgentCondition, TextIsFoundInEitherCase) {
    EXPECT_TRUE(Probe::Contains(L"Straße").Finds(L"in der STRAßE"));
    EXPECT_TRUE(
        Probe::Contains(L"\x0421\x0435\x043A\x0440\x0435\x0442").Finds(L"\x0441\x0415\x041A\x0420\x0415\x0422"));
    EXPECT_FALSE(Probe::Contains(L"secret").Finds(L"secre t"));
}

TEST(AgentCondition, APatternMatchesWithinOneLine) {
    EXPECT_TRUE(Probe::Pattern(L"^iban:? *[a-z]{2}\\d+$").Finds(L"Hello\r\nIBAN: DE021203\r\nBye"));
    EXPECT_FALSE(Probe::Pattern(L"Hello.*Bye").Finds(L"Hello\r\nBye"));
}

TEST(AgentCondition, APatternOverALongLineNeedsNoDeepStack) {
    const std::wstring line(300000, L'x');
    EXPECT_TRUE(Probe::Pattern(L"x.*x$").Finds(line));
}

TEST(AgentCondition, ACardNumberHasARightCheckDigit) {
    EXPECT_TRUE(HoldsCardNumber(L"4111111111111111"));
    EXPECT_TRUE(HoldsCardNumber(L"pay with 4111-1111-1111-1111, please"));
    EXPECT_TRUE(HoldsCardNumber(L"since 2024 3782 822463 10005"));
    EXPECT_FALSE(HoldsCardNumber(L"4111 1111 1111 1112"));
    EXPECT_FALSE(HoldsCardNumber(L"order 411111111111"));
    EXPECT_FALSE(HoldsCardNumber(L"4111  1111  1111  1111"));
    EXPECT_FALSE(HoldsCardNumber(L"94111111111111111"));
}

TEST(AgentCondition, EachFieldLooksAtItsOwnPartOnly) {
    const OwnFolder folder;
    const std::wstring path = folder.Write(L"a.cip", "in the file");
    const auto mail = Inspection::FromXml(MailDocument(L"the subject", L"the body", L"", path, L"name.csv"));
    const auto finds = [&](Field field, const wchar_t* text) {
        return Condition(field, {Probe::Contains(text)}).Holds(mail);
    };
    EXPECT_TRUE(finds(Field::Channel, L"email"));
    EXPECT_TRUE(finds(Field::Subject, L"subject"));
    EXPECT_FALSE(finds(Field::Subject, L"body"));
    EXPECT_TRUE(finds(Field::Body, L"body"));
    EXPECT_FALSE(finds(Field::Body, L"subject"));
    EXPECT_TRUE(finds(Field::Text, L"body"));
    EXPECT_TRUE(finds(Field::Sender, L"ada@"));
    EXPECT_TRUE(finds(Field::Recipient, L"bob@"));
    EXPECT_FALSE(finds(Field::Recipient, L"ada@"));
    EXPECT_TRUE(finds(Field::AttachmentName, L".csv"));
    EXPECT_TRUE(finds(Field::AttachmentContent, L"in the file"));
    EXPECT_FALSE(finds(Field::Text, L"in the file"));
    EXPECT_TRUE(finds(Field::Anywhere, L"in the file"));
    EXPECT_TRUE(finds(Field::Anywhere, L"subject"));
}

TEST(AgentCondition, AttachmentsAreReadInTheEncodingThatTheyHave) {
    const OwnFolder folder;
    for (const std::string_view bytes : {std::string_view("caf\xC3\xA9"),
                                         std::string_view("\xEF\xBB\xBF"
                                                          "caf\xC3\xA9"),
                                         std::string_view("\xFF\xFE"
                                                          "c\0a\0f\0\xE9\0",
                                                          10),
                                         std::string_view("caf\xE9")}) {
        const std::wstring path = folder.Write(L"a.cip", bytes);
        const auto mail = Inspection::FromXml(MailDocument(L"", L"", L"", path, L"a.txt"));
        EXPECT_EQ(mail.Contents(), std::vector<std::wstring>{L"caf\xE9"});
    }
}
