#include "stand-ins/agent/Text.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <vector>

#include "platform/Windows.h"

#include <objbase.h>

namespace stand_ins::agent {
namespace {

class FileHandle_ {
public:
    FileHandle_(const std::wstring& path, DWORD access, DWORD disposition)
        : handle_(CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                              nullptr)) {}
    ~FileHandle_() {
        if (IsOpen()) {
            CloseHandle(handle_);
        }
    }
    FileHandle_(const FileHandle_&) = delete;
    FileHandle_& operator=(const FileHandle_&) = delete;

    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
};

[[noreturn]] void FailOnFile_(const char* what, const std::wstring& path) {
    const DWORD error = GetLastError();
    throw std::runtime_error(std::string(what) + " \"" + ToUtf8(path) + "\": error " + std::to_string(error));
}

std::wstring Decode_(std::string_view bytes, DWORD flags) {
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CP_UTF8, flags, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, flags, bytes.data(), size, text.data(), length);
    return text;
}

} // namespace

std::string ToUtf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::wstring FromUtf8(std::string_view bytes) {
    return Decode_(bytes, 0);
}

std::wstring DecodeText(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        bytes.remove_prefix(2);
        std::wstring text(bytes.size() / 2, L'\0');
        std::copy_n(bytes.data(), text.size() * 2, reinterpret_cast<char*>(text.data()));
        return text;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    std::wstring text = Decode_(bytes, MB_ERR_INVALID_CHARS);
    if (text.empty()) {
        std::ranges::transform(bytes, std::back_inserter(text),
                               [](char byte) { return static_cast<wchar_t>(static_cast<unsigned char>(byte)); });
    }
    return text;
}

std::wstring Lower(std::wstring_view text) {
    std::wstring lower(text);
    CharLowerBuffW(lower.data(), static_cast<DWORD>(lower.size()));
    return lower;
}

std::wstring_view Trimmed(std::wstring_view text) {
    const std::size_t begin = text.find_first_not_of(L" \t");
    return begin == std::wstring_view::npos ? std::wstring_view()
                                            : text.substr(begin, text.find_last_not_of(L" \t") + 1 - begin);
}

std::wstring OneLine(std::wstring_view text) {
    constexpr std::size_t kMost = 200;
    std::wstring line(text.substr(0, kMost));
    std::ranges::replace_if(
        line, [](wchar_t c) { return c < L' ' || c == 0x7F; }, L' ');
    return text.size() > kMost ? line + L"..." : line;
}

std::wstring ReplaceAll(std::wstring text, std::wstring_view from, std::wstring_view to) {
    for (std::size_t at = text.find(from); at != std::wstring::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::wstring Escape(std::wstring_view text) {
    std::wstring escaped;
    escaped.reserve(text.size() + text.size() / 8);
    for (const wchar_t character : text) {
        switch (character) {
        case L'&':
            escaped += L"&amp;";
            break;
        case L'<':
            escaped += L"&lt;";
            break;
        case L'>':
            escaped += L"&gt;";
            break;
        case L'"':
            escaped += L"&quot;";
            break;
        // So that no value looks like the end of its message.
        case L'#':
            escaped += L"&#35;";
            break;
        // A reader turns a bare one into a line feed.
        case L'\r':
            escaped += L"&#xD;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

std::optional<std::string> DecodeBase64(std::wstring_view text) {
    constexpr std::wstring_view kDigits = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t padding = text.ends_with(L"==") ? 2 : text.ends_with(L"=") ? 1 : 0;
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    text.remove_suffix(padding);
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const wchar_t digit : text) {
        const std::size_t value = kDigits.find(digit);
        if (value == std::wstring_view::npos) {
            return std::nullopt;
        }
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return bytes;
}

std::wstring NewGuid() {
    GUID guid;
    wchar_t text[39];
    if (CoCreateGuid(&guid) != S_OK || StringFromGUID2(guid, text, static_cast<int>(std::size(text))) == 0) {
        throw std::runtime_error("The system gives no GUID.");
    }
    return text;
}

std::wstring Extension(std::wstring_view path) {
    const std::size_t dot = path.find_last_of(L".\\/");
    if (dot == std::wstring_view::npos || path[dot] != L'.') {
        return {};
    }
    const std::wstring_view extension = path.substr(dot + 1);
    const auto isPlain = [](wchar_t c) { return (c >= L'0' && c <= L'9') || ((c | 32) >= L'a' && (c | 32) <= L'z'); };
    return std::ranges::all_of(extension, isPlain) && extension.size() <= 16 ? std::wstring(extension) : std::wstring();
}

std::string ReadWholeFile(const std::wstring& path) {
    const FileHandle_ file(path, GENERIC_READ, OPEN_EXISTING);
    LARGE_INTEGER size{};
    if (!file.IsOpen() || !GetFileSizeEx(file.Get(), &size)) {
        FailOnFile_("Cannot read", path);
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    constexpr std::size_t kMost = 1u << 30;
    for (std::size_t at = 0; at < bytes.size();) {
        DWORD read = 0;
        const auto count = static_cast<DWORD>(std::min(bytes.size() - at, kMost));
        if (!ReadFile(file.Get(), bytes.data() + at, count, &read, nullptr) || read == 0) {
            FailOnFile_("Cannot read", path);
        }
        at += read;
    }
    return bytes;
}

void WriteWholeFile(const std::wstring& path, std::string_view bytes) {
    const FileHandle_ file(path, GENERIC_WRITE, CREATE_ALWAYS);
    if (!file.IsOpen()) {
        FailOnFile_("Cannot write", path);
    }
    constexpr std::size_t kMost = 1u << 30;
    for (std::size_t at = 0; at < bytes.size();) {
        DWORD written = 0;
        const auto count = static_cast<DWORD>(std::min(bytes.size() - at, kMost));
        if (!WriteFile(file.Get(), bytes.data() + at, count, &written, nullptr)) {
            FailOnFile_("Cannot write", path);
        }
        at += written;
    }
}

void MakeFolder(const std::wstring& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error || !std::filesystem::is_directory(path, error)) {
        throw std::runtime_error("Cannot make the folder \"" + ToUtf8(path) + "\"");
    }
}

} // namespace stand_ins::agent
