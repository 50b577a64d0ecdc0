#include "platform/ticpp/Limits.h"

#include <string>

#include <gmock/gmock.h>

#include "platform/Windows.h"
#include "platform/ticpp/ticpp.h"

namespace {

constexpr char kTooDeep[] = "Elements are nested more than 256 deep";
constexpr char kTooMany[] = "An element has more than 256 attributes";

std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int time = 0; time < times; ++time) {
        all += text;
    }
    return all;
}

std::string Nested(int depth) {
    return Repeated("<a>", depth) + Repeated("</a>", depth);
}

std::string WithAttributes(int count) {
    std::string element = "<a";
    for (int number = 0; number < count; ++number) {
        element += " b" + std::to_string(number) + "=''";
    }
    return element + "/>";
}

/// The words that parsing raises; empty for none.
std::string WordsOf(const std::string& xml) {
    ticpp::Document document;
    try {
        document.Parse(xml);
        return {};
    } catch (const ticpp::Exception& failure) {
        EXPECT_FALSE(document.FirstChildElement({}, false)) << "the document is empty";
        return failure.what();
    }
}

/// The same on a thread that has 1 MB of stack.
std::string WordsOnASmallStack(const std::string& xml) {
    std::pair<const std::string*, std::string> exchange = {&xml, "no answer"};
    const HANDLE thread = CreateThread(
        nullptr, 1 << 20,
        [](void* parameter) -> DWORD {
            auto& [text, words] = *static_cast<decltype(exchange)*>(parameter);
            words = WordsOf(*text);
            return 0;
        },
        &exchange, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    return exchange.second;
}

} // namespace

TEST(TicppLimits, AllowElementsThatAreNestedToTheLimit) {
    EXPECT_EQ(WordsOf(Nested(256)), "");
    EXPECT_EQ(WordsOf(Nested(257)), kTooDeep);
    EXPECT_EQ(WordsOf(Repeated(Nested(256), 2)), "");
    EXPECT_EQ(WordsOf("<a>" + Repeated(Nested(255), 3) + Repeated("<b/>", 1000) + "</a>"), "");
    EXPECT_EQ(WordsOf("<a>" + Nested(255) + Nested(256) + "</a>"), kTooDeep);
}

TEST(TicppLimits, KeepASmallStackFromOverflowing) {
    EXPECT_EQ(WordsOnASmallStack(Nested(256)), "");
    EXPECT_EQ(WordsOnASmallStack(Nested(100'000)), kTooDeep);
    EXPECT_EQ(WordsOnASmallStack(Repeated("<a>", 100'000)), kTooDeep);
    EXPECT_EQ(WordsOnASmallStack("<a>" + Repeated("<b c='d'>text", 100'000)), kTooDeep);
}

TEST(TicppLimits, AllowAttributesToTheLimit) {
    EXPECT_EQ(WordsOf(WithAttributes(256)), "");
    EXPECT_EQ(WordsOf("<x>" + Repeated(WithAttributes(200), 5) + "</x>"), "");
    EXPECT_EQ(WordsOf(WithAttributes(257)), kTooMany);
    EXPECT_EQ(WordsOf(WithAttributes(100'000)), kTooMany);
}

TEST(TicppLimits, DoNotCountWhatOnlyLooksLikeMarkup) {
    const std::string deep = Repeated("<a>", 1000);
    for (const std::string& harmless :
         {"<!--" + deep + "-->", "<![CDATA[" + deep + "]]>", "<b c=\"" + deep + "\" d='" + deep + "'/>",
          "<b>" + Repeated("x='y' ", 1000) + "</b>", "<b c=\"" + Repeated("x='y' ", 1000) + "\"/>"}) {
        EXPECT_EQ(WordsOf("<r>" + harmless + "</r>"), "") << harmless.substr(0, 20);
    }
    EXPECT_EQ(WordsOf("<r/>what follows the root is not looked at" + deep), "");
}

// Each of these would hide a closing tag, or the beginning of a comment, from one of two readings that differ.
TEST(TicppLimits, CannotBeDeceived) {
    const std::string closed = Repeated("</a>", 200);
    const struct {
        std::string before;
        std::string inside;
    } tricks[] = {{"", "<b c=\"" + closed + "\"/>"},
                  {"", "<b c='\"" + closed + "'/>"},
                  {"", "<!--" + closed + "-->"},
                  {"", "<![CDATA[" + closed + "]]>"},
                  {"", "&#x" + closed + "x41;"},
                  {"", "<!x \" >"},
                  {"", "<?x ' >"},
                  {"", "<1 \" >"},
                  {"", "<?xml x\" ?>"},
                  {"", "<?xml version='" + closed + "' ?>"},
                  {"", "<b c=<!--></b>"},
                  {"", "<\xEF\xBB\xBF b></b>"},
                  {closed, ""},
                  {"<?xml x\" version=\" ?><!-- \" ?>", ""},
                  {"<?xml version=\">\"<!-- >", ""}};
    for (const auto& [before, inside] : tricks) {
        const std::string level = "<a>" + inside;
        EXPECT_EQ(WordsOf(before + Repeated(level, 10) + Repeated("</a>", 10)), "")
            << "not even taken: " << before << level;
        EXPECT_EQ(WordsOf(before + Repeated(level, 400) + Repeated("</a>", 400)), kTooDeep) << before << level;
    }
}

TEST(TicppLimits, LeaveIllFormedTextToTheParser) {
    for (const char* text : {"<",
                             "<a",
                             "<a b",
                             "<a b=",
                             "<a b='",
                             "<a/",
                             "<a>",
                             "</",
                             "</a",
                             "<!--",
                             "<![CDATA[",
                             "<?xml",
                             "<?xml version='",
                             "&",
                             "<a>&#x",
                             "<a>&#x41",
                             "<a>&#",
                             "<a>]]>",
                             "<a b='1' b='2'/>",
                             "<a></b>"}) {
        EXPECT_NO_THROW(ticpp::CheckLimits(text)) << text;
    }
}
