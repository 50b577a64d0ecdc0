#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "stand-ins/agent/Delivery.h"
#include "stand-ins/agent/Spoiling.h"

namespace stand_ins {

/// A way to let the client down: faults in what is answered, and a way in which it goes out. Each is named, and any of
/// them go together; stand-ins/agent/README.md lists them.
struct Misbehaviour {
    std::wstring kinds = L"none"; ///< as they were asked for
    std::vector<agent::Spoiling> spoilings;
    agent::Delivery delivery;

    /// An agent as it should be.
    Misbehaviour() = default;

    /// Reads "KIND", "KIND=VALUE" and several of them joined by "+". `words` are those of the kind "error".
    /// Throws std::runtime_error: one line that says what is wrong, or lists the kinds.
    Misbehaviour(const std::wstring& kinds, const std::wstring& words = {});
    Misbehaviour(const wchar_t* kinds) : Misbehaviour(std::wstring(kinds)) {}

    /// Reads "KINDS" or "KINDS: WORDS", for one item. Throws as the constructor, also for kinds that are blind.
    static Misbehaviour OfItem(std::wstring_view text);

    bool IsNone() const { return kinds == L"none"; }

    /// Whether it begins before the request has been read, and so holds for all methods alike.
    bool IsBlind() const { return delivery.isRefused || delivery.unread; }

    /// Whether a client that does as the format says may understand an answer of which so many bytes were sent.
    bool IsUnderstood(std::size_t sent, std::size_t size) const;

    // The most usual ones.
    static const Misbehaviour None;
    static const Misbehaviour Refuse;          ///< "refuse"
    static const Misbehaviour Silent;          ///< "silent"
    static const Misbehaviour CloseMidMessage; ///< "close=50%"
    static const Misbehaviour Reset;           ///< "reset"
    static const Misbehaviour Error;           ///< "error"
    static const Misbehaviour Garbage;         ///< "garbage"
    static const Misbehaviour TwoMessages;     ///< "two-messages"
    static const Misbehaviour ByteByByte;      ///< "byte-by-byte"
    static const Misbehaviour OddSplit;        ///< "odd-split"
};

/// A misbehaviour with what it holds for.
struct MisbehaviourRule {
    /// Throws std::runtime_error for a method with a misbehaviour that is blind.
    MisbehaviourRule(Misbehaviour misbehaviour, std::wstring method = {});

    /// Reads "KINDS", "KINDS:METHOD" or "KINDS:METHOD:WORDS". Throws as the constructors do.
    static MisbehaviourRule FromText(std::wstring_view text);

    Misbehaviour misbehaviour;
    std::wstring method; ///< the one method that it holds for; empty: all
};

} // namespace stand_ins
