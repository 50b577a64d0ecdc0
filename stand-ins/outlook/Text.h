#pragma once
#include <string>
#include <string_view>

namespace stand_ins {

/// UTF-8 to and from UTF-16, by the system. A byte or surrogate that means nothing becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);
std::wstring FromUtf8(std::string_view text);

std::string Base64Encode(std::string_view bytes);
/// Failure: std::runtime_error for a text that is no base64.
std::string Base64Decode(std::string_view text);

/// The text that a reader of the HTML sees: tags, styles and scripts gone, blocks on lines of their own, entities
/// resolved.
std::wstring PlainTextOf(std::wstring_view html);
/// An HTML document that shows the text.
std::wstring HtmlOf(std::wstring_view text);
/// A subject without its one leading "RE: ", "FW: " or other mark of up to three letters.
std::wstring NormalizedSubject(std::wstring_view subject);
/// "0x80040607"
std::wstring Hex(long value);
/// Upper-case hexadecimal digits of the bytes.
std::wstring HexOf(std::string_view bytes);

} // namespace stand_ins
