#include "foundation/RegistryKey.h"

#include <cstring>

#include <gmock/gmock.h>

#include "foundation/Exception.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/RegistryPlace.h"

using test_support::ExpectFailure;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Names = std::vector<std::wstring>;
using Bytes = std::vector<BYTE>;

namespace {

class RegistryKeyData : public testing::Test {
protected:
    /// What is stored under a name, byte for byte, and its type.
    std::pair<Bytes, DWORD> Stored(const std::wstring& name) const {
        Bytes data;
        DWORD type = REG_NONE;
        place_->GetValue(name, data, type);
        return {data, type};
    }

    static Bytes BytesOf(const std::wstring& text) {
        Bytes bytes(text.size() * sizeof(wchar_t));
        std::memcpy(bytes.data(), text.data(), bytes.size());
        return bytes;
    }

    void ExpectWrongType(const std::wstring& name, const auto& read) {
        ExpectFailure<RegistryInvalidKeyTypeException>(read, L"RegistryKey::GetValue",
                                                       L"RegQueryValueEx failed on: " + name + L" (invalid type)");
    }

    test_support::RegistryPlace place_;
};

using RegistryKeys = RegistryKeyData;

} // namespace

TEST_F(RegistryKeyData, NumberIsStoredInFourBytes) {
    place_->SetValue(L"number", 0x12345678);
    EXPECT_EQ(Stored(L"number"), std::pair(Bytes{0x78, 0x56, 0x34, 0x12}, DWORD{REG_DWORD}));
    DWORD value = 0;
    place_->GetValue(L"number", value);
    EXPECT_EQ(value, 0x12345678U);
    EXPECT_EQ(place_->GetValueType(L"number"), DWORD{REG_DWORD});
}

TEST_F(RegistryKeyData, LongNumberIsRead) {
    place_->SetValue(L"number", Bytes{1, 2, 3, 4, 5, 6, 7, 8}, REG_QWORD);
    ULONGLONG value = 0;
    place_->GetValue(L"number", value);
    EXPECT_EQ(value, 0x0807060504030201ULL);
}

TEST_F(RegistryKeyData, NumbersOfTheOtherWidthAreRefused) {
    place_->SetValue(L"short", 1);
    place_->SetValue(L"long", Bytes(8), REG_QWORD);
    DWORD shortValue = 7;
    ULONGLONG longValue = 7;
    ExpectWrongType(L"short", [&] { place_->GetValue(L"short", longValue); });
    ExpectWrongType(L"long", [&] { place_->GetValue(L"long", shortValue); });
    EXPECT_EQ(shortValue, 7U);
    EXPECT_EQ(longValue, 7U);
}

TEST_F(RegistryKeyData, TextIsReadAsItWasWritten) {
    place_->SetValue(L"text", std::wstring(L"\x017C\x00F3\x0142w"));
    EXPECT_EQ(place_->GetValueType(L"text"), DWORD{REG_SZ});
    std::wstring value;
    place_->GetValue(L"text", value);
    EXPECT_EQ(value, L"\x017C\x00F3\x0142w");
}

TEST_F(RegistryKeyData, TextIsWrittenWithoutItsTerminator) {
    // A text that ends in a null of its own: the system adds a missing one only behind other characters.
    place_->SetValue(L"text", std::wstring(L"ab\0", 3));
    EXPECT_EQ(Stored(L"text"), std::pair(BytesOf({L"ab\0", 3}), DWORD{REG_SZ}));
}

TEST_F(RegistryKeyData, EmptyTextIsStoredWithSizeZero) {
    place_->SetValue(L"empty", std::wstring());
    EXPECT_EQ(Stored(L"empty"), std::pair(Bytes{}, DWORD{REG_SZ}));
    std::wstring value = L"before";
    place_->GetValue(L"empty", value);
    EXPECT_EQ(value, L"");
}

TEST_F(RegistryKeyData, ExpandableTextIsReadUnexpanded) {
    place_->SetValue(L"path", std::wstring(L"%windir%\\x"), true);
    EXPECT_EQ(place_->GetValueType(L"path"), DWORD{REG_EXPAND_SZ});
    std::wstring value;
    place_->GetValue(L"path", value);
    EXPECT_EQ(value, L"%windir%\\x");
}

TEST_F(RegistryKeyData, TextEndsAtItsFirstNull) {
    place_->SetValue(L"text", BytesOf({L"ab\0cd\0", 6}), REG_SZ);
    std::wstring value;
    place_->GetValue(L"text", value);
    EXPECT_EQ(value, L"ab");
}

TEST_F(RegistryKeyData, TextOfOddSizeStillEnds) {
    place_->SetValue(L"text", Bytes{'a', 0, 'b'}, REG_SZ);
    std::wstring value;
    place_->GetValue(L"text", value);
    EXPECT_EQ(value, L"ab");
}

TEST_F(RegistryKeyData, ListIsStoredWithAllItsTerminators) {
    place_->SetValue(L"list", Names{L"one", L"two"});
    EXPECT_EQ(Stored(L"list"), std::pair(BytesOf({L"one\0two\0\0", 9}), DWORD{REG_MULTI_SZ}));
    Names values = {L"before"};
    place_->GetValue(L"list", values);
    EXPECT_THAT(values, ElementsAre(L"one", L"two"));
}

TEST_F(RegistryKeyData, EmptyListIsStoredAsOneNull) {
    place_->SetValue(L"list", Names{});
    EXPECT_EQ(Stored(L"list"), std::pair(Bytes{0, 0}, DWORD{REG_MULTI_SZ}));
    Names values = {L"before"};
    place_->GetValue(L"list", values);
    EXPECT_THAT(values, IsEmpty());
}

TEST_F(RegistryKeyData, ListEndsAtItsFirstEmptyTextAndNeedsNoTerminator) {
    Names values;
    place_->SetValue(L"list", Names{L"one", L"", L"three"});
    place_->GetValue(L"list", values);
    EXPECT_THAT(values, ElementsAre(L"one"));
    place_->SetValue(L"list", Names{L"", L"two"});
    place_->GetValue(L"list", values);
    EXPECT_THAT(values, IsEmpty());
    place_->SetValue(L"list", BytesOf({L"one\0two", 7}), REG_MULTI_SZ);
    place_->GetValue(L"list", values);
    EXPECT_THAT(values, ElementsAre(L"one", L"two"));
}

TEST_F(RegistryKeyData, RawDataOfAnyTypeGoesThere) {
    place_->SetValue(L"raw", Bytes{1, 2, 3}, REG_BINARY);
    EXPECT_EQ(Stored(L"raw"), std::pair(Bytes{1, 2, 3}, DWORD{REG_BINARY}));
    place_->SetValue(L"raw", Bytes{9}, REG_NONE);
    EXPECT_EQ(Stored(L"raw"), std::pair(Bytes{9}, DWORD{REG_NONE}));
    place_->SetValue(L"raw", Bytes{}, REG_BINARY);
    EXPECT_EQ(Stored(L"raw"), std::pair(Bytes{}, DWORD{REG_BINARY}));
}

TEST_F(RegistryKeyData, EachTypedReadInsistsOnItsType) {
    place_->SetValue(L"text", std::wstring(L"12345678"));
    place_->SetValue(L"number", 1);
    DWORD number = 0;
    ULONGLONG longNumber = 0;
    std::wstring text;
    Names list;
    ExpectWrongType(L"text", [&] { place_->GetValue(L"text", number); });
    ExpectWrongType(L"text", [&] { place_->GetValue(L"text", longNumber); });
    ExpectWrongType(L"text", [&] { place_->GetValue(L"text", list); });
    ExpectWrongType(L"number", [&] { place_->GetValue(L"number", text); });
    ExpectWrongType(L"number", [&] { place_->GetValue(L"number", list); });
}

TEST_F(RegistryKeyData, ValuesComeAndGo) {
    EXPECT_FALSE(place_->ValueExists(L"value"));
    place_->SetValue(L"value", 1);
    EXPECT_TRUE(place_->ValueExists(L"value"));
    place_->DeleteValue(L"value");
    EXPECT_FALSE(place_->ValueExists(L"value"));
    EXPECT_NO_THROW(place_->DeleteValue(L"value"));
}

TEST_F(RegistryKeys, RootsAreTheSameEveryTime) {
    EXPECT_EQ(&RegistryKey::GetCurrentUser(), &RegistryKey::GetCurrentUser());
    EXPECT_EQ(&RegistryKey::GetLocalMachine(), &RegistryKey::GetLocalMachine());
    EXPECT_EQ(&RegistryKey::GetCurrentConfig(), &RegistryKey::GetCurrentConfig());
    EXPECT_NO_THROW(RegistryKey::GetLocalMachine().OpenSubKey(L"SOFTWARE"));
    EXPECT_NO_THROW(RegistryKey::GetCurrentConfig().OpenSubKey(L"Software"));
    EXPECT_NO_THROW(RegistryKey::GetCurrentUser().OpenSubKey(place_.Name()));
}

TEST_F(RegistryKeys, CreatingAnExistingKeyOpensIt) {
    place_->CreateSubKey(L"sub", true)->SetValue(L"value", 7);
    DWORD value = 0;
    place_->CreateSubKey(L"sub", true)->GetValue(L"value", value);
    EXPECT_EQ(value, 7U);
}

TEST_F(RegistryKeys, KeyStaysOpenAsLongAsAnybodyHoldsIt) {
    auto first = place_->CreateSubKey(L"sub", true);
    const auto second = first;
    first.reset();
    EXPECT_NO_THROW(second->SetValue(L"value", 1));
}

TEST_F(RegistryKeys, OpenedForReadingUnlessToldOtherwise) {
    place_->CreateSubKey(L"sub", true);
    const auto readable = place_->OpenSubKey(L"sub");
    ExpectFailure<RegistryKeyException>([&] { readable->SetValue(L"value", 1); }, L"RegistryKey::SetValue",
                                        L"RegSetValueEx failed on: value, with: 5");
    EXPECT_NO_THROW(place_->OpenSubKey(L"sub", KEY_WRITE)->SetValue(L"value", 1));
}

TEST_F(RegistryKeys, DeletingAnAbsentKeyLeavesNoTrace) {
    EXPECT_NO_THROW(place_->DeleteSubKey(L"absent"));
    EXPECT_NO_THROW(place_->DeleteSubKeyTree(L"absent"));
    EXPECT_NO_THROW(place_->DeleteSubKeyTree(L"absent\\below"));
    Names names;
    place_->GetSubKeyNames(names);
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(RegistryKeys, TreeGoesWithAllBelowIt) {
    place_->CreateSubKey(L"tree\\a\\b", true)->SetValue(L"value", 1);
    place_->CreateSubKey(L"tree\\a\\c", true);
    place_->CreateSubKey(L"tree\\d", true);
    place_->CreateSubKey(L"treetop", true);
    place_->DeleteSubKeyTree(L"tree");
    Names names;
    place_->GetSubKeyNames(names);
    EXPECT_THAT(names, ElementsAre(L"treetop"));
}

TEST_F(RegistryKeys, TreeNameMayEndInABackslash) {
    place_->CreateSubKey(L"tree\\a\\b", true);
    place_->DeleteSubKeyTree(L"tree\\");
    Names names;
    place_->GetSubKeyNames(names);
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(RegistryKeys, NamesAreAppended) {
    place_->CreateSubKey(L"one", true);
    place_->CreateSubKey(L"\x05D0", true);
    place_->SetValue(L"value", 1);
    place_->SetValue(L"", 1);
    Names keys = {L"before"};
    Names values;
    place_->GetSubKeyNames(keys);
    place_->GetValueNames(values);
    EXPECT_THAT(keys, UnorderedElementsAre(L"before", L"one", L"\x05D0"));
    EXPECT_THAT(values, UnorderedElementsAre(L"value", L""));
}

TEST_F(RegistryKeys, LongestNamesAreNotTruncated) {
    const std::wstring longestKey(255, L'k'); // the system's own limit is below the buffer's 260
    const std::wstring longestValue(16383, L'v');
    place_->CreateSubKey(longestKey, true);
    place_->SetValue(longestValue, 1);
    place_->SetValue(L"a", 1);
    Names keys;
    Names values;
    place_->GetSubKeyNames(keys);
    place_->GetValueNames(values);
    EXPECT_THAT(keys, ElementsAre(longestKey));
    EXPECT_THAT(values, UnorderedElementsAre(L"a", longestValue));
}

TEST_F(RegistryKeys, EnumerationEndsSilentlyAtAFailure) {
    const auto deleted = place_->CreateSubKey(L"sub", true);
    place_->DeleteSubKey(L"sub");
    Names names;
    deleted->GetSubKeyNames(names);
    deleted->GetValueNames(names);
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(RegistryKeys, CopyTakesValuesAndKeysOfAnyDepth) {
    const auto source = place_->CreateSubKey(L"source", true);
    source->SetValue(L"number", 7);
    source->SetValue(L"path", std::wstring(L"%temp%"), true);
    source->SetValue(L"empty", Bytes{}, REG_BINARY);
    source->CreateSubKey(L"a\\b", true)->SetValue(L"list", Names{L"x", L"y"});
    const auto target = place_->CreateSubKey(L"target", true);
    target->SetValue(L"own", 1);
    source->CopyTo(*target);

    Names values;
    target->GetValueNames(values);
    EXPECT_THAT(values, UnorderedElementsAre(L"number", L"path", L"empty", L"own"));
    std::wstring path;
    target->GetValue(L"path", path);
    EXPECT_EQ(path, L"%temp%");
    EXPECT_EQ(target->GetValueType(L"path"), DWORD{REG_EXPAND_SZ});
    EXPECT_EQ(target->GetValueType(L"empty"), DWORD{REG_BINARY});
    Names list;
    target->OpenSubKey(L"a\\b")->GetValue(L"list", list);
    EXPECT_THAT(list, ElementsAre(L"x", L"y"));
}

TEST_F(RegistryKeys, CopyOfAPassingKeyPersists) {
    const auto source = place_->CreateSubKey(L"source", false);
    source->CreateSubKey(L"sub", false);
    source->CopyTo(*place_->CreateSubKey(L"target", true));
    EXPECT_NO_THROW(place_->CreateSubKey(L"target\\sub", true)->CreateSubKey(L"persistent", true));
}
