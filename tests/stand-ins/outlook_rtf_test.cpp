// Rich text and its plain text.
#include <gtest/gtest.h>

#include "stand-ins/outlook/Rtf.h"

namespace stand_ins {
namespace {

TEST(Rtf, PlainTextIsWhatAReaderSees) {
    EXPECT_EQ(PlainTextOfRtf("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}{\\*\\generator x;}\\pard one {\\b two}\\par "
                             "three\\tab four\\line}"),
              L"one two\r\nthree\tfour\r\n");
}

TEST(Rtf, EscapedCharactersStandForThemselves) {
    EXPECT_EQ(PlainTextOfRtf("{\\rtf1 a\\\\b\\{c\\}\\'e9}"), L"a\\b{c}\x00E9");
}

TEST(Rtf, UnicodeCharactersTakeThePlaceOfTheirStandIns) {
    EXPECT_EQ(PlainTextOfRtf("{\\rtf1\\uc1\\u26085?x{\\uc2\\u-10179??}y\\u233 ?z}"), L"\x65E5x\xD83Dy\x00E9z");
}

TEST(Rtf, DamagedRichTextEndsWhereItEnds) {
    EXPECT_EQ(PlainTextOfRtf("}}a{\\b b\\"), L"ab");
    EXPECT_EQ(PlainTextOfRtf("a\\'4"), L"a4");
}

TEST(Rtf, TextSurvivesTheWayThere) {
    const std::wstring text = L"one\r\n\ttwo {three} \\ \x00E9\x65E5\xD83D\xDE00";
    EXPECT_EQ(PlainTextOfRtf(RtfOf(text)), text);
}

} // namespace
} // namespace stand_ins
