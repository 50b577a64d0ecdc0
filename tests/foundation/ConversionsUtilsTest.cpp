#include "foundation/ConversionsUtils.h"

#include <random>

#include <gtest/gtest.h>

#include <sddl.h>

#include "foundation/Exception.h"
#include "foundation/Log4CxxHelper.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ReplacedImport.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using vorlek::AllocationFailureException;
using vorlek::ArgumentException;
using vorlek::ArgumentNullException;
using vorlek::ConversionsUtils;
using vorlek::Exception;

namespace {

std::vector<BYTE> RandomBytes_(std::size_t size) {
    std::mt19937 random(static_cast<unsigned>(size));
    std::vector<BYTE> bytes(size);
    for (BYTE& byte : bytes) {
        byte = static_cast<BYTE>(random());
    }
    return bytes;
}

/// Base64 bit by bit, with a line end behind every 76 characters of whole groups.
std::wstring Reference_(const std::vector<BYTE>& bytes) {
    const std::wstring alphabet = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::wstring text;
    std::size_t column = 0;
    for (std::size_t bit = 0; bit < bytes.size() * 8; bit += 6) {
        std::size_t value = 0;
        for (std::size_t i = bit; i < bit + 6; ++i) {
            value = value * 2 + (i / 8 < bytes.size() ? bytes[i / 8] >> (7 - i % 8) & 1u : 0u);
        }
        text += alphabet[value];
        if (++column == 76 && (bit + 6) % 24 == 0 && bit + 6 <= bytes.size() * 8) {
            text += L"\r\n";
            column = 0;
        }
    }
    return text.append((3 - bytes.size() % 3) % 3, L'=');
}

std::wstring Encode_(const std::vector<BYTE>& bytes) {
    return ConversionsUtils::Base64EncodeData(bytes.data(), bytes.size());
}

std::vector<BYTE> Decode_(const std::wstring& text) {
    std::vector<BYTE> bytes;
    ConversionsUtils::Base64DecodeData(text.c_str(), text.size(), bytes);
    return bytes;
}

/// How many characters the text of so many bytes may take, its line ends included.
std::size_t Room_(std::size_t size) {
    std::size_t characters = size * 4 / 3 + size % 3;
    const std::size_t lineEnds = (characters / 76 + 1) * 2;
    if (characters % 76 != 0 && characters % 4 != 0) {
        characters += 4 - characters % 4;
    }
    return characters + lineEnds;
}

/// Characters from outside the alphabet, strewn between those of the text.
std::wstring Strewn_(const std::wstring& text, std::mt19937& random) {
    const std::wstring foreign(
        {L' ', L'\r', L'\n', L'-', L'_', L'.', L'=', L'\x0080', L'\x0141', L'\xFF21', L'\xFFFF', L'\0'});
    std::wstring strewn;
    for (const wchar_t character : text) {
        while (random() % 3 == 0) {
            strewn += foreign[random() % foreign.size()];
        }
        strewn += character;
    }
    return strewn;
}

std::vector<BYTE> Bytes_(const std::string& text) {
    return {text.begin(), text.end()};
}

constexpr BYTE kByte[] = {'x'};

/// Runs the operation of this name in a started log session; returns the lines, level in front.
std::wstring LegacyLines_(const std::wstring& operation) {
    vorlek::StartLogSession(L"no such configuration", nullptr, false);
    const test_support::LogCapture log;
    BYTE buffer[4] = {};
    std::size_t size = operation == L"decode no room" ? 0 : 4;
    try {
        if (operation == L"encode null") {
            ConversionsUtils::Base64EncodeData(nullptr, 1);
        } else if (operation == L"encode nothing") {
            ConversionsUtils::Base64EncodeData(kByte, 0);
        } else if (operation == L"decode null") {
            ConversionsUtils::Base64DecodeData(nullptr, 4, buffer, &size);
        } else if (operation == L"decode nothing") {
            ConversionsUtils::Base64DecodeData(L"", 0, buffer, &size);
        } else if (operation == L"decode no room") {
            ConversionsUtils::Base64DecodeData(L"Zg==", 4, buffer, &size);
        } else if (operation == L"swap null") {
            ConversionsUtils::SwapInPlace(nullptr, 1);
        } else if (operation == L"swap nothing") {
            ConversionsUtils::SwapInPlace(buffer, 0);
        } else {
            ConversionsUtils::UserStringToSID(operation);
        }
    } catch (const Exception&) {
        // Only the log is looked at here.
    }
    std::wstring lines;
    for (const test_support::LogLine& line : log.Lines()) {
        const std::string function = line.site.substr(line.site.rfind(' ') + 1);
        const bool names =
            line.text.find(L"::" + std::wstring(function.begin(), function.end()) + L")") != line.text.npos;
        lines += line.level + L": " + line.text + (names ? L"\n" : L" (said by another)\n");
    }
    return lines;
}

const test_support::ChildRoleName legacyLinesRole_(L"LegacyLines", LegacyLines_);

/// In a process of its own: a session, once started, stays.
std::wstring LogOf_(const std::wstring& operation) {
    return test_support::ChildProcess(L"LegacyLines", operation).Result();
}

} // namespace

TEST(ConversionsUtils, EncodesTheStandardsExamples) {
    EXPECT_EQ(L"Zg==", Encode_(Bytes_("f")));
    EXPECT_EQ(L"Zm8=", Encode_(Bytes_("fo")));
    EXPECT_EQ(L"Zm9v", Encode_(Bytes_("foo")));
    EXPECT_EQ(L"Zm9vYg==", Encode_(Bytes_("foob")));
    EXPECT_EQ(L"Zm9vYmE=", Encode_(Bytes_("fooba")));
    EXPECT_EQ(L"Zm9vYmFy", Encode_(Bytes_("foobar")));
}

TEST(ConversionsUtils, NothingEncodesToNothing) {
    EXPECT_EQ(L"", ConversionsUtils::Base64EncodeData(kByte, 0));
}

TEST(ConversionsUtils, OneByteIsFourCharactersAndNoLineEnd) {
    EXPECT_EQ(L"eA==", ConversionsUtils::Base64EncodeData(kByte, 1));
}

TEST(ConversionsUtils, FullLineOfWholeGroupsHasALineEndBehindIt) {
    const std::vector<BYTE> zeros(58);
    const std::wstring line = std::wstring(76, L'A') + L"\r\n";
    EXPECT_EQ(line, ConversionsUtils::Base64EncodeData(zeros.data(), 57));
    EXPECT_EQ(line + L"AA==", ConversionsUtils::Base64EncodeData(zeros.data(), 58));
}

TEST(ConversionsUtils, FullLineWithPaddingHasNoLineEnd) {
    const std::vector<BYTE> zeros(56);
    EXPECT_EQ(std::wstring(75, L'A') + L"=", Encode_(zeros));
}

TEST(ConversionsUtils, EncodesAndDecodesEveryLengthAsTheReferenceDoes) {
    for (std::size_t size = 1; size <= 5000; ++size) {
        const std::vector<BYTE> bytes = RandomBytes_(size);
        const std::wstring text = Encode_(bytes);
        ASSERT_EQ(Reference_(bytes), text) << size;
        ASSERT_LE(text.size(), Room_(size)) << size;
        ASSERT_EQ(bytes, Decode_(text)) << size;
    }
}

TEST(ConversionsUtils, EncodesAndDecodesLargeData) {
    for (const std::size_t size : {1'000'000, 1'000'001, 999'989}) {
        const std::vector<BYTE> bytes = RandomBytes_(size);
        const std::wstring text = Encode_(bytes);
        ASSERT_TRUE(Reference_(bytes) == text) << size;
        ASSERT_TRUE(bytes == Decode_(text)) << size;
    }
}

TEST(ConversionsUtils, EncodesToASystemString) {
    _bstr_t text;
    ConversionsUtils::Base64EncodeData(kByte, 1, text);
    EXPECT_STREQ(L"eA==", static_cast<const wchar_t*>(text));
    ConversionsUtils::Base64EncodeData(kByte, 0, text);
    EXPECT_EQ(0u, text.length());
    ExpectFailure<ArgumentNullException>([&] { ConversionsUtils::Base64EncodeData(nullptr, 1, text); },
                                         L"vorlek::ConversionsUtils::Base64EncodeData",
                                         L"NULL pointer to function DataBase64");
}

TEST(ConversionsUtils, DecodingSkipsWhatIsOutsideTheAlphabet) {
    EXPECT_EQ(Bytes_("foobar"), Decode_(L" Zm9\r\nv-Y\x0141\xFFFFmF.y=="));
    EXPECT_EQ(Bytes_("f"), Decode_(L"Zg"));
    EXPECT_EQ(Bytes_("fo"), Decode_(L"Zm8"));
    EXPECT_EQ(Bytes_(""), Decode_(L"Z"));
    EXPECT_EQ(Bytes_(""), Decode_(L"===="));
}

TEST(ConversionsUtils, DecodingSkipsForeignCharactersWhereverTheyStand) {
    std::mt19937 random(7);
    for (std::size_t size = 1; size <= 1000; ++size) {
        const std::vector<BYTE> bytes = RandomBytes_(size);
        ASSERT_EQ(bytes, Decode_(Strewn_(Encode_(bytes), random))) << size;
    }
}

TEST(ConversionsUtils, DecodesIntoABufferAndSaysHowMuch) {
    BYTE buffer[8] = {};
    std::size_t size = sizeof buffer;
    ConversionsUtils::Base64DecodeData(L"Zm9vYg==", 8, buffer, &size);
    EXPECT_EQ(4u, size);
    EXPECT_STREQ("foob", reinterpret_cast<const char*>(buffer));
}

TEST(ConversionsUtils, DecodesIntoABufferThatJustSuffices) {
    BYTE buffer[4] = {};
    std::size_t size = 4;
    ConversionsUtils::Base64DecodeData(L"Zm9vYg==", 8, buffer, &size);
    EXPECT_EQ(4u, size);
}

TEST(ConversionsUtils, BufferTooSmallRaises) {
    BYTE buffer[3] = {};
    std::size_t size = 3;
    ExpectFailure<ArgumentException>([&] { ConversionsUtils::Base64DecodeData(L"Zm9vYg==", 8, buffer, &size); },
                                     L"vorlek::ConversionsUtils::Base64DecodeData",
                                     L"invalid parameter was passed to Decoding method");
}

TEST(ConversionsUtils, NullPointersRaise) {
    ExpectFailure<ArgumentNullException>([] { ConversionsUtils::Base64EncodeData(nullptr, 1); },
                                         L"vorlek::ConversionsUtils::Base64EncodeData",
                                         L"NULL pointer to function DataBase64");
    BYTE buffer[4] = {};
    std::size_t size = 4;
    ExpectFailure<ArgumentNullException>([&] { ConversionsUtils::Base64DecodeData(nullptr, 4, buffer, &size); },
                                         L"vorlek::ConversionsUtils::Base64DecodeData",
                                         L"NULL input pointer to function Base64DecodeData");
    std::vector<BYTE> bytes = {1};
    ExpectFailure<ArgumentNullException>([&] { ConversionsUtils::Base64DecodeData(nullptr, 4, bytes); },
                                         L"vorlek::ConversionsUtils::Base64DecodeData",
                                         L"NULL input pointer to function Base64DecodeData");
    ExpectFailure<ArgumentNullException>([&] { ConversionsUtils::Base64DecodeData(L"Zg==", 4, nullptr, &size); },
                                         L"vorlek::ConversionsUtils::Base64DecodeData",
                                         L"output decoded buffer (pDecodedBuffer) hasn't been allocated.");
    ExpectFailure<ArgumentNullException>([&] { ConversionsUtils::Base64DecodeData(L"Zg==", 4, buffer, nullptr); },
                                         L"vorlek::ConversionsUtils::Base64DecodeData", L"null output len pointer");
    ExpectFailure<ArgumentNullException>([] { ConversionsUtils::SwapInPlace(nullptr, 1); },
                                         L"vorlek::ConversionsUtils::SwapInPlace",
                                         L"NULL pointer to function SwapInPlace");
    ExpectFailure<ArgumentNullException>([] { ConversionsUtils::HexStringToData("00", nullptr, 1); },
                                         L"vorlek::ConversionsUtils::HexStringToData",
                                         L"NULL pointer to function HexStringToData");
}

TEST(ConversionsUtils, NoLengthOnEitherSideLeavesTheBufferAsItIs) {
    BYTE buffer[] = {7, 7, 7, 7};
    std::size_t size = 4;
    ConversionsUtils::Base64DecodeData(L"Zg==", 0, buffer, &size);
    EXPECT_EQ(4u, size);
    size = 0;
    ConversionsUtils::Base64DecodeData(L"Zg==", 4, buffer, &size);
    EXPECT_EQ(0u, size);
    EXPECT_EQ(7, buffer[0]);
}

TEST(ConversionsUtils, NoTextDecodesToAnEmptyVector) {
    std::vector<BYTE> bytes = {1, 2};
    ConversionsUtils::Base64DecodeData(L"", 0, bytes);
    EXPECT_TRUE(bytes.empty());
}

TEST(ConversionsUtils, MoreThanTheMemoryHoldsRaises) {
    std::vector<BYTE> bytes = {1};
    ExpectFailure<AllocationFailureException>(
        [&] { ConversionsUtils::Base64DecodeData(L"Zg==", 0x7FFF'FFFF'FFFF'FFFF, bytes); },
        L"vorlek::ConversionsUtils::Base64DecodeData",
        L"no sufficient resources to allocate memory. requested 9223372036854775807 bytes");
    EXPECT_EQ(std::vector<BYTE>{1}, bytes);
}

TEST(ConversionsUtils, SwapsBytesInPlace) {
    BYTE odd[] = {1, 2, 3};
    ConversionsUtils::SwapInPlace(odd, 3);
    EXPECT_EQ((std::vector<BYTE>{3, 2, 1}), std::vector<BYTE>(odd, odd + 3));
    BYTE even[] = {1, 2, 3, 4};
    ConversionsUtils::SwapInPlace(even, 4);
    EXPECT_EQ((std::vector<BYTE>{4, 3, 2, 1}), std::vector<BYTE>(even, even + 4));
    ConversionsUtils::SwapInPlace(even, 0);
    EXPECT_EQ(4, even[0]);
}

TEST(ConversionsUtils, ReadsHexadecimalDigits) {
    BYTE data[3] = {};
    EXPECT_TRUE(ConversionsUtils::HexStringToData("0A0aFf", data, 3));
    EXPECT_EQ((std::vector<BYTE>{10, 10, 255}), std::vector<BYTE>(data, data + 3));
}

TEST(ConversionsUtils, LeadingDigitOfAPairCounts) {
    BYTE data[2] = {9, 9};
    EXPECT_TRUE(ConversionsUtils::HexStringToData("0G01", data, 2));
    EXPECT_EQ(0, data[0]);
    EXPECT_EQ(1, data[1]);
}

TEST(ConversionsUtils, PairThatIsNoNumberEndsTheWork) {
    BYTE data[3] = {9, 9, 9};
    EXPECT_FALSE(ConversionsUtils::HexStringToData("01G002", data, 3));
    EXPECT_EQ((std::vector<BYTE>{1, 9, 9}), std::vector<BYTE>(data, data + 3));
}

TEST(ConversionsUtils, RefusesNoDigitsAnOddNumberAndASmallBuffer) {
    BYTE data[2] = {9, 9};
    EXPECT_FALSE(ConversionsUtils::HexStringToData("", data, 2));
    EXPECT_FALSE(ConversionsUtils::HexStringToData("012", data, 2));
    EXPECT_FALSE(ConversionsUtils::HexStringToData("010203", data, 2));
    EXPECT_EQ(9, data[0]);
    EXPECT_FALSE(ConversionsUtils::HexStringToData("012", nullptr, 2));
}

TEST(ConversionsUtils, WritesIdentifiersOfAccounts) {
    SID_IDENTIFIER_AUTHORITY authority = {{0, 0, 0, 0, 0, 5}};
    PSID sid = nullptr;
    ASSERT_TRUE(AllocateAndInitializeSid(&authority, 2, 32, 544, 0, 0, 0, 0, 0, 0, &sid));
    EXPECT_EQ(L"S-1-5-32-544", ConversionsUtils::SidToString(sid));
    FreeSid(sid);
}

TEST(ConversionsUtils, InvalidIdentifierRaises) {
    SID noRevision = {};
    ExpectFailure<Exception>([&] { ConversionsUtils::SidToString(&noRevision); },
                             L"vorlek::ConversionsUtils::SidToString", L"ConvertSidToStringSid failed with error 1337");
}

TEST(ConversionsUtils, FindsTheIdentifierOfAnAccount) {
    EXPECT_EQ(L"S-1-1-0", ConversionsUtils::UserStringToSID(L"Everyone"));
}

TEST(ConversionsUtils, UnknownAccountsRaise) {
    ExpectFailure<ArgumentException>([] { ConversionsUtils::UserStringToSID({}); },
                                     L"vorlek::ConversionsUtils::UserStringToSID", L"User name is empty");
    ExpectFailure<ArgumentException>([] { ConversionsUtils::UserStringToSID(L"nobody of this name"); },
                                     L"vorlek::ConversionsUtils::UserStringToSID",
                                     L"LookupAccountName Failed. Last error is 1332");
}

TEST(ConversionsUtils, NoMemoryForAnIdentifierRaises) {
    const FailingImport<"LocalAlloc", decltype(LocalAlloc)> allocate(ERROR_NOT_ENOUGH_MEMORY);
    ExpectFailure<ArgumentException>([] { ConversionsUtils::UserStringToSID(L"Everyone"); },
                                     L"vorlek::ConversionsUtils::UserStringToSID",
                                     L"Failed allocating memory for SID. Last error is 8");
}

TEST(ConversionsUtils, IdentifierOfAnAccountThatCannotBeWrittenRaises) {
    const FailingImport<"ConvertSidToStringSidW", decltype(ConvertSidToStringSidW)> convert(ERROR_INVALID_SID);
    ExpectFailure<ArgumentException>([] { ConversionsUtils::UserStringToSID(L"Everyone"); },
                                     L"vorlek::ConversionsUtils::UserStringToSID",
                                     L"ConvertSidToStringSid Failed. Last error is 1337");
}

TEST(ConversionsUtils, WritesItsComplaintsToTheLegacyLog) {
    EXPECT_EQ(L"ERROR: (ConversionsUtils::Base64EncodeData)ERROR: NULL pointer to function DataBase64\n",
              LogOf_(L"encode null"));
    EXPECT_EQ(L"ERROR: (ConversionsUtils::Base64EncodeData)ERROR: 0 length to function. exit !!!\n",
              LogOf_(L"encode nothing"));
    EXPECT_EQ(L"ERROR: (ConversionsUtils::Base64DecodeData)ERROR: NULL input pointer to function Base64DecodeData\n",
              LogOf_(L"decode null"));
    EXPECT_EQ(L"ERROR: (ConversionsUtils::Base64DecodeData)ERROR: 0 input length to Base64DecodeData function. "
              L"exit !!!\n",
              LogOf_(L"decode nothing"));
    EXPECT_EQ(L"ERROR: (ConversionsUtils::Base64DecodeData)ERROR: 0 output length to Base64DecodeData function. "
              L"exit !!!\n",
              LogOf_(L"decode no room"));
    EXPECT_EQ(L"ERROR: (ConversionsUtils::SwapInPlace)ERROR: NULL pointer to function SwapInPlace\n",
              LogOf_(L"swap null"));
    EXPECT_EQ(L"ERROR: (ConversionsUtils::SwapInPlace)ERROR: 0 length to function. exit !!!\n",
              LogOf_(L"swap nothing"));
}

TEST(ConversionsUtils, WritesTheSearchForAnAccountToTheLegacyLog) {
    EXPECT_EQ(L"INFO: (ConversionsUtils::UserStringToSID) LookupAccountName for name Everyone, size is 12, \n"
              L"INFO: (ConversionsUtils::UserStringToSID) StringSid is S-1-1-0\n",
              LogOf_(L"Everyone"));
}

TEST(ConversionsUtils, WritesAnAccountNotFoundToTheLegacyLog) {
    const std::wstring log = LogOf_(L"nobody of this name");
    EXPECT_TRUE(log.starts_with(L"INFO: (ConversionsUtils::UserStringToSID) LookupAccountName for name nobody of this "
                                L"name, size is 0, \nERROR: (ConversionsUtils::UserStringToSID) Exception: "
                                L"ConversionsUtils.cpp("))
        << testing::PrintToString(log);
    EXPECT_TRUE(log.ends_with(L"): vorlek::ConversionsUtils::UserStringToSID: ArgumentException: LookupAccountName "
                              L"Failed. Last error is 1332\n"))
        << testing::PrintToString(log);
}
