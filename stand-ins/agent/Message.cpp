#include "stand-ins/agent/Message.h"

#include <algorithm>
#include <cwchar>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

/// A reader of as much XML as a message may hold: elements, attributes, text, references, CDATA, comments.
class Reader_ {
public:
    struct Tag {
        std::wstring name;
        std::map<std::wstring, std::wstring> attributes;
        bool isEnd = false;
        bool isEmpty = false;
    };

    explicit Reader_(std::wstring_view text) : text_(text) {
        if (text_.starts_with(L'\xFEFF')) {
            at_ = 1;
        }
    }

    /// The next tag; the character data before it is appended to `data`. Nothing at the end of the text.
    std::optional<Tag> Next(std::wstring& data) {
        while (at_ < text_.size()) {
            if (text_[at_] != L'<') {
                const std::size_t end = std::min(text_.find(L'<', at_), text_.size());
                AppendDecoded_(data, text_.substr(at_, end - at_));
                at_ = end;
            } else if (Starts_(L"<?")) {
                Skip_(L"?>");
            } else if (Starts_(L"<!--")) {
                Skip_(L"-->");
            } else if (Starts_(L"<![CDATA[")) {
                const std::size_t begin = at_ + 9;
                Skip_(L"]]>");
                data.append(text_.substr(begin, at_ - 3 - begin));
            } else {
                return ReadTag_();
            }
        }
        return std::nullopt;
    }

    [[noreturn]] void Fail(const std::string& what) const {
        throw std::runtime_error("malformed message at character " + std::to_string(at_) + ": " + what);
    }

private:
    static bool IsSpace_(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n'; }

    bool Starts_(std::wstring_view with) const { return text_.substr(at_).starts_with(with); }

    void Skip_(std::wstring_view end) {
        const std::size_t found = text_.find(end, at_);
        if (found == std::wstring_view::npos) {
            Fail('"' + ToUtf8(end) + "\" is missing");
        }
        at_ = found + end.size();
    }

    void SkipSpace_() {
        while (at_ < text_.size() && IsSpace_(text_[at_])) {
            ++at_;
        }
    }

    bool Take_(std::wstring_view expected) {
        const bool isThere = Starts_(expected);
        at_ += isThere ? expected.size() : 0;
        return isThere;
    }

    std::wstring ReadName_() {
        const std::size_t begin = at_;
        while (at_ < text_.size() && !IsSpace_(text_[at_]) &&
               std::wstring_view(L"/>=<\"'").find(text_[at_]) == std::wstring_view::npos) {
            ++at_;
        }
        if (at_ == begin) {
            Fail("a name is missing");
        }
        return std::wstring(text_.substr(begin, at_ - begin));
    }

    Tag ReadTag_() {
        Tag tag;
        tag.isEnd = Take_(L"</") || !Take_(L"<");
        tag.name = ReadName_();
        for (SkipSpace_(); !Take_(L">"); SkipSpace_()) {
            if (Take_(L"/>")) {
                tag.isEmpty = true;
                break;
            }
            const std::wstring name = ReadName_();
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
            AppendDecoded_(tag.attributes[name], text_.substr(at_ + 1, end - at_ - 1));
            at_ = end + 1;
        }
        return tag;
    }

    void AppendDecoded_(std::wstring& to, std::wstring_view text) const {
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

    void AppendReference_(std::wstring& to, std::wstring_view name) const {
        static const std::map<std::wstring_view, wchar_t> named = {
            {L"amp", L'&'}, {L"lt", L'<'}, {L"gt", L'>'}, {L"quot", L'"'}, {L"apos", L'\''}};
        if (const auto found = named.find(name); found != named.end()) {
            to += found->second;
            return;
        }
        const bool isHex = name.starts_with(L"#x");
        const std::wstring digits(name.substr(std::min<std::size_t>(isHex ? 2 : 1, name.size())));
        wchar_t* end = nullptr;
        const unsigned long code = std::wcstoul(digits.c_str(), &end, isHex ? 16 : 10);
        if (!name.starts_with(L'#') || digits.empty() || *end != L'\0' || code == 0 || code > 0x10FFFF) {
            Fail("an unknown reference");
        }
        if (code > 0xFFFF) {
            to += static_cast<wchar_t>(0xD7C0 + (code >> 10));
            to += static_cast<wchar_t>(0xDC00 + (code & 0x3FF));
        } else {
            to += static_cast<wchar_t>(code);
        }
    }

    std::wstring_view text_;
    std::size_t at_ = 0;
};

const std::wstring& Attribute_(const Reader_& reader, const Reader_::Tag& tag, const wchar_t* name) {
    const auto found = tag.attributes.find(name);
    if (found == tag.attributes.end()) {
        reader.Fail("<" + ToUtf8(tag.name) + "> has no \"" + ToUtf8(name) + "\"");
    }
    return found->second;
}

std::uint32_t Number_(const Reader_& reader, const std::wstring& text) {
    wchar_t* end = nullptr;
    const bool isHex = text.starts_with(L"0x") || text.starts_with(L"0X");
    const unsigned long number = std::wcstoul(text.c_str() + (isHex ? 2 : 0), &end, isHex ? 16 : 10);
    if (text.empty() || *end != L'\0') {
        reader.Fail('"' + ToUtf8(text) + "\" is no number");
    }
    return static_cast<std::uint32_t>(number);
}

std::size_t SizeOf_(const MessageEntry& entry) {
    if (entry.tag != L"byte[]") {
        return entry.value.size() * 2;
    }
    const auto padding = static_cast<std::size_t>(std::ranges::count(entry.value, L'='));
    return entry.value.size() / 4 * 3 - padding;
}

} // namespace

WireMessage WireMessage::FromText(std::wstring_view text) {
    Reader_ reader(text);
    std::wstring data;
    const auto root = reader.Next(data);
    if (!root || root->isEnd || root->name != L"Msg") {
        reader.Fail("it does not begin with <Msg>");
    }
    WireMessage message;
    message.type = Attribute_(reader, *root, L"type");
    if (message.type != L"Request" && message.type != L"Response" && message.type != L"Error" &&
        message.type != L"Test") {
        reader.Fail('"' + ToUtf8(message.type) + "\" is no type of message");
    }
    message.pid = Number_(reader, Attribute_(reader, *root, L"pid"));
    if (Number_(reader, Attribute_(reader, *root, L"version")) != 1) {
        reader.Fail("only version 1 is known");
    }
    bool isOpen = !root->isEmpty;
    while (isOpen) {
        data.clear();
        const auto tag = reader.Next(data);
        if (!tag) {
            reader.Fail("<Msg> is not closed");
        }
        if (tag->isEnd) {
            isOpen = tag->name != L"Msg";
        } else if (tag->name == L"Key") {
            Number_(reader, Attribute_(reader, *tag, L"size"));
            MessageEntry& entry = message.entries[Attribute_(reader, *tag, L"name")];
            entry = {{}, Attribute_(reader, *tag, L"type")};
            if (!tag->isEmpty) {
                const auto end = reader.Next(entry.value);
                if (!end || !end->isEnd || end->name != L"Key") {
                    reader.Fail("<Key> is not closed");
                }
            }
        }
    }
    return message;
}

std::wstring WireMessage::ToText() const {
    std::wostringstream text;
    text << L"<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n<Msg version=\"1\" type=\"" << type << L"\" pid=\"" << pid
         << L"\">\r\n";
    for (const auto& [name, entry] : entries) {
        text << L"  <Key name=\"" << Escape(name) << L"\" type=\"" << entry.tag << L"\" size=\"" << SizeOf_(entry)
             << L"\" hidden=\"0\">" << Escape(entry.value) << L"</Key>\r\n";
    }
    text << L"</Msg>";
    return std::move(text).str();
}

std::wstring WireMessage::Value(const std::wstring& name) const {
    const auto found = entries.find(name);
    return found == entries.end() ? std::wstring() : found->second.value;
}

// A code unit lies in this machine's memory as it does on the wire.
std::string ToWire(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

std::wstring FromWire(std::string_view bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::copy_n(bytes.data(), text.size() * sizeof(wchar_t), reinterpret_cast<char*>(text.data()));
    return text;
}

} // namespace stand_ins::agent
