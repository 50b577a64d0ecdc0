#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace stand_ins::agent {

std::string ToUtf8(std::wstring_view text);

/// Bytes that are no UTF-8 become the replacement character.
std::wstring FromUtf8(std::string_view bytes);

/// The text of a file of unknown encoding: UTF-16 or UTF-8 by their marks, UTF-8 if the bytes are that, else each byte
/// a character.
std::wstring DecodeText(std::string_view bytes);

/// Lower case by no particular language.
std::wstring Lower(std::wstring_view text);

/// Without the blanks round it.
std::wstring_view Trimmed(std::wstring_view text);

/// For a line that a person reads: 200 characters at most, and blanks for line ends and other controls.
std::wstring OneLine(std::wstring_view text);

std::wstring ReplaceAll(std::wstring text, std::wstring_view from, std::wstring_view to);

/// For XML and HTML, in text and in attributes.
std::wstring Escape(std::wstring_view text);

/// RFC 4648, padded, without line breaks; nothing for any other text.
std::optional<std::string> DecodeBase64(std::wstring_view text);

/// "{GUID}".
std::wstring NewGuid();

/// The part behind the last dot of a file name, without the dot and only if it is a plain word; else "".
std::wstring Extension(std::wstring_view path);

/// Whole files as bytes. Throw std::runtime_error that names the file and the system's error number.
std::string ReadWholeFile(const std::wstring& path);
void WriteWholeFile(const std::wstring& path, std::string_view bytes);

/// Makes the folder and those above it.
void MakeFolder(const std::wstring& path);

} // namespace stand_ins::agent
