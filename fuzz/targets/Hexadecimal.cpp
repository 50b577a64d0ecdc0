#include "foundation/ConversionsUtils.h"
#include "fuzz/targets/Targets.h"

namespace fuzz {
namespace {

using vorlek::ConversionsUtils;
using Bytes = std::vector<BYTE>;

constexpr BYTE kUntouched = 0xA5;

bool AreDigits_(const std::string& text) {
    return text.find_first_not_of("0123456789abcdefABCDEF") == text.npos;
}

Bytes Decode_(const std::string& digits) {
    Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<BYTE>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::string Run_(UnitsView input) {
    const std::string digits = ToBytes(input);
    Bytes exact((digits.size() + 1) / 2, kUntouched);
    const bool isRead = ConversionsUtils::HexStringToData(digits, exact.data(), exact.size());
    const bool isWhole = !digits.empty() && digits.size() % 2 == 0;
    Require(isWhole || !isRead, "half a byte was read");
    Require(isWhole || exact == Bytes(exact.size(), kUntouched), "something was written for half a byte");
    if (isWhole && AreDigits_(digits)) {
        Require(isRead && exact == Decode_(digits), "digits were read as other bytes");
    }
    Bytes small(digits.size() / 2, kUntouched);
    if (!small.empty()) {
        Require(!ConversionsUtils::HexStringToData(digits, small.data(), small.size() - 1), "there was no room");
        Require(small == Bytes(small.size(), kUntouched), "something was written without room");
    }
    return !isWhole ? "odd" : !isRead ? "no number" : AreDigits_(digits) ? "digits" : "numbers";
}

Material Material_() {
    Material material = {
        .corpus = ReadByteCorpus("fuzz/corpus/hexadecimal"), .boundaries = L" 0x", .highest = 0xFF, .most = 2048};
    AddTokens(material, L"0 | 00 | 0x | 0X | x | ff | FF | 0G | G0 | +1 | -1 | %x |  1 | 1  | \t | \n | \x80 | \xFF");
    material.tokens.emplace_back(1, L'\0');
    return material;
}

} // namespace

Target HexadecimalTarget() {
    return {.name = "hexadecimal", .material = Material_, .run = Run_, .raises = {}};
}

} // namespace fuzz
