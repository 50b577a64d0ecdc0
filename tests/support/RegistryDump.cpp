#include "tests/support/RegistryDump.h"

#include <cwchar>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <vector>

namespace test_support {
namespace {

std::wstring Render_(DWORD type, const std::vector<BYTE>& data) {
    std::wostringstream text;
    if (type == REG_SZ) {
        const auto* characters = reinterpret_cast<const wchar_t*>(data.data());
        text << L"s " << std::wstring(characters, wcsnlen(characters, data.size() / sizeof(wchar_t)));
    } else if (type == REG_DWORD) {
        text << L"d " << *reinterpret_cast<const DWORD*>(data.data());
    } else {
        text << (type == REG_BINARY ? L"b " : L"? ") << std::hex;
        for (const BYTE byte : data) {
            text << (byte >> 4) << (byte & 0xF);
        }
    }
    return text.str();
}

void Dump_(HKEY key, const std::wstring& path, std::wostringstream& lines) {
    wchar_t name[256];
    std::map<std::wstring, std::wstring> values;
    for (DWORD index = 0;; ++index) {
        DWORD length = std::size(name), type = 0, size = 4096;
        std::vector<BYTE> data(size);
        if (RegEnumValueW(key, index, name, &length, nullptr, &type, data.data(), &size) != ERROR_SUCCESS) {
            break;
        }
        data.resize(size);
        values[length == 0 ? L"@" : name] = Render_(type, data);
    }
    for (const auto& [value, text] : values) {
        lines << value << L" = " << text << L"\n";
    }
    std::set<std::wstring> children;
    for (DWORD index = 0;; ++index) {
        DWORD length = std::size(name);
        if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
            break;
        }
        children.insert(name);
    }
    for (const auto& child : children) {
        const std::wstring childPath = path.empty() ? child : path + L"\\" + child;
        HKEY opened = nullptr;
        if (RegOpenKeyExW(key, child.c_str(), 0, KEY_READ, &opened) == ERROR_SUCCESS) {
            lines << L"[" << childPath << L"]\n";
            Dump_(opened, childPath, lines);
            RegCloseKey(opened);
        }
    }
}

} // namespace

std::wstring DumpRegistry(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return {};
    }
    std::wostringstream lines;
    lines << L"[]\n";
    Dump_(key, {}, lines);
    RegCloseKey(key);
    return lines.str();
}

void RemoveRegistryKey(HKEY root, const std::wstring& path) {
    RegDeleteTreeW(root, path.c_str());
}

} // namespace test_support
