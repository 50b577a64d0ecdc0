#include "stand-ins/agent/Message.h"

#include <algorithm>
#include <cwchar>
#include <sstream>
#include <utility>

#include "stand-ins/agent/Text.h"
#include "stand-ins/agent/Xml.h"

namespace stand_ins::agent {
namespace {

std::uint32_t Number_(const XmlReader& reader, const std::wstring& text) {
    const bool isHex = text.starts_with(L"0x") || text.starts_with(L"0X");
    const std::wstring digits = text.substr(isHex ? 2 : 0);
    if (digits.empty() || digits.find_first_not_of(isHex ? L"0123456789abcdefABCDEF" : L"0123456789") != digits.npos) {
        reader.Fail('"' + ToUtf8(text) + "\" is no number");
    }
    return static_cast<std::uint32_t>(std::wcstoul(digits.c_str(), nullptr, isHex ? 16 : 10));
}

WireMessage ReadRoot_(const XmlReader& reader, const XmlReader::Tag& root) {
    WireMessage message;
    message.type = reader.Attribute(root, L"type");
    if (message.type != L"Request" && message.type != L"Response" && message.type != L"Error" &&
        message.type != L"Test") {
        reader.Fail('"' + ToUtf8(message.type) + "\" is no type of message");
    }
    message.pid = Number_(reader, reader.Attribute(root, L"pid"));
    message.version = reader.Attribute(root, L"version");
    if (Number_(reader, message.version) != 1) {
        reader.Fail("only version 1 is known");
    }
    return message;
}

} // namespace

std::size_t MessageEntry::TrueSize() const {
    if (tag != L"byte[]") {
        return value.size() * 2;
    }
    const auto padding = static_cast<std::size_t>(std::ranges::count(value, L'='));
    return value.size() / 4 * 3 - padding;
}

WireMessage WireMessage::FromText(std::wstring_view text) {
    XmlReader reader(text, "message");
    std::wstring data;
    const auto root = reader.Next(data);
    if (!root || root->isEnd || root->name != L"Msg") {
        reader.Fail("it does not begin with <Msg>");
    }
    WireMessage message = ReadRoot_(reader, *root);
    while (const auto tag = reader.Next(data)) {
        if (!tag->isEnd && tag->name == L"Key") {
            MessageEntry entry{{}, reader.Attribute(*tag, L"type"), reader.Attribute(*tag, L"size")};
            Number_(reader, *entry.size);
            if (!tag->isEmpty) {
                const auto end = reader.Next(entry.value);
                if (!end || !end->isEnd) {
                    reader.Fail("an element inside <Key>");
                }
            }
            message.entries[reader.Attribute(*tag, L"name")] = std::move(entry);
        }
        data.clear();
    }
    return message;
}

std::wstring WireMessage::ToText() const {
    std::wostringstream text;
    text << L"<?xml version=\"1.0\" encoding=\"utf-16\"?>\r\n<Msg version=\"" << Escape(version) << L"\" type=\""
         << Escape(type) << L"\" pid=\"" << pid << L"\">\r\n";
    for (const auto& [name, entry] : entries) {
        text << L"  <Key name=\"" << Escape(name) << L"\" type=\"" << Escape(entry.tag) << L"\" size=\""
             << Escape(entry.size.value_or(std::to_wstring(entry.TrueSize()))) << L"\" hidden=\"0\">"
             << Escape(entry.value) << L"</Key>\r\n";
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
