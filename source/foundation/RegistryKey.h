#pragma once
#include <memory>
#include <string>
#include <vector>

#include "platform/Windows.h"

/// An open key of the registry, closed with its last owner. Everything raises RegistryKeyException
/// with the system's code unless its own line says otherwise.
class RegistryKey {
public:
    static RegistryKey& GetLocalMachine();
    static RegistryKey& GetCurrentUser();
    static RegistryKey& GetCurrentConfig();

    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    virtual ~RegistryKey();

    std::shared_ptr<RegistryKey> OpenSubKey(const std::wstring& name, REGSAM access = KEY_READ) const;
    /// Opens the key if it exists. persistent: whether a new one outlives the next start of the machine.
    std::shared_ptr<RegistryKey> CreateSubKey(const std::wstring& name, bool persistent) const;
    /// The key must have no sub keys. An absent one is a success.
    void DeleteSubKey(const std::wstring& name) const;
    /// The key with all below it. An absent one is a success.
    void DeleteSubKeyTree(const std::wstring& name) const;

    bool ValueExists(const std::wstring& name) const;
    /// One of the REG_ numbers.
    DWORD GetValueType(const std::wstring& name) const;

    /// The typed reads raise RegistryInvalidKeyTypeException for a value of another type.
    /// REG_DWORD.
    void GetValue(const std::wstring& name, DWORD& value) const;
    /// REG_QWORD.
    void GetValue(const std::wstring& name, ULONGLONG& value) const;
    /// REG_SZ or REG_EXPAND_SZ, up to the first null; variables are not expanded.
    void GetValue(const std::wstring& name, std::wstring& value) const;
    /// REG_MULTI_SZ, up to the first empty string.
    void GetValue(const std::wstring& name, std::vector<std::wstring>& values) const;
    /// Any type.
    void GetValue(const std::wstring& name, std::vector<BYTE>& data, DWORD& type) const;

    void SetValue(const std::wstring& name, DWORD value) const;
    /// Written without a terminator. expandable: REG_EXPAND_SZ instead of REG_SZ.
    void SetValue(const std::wstring& name, const std::wstring& value, bool expandable = false) const;
    void SetValue(const std::wstring& name, const std::vector<BYTE>& data, DWORD type) const;
    void SetValue(const std::wstring& name, const std::vector<std::wstring>& values) const;
    /// An absent value is a success.
    void DeleteValue(const std::wstring& name) const;

    /// Replaces the key's content by that of a saved file. flags: the system's REG_ flags.
    void RestoreKey(const std::wstring& path, DWORD flags) const;
    /// The enumerations append to the vector and end at the first failure without a word.
    void GetSubKeyNames(std::vector<std::wstring>& names) const;
    void GetValueNames(std::vector<std::wstring>& names) const;
    /// Copies all values and, with all below them, all sub keys.
    void CopyTo(const RegistryKey& target) const;

private:
    RegistryKey(HKEY handle, std::wstring name);
    LSTATUS DeleteTree_(const std::wstring& name) const;
    template <class Number>
    Number ReadNumber_(const std::wstring& name, DWORD type) const;
    std::vector<wchar_t> ReadText_(const std::wstring& name) const;
    void Write_(const std::wstring& name, DWORD type, const void* data, std::size_t size) const;

    HKEY handle_;
    std::wstring name_;
};
