#pragma once
#include <string>
#include <string_view>

namespace stand_ins {

/// The text that a reader of the rich text sees: control words, tables of fonts and the like gone, paragraphs on lines
/// of their own.
std::wstring PlainTextOfRtf(std::string_view rtf);
/// A rich text that shows the text.
std::string RtfOf(std::wstring_view text);

} // namespace stand_ins
