#include "foundation/RegistryKey.h"

#include <memory>

#include <gmock/gmock.h>

#include "foundation/Exception.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/RegistryPlace.h"
#include "tests/support/ReplacedImport.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReplacedImport;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::wstring>;
using Bytes = std::vector<BYTE>;

namespace {

class RegistryFailures : public testing::Test {
protected:
    test_support::RegistryPlace place_;
};

using RegQueryValueStandIn = ReplacedImport<"RegQueryValueExW", decltype(RegQueryValueExW)>;

/// Hands out names as the system does, but of any length: what the room does not hold is a failure.
LSTATUS Enumerate_(const Names& names, DWORD index, wchar_t* buffer, DWORD* room) {
    if (index >= names.size()) {
        return ERROR_NO_MORE_ITEMS;
    }
    const std::wstring& name = names[index];
    if (name.size() >= *room) {
        return ERROR_MORE_DATA;
    }
    *room = static_cast<DWORD>(name.copy(buffer, name.size()));
    buffer[name.size()] = L'\0';
    return ERROR_SUCCESS;
}

} // namespace

TEST_F(RegistryFailures, OpeningAMissingKey) {
    ExpectFailure<RegistryKeyException>([&] { place_->OpenSubKey(L"missing"); }, L"RegistryKey::OpenSubKey",
                                        L"RegOpenKeyEx failed on: missing, with: 2");
}

TEST_F(RegistryFailures, PersistentKeyBelowAVolatileOne) {
    const auto passing = place_->CreateSubKey(L"volatile", false);
    ExpectFailure<RegistryKeyException>([&] { passing->CreateSubKey(L"child", true); }, L"RegistryKey::CreateSubKey",
                                        L"RegCreateKeyEx failed on: child, with: 1021");
    EXPECT_NO_THROW(passing->CreateSubKey(L"child", false));
}

TEST_F(RegistryFailures, DeletingAKeyThatHasSubKeys) {
    place_->CreateSubKey(L"sub\\below", true);
    ExpectFailure<RegistryKeyException>([&] { place_->DeleteSubKey(L"sub"); }, L"RegistryKey::DeleteSubKey",
                                        L"RegDeleteKey failed on: sub, with: 5");
}

TEST_F(RegistryFailures, DeletingAValueThroughAReadersKey) {
    place_->CreateSubKey(L"sub", true)->SetValue(L"value", 1);
    ExpectFailure<RegistryKeyException>([&] { place_->OpenSubKey(L"sub")->DeleteValue(L"value"); },
                                        L"RegistryKey::DeleteValue", L"RegDeleteValue failed on: value, with: 5");
}

TEST_F(RegistryFailures, ReadingAMissingValue) {
    DWORD number = 0;
    ULONGLONG longNumber = 0;
    std::wstring text;
    Names list;
    Bytes data;
    const std::wstring words = L"RegQueryValueEx failed on: missing, with: 2";
    const auto expect = [&](const auto& read) {
        ExpectFailure<RegistryKeyException>(read, L"RegistryKey::GetValue", words);
    };
    expect([&] { place_->GetValue(L"missing", number); });
    expect([&] { place_->GetValue(L"missing", longNumber); });
    expect([&] { place_->GetValue(L"missing", text); });
    expect([&] { place_->GetValue(L"missing", list); });
    expect([&] { place_->GetValue(L"missing", data, number); });
    ExpectFailure<RegistryKeyException>([&] { place_->GetValueType(L"missing"); }, L"RegistryKey::GetValueType", words);
}

TEST_F(RegistryFailures, AskingADeletedKeyForAValue) {
    const auto deleted = place_->CreateSubKey(L"sub", true);
    place_->DeleteSubKey(L"sub");
    ExpectFailure<RegistryKeyException>([&] { deleted->ValueExists(L"value"); }, L"RegistryKey::ValueExists",
                                        L"RegQueryValueEx failed on: value, with: 1018");
}

TEST_F(RegistryFailures, ReadingAValueThatGoesInBetween) {
    place_->SetValue(L"text", std::wstring(L"text"));
    place_->SetValue(L"list", Names{L"text"});
    int goes = 0; // the number of the call that does not find the value any more
    std::unique_ptr<RegQueryValueStandIn> query;
    const auto expect = [&](const std::wstring& name, int calls, const auto& read) {
        for (goes = 1; goes <= calls; ++goes) {
            query = std::make_unique<RegQueryValueStandIn>(
                [&](HKEY key, LPCWSTR value, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size) -> LSTATUS {
                    return query->Calls() == goes ? ERROR_FILE_NOT_FOUND
                                                  : query->Original(key, value, reserved, type, data, size);
                });
            ExpectFailure<RegistryKeyException>(read, L"RegistryKey::GetValue",
                                                L"RegQueryValueEx failed on: " + name + L", with: 2");
            query.reset();
        }
    };
    std::wstring text = L"before";
    Names list;
    Bytes data;
    DWORD type = REG_NONE;
    expect(L"text", 3, [&] { place_->GetValue(L"text", text); });
    expect(L"list", 3, [&] { place_->GetValue(L"list", list); });
    expect(L"text", 2, [&] { place_->GetValue(L"text", data, type); });
    EXPECT_EQ(text, L"before");
}

TEST_F(RegistryFailures, NumberOfMoreBytesThanItsTypeHas) {
    place_->SetValue(L"number", Bytes(8), REG_DWORD);
    DWORD number = 7;
    ExpectFailure<RegistryKeyException>([&] { place_->GetValue(L"number", number); }, L"RegistryKey::GetValue",
                                        L"RegQueryValueEx failed on: number, with: 234");
    EXPECT_EQ(number, 7U);
}

TEST_F(RegistryFailures, WritingThroughAReadersKey) {
    place_->CreateSubKey(L"sub", true);
    const auto readable = place_->OpenSubKey(L"sub");
    const auto expect = [](const auto& write) {
        ExpectFailure<RegistryKeyException>(write, L"RegistryKey::SetValue",
                                            L"RegSetValueEx failed on: value, with: 5");
    };
    expect([&] { readable->SetValue(L"value", 1); });
    expect([&] { readable->SetValue(L"value", std::wstring(L"text")); });
    expect([&] { readable->SetValue(L"value", Bytes{1}, REG_BINARY); });
    expect([&] { readable->SetValue(L"value", Names{L"text"}); });
}

TEST_F(RegistryFailures, RestoringFromNoFile) {
    const auto key = place_->CreateSubKey(L"sub", true);
    ExpectFailure<RegistryKeyException>([&] { key->RestoreKey(L"", 0); }, L"RegistryKey::RestoreKey",
                                        L"RegRestoreKey failed on: sub, with: 87");
}

TEST_F(RegistryFailures, RestoringWhatTheUserMayNot) {
    const auto key = place_->CreateSubKey(L"sub", true);
    std::wstring asked;
    const ReplacedImport<"RegRestoreKeyW", decltype(RegRestoreKeyW)> restore(
        [&](HKEY, LPCWSTR path, DWORD flags) -> LSTATUS {
            asked = path + (L", " + std::to_wstring(flags));
            return flags == REG_FORCE_RESTORE ? ERROR_SUCCESS : ERROR_PRIVILEGE_NOT_HELD;
        });
    EXPECT_NO_THROW(key->RestoreKey(L"C:\\saved.hiv", REG_FORCE_RESTORE));
    EXPECT_EQ(asked, L"C:\\saved.hiv, 8");
    ExpectFailure<RegistryKeyException>([&] { key->RestoreKey(L"C:\\saved.hiv", 0); }, L"RegistryKey::RestoreKey",
                                        L"RegRestoreKey failed on: sub, with: 1314");
}

TEST_F(RegistryFailures, KeyNameLongerThanTheBufferEndsTheList) {
    const std::wstring fits(260, L'f');
    Names stored = {L"first", fits, L"last"};
    const ReplacedImport<"RegEnumKeyExW", decltype(RegEnumKeyExW)> enumerate(
        [&](HKEY, DWORD index, wchar_t* buffer, DWORD* room, DWORD*, wchar_t*, DWORD*, FILETIME*) {
            return Enumerate_(stored, index, buffer, room);
        });
    Names names;
    place_->GetSubKeyNames(names);
    EXPECT_THAT(names, ElementsAre(L"first", fits, L"last"));
    stored[1] += L'f';
    names.clear();
    EXPECT_NO_THROW(place_->GetSubKeyNames(names));
    EXPECT_THAT(names, ElementsAre(L"first"));
}

TEST_F(RegistryFailures, ValueNameLongerThanTheBufferEndsTheList) {
    const std::wstring fits(16383, L'f');
    Names stored = {L"first", fits, L"last"};
    const ReplacedImport<"RegEnumValueW", decltype(RegEnumValueW)> enumerate(
        [&](HKEY, DWORD index, wchar_t* buffer, DWORD* room, DWORD*, DWORD*, BYTE*, DWORD*) {
            return Enumerate_(stored, index, buffer, room);
        });
    Names names;
    place_->GetValueNames(names);
    EXPECT_THAT(names, ElementsAre(L"first", fits, L"last"));
    stored[1] += L'f';
    names.clear();
    EXPECT_NO_THROW(place_->GetValueNames(names));
    EXPECT_THAT(names, ElementsAre(L"first"));
}

TEST_F(RegistryFailures, ListEndsSilentlyAtAnyFailure) {
    place_->CreateSubKey(L"sub", true);
    place_->SetValue(L"value", 1);
    const FailingImport<"RegEnumKeyExW", decltype(RegEnumKeyExW)> keys(0, ERROR_ACCESS_DENIED);
    const FailingImport<"RegEnumValueW", decltype(RegEnumValueW)> values(0, ERROR_ACCESS_DENIED);
    Names names;
    EXPECT_NO_THROW(place_->GetSubKeyNames(names));
    EXPECT_NO_THROW(place_->GetValueNames(names));
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(RegistryFailures, TreeThatCannotBeOpenedIsTakenAsGone) {
    place_->CreateSubKey(L"tree\\below", true);
    {
        const FailingImport<"RegOpenKeyExW", decltype(RegOpenKeyExW)> open(0, ERROR_ACCESS_DENIED);
        EXPECT_NO_THROW(place_->DeleteSubKeyTree(L"tree"));
    }
    EXPECT_NO_THROW(place_->OpenSubKey(L"tree\\below"));
}

TEST_F(RegistryFailures, TreeWithAKeyThatNoNameReaches) {
    // The system's own interface can make a name with a null inside, which ends the name for all others.
    struct Text {
        USHORT length, capacity;
        wchar_t* characters;
    };
    struct Place {
        ULONG size;
        HANDLE root;
        Text* name;
        ULONG attributes;
        void* security;
        void* quality;
    };
    using CreateKey = LONG(WINAPI*)(HANDLE*, ACCESS_MASK, Place*, ULONG, Text*, ULONG, ULONG*);
    using DeleteKey = LONG(WINAPI*)(HANDLE);
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    const auto createKey = reinterpret_cast<CreateKey>(reinterpret_cast<void*>(GetProcAddress(ntdll, "NtCreateKey")));
    const auto deleteKey = reinterpret_cast<DeleteKey>(reinterpret_cast<void*>(GetProcAddress(ntdll, "NtDeleteKey")));

    place_->CreateSubKey(L"tree", true);
    HKEY tree = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, (place_.Name() + L"\\tree").c_str(), 0, KEY_ALL_ACCESS, &tree), 0);
    wchar_t characters[] = {L'a', L'\0', L'b'};
    Text name = {sizeof(characters), sizeof(characters), characters};
    Place place = {sizeof(place), tree, &name, 0, nullptr, nullptr};
    HANDLE hidden = nullptr;
    ASSERT_EQ(createKey(&hidden, KEY_ALL_ACCESS, &place, 0, nullptr, 0, nullptr), 0);

    ExpectFailure<RegistryKeyException>([&] { place_->DeleteSubKeyTree(L"tree"); }, L"RegistryKey::DeleteSubKeyTree",
                                        L"DeleteSubKeyTree failed on: tree, with: 5");
    EXPECT_EQ(deleteKey(hidden), 0);
    CloseHandle(hidden);
    RegCloseKey(tree);
    EXPECT_NO_THROW(place_->DeleteSubKeyTree(L"tree"));
}
