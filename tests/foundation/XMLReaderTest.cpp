#include "foundation/XMLReader.h"

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/SequentialStream.h"
#include "foundation/XMLWriter.h"
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
using vorlek::XMLReader;
using vorlek::XMLWriter;

namespace {

/// The document's nodes, each as "type:value".
std::vector<std::wstring> Nodes_(const std::wstring& document) {
    std::wstringstream stream(document);
    XMLReader reader(stream);
    std::vector<std::wstring> nodes;
    while (const auto node = reader.ReadNode()) {
        nodes.push_back(std::to_wstring(node->GetType()) + L':' + node->GetValue());
    }
    return nodes;
}

using Nodes = std::vector<std::wstring>;
using Attributes = std::map<std::wstring, std::wstring>;

constexpr wchar_t kConstruction[] = L"vorlek::XMLReader::XMLReader";
constexpr wchar_t kReadNode[] = L"vorlek::XMLReader::ReadNode";
constexpr wchar_t kReadAttributes[] = L"vorlek::XMLReader::ReadAttributes";

/// A reader at the beginning of a small document. The system's own reader behind it is of the class of any_.
class XMLReaderParts : public testing::Test {
protected:
    XMLReaderParts() { EXPECT_EQ(S_OK, CreateXmlReader(IID_PPV_ARGS(&any_), nullptr)); }

    /// A new reader, for its construction.
    static void Construct_() {
        std::wstringstream stream(L"<a/>");
        const XMLReader reader(stream);
    }

    _com_ptr_t<_com_IIID<IXmlReader, &__uuidof(IXmlReader)>> any_;
    std::wstringstream stream_{L"<a x='1' y='2' z='3'>\n  text</a>"};
    XMLReader reader_{stream_};
};

} // namespace

TEST(XMLReader, ReturnsElementsAndTextsInOrder) {
    EXPECT_EQ((Nodes{L"0:a", L"0:b", L"2:text", L"1:b", L"1:a"}), Nodes_(L"<a><b>text</b></a>"));
}

TEST(XMLReader, ReturnsLocalNames) {
    EXPECT_EQ((Nodes{L"0:a", L"1:a"}), Nodes_(L"<n:a xmlns:n=\"urn:n\"></n:a>"));
}

TEST(XMLReader, SkipsAllOtherKindsOfNodes) {
    EXPECT_EQ((Nodes{L"0:a", L"0:b", L"1:b", L"1:a"}),
              Nodes_(L"<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n<!-- c --><?p i?>\r\n"
                     L"<a>\r\n  <b><![CDATA[data]]></b>\r\n</a>"));
}

TEST(XMLReader, SelfClosedElementHasNoEnd) {
    EXPECT_EQ((Nodes{L"0:a", L"0:b", L"1:a"}), Nodes_(L"<a><b/></a>"));
}

TEST(XMLReader, TextInPiecesIsNotJoined) {
    EXPECT_EQ((Nodes{L"0:a", L"2:one", L"2:two", L"1:a"}), Nodes_(L"<a>one<!-- c -->two</a>"));
}

TEST(XMLReader, ReadsTextOutsideTheBasicPlaneAndEntities) {
    EXPECT_EQ((Nodes{L"0:a", L"2:<\xD83D\xDE00&", L"1:a"}), Nodes_(L"<a>&lt;\xD83D\xDE00&amp;</a>"));
}

TEST(XMLReader, EndOfInputIsAnEmptyPointerAgainAndAgain) {
    std::wstringstream stream(L"<a/>");
    XMLReader reader(stream);
    EXPECT_NE(nullptr, reader.ReadNode());
    EXPECT_EQ(nullptr, reader.ReadNode());
    EXPECT_EQ(nullptr, reader.ReadNode());
    EXPECT_EQ(nullptr, reader.ReadNode());
}

TEST(XMLReader, RefusesADocumentTypeDefinition) {
    ExpectFailure<Exception>([] { Nodes_(L"<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>"); },
                             L"vorlek::XMLReader::ReadNode",
                             L"Read failed with: " + std::to_wstring(static_cast<HRESULT>(WC_E_DTDPROHIBITED)));
}

TEST(XMLReader, RaisesForIllFormedInput) {
    ExpectFailure<Exception>([] { Nodes_(L"<a></b>"); }, L"vorlek::XMLReader::ReadNode",
                             L"Read failed with: " + std::to_wstring(static_cast<HRESULT>(WC_E_ELEMENTMATCH)));
}

TEST(XMLReader, ReadsTheAttributesOfTheElementJustRead) {
    std::wstringstream stream(L"<a x=\"1\" b=\"&lt;&#x41;\"><c/></a>");
    XMLReader reader(stream);
    reader.ReadNode();
    EXPECT_EQ((std::map<std::wstring, std::wstring>{{L"b", L"<A"}, {L"x", L"1"}}), reader.ReadAttributes());
    EXPECT_EQ(L"c", reader.ReadNode()->GetValue());
    EXPECT_TRUE(reader.ReadAttributes().empty());
    EXPECT_EQ(XMLNode::EndElement, reader.ReadNode()->GetType());
}

TEST(XMLReader, ALongDocumentComesBackWhole) {
    std::wstring text;
    for (int i = 0; text.size() < 3'000'000; ++i) {
        text += L"line <" + std::to_wstring(i) + L"> & \xD83D\xDE00 \x05D0\n";
    }
    std::wstringstream stream;
    XMLWriter writer(stream, XMLWriter::NoByteOrderMark);
    writer.StartDocument();
    writer.WriteNode(XMLNode(XMLNode::StartElement, L"a"));
    writer.WriteNode(XMLNode(XMLNode::Text, text));
    writer.WriteNode(XMLNode(XMLNode::EndElement, L"a"));
    writer.EndDocument();
    XMLReader reader(stream);
    reader.ReadNode();
    std::wstring read;
    for (auto node = reader.ReadNode(); node->GetType() == XMLNode::Text; node = reader.ReadNode()) {
        read += node->GetValue();
    }
    EXPECT_TRUE(read == text) << "of " << text.size() << " characters came " << read.size();
    EXPECT_EQ(nullptr, reader.ReadNode());
}

TEST_F(XMLReaderParts, SystemIsAskedForAReaderOfItsOwnMemory) {
    ReplacedImport<"CreateXmlReader", decltype(CreateXmlReader)> create([](REFIID iid, void** object, IMalloc* memory) {
        EXPECT_TRUE(iid == __uuidof(IXmlReader));
        EXPECT_EQ(nullptr, memory);
        *object = nullptr;
        return E_OUTOFMEMORY;
    });
    ExpectFailure<Exception>(Construct_, kConstruction, L"CreateXmlReader failed with: -2147024882");
    EXPECT_EQ(1, create.Calls());
}

TEST_F(XMLReaderParts, DocumentTypeDefinitionsAreProhibited) {
    ReplacedMethod<&IXmlReader::SetProperty> set(any_, [](IXmlReader*, UINT property, LONG_PTR value) {
        EXPECT_EQ(XmlReaderProperty_DtdProcessing, property);
        EXPECT_EQ(DtdProcessing_Prohibit, value);
        return E_INVALIDARG;
    });
    ExpectFailure<Exception>(Construct_, kConstruction, L"SetProperty failed with: -2147024809");
    EXPECT_EQ(1, set.Calls());
}

TEST_F(XMLReaderParts, StreamThatFindsNoMemoryRaises) {
    const test_support::NoMemory noMemory(sizeof(SequentialStream));
    ExpectFailure<Exception>(Construct_, kConstruction, L"CreateStream failed with: -2147467259");
}

TEST_F(XMLReaderParts, InputThatIsRefusedRaises) {
    const FailingMethod<&IXmlReader::SetInput> setInput(any_, E_NOINTERFACE);
    ExpectFailure<Exception>(Construct_, kConstruction, L"SetInput failed with: -2147467262");
}

TEST_F(XMLReaderParts, StreamIsLetGoAtTheEnd) {
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

TEST_F(XMLReaderParts, ElementWithoutItsNameRaises) {
    {
        const FailingMethod<&IXmlReader::GetLocalName> getLocalName(any_, E_UNEXPECTED);
        ExpectFailure<Exception>([&] { reader_.ReadNode(); }, kReadNode, L"GetLocalName failed with: -2147418113");
    }
    EXPECT_EQ(XMLNode::Text, reader_.ReadNode()->GetType());
    const FailingMethod<&IXmlReader::GetLocalName> getLocalName(any_, E_FAIL);
    ExpectFailure<Exception>([&] { reader_.ReadNode(); }, kReadNode, L"GetLocalName failed with: -2147467259");
}

TEST_F(XMLReaderParts, TextWithoutItsValueRaises) {
    reader_.ReadNode();
    const FailingMethod<&IXmlReader::GetValue> getValue(any_, E_OUTOFMEMORY);
    ExpectFailure<Exception>([&] { reader_.ReadNode(); }, kReadNode, L"GetValue failed with: -2147024882");
}

TEST_F(XMLReaderParts, AttributesThatCannotBeReachedRaise) {
    reader_.ReadNode();
    const FailingMethod<&IXmlReader::MoveToFirstAttribute> move(any_, E_UNEXPECTED);
    ExpectFailure<Exception>([&] { reader_.ReadAttributes(); }, kReadAttributes,
                             L"MoveToFirstAttribute failed with: -2147418113");
}

TEST_F(XMLReaderParts, AttributeWithoutItsNameOrValueRaises) {
    reader_.ReadNode();
    {
        const FailingMethod<&IXmlReader::GetLocalName> getLocalName(any_, E_UNEXPECTED);
        ExpectFailure<Exception>([&] { reader_.ReadAttributes(); }, kReadAttributes,
                                 L"GetLocalName failed with: -2147418113");
    }
    const FailingMethod<&IXmlReader::GetValue> getValue(any_, E_OUTOFMEMORY);
    ExpectFailure<Exception>([&] { reader_.ReadAttributes(); }, kReadAttributes, L"GetValue failed with: -2147024882");
}

TEST_F(XMLReaderParts, LaterAttributeThatCannotBeReachedEndsTheList) {
    reader_.ReadNode();
    ReplacedMethod<&IXmlReader::MoveToNextAttribute> move(
        any_, [&](IXmlReader* reader) { return move.Calls() == 2 ? E_UNEXPECTED : move.Original(reader); });
    EXPECT_EQ((Attributes{{L"x", L"1"}, {L"y", L"2"}}), reader_.ReadAttributes());
    EXPECT_EQ(2, move.Calls());
}

TEST_F(XMLReaderParts, DefaultedAttributesAreLeftOut) {
    reader_.ReadNode();
    ReplacedMethod<&IXmlReader::IsDefault> isDefault(any_, [&](IXmlReader*) { return isDefault.Calls() == 2; });
    EXPECT_EQ((Attributes{{L"x", L"1"}, {L"z", L"3"}}), reader_.ReadAttributes());
    EXPECT_EQ(3, isDefault.Calls());
}

TEST_F(XMLReaderParts, LockIsHeldForAWholeOperation) {
    const HeldSections sections;
    ReplacedMethod<&IXmlReader::Read> read(any_, [&](IXmlReader* reader, XmlNodeType* type) {
        EXPECT_EQ(1, sections.Count());
        return read.Original(reader, type);
    });
    ReplacedMethod<&IXmlReader::GetValue> getValue(any_, [&](IXmlReader* reader, const wchar_t** value, UINT* length) {
        EXPECT_EQ(1, sections.Count());
        return getValue.Original(reader, value, length);
    });
    reader_.ReadNode();
    EXPECT_EQ(1, sections.Releases());
    reader_.ReadAttributes();
    EXPECT_EQ(2, sections.Releases());
    EXPECT_EQ(1, read.Calls());
    EXPECT_EQ(3, getValue.Calls());
    EXPECT_EQ(0, sections.Count());
}

TEST_F(XMLReaderParts, LockIsGivenBackByAFailure) {
    const HeldSections sections;
    const FailingMethod<&IXmlReader::Read> read(any_, E_FAIL);
    EXPECT_THROW(reader_.ReadNode(), Exception);
    EXPECT_EQ(0, sections.Count());
    EXPECT_EQ(1, sections.Releases());
}

TEST_F(XMLReaderParts, TellsWhereItStands) {
    reader_.ReadNode();
    EXPECT_EQ(1u, reader_.GetLineNumber());
    EXPECT_EQ(2u, reader_.GetLinePosition());
    reader_.ReadNode();
    reader_.ReadNode();
    EXPECT_EQ(2u, reader_.GetLineNumber());
    EXPECT_EQ(9u, reader_.GetLinePosition());
}

TEST_F(XMLReaderParts, PlaceThatTheSystemDoesNotTellRaises) {
    const FailingMethod<&IXmlReader::GetLineNumber> getLine(any_, E_INVALIDARG);
    ExpectFailure<Exception>([&] { reader_.GetLineNumber(); }, L"vorlek::XMLReader::GetLineNumber",
                             L"GetLineNumber failed with: -2147024809");
    const FailingMethod<&IXmlReader::GetLinePosition> getPosition(any_, E_INVALIDARG);
    ExpectFailure<Exception>([&] { reader_.GetLinePosition(); }, L"vorlek::XMLReader::GetLinePosition",
                             L"GetLinePosition failed with: -2147024809");
}
