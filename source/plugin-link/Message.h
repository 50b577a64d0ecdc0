#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/LoggerHolder.h"
#include "foundation/Throw.h"
#include "platform/Windows.h"
#include "plugin-link/MessageValue.h"

namespace vorlek {

class XMLReader;

enum class MessageType : std::uint32_t {
    Request = 0,  ///< a call from client to service
    Response = 1, ///< the answer to a request, with a result
    Error = 2,    ///< the answer to a request that failed on the service's side
    Test = 3,     ///< known to the format; the add-in neither sends nor expects it
};

/// What travels between the add-in and the agent's plug-in manager: a table of typed, named values.
/// Its text form is a small XML document; MessageCommon puts it on a socket. Used by one thread.
class Message {
public:
    /// From this process.
    explicit Message(MessageType type);
    /// pid: process ID of the sender.
    Message(MessageType type, std::uint32_t pid);
    virtual ~Message() = default;

    /// Stores an entry in its text form, replacing one of that name. size: of the value in bytes.
    void SetValue(const std::wstring& name, std::wstring value, std::wstring type, std::uint32_t size, bool hidden);
    /// hidden: the value is masked in logs.
    void Set(const std::wstring& name, std::int32_t value, bool hidden);
    void Set(const std::wstring& name, std::wstring value, bool hidden);
    void Set(const std::wstring& name, const std::vector<BYTE>& value, bool hidden);

    /// Reads an entry. Throws Exception without one, ArgumentException for one of another type.
    void Get(const std::wstring& name, std::int32_t& value) const;
    void Get(const std::wstring& name, std::wstring& value) const;
    void Get(const std::wstring& name, std::vector<BYTE>& value) const;

    bool HasValue(const std::wstring& name) const;
    /// The entry's size field, in bytes. Throws Exception without an entry.
    std::uint32_t GetValueSize(const std::wstring& name) const;
    MessageType GetMessageType() const { return type_; }
    /// Process ID of the sender.
    std::uint32_t GetPid() const { return pid_; }

    /// The text form. includeHidden: false masks hidden values. Throws what the XML layer throws.
    std::wstring ToStringInternal(bool includeHidden) const;
    /// The form that travels.
    std::wstring ToString() const { return ToStringInternal(true); }
    /// The only form that a sender may log.
    std::wstring ToLogString() const { return ToStringInternal(false); }

    /// Reads the text form, without a delimiter. Throws Exception for a text that is no message.
    static std::unique_ptr<Message> FromString(std::wstring text);

    /// The value of the root's attribute "type". Throws Exception for an unknown one, either way.
    static std::wstring MessageTypeToString(MessageType type);
    static MessageType StringToMessageType(const std::wstring& text);

private:
    const MessageValue& Find_(ThrowSite site, const std::wstring& name) const;
    const std::wstring& Find_(const std::wstring& name, const wchar_t* type) const;
    std::wstring Write_(bool includeHidden) const;
    static std::unique_ptr<Message> Read_(std::wstring text);
    static std::unique_ptr<Message> ReadHeader_(XMLReader& reader);
    void ReadValues_(XMLReader& reader);

    static LoggerHolder logger_;

    MessageType type_;
    std::uint32_t pid_;
    /// The order of names, code unit by code unit, is that of the entries on the wire.
    std::map<std::wstring, MessageValue> values_;
};

} // namespace vorlek
