#include "foundation/RegistryKey.h"

#include <utility>

#include "foundation/Throw.h"

using vorlek::Throw;
using vorlek::ThrowSite;

namespace {

constexpr DWORD kMaxKeyName = 260;
constexpr DWORD kMaxValueName = 16383;

/// Asks for a value's type, data or size. data: null to ask for the rest alone.
void Query_(ThrowSite site, HKEY key, const std::wstring& name, DWORD* type, void* data, DWORD* size) {
    const LSTATUS result = RegQueryValueExW(key, name.c_str(), nullptr, type, static_cast<BYTE*>(data), size);
    if (result != ERROR_SUCCESS) {
        Throw<RegistryKeyException>(site, L"RegQueryValueEx failed on: ", name, L", with: ", result);
    }
}

void Expect_(bool isRightType, const std::wstring& name) {
    if (!isRightType) {
        Throw<RegistryInvalidKeyTypeException>(L"RegistryKey::GetValue", L"RegQueryValueEx failed on: ", name,
                                               L" (invalid type)");
    }
}

DWORD QueryType_(ThrowSite site, HKEY key, const std::wstring& name) {
    DWORD type = REG_NONE;
    Query_(site, key, name, &type, nullptr, nullptr);
    return type;
}

/// Appends names until the system has no more or fails. next: (index, buffer, length) -> LSTATUS.
template <class Next>
void Enumerate_(DWORD longest, std::vector<std::wstring>& names, const Next& next) {
    std::wstring buffer(longest, L'\0');
    DWORD length = longest + 1; // the string's own terminator has room for the system's
    for (DWORD index = 0; next(index, buffer.data(), &length) == ERROR_SUCCESS; ++index) {
        names.emplace_back(buffer, 0, length);
        length = longest + 1;
    }
}

} // namespace

RegistryKey::RegistryKey(HKEY handle, std::wstring name) : handle_(handle), name_(std::move(name)) {}

RegistryKey::~RegistryKey() {
    RegCloseKey(handle_);
}

RegistryKey& RegistryKey::GetLocalMachine() {
    static RegistryKey key(HKEY_LOCAL_MACHINE, {});
    return key;
}

RegistryKey& RegistryKey::GetCurrentUser() {
    static RegistryKey key(HKEY_CURRENT_USER, {});
    return key;
}

RegistryKey& RegistryKey::GetCurrentConfig() {
    static RegistryKey key(HKEY_CURRENT_CONFIG, {});
    return key;
}

std::shared_ptr<RegistryKey> RegistryKey::OpenSubKey(const std::wstring& name, REGSAM access) const {
    HKEY key = nullptr;
    const LSTATUS result = RegOpenKeyExW(handle_, name.c_str(), 0, access, &key);
    if (result != ERROR_SUCCESS) {
        Throw<RegistryKeyException>(L"RegistryKey::OpenSubKey", L"RegOpenKeyEx failed on: ", name, L", with: ", result);
    }
    return std::shared_ptr<RegistryKey>(new RegistryKey(key, name));
}

std::shared_ptr<RegistryKey> RegistryKey::CreateSubKey(const std::wstring& name, bool persistent) const {
    HKEY key = nullptr;
    const LSTATUS result =
        RegCreateKeyExW(handle_, name.c_str(), 0, nullptr, persistent ? REG_OPTION_NON_VOLATILE : REG_OPTION_VOLATILE,
                        KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (result != ERROR_SUCCESS) {
        Throw<RegistryKeyException>(L"RegistryKey::CreateSubKey", L"RegCreateKeyEx failed on: ", name, L", with: ",
                                    result);
    }
    return std::shared_ptr<RegistryKey>(new RegistryKey(key, name));
}

void RegistryKey::DeleteSubKey(const std::wstring& name) const {
    const LSTATUS result = RegDeleteKeyW(handle_, name.c_str());
    if (result != ERROR_SUCCESS && result != ERROR_FILE_NOT_FOUND) {
        Throw<RegistryKeyException>(L"RegistryKey::DeleteSubKey", L"RegDeleteKey failed on: ", name, L", with: ",
                                    result);
    }
}

void RegistryKey::DeleteSubKeyTree(const std::wstring& name) const {
    const LSTATUS result = DeleteTree_(name);
    if (result != ERROR_SUCCESS) {
        Throw<RegistryKeyException>(L"RegistryKey::DeleteSubKeyTree", L"DeleteSubKeyTree failed on: ", name,
                                    L", with: ", result);
    }
}

LSTATUS RegistryKey::DeleteTree_(const std::wstring& name) const {
    const LSTATUS result = RegDeleteKeyW(handle_, name.c_str());
    if (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND) {
        return ERROR_SUCCESS;
    }
    HKEY handle = nullptr;
    if (RegOpenKeyExW(handle_, name.c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS) {
        return ERROR_SUCCESS; // taken as gone
    }
    std::vector<std::wstring> subKeys;
    RegistryKey(handle, name).GetSubKeyNames(subKeys);
    const std::wstring path = name.ends_with(L'\\') ? name : name + L'\\';
    for (const std::wstring& subKey : subKeys) {
        DeleteTree_(path + subKey);
    }
    return RegDeleteKeyW(handle_, name.c_str());
}

bool RegistryKey::ValueExists(const std::wstring& name) const {
    const LSTATUS result = RegQueryValueExW(handle_, name.c_str(), nullptr, nullptr, nullptr, nullptr);
    if (result != ERROR_SUCCESS && result != ERROR_FILE_NOT_FOUND) {
        Throw<RegistryKeyException>(L"RegistryKey::ValueExists", L"RegQueryValueEx failed on: ", name, L", with: ",
                                    result);
    }
    return result == ERROR_SUCCESS;
}

DWORD RegistryKey::GetValueType(const std::wstring& name) const {
    return QueryType_(L"RegistryKey::GetValueType", handle_, name);
}

template <class Number>
Number RegistryKey::ReadNumber_(const std::wstring& name, DWORD type) const {
    // The type first: a longer value of another type would only say that the buffer is too small.
    Expect_(QueryType_(L"RegistryKey::GetValue", handle_, name) == type, name);
    Number value = 0;
    DWORD size = sizeof(value);
    Query_(L"RegistryKey::GetValue", handle_, name, nullptr, &value, &size);
    return value;
}

void RegistryKey::GetValue(const std::wstring& name, DWORD& value) const {
    value = ReadNumber_<DWORD>(name, REG_DWORD);
}

void RegistryKey::GetValue(const std::wstring& name, ULONGLONG& value) const {
    value = ReadNumber_<ULONGLONG>(name, REG_QWORD);
}

void RegistryKey::GetValue(const std::wstring& name, std::wstring& value) const {
    const DWORD type = QueryType_(L"RegistryKey::GetValue", handle_, name);
    Expect_(type == REG_SZ || type == REG_EXPAND_SZ, name);
    value = ReadText_(name).data();
}

void RegistryKey::GetValue(const std::wstring& name, std::vector<std::wstring>& values) const {
    Expect_(QueryType_(L"RegistryKey::GetValue", handle_, name) == REG_MULTI_SZ, name);
    const std::vector<wchar_t> text = ReadText_(name);
    values.clear();
    for (const wchar_t* next = text.data(); *next != L'\0'; next += values.back().size() + 1) {
        values.emplace_back(next);
    }
}

/// The value's characters and at least one null behind them, whether it was stored with one or not.
std::vector<wchar_t> RegistryKey::ReadText_(const std::wstring& name) const {
    DWORD size = 0;
    Query_(L"RegistryKey::GetValue", handle_, name, nullptr, nullptr, &size);
    std::vector<wchar_t> text(size + 1);
    Query_(L"RegistryKey::GetValue", handle_, name, nullptr, text.data(), &size);
    return text;
}

void RegistryKey::GetValue(const std::wstring& name, std::vector<BYTE>& data, DWORD& type) const {
    DWORD size = 0;
    Query_(L"RegistryKey::GetValue", handle_, name, &type, nullptr, &size);
    data.resize(size);
    if (size != 0) {
        Query_(L"RegistryKey::GetValue", handle_, name, &type, data.data(), &size);
        data.resize(size);
    }
}

void RegistryKey::SetValue(const std::wstring& name, DWORD value) const {
    Write_(name, REG_DWORD, &value, sizeof(value));
}

void RegistryKey::SetValue(const std::wstring& name, const std::wstring& value, bool expandable) const {
    // Without the terminator, on purpose and unlike the multi-string. Windows may still store one by itself.
    Write_(name, expandable ? REG_EXPAND_SZ : REG_SZ, value.c_str(), value.size() * sizeof(wchar_t));
}

void RegistryKey::SetValue(const std::wstring& name, const std::vector<BYTE>& data, DWORD type) const {
    Write_(name, type, data.empty() ? nullptr : data.data(), data.size());
}

void RegistryKey::SetValue(const std::wstring& name, const std::vector<std::wstring>& values) const {
    std::wstring joined;
    for (const std::wstring& value : values) {
        joined.append(value).push_back(L'\0');
    }
    joined.push_back(L'\0');
    Write_(name, REG_MULTI_SZ, joined.data(), joined.size() * sizeof(wchar_t));
}

void RegistryKey::Write_(const std::wstring& name, DWORD type, const void* data, std::size_t size) const {
    const LSTATUS result =
        RegSetValueExW(handle_, name.c_str(), 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
    if (result != ERROR_SUCCESS) {
        Throw<RegistryKeyException>(L"RegistryKey::SetValue", L"RegSetValueEx failed on: ", name, L", with: ", result);
    }
}

void RegistryKey::DeleteValue(const std::wstring& name) const {
    const LSTATUS result = RegDeleteValueW(handle_, name.c_str());
    if (result != ERROR_SUCCESS && result != ERROR_FILE_NOT_FOUND) {
        Throw<RegistryKeyException>(L"RegistryKey::DeleteValue", L"RegDeleteValue failed on: ", name, L", with: ",
                                    result);
    }
}

void RegistryKey::RestoreKey(const std::wstring& path, DWORD flags) const {
    const LSTATUS result = RegRestoreKeyW(handle_, path.c_str(), flags);
    if (result != ERROR_SUCCESS) {
        Throw<RegistryKeyException>(L"RegistryKey::RestoreKey", L"RegRestoreKey failed on: ", name_, L", with: ",
                                    result);
    }
}

void RegistryKey::GetSubKeyNames(std::vector<std::wstring>& names) const {
    Enumerate_(kMaxKeyName, names, [this](DWORD index, wchar_t* buffer, DWORD* length) {
        return RegEnumKeyExW(handle_, index, buffer, length, nullptr, nullptr, nullptr, nullptr);
    });
}

void RegistryKey::GetValueNames(std::vector<std::wstring>& names) const {
    Enumerate_(kMaxValueName, names, [this](DWORD index, wchar_t* buffer, DWORD* length) {
        return RegEnumValueW(handle_, index, buffer, length, nullptr, nullptr, nullptr, nullptr);
    });
}

void RegistryKey::CopyTo(const RegistryKey& target) const {
    std::vector<std::wstring> names;
    GetValueNames(names);
    for (const std::wstring& name : names) {
        std::vector<BYTE> data;
        DWORD type = REG_NONE;
        GetValue(name, data, type);
        target.SetValue(name, data, type);
    }
    names.clear();
    GetSubKeyNames(names);
    for (const std::wstring& name : names) {
        OpenSubKey(name)->CopyTo(*target.CreateSubKey(name, true));
    }
}
