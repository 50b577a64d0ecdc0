#include "stand-ins/agent/Xml.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace stand_ins::agent;

namespace {

/// Every tag and every text, in their order; or what is wrong.
std::string Read_(std::wstring_view text) {
    std::string read;
    try {
        XmlReader reader(text, "text");
        std::wstring data;
        while (const auto tag = reader.Next(data)) {
            read += std::string(data.begin(), data.end()) + (tag->isEnd ? "</" : "<") +
                    std::string(tag->name.begin(), tag->name.end());
            for (const auto& [name, value] : tag->attributes) {
                read += " " + std::string(name.begin(), name.end()) + "=" + std::string(value.begin(), value.end());
            }
            read += tag->isEmpty ? "/>" : ">";
            data.clear();
        }
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return read;
}

} // namespace

TEST(AgentXml, WhatADocumentHoldsComesInItsOrder) {
    EXPECT_EQ(Read_(L"\r\n<?xml version='1.0'?><!-- none --> <a z=\"1\" b='say \"&amp;\"'>x<c/>y<d>&lt;</d></a>\r\n"),
              "<a z=1 b=say \"&\">x<c/>y<d><</d></a>");
}

TEST(AgentXml, WhatIsNotAllowedIsToldWithItsPlace) {
    EXPECT_EQ(Read_(L"<a/><b/>"), "malformed text at character 8: a second element at the top");
    EXPECT_EQ(Read_(L"<a/>b"), "malformed text at character 4: text outside the element at the top");
    EXPECT_EQ(Read_(L"b<a/>"), "malformed text at character 0: text outside the element at the top");
    EXPECT_EQ(Read_(L"<a/><![CDATA[b]]>"), "malformed text at character 13: text outside the element at the top");
    EXPECT_EQ(Read_(L"<a></b>"), "malformed text at character 7: </b> closes nothing");
    EXPECT_EQ(Read_(L"</a>"), "malformed text at character 4: </a> closes nothing");
    EXPECT_EQ(Read_(L"<a><b></a></b>"), "malformed text at character 10: </a> closes nothing");
    EXPECT_EQ(Read_(L"<a></a b=\"1\">"), "malformed text at character 7: an end with more than its name");
    EXPECT_EQ(Read_(L"<a b=\"1\" b=\"2\"/>"), "malformed text at character 10: an attribute stands twice");
    EXPECT_EQ(Read_(L"<a b=\"<\"/>"), "malformed text at character 5: a \"<\" in an attribute");
    EXPECT_EQ(Read_(L"<a b=1/>"), "malformed text at character 5: a quotation mark is missing");
    EXPECT_EQ(Read_(L"<a b/>"), "malformed text at character 4: an attribute without a value");
    EXPECT_EQ(Read_(L"<a"), "malformed text at character 2: a name is missing");
    EXPECT_EQ(Read_(L"<"), "malformed text at character 1: a name is missing");
    EXPECT_EQ(Read_(L"<a>&"), "malformed text at character 3: a reference without its end");
    EXPECT_EQ(Read_(L"<a>&#xD83D;</a>"), "malformed text at character 3: an unknown reference");
    EXPECT_EQ(Read_(L"<a>&#-5;</a>"), "malformed text at character 3: an unknown reference");
    EXPECT_EQ(Read_(L"<a><!-- </a>"), "malformed text at character 3: \"-->\" is missing");
    EXPECT_EQ(Read_(L"<!DOCTYPE a><a/>"), "malformed text at character 0: a type definition");
}

TEST(AgentXml, ACharacterThatXmlForbidsIsNotLetIn) {
    EXPECT_EQ(Read_(L"<a>\x0001</a>"), "malformed text at character 3: no character of XML: 1");
    EXPECT_EQ(Read_(L"<a>\xFFFE</a>"), "malformed text at character 3: no character of XML: 65534");
    EXPECT_EQ(Read_(L"<a>\xD83D</a>"), "malformed text at character 3: no character of XML: 55357");
    EXPECT_EQ(Read_(L"<a>\xDE00\xD83D</a>"), "malformed text at character 3: no character of XML: 56832");
    EXPECT_EQ(Read_(L"\xFEFF<a/>"), "malformed text at character 0: text outside the element at the top");
}

TEST(AgentXml, NoDepthCostsStack) {
    std::wstring deep;
    for (int i = 0; i < 300000; ++i) {
        deep += L"<a>";
    }
    EXPECT_EQ(Read_(deep), "malformed text at character 900000: <a> is not closed");
    EXPECT_THROW(Indented(deep, "text"), std::runtime_error);
}

TEST(AgentXml, ADocumentIsIndentedForAPerson) {
    EXPECT_EQ(Indented(L"<a z=\"1\" b=\"&lt;\"><b/><c>two  &amp; #</c><d></d>tail</a>", "text"),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
              "<a z=\"1\" b=\"&lt;\">\n"
              "  <b />\n"
              "  <c>two  &amp; #</c>\n"
              "  <d></d>tail\n"
              "</a>\n");
}
