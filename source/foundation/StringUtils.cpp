#include "foundation/StringUtils.h"

#include <algorithm>
#include <climits>
#include <cwctype>

#include "foundation/Throw.h"

namespace vorlek {

namespace {

void Narrow_(std::wstring_view wide, std::string& narrow, UINT codePage, ThrowSite site) {
    if (wide.size() > INT_MAX) {
        Throw(site, L"Invalid size!");
    }
    const int length = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(codePage, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        Throw(site, L"Invalid size!");
    }
    narrow.resize(static_cast<std::size_t>(size));
    WideCharToMultiByte(codePage, 0, wide.data(), length, narrow.data(), size, nullptr, nullptr);
}

/// A piece of a text at a time, so that the memory of the result is not filled before it is written.
void AppendUtf8_(std::wstring_view wide, std::string& utf8, ThrowSite site) {
    constexpr std::size_t piece = 4096;
    char bytes[3 * piece]; // no unit makes more
    utf8.reserve(wide.size());
    while (!wide.empty()) {
        std::size_t length = std::min(wide.size(), piece);
        if (length < wide.size() && length > 1 && IS_HIGH_SURROGATE(wide[length - 1])) {
            --length; // it stays with its other half
        }
        const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(length), bytes, sizeof(bytes),
                                             nullptr, nullptr);
        if (size <= 0) {
            Throw(site, L"Invalid size!");
        }
        utf8.append(bytes, static_cast<std::size_t>(size));
        wide.remove_prefix(length);
    }
}

void Widen_(std::string_view narrow, std::wstring& wide, UINT codePage, ThrowSite site) {
    if (narrow.size() > INT_MAX) {
        Throw(site, L"Invalid size!");
    }
    const int length = static_cast<int>(narrow.size());
    std::wstring text(narrow.size(), L'\0'); // no code page makes more characters than it has bytes
    const int size = MultiByteToWideChar(codePage, 0, narrow.data(), length, text.data(), length);
    if (size <= 0) {
        Throw(site, L"Invalid size!");
    }
    text.resize(static_cast<std::size_t>(size));
    wide = std::move(text);
}

template <class T>
bool Equal_(std::basic_string_view<T> left, std::basic_string_view<T> right, bool ignoreCase,
            const std::locale& locale) {
    if (!ignoreCase) {
        return left == right;
    }
    const StringUtils::CharCompare<T> same(locale);
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](T first, T second) { return same(first, second); });
}

template <class T>
bool StartsWith_(std::basic_string_view<T> text, std::basic_string_view<T> prefix, bool ignoreCase,
                 const std::locale& locale) {
    return text.size() >= prefix.size() && Equal_(text.substr(0, prefix.size()), prefix, ignoreCase, locale);
}

template <class T>
bool EndsWith_(std::basic_string_view<T> text, std::basic_string_view<T> suffix, bool ignoreCase,
               const std::locale& locale) {
    return text.size() >= suffix.size() && Equal_(text.substr(text.size() - suffix.size()), suffix, ignoreCase, locale);
}

template <class T>
std::basic_string<T> Replace_(std::basic_string_view<T> text, std::basic_string_view<T> from,
                              std::basic_string_view<T> to) {
    std::basic_string<T> result;
    std::size_t done = 0;
    if (!from.empty()) {
        for (std::size_t found; (found = text.find(from, done)) != text.npos; done = found + from.size()) {
            result.append(text, done, found - done).append(to);
        }
    }
    return result.append(text, done);
}

template <class T>
std::basic_string_view<T> TrimLeft_(std::basic_string_view<T> text, std::basic_string_view<T> characters) {
    text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
    return text;
}

template <class T>
std::basic_string_view<T> TrimRight_(std::basic_string_view<T> text, std::basic_string_view<T> characters) {
    return text.substr(0, text.find_last_not_of(characters) + 1); // npos + 1 is 0
}

} // namespace

void StringUtils::WString2String(const std::wstring& wide, std::string& narrow, UINT codePage) {
    if (!wide.empty()) {
        Narrow_(wide, narrow, codePage, L"vorlek::StringUtils::WString2String");
    }
}

void StringUtils::String2WString(const std::string& narrow, std::wstring& wide, UINT codePage) {
    if (!narrow.empty()) {
        Widen_(narrow, wide, codePage, L"vorlek::StringUtils::String2WString");
    }
}

std::string StringUtils::ToUtf8(std::wstring_view wide) {
    std::string utf8;
    AppendUtf8_(wide, utf8, L"vorlek::StringUtils::WString2String");
    return utf8;
}

std::wstring StringUtils::FromUtf8(std::string_view utf8) {
    std::wstring wide;
    if (!utf8.empty()) {
        Widen_(utf8, wide, CP_UTF8, L"vorlek::StringUtils::FromUtf8");
    }
    return wide;
}

void StringUtils::ToLower(std::string& text) {
    std::ranges::transform(text, text.begin(),
                           [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
}

void StringUtils::ToLower(std::wstring& text) {
    std::ranges::transform(text, text.begin(), [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
}

void StringUtils::ToUpper(std::string& text) {
    std::ranges::transform(text, text.begin(),
                           [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
}

void StringUtils::ToUpper(std::wstring& text) {
    std::ranges::transform(text, text.begin(), [](wchar_t c) { return static_cast<wchar_t>(std::towupper(c)); });
}

bool StringUtils::StartsWith(std::string_view text, std::string_view prefix, bool ignoreCase,
                             const std::locale& locale) {
    return StartsWith_(text, prefix, ignoreCase, locale);
}

bool StringUtils::StartsWith(std::wstring_view text, std::wstring_view prefix, bool ignoreCase,
                             const std::locale& locale) {
    return StartsWith_(text, prefix, ignoreCase, locale);
}

bool StringUtils::EndsWith(std::string_view text, std::string_view suffix, bool ignoreCase, const std::locale& locale) {
    return EndsWith_(text, suffix, ignoreCase, locale);
}

bool StringUtils::EndsWith(std::wstring_view text, std::wstring_view suffix, bool ignoreCase,
                           const std::locale& locale) {
    return EndsWith_(text, suffix, ignoreCase, locale);
}

std::string StringUtils::Replace(std::string_view text, std::string_view from, std::string_view to) {
    return Replace_(text, from, to);
}

std::wstring StringUtils::Replace(std::wstring_view text, std::wstring_view from, std::wstring_view to) {
    return Replace_(text, from, to);
}

std::string StringUtils::TrimLeft(std::string_view text, std::string_view characters) {
    return std::string(TrimLeft_(text, characters));
}

std::wstring StringUtils::TrimLeft(std::wstring_view text, std::wstring_view characters) {
    return std::wstring(TrimLeft_(text, characters));
}

std::string StringUtils::TrimRight(std::string_view text, std::string_view characters) {
    return std::string(TrimRight_(text, characters));
}

std::wstring StringUtils::TrimRight(std::wstring_view text, std::wstring_view characters) {
    return std::wstring(TrimRight_(text, characters));
}

std::string StringUtils::Trim(std::string_view text, std::string_view characters) {
    return std::string(TrimLeft_(TrimRight_(text, characters), characters));
}

std::wstring StringUtils::Trim(std::wstring_view text, std::wstring_view characters) {
    return std::wstring(TrimLeft_(TrimRight_(text, characters), characters));
}

} // namespace vorlek
