#include "stand-ins/agent/Label.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "stand-ins/agent/Message.h"

using namespace stand_ins::agent;

namespace {

std::wstring Html_(std::wstring_view body, std::wstring_view before, std::wstring_view after) {
    return FromWire(LabelBody(ToWire(body), BodyForm::Html, before, after));
}

} // namespace

TEST(AgentLabel, ThePlainBodyKeepsItsMarkAndItsText) {
    const std::string labelled =
        LabelBody("\xFF\xFE" + ToWire(L"Hello\r\n"), BodyForm::Plain, L"Secret\nFor us", L"The end");
    EXPECT_EQ(labelled, "\xFF\xFE" + ToWire(L"Secret\r\nFor us\r\n\r\nHello\r\n\r\n\r\nThe end\r\n"));
}

TEST(AgentLabel, AnEmptyPlainBodyIsLabelledToo) {
    EXPECT_EQ(LabelBody("\xFF\xFE", BodyForm::Plain, L"Secret", L""), "\xFF\xFE" + ToWire(L"Secret\r\n\r\n"));
}

TEST(AgentLabel, TheHtmlLabelLandsInsideTheBody) {
    EXPECT_EQ(Html_(L"<html><head><style>body {}</style></head><BODY class=\"a>b\"><p>Hi</p></BODY></html>", L"A < B",
                    L"C\nD"),
              L"<html><head><style>body {}</style></head><BODY class=\"a>b\"><p>A &lt; B</p><p>Hi</p>"
              L"<p>C<br>D</p></BODY></html>");
}

TEST(AgentLabel, ABodyInACommentIsNoBody) {
    EXPECT_EQ(Html_(L"<!-- <body> --><html><tbody></tbody><body>x</body></html>", L"L", L""),
              L"<!-- <body> --><html><tbody></tbody><body><p>L</p>x</body></html>");
}

TEST(AgentLabel, HtmlWithoutABodyIsLabelledAtItsEnds) {
    EXPECT_EQ(Html_(L"<html>x</html>", L"L", L"M"), L"<html><p>L</p>x<p>M</p></html>");
    EXPECT_EQ(Html_(L"x", L"L", L"M"), L"<p>L</p>x<p>M</p>");
    EXPECT_EQ(Html_(L"", L"L", L""), L"<p>L</p>");
}

TEST(AgentLabel, HtmlIsWrittenWithoutAMark) {
    EXPECT_EQ(LabelBody(ToWire(L"x"), BodyForm::Html, L"L", L""), ToWire(L"<p>L</p>x"));
}

TEST(AgentLabel, TheRichLabelStandsBeforeTheFirstParagraph) {
    EXPECT_EQ(
        LabelBody("{\\rtf1\\ansi{\\fonttbl{\\f0\\pard Arial;}}\\viewkind4\\pard\\f0 Hi \\{ there\\par}", BodyForm::Rich,
                  L"\x041F{1}", L"end"),
        "{\\rtf1\\ansi{\\fonttbl{\\f0\\pard Arial;}}\\viewkind4\\pard \\u1055?\\{1\\}\\par\r\n\\pard\\f0 Hi \\{ there"
        "\\par\\par\\pard end\\par}");
}

TEST(AgentLabel, RichTextWithoutParagraphsIsLabelledBehindItsHeader) {
    EXPECT_EQ(LabelBody("{\\rtf1{\\fonttbl{\\f0 Arial;}}Hi}", BodyForm::Rich, L"L", L""),
              "{\\rtf1{\\fonttbl{\\f0 Arial;}}\\pard L\\par\r\nHi}");
}

TEST(AgentLabel, BytesOfAnotherFormAreRefused) {
    EXPECT_THROW(LabelBody("abc", BodyForm::Plain, L"L", L""), std::runtime_error);
    EXPECT_THROW(LabelBody("{\\rtf1 open", BodyForm::Rich, L"L", L""), std::runtime_error);
    EXPECT_THROW(LabelBody("plain", BodyForm::Rich, L"L", L""), std::runtime_error);
    EXPECT_THROW(BodyFormOf(L"C:\\a.docx"), std::runtime_error);
    EXPECT_EQ(BodyFormOf(L"C:\\{1}.TXT"), BodyForm::Plain);
}
