#pragma once
#include <string>
#include <string_view>

namespace stand_ins {

/// The ways in which an agent can let its client down. Unless told otherwise the request is read first.
enum class Misbehaviour {
    None,             ///< "none": an agent as it should be
    Refuse,           ///< "refuse": the port stays published, but nothing listens on it; holds for every method
    Silent,           ///< "silent": the request is read and never answered
    CloseMidMessage,  ///< "close-mid-message": half of the answer, then the end of the connection
    Reset,            ///< "reset": no answer, the connection is reset
    Error,            ///< "error": an `Error` answer with words of the caller's choice
    Garbage,          ///< "garbage": text that is no message, with the delimiter behind it
    TwoMessages,      ///< "two-messages": the answer twice, in one write
    ByteByByte,       ///< "byte-by-byte": the answer in writes of one byte
    OddSplit,         ///< "odd-split": the answer in pieces that end in the middle of a code unit
    NoResult,         ///< "no-result": a `Response` without "Result"
    WrongTag,         ///< "wrong-tag": "Result" as "int" where a string is due, and the other way round
    WrongTypeTest,    ///< "wrong-type-test": the answer as a `Test` message
    WrongTypeRequest, ///< "wrong-type-request": the answer as a `Request` message
    Die,              ///< "die": the process ends at once, with status 3
};

/// A misbehaviour with what it holds for.
struct MisbehaviourRule {
    Misbehaviour kind = Misbehaviour::None;
    std::wstring method;                           ///< the one method that it holds for; empty: all
    std::wstring words = L"The agent has failed."; ///< the "Error" text of Misbehaviour::Error

    /// Reads "KIND" or "KIND:METHOD", for the kind "error" also "error:METHOD:WORDS" ("error::WORDS" for all methods).
    /// Throws std::runtime_error that lists the kinds.
    static MisbehaviourRule FromText(std::wstring_view text);
};

} // namespace stand_ins
