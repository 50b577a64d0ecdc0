#include "foundation/XMLWriter.h"

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/SequentialStream.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/HeldSections.h"
#include "tests/support/NoMemory.h"
#include "tests/support/ReplacedMethod.h"

using test_support::ExpectFailure;
using test_support::FailingMethod;
using test_support::HeldSections;
using test_support::ReplacedImport;
using test_support::ReplacedMethod;
using vorlek::Exception;
using vorlek::SequentialStream;
using vorlek::XMLNode;
using vorlek::XMLWriter;

namespace {

const XMLNode kStartA(XMLNode::StartElement, L"a");
const XMLNode kEnd(XMLNode::EndElement, L"");

/// A small document, written with the options.
std::wstring Written_(std::uint32_t options) {
    std::wstringstream stream;
    XMLWriter writer(stream, options);
    writer.StartDocument();
    writer.WriteNode(kStartA);
    writer.WriteNode(XMLNode(XMLNode::StartElement, L"b"));
    writer.WriteNode(XMLNode(XMLNode::Text, L"text"));
    writer.WriteNode(kEnd);
    writer.WriteNode(kEnd);
    writer.EndDocument();
    return stream.str();
}

constexpr wchar_t kConstruction[] = L"vorlek::XMLWriter::XMLWriter";
constexpr wchar_t kEndDocument[] = L"vorlek::XMLWriter::EndDocument";

/// A writer inside a document. The system's own writer behind it is of the class of any_.
class XMLWriterParts : public testing::Test {
protected:
    XMLWriterParts() {
        EXPECT_EQ(S_OK, CreateXmlWriter(IID_PPV_ARGS(&any_), nullptr));
        writer_.StartDocument();
        writer_.WriteNode(kStartA);
    }

    /// A new writer, for its construction.
    static void Construct_() {
        std::wstringstream stream;
        const XMLWriter writer(stream, XMLWriter::OmitXmlDeclaration);
    }

    _com_ptr_t<_com_IIID<IXmlWriter, &__uuidof(IXmlWriter)>> any_;
    std::wstringstream stream_;
    XMLWriter writer_{stream_, 7};
};

} // namespace

TEST(XMLWriter, IndentsDeclaresAndMarksTheByteOrderByDefault) {
    EXPECT_EQ(L"\xFEFF<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n<a>\r\n  <b>text</b>\r\n</a>", Written_(0));
}

TEST(XMLWriter, LeavesTheByteOrderMarkOut) {
    EXPECT_EQ(L"<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n<a>\r\n  <b>text</b>\r\n</a>",
              Written_(XMLWriter::NoByteOrderMark));
}

TEST(XMLWriter, LeavesTheIndentOut) {
    EXPECT_EQ(L"<?xml version=\"1.0\" encoding=\"utf-16\"?><a><b>text</b></a>",
              Written_(XMLWriter::NoByteOrderMark | XMLWriter::NoIndent));
}

TEST(XMLWriter, LeavesTheDeclarationOut) {
    EXPECT_EQ(L"<a><b>text</b></a>",
              Written_(XMLWriter::NoByteOrderMark | XMLWriter::NoIndent | XMLWriter::OmitXmlDeclaration));
}

TEST(XMLWriter, OptionsAreTheBitsThatCallersPass) {
    EXPECT_EQ(1, XMLWriter::NoIndent);
    EXPECT_EQ(2, XMLWriter::OmitXmlDeclaration);
    EXPECT_EQ(4, XMLWriter::NoByteOrderMark);
}

TEST(XMLWriter, WritesAttributesInKeyOrder) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    writer.StartDocument();
    writer.WriteNode(kStartA);
    writer.WriteAttributes({{L"z", L"1"}, {L"b", L"<&\">"}});
    writer.WriteAttribute(L"a", L"last");
    writer.WriteNode(kEnd);
    writer.EndDocument();
    EXPECT_EQ(L"<a b=\"&lt;&amp;&quot;&gt;\" z=\"1\" a=\"last\" />", stream.str());
}

TEST(XMLWriter, EscapesText) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    writer.StartDocument();
    writer.WriteNode(kStartA);
    writer.WriteNode(XMLNode(XMLNode::Text, L"<b> & \xD83D\xDE00"));
    writer.WriteNode(kEnd);
    writer.EndDocument();
    EXPECT_EQ(L"<a>&lt;b&gt; &amp; \xD83D\xDE00</a>", stream.str());
}

TEST(XMLWriter, UnsupportedTypeRaisesAndTheDocumentStaysUsable) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    writer.StartDocument();
    writer.WriteNode(kStartA);
    ExpectFailure<Exception>([&] { writer.WriteNode(XMLNode(static_cast<XMLNode::Type>(3), L"x")); },
                             L"vorlek::XMLWriter::WriteNode", L"Unsupported type: 3");
    writer.WriteNode(kEnd);
    writer.EndDocument();
    EXPECT_EQ(L"<a />", stream.str());
}

TEST(XMLWriter, EndDocumentClosesOpenElementsAndLetsGoOfTheStream) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    writer.StartDocument();
    writer.WriteNode(kStartA);
    writer.WriteNode(XMLNode(XMLNode::StartElement, L"b"));
    writer.EndDocument();
    EXPECT_EQ(L"<a><b /></a>", stream.str());
    EXPECT_THROW(writer.WriteNode(kStartA), Exception);
    EXPECT_EQ(L"<a><b /></a>", stream.str());
}

TEST(XMLWriter, StartDocumentTwiceRaises) {
    std::wstringstream stream;
    XMLWriter writer(stream, 0);
    writer.StartDocument();
    ExpectFailure<Exception>([&] { writer.StartDocument(); }, L"vorlek::XMLWriter::StartDocument",
                             L"WriteStartDocument failed with: " +
                                 std::to_wstring(static_cast<HRESULT>(WR_E_INVALIDACTION)));
}

TEST(XMLWriter, EndDocumentTwiceRaises) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    writer.StartDocument();
    writer.WriteNode(kStartA);
    writer.EndDocument();
    ExpectFailure<Exception>([&] { writer.EndDocument(); }, L"vorlek::XMLWriter::EndDocument",
                             L"WriteEndDocument failed with: " + std::to_wstring(E_UNEXPECTED));
}

TEST(XMLWriter, AttributeThatCannotBeWrittenRaisesWithItsNameAndValue) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    const std::wstring words =
        L"WriteAttributeString failed with: " + std::to_wstring(static_cast<HRESULT>(WR_E_INVALIDACTION));
    ExpectFailure<Exception>([&] { writer.WriteAttribute(L"name", L"value"); }, L"vorlek::XMLWriter::WriteAttribute",
                             words + L" on [name,value]");
    ExpectFailure<Exception>(
        [&] {
            writer.WriteAttributes({{L"b", L"2"}, {L"a", L"1"}});
        },
        L"vorlek::XMLWriter::WriteAttribute", words + L" on [a,1]");
}

TEST(XMLWriter, EndOfNoElementRaises) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    writer.StartDocument();
    ExpectFailure<Exception>([&] { writer.WriteNode(kEnd); }, L"vorlek::XMLWriter::WriteNode",
                             L"WriteEndElement failed with: " +
                                 std::to_wstring(static_cast<HRESULT>(WR_E_INVALIDACTION)));
}

TEST(XMLWriter, SecondRootRaises) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    writer.StartDocument();
    writer.WriteNode(kStartA);
    writer.WriteNode(kEnd);
    writer.EndDocument();
    ExpectFailure<Exception>([&] { writer.WriteNode(kStartA); }, L"vorlek::XMLWriter::WriteNode",
                             L"WriteStartElement failed with: " + std::to_wstring(E_UNEXPECTED));
    ExpectFailure<Exception>([&] { writer.WriteNode(XMLNode(XMLNode::Text, L"t")); }, L"vorlek::XMLWriter::WriteNode",
                             L"WriteString failed with: " + std::to_wstring(E_UNEXPECTED));
}

TEST_F(XMLWriterParts, SystemIsAskedForAWriterOfItsOwnMemory) {
    ReplacedImport<"CreateXmlWriter", decltype(CreateXmlWriter)> create([](REFIID iid, void** object, IMalloc* memory) {
        EXPECT_TRUE(iid == __uuidof(IXmlWriter));
        EXPECT_EQ(nullptr, memory);
        *object = nullptr;
        return E_OUTOFMEMORY;
    });
    ExpectFailure<Exception>(Construct_, kConstruction, L"CreateXmlWriter failed with: -2147024882");
    EXPECT_EQ(1, create.Calls());
}

TEST_F(XMLWriterParts, PropertiesAreSetInOrder) {
    std::vector<std::pair<UINT, LONG_PTR>> properties;
    ReplacedMethod<&IXmlWriter::SetProperty> set(any_, [&](IXmlWriter* writer, UINT property, LONG_PTR value) {
        properties.emplace_back(property, value);
        return set.Original(writer, property, value);
    });
    Construct_();
    EXPECT_EQ((std::vector<std::pair<UINT, LONG_PTR>>{{XmlWriterProperty_Indent, TRUE},
                                                      {XmlWriterProperty_OmitXmlDeclaration, TRUE},
                                                      {XmlWriterProperty_ByteOrderMark, TRUE}}),
              properties);
}

TEST_F(XMLWriterParts, PropertyThatIsRefusedRaisesAtOnce) {
    for (int refused = 1; refused <= 3; ++refused) {
        ReplacedMethod<&IXmlWriter::SetProperty> set(any_, [&](IXmlWriter* writer, UINT property, LONG_PTR value) {
            return set.Calls() == refused ? E_INVALIDARG : set.Original(writer, property, value);
        });
        ExpectFailure<Exception>(Construct_, kConstruction, L"SetProperty failed with: -2147024809");
        EXPECT_EQ(refused, set.Calls());
    }
}

TEST_F(XMLWriterParts, StreamThatFindsNoMemoryRaises) {
    const test_support::NoMemory noMemory(sizeof(SequentialStream));
    ExpectFailure<Exception>(Construct_, kConstruction, L"CreateStream failed with: -2147467259");
}

TEST_F(XMLWriterParts, OutputOfThatEncodingThatCannotBeMadeRaises) {
    const ReplacedImport<"CreateXmlWriterOutputWithEncodingName", decltype(CreateXmlWriterOutputWithEncodingName)>
        create([](IUnknown* stream, IMalloc* memory, const wchar_t* encoding, IXmlWriterOutput** output) {
            EXPECT_NE(nullptr, stream);
            EXPECT_EQ(nullptr, memory);
            EXPECT_STREQ(L"utf-16", encoding);
            *output = nullptr;
            return E_NOINTERFACE;
        });
    ExpectFailure<Exception>(Construct_, kConstruction,
                             L"CreateXmlWriterOutputWithEncodingName failed with: -2147467262");
    EXPECT_EQ(1, create.Calls());
}

TEST_F(XMLWriterParts, OutputThatIsRefusedRaises) {
    const FailingMethod<&IXmlWriter::SetOutput> setOutput(any_, E_NOINTERFACE);
    ExpectFailure<Exception>(Construct_, kConstruction, L"SetInput failed with: -2147467262");
}

TEST_F(XMLWriterParts, StreamIsLetGoAtTheEnd) {
    std::wstringstream text;
    ISequentialStream* any = nullptr;
    ASSERT_EQ(S_OK, SequentialStream::CreateStream(text, &any));
    ULONG left = 99;
    {
        ReplacedMethod<&ISequentialStream::Release> release(any, [&](IUnknown* stream) {
            left = release.Original(stream);
            return left;
        });
        Construct_();
    }
    any->Release();
    EXPECT_EQ(0u, left);
}

TEST_F(XMLWriterParts, EndDocumentEndsThenFlushesThenDetaches) {
    std::vector<std::wstring> calls;
    ReplacedMethod<&IXmlWriter::WriteEndDocument> end(any_, [&](IXmlWriter* writer) {
        calls.emplace_back(L"WriteEndDocument");
        return end.Original(writer);
    });
    ReplacedMethod<&IXmlWriter::Flush> flush(any_, [&](IXmlWriter* writer) {
        calls.emplace_back(L"Flush");
        return flush.Original(writer);
    });
    ReplacedMethod<&IXmlWriter::SetOutput> setOutput(any_, [&](IXmlWriter* writer, IUnknown* output) {
        calls.emplace_back(output == nullptr ? L"SetOutput null" : L"SetOutput");
        return setOutput.Original(writer, output);
    });
    writer_.EndDocument();
    EXPECT_EQ((std::vector<std::wstring>{L"WriteEndDocument", L"Flush", L"SetOutput null"}), calls);
}

TEST_F(XMLWriterParts, EndDocumentRaisesWhereFlushingFails) {
    const FailingMethod<&IXmlWriter::Flush> flush(any_, E_OUTOFMEMORY);
    ExpectFailure<Exception>([&] { writer_.EndDocument(); }, kEndDocument, L"Flush failed with: -2147024882");
}

TEST_F(XMLWriterParts, EndDocumentRaisesWhereDetachingFails) {
    const FailingMethod<&IXmlWriter::SetOutput> setOutput(any_, E_FAIL);
    ExpectFailure<Exception>([&] { writer_.EndDocument(); }, kEndDocument, L"SetInput failed with: -2147467259");
}

TEST_F(XMLWriterParts, AttributesAreWrittenUnderOneLock) {
    const HeldSections sections;
    ReplacedMethod<&IXmlWriter::WriteAttributeString> write(any_, [&](IXmlWriter* writer, const wchar_t* prefix,
                                                                      const wchar_t* name, const wchar_t* space,
                                                                      const wchar_t* value) {
        EXPECT_EQ(nullptr, prefix);
        EXPECT_EQ(nullptr, space);
        EXPECT_LT(0, sections.Count());
        EXPECT_EQ(0, sections.Releases());
        return write.Original(writer, prefix, name, space, value);
    });
    writer_.WriteAttributes({{L"b", L"2"}, {L"a", L"1"}});
    EXPECT_EQ(2, write.Calls());
    EXPECT_EQ(1, sections.Releases());
    EXPECT_EQ(0, sections.Count());
}

TEST_F(XMLWriterParts, LockIsHeldForAWholeOperation) {
    std::wstringstream stream;
    XMLWriter writer(stream, 7);
    const HeldSections sections;
    std::vector<int> releases; // so many locks were given back before
    const auto note = [&] {
        EXPECT_EQ(1, sections.Count());
        releases.push_back(sections.Releases());
    };
    ReplacedMethod<&IXmlWriter::WriteStartDocument> start(any_, [&](IXmlWriter* system, XmlStandalone standalone) {
        note();
        return start.Original(system, standalone);
    });
    ReplacedMethod<&IXmlWriter::WriteStartElement> element(
        any_, [&](IXmlWriter* system, const wchar_t* prefix, const wchar_t* name, const wchar_t* space) {
            note();
            return element.Original(system, prefix, name, space);
        });
    ReplacedMethod<&IXmlWriter::WriteAttributeString> attribute(any_, [&](IXmlWriter* system, const wchar_t* prefix,
                                                                          const wchar_t* name, const wchar_t* space,
                                                                          const wchar_t* value) {
        note();
        return attribute.Original(system, prefix, name, space, value);
    });
    ReplacedMethod<&IXmlWriter::WriteEndDocument> end(any_, [&](IXmlWriter* system) {
        note();
        return end.Original(system);
    });
    ReplacedMethod<&IXmlWriter::SetOutput> setOutput(any_, [&](IXmlWriter* system, IUnknown* output) {
        note();
        return setOutput.Original(system, output);
    });
    writer.StartDocument();
    writer.WriteNode(kStartA);
    writer.WriteAttribute(L"a", L"1");
    writer.EndDocument();
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 3}), releases);
    EXPECT_EQ(4, sections.Releases());
    EXPECT_EQ(0, sections.Count());
}
