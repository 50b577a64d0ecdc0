#include "stand-ins/agent/Label.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

constexpr std::string_view kMark = "\xFF\xFE";

std::wstring TextOf_(std::string_view bytes) {
    bytes.remove_prefix(bytes.starts_with(kMark) ? kMark.size() : 0);
    if (bytes.size() % 2 != 0) {
        throw std::runtime_error("a body file of UTF-16 has an odd number of bytes");
    }
    return FromWire(bytes);
}

std::wstring LabelPlain_(std::wstring_view body, std::wstring_view before, std::wstring_view after) {
    const auto lines = [](std::wstring_view text) { return ReplaceAll(std::wstring(text), L"\n", L"\r\n"); };
    std::wstring labelled;
    labelled += before.empty() ? L"" : lines(before) + L"\r\n\r\n";
    labelled += body;
    labelled += after.empty() ? L"" : L"\r\n\r\n" + lines(after) + L"\r\n";
    return labelled;
}

/// The place behind the first tag of this name, comments passed over; npos if there is none.
std::size_t BehindTag_(const std::wstring& lower, std::wstring_view opening) {
    for (std::size_t at = lower.find(L'<'); at != std::wstring::npos; at = lower.find(L'<', at + 1)) {
        if (lower.compare(at, 4, L"<!--") == 0) {
            at = lower.find(L"-->", at);
            if (at == std::wstring::npos) {
                return at;
            }
            continue;
        }
        const std::size_t end = at + opening.size();
        if (lower.compare(at, opening.size(), opening) != 0 || end >= lower.size() ||
            std::wstring_view(L" \t\r\n/>").find(lower[end]) == std::wstring_view::npos) {
            continue;
        }
        wchar_t quote = L'\0';
        for (std::size_t i = end; i < lower.size(); ++i) {
            if (quote == L'\0' && lower[i] == L'>') {
                return i + 1;
            }
            if (quote == L'\0' && (lower[i] == L'"' || lower[i] == L'\'')) {
                quote = lower[i];
            } else if (lower[i] == quote) {
                quote = L'\0';
            }
        }
    }
    return std::wstring::npos;
}

std::wstring LabelHtml_(std::wstring body, std::wstring_view before, std::wstring_view after) {
    const auto paragraph = [](std::wstring_view text) {
        return text.empty() ? std::wstring() : L"<p>" + ReplaceAll(Escape(text), L"\n", L"<br>") + L"</p>";
    };
    const std::wstring lower = Lower(body);
    std::size_t begin = BehindTag_(lower, L"<body");
    if (begin == std::wstring::npos) {
        begin = BehindTag_(lower, L"<html");
    }
    begin = begin == std::wstring::npos ? 0 : begin;
    std::size_t end = lower.rfind(L"</body");
    if (end == std::wstring::npos) {
        end = lower.rfind(L"</html");
    }
    end = end == std::wstring::npos || end < begin ? body.size() : end;
    body.insert(end, paragraph(after));
    body.insert(begin, paragraph(before));
    return body;
}

/// Text as RTF has it: its own characters escaped, all beyond ASCII as \uN with a question mark for old readers.
std::string RichText_(std::wstring_view text) {
    std::string rich;
    for (const wchar_t c : text) {
        if (c == L'\n') {
            rich += "\\line ";
        } else if (c == L'\\' || c == L'{' || c == L'}') {
            rich += '\\';
            rich += static_cast<char>(c);
        } else if (c > 0x7E) {
            rich += "\\u" + std::to_string(static_cast<std::int16_t>(c)) + "?";
        } else if (c >= 0x20) {
            rich += static_cast<char>(c);
        }
    }
    return rich;
}

/// Where the document's own text begins: its first \pard outside the tables of the header, or else the end of the
/// header's last group. Where it ends: the last brace.
struct RichBounds_ {
    std::size_t begin = std::string_view::npos;
    std::size_t end = std::string_view::npos;
};

RichBounds_ FindRichBounds_(std::string_view bytes) {
    RichBounds_ bounds;
    std::size_t behindHeader = std::string_view::npos;
    int depth = 0;
    for (std::size_t at = 0; at < bytes.size() && bounds.end == std::string_view::npos; ++at) {
        if (bytes[at] == '\\') {
            if (depth == 1 && bounds.begin == std::string_view::npos && bytes.substr(at).starts_with("\\pard")) {
                bounds.begin = at;
            }
            ++at; // the next character is escaped, or the first letter of a control word
        } else if (bytes[at] == '{') {
            ++depth;
        } else if (bytes[at] == '}' && --depth == 0) {
            bounds.end = at;
        } else if (bytes[at] == '}' && depth == 1 && bounds.begin == std::string_view::npos) {
            behindHeader = at + 1;
        }
    }
    if (bounds.begin == std::string_view::npos) {
        bounds.begin = behindHeader == std::string_view::npos ? bounds.end : behindHeader;
    }
    return bounds;
}

std::string LabelRich_(std::string_view bytes, std::wstring_view before, std::wstring_view after) {
    const RichBounds_ bounds = FindRichBounds_(bytes);
    if (!bytes.starts_with("{\\rtf") || bounds.end == std::string_view::npos) {
        throw std::runtime_error("a body file with the extension \"rtf\" is no RTF");
    }
    const auto paragraph = [](std::wstring_view text, const char* opening, const char* closing) {
        return text.empty() ? std::string() : opening + RichText_(text) + closing;
    };
    std::string labelled(bytes);
    labelled.insert(bounds.end, paragraph(after, "\\par\\pard ", "\\par"));
    labelled.insert(bounds.begin, paragraph(before, "\\pard ", "\\par\r\n"));
    return labelled;
}

} // namespace

BodyForm BodyFormOf(std::wstring_view path) {
    const std::wstring extension = Lower(Extension(path));
    if (extension == L"txt") {
        return BodyForm::Plain;
    }
    if (extension == L"html" || extension == L"htm") {
        return BodyForm::Html;
    }
    if (extension == L"rtf") {
        return BodyForm::Rich;
    }
    throw std::runtime_error("a body file is neither txt, html nor rtf: \"" + ToUtf8(path) + "\"");
}

std::string LabelBody(std::string_view bytes, BodyForm form, std::wstring_view before, std::wstring_view after) {
    switch (form) {
    case BodyForm::Plain:
        return std::string(kMark) + ToWire(LabelPlain_(TextOf_(bytes), before, after));
    case BodyForm::Html:
        return ToWire(LabelHtml_(TextOf_(bytes), before, after));
    case BodyForm::Rich:
        break;
    }
    return LabelRich_(bytes, before, after);
}

} // namespace stand_ins::agent
