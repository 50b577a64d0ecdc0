#include "foundation/XMLReader.h"

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/XMLWriter.h"
#include "tests/support/ExpectFailure.h"

using test_support::ExpectFailure;
using vorlek::Exception;
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
