#include "stand-ins/agent/Condition.h"

#include <algorithm>
#include <utility>

#include "stand-ins/agent/Inspection.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

bool IsDigit_(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

constexpr std::size_t kShortestCardNumber = 13;
constexpr std::size_t kLongestCardNumber = 19;

/// The Luhn formula: every second digit from the right counts double, the sum ends in 0.
bool IsCardNumber_(const std::wstring& digits) {
    if (digits.size() < kShortestCardNumber || digits.size() > kLongestCardNumber) {
        return false;
    }
    int sum = 0;
    bool isDoubled = false;
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, isDoubled = !isDoubled) {
        const int value = (*digit - L'0') * (isDoubled ? 2 : 1);
        sum += value > 9 ? value - 9 : value;
    }
    return sum % 10 == 0;
}

bool MatchesInALine_(const std::wregex& pattern, std::wstring_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(L"\r\n"), text.size());
        if (std::regex_search(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), pattern)) {
            return true;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return false;
}

std::vector<std::wstring_view> Texts_(const Inspection& inspection, Field field) {
    switch (field) {
    case Field::Channel:
        return {inspection.channel};
    case Field::Subject:
        return {inspection.subject};
    case Field::Body:
        return {inspection.body};
    case Field::Text:
        return {inspection.subject, inspection.body};
    case Field::Sender:
        return {inspection.sender};
    case Field::Recipient:
        return {inspection.recipients.begin(), inspection.recipients.end()};
    case Field::AttachmentName: {
        std::vector<std::wstring_view> names;
        std::ranges::transform(inspection.attachments, std::back_inserter(names), &InspectedFile::name);
        return names;
    }
    case Field::AttachmentContent: {
        const auto& contents = inspection.Contents();
        return {contents.begin(), contents.end()};
    }
    case Field::Anywhere:
        break;
    }
    std::vector<std::wstring_view> all;
    for (const Field part : {Field::Text, Field::AttachmentName, Field::AttachmentContent}) {
        std::ranges::copy(Texts_(inspection, part), std::back_inserter(all));
    }
    return all;
}

} // namespace

bool HoldsCardNumber(std::wstring_view text) {
    const auto isDigitAt = [&](std::size_t at) { return at < text.size() && IsDigit_(text[at]); };
    for (std::size_t start = 0; start < text.size(); ++start) {
        if (!isDigitAt(start) || (start > 0 && isDigitAt(start - 1))) {
            continue;
        }
        // A number may follow other digits, as in "2024 4111 ...": each group of digits is tried as its beginning.
        std::wstring digits;
        for (std::size_t at = start; isDigitAt(at) && digits.size() < kLongestCardNumber; ++at) {
            digits += text[at];
            if (isDigitAt(at + 1)) {
                continue;
            }
            if (IsCardNumber_(digits)) {
                return true;
            }
            const bool isJoined = at + 1 < text.size() && (text[at + 1] == L' ' || text[at + 1] == L'-');
            at += isJoined ? 1 : 0;
        }
    }
    return false;
}

Probe::Probe(Kind_ kind) : kind_(std::move(kind)) {}

Probe Probe::Contains(std::wstring_view text) {
    return Probe(Lower(text));
}

Probe Probe::Pattern(const std::wstring& pattern) {
    // The matcher without back-references needs no stack for long lines.
    return Probe(std::wregex(pattern, std::regex_constants::ECMAScript | std::regex_constants::icase |
                                          std::regex_constants::optimize | std::regex_constants::__polynomial));
}

Probe Probe::CardNumber() {
    return Probe(CardNumber_{});
}

bool Probe::Finds(std::wstring_view text) const {
    if (const auto* contained = std::get_if<std::wstring>(&kind_)) {
        return Lower(text).find(*contained) != std::wstring::npos;
    }
    if (const auto* pattern = std::get_if<std::wregex>(&kind_)) {
        return MatchesInALine_(*pattern, text);
    }
    return HoldsCardNumber(text);
}

Condition::Condition(Field field, std::vector<Probe> probes) : field_(field), probes_(std::move(probes)) {}

bool Condition::Holds(const Inspection& inspection) const {
    const auto texts = Texts_(inspection, field_);
    return std::ranges::any_of(texts, [&](std::wstring_view text) {
        return std::ranges::any_of(probes_, [&](const Probe& probe) { return probe.Finds(text); });
    });
}

} // namespace stand_ins::agent
