#include "plugin-link/Message.h"

#include <regex>

#include <gmock/gmock.h>

#include "foundation/XMLReader.h"
#include "tests/plugin-link/Throws.h"
#include "tests/support/LogCapture.h"
#include "tests/support/NoMemory.h"

namespace {

using plugin_link_tests::Thrown;
using vorlek::Message;
using vorlek::MessageType;

/// Without the white space between elements, which means nothing.
std::wstring Dense(const std::wstring& text) {
    return std::regex_replace(text, std::wregex(L">[ \\r\\n\\t]+<"), L"><");
}

std::wstring Document(const std::wstring& keys) {
    return L"<Msg version=\"1\" type=\"Request\" pid=\"5\">" + keys + L"</Msg>";
}

std::wstring Key(const std::wstring& name, const std::wstring& text) {
    return L"<Key name=\"" + name + L"\" type=\"string\" size=\"2\" hidden=\"0\">" + text + L"</Key>";
}

std::wstring GetText(const Message& message, const std::wstring& name) {
    std::wstring value;
    message.Get(name, value);
    return value;
}

/// Where a reader stands once it has read the attributes of the element, as "line:position".
std::wstring PlaceOf(const std::wstring& text, const std::wstring& element) {
    std::wstringstream stream(text);
    vorlek::XMLReader reader(stream);
    while (reader.ReadNode()->GetValue() != element) {
    }
    reader.ReadAttributes();
    return std::to_wstring(reader.GetLineNumber()) + L":" + std::to_wstring(reader.GetLinePosition());
}

void ExpectMissing(const std::wstring& text, const std::wstring& element, const std::wstring& words) {
    const auto failure = Thrown<vorlek::Exception>([&] { Message::FromString(text); });
    EXPECT_EQ(failure.GetMessage(), words + PlaceOf(text, element));
    EXPECT_EQ(failure.GetLocation(), L"vorlek::Message::FromString");
}

} // namespace

TEST(Message, WithoutEntriesIsTheRootAloneAndReadsBackEmpty) {
    const std::wstring text = Message(MessageType::Test, 7).ToString();
    EXPECT_TRUE(text.starts_with(L"<?xml version=\"1.0\" encoding=\"utf-16\"?>")) << text;
    EXPECT_EQ(Dense(text), L"<?xml version=\"1.0\" encoding=\"utf-16\"?><Msg version=\"1\" type=\"Test\" pid=\"7\" />");
    const auto message = Message::FromString(text);
    EXPECT_EQ(message->GetMessageType(), MessageType::Test);
    EXPECT_EQ(message->GetPid(), 7U);
    EXPECT_EQ(Dense(message->ToString()), Dense(text));
}

TEST(Message, ComesFromThisProcessUnlessToldOtherwise) {
    EXPECT_EQ(Message(MessageType::Request).GetPid(), GetCurrentProcessId());
    EXPECT_EQ(Message(MessageType::Request, 4711).GetPid(), 4711U);
}

TEST(Message, IsWrittenInKeyOrderWhateverTheOrderOfSetting) {
    Message message(MessageType::Request, 5120);
    message.Set(L"Plugin", L"DataControlPlugin", false);
    message.Set(L"Param", L"<a b=\"1\">&</a>", false);
    message.Set(L"Method", L"Inspect", false);
    EXPECT_EQ(Dense(message.ToString()),
              L"<?xml version=\"1.0\" encoding=\"utf-16\"?>"
              L"<Msg version=\"1\" type=\"Request\" pid=\"5120\">"
              L"<Key name=\"Method\" type=\"string\" size=\"14\" hidden=\"0\">Inspect</Key>"
              L"<Key name=\"Param\" type=\"string\" size=\"28\" hidden=\"0\">"
              L"&lt;a b=\"1\"&gt;&amp;&lt;/a&gt;</Key>"
              L"<Key name=\"Plugin\" type=\"string\" size=\"34\" hidden=\"0\">DataControlPlugin</Key>"
              L"</Msg>");
}

TEST(Message, OrdersKeysByCodeUnit) {
    Message message(MessageType::Request, 1);
    message.Set(L"a", L"1", false);
    message.Set(L"Z", L"2", false);
    const std::wstring text = message.ToString();
    EXPECT_LT(text.find(L"name=\"Z\""), text.find(L"name=\"a\""));
}

TEST(Message, KeepsTheLaterOfTwoValuesOfOneKey) {
    Message message(MessageType::Request, 1);
    message.Set(L"Param", L"first", true);
    message.Set(L"Param", 2, false);
    EXPECT_EQ(Dense(message.ToString()),
              L"<?xml version=\"1.0\" encoding=\"utf-16\"?><Msg version=\"1\" type=\"Request\" pid=\"1\">"
              L"<Key name=\"Param\" type=\"int\" size=\"2\" hidden=\"0\">2</Key></Msg>");
}

TEST(Message, MasksHiddenValuesInTheLogFormOnly) {
    Message message(MessageType::Request, 1);
    message.Set(L"Open", L"seen", false);
    message.Set(L"Secret", L"unseen", true);
    const std::wstring head =
        L"<?xml version=\"1.0\" encoding=\"utf-16\"?><Msg version=\"1\" type=\"Request\" pid=\"1\">"
        L"<Key name=\"Open\" type=\"string\" size=\"8\" hidden=\"0\">seen</Key>";
    EXPECT_EQ(Dense(message.ToLogString()),
              head + L"<Key name=\"Secret\" type=\"string\" size=\"2\" hidden=\"1\">*</Key></Msg>");
    EXPECT_EQ(Dense(message.ToString()),
              head + L"<Key name=\"Secret\" type=\"string\" size=\"12\" hidden=\"1\">unseen</Key></Msg>");
}

TEST(Message, CountsSizesInBytesOfEachType) {
    Message message(MessageType::Request, 1);
    message.Set(L"int", -12345, false);
    message.Set(L"string", L"h\u00e9\U0001F600", false);
    message.Set(L"bytes", std::vector<BYTE>{1, 2, 3, 4}, false);
    message.Set(L"none", std::vector<BYTE>{}, false);
    EXPECT_EQ(message.GetValueSize(L"int"), 12U);
    EXPECT_EQ(message.GetValueSize(L"string"), 8U);
    EXPECT_EQ(message.GetValueSize(L"bytes"), 4U);
    EXPECT_EQ(message.GetValueSize(L"none"), 0U);
}

TEST(Message, ReadsBackEveryType) {
    Message message(MessageType::Response, 1);
    std::vector<BYTE> bytes(1000);
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        bytes[index] = static_cast<BYTE>(index * 7);
    }
    message.Set(L"int", INT32_MIN, false);
    message.Set(L"string", L"h\u00e9\U0001F600", true);
    message.Set(L"bytes", bytes, false);
    const auto read = Message::FromString(message.ToString());
    EXPECT_EQ(read->GetMessageType(), MessageType::Response);
    std::int32_t number = 0;
    read->Get(L"int", number);
    EXPECT_EQ(number, INT32_MIN);
    EXPECT_EQ(GetText(*read, L"string"), L"h\u00e9\U0001F600");
    std::vector<BYTE> readBytes{9};
    read->Get(L"bytes", readBytes);
    EXPECT_EQ(readBytes, bytes);
    EXPECT_EQ(read->GetValueSize(L"bytes"), 1000U);
    EXPECT_NE(read->ToLogString().find(L">*</Key>"), std::wstring::npos) << "hidden is kept";
}

TEST(Message, NoBytesReadBackAsNoBytes) {
    Message message(MessageType::Response, 1);
    message.Set(L"bytes", std::vector<BYTE>{}, false);
    std::vector<BYTE> bytes{1};
    message.Get(L"bytes", bytes);
    EXPECT_TRUE(bytes.empty());
}

TEST(Message, KnowsWhichValuesItHas) {
    Message message(MessageType::Response, 1);
    message.Set(L"Result", L"", false);
    EXPECT_TRUE(message.HasValue(L"Result"));
    EXPECT_FALSE(message.HasValue(L"result"));
}

TEST(Message, ReadsHexadecimalNumbersInEitherCase) {
    for (const wchar_t* pid : {L"0x1F", L"0X1F", L"31", L"0x1f"}) {
        const auto message =
            Message::FromString(std::wstring(L"<Msg version=\"0x1\" type=\"Request\" pid=\"") + pid + L"\"/>");
        EXPECT_EQ(message->GetPid(), 31U) << pid;
    }
    Message message(MessageType::Response, 1);
    message.SetValue(L"Result", L"0x2", L"int", 6, false);
    std::int32_t number = 0;
    message.Get(L"Result", number);
    EXPECT_EQ(number, 2);
}

TEST(Message, ReadsWhatIsNoNumberAsNull) {
    const auto message = Message::FromString(
        L"<Msg version=\"1\" type=\"Request\" pid=\"who\"><Key name=\"a\" type=\"int\" size=\"big\" hidden=\"yes\">"
        L"much</Key></Msg>");
    EXPECT_EQ(message->GetPid(), 0U);
    EXPECT_EQ(message->GetValueSize(L"a"), 0U);
    std::int32_t number = 5;
    message->Get(L"a", number);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(message->ToLogString().find(L'*'), std::wstring::npos);
}

TEST(Message, TakesAMissingHiddenForFalse) {
    const auto message = Message::FromString(Document(L"<Key name=\"a\" type=\"string\" size=\"2\">x</Key>"));
    EXPECT_NE(message->ToLogString().find(L"hidden=\"0\">x<"), std::wstring::npos);
}

TEST(Message, CarriesMarkupUnchanged) {
    const std::wstring document = L"<?xml version=\"1.0\" ?><a b='&quot;'>&amp;lt; ]]&gt; <c/></a>\n\"'";
    Message message(MessageType::Request, 1);
    message.Set(L"Param", document, false);
    EXPECT_EQ(GetText(*Message::FromString(message.ToString()), L"Param"), document);
}

TEST(Message, CarriesLongTextUnchanged) {
    std::wstring document;
    for (int index = 0; index < 100000; ++index) {
        document += L"<item name=\"\u00fc&\U0001F600" + std::to_wstring(index) + L"\" />";
    }
    Message message(MessageType::Request, 1);
    message.Set(L"Param", document, false);
    EXPECT_TRUE(GetText(*Message::FromString(message.ToString()), L"Param") == document);
}

TEST(Message, ReadsWhiteSpaceAloneAsEmpty) {
    Message message(MessageType::Request, 1);
    message.Set(L"Param", L" \t ", false);
    EXPECT_EQ(GetText(*Message::FromString(message.ToString()), L"Param"), L"");
}

TEST(Message, ReadsTextOutsideAnEntryAsTheNextEntrysValue) {
    const auto message = Message::FromString(Document(L"stray" + Key(L"a", L"") + L"again" + Key(L"b", L"own")));
    EXPECT_EQ(GetText(*message, L"a"), L"stray");
    EXPECT_EQ(GetText(*message, L"b"), L"own");
}

TEST(Message, StoresNothingForASelfClosedEntry) {
    const auto message = Message::FromString(
        Document(L"<Key name=\"gone\" type=\"string\" size=\"8\" hidden=\"1\"/>" + Key(L"a", L"x")));
    EXPECT_FALSE(message->HasValue(L"gone"));
    EXPECT_EQ(message->GetValueSize(L"a"), 2U);
    EXPECT_NE(message->ToLogString().find(L"hidden=\"0\">x<"), std::wstring::npos);
}

TEST(Message, SkipsElementsThatItDoesNotKnow) {
    const auto message =
        Message::FromString(Document(L"<Other name=\"a\"><Inner/></Other>" + Key(L"b", L"x") + L"<!-- y -->"));
    EXPECT_FALSE(message->HasValue(L"a"));
    EXPECT_EQ(GetText(*message, L"b"), L"x");
}

TEST(Message, ReadsAnEntryInsideAnEntryAsItsParts) {
    const auto message = Message::FromString(
        Document(L"<Key name=\"outer\" type=\"string\" size=\"2\">a" + Key(L"inner", L"b") + L"c</Key>"));
    EXPECT_FALSE(message->HasValue(L"outer"));
    EXPECT_EQ(GetText(*message, L"inner"), L"b");
    EXPECT_TRUE(message->HasValue(L"")) << "what is left over has no name";
}

TEST(Message, ReadsAMillionEntries) {
    constexpr int kEntries = 1'000'000;
    std::wstring entries;
    for (int entry = 0; entry < kEntries; ++entry) {
        entries += Key(std::to_wstring(entry), L"x");
    }
    const auto message = Message::FromString(Document(entries));
    EXPECT_EQ(GetText(*message, L"0"), L"x");
    EXPECT_EQ(GetText(*message, std::to_wstring(kEntries - 1)), L"x");
    EXPECT_FALSE(message->HasValue(std::to_wstring(kEntries)));
}

TEST(Message, IsNotMisledByASize) {
    const std::pair<const wchar_t*, std::uint32_t> sizes[] = {
        {L"4294967295", 4294967295U}, {L"99999999999999", 4294967295U}, {L"0", 0}, {L"0xFFFFFFFFF", 4294967295U}};
    for (const auto& [text, size] : sizes) {
        const std::wstring attributes = std::wstring(L"\" size=\"") + text + L"\">QUJD</Key>";
        const auto message = Message::FromString(Document(L"<Key name=\"text\" type=\"string" + attributes +
                                                          L"<Key name=\"bytes\" type=\"byte[]" + attributes));
        EXPECT_EQ(message->GetValueSize(L"text"), size);
        EXPECT_EQ(GetText(*message, L"text"), L"QUJD");
        std::vector<BYTE> bytes;
        message->Get(L"bytes", bytes);
        EXPECT_EQ(bytes, (std::vector<BYTE>{'A', 'B', 'C'}));
    }
}

TEST(Message, TakesNoHarmFromBytesThatAreNoBase64) {
    const std::pair<const wchar_t*, std::vector<BYTE>> texts[] = {
        {L"!\"$%()*~\u4e2d\U0001F600", {}}, {L"Q", {}}, {L"QU=JD==", {'A', 'B', 'C'}}, {L"====", {}}};
    for (const auto& [text, expected] : texts) {
        Message message(MessageType::Response, 1);
        message.SetValue(L"bytes", text, L"byte[]", 3, false);
        std::vector<BYTE> bytes{1};
        Message::FromString(message.ToString())->Get(L"bytes", bytes);
        EXPECT_EQ(bytes, expected) << text;
    }
}

TEST(Message, CannotBeReadWhereverItIsCutOff) {
    const std::wstring text = L"<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n" +
                              Document(L"\r\n <!-- c --><?p i?><![CDATA[d]]>" + Key(L"a", L"&lt;\U0001F600"));
    Message::FromString(text);
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_THROW(Message::FromString(text.substr(0, length)), vorlek::Exception) << text.substr(0, length);
        EXPECT_THROW(Message::FromString(text.substr(0, length) + L'\0' + text.substr(length)), vorlek::Exception)
            << text.substr(0, length) << " and a null";
    }
}

TEST(Message, RefusesElementsThatAreNestedWithoutEnd) {
    std::wstring nested;
    for (int depth = 0; depth < 100'000; ++depth) {
        nested += L"<a>";
    }
    EXPECT_THAT(Thrown<vorlek::Exception>([&] { Message::FromString(Document(nested)); }).GetMessage(),
                testing::StartsWith(L"Read failed with: "));
}

TEST(Message, IsReadPastWhateverIsLongAndOfNoInterest) {
    const std::wstring long_(3'000'000, L'x');
    const auto message =
        Message::FromString(Document(L"<!--" + long_ + L"--><" + long_ + L" a=\"" + long_ + L"\"/><![CDATA[" + long_ +
                                     L"]]><?p " + long_ + L"?>" + Key(L"a", L"b")));
    EXPECT_EQ(GetText(*message, L"a"), L"b");
}

TEST(Message, RefusesAnotherRoot) {
    const auto failure = Thrown<vorlek::Exception>([] { Message::FromString(L"<Message version=\"1\"/>"); });
    EXPECT_EQ(failure.GetMessage(), L"Invalid message header! Type: 0, value: Message");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::Message::FromString");
}

TEST(Message, RefusesTextThatIsNoDocument) {
    // Some readers report a failure for text without an element, others the end of the input.
    for (const wchar_t* text : {L"no document", L"", L"  ", L"<?xml version=\"1.0\"?>", L"<Msg"}) {
        EXPECT_THAT(
            Thrown<vorlek::Exception>([&] { Message::FromString(text); }).GetMessage(),
            testing::AnyOf(testing::StartsWith(L"Read failed with: "), L"Invalid message header! Type: none, value: "))
            << text;
    }
}

TEST(Message, PassesOnTheWordsOfTheXmlLayer) {
    const test_support::LogCapture log;
    const auto failure = Thrown<vorlek::Exception>([] { Message::FromString(L"<!DOCTYPE Msg><Msg/>"); });
    EXPECT_EQ(failure.GetMessage(), L"Read failed with: " + std::to_wstring(static_cast<HRESULT>(WC_E_DTDPROHIBITED)));
    EXPECT_EQ(failure.GetLocation(), L"vorlek::XMLReader::ReadNode");
    EXPECT_THAT(log.Texts(L"ERROR"), testing::ElementsAre(L"FromString failed with: " + failure.ToString()));
}

TEST(Message, RefusesEntitiesBeforeTheyGrow) {
    std::wstring definitions = L"<!ENTITY a0 \"ha\">";
    for (int level = 1; level < 30; ++level) {
        const std::wstring inner = L"&a" + std::to_wstring(level - 1) + L";";
        definitions += L"<!ENTITY a" + std::to_wstring(level) + L" \"" + inner + inner + inner + L"\">";
    }
    const auto failure = Thrown<vorlek::Exception>(
        [&] { Message::FromString(L"<!DOCTYPE Msg [" + definitions + L"]>" + Document(Key(L"a", L"&a29;"))); });
    EXPECT_EQ(failure.GetMessage(), L"Read failed with: " + std::to_wstring(static_cast<HRESULT>(WC_E_DTDPROHIBITED)));
}

TEST(Message, NamesTheMissingAttributeOfTheRootAndItsPlace) {
    ExpectMissing(L"<Msg/>", L"Msg", L"Missing message type! (");
    ExpectMissing(L"<Msg\n version=\"1\"\n  pid=\"1\"/>", L"Msg", L"Missing message type! (");
    ExpectMissing(L"<Msg type=\"Request\"/>", L"Msg", L"Missing message pid! (");
    ExpectMissing(L"<Msg type=\"Request\" pid=\"1\"/>", L"Msg", L"Missing message version! (");
}

TEST(Message, NamesTheMissingAttributeOfAnEntryAndItsPlace) {
    ExpectMissing(Document(L"<Key>x</Key>"), L"Key", L"Missing name! (");
    ExpectMissing(Document(L"\r\n  <Key name=\"a\" size=\"2\">x</Key>"), L"Key", L"Missing type! (");
    ExpectMissing(Document(L"<Key name=\"a\" type=\"string\">x</Key>"), L"Key", L"Missing size! (");
}

TEST(Message, TellsThePlaceByLine) {
    const auto failure = Thrown<vorlek::Exception>(
        [] { Message::FromString(L"<Msg version=\"1\" type=\"Test\" pid=\"1\">\n\n<Key/></Msg>"); });
    EXPECT_THAT(failure.GetMessage(), testing::StartsWith(L"Missing name! (3:"));
}

TEST(Message, RefusesAnotherVersion) {
    const auto failure =
        Thrown<vorlek::Exception>([] { Message::FromString(L"<Msg version=\"2\" type=\"Request\" pid=\"1\"/>"); });
    EXPECT_EQ(failure.GetMessage(), L"Invalid message version: 2");
}

TEST(Message, RefusesAnUnknownTypeOnlyOnceTheVersionIsRight) {
    const auto type =
        Thrown<vorlek::Exception>([] { Message::FromString(L"<Msg version=\"1\" type=\"request\" pid=\"1\"/>"); });
    EXPECT_EQ(type.GetMessage(), L"Invalid message type: \"request\"");
    EXPECT_EQ(type.GetLocation(), L"vorlek::Message::StringToMessageType");
    const auto version =
        Thrown<vorlek::Exception>([] { Message::FromString(L"<Msg version=\"3\" type=\"request\" pid=\"1\"/>"); });
    EXPECT_EQ(version.GetMessage(), L"Invalid message version: 3");
}

TEST(Message, SaysSoWhenThereIsNoMemoryForIt) {
    const auto failure = Thrown<vorlek::Exception>([] {
        const test_support::NoMemory noMemory(sizeof(Message));
        Message::FromString(L"<Msg version=\"1\" type=\"Request\" pid=\"1\"/>");
    });
    EXPECT_EQ(failure.GetMessage(), L"Allocation of message has failed!");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::Message::FromString");
}

TEST(Message, GetNamesAMissingKey) {
    const Message message(MessageType::Request, 1);
    std::int32_t number = 0;
    std::wstring text;
    std::vector<BYTE> bytes;
    const auto expectMissing = [](const auto& get, const wchar_t* location) {
        const auto failure = Thrown<vorlek::Exception>(get);
        EXPECT_EQ(failure.GetMessage(), L"Key \"a b\" wasn't found!");
        EXPECT_EQ(failure.GetLocation(), location);
    };
    expectMissing([&] { message.Get(L"a b", number); }, L"vorlek::Message::Get");
    expectMissing([&] { message.Get(L"a b", text); }, L"vorlek::Message::Get");
    expectMissing([&] { message.Get(L"a b", bytes); }, L"vorlek::Message::Get");
    expectMissing([&] { message.GetValueSize(L"a b"); }, L"vorlek::Message::GetValueSize");
}

TEST(Message, GetRefusesAnotherType) {
    Message message(MessageType::Request, 1);
    message.Set(L"text", L"1", false);
    message.Set(L"number", 1, false);
    std::int32_t number = 0;
    std::wstring text;
    std::vector<BYTE> bytes;
    const auto words = [](const auto& get) { return Thrown<vorlek::ArgumentException>(get).GetMessage(); };
    EXPECT_EQ(words([&] { message.Get(L"text", number); }),
              L"Invalid requested type for value \"text\". Requested: int, actual: string");
    EXPECT_EQ(words([&] { message.Get(L"number", text); }),
              L"Invalid requested type for value \"number\". Requested: string, actual: int");
    EXPECT_EQ(words([&] { message.Get(L"number", bytes); }),
              L"Invalid requested type for value \"number\". Requested: byte[], actual: int");
}

TEST(Message, TranslatesEachType) {
    const std::pair<MessageType, const wchar_t*> types[] = {{MessageType::Request, L"Request"},
                                                            {MessageType::Response, L"Response"},
                                                            {MessageType::Error, L"Error"},
                                                            {MessageType::Test, L"Test"}};
    for (const auto& [type, text] : types) {
        EXPECT_EQ(Message::MessageTypeToString(type), text);
        EXPECT_EQ(Message::StringToMessageType(text), type);
    }
}

TEST(Message, RefusesToTranslateUnknownTypes) {
    const auto number = Thrown<vorlek::Exception>([] { Message::MessageTypeToString(static_cast<MessageType>(4)); });
    EXPECT_EQ(number.GetMessage(), L"Invalid message type: 4");
    EXPECT_EQ(number.GetLocation(), L"vorlek::Message::MessageTypeToString");
    const auto text = Thrown<vorlek::Exception>([] { Message::StringToMessageType(L""); });
    EXPECT_EQ(text.GetMessage(), L"Invalid message type: \"\"");
}

TEST(Message, LogsAFailureToWriteAndPassesItOn) {
    const test_support::LogCapture log;
    const Message message(static_cast<MessageType>(5), 1);
    const auto failure = Thrown<vorlek::Exception>([&] { message.ToString(); });
    EXPECT_EQ(failure.GetMessage(), L"Invalid message type: 5");
    EXPECT_THAT(log.Texts(L"ERROR"), testing::ElementsAre(L"ToString failed with: " + failure.ToString()));
}

TEST(Message, LogsAFailureToReadAndPassesItOn) {
    const test_support::LogCapture log;
    const auto failure = Thrown<vorlek::Exception>([] { Message::FromString(L"<Other/>"); });
    EXPECT_THAT(log.Texts(L"ERROR"), testing::ElementsAre(L"FromString failed with: " + failure.ToString()));
    EXPECT_THAT(log.Lines().back().logger, testing::EndsWith(L"vorlek.Message"));
}
