#pragma once
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace stand_ins {
struct Answer;
}

namespace stand_ins::agent {

struct WireMessage;

/// One fault in what is answered, made at one of the stages between an answer's meaning and its bytes.
struct Spoiling {
    using OfMessage = std::function<void(WireMessage&)>;
    using OfText = std::function<void(std::wstring&)>; ///< of the message's text and the delimiter
    using OfBytes = std::function<void(std::string&)>;

    std::variant<OfMessage, OfText, OfBytes> change;
    bool isHarmless = false; ///< a client that does as the format says understands the answer all the same
};

/// What a spoiling may be told beside its name.
struct SpoilingDetail {
    std::wstring value; ///< behind the "="; empty: the usual
    std::wstring words; ///< for an `Error` answer; empty: the usual
};

/// The spoiling of a name; nullopt if there is none. Throws std::runtime_error if the value is none of its values.
std::optional<Spoiling> FindSpoiling(std::wstring_view name, const SpoilingDetail& detail);

/// The names that FindSpoiling knows.
std::vector<std::wstring_view> SpoilingNames();

/// The bytes of an answer, each stage spoilt in the order given. An answer of bytes has no earlier stages.
std::string BytesOf(const Answer& answer, const std::vector<Spoiling>& spoilings = {});

} // namespace stand_ins::agent
