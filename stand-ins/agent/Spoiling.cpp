#include "stand-ins/agent/Spoiling.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "platform/Windows.h"
#include "stand-ins/agent/Agent.h"
#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Quantity.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

/// Breaks XML wherever it stands.
constexpr std::wstring_view kMarkup = L"<&garbage>";
constexpr std::wstring_view kNoMessage = L"This is no message.";

WireMessage MessageOf_(const Answer& answer) {
    WireMessage message;
    message.pid = GetCurrentProcessId();
    switch (answer.kind) {
    case Answer::Kind::Number:
        message.entries[L"Result"] = {std::to_wstring(answer.number), L"int", {}};
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

using Detail_ = const SpoilingDetail&;

Spoiling OfMessage_(Spoiling::OfMessage change) {
    return {std::move(change)};
}

/// A change of every entry.
Spoiling OfEntries_(std::function<void(MessageEntry&)> change) {
    return OfMessage_([change = std::move(change)](WireMessage& message) {
        for (auto& [name, entry] : message.entries) {
            change(entry);
        }
    });
}

Spoiling OfText_(Spoiling::OfText change) {
    return {std::move(change)};
}

Spoiling OfBytes_(Spoiling::OfBytes change) {
    return {std::move(change)};
}

Spoiling Harmless_(Spoiling spoiling) {
    spoiling.isHarmless = true;
    return spoiling;
}

std::size_t Count_(Detail_ detail, std::size_t usual) {
    const auto count = detail.value.empty() ? usual : ReadNumber(detail.value);
    if (!count) {
        throw std::runtime_error("needs a number");
    }
    return *count;
}

std::wstring Repeated_(std::wstring_view text, std::size_t count) {
    std::wstring repeated;
    repeated.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

/// Puts a text before the first place of another one.
void InsertBefore_(std::wstring& text, std::wstring_view place, std::wstring_view inserted) {
    text.insert(std::min(text.find(place), text.size()), inserted);
}

// The spoilings that may be told something, or take more than a line.

Spoiling Error_(Detail_ detail) {
    return OfMessage_([words = detail.words.empty() ? L"The agent has failed." : detail.words](WireMessage& message) {
        message.type = L"Error";
        message.entries = {{L"Error", {words}}};
    });
}

/// A message without entries.
Spoiling Empty_(std::wstring type) {
    return OfMessage_([type = std::move(type)](WireMessage& message) {
        message.type = type;
        message.entries.clear();
    });
}

Spoiling WrongType_(Detail_ detail) {
    return OfMessage_(
        [type = detail.value.empty() ? L"Test" : detail.value](WireMessage& message) { message.type = type; });
}

Spoiling WrongTag_(Detail_ detail) {
    return OfEntries_([tag = detail.value](MessageEntry& entry) {
        entry.tag = !tag.empty() ? tag : entry.tag == L"int" ? L"string" : L"int";
    });
}

Spoiling WrongVersion_(Detail_ detail) {
    return OfMessage_(
        [version = detail.value.empty() ? L"2" : detail.value](WireMessage& message) { message.version = version; });
}

Spoiling WrongSize_(Detail_ detail) {
    return Harmless_(OfEntries_(
        [size = detail.value.empty() ? L"4294967295" : detail.value](MessageEntry& entry) { entry.size = size; }));
}

/// Blanks behind the value, so many that the whole has the size.
void Inflate_(WireMessage& message, std::size_t bytes) {
    const std::size_t characters = bytes / sizeof(wchar_t);
    const std::size_t own = message.ToText().size() + kDelimiter.size();
    if (message.entries.empty() || own >= characters) {
        return;
    }
    MessageEntry& entry = message.entries.begin()->second;
    const auto digits = [&] { return entry.size ? 0 : std::to_wstring(entry.TrueSize()).size(); };
    const std::size_t digitsBefore = digits();
    entry.value.append(characters - own, L' ');
    entry.value.resize(entry.value.size() - (digits() - digitsBefore));
}

Spoiling Huge_(Detail_ detail) {
    const auto size = ReadSize(detail.value.empty() ? L"100MB" : detail.value);
    if (!size) {
        throw std::runtime_error("needs a size such as 100MB, 1024MB at most");
    }
    return Harmless_(OfMessage_([size = *size](WireMessage& message) { Inflate_(message, size); }));
}

Spoiling Nested_(Detail_ detail) {
    return OfEntries_([depth = Count_(detail, 100000)](MessageEntry& entry) {
        entry.value =
            L"<decision result=\"1\">" + Repeated_(L"<a>", depth) + Repeated_(L"</a>", depth) + L"</decision>";
    });
}

Spoiling Keys_(Detail_ detail) {
    return Harmless_(OfText_([count = Count_(detail, 1000000)](std::wstring& text) {
        std::wstring keys;
        for (std::size_t i = 0; i < count; ++i) {
            keys += L"<Key name=\"k" + std::to_wstring(i) + L"\" type=\"int\" size=\"2\" hidden=\"0\">1</Key>";
        }
        InsertBefore_(text, L"</Msg>", keys);
    }));
}

/// Ten entities, each of them ten times the one before: a thousand million in the end.
void AddEntityBomb_(std::wstring& text) {
    std::wstring definition = L"<!DOCTYPE Msg [<!ENTITY e0 \"ha\">";
    for (int level = 1; level < 10; ++level) {
        definition += L"<!ENTITY e" + std::to_wstring(level) + L" \"" +
                      Repeated_(L"&e" + std::to_wstring(level - 1) + L";", 10) + L"\">";
    }
    InsertBefore_(text, L"</Key>", L"&e9;");
    InsertBefore_(text, L"<Msg", definition + L"]>");
}

Spoiling ExtraByte_(Detail_ detail) {
    const auto place = Position::FromText(detail.value.empty() ? L"100%" : detail.value);
    if (!place) {
        throw std::runtime_error("needs a place such as 100, -5 or 50%");
    }
    return OfBytes_([place = *place](std::string& bytes) { bytes.insert(place.In(bytes.size()), 1, 'x'); });
}

/// A name with what it stands for; a function of the value where it takes one.
struct Known_ {
    std::wstring_view name;
    std::variant<Spoiling, Spoiling (*)(Detail_)> spoiling;
};

const std::vector<Known_>& AllKnown_() {
    static const std::vector<Known_> known = {
        {L"error", &Error_},
        {L"no-result", Empty_(L"Response")},
        {L"no-words", Empty_(L"Error")},
        {L"wrong-type", &WrongType_},
        {L"wrong-tag", &WrongTag_},
        {L"wrong-version", &WrongVersion_},
        {L"wrong-size", &WrongSize_},
        {L"not-base64", OfEntries_([](auto& entry) {
             entry = {L"%%% no base64 %%%", L"byte[]"};
         })},
        {L"not-a-number", OfEntries_([](auto& entry) { entry.value = L"many"; })},
        {L"half-surrogate", Harmless_(OfEntries_([](auto& entry) { entry.value += L'\xD83D'; }))},
        {L"huge", &Huge_},
        {L"nested", &Nested_},
        {L"keys", &Keys_},
        {L"type-definition",
         OfText_([](auto& text) { InsertBefore_(text, L"<Msg", L"<!DOCTYPE Msg [<!ELEMENT Msg ANY>]>"); })},
        {L"entity-bomb", OfText_(&AddEntityBomb_)},
        {L"byte-order-mark", Harmless_(OfText_([](auto& text) { text.insert(0, 1, L'\xFEFF'); }))},
        {L"garbage", OfText_([](auto& text) { (text = kNoMessage) += kDelimiter; })},
        {L"garbage-before", OfText_([](auto& text) { text.insert(0, kMarkup); })},
        {L"garbage-inside", OfText_([](auto& text) { text.insert(text.size() / 2, kMarkup); })},
        {L"garbage-after", OfText_([](auto& text) { InsertBefore_(text, kDelimiter, kMarkup); })},
        {L"garbage-behind", OfText_([](auto& text) { text += kNoMessage; })},
        {L"second-garbage", OfText_([](auto& text) { (text += kNoMessage) += kDelimiter; })},
        {L"two-messages", Harmless_(OfText_([](auto& text) { text += std::wstring(text); }))},
        {L"empty", OfText_([](auto& text) { text = kDelimiter; })},
        {L"two-delimiters", Harmless_(OfText_([](auto& text) { text += kDelimiter; }))},
        {L"no-delimiter", OfText_([](auto& text) { text.erase(std::min(text.find(kDelimiter), text.size())); })},
        {L"bare-delimiter", OfText_([](auto& text) { InsertBefore_(text, L"</Key>", kDelimiter); })},
        {L"extra-byte", &ExtraByte_},
        {L"utf-8", OfBytes_([](auto& bytes) { bytes = ToUtf8(FromWire(bytes)); })},
    };
    return known;
}

/// Makes the changes of one stage.
template <class Stage, class Subject>
void Spoil_(Subject& subject, const std::vector<Spoiling>& spoilings) {
    for (const Spoiling& spoiling : spoilings) {
        if (const auto* change = std::get_if<Stage>(&spoiling.change)) {
            (*change)(subject);
        }
    }
}

} // namespace

std::optional<Spoiling> FindSpoiling(std::wstring_view name, const SpoilingDetail& detail) {
    const auto known = std::ranges::find(AllKnown_(), name, &Known_::name);
    if (known == AllKnown_().end()) {
        return std::nullopt;
    }
    const auto* const make = std::get_if<Spoiling (*)(Detail_)>(&known->spoiling);
    if (!detail.value.empty() && (make == nullptr || *make == &Error_)) {
        throw std::runtime_error("takes no value");
    }
    return make == nullptr ? std::get<Spoiling>(known->spoiling) : (*make)(detail);
}

std::vector<std::wstring_view> SpoilingNames() {
    std::vector<std::wstring_view> names;
    std::ranges::transform(AllKnown_(), std::back_inserter(names), &Known_::name);
    return names;
}

std::string BytesOf(const Answer& answer, const std::vector<Spoiling>& spoilings) {
    std::string bytes = answer.bytes;
    if (answer.kind != Answer::Kind::Bytes) {
        WireMessage message = MessageOf_(answer);
        Spoil_<Spoiling::OfMessage>(message, spoilings);
        std::wstring text = message.ToText().append(kDelimiter);
        Spoil_<Spoiling::OfText>(text, spoilings);
        bytes = ToWire(text);
    }
    Spoil_<Spoiling::OfBytes>(bytes, spoilings);
    return bytes;
}

} // namespace stand_ins::agent
