#include "plugin-link/Message.h"

#include <new>
#include <sstream>

#include "foundation/ConversionsUtils.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/XMLReader.h"
#include "foundation/XMLWriter.h"
#include "plugin-link/Number.h"

namespace vorlek {
namespace {

constexpr std::uint32_t kMessageVersion = 1;
constexpr wchar_t kRoot[] = L"Msg";
constexpr wchar_t kKey[] = L"Key";
constexpr wchar_t kVersion[] = L"version";
constexpr wchar_t kType[] = L"type";
constexpr wchar_t kPid[] = L"pid";
constexpr wchar_t kName[] = L"name";
constexpr wchar_t kSize[] = L"size";
constexpr wchar_t kHidden[] = L"hidden";

constexpr wchar_t kIntTag[] = L"int";
constexpr wchar_t kStringTag[] = L"string";
constexpr wchar_t kBytesTag[] = L"byte[]";

constexpr std::size_t kMarkupSize = 128; ///< about what an entry takes beside its name and its value

constexpr wchar_t kMask[] = L"*";
constexpr std::uint32_t kMaskSize = 2;

constexpr const wchar_t* kTypeTexts[] = {L"Request", L"Response", L"Error", L"Test"};

using Attributes_ = std::map<std::wstring, std::wstring>;

std::uint32_t TextSize_(const std::wstring& text) {
    return static_cast<std::uint32_t>(text.size() * sizeof(wchar_t));
}

void WriteValue_(XMLWriter& writer, const MessageValue& value, bool includeHidden) {
    const bool masked = value.hidden && !includeHidden;
    writer.WriteNode(XMLNode(XMLNode::StartElement, kKey));
    writer.WriteAttribute(kName, value.name);
    writer.WriteAttribute(kType, value.type);
    writer.WriteAttribute(kSize, std::to_wstring(masked ? kMaskSize : value.size));
    writer.WriteAttribute(kHidden, value.hidden ? L"1" : L"0");
    if (masked) {
        writer.WriteText(kMask);
    } else {
        writer.WriteText(value.value);
    }
    writer.WriteNode(XMLNode(XMLNode::EndElement, kKey));
}

/// missing: the failure's words; the parenthesis that they open is never closed.
const std::wstring& Required_(const Attributes_& attributes, const wchar_t* name, const wchar_t* missing,
                              XMLReader& reader) {
    const auto found = attributes.find(name);
    if (found == attributes.end()) {
        Throw(L"vorlek::Message::FromString", missing, reader.GetLineNumber(), L":", reader.GetLinePosition());
    }
    return found->second;
}

void ReadKey_(XMLReader& reader, MessageValue& pending) {
    const Attributes_ attributes = reader.ReadAttributes();
    pending.name = Required_(attributes, kName, L"Missing name! (", reader);
    pending.type = Required_(attributes, kType, L"Missing type! (", reader);
    pending.size = ParseNumber<std::uint32_t>(Required_(attributes, kSize, L"Missing size! (", reader));
    const auto hidden = attributes.find(kHidden);
    pending.hidden = hidden != attributes.end() && ParseNumber<bool>(hidden->second);
}

} // namespace

LoggerHolder Message::logger_;

Message::Message(MessageType type) : Message(type, GetCurrentProcessId()) {}

Message::Message(MessageType type, std::uint32_t pid) : type_(type), pid_(pid) {
    InitLogger(logger_, "vorlek::Message::Message", false);
}

void Message::SetValue(const std::wstring& name, std::wstring value, std::wstring type, std::uint32_t size,
                       bool hidden) {
    values_.insert_or_assign(name, MessageValue{name, std::move(value), std::move(type), size, hidden});
}

void Message::Set(const std::wstring& name, std::int32_t value, bool hidden) {
    std::wstring text = std::to_wstring(value);
    const std::uint32_t size = TextSize_(text);
    SetValue(name, std::move(text), kIntTag, size, hidden);
}

void Message::Set(const std::wstring& name, std::wstring value, bool hidden) {
    const std::uint32_t size = TextSize_(value);
    SetValue(name, std::move(value), kStringTag, size, hidden);
}

void Message::Set(const std::wstring& name, const std::vector<BYTE>& value, bool hidden) {
    std::wstring text = value.empty() ? std::wstring() : ConversionsUtils::Base64EncodeData(value.data(), value.size());
    SetValue(name, std::move(text), kBytesTag, static_cast<std::uint32_t>(value.size()), hidden);
}

void Message::Get(const std::wstring& name, std::int32_t& value) const {
    value = ParseNumber<std::int32_t>(Find_(name, kIntTag));
}

void Message::Get(const std::wstring& name, std::wstring& value) const {
    value = Find_(name, kStringTag);
}

void Message::Get(const std::wstring& name, std::vector<BYTE>& value) const {
    const std::wstring& text = Find_(name, kBytesTag);
    value.clear();
    if (!text.empty()) {
        ConversionsUtils::Base64DecodeData(text.c_str(), text.size(), value);
    }
}

bool Message::HasValue(const std::wstring& name) const {
    return values_.contains(name);
}

std::uint32_t Message::GetValueSize(const std::wstring& name) const {
    return Find_(L"vorlek::Message::GetValueSize", name).size;
}

const MessageValue& Message::Find_(ThrowSite site, const std::wstring& name) const {
    const auto found = values_.find(name);
    if (found == values_.end()) {
        Throw(site, L"Key \"", name, L"\" wasn't found!");
    }
    return found->second;
}

const std::wstring& Message::Find_(const std::wstring& name, const wchar_t* type) const {
    const MessageValue& value = Find_(L"vorlek::Message::Get", name);
    if (value.type != type) {
        Throw<ArgumentException>(L"vorlek::Message::Get", L"Invalid requested type for value \"", name,
                                 L"\". Requested: ", type, L", actual: ", value.type);
    }
    return value.value;
}

std::wstring Message::ToStringInternal(bool includeHidden) const {
    try {
        return Write_(includeHidden);
    } catch (const Exception& failure) {
        LOG_ERROR(logger_, L"ToString failed with: " << failure.ToString());
        throw;
    }
}

std::wstring Message::Write_(bool includeHidden) const {
    // What is escaped makes the text longer; for most an eighth is enough, and no other text is copied while it grows.
    std::size_t size = kMarkupSize;
    for (const auto& [name, value] : values_) {
        size += kMarkupSize + name.size() + value.value.size() + value.value.size() / 8;
    }
    std::wstring text;
    text.reserve(size);
    std::wstringstream stream(std::move(text));
    XMLWriter writer(stream, XMLWriter::NoByteOrderMark);
    writer.StartDocument();
    writer.WriteNode(XMLNode(XMLNode::StartElement, kRoot));
    writer.WriteAttribute(kVersion, std::to_wstring(kMessageVersion));
    writer.WriteAttribute(kType, MessageTypeToString(type_));
    writer.WriteAttribute(kPid, std::to_wstring(pid_));
    for (const auto& [name, value] : values_) {
        WriteValue_(writer, value, includeHidden);
    }
    // The end of the document closes the root.
    writer.EndDocument();
    return std::move(stream).str();
}

std::unique_ptr<Message> Message::FromString(std::wstring text) {
    InitLogger(logger_, "vorlek::Message::Message", false);
    try {
        std::wstringstream stream(std::move(text));
        XMLReader reader(stream);
        std::unique_ptr<Message> message = ReadHeader_(reader);
        message->ReadValues_(reader);
        return message;
    } catch (const Exception& failure) {
        LOG_ERROR(logger_, L"FromString failed with: " << failure.ToString());
        throw;
    }
}

std::unique_ptr<Message> Message::ReadHeader_(XMLReader& reader) {
    constexpr ThrowSite site = L"vorlek::Message::FromString";
    const std::shared_ptr<XMLNode> root = reader.ReadNode();
    if (!root) {
        Throw(site, L"Invalid message header! Type: ", L"none, value: ");
    }
    if (root->GetType() != XMLNode::StartElement || root->GetValue() != kRoot) {
        Throw(site, L"Invalid message header! Type: ", static_cast<std::int32_t>(root->GetType()), L", value: ",
              root->GetValue());
    }
    const Attributes_ attributes = reader.ReadAttributes();
    const std::wstring& type = Required_(attributes, kType, L"Missing message type! (", reader);
    const std::wstring& pid = Required_(attributes, kPid, L"Missing message pid! (", reader);
    const auto version =
        ParseNumber<std::uint32_t>(Required_(attributes, kVersion, L"Missing message version! (", reader));
    if (version != kMessageVersion) {
        Throw(site, L"Invalid message version: ", version);
    }
    const auto sender = ParseNumber<std::uint32_t>(pid);
    std::unique_ptr<Message> message(new (std::nothrow) Message(StringToMessageType(type), sender));
    if (!message) {
        Throw(site, L"Allocation of message has failed!");
    }
    return message;
}

void Message::ReadValues_(XMLReader& reader) {
    MessageValue pending;
    while (const std::shared_ptr<XMLNode> node = reader.ReadNode()) {
        if (node->GetType() == XMLNode::Text) {
            pending.value = node->TakeValue();
        } else if (node->GetValue() != kKey) {
            continue;
        } else if (node->GetType() == XMLNode::StartElement) {
            ReadKey_(reader, pending);
        } else {
            SetValue(pending.name, std::move(pending.value), std::move(pending.type), pending.size, pending.hidden);
            pending = {};
        }
    }
}

std::wstring Message::MessageTypeToString(MessageType type) {
    const auto index = static_cast<std::uint32_t>(type);
    if (index >= std::size(kTypeTexts)) {
        Throw(L"vorlek::Message::MessageTypeToString", L"Invalid message type: ", index);
    }
    return kTypeTexts[index];
}

MessageType Message::StringToMessageType(const std::wstring& text) {
    for (std::uint32_t index = 0; index < std::size(kTypeTexts); ++index) {
        if (text == kTypeTexts[index]) {
            return static_cast<MessageType>(index);
        }
    }
    Throw(L"vorlek::Message::StringToMessageType", L"Invalid message type: \"", text, L"\"");
}

} // namespace vorlek
