#include "foundation/ConversionsUtils.h"
#include "foundation/Exception.h"
#include "fuzz/targets/Targets.h"

namespace fuzz {
namespace {

using vorlek::ConversionsUtils;
using Bytes = std::vector<BYTE>;

/// The rule, bit by bit: what is outside the alphabet does not count, and what is left of six bits at the end is
/// dropped.
Bytes Decode_(UnitsView text) {
    constexpr UnitsView alphabet = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    Bytes bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const wchar_t character : text) {
        const std::size_t value = alphabet.find(character);
        if (value == alphabet.npos) {
            continue;
        }
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<BYTE>(bits >> count));
        }
    }
    return bytes;
}

/// Into a buffer of that room; false if it was too small.
bool DecodeInto_(UnitsView text, Bytes& buffer) {
    std::size_t size = buffer.size();
    try {
        ConversionsUtils::Base64DecodeData(text.data(), text.size(), buffer.data(), &size);
    } catch (const vorlek::ArgumentException&) {
        return false;
    }
    Require(size <= buffer.size(), "more was decoded than there is room for");
    buffer.resize(size);
    return true;
}

std::string Run_(UnitsView input) {
    const std::vector<wchar_t> text(input.begin(), input.end()); // without a terminator
    const UnitsView view(text.data(), text.size());
    const Bytes expected = Decode_(view);
    Bytes decoded;
    if (!text.empty()) {
        ConversionsUtils::Base64DecodeData(text.data(), text.size(), decoded);
    }
    Require(decoded == expected, "decoded to other bytes");
    if (decoded.empty()) {
        return "nothing";
    }
    Bytes exact(decoded.size());
    Require(DecodeInto_(view, exact) && exact == expected, "an exact buffer does not do");
    Bytes small(decoded.size() - 1);
    Require(small.empty() || !DecodeInto_(view, small), "a buffer too small does");

    const std::wstring encoded = ConversionsUtils::Base64EncodeData(decoded.data(), decoded.size());
    Bytes again;
    ConversionsUtils::Base64DecodeData(encoded.c_str(), encoded.size(), again);
    Require(again == decoded, "encoded bytes decode to others");
    return encoded == input ? "as it was encoded" : "bytes";
}

Material Material_() {
    Material material = {.corpus = ReadCorpus("fuzz/corpus/base64"), .boundaries = L"=\r\n", .most = 2048};
    AddTokens(material, L"= | == | === | \r\n | \n | \t | A | AA | AAA | AAAA | //// | ++++ | -_ | QUJDRA== | \x0141 | "
                        L"\x7F | \x80 | \xFF21");
    material.tokens.emplace_back(1, L'\0');
    return material;
}

} // namespace

Target Base64Target() {
    return {.name = "base64", .material = Material_, .run = Run_, .raises = {}};
}

} // namespace fuzz
