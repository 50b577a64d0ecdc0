#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace stand_ins::agent {

/// One entry of a message.
struct MessageEntry {
    std::wstring value;                              ///< the text form
    std::wstring tag = L"string";                    ///< "string", "int" or "byte[]"
    std::optional<std::wstring> size = std::nullopt; ///< as it stands in the text; nothing: what the value has

    /// What the size should be: the bytes of the text, or of what the base64 stands for.
    std::size_t TrueSize() const;
};

/// The unit of the wire: a typed table of named values, XML text in UTF-16 little-endian.
struct WireMessage {
    std::wstring type = L"Response"; ///< "Request", "Response", "Error" or "Test"
    std::uint32_t pid = 0;           ///< the sender's process
    std::wstring version = L"1";
    std::map<std::wstring, MessageEntry> entries;

    /// Reads the text of one message, without its delimiter. Throws std::runtime_error with what is wrong and at which
    /// character.
    static WireMessage FromText(std::wstring_view text);

    /// The text that travels, without the delimiter.
    std::wstring ToText() const;

    /// The value of an entry; empty if there is none.
    std::wstring Value(const std::wstring& name) const;
};

/// What ends a message on the wire.
inline constexpr std::wstring_view kDelimiter = L"###@@@###";

/// The bytes of a text on the wire: two for each code unit, the low one first.
std::string ToWire(std::wstring_view text);

/// The text of bytes from the wire. An odd last byte is left out.
std::wstring FromWire(std::string_view bytes);

} // namespace stand_ins::agent
