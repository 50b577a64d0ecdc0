#pragma once
#include <string>
#include <string_view>

namespace stand_ins::agent {

/// The forms in which a body comes, by the extension of its file.
enum class BodyForm {
    Plain, ///< "txt": UTF-16 little-endian behind the mark FF FE
    Html,  ///< "html": the same without the mark
    Rich,  ///< "rtf": RTF 1
};

/// Throws std::runtime_error for an extension that is none of these.
BodyForm BodyFormOf(std::wstring_view path);

/// The whole body with a text before and a text behind it, in the form that it has. Either may be empty; a line feed in
/// it begins a new line. Throws std::runtime_error if the bytes are not of the form.
std::string LabelBody(std::string_view bytes, BodyForm form, std::wstring_view before, std::wstring_view after);

} // namespace stand_ins::agent
