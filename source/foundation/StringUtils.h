#pragma once
#include <locale>
#include <string>
#include <string_view>

#include "platform/Windows.h"

namespace vorlek {

/// Text handling. Template operations come for char and wchar_t.
class StringUtils {
public:
    /// Equality of characters after case folding by a locale.
    template <class T>
    class CharCompare {
    public:
        explicit CharCompare(const std::locale& locale)
            : locale_(locale), facet_(&std::use_facet<std::ctype<T>>(locale_)) {}
        // The facet belongs to the locale of this very object.
        CharCompare(const CharCompare& other) : CharCompare(other.locale_) {}
        CharCompare& operator=(const CharCompare&) = delete;
        virtual ~CharCompare() = default;

        bool operator()(T left, T right) const { return facet_->tolower(left) == facet_->tolower(right); }

    private:
        std::locale locale_;
        const std::ctype<T>* facet_;
    };

    /// An empty input leaves the output as it is. Raises Exception when the system cannot convert.
    static void WString2String(const std::wstring& wide, std::string& narrow, UINT codePage);
    static void String2WString(const std::string& narrow, std::wstring& wide, UINT codePage = CP_ACP);

    /// UTF-8; an empty input gives an empty result. Ill-formed input becomes U+FFFD.
    static std::string ToUtf8(std::wstring_view wide);
    static std::wstring FromUtf8(std::string_view utf8);

    /// In place.
    static void ToLower(std::string& text);
    static void ToLower(std::wstring& text);
    static void ToUpper(std::string& text);
    static void ToUpper(std::wstring& text);

    static bool StartsWith(std::string_view text, std::string_view prefix, bool ignoreCase = false,
                           const std::locale& locale = std::locale());
    static bool StartsWith(std::wstring_view text, std::wstring_view prefix, bool ignoreCase = false,
                           const std::locale& locale = std::locale());
    static bool EndsWith(std::string_view text, std::string_view suffix, bool ignoreCase = false,
                         const std::locale& locale = std::locale());
    static bool EndsWith(std::wstring_view text, std::wstring_view suffix, bool ignoreCase = false,
                         const std::locale& locale = std::locale());

    /// Every occurrence of `from`, found left to right, becomes `to`; an empty `from` occurs nowhere.
    static std::string Replace(std::string_view text, std::string_view from, std::string_view to);
    static std::wstring Replace(std::wstring_view text, std::wstring_view from, std::wstring_view to);

    /// A copy without the characters of the set at the left, the right, or both ends.
    static std::string TrimLeft(std::string_view text, std::string_view characters);
    static std::wstring TrimLeft(std::wstring_view text, std::wstring_view characters);
    static std::string TrimRight(std::string_view text, std::string_view characters);
    static std::wstring TrimRight(std::wstring_view text, std::wstring_view characters);
    static std::string Trim(std::string_view text, std::string_view characters);
    static std::wstring Trim(std::wstring_view text, std::wstring_view characters);
};

} // namespace vorlek
