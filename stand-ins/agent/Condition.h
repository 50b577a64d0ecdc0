#pragma once
#include <regex>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace stand_ins::agent {

struct Inspection;

/// The part of an item that a condition looks at.
enum class Field { Channel, Subject, Body, Text, Sender, Recipient, AttachmentName, AttachmentContent, Anywhere };

/// A number of 13 to 19 digits, single spaces or hyphens between them allowed, whose check digit is right (ISO/IEC
/// 7812, the Luhn formula).
bool HoldsCardNumber(std::wstring_view text);

/// One thing to look for.
class Probe {
public:
    /// The text, in either case.
    static Probe Contains(std::wstring_view text);

    /// A regular expression (ECMAScript, no back-references), in either case, within one line.
    /// Throws std::regex_error.
    static Probe Pattern(const std::wstring& pattern);

    static Probe CardNumber();

    bool Finds(std::wstring_view text) const;

private:
    struct CardNumber_ {};
    using Kind_ = std::variant<std::wstring, std::wregex, CardNumber_>;
    explicit Probe(Kind_ kind);

    Kind_ kind_;
};

/// Holds if one of the probes finds something in the field.
class Condition {
public:
    Condition(Field field, std::vector<Probe> probes);

    /// Throws std::runtime_error if an attachment has to be read and cannot be.
    bool Holds(const Inspection& inspection) const;

private:
    Field field_;
    std::vector<Probe> probes_;
};

} // namespace stand_ins::agent
