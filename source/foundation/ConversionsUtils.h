#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "platform/Windows.h"

#include <comutil.h>

namespace vorlek {

/// Binary to text and back, and account names to identifiers.
class ConversionsUtils {
public:
    /// Base64 of RFC 2045, with padding, and a CRLF behind every full line of 76 characters that holds
    /// whole groups only. Length 0 gives no text. Raises ArgumentNullException for a null input.
    static std::wstring Base64EncodeData(const BYTE* data, std::size_t length);
    static void Base64EncodeData(const BYTE* data, std::size_t length, _bstr_t& text);

    /// Characters outside the alphabet are skipped. decodedLength: in, the buffer's size in bytes; out,
    /// the bytes written. A length of 0 on either side leaves all as it is. Raises
    /// ArgumentNullException for a null pointer, ArgumentException when the buffer is too small.
    static void Base64DecodeData(const wchar_t* text, std::size_t length, BYTE* decoded, std::size_t* decodedLength);
    /// Replaces the vector's content. Raises AllocationFailureException as well.
    static void Base64DecodeData(const wchar_t* text, std::size_t length, std::vector<BYTE>& decoded);

    /// Reverses the bytes of the buffer. Raises ArgumentNullException for a null buffer.
    static void SwapInPlace(BYTE* data, std::size_t length);

    /// Two digits a byte, read as scanf's %x reads them: "0G" is 0. False, with what came before
    /// written, for a pair that is no number; false with nothing written for an empty text, an odd
    /// number of digits or a buffer too small. Raises ArgumentNullException for a null buffer.
    static bool HexStringToData(const std::string& digits, BYTE* data, std::size_t size);

    /// "S-1-..."; raises Exception with the system's error.
    static std::wstring SidToString(PSID sid);
    /// The identifier of an account of this machine or its domains, as text; raises ArgumentException.
    static std::wstring UserStringToSID(const std::wstring& userName);
};

} // namespace vorlek
