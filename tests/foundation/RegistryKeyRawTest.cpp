#include "foundation/RegistryKey.h"

#include <algorithm>
#include <fstream>
#include <random>

#include <gmock/gmock.h>

#include "tests/support/ChildProcess.h"
#include "tests/support/RegistryPlace.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

// What the class writes is read back through the system's own interface, and the other way round.

using test_support::ReplacedImport;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::wstring>;
using Bytes = std::vector<BYTE>;

namespace {

Bytes BytesOf_(const std::wstring& text) {
    const auto* bytes = reinterpret_cast<const BYTE*>(text.data());
    return {bytes, bytes + text.size() * sizeof(wchar_t)};
}

/// The test's own key, opened beside the class.
class RegistryRaw : public testing::Test {
protected:
    RegistryRaw() { RegOpenKeyExW(HKEY_CURRENT_USER, place_.Name().c_str(), 0, KEY_ALL_ACCESS, &raw_); }
    ~RegistryRaw() override { RegCloseKey(raw_); }

    std::pair<Bytes, DWORD> Read(const std::wstring& name) const {
        Bytes data(1 << 20);
        DWORD size = 1 << 20;
        DWORD type = REG_NONE;
        EXPECT_EQ(RegQueryValueExW(raw_, name.c_str(), nullptr, &type, data.data(), &size), ERROR_SUCCESS);
        data.resize(size);
        return {data, type};
    }

    /// The characters of a text, whether the system has put a terminator of its own behind them or not.
    std::pair<std::wstring, DWORD> ReadText(const std::wstring& name) const {
        const auto [data, type] = Read(name);
        std::wstring text(data.size() / sizeof(wchar_t), L'\0');
        std::ranges::copy(data, reinterpret_cast<BYTE*>(text.data()));
        return {text.ends_with(L'\0') ? text.substr(0, text.size() - 1) : text, type};
    }

    /// Byte for byte: the system looks behind a text without a terminator, and finds none there.
    void Write(const std::wstring& name, DWORD type, Bytes data) const {
        const auto size = static_cast<DWORD>(data.size());
        data.insert(data.end(), sizeof(wchar_t), 0xFF);
        EXPECT_EQ(RegSetValueExW(raw_, name.c_str(), 0, type, data.data(), size), ERROR_SUCCESS);
    }

    template <class Value>
    Value Get(const std::wstring& name) const {
        Value value = {};
        place_->GetValue(name, value);
        return value;
    }

    test_support::RegistryPlace place_;
    HKEY raw_ = nullptr;
};

/// Characters of all planes of the alphabet but the null.
std::wstring RandomText_(std::mt19937& random, std::size_t length) {
    std::wstring text(length, L'\0');
    for (wchar_t& character : text) {
        character = static_cast<wchar_t>(1 + random() % 0xFFFF);
    }
    return text;
}

/// Notes the roots that are closed when the process ends, in a file.
std::wstring CloseRoots_(const std::wstring& path) {
    static const std::wstring notes = path;
    // Made before the roots, so that it ends after them.
    static const ReplacedImport<"RegCloseKey", decltype(RegCloseKey)> close([](HKEY key) -> LSTATUS {
        std::ofstream(std::filesystem::path(notes), std::ios::app)
            << std::hex << reinterpret_cast<std::uintptr_t>(key) << " ";
        return ERROR_INVALID_HANDLE; // which nobody looks at
    });
    RegistryKey::GetLocalMachine();
    RegistryKey::GetCurrentUser();
    RegistryKey::GetCurrentConfig();
    return {};
}

const test_support::ChildRoleName closeRoots(L"CloseRoots", CloseRoots_);

} // namespace

TEST_F(RegistryRaw, SystemReadsWhatTheClassWrote) {
    place_->SetValue(L"number", 0xFEDCBA98);
    EXPECT_EQ(Read(L"number"), std::pair(Bytes{0x98, 0xBA, 0xDC, 0xFE}, DWORD{REG_DWORD}));
    place_->SetValue(L"text", std::wstring(L"\x05D0 text"));
    EXPECT_EQ(ReadText(L"text"), std::pair(std::wstring(L"\x05D0 text"), DWORD{REG_SZ}));
    place_->SetValue(L"text", std::wstring(L"%windir%"), true);
    EXPECT_EQ(ReadText(L"text"), std::pair(std::wstring(L"%windir%"), DWORD{REG_EXPAND_SZ}));
    place_->SetValue(L"list", Names{L"one", L"\x05D0"});
    EXPECT_EQ(Read(L"list"), std::pair(BytesOf_({L"one\0\x05D0\0\0", 7}), DWORD{REG_MULTI_SZ}));
    place_->SetValue(L"raw", Bytes{3, 0, 1}, REG_BINARY);
    EXPECT_EQ(Read(L"raw"), std::pair(Bytes{3, 0, 1}, DWORD{REG_BINARY}));
    place_->SetValue(L"raw", Bytes{1, 2, 3, 4, 5, 6, 7, 8}, REG_QWORD);
    EXPECT_EQ(Read(L"raw"), std::pair(Bytes{1, 2, 3, 4, 5, 6, 7, 8}, DWORD{REG_QWORD}));
    place_->SetValue(L"raw", Bytes{}, REG_NONE);
    EXPECT_EQ(Read(L"raw"), std::pair(Bytes{}, DWORD{REG_NONE}));
}

TEST_F(RegistryRaw, ClassReadsWhatTheSystemWrote) {
    Write(L"number", REG_DWORD, {0x98, 0xBA, 0xDC, 0xFE});
    EXPECT_EQ(Get<DWORD>(L"number"), 0xFEDCBA98U);
    Write(L"long", REG_QWORD, {1, 2, 3, 4, 5, 6, 7, 0xF8});
    EXPECT_EQ(Get<ULONGLONG>(L"long"), 0xF807060504030201U);
    Write(L"text", REG_SZ, BytesOf_({L"ended\0", 6}));
    EXPECT_EQ(Get<std::wstring>(L"text"), L"ended");
    Write(L"text", REG_SZ, BytesOf_(L"not ended"));
    EXPECT_EQ(Get<std::wstring>(L"text"), L"not ended");
    Write(L"text", REG_EXPAND_SZ, BytesOf_({L"%windir%\0", 9}));
    EXPECT_EQ(Get<std::wstring>(L"text"), L"%windir%");
    Write(L"text", REG_SZ, {});
    EXPECT_EQ(Get<std::wstring>(L"text"), L"");
    Write(L"list", REG_MULTI_SZ, BytesOf_({L"one\0\x05D0\0\0", 7}));
    EXPECT_THAT(Get<Names>(L"list"), ElementsAre(L"one", L"\x05D0"));
    Write(L"list", REG_MULTI_SZ, {});
    EXPECT_THAT(Get<Names>(L"list"), IsEmpty());
    for (const DWORD type : {REG_NONE, REG_SZ, REG_BINARY, REG_DWORD_BIG_ENDIAN, REG_MULTI_SZ, REG_QWORD}) {
        Write(L"raw", type, {1, 2, 3, 4});
        Bytes data;
        DWORD read = REG_LINK;
        place_->GetValue(L"raw", data, read);
        EXPECT_EQ(std::pair(data, read), std::pair(Bytes({1, 2, 3, 4}), type));
        EXPECT_EQ(place_->GetValueType(L"raw"), type);
    }
}

TEST_F(RegistryRaw, TextsOfEveryLengthGoBothWays) {
    std::mt19937 random(1);
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::wstring text = RandomText_(random, length);
        place_->SetValue(L"written", text, length % 2 != 0);
        ASSERT_EQ(ReadText(L"written"), std::pair(text, length % 2 != 0 ? DWORD{REG_EXPAND_SZ} : DWORD{REG_SZ}));
        Write(L"stored", REG_SZ, BytesOf_(length % 3 != 0 ? text : text + L'\0'));
        ASSERT_EQ(Get<std::wstring>(L"stored"), text) << length;
    }
}

TEST_F(RegistryRaw, ListsGoBothWays) {
    std::mt19937 random(2);
    for (std::size_t count = 0; count <= 40; ++count) {
        Names list;
        std::wstring joined;
        while (list.size() < count) {
            list.push_back(RandomText_(random, 1 + random() % 30));
            joined += list.back() + L'\0';
        }
        place_->SetValue(L"written", list);
        ASSERT_EQ(Read(L"written"), std::pair(BytesOf_(joined + L'\0'), DWORD{REG_MULTI_SZ}));
        Write(L"stored", REG_MULTI_SZ, BytesOf_(count % 2 != 0 ? joined : joined + L'\0'));
        ASSERT_EQ(Get<Names>(L"stored"), list) << count;
    }
}

TEST_F(RegistryRaw, TextIsHandedOverWithoutItsTerminatorAndNothingAsNull) {
    std::vector<std::pair<DWORD, bool>> seen; // the size, and whether there was a buffer
    ReplacedImport<"RegSetValueExW", decltype(RegSetValueExW)> set(
        [&](HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) {
            seen.emplace_back(size, data != nullptr);
            return set.Original(key, name, reserved, type, data, size);
        });
    place_->SetValue(L"text", std::wstring(L"ab"));
    place_->SetValue(L"text", std::wstring());
    place_->SetValue(L"raw", Bytes{}, REG_BINARY);
    place_->SetValue(L"list", Names{});
    EXPECT_THAT(seen, ElementsAre(std::pair(4, true), std::pair(0, true), std::pair(0, false), std::pair(2, true)));
}

TEST_F(RegistryRaw, KeysAreAskedForWithTheirRights) {
    REGSAM opened = 0;
    ReplacedImport<"RegOpenKeyExW", decltype(RegOpenKeyExW)> open(
        [&](HKEY key, LPCWSTR name, DWORD options, REGSAM access, HKEY* result) {
            opened = access;
            return open.Original(key, name, options, access, result);
        });
    std::vector<std::pair<DWORD, REGSAM>> created;
    ReplacedImport<"RegCreateKeyExW", decltype(RegCreateKeyExW)> create(
        [&](HKEY key, LPCWSTR name, DWORD reserved, LPWSTR keyClass, DWORD options, REGSAM access,
            SECURITY_ATTRIBUTES* security, HKEY* result, DWORD* disposition) {
            created.emplace_back(options, access);
            return create.Original(key, name, reserved, keyClass, options, access, security, result, disposition);
        });
    place_->CreateSubKey(L"persistent", true);
    place_->CreateSubKey(L"passing", false);
    EXPECT_THAT(created, ElementsAre(std::pair(0, 0xF003F), std::pair(1, 0xF003F)));
    place_->OpenSubKey(L"persistent");
    EXPECT_EQ(opened, 0x20019U);
    place_->OpenSubKey(L"persistent", KEY_WRITE);
    EXPECT_EQ(opened, REGSAM{KEY_WRITE});
}

TEST_F(RegistryRaw, KeyIsClosedWithItsLastOwnerWhateverTheSystemSays) {
    auto first = place_->CreateSubKey(L"sub", true);
    auto second = first;
    ReplacedImport<"RegCloseKey", decltype(RegCloseKey)> close([&](HKEY key) -> LSTATUS {
        close.Original(key);
        return ERROR_INVALID_HANDLE;
    });
    first.reset();
    EXPECT_EQ(close.Calls(), 0);
    EXPECT_NO_THROW(second.reset());
    EXPECT_EQ(close.Calls(), 1);
}

TEST_F(RegistryRaw, RootsAreClosedWhenTheProcessEnds) {
    const test_support::TemporaryFolder folder;
    test_support::ChildProcess(L"CloseRoots", folder / L"notes").Result();
    EXPECT_EQ(test_support::ReadBytes(folder / L"notes"), "ffffffff80000005 ffffffff80000001 ffffffff80000002 ");
}
