#include "fuzz/driver/Mutator.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace fuzz {
namespace {

/// Ends of ranges, of alphabets and of encodings.
constexpr wchar_t kOddUnits[] = {0,      1,      9,      10,     13,     ' ',    '"',    '&',    '\'',   '-',
                                 '/',    '0',    '9',    '<',    '=',    '>',    'A',    ']',    'z',    0x7F,
                                 0x80,   0x85,   0xA0,   0xC3,   0xFF,   0x100,  0x2028, 0xD7FF, 0xD800, 0xDBFF,
                                 0xDC00, 0xDFFF, 0xE000, 0xFDD0, 0xFEFF, 0xFFFD, 0xFFFE, 0xFFFF};

constexpr UnitsView kNumbers[] = {L"0",
                                  L"1",
                                  L"2",
                                  L"3",
                                  L"10",
                                  L"-1",
                                  L"+1",
                                  L"00",
                                  L"255",
                                  L"65536",
                                  L"2147483647",
                                  L"2147483648",
                                  L"-2147483648",
                                  L"-2147483649",
                                  L"4294967295",
                                  L"4294967296",
                                  L"18446744073709551616",
                                  L"0x",
                                  L"0x2",
                                  L"0X1F",
                                  L"0xFFFFFFFF",
                                  L"0x100000000",
                                  L"1e9",
                                  L"1.5",
                                  L" 2",
                                  L"2 ",
                                  L""};

struct Range {
    std::size_t begin;
    std::size_t size;
};

bool IsDigit_(wchar_t unit) {
    return unit >= '0' && unit <= '9';
}

/// A place in the input, its end included: anywhere, or in front of or behind a boundary.
std::size_t Place_(UnitsView input, const Material& material, Random& random) {
    const std::size_t place = random.Below(input.size() + 1);
    if (random.OneIn(2)) {
        return place;
    }
    const std::size_t boundary = input.find_first_of(material.boundaries, place);
    return boundary == input.npos ? place : boundary + random.Below(2);
}

Range Range_(UnitsView input, const Material& material, Random& random) {
    const std::size_t begin = Place_(input, material, random);
    if (random.OneIn(2)) {
        return {begin, std::min(1 + random.Below(8), input.size() - begin)};
    }
    const std::size_t end = Place_(input, material, random);
    return {std::min(begin, end), std::max(begin, end) - std::min(begin, end)};
}

/// What one change works with.
struct Change {
    Units& input;
    Units& scratch;
    const Material& material;
    Random& random;

    std::size_t Place() { return Place_(input, material, random); }
    Range Part() { return Range_(input, material, random); }
    const Units& Example() { return material.corpus[random.Below(material.corpus.size())]; }
};

void FlipBit_(Change& change) {
    if (!change.input.empty()) {
        const std::size_t bits = change.material.highest > 0xFF ? 16 : 8;
        change.input[change.random.Below(change.input.size())] ^= static_cast<wchar_t>(1 << change.random.Below(bits));
    }
}

void SetUnit_(Change& change) {
    if (!change.input.empty()) {
        const std::size_t any = change.random.Below(std::size_t{change.material.highest} + 1);
        const wchar_t odd = kOddUnits[change.random.Below(std::size(kOddUnits))] & change.material.highest;
        change.input[change.random.Below(change.input.size())] =
            change.random.OneIn(4) ? static_cast<wchar_t>(any) : odd;
    }
}

const Units& Token_(Change& change) {
    return change.material.tokens[change.random.Below(change.material.tokens.size())];
}

void InsertToken_(Change& change) {
    change.input.insert(change.Place(), Token_(change));
}

void OverwriteWithToken_(Change& change) {
    const std::size_t place = change.Place();
    const Units& token = Token_(change);
    change.input.replace(place, std::min(token.size(), change.input.size() - place), token);
}

void ReplaceByToken_(Change& change) {
    const auto [begin, size] = change.Part();
    change.input.replace(begin, size, Token_(change));
}

void Erase_(Change& change) {
    const auto [begin, size] = change.Part();
    change.input.erase(begin, size);
}

void Truncate_(Change& change) {
    change.input.resize(change.Place());
}

/// A part many times over: long values, many attributes, deep nesting.
void Repeat_(Change& change) {
    const std::size_t most = change.random.OneIn(16) ? change.material.most : 1 + change.random.Below(32);
    if (change.random.OneIn(2)) {
        change.scratch = Token_(change);
    } else {
        const auto [begin, size] = change.Part();
        change.scratch.assign(change.input, begin, size);
    }
    const std::size_t place = change.Place();
    for (std::size_t i = 0; i < most && change.input.size() < change.material.most; ++i) {
        change.input.insert(place, change.scratch);
    }
}

/// Moves a part to another place.
void Move_(Change& change) {
    const auto [begin, size] = change.Part();
    change.scratch.assign(change.input, begin, size);
    change.input.erase(begin, size);
    change.input.insert(change.Place(), change.scratch);
}

void InsertFromExample_(Change& change) {
    const Units& example = change.Example();
    const auto [begin, size] = Range_(example, change.material, change.random);
    change.input.insert(change.Place(), example, begin, size);
}

/// The beginning of this and the end of another.
void Splice_(Change& change) {
    const Units& example = change.Example();
    change.input.resize(change.Place());
    change.input.append(example, Place_(example, change.material, change.random));
}

void ReplaceNumber_(Change& change) {
    const auto begin =
        std::find_if(change.input.begin() + static_cast<std::ptrdiff_t>(change.Place()), change.input.end(), IsDigit_);
    const auto end = std::find_if_not(begin, change.input.end(), IsDigit_);
    if (begin != end) {
        const UnitsView number = kNumbers[change.random.Below(std::size(kNumbers))];
        change.input.replace(begin, end, number.begin(), number.end());
    }
}

constexpr auto kChanges = std::to_array({FlipBit_, SetUnit_, InsertToken_, OverwriteWithToken_, ReplaceByToken_, Erase_,
                                         Truncate_, Repeat_, Move_, InsertFromExample_, Splice_, ReplaceNumber_});

} // namespace

void Mutator::Make(std::uint64_t run, Units& input) {
    if (run < material_.corpus.size()) {
        input = material_.corpus[run];
        input.resize(std::min(input.size(), material_.most));
        return;
    }
    Random random(seed_ ^ run * 0xD6E8FEB86659FD93);
    input = material_.corpus[random.Below(material_.corpus.size())];
    // One change at the least and sixteen at the most, few more often than many.
    for (std::size_t changes = std::size_t{1} << std::min(random.Below(5), random.Below(5)); changes != 0; --changes) {
        Change_(input, random);
        input.resize(std::min(input.size(), material_.most));
    }
}

void Mutator::Change_(Units& input, Random& random) {
    Change change{input, scratch_, material_, random};
    kChanges[random.Below(kChanges.size())](change);
}

} // namespace fuzz
