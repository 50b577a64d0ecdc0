#include "foundation/StringUtils.h"

#include <random>

#include <gtest/gtest.h>

#include "tests/support/ExpectFailure.h"

using test_support::ExpectFailure;
using vorlek::Exception;
using vorlek::StringUtils;

namespace {

/// Letter case in a language where zero is the small form of O.
template <class T>
class Zeros_ : public std::ctype<T> {
protected:
    T do_tolower(T character) const override { return character == T('O') ? T('0') : character; }
};

} // namespace

TEST(StringUtils, ConvertsByCodePage) {
    std::string narrow;
    StringUtils::WString2String(L"\x00E9", narrow, 1252);
    EXPECT_EQ("\xE9", narrow);
    StringUtils::WString2String(L"\x00E9", narrow, CP_UTF8);
    EXPECT_EQ("\xC3\xA9", narrow);
    std::wstring wide;
    StringUtils::String2WString("\xC3\xA9", wide, CP_UTF8);
    EXPECT_EQ(L"\x00E9", wide);
}

TEST(StringUtils, String2WStringReadsTheSystemsOwnCodePageByDefault) {
    std::wstring wide;
    StringUtils::String2WString("plain", wide);
    EXPECT_EQ(L"plain", wide);
}

TEST(StringUtils, EmptyInputLeavesTheOutputAsItIs) {
    std::string narrow = "before";
    StringUtils::WString2String({}, narrow, CP_UTF8);
    EXPECT_EQ("before", narrow);
    std::wstring wide = L"before";
    StringUtils::String2WString({}, wide);
    EXPECT_EQ(L"before", wide);
}

TEST(StringUtils, UnknownCodePageRaises) {
    ExpectFailure<Exception>(
        [] {
            std::string narrow;
            StringUtils::WString2String(L"x", narrow, 54321);
        },
        L"vorlek::StringUtils::WString2String", L"Invalid size!");
    ExpectFailure<Exception>(
        [] {
            std::wstring wide;
            StringUtils::String2WString("x", wide, 54321);
        },
        L"vorlek::StringUtils::String2WString", L"Invalid size!");
}

TEST(StringUtils, TextLargerThanTheSystemConvertsRaises) {
    // NOLINTNEXTLINE(bugprone-string-constructor): the size alone is looked at
    const std::string_view twoGigabytes("", 0x8000'0000);
    ExpectFailure<Exception>([&] { StringUtils::FromUtf8(twoGigabytes); }, L"vorlek::StringUtils::FromUtf8",
                             L"Invalid size!");
}

TEST(StringUtils, Utf8OfNothingIsNothing) {
    EXPECT_EQ("", StringUtils::ToUtf8(L""));
    EXPECT_EQ(L"", StringUtils::FromUtf8(""));
}

TEST(StringUtils, AnyTextSurvivesUtf8) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> codePoint(1, 0x10FFFF);
    std::wstring text;
    while (text.size() < 200'000) {
        const int code = codePoint(random);
        if (code >= 0x10000) {
            text += static_cast<wchar_t>(0xD7C0 + (code >> 10));
            text += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
        } else if (code < 0xD800 || code > 0xDFFF) {
            text += static_cast<wchar_t>(code);
        }
    }
    text += L'\0';
    EXPECT_TRUE(text == StringUtils::FromUtf8(StringUtils::ToUtf8(text)));
    EXPECT_EQ("\xF0\x9F\x98\x80", StringUtils::ToUtf8(L"\xD83D\xDE00"));
    for (const std::size_t before : {4094, 4095, 4096, 8191}) { // wherever a long text is cut
        EXPECT_EQ(std::string(before, 'x') + "\xF0\x9F\x98\x80y",
                  StringUtils::ToUtf8(std::wstring(before, L'x') + L"\xD83D\xDE00y"));
    }
}

TEST(StringUtils, IllFormedTextIsReplaced) {
    EXPECT_EQ("a\xEF\xBF\xBD"
              "b",
              StringUtils::ToUtf8(L"a\xD83D"
                                  L"b"));
    EXPECT_EQ(L"a\xFFFD"
              L"b",
              StringUtils::FromUtf8("a\xFF"
                                    "b"));
}

TEST(StringUtils, ChangesCaseInPlace) {
    std::wstring wide = L"OutLook.EXE 1";
    StringUtils::ToLower(wide);
    EXPECT_EQ(L"outlook.exe 1", wide);
    StringUtils::ToUpper(wide);
    EXPECT_EQ(L"OUTLOOK.EXE 1", wide);
    std::string narrow = "OutLook.EXE \xE9";
    StringUtils::ToLower(narrow);
    EXPECT_EQ("outlook.exe \xE9", narrow);
    StringUtils::ToUpper(narrow);
    EXPECT_EQ("OUTLOOK.EXE \xE9", narrow);
}

TEST(StringUtils, TestsForAPrefix) {
    EXPECT_TRUE(StringUtils::StartsWith(L"IPM.Note", L"IPM."));
    EXPECT_TRUE(StringUtils::StartsWith(L"IPM.", L"IPM."));
    EXPECT_TRUE(StringUtils::StartsWith(L"IPM.", L""));
    EXPECT_FALSE(StringUtils::StartsWith(L"IPM", L"IPM."));
    EXPECT_FALSE(StringUtils::StartsWith(L"ipm.Note", L"IPM."));
    EXPECT_TRUE(StringUtils::StartsWith(L"ipm.Note", L"IPM.", true));
    EXPECT_FALSE(StringUtils::StartsWith(L"ipn.Note", L"IPM.", true));
    EXPECT_TRUE(StringUtils::StartsWith("ipm.Note", "IPM.", true));
    EXPECT_FALSE(StringUtils::StartsWith("ipm.Note", "IPM."));
}

TEST(StringUtils, TestsForASuffix) {
    EXPECT_TRUE(StringUtils::EndsWith(L"mail.msg", L".msg"));
    EXPECT_TRUE(StringUtils::EndsWith(L".msg", L".msg"));
    EXPECT_TRUE(StringUtils::EndsWith(L".msg", L""));
    EXPECT_FALSE(StringUtils::EndsWith(L"msg", L".msg"));
    EXPECT_FALSE(StringUtils::EndsWith(L"mail.MSG", L".msg"));
    EXPECT_TRUE(StringUtils::EndsWith(L"mail.MSG", L".msg", true));
    EXPECT_TRUE(StringUtils::EndsWith("mail.MSG", ".msg", true));
    EXPECT_FALSE(StringUtils::EndsWith("mail.MSG", ".msg"));
}

TEST(StringUtils, ComparerFoldsCase) {
    const StringUtils::CharCompare<wchar_t> wide{std::locale()};
    EXPECT_TRUE(wide(L'a', L'A'));
    EXPECT_FALSE(wide(L'a', L'B'));
    const StringUtils::CharCompare<char> narrow{std::locale()};
    const auto copy = narrow; // NOLINT(performance-unnecessary-copy-initialization): the copy is what is tested
    EXPECT_TRUE(copy('z', 'Z'));
    EXPECT_FALSE(copy('z', 'y'));
}

TEST(StringUtils, CaseIsThatOfTheLocaleGiven) {
    // A locale owns its facets.
    const std::locale locale(std::locale(std::locale(), new Zeros_<wchar_t>), new Zeros_<char>);
    EXPECT_TRUE(StringUtils::StartsWith(L"Outlook", L"0u", true, locale));
    EXPECT_FALSE(StringUtils::StartsWith(L"Outlook", L"0u", true));
    EXPECT_FALSE(StringUtils::StartsWith(L"Outlook", L"0u", false, locale));
    EXPECT_TRUE(StringUtils::EndsWith(L"FOO", L"00", true, locale));
    EXPECT_FALSE(StringUtils::EndsWith(L"FOO", L"00", true));
    EXPECT_TRUE(StringUtils::StartsWith("Outlook", "0u", true, locale));
    EXPECT_FALSE(StringUtils::StartsWith("Outlook", "0u", true));
    EXPECT_TRUE(StringUtils::EndsWith("FOO", "00", true, locale));
    EXPECT_FALSE(StringUtils::EndsWith("FOO", "00", true));
}

TEST(StringUtils, ReplacesEveryOccurrence) {
    EXPECT_EQ(L"vorlek.X.Y", StringUtils::Replace(L"vorlek::X::Y", L"::", L"."));
    EXPECT_EQ(L"bba", StringUtils::Replace(L"aaaaa", L"aa", L"b"));
    EXPECT_EQ(L"aaaa", StringUtils::Replace(L"aa", L"a", L"aa"));
    EXPECT_EQ(L"", StringUtils::Replace(L"xx", L"x", L""));
    EXPECT_EQ(L"same", StringUtils::Replace(L"same", L"", L"x"));
    EXPECT_EQ("%Q and %Q", StringUtils::Replace("%s and %s", "%s", "%Q"));
}

TEST(StringUtils, TrimsASetOfCharacters) {
    EXPECT_EQ(L"a b \t", StringUtils::TrimLeft(L" \ta b \t", L" \t"));
    EXPECT_EQ(L" \ta b", StringUtils::TrimRight(L" \ta b \t", L" \t"));
    EXPECT_EQ(L"a b", StringUtils::Trim(L" \ta b \t", L" \t"));
    EXPECT_EQ(L"", StringUtils::Trim(L" \t ", L" \t"));
    EXPECT_EQ(L"", StringUtils::TrimLeft(L"  ", L" "));
    EXPECT_EQ(L"", StringUtils::TrimRight(L"  ", L" "));
    EXPECT_EQ(L"", StringUtils::Trim(L"", L" "));
    EXPECT_EQ("a", StringUtils::Trim("--a-", "-"));
    EXPECT_EQ("a-", StringUtils::TrimLeft("--a-", "-"));
    EXPECT_EQ("--a", StringUtils::TrimRight("--a-", "-"));
}
