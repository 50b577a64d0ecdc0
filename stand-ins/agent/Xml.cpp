#include "stand-ins/agent/Xml.h"

#include <algorithm>
#include <cwchar>
#include <map>
#include <stdexcept>

#include "platform/Windows.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

constexpr std::wstring_view kSpace = L" \t\r\n";
constexpr std::wstring_view kCharacters = L"<![CDATA[";
/// Deeper levels are not indented further.
constexpr std::size_t kDeepest = 20;
constexpr const char* kOutside = "text outside the element at the top";

bool IsSpace_(wchar_t c) {
    return kSpace.find(c) != std::wstring_view::npos;
}

/// The first place that holds no character of XML 1.0: a control character, half a surrogate, U+FFFE or U+FFFF.
std::size_t FindForbidden_(std::wstring_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (IS_HIGH_SURROGATE(c) && i + 1 < text.size() && IS_LOW_SURROGATE(text[i + 1])) {
            ++i;
        } else if (IS_HIGH_SURROGATE(c) || IS_LOW_SURROGATE(c) || c >= 0xFFFE || (c < L' ' && !IsSpace_(c))) {
            return i;
        }
    }
    return std::wstring_view::npos;
}

} // namespace

XmlReader::XmlReader(std::wstring_view text, const char* what) : text_(text), what_(what) {
    const std::size_t forbidden = FindForbidden_(text_);
    if (forbidden != std::wstring_view::npos) {
        at_ = forbidden;
        Fail("no character of XML: " + std::to_string(static_cast<unsigned>(text_[forbidden])));
    }
}

std::optional<XmlReader::Tag> XmlReader::Next(std::wstring& data) {
    while (at_ < text_.size()) {
        if (text_[at_] != L'<' || Starts_(kCharacters)) {
            ReadData_(data);
        } else if (Starts_(L"<?")) {
            SkipBehind_(L"?>");
        } else if (Starts_(L"<!--")) {
            SkipBehind_(L"-->");
        } else {
            Tag tag = ReadTag_();
            Nest_(tag);
            return tag;
        }
    }
    if (!open_.empty()) {
        Fail("<" + ToUtf8(open_.back()) + "> is not closed");
    }
    return std::nullopt;
}

const std::wstring& XmlReader::Attribute(const Tag& tag, const wchar_t* name) const {
    const auto found = std::ranges::find(tag.attributes, name, &std::pair<std::wstring, std::wstring>::first);
    if (found == tag.attributes.end()) {
        Fail("<" + ToUtf8(tag.name) + "> has no \"" + ToUtf8(name) + "\"");
    }
    return found->second;
}

void XmlReader::Fail(const std::string& why) const {
    throw std::runtime_error(std::string("malformed ") + what_ + " at character " + std::to_string(at_) + ": " + why);
}

bool XmlReader::Starts_(std::wstring_view with) const {
    return text_.substr(at_).starts_with(with);
}

/// What stands before the end mark.
std::wstring_view XmlReader::SkipBehind_(std::wstring_view end) {
    const std::size_t found = text_.find(end, at_);
    if (found == std::wstring_view::npos) {
        Fail('"' + ToUtf8(end) + "\" is missing");
    }
    const std::wstring_view before = text_.substr(at_, found - at_);
    at_ = found + end.size();
    return before;
}

void XmlReader::SkipSpace_() {
    at_ = std::min(text_.find_first_not_of(kSpace, at_), text_.size());
}

bool XmlReader::Take_(std::wstring_view expected) {
    const bool isThere = Starts_(expected);
    at_ += isThere ? expected.size() : 0;
    return isThere;
}

std::wstring XmlReader::ReadName_() {
    const std::size_t end = std::min(text_.find_first_of(L" \t\r\n/>=<\"'&!", at_), text_.size());
    if (end == at_) {
        Fail("a name is missing");
    }
    std::wstring name(text_.substr(at_, end - at_));
    at_ = end;
    return name;
}

XmlReader::Tag XmlReader::ReadTag_() {
    if (Starts_(L"<!")) {
        Fail("a type definition");
    }
    Tag tag;
    tag.isEnd = Take_(L"</") || !Take_(L"<");
    tag.name = ReadName_();
    for (SkipSpace_(); !Take_(L">"); SkipSpace_()) {
        if (tag.isEnd) {
            Fail("an end with more than its name");
        }
        if (Take_(L"/>")) {
            tag.isEmpty = true;
            break;
        }
        ReadAttribute_(tag);
    }
    return tag;
}

void XmlReader::ReadAttribute_(Tag& tag) {
    std::wstring name = ReadName_();
    if (std::ranges::count(tag.attributes, name, &std::pair<std::wstring, std::wstring>::first) != 0) {
        Fail("an attribute stands twice");
    }
    SkipSpace_();
    if (!Take_(L"=")) {
        Fail("an attribute without a value");
    }
    SkipSpace_();
    const bool isQuoted = Starts_(L"\"") || Starts_(L"'");
    const std::size_t end = isQuoted ? text_.find(text_[at_], at_ + 1) : std::wstring_view::npos;
    if (end == std::wstring_view::npos) {
        Fail("a quotation mark is missing");
    }
    const std::wstring_view value = text_.substr(at_ + 1, end - at_ - 1);
    if (value.find(L'<') != std::wstring_view::npos) {
        Fail("a \"<\" in an attribute");
    }
    AppendDecoded_(tag.attributes.emplace_back(std::move(name), std::wstring()).second, value);
    at_ = end + 1;
}

/// Keeps account of the elements that are open.
void XmlReader::Nest_(const Tag& tag) {
    if (tag.isEnd) {
        if (open_.empty() || open_.back() != tag.name) {
            Fail("</" + ToUtf8(tag.name) + "> closes nothing");
        }
        open_.pop_back();
        return;
    }
    if (open_.empty() && hasRoot_) {
        Fail("a second element at the top");
    }
    hasRoot_ = true;
    if (!tag.isEmpty) {
        open_.push_back(tag.name);
    }
}

/// Character data, up to the next markup.
void XmlReader::ReadData_(std::wstring& data) {
    if (Take_(kCharacters)) {
        if (open_.empty()) {
            Fail(kOutside);
        }
        data.append(SkipBehind_(L"]]>"));
        return;
    }
    const std::size_t end = std::min(text_.find(L'<', at_), text_.size());
    const std::wstring_view text = text_.substr(at_, end - at_);
    if (!open_.empty()) {
        AppendDecoded_(data, text);
    } else if (text.find_first_not_of(kSpace) != std::wstring_view::npos) {
        Fail(kOutside);
    }
    at_ = end;
}

void XmlReader::AppendDecoded_(std::wstring& to, std::wstring_view text) const {
    to.reserve(to.size() + text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'&') {
            const std::size_t end = text.find(L';', i);
            if (end == std::wstring_view::npos) {
                Fail("a reference without its end");
            }
            AppendReference_(to, text.substr(i + 1, end - i - 1));
            i = end;
        } else if (text[i] == L'\r') {
            // Line ends are one line feed each.
            if (i + 1 == text.size() || text[i + 1] != L'\n') {
                to += L'\n';
            }
        } else {
            to += text[i];
        }
    }
}

void XmlReader::AppendReference_(std::wstring& to, std::wstring_view name) const {
    static const std::map<std::wstring_view, wchar_t> named = {
        {L"amp", L'&'}, {L"lt", L'<'}, {L"gt", L'>'}, {L"quot", L'"'}, {L"apos", L'\''}};
    if (const auto found = named.find(name); found != named.end()) {
        to += found->second;
        return;
    }
    const bool isHex = name.starts_with(L"#x");
    const std::wstring digits(name.substr(std::min<std::size_t>(isHex ? 2 : 1, name.size())));
    const bool isNumber = name.starts_with(L'#') && !digits.empty() &&
                          digits.find_first_not_of(isHex ? L"0123456789abcdefABCDEF" : L"0123456789") == digits.npos;
    const unsigned long code = isNumber ? std::wcstoul(digits.c_str(), nullptr, isHex ? 16 : 10) : 0;
    // A control character may be referred to: the documents of mails are written so.
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        Fail("an unknown reference");
    }
    if (code > 0xFFFF) {
        to += static_cast<wchar_t>(0xD7C0 + (code >> 10));
        to += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
    } else {
        to += static_cast<wchar_t>(code);
    }
}

namespace {

std::wstring Opening_(const XmlReader::Tag& tag) {
    std::wstring text = L"<" + tag.name;
    for (const auto& [name, value] : tag.attributes) {
        text += L" " + name + L"=\"" + Escape(value) + L"\"";
    }
    return text + (tag.isEmpty ? L" />" : L">");
}

} // namespace

std::string Indented(std::wstring_view xml, const char* what) {
    XmlReader reader(xml, what);
    std::wstring text = L"<?xml version=\"1.0\" encoding=\"utf-8\"?>";
    std::wstring data;
    std::size_t depth = 0;
    bool isLeaf = false;
    while (const auto tag = reader.Next(data)) {
        depth -= tag->isEnd ? 1 : 0;
        const std::wstring line = L"\n" + std::wstring(2 * std::min(depth, kDeepest), L' ');
        // The white space of a document that is indented already is not doubled.
        if ((tag->isEnd && isLeaf) || data.find_first_not_of(kSpace) != std::wstring::npos) {
            text += Escape(data);
        }
        text += tag->isEnd ? (isLeaf ? L"" : line) + L"</" + tag->name + L">" : line + Opening_(*tag);
        isLeaf = !tag->isEnd && !tag->isEmpty;
        depth += isLeaf ? 1 : 0;
        data.clear();
    }
    // On the wire "#" is written as a reference; here nothing can be taken for a delimiter.
    return ToUtf8(ReplaceAll(std::move(text), L"&#35;", L"#")) + "\n";
}

} // namespace stand_ins::agent
