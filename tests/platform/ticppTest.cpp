#include "platform/ticpp/ticpp.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

using ticpp::Declaration;
using ticpp::Document;
using ticpp::Element;
using ticpp::Iterator;

namespace {

std::string Printed_(const ticpp::Node& node) {
    TiXmlPrinter printer;
    printer.SetStreamPrinting();
    node.Accept(&printer);
    return printer.Str();
}

/// The words that the body raises.
template <class Body>
std::string Words_(Body&& body) {
    try {
        body();
    } catch (const ticpp::Exception& failure) {
        return failure.what();
    }
    return "nothing raised";
}

} // namespace

TEST(Ticpp, BuildsADocument) {
    Document document;
    document.LinkEndChild(Declaration("1.0", "", ""));
    Element root("root");
    root.SetAttribute("version", "1");
    document.LinkEndChild(root);
    Element child("child");
    child.SetText("text");
    root.LinkEndChild(child);
    root.LinkEndChild(Element("empty"));
    EXPECT_EQ("<?xml version=\"1.0\" ?><root version=\"1\"><child>text</child><empty /></root>", Printed_(document));
}

TEST(Ticpp, DeclarationSaysWhatItIsGiven) {
    Document document;
    document.LinkEndChild(Declaration("1.0", "utf-8", "yes"));
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"yes\" ?>", Printed_(document));
}

TEST(Ticpp, LinkedElementStaysTheHandlesElement) {
    Document document;
    Element root("root");
    document.LinkEndChild(root);
    root.SetAttribute("a", "1");
    root.SetAttribute("a", "2");
    EXPECT_EQ("<root a=\"2\" />", Printed_(document));
    EXPECT_EQ("root", root.Value());
}

TEST(Ticpp, ElementThatIsLinkedNowhereIsFreed) {
    // Seen by the guard heap and by a leak of the loop's size.
    for (int i = 0; i < 1000; ++i) {
        Element loose("loose");
        loose.LinkEndChild(Element("child"));
        loose.SetText(std::string(10'000, 'x'));
    }
    Element moved = Element("moved");
    moved = Element("again");
    EXPECT_EQ("again", moved.Value());
}

TEST(Ticpp, LinksEachNodeOnce) {
    Document document;
    Element root("root");
    Element child("child");
    root.LinkEndChild(child);
    EXPECT_EQ("The node <child> is linked already", Words_([&] { document.LinkEndChild(child); }));
    document.LinkEndChild(root);
    EXPECT_EQ("The node <root> is linked already", Words_([&] { document.LinkEndChild(root); }));
    EXPECT_EQ("The node <child> is linked already",
              Words_([&] { document.LinkEndChild(root.FirstChildElement("child")); }));
    EXPECT_EQ("<root><child /></root>", Printed_(document));
}

TEST(Ticpp, LinksNothingBelowItself) {
    Element outer("outer");
    Element inner("inner");
    outer.LinkEndChild(inner);
    EXPECT_EQ("The node <outer> cannot be linked below itself", Words_([&] { inner.LinkEndChild(outer); }));
    EXPECT_EQ("The node <outer> cannot be linked below itself", Words_([&] { outer.LinkEndChild(outer); }));
}

TEST(Ticpp, LinksNoDocumentAndNothingBelowADeclaration) {
    Element root("root");
    EXPECT_EQ("The node <> cannot be linked to the node <root>", Words_([&] { root.LinkEndChild(Document()); }));
    Declaration declaration("1.0", "", "");
    EXPECT_EQ("The node <root> cannot be linked to the node <>", Words_([&] { declaration.LinkEndChild(root); }));
    Document document;
    document.LinkEndChild(root);
    EXPECT_EQ("<root />", Printed_(document));
}

TEST(Ticpp, AnyTextSurvives) {
    std::string control;
    for (char c = 1; c < 0x20; ++c) {
        control += c;
    }
    const std::vector<std::string> texts = {"<a> & \"b\" 'c' ]]>",
                                            "&#x41; &amp; &lt;",
                                            "  two  blanks\t\r\n ",
                                            control,
                                            "\xF0\x9F\x98\x80 \xD7\x90",
                                            std::string("a\0b", 3),
                                            "x"};
    for (const std::string& text : texts) {
        Document document;
        Element root("root");
        root.SetText(text);
        root.SetAttribute("a", text);
        document.LinkEndChild(root);
        Document parsed;
        parsed.Parse(Printed_(document));
        EXPECT_EQ(text, parsed.FirstChildElement().GetText());
        EXPECT_EQ(text, parsed.FirstChildElement().GetAttribute("a"));
    }
}

TEST(Ticpp, SetTextReplacesTheTextAndKeepsElements) {
    Document document;
    document.Parse("<a>one<b/>two</a>");
    Element a = document.FirstChildElement();
    a.SetText("new");
    EXPECT_EQ("<a>new<b /></a>", Printed_(document));
    a.SetText("");
    EXPECT_EQ("", a.GetText());
}

TEST(Ticpp, TextThatIsNotThereRaisesOrIsEmpty) {
    Document document;
    document.Parse("<a><b/></a>");
    const Element a = document.FirstChildElement();
    EXPECT_EQ("The element <a> has no text", Words_([&] { a.GetText(); }));
    EXPECT_EQ("", a.GetText(false));
    EXPECT_EQ("The element <b> has no text", Words_([&] { a.FirstChildElement().GetText(); }));
}

TEST(Ticpp, CharacterDataIsText) {
    Document document;
    document.Parse("<a><![CDATA[<x> & y]]></a>");
    EXPECT_EQ("<x> & y", document.FirstChildElement().GetText());
}

TEST(Ticpp, AttributeThatIsNotThereRaisesOrLeavesTheValue) {
    const Element element("e");
    std::string value = "before";
    EXPECT_EQ("The element <e> has no attribute \"a\"", Words_([&] { element.GetAttribute("a", value); }));
    EXPECT_EQ("The element <e> has no attribute \"a\"", Words_([&] { element.GetAttribute("a"); }));
    EXPECT_FALSE(element.GetAttribute("a", value, false));
    EXPECT_EQ("before", value);
}

TEST(Ticpp, AttributeIsRead) {
    Document document;
    document.Parse("<e a='1' b=''/>");
    std::string value = "before";
    EXPECT_TRUE(document.FirstChildElement().GetAttribute("a", value));
    EXPECT_EQ("1", value);
    EXPECT_TRUE(document.FirstChildElement().GetAttribute("b", value));
    EXPECT_EQ("", value);
}

TEST(Ticpp, ElementThatIsNotThereRaisesOrIsNull) {
    Document document;
    EXPECT_EQ("The node <> has no child element <>", Words_([&] { document.FirstChildElement(); }));
    document.Parse("<a><b/><c/></a>");
    const Element a = document.FirstChildElement("a");
    EXPECT_EQ("The node <a> has no child element <x>", Words_([&] { a.FirstChildElement("x"); }));
    EXPECT_FALSE(a.FirstChildElement("x", false));
    const Element b = a.FirstChildElement("b");
    EXPECT_EQ("c", b.NextSiblingElement().Value());
    EXPECT_EQ("The node <b> is followed by no element <x>", Words_([&] { b.NextSiblingElement("x"); }));
    EXPECT_FALSE(b.NextSiblingElement("x", false));
    EXPECT_FALSE(b.NextSiblingElement("c").NextSiblingElement({}, false));
}

TEST(Ticpp, NullViewRaises) {
    Element null(static_cast<TiXmlElement*>(nullptr));
    EXPECT_EQ("There is no node", Words_([&] { null.Value(); }));
    EXPECT_EQ("There is no node", Words_([&] { null.SetAttribute("a", "b"); }));
    EXPECT_EQ("There is no node", Words_([&] { null.FirstChildElement(); }));
    EXPECT_EQ("There is no node", Words_([&] { Document().LinkEndChild(null); }));
}

TEST(Ticpp, IteratesOverChildElements) {
    Document document;
    document.Parse("<a>text<b n='1'/><!-- c --><c n='2'/><b n='3'/></a>");
    const Element a = document.FirstChildElement();
    std::string all;
    for (const Element& child : Iterator(a)) {
        all += child.GetAttribute("n");
    }
    EXPECT_EQ("123", all);
    std::string named;
    for (const Element& child : Iterator(a, "b")) {
        named += child.GetAttribute("n");
    }
    EXPECT_EQ("13", named);
    for (const Element& child : Iterator(a, "x")) {
        ADD_FAILURE() << child.Value();
    }
}

TEST(Ticpp, ParseReplacesTheContent) {
    Document document;
    document.Parse("<a/>");
    document.Parse("<?xml version=\"1.0\" encoding=\"utf-16\"?><b>\xD7\x90&#x5D0;&#128512;</b>");
    EXPECT_EQ("b", document.FirstChildElement().Value());
    EXPECT_EQ("\xD7\x90\xD7\x90\xF0\x9F\x98\x80", document.FirstChildElement().GetText());
}

TEST(Ticpp, ParseOfIllFormedTextRaisesAndLeavesNothing) {
    Document document;
    EXPECT_EQ("Error reading end tag. (line 2, column 1)", Words_([&] { document.Parse("<a>\n</b>"); }));
    EXPECT_FALSE(document.FirstChildElement({}, false));
    EXPECT_EQ("Error document empty. (line 0, column 0)", Words_([&] { document.Parse(""); }));
    document.Parse("<a/>");
    EXPECT_EQ("<a />", Printed_(document));
}

TEST(Ticpp, ExceptionIsAStandardOne) {
    try {
        throw ticpp::Exception("words");
    } catch (const std::exception& failure) {
        EXPECT_STREQ("words", failure.what());
    }
}
