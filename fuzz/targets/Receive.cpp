#include <algorithm>

#include "fuzz/driver/Random.h"
#include "fuzz/targets/MessageMaterial.h"
#include "fuzz/targets/ScriptedSocket.h"
#include "fuzz/targets/Targets.h"
#include "plugin-link/Exceptions.h"
#include "plugin-link/MessageCommon.h"

namespace fuzz {
namespace {

using vorlek::Message;

constexpr UnitsView kDelimiter = L"###@@@###";

/// What a reader got of a stream.
struct Reading {
    std::vector<std::wstring> messages;
    std::string failure; ///< that ended it; empty if the stream was read to its end
    bool operator==(const Reading&) const = default;
};

std::string Bytes_(UnitsView text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

/// Wine's reader lets characters pass that no writer takes.
std::wstring Written_(const Message& message) {
    try {
        return message.ToString();
    } catch (const vorlek::Exception&) {
        return L"cannot be written";
    }
}

/// Everything that can be received, call after call.
Reading Receive_(const std::string& stream, std::vector<std::size_t> cuts) {
    ScriptedSocket socket(stream, std::move(cuts));
    std::vector<std::unique_ptr<Message>> messages;
    Reading reading;
    try {
        while (!socket.IsAtEnd()) {
            vorlek::MessageCommon::Receive(socket.Get(), messages);
        }
    } catch (const vorlek::ConnectionTerminatedException&) {
        reading.failure = "connection terminated";
    } catch (const vorlek::Exception&) {
        reading.failure = "no message";
    }
    for (const auto& message : messages) {
        reading.messages.push_back(Written_(*message));
    }
    return reading;
}

/// Anywhere, in front of, inside and behind delimiters, with a liking for their ends.
std::vector<std::size_t> Cuts_(const std::string& stream, Random& random) {
    std::vector<std::size_t> cuts(random.Below(8));
    for (std::size_t& cut : cuts) {
        cut = random.Below(stream.size());
    }
    const std::string delimiter = Bytes_(kDelimiter);
    for (std::size_t at = stream.find(delimiter); at != stream.npos; at = stream.find(delimiter, at + 1)) {
        if (random.OneIn(2)) {
            cuts.push_back(at + delimiter.size());
        } else if (random.OneIn(2)) {
            cuts.push_back(at + random.Below(delimiter.size() + 2));
        }
    }
    std::ranges::sort(cuts);
    return cuts;
}

/// A message's end may come where it likes, or not at all.
std::string RunBroken_(std::string stream, Random& random) {
    stream.erase(random.Below(stream.size()), 1);
    return Receive_(stream, Cuts_(stream, random)).failure;
}

/// Whether the delimiter at the end shares characters with one before it. A reader that stops at the first one then
/// finds no end behind it; one that gets both at once does.
bool EndsTwice_(UnitsView text) {
    std::size_t begin = 0;
    for (std::size_t at = 0; (at = text.find(kDelimiter, begin)) != text.npos;) {
        begin = at + kDelimiter.size();
    }
    return begin != text.size();
}

std::string Run_(UnitsView input) {
    Random random(Hash(input));
    const Units text = Units(input).append(kDelimiter);
    const std::string stream = Bytes_(text);
    if (random.OneIn(8)) {
        return "broken stream: " + RunBroken_(stream, random);
    }
    if (EndsTwice_(text)) {
        return "two ends in one: " + Receive_(stream, Cuts_(stream, random)).failure;
    }
    const Reading reading = Receive_(stream, {});
    Require(reading == Receive_(stream, Cuts_(stream, random)), "other pieces give other messages");
    const std::size_t count = std::min<std::size_t>(reading.messages.size(), 3);
    return std::to_string(count) + (count == 3 ? " messages or more " : " messages ") + reading.failure;
}

Material Material_() {
    Material material = MessageMaterial();
    material.most = 8192;
    // Streams of several messages, which only the delimiter parts.
    Units all;
    for (const Units& message : material.corpus) {
        if (all.size() + message.size() < material.most / 2) {
            all.append(message).append(kDelimiter);
        }
    }
    material.corpus.push_back(all);
    AddTokens(material, L"###@@@### | ###@@@###@@@### | ###@@@######@@@### | ### | @@@");
    return material;
}

} // namespace

Target ReceiveTarget() {
    return {.name = "receive", .material = Material_, .run = Run_, .raises = {}};
}

} // namespace fuzz
