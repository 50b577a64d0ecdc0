// What goes to the agent of mails that are out of the ordinary, the same before Outlook 2007 and since: texts and
// files to the byte.
#include <functional>

#include <tinyxml.h>

#include "foundation/StringUtils.h"
#include "tests/outlook/OldOutlookTest.h"

namespace vorlek {
namespace {

using outlook_tests::ContextOf;
using outlook_tests::OldOutlookTest;
using stand_ins::AttachmentData;
using stand_ins::ItemData;
using stand_ins::RecipientData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr unsigned long kSmtpAddressTag = 0x39FE001F;

std::string BytesOf(const std::wstring& text) {
    return {reinterpret_cast<const char*>(text.data()), 2 * text.size()};
}

/// One attachment as the agent finds it.
struct Found {
    std::wstring name;
    std::string bytes;
};

class ItemContentTest : public OldOutlookTest, public testing::WithParamInterface<const wchar_t*> {
protected:
    ItemContentTest() {
        Restart({.version = GetParam()});
        SetVersion(GetParam());
    }

    CInspectorMessage Fill(const ItemData& data) {
        CInspectorMessage message(L"Email");
        HandlerOf(data)->FillInspectorMessage(message);
        return message;
    }

    /// The attachments that a message names, in order.
    static std::vector<Found> AttachmentsIn(const CInspectorMessage& message) {
        TiXmlDocument document;
        document.Parse(StringUtils::ToUtf8(message.GetFormattedMessage()).c_str(), nullptr, TIXML_ENCODING_UTF8);
        std::vector<Found> found;
        const std::function<void(const TiXmlElement*)> walk = [&](const TiXmlElement* parent) {
            for (const auto* child = parent->FirstChildElement(); child != nullptr;
                 child = child->NextSiblingElement()) {
                const TiXmlElement* item = child->FirstChildElement("contextItem");
                if (item != nullptr && item->Attribute("name") == std::string("DataLocation")) {
                    const std::wstring path = StringUtils::FromUtf8(child->FirstChildElement("data")->GetText());
                    found.push_back({StringUtils::FromUtf8(item->Attribute("value")), test_support::ReadBytes(path)});
                }
                walk(child);
            }
        };
        walk(document.RootElement());
        return found;
    }

    /// The bytes of the file that an export of the body writes.
    std::string ExportOf(const ItemData& data, std::wstring* text = nullptr) {
        std::wstring path;
        _bstr_t plainText;
        HandlerOf(data)->ExportBody(path, plainText);
        if (text != nullptr) {
            *text = platform::ToWide(plainText);
        }
        return test_support::ReadBytes(path);
    }

    std::vector<std::wstring> DestinationsOf(const std::vector<RecipientData>& recipients) {
        std::vector<std::wstring> destinations;
        for (const std::wstring& pair : ContextOf(Fill({.body = L"text", .recipients = recipients}))) {
            if (const std::wstring key = L"IncidentDestination="; pair.starts_with(key)) {
                destinations.push_back(pair.substr(key.size()));
            }
        }
        return destinations;
    }
};

INSTANTIATE_TEST_SUITE_P(Generation, ItemContentTest, testing::Values(outlook_tests::kVersion11, L"16.0.5.1"),
                         [](const auto& version) { return version.param[1] == L'1' ? "Old" : "Current"; });

TEST_P(ItemContentTest, AddressesOfEveryTypeAreThoseOfTheirSmtpProperty) {
    std::vector<RecipientData> recipients = {{.name = L"Smtp", .address = L"smtp@a.example"}};
    for (const wchar_t* type : {L"EX", L"X400", L"FAX", L"NOTES", L"MAPIPDL", L"", L"\x65E5\x672C"}) {
        recipients.push_back({.name = type,
                              .address = L"own",
                              .addressType = type,
                              .properties = {{kSmtpAddressTag, std::wstring(type) + L"@a.example"}}});
        recipients.push_back({.name = type, .address = L"own", .addressType = type}); // one without
    }
    EXPECT_THAT(DestinationsOf(recipients),
                ElementsAre(L"smtp@a.example", L"EX@a.example", L"X400@a.example", L"FAX@a.example", L"NOTES@a.example",
                            L"MAPIPDL@a.example", L"@a.example", L"\x65E5\x672C@a.example"));
}

TEST_P(ItemContentTest, AThousandRecipientsStandInTheirOrder) {
    std::vector<RecipientData> recipients;
    std::vector<std::wstring> expected;
    for (int i = 0; i < 1000; ++i) {
        expected.push_back(std::to_wstring(i) + L"@a.example");
        recipients.push_back({.address = expected.back(), .type = 1 + i % 3});
    }
    EXPECT_EQ(DestinationsOf(recipients), expected);
}

TEST_P(ItemContentTest, AnAddressMayHoldEveryCharacterOfXml) {
    EXPECT_THAT(DestinationsOf({{.address = L"\"<a>&'b'\"@\x65E5\xD83D\xDE00.example"}}),
                ElementsAre(L"\"<a>&'b'\"@\x65E5\xD83D\xDE00.example"));
}

TEST_P(ItemContentTest, ANameMayHoldEveryCharacterThatWindowsAllowsInAFile) {
    std::vector<AttachmentData> attachments;
    std::vector<std::wstring> names;
    std::wstring name;
    for (wchar_t c = 0x20; c < 0xFFFE; ++c) {
        if ((c < 0xD800 || c > 0xDFFF) && std::wstring(L"<>:\"/\\|?*").find(c) == std::wstring::npos) {
            name += c;
        }
        if (name.size() == 200 || c == 0xFFFD) {
            names.push_back(L"x" + name + L"x"); // a name neither begins nor ends with a blank
            attachments.push_back({.fileName = names.back(), .content = BytesOf(names.back())});
            name.clear();
        }
    }
    names.emplace_back(L"\xD83D\xDE00 \xD840\xDC00.txt");
    attachments.push_back({.fileName = names.back(), .content = BytesOf(names.back())});
    const auto found = AttachmentsIn(Fill({.body = L"text", .attachments = attachments}));
    ASSERT_THAT(found, SizeIs(names.size()));
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(found[i].name, names[i]) << "the attachment " << i;
        EXPECT_TRUE(found[i].bytes == BytesOf(names[i])) << "the attachment " << i;
    }
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_P(ItemContentTest, ANameOfAnotherSystemIsNoPathOfThisOne) {
    const auto found = AttachmentsIn(Fill({.attachments = {{.fileName = L"..\\..\\up.txt", .content = "a"},
                                                           {.fileName = L"C:\\Windows\\win.ini", .content = "b"},
                                                           {.fileName = L"con", .content = "c"},
                                                           {.fileName = L"", .content = "d"}}}));
    ASSERT_THAT(found, SizeIs(4));
    EXPECT_EQ(found[0].name, L"..\\..\\up.txt");
    EXPECT_EQ(found[0].bytes + found[1].bytes + found[2].bytes + found[3].bytes, "abcd");
}

TEST_P(ItemContentTest, AttachmentsAreSavedToTheByte) {
    std::string every;
    for (int byte = 0; byte < 256; ++byte) {
        every += static_cast<char>(byte);
    }
    std::string large;
    while (large.size() < 5'000'000) {
        large += every;
    }
    const auto found = AttachmentsIn(Fill({.attachments = {{.fileName = L"none"},
                                                           {.fileName = L"every", .content = every},
                                                           {.fileName = L"large", .content = large}}}));
    ASSERT_THAT(found, SizeIs(3));
    EXPECT_EQ(found[0].bytes, "");
    EXPECT_EQ(found[1].bytes, every);
    EXPECT_TRUE(found[2].bytes == large);
}

TEST_P(ItemContentTest, PlainTextsAreExportedToTheByteBehindTheirMark) {
    const std::wstring texts[] = {L"a",
                                  L"\r\n",
                                  L"lines\n of\r all \r\nkinds",
                                  std::wstring(L"a\0b\0\0c", 6),
                                  L"\x65E5\x672C \xD83D\xDE00 \xD840\xDC00",
                                  L"half \xD83D and \xDE00",
                                  L"\xFEFF marked \xFFFE \xFFFF",
                                  std::wstring(5'000'000, L'x')};
    for (const std::wstring& body : texts) {
        std::wstring text;
        const std::string bytes = ExportOf({.body = body, .bodyFormat = 1}, &text);
        EXPECT_TRUE(text == body) << testing::PrintToString(body.substr(0, 40));
        EXPECT_TRUE(bytes == "\xFF\xFE" + BytesOf(body)) << testing::PrintToString(body.substr(0, 40));
    }
}

TEST_P(ItemContentTest, HtmlIsExportedToTheByteWithoutAMark) {
    const std::wstring texts[] = {L"<p>a</p>", L"<p>\x65E5\xD83D\xDE00 \xD83D</p>\r\n\n",
                                  std::wstring(L"<p>a\0b</p>", 10), L"\xFEFF<p>marked</p>",
                                  L"<p>" + std::wstring(5'000'000, L'x') + L"</p>"};
    for (const std::wstring& html : texts) {
        EXPECT_TRUE(ExportOf({.body = L"text", .htmlBody = html}) == BytesOf(html))
            << testing::PrintToString(html.substr(0, 40));
    }
}

TEST_P(ItemContentTest, RichTextIsExportedToTheByte) {
    const std::string rtf = std::string("{\\rtf1\\ansi \\'e9\0\xFF\r\n", 20) + std::string(1'000'000, 'x') + "}";
    EXPECT_TRUE(ExportOf({.body = L"text", .rtfBody = rtf}) == rtf);
}

TEST_P(ItemContentTest, AMailWithNothingInItHasAnEmptyTextAndNoDestination) {
    const auto message = Fill({.bodyFormat = 1});
    EXPECT_THAT(ContextOf(message), Contains(L"EmailSubject="));
    EXPECT_THAT(AttachmentsIn(message), IsEmpty());
    EXPECT_NE(message.GetFormattedMessage().find(L"<data></data>"), std::wstring::npos)
        << testing::PrintToString(message.GetFormattedMessage());
    EXPECT_THAT(Errors(), IsEmpty());
}

} // namespace
} // namespace vorlek
