#include "plugin-link/CInspectorMessage.h"

#include <gtest/gtest.h>

#include "foundation/StringUtils.h"
#include "platform/ticpp/ticpp.h"
#include "plugin-link/Exceptions.h"
#include "plugin-link/Message.h"
#include "plugin-link/Vocabulary.h"
#include "tests/plugin-link/FailingXml.h"
#include "tests/plugin-link/Throws.h"

namespace {

using plugin_link_tests::FailingXml;
using plugin_link_tests::Thrown;
using vorlek::CInspectorMessage;
using vorlek::StringUtils;

const std::wstring kHead = L"<?xml version=\"1.0\" ?><inspectorMessage version=\"1\" channel=\"Email\">";
const std::wstring kTail = L"</inspectorMessage>";

std::wstring Whole(const std::wstring& content) {
    return kHead + content + kTail;
}

} // namespace

TEST(InspectorMessage, StartsWithAnEmptyContext) {
    EXPECT_EQ(CInspectorMessage(L"Email").GetFormattedMessage(), Whole(L"<context />"));
}

TEST(InspectorMessage, HasAnEmptyChannelUnlessToldOne) {
    EXPECT_EQ(CInspectorMessage().GetFormattedMessage(),
              L"<?xml version=\"1.0\" ?><inspectorMessage version=\"1\" channel=\"\"><context /></inspectorMessage>");
}

TEST(InspectorMessage, TakesTheKeyChannelForItsOwn) {
    CInspectorMessage message(L"Email");
    message.AddContextItem(L"Channel", L"Web");
    EXPECT_EQ(message.GetFormattedMessage(),
              L"<?xml version=\"1.0\" ?><inspectorMessage version=\"1\" channel=\"Web\"><context />"
              L"</inspectorMessage>");
}

TEST(InspectorMessage, KeepsContextItemsInOrderAndRepeated) {
    CInspectorMessage message(L"Email");
    message.AddContextItem(L"EmailTo", L"b");
    message.AddContextItem(L"EmailTo", L"a");
    message.AddContextItem(L"Application", 4294967295U);
    EXPECT_EQ(message.GetFormattedMessage(),
              Whole(L"<context><item name=\"EmailTo\" value=\"b\" /><item name=\"EmailTo\" value=\"a\" />"
                    L"<item name=\"Application\" value=\"4294967295\" /></context>"));
}

TEST(InspectorMessage, AddsThisProcess) {
    CInspectorMessage message(L"Email");
    message.AddProcessId();
    EXPECT_EQ(message.GetFormattedMessage(), Whole(L"<context><item name=\"ProcessIdInt32\" value=\"" +
                                                   std::to_wstring(GetCurrentProcessId()) + L"\" /></context>"));
}

TEST(InspectorMessage, WritesATextItem) {
    CInspectorMessage message(L"Email");
    message.AddTextItemToBody(L"Plans", {{L"ItemType", L"EmailSubject"}}, L"clearText");
    EXPECT_EQ(message.GetFormattedMessage(),
              Whole(L"<context /><dataItem><contextItem name=\"ItemType\" value=\"EmailSubject\" />"
                    L"<textFormat>clearText</textFormat><dataEncoding>text</dataEncoding><data>Plans</data>"
                    L"</dataItem>"));
}

TEST(InspectorMessage, LeavesOutAnEmptyTextFormat) {
    CInspectorMessage message(L"Email");
    message.AddTextItemToBody(L"Plans", L"");
    EXPECT_EQ(message.GetFormattedMessage(),
              Whole(L"<context /><dataItem><dataEncoding>text</dataEncoding><data>Plans</data></dataItem>"));
}

TEST(InspectorMessage, WritesAnEmptyTextAsAnItemWithoutData) {
    CInspectorMessage message(L"Email");
    message.AddContextItem(L"EmailSubject", L"");
    message.AddTextItemToBody(L"", {{L"ItemType", L"EmailSubject"}}, L"clearText");
    EXPECT_EQ(message.GetFormattedMessage(),
              Whole(L"<context><item name=\"EmailSubject\" value=\"\" /></context>"
                    L"<dataItem><contextItem name=\"ItemType\" value=\"EmailSubject\" />"
                    L"<textFormat>clearText</textFormat><dataEncoding>text</dataEncoding><data></data></dataItem>"));
}

TEST(InspectorMessage, WritesFilesAndFoldersByPath) {
    CInspectorMessage message(L"Email");
    message.AddFileItemToBody(L"C:\\a.cip", {{L"DataLocation", L"b.docx"}, {L"Another", L"1"}}, false);
    message.AddFileItemToBody(L"C:\\folder", true);
    EXPECT_EQ(message.GetFormattedMessage(),
              Whole(L"<context /><dataItem><contextItem name=\"Another\" value=\"1\" />"
                    L"<contextItem name=\"DataLocation\" value=\"b.docx\" /><dataEncoding>filePath</dataEncoding>"
                    L"<data>C:\\a.cip</data></dataItem><dataItem><dataEncoding>folderPath</dataEncoding>"
                    L"<data>C:\\folder</data></dataItem>"));
}

TEST(InspectorMessage, WritesBytesInBase64) {
    CInspectorMessage message(L"Email");
    const BYTE bytes[] = {0, 255, 16, 1};
    message.AddBinaryItemToBody(bytes, sizeof bytes);
    message.AddBinaryItemToBody(bytes, 1, {{L"DataLocation", L"x"}});
    EXPECT_EQ(message.GetFormattedMessage(),
              Whole(L"<context /><dataItem><dataEncoding>base64</dataEncoding><data>AP8QAQ==</data></dataItem>"
                    L"<dataItem><contextItem name=\"DataLocation\" value=\"x\" /><dataEncoding>base64</dataEncoding>"
                    L"<data>AA==</data></dataItem>"));
}

TEST(InspectorMessage, RefusesNoBytes) {
    CInspectorMessage message(L"Email");
    const BYTE byte = 1;
    const auto failure = Thrown<vorlek::CInspectorMessageException>([&] { message.AddBinaryItemToBody(&byte, 0); });
    EXPECT_EQ(failure.GetMessage(), L"Failed to convert buffer to base64");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::CInspectorMessage::AddBinaryItemToBody");
    EXPECT_EQ(message.GetFormattedMessage(), Whole(L"<context />"));
}

TEST(InspectorMessage, CanBeFormattedAgainAndGrow) {
    CInspectorMessage message(L"Email");
    EXPECT_EQ(message.GetFormattedMessage(), message.GetFormattedMessage());
    message.AddTextItemToBody(L"first", L"");
    message.AddContextItem(L"User", L"late");
    EXPECT_EQ(message.GetFormattedMessage(),
              Whole(L"<context><item name=\"User\" value=\"late\" /></context>"
                    L"<dataItem><dataEncoding>text</dataEncoding><data>first</data></dataItem>"));
}

TEST(InspectorMessage, SharesItsDocumentWithItsCopies) {
    CInspectorMessage message(L"Email");
    CInspectorMessage copy = message;
    copy.AddContextItem(L"User", L"x");
    EXPECT_EQ(message.GetFormattedMessage(), Whole(L"<context><item name=\"User\" value=\"x\" /></context>"));
}

TEST(InspectorMessage, CarriesAnyTextThroughAParser) {
    const std::wstring texts[] = {L"<b>Tom & Jerry</b> &amp; \"quoted\" 'too' ]]>",
                                  L"\U0001F600 \u4e2d\u6587 \u00e9",
                                  L"&#x41; &lt;",
                                  L"C:\\Temp\\{GUID}.html",
                                  L"\"",
                                  L"one\ntwo\r\n\tthree"};
    for (const std::wstring& text : texts) {
        CInspectorMessage message(L"Email");
        message.AddContextItem(L"EmailSubject", text);
        message.AddTextItemToBody(text, L"");
        ticpp::Document document;
        document.Parse(StringUtils::ToUtf8(message.GetFormattedMessage()));
        const ticpp::Element root = document.FirstChildElement();
        const ticpp::Element item = root.FirstChildElement("context").FirstChildElement();
        EXPECT_EQ(StringUtils::FromUtf8(item.GetAttribute("value")), text);
        const ticpp::Element data = root.FirstChildElement("dataItem").FirstChildElement("data");
        EXPECT_EQ(StringUtils::FromUtf8(data.GetText()), text);
    }
}

// A request that holds one of the two could not be written, and its mail would go uninspected.
TEST(InspectorMessage, ReplacesWhatXmlCannotWrite) {
    CInspectorMessage message(L"Email");
    message.AddContextItem(L"EmailSubject", L"a\xFFFF\xFFFDz");
    message.AddTextItemToBody(L"\xFFFE\xFFFE", L"");
    message.AddFileItemToBody(L"C:\\\xD800.txt", false);
    const std::wstring text = message.GetFormattedMessage();
    EXPECT_EQ(text, Whole(L"<context><item name=\"EmailSubject\" value=\"a\xFFFD\xFFFDz\" /></context>"
                          L"<dataItem><dataEncoding>text</dataEncoding><data>\xFFFD\xFFFD</data></dataItem>"
                          L"<dataItem><dataEncoding>filePath</dataEncoding><data>C:\\\xFFFD.txt</data></dataItem>"));
    vorlek::Message request(vorlek::MessageType::Request, 1);
    request.Set(L"Param", text, false);
    EXPECT_NO_THROW(request.ToString());
}

TEST(InspectorMessage, CarriesALongText) {
    const std::wstring text(3'000'000, L'\u00fc');
    CInspectorMessage message(L"Email");
    message.AddTextItemToBody(text, L"clearText");
    EXPECT_TRUE(
        message.GetFormattedMessage() ==
        Whole(L"<context /><dataItem><textFormat>clearText</textFormat><dataEncoding>text</dataEncoding><data>" + text +
              L"</data></dataItem>"));
}

TEST(InspectorMessage, RaisesTheXmlLibrarysWordsWhereItCannotBegin) {
    for (int link = 1; link <= 3; ++link) {
        const FailingXml failing(FailingXml::At::Link, link);
        const auto failure = Thrown<vorlek::CInspectorMessageXmlException>([] { CInspectorMessage(L"Email"); });
        EXPECT_EQ(failure.GetMessage(), L"no way");
        EXPECT_EQ(failure.GetLocation(), L"vorlek::CInspectorMessage::_CreateMainElements");
    }
}

TEST(InspectorMessage, KeepsNothingOfAnItemThatFails) {
    CInspectorMessage message(L"Email");
    for (int link = 1; link <= 5; ++link) {
        const FailingXml failing(FailingXml::At::Link, link);
        const auto failure = Thrown<vorlek::CInspectorMessageXmlException>([&] {
            message.AddTextItemToBody(L"Plans", {{L"ItemType", L"EmailSubject"}}, L"clearText");
        });
        EXPECT_EQ(failure.GetMessage(), L"no way");
        EXPECT_EQ(failure.GetLocation(), L"vorlek::CInspectorMessage::_AddDataItem");
        EXPECT_EQ(message.GetFormattedMessage(), Whole(L"<context />")) << link;
    }
}

TEST(InspectorMessage, PassesOnTheXmlLibrarysOwnFailureOfContextAndFormat) {
    CInspectorMessage message(L"Email");
    {
        const FailingXml failing(FailingXml::At::Link);
        EXPECT_THROW(message.AddContextItem(L"User", L"x"), ticpp::Exception);
    }
    const FailingXml failing(FailingXml::At::Print);
    EXPECT_THROW(message.GetFormattedMessage(), ticpp::Exception);
    EXPECT_EQ(message.GetFormattedMessage(), Whole(L"<context />"));
}
