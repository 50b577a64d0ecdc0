#include "foundation/XMLWriter.h"

#include <sstream>

#include <gtest/gtest.h>

#include "tests/support/ExpectFailure.h"

using test_support::ExpectFailure;
using vorlek::Exception;
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
