#include "foundation/ConversionsUtils.h"

#include <sddl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <source_location>
#include <stdexcept>

#include "foundation/Exception.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/Throw.h"

namespace vorlek {

namespace {

constexpr std::uint32_t kLegacyCategory = 0x100000;
constexpr int kLegacyError = 1;
constexpr int kLegacyInfo = 3;

constexpr wchar_t kAlphabet[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kGroupsPerLine = 19;
using Line = std::array<wchar_t, 4 * kGroupsPerLine + 2>;

// The value of each character, -1 for those outside the alphabet.
constexpr std::array<std::int32_t, 128> kSextets = [] {
    std::array<std::int32_t, 128> sextets;
    sextets.fill(-1);
    for (std::int32_t value = 0; value < 64; ++value) {
        sextets[kAlphabet[value]] = value;
    }
    return sextets;
}();

// Two characters for every twelve bits: half the look-ups.
constexpr std::array<wchar_t, 2 * 4096> kPairs = [] {
    std::array<wchar_t, 2 * 4096> pairs{};
    for (std::size_t bits = 0; bits < 4096; ++bits) {
        pairs[2 * bits] = kAlphabet[bits >> 6];
        pairs[2 * bits + 1] = kAlphabet[bits & 63];
    }
    return pairs;
}();

struct LocalDeleter {
    void operator()(void* memory) const { LocalFree(memory); }
};

void LogError_(const char* format, const char* function, std::source_location site = std::source_location::current()) {
    LogLegacy(kLegacyCategory, kLegacyError, format, site.file_name(), function, static_cast<int>(site.line()),
              function);
}

wchar_t* EncodeGroups_(const BYTE* data, std::size_t groups, wchar_t* text) {
    // Two groups from one load, as long as a third one behind them keeps the eight bytes inside the data.
    for (; groups > 2; groups -= 2, data += 6, text += 8) {
        std::uint64_t bits;
        std::memcpy(&bits, data, sizeof(bits));
        bits = _byteswap_uint64(bits);
        std::copy_n(&kPairs[2 * (bits >> 52)], 2, text);
        std::copy_n(&kPairs[2 * (bits >> 40 & 4095)], 2, text + 2);
        std::copy_n(&kPairs[2 * (bits >> 28 & 4095)], 2, text + 4);
        std::copy_n(&kPairs[2 * (bits >> 16 & 4095)], 2, text + 6);
    }
    for (; groups != 0; --groups, data += 3, text += 4) {
        const std::uint32_t bits = static_cast<std::uint32_t>(data[0]) << 16 | data[1] << 8 | data[2];
        std::copy_n(&kPairs[2 * (bits >> 12)], 2, text);
        std::copy_n(&kPairs[2 * (bits & 4095)], 2, text + 2);
    }
    return text;
}

/// Four characters as 24 bits; negative if one is outside the alphabet.
std::int32_t Quad_(const wchar_t* text) {
    if ((text[0] | text[1] | text[2] | text[3]) >= static_cast<int>(kSextets.size())) {
        return -1;
    }
    return kSextets[text[0]] << 18 | kSextets[text[1]] << 12 | kSextets[text[2]] << 6 | kSextets[text[3]];
}

/// size: in, the room; out, the bytes written. False when the room does not suffice.
bool Decode_(const wchar_t* next, const wchar_t* end, BYTE* decoded, std::size_t& size) {
    BYTE* out = decoded;
    BYTE* const outEnd = decoded + size;
    while (next != end) {
        for (; end - next >= 4 && outEnd - out >= 3; next += 4, out += 3) {
            const std::int32_t bits = Quad_(next);
            if (bits < 0) {
                break;
            }
            out[0] = static_cast<BYTE>(bits >> 16);
            out[1] = static_cast<BYTE>(bits >> 8);
            out[2] = static_cast<BYTE>(bits);
        }
        // A line end, padding or the last few characters: one by one.
        std::int32_t bits = 0;
        std::ptrdiff_t sextets = 0;
        for (; sextets < 4 && next != end; ++next) {
            if (*next < kSextets.size() && kSextets[*next] >= 0) {
                bits = bits << 6 | kSextets[*next];
                ++sextets;
            }
        }
        bits <<= 6 * (4 - sextets);
        const std::ptrdiff_t bytes = sextets * 6 / 8;
        if (outEnd - out < bytes) {
            return false;
        }
        for (std::ptrdiff_t i = 0; i < bytes; ++i) {
            *out++ = static_cast<BYTE>(bits >> (16 - 8 * i));
        }
    }
    size = static_cast<std::size_t>(out - decoded);
    return true;
}

} // namespace

std::wstring ConversionsUtils::Base64EncodeData(const BYTE* data, std::size_t length) {
    if (data == nullptr) {
        LogError_("(%s)ERROR: NULL pointer to function DataBase64", "ConversionsUtils::Base64EncodeData");
        Throw<ArgumentNullException>(L"vorlek::ConversionsUtils::Base64EncodeData",
                                     L"NULL pointer to function DataBase64");
    }
    if (length == 0) {
        LogError_("(%s)ERROR: 0 length to function. exit !!!", "ConversionsUtils::Base64EncodeData");
        return {};
    }
    // Line by line from a buffer: the fresh memory of a large text is touched once, not filled before it is written.
    const std::size_t lines = length / 3 / kGroupsPerLine;
    std::wstring text;
    text.reserve((length + 2) / 3 * 4 + lines * 2);
    Line line;
    line[4 * kGroupsPerLine] = L'\r';
    line[4 * kGroupsPerLine + 1] = L'\n';
    for (std::size_t done = 0; done < lines; ++done, data += 3 * kGroupsPerLine) {
        EncodeGroups_(data, kGroupsPerLine, line.data());
        text.append(line.data(), line.size());
    }
    const std::size_t groups = length / 3 % kGroupsPerLine;
    wchar_t* end = EncodeGroups_(data, groups, line.data());
    if (const std::size_t rest = length % 3; rest != 0) {
        BYTE last[3] = {};
        std::copy_n(data + 3 * groups, rest, last);
        end = EncodeGroups_(last, 1, end);
        std::fill(end - (3 - rest), end, L'=');
    }
    text.append(line.data(), end);
    return text;
}

void ConversionsUtils::Base64EncodeData(const BYTE* data, std::size_t length, _bstr_t& text) {
    text = Base64EncodeData(data, length).c_str();
}

void ConversionsUtils::Base64DecodeData(const wchar_t* text, std::size_t length, BYTE* decoded,
                                        std::size_t* decodedLength) {
    if (text == nullptr) {
        LogError_("(%s)ERROR: NULL input pointer to function Base64DecodeData", "ConversionsUtils::Base64DecodeData");
        Throw<ArgumentNullException>(L"vorlek::ConversionsUtils::Base64DecodeData",
                                     L"NULL input pointer to function Base64DecodeData");
    }
    if (length == 0) {
        LogError_("(%s)ERROR: 0 input length to Base64DecodeData function. exit !!!",
                  "ConversionsUtils::Base64DecodeData");
        return;
    }
    if (decoded == nullptr) {
        Throw<ArgumentNullException>(L"vorlek::ConversionsUtils::Base64DecodeData",
                                     L"output decoded buffer (pDecodedBuffer) hasn't been allocated.");
    }
    if (decodedLength == nullptr) {
        Throw<ArgumentNullException>(L"vorlek::ConversionsUtils::Base64DecodeData", L"null output len pointer");
    }
    if (*decodedLength == 0) {
        LogError_("(%s)ERROR: 0 output length to Base64DecodeData function. exit !!!",
                  "ConversionsUtils::Base64DecodeData");
        return;
    }
    if (!Decode_(text, text + length, decoded, *decodedLength)) {
        Throw<ArgumentException>(L"vorlek::ConversionsUtils::Base64DecodeData",
                                 L"invalid parameter was passed to Decoding method");
    }
}

void ConversionsUtils::Base64DecodeData(const wchar_t* text, std::size_t length, std::vector<BYTE>& decoded) {
    std::vector<BYTE> buffer;
    try {
        buffer.resize(length);
    } catch (const std::exception&) { // out of memory, or more than a vector can ever hold
        Throw<AllocationFailureException>(L"vorlek::ConversionsUtils::Base64DecodeData",
                                          L"no sufficient resources to allocate memory. requested ", length, L" bytes");
    }
    std::size_t size = length;
    Base64DecodeData(text, length, buffer.data(), &size);
    buffer.resize(size);
    decoded = std::move(buffer);
}

void ConversionsUtils::SwapInPlace(BYTE* data, std::size_t length) {
    if (data == nullptr) {
        LogError_("(%s)ERROR: NULL pointer to function SwapInPlace", "ConversionsUtils::SwapInPlace");
        Throw<ArgumentNullException>(L"vorlek::ConversionsUtils::SwapInPlace", L"NULL pointer to function SwapInPlace");
    }
    if (length == 0) {
        LogError_("(%s)ERROR: 0 length to function. exit !!!", "ConversionsUtils::SwapInPlace");
        return;
    }
    std::reverse(data, data + length);
}

bool ConversionsUtils::HexStringToData(const std::string& digits, BYTE* data, std::size_t size) {
    if (digits.empty() || digits.size() % 2 != 0 || size < digits.size() / 2) {
        return false;
    }
    if (data == nullptr) {
        Throw<ArgumentNullException>(L"vorlek::ConversionsUtils::HexStringToData",
                                     L"NULL pointer to function HexStringToData");
    }
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        unsigned int value = 0;
        if (sscanf_s(digits.substr(i, 2).c_str(), "%x", &value) != 1) {
            return false;
        }
        *data++ = static_cast<BYTE>(value);
    }
    return true;
}

std::wstring ConversionsUtils::SidToString(PSID sid) {
    wchar_t* text = nullptr;
    if (!ConvertSidToStringSidW(sid, &text)) {
        const DWORD error = GetLastError();
        Throw(L"vorlek::ConversionsUtils::SidToString", L"ConvertSidToStringSid failed with error ", error);
    }
    const std::unique_ptr<wchar_t, LocalDeleter> owner(text);
    return text;
}

namespace {

std::wstring LookUpSid_(const std::wstring& userName) {
    if (userName.empty()) {
        Throw<ArgumentException>(L"vorlek::ConversionsUtils::UserStringToSID", L"User name is empty");
    }
    DWORD sidSize = 0;
    DWORD domainLength = 0;
    SID_NAME_USE use = SidTypeUnknown;
    LookupAccountNameW(nullptr, userName.c_str(), nullptr, &sidSize, nullptr, &domainLength, &use);
    LogLegacy(kLegacyCategory, kLegacyInfo, "(%s) LookupAccountName for name %S, size is %d, \n", __FILE__,
              "ConversionsUtils::UserStringToSID", __LINE__, "ConversionsUtils::UserStringToSID", userName.c_str(),
              sidSize);
    const std::unique_ptr<void, LocalDeleter> sid(LocalAlloc(LPTR, sidSize));
    if (!sid) {
        const DWORD error = GetLastError();
        Throw<ArgumentException>(L"vorlek::ConversionsUtils::UserStringToSID",
                                 L"Failed allocating memory for SID. Last error is ", error);
    }
    std::wstring domain(domainLength, L'\0');
    if (!LookupAccountNameW(nullptr, userName.c_str(), sid.get(), &sidSize, domain.data(), &domainLength, &use)) {
        const DWORD error = GetLastError();
        Throw<ArgumentException>(L"vorlek::ConversionsUtils::UserStringToSID",
                                 L"LookupAccountName Failed. Last error is ", error);
    }
    wchar_t* text = nullptr;
    if (!ConvertSidToStringSidW(sid.get(), &text)) {
        const DWORD error = GetLastError();
        Throw<ArgumentException>(L"vorlek::ConversionsUtils::UserStringToSID",
                                 L"ConvertSidToStringSid Failed. Last error is ", error);
    }
    const std::unique_ptr<wchar_t, LocalDeleter> owner(text);
    LogLegacy(kLegacyCategory, kLegacyInfo, "(%s) StringSid is %S\n", __FILE__, "ConversionsUtils::UserStringToSID",
              __LINE__, "ConversionsUtils::UserStringToSID", text);
    return text;
}

} // namespace

std::wstring ConversionsUtils::UserStringToSID(const std::wstring& userName) {
    try {
        return LookUpSid_(userName);
    } catch (const Exception& failure) {
        LogLegacy(kLegacyCategory, kLegacyError, "(%s) Exception: %S\n", __FILE__, "ConversionsUtils::UserStringToSID",
                  __LINE__, "ConversionsUtils::UserStringToSID", failure.ToString().c_str());
        throw;
    }
}

} // namespace vorlek
