#include "stand-ins/outlook/Text.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <map>
#include <stdexcept>

#include "platform/Windows.h"

namespace stand_ins {
namespace {

constexpr std::string_view kDigits64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::wstring Lower(std::wstring_view text) {
    std::wstring lower(text);
    std::ranges::transform(lower, lower.begin(), [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return lower;
}

void AppendCodePoint(std::wstring& text, unsigned long code) {
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) {
        text += L'\xFFFD';
    } else if (code >= 0x10000) {
        text += static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
        text += static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
        text += static_cast<wchar_t>(code);
    }
}

// The entity at the start of the text, appended resolved; the number of characters taken, at least 1.
size_t AppendEntity(std::wstring& plain, std::wstring_view text) {
    static const std::map<std::wstring, wchar_t, std::less<>> known = {
        {L"amp", L'&'},       {L"lt", L'<'},        {L"gt", L'>'},        {L"quot", L'"'},       {L"apos", L'\''},
        {L"nbsp", L'\x00A0'}, {L"copy", L'\x00A9'}, {L"euro", L'\x20AC'}, {L"ndash", L'\x2013'}, {L"mdash", L'\x2014'}};
    const size_t end = text.substr(0, 12).find(L';');
    if (end != std::wstring_view::npos && end > 1) {
        const std::wstring name(text.substr(1, end - 1));
        if (const auto found = known.find(name); found != known.end()) {
            plain += found->second;
            return end + 1;
        }
        if (name[0] == L'#' && name.size() > 1) {
            const bool hex = name[1] == L'x' || name[1] == L'X';
            wchar_t* rest = nullptr;
            const unsigned long code = std::wcstoul(name.c_str() + (hex ? 2 : 1), &rest, hex ? 16 : 10);
            if (*rest == L'\0') {
                AppendCodePoint(plain, code);
                return end + 1;
            }
        }
    }
    plain += L'&';
    return 1;
}

bool BreaksLine(std::wstring_view tag) {
    static constexpr std::array<std::wstring_view, 12> tags = {L"br",  L"/p",  L"/div", L"/tr", L"/li", L"/h1",
                                                               L"/h2", L"/h3", L"/h4",  L"hr",  L"/ul", L"/blockquote"};
    return std::ranges::find(tags, tag) != tags.end();
}

} // namespace

std::string ToUtf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(
        static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), static_cast<int>(bytes.size()), nullptr,
                        nullptr);
    return bytes;
}

std::wstring FromUtf8(std::string_view text) {
    const int length = static_cast<int>(text.size());
    std::wstring wide(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string Base64Encode(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const auto at = [&](size_t k) { return k < bytes.size() ? static_cast<unsigned char>(bytes[k]) : 0U; };
        const unsigned group = at(i) << 16 | at(i + 1) << 8 | at(i + 2);
        text += kDigits64[group >> 18];
        text += kDigits64[group >> 12 & 63];
        text += i + 1 < bytes.size() ? kDigits64[group >> 6 & 63] : '=';
        text += i + 2 < bytes.size() ? kDigits64[group & 63] : '=';
    }
    return text;
}

std::string Base64Decode(std::string_view text) {
    static const std::array<signed char, 256> values = [] {
        std::array<signed char, 256> table{};
        table.fill(-1);
        for (size_t i = 0; i < kDigits64.size(); ++i) {
            table[static_cast<unsigned char>(kDigits64[i])] = static_cast<signed char>(i);
        }
        return table;
    }();
    if (text.size() % 4 != 0) {
        throw std::runtime_error("not base64: the length is no multiple of four");
    }
    const size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    unsigned group = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const int value = i >= text.size() - padding ? 0 : values[static_cast<unsigned char>(text[i])];
        if (value < 0) {
            throw std::runtime_error("not base64: a wrong character at position " + std::to_string(i));
        }
        group = group << 6 | static_cast<unsigned>(value);
        if (i % 4 == 3) {
            bytes += static_cast<char>(group >> 16 & 255);
            bytes += static_cast<char>(group >> 8 & 255);
            bytes += static_cast<char>(group & 255);
        }
    }
    bytes.resize(bytes.size() - padding);
    return bytes;
}

std::wstring PlainTextOf(std::wstring_view html) {
    std::wstring plain;
    bool blank = true; // white space runs together, and none starts a line
    for (size_t i = 0; i < html.size();) {
        if (html[i] == L'<') {
            const bool comment = html.substr(i).starts_with(L"<!--");
            const size_t close = comment ? html.find(L"-->", i) : html.find(L'>', i);
            if (close == std::wstring_view::npos) {
                break;
            }
            const std::wstring inside = Lower(html.substr(i + 1, std::min(close - i - 1, size_t{32})));
            const std::wstring tag = inside.substr(0, inside.find_first_of(L" \t\r\n/>", 1));
            i = close + (comment ? 3 : 1);
            if (tag == L"style" || tag == L"script" || tag == L"title") {
                const size_t end = Lower(html.substr(i)).find(L"</" + tag);
                i = end == std::wstring::npos ? html.size() : i + end;
            } else if (BreaksLine(tag)) {
                plain += L"\r\n";
                blank = true;
            }
        } else if (std::wcschr(L" \t\r\n", html[i]) != nullptr && html[i] != L'\0') {
            plain += blank ? L"" : L" ";
            blank = true;
            ++i;
        } else if (html[i] == L'&') {
            i += AppendEntity(plain, html.substr(i));
            blank = false;
        } else {
            plain += html[i++];
            blank = false;
        }
    }
    return plain;
}

std::wstring HtmlOf(std::wstring_view text) {
    std::wstring html = L"<html><body><p>";
    for (const wchar_t c : text) {
        switch (c) {
        case L'&':
            html += L"&amp;";
            break;
        case L'<':
            html += L"&lt;";
            break;
        case L'>':
            html += L"&gt;";
            break;
        case L'\r':
            break;
        case L'\n':
            html += L"<br>\r\n";
            break;
        default:
            html += c;
        }
    }
    return html + L"</p></body></html>";
}

std::wstring NormalizedSubject(std::wstring_view subject) {
    const size_t colon = subject.find(L": ");
    if (colon == std::wstring_view::npos || colon == 0 || colon > 3 ||
        !std::all_of(subject.begin(), subject.begin() + static_cast<std::ptrdiff_t>(colon),
                     [](wchar_t c) { return std::iswalpha(c) != 0; })) {
        return std::wstring(subject);
    }
    return std::wstring(subject.substr(colon + 2));
}

std::wstring Hex(long value) {
    wchar_t text[16];
    _snwprintf(text, std::size(text), L"0x%08lX", static_cast<unsigned long>(value));
    return text;
}

std::wstring HexOf(std::string_view bytes) {
    std::wstring digits;
    for (const char byte : bytes) {
        digits += L"0123456789ABCDEF"[static_cast<unsigned char>(byte) >> 4];
        digits += L"0123456789ABCDEF"[static_cast<unsigned char>(byte) & 15];
    }
    return digits;
}

} // namespace stand_ins
