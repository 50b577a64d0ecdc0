#include "stand-ins/agent/Delivery.h"

#include <utility>

#include "stand-ins/agent/Message.h"

namespace stand_ins::agent {
namespace {

/// Long enough for a client to read what has come before the next piece comes.
constexpr std::uint32_t kGap = 15;

std::string Framed_(const WireMessage& message) {
    return ToWire(message.ToText()) + ToWire(kDelimiter);
}

WireMessage MessageOf_(const Answer& answer) {
    WireMessage message;
    message.pid = GetCurrentProcessId();
    switch (answer.kind) {
    case Answer::Kind::Number:
        message.entries[L"Result"] = {std::to_wstring(answer.number), L"int"};
        break;
    case Answer::Kind::Error:
        message.type = L"Error";
        message.entries[L"Error"] = {answer.text};
        break;
    default:
        message.entries[L"Result"] = {answer.text};
    }
    return message;
}

bool SendByteByByte_(Connection& connection, const std::string& bytes) {
    for (const char& byte : bytes) {
        if (!connection.Send({&byte, 1})) {
            return false;
        }
    }
    return true;
}

/// Five pieces of an odd size each but the last: the reader holds half a code unit four times.
bool SendOddSplit_(Connection& connection, std::string_view bytes) {
    const std::size_t size = (bytes.size() / 5) | 1;
    while (bytes.size() > size) {
        if (!connection.Send(bytes.substr(0, size)) || !connection.Pause(kGap)) {
            return false;
        }
        bytes.remove_prefix(size);
    }
    return connection.Send(bytes);
}

/// The answer's message as a bad agent writes it.
WireMessage Spoilt_(const Answer& answer, const MisbehaviourRule& misbehaviour) {
    WireMessage message = MessageOf_(answer);
    switch (misbehaviour.kind) {
    case Misbehaviour::Error:
        return MessageOf_(Answer::Error(misbehaviour.words));
    case Misbehaviour::NoResult:
        message.type = L"Response";
        message.entries.clear();
        break;
    case Misbehaviour::WrongTag:
        for (auto& [name, entry] : message.entries) {
            entry.tag = entry.tag == L"int" ? L"string" : L"int";
        }
        break;
    case Misbehaviour::WrongTypeTest:
        message.type = L"Test";
        break;
    case Misbehaviour::WrongTypeRequest:
        message.type = L"Request";
        break;
    default:
        break;
    }
    return message;
}

} // namespace

std::string BytesOf(const Answer& answer) {
    return answer.kind == Answer::Kind::Bytes ? answer.bytes : Framed_(MessageOf_(answer));
}

bool Deliver(Connection& connection, const Answer& answer, const MisbehaviourRule& misbehaviour) {
    bool isGood = true;
    switch (misbehaviour.kind) {
    case Misbehaviour::None:
        isGood = connection.Send(BytesOf(answer));
        break;
    case Misbehaviour::TwoMessages:
        isGood = connection.Send(BytesOf(answer) + BytesOf(answer));
        break;
    case Misbehaviour::ByteByByte:
        isGood = SendByteByByte_(connection, BytesOf(answer));
        break;
    case Misbehaviour::OddSplit:
        isGood = SendOddSplit_(connection, BytesOf(answer));
        break;
    case Misbehaviour::CloseMidMessage: {
        const std::string bytes = BytesOf(answer);
        connection.Send(std::string_view(bytes).substr(0, bytes.size() / 2));
        isGood = false;
        break;
    }
    case Misbehaviour::Garbage:
        connection.Send(ToWire(L"This is no message.") + ToWire(kDelimiter));
        isGood = false;
        break;
    case Misbehaviour::Reset:
        connection.Reset();
        return false;
    case Misbehaviour::Silent:
        connection.AwaitEnd();
        return false;
    default:
        connection.Send(Framed_(Spoilt_(answer, misbehaviour)));
        isGood = false;
    }
    connection.Finish();
    return isGood;
}

} // namespace stand_ins::agent
