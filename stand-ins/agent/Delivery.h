#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace stand_ins::agent {

class Connection;

/// A place in the bytes of an answer.
struct Position {
    enum class Unit { FromStart, FromEnd, Percent };
    std::size_t value = 0;
    Unit unit = Unit::FromStart;
    bool isOdd = false; ///< moved on by a byte if it is even

    /// Reads "100", "-5" (from the end) or "50%"; nullopt for anything else.
    static std::optional<Position> FromText(std::wstring_view text);

    /// The place in so many bytes, at their end at the latest.
    std::size_t In(std::size_t size) const;
};

/// How the bytes of an answer go out.
struct Delivery {
    /// What becomes of the connection behind the last byte that is sent.
    enum class End {
        Close,   ///< the own side ends, and the client's end is waited for
        Reset,   ///< it breaks
        Silence, ///< it stays open without a word until the client ends
        Death,   ///< it is left to the caller, whose process ends at once
    };

    std::uint32_t delay = 0;           ///< milliseconds before the first byte
    std::size_t piece = 0;             ///< bytes of each write; 0: all in one
    std::uint32_t gap = 0;             ///< milliseconds between the pieces
    std::vector<Position> splits;      ///< a piece ends at each of these, and a moment passes
    std::optional<Position> stop;      ///< nothing behind it is sent; nullopt: all goes out
    std::optional<End> end;            ///< nullopt: End::Close
    std::optional<std::size_t> unread; ///< only so many bytes of the request are read; nullopt: all of it
    bool isRefused = false;            ///< there is no connection at all
};

/// Sends the bytes and ends the connection, both as told. How many went out to a client that can still read them.
std::size_t Deliver(Connection& connection, std::string_view bytes, const Delivery& delivery);

} // namespace stand_ins::agent
