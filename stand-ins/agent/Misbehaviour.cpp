#include "stand-ins/agent/Misbehaviour.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "stand-ins/agent/Quantity.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins {

using namespace agent;

namespace {

/// Cuts the text before the next mark off.
std::wstring_view Cut_(std::wstring_view& text, wchar_t mark) {
    const std::size_t at = text.find(mark);
    const std::wstring_view first = text.substr(0, at);
    text.remove_prefix(at == std::wstring_view::npos ? text.size() : at + 1);
    return first;
}

template <class Value>
Value Needed_(const std::optional<Value>& value, const char* what) {
    if (!value) {
        throw std::runtime_error(std::string("needs ") + what);
    }
    return *value;
}

Position Place_(std::wstring_view value, std::wstring_view usual) {
    return Needed_(Position::FromText(value.empty() ? usual : value), "a place such as 100, -5 or 50%");
}

std::uint32_t Time_(std::wstring_view value) {
    return Needed_(ReadDuration(value), "a time such as 2s or 500ms, 10 minutes at most");
}

std::size_t Count_(std::wstring_view value, std::wstring_view usual) {
    return Needed_(ReadNumber(value.empty() ? usual : value), "a number");
}

template <Delivery::End kEnd>
void EndAt_(Delivery& delivery, std::wstring_view value) {
    if (delivery.end) {
        throw std::runtime_error("a connection ends once");
    }
    delivery.end = kEnd;
    delivery.stop = Place_(value, L"0");
}

void SetPiece_(Delivery& delivery, std::wstring_view value) {
    delivery.piece = Count_(value, L"4096");
    if (delivery.piece == 0) {
        throw std::runtime_error("needs a number above 0");
    }
}

/// Five pieces of an odd size: the reader holds half a code unit four times.
void SplitOdd_(Delivery& delivery, std::wstring_view) {
    for (const std::size_t percent : {20, 40, 60, 80}) {
        delivery.splits.push_back({percent, Position::Unit::Percent, true});
    }
}

struct Way_ {
    std::wstring_view name;
    bool takesValue;
    void (*set)(Delivery&, std::wstring_view value);
};

constexpr Way_ kWays[] = {
    {L"pieces", true, &SetPiece_},
    {L"byte-by-byte", false, [](Delivery& delivery, std::wstring_view) { delivery.piece = 1; }},
    {L"split", true,
     [](Delivery& delivery, std::wstring_view value) { delivery.splits.push_back(Place_(value, L"50%")); }},
    {L"odd-split", false, &SplitOdd_},
    {L"gap", true, [](Delivery& delivery, std::wstring_view value) { delivery.gap = Time_(value); }},
    {L"delay", true, [](Delivery& delivery, std::wstring_view value) { delivery.delay = Time_(value); }},
    {L"close", true, &EndAt_<Delivery::End::Close>},
    {L"reset", true, &EndAt_<Delivery::End::Reset>},
    {L"silent", true, &EndAt_<Delivery::End::Silence>},
    {L"die", true, &EndAt_<Delivery::End::Death>},
    {L"unread", true, [](Delivery& delivery, std::wstring_view value) { delivery.unread = Count_(value, L"0"); }},
    {L"refuse", false, [](Delivery& delivery, std::wstring_view) { delivery.isRefused = true; }},
    {L"none", false, [](Delivery&, std::wstring_view) {}},
};

bool TakeWay_(std::wstring_view name, std::wstring_view value, Delivery& delivery) {
    const auto way = std::ranges::find(kWays, name, &Way_::name);
    if (way == std::end(kWays)) {
        return false;
    }
    if (!value.empty() && !way->takesValue) {
        throw std::runtime_error("takes no value");
    }
    way->set(delivery, value);
    return true;
}

void ExpectSight_(const Misbehaviour& misbehaviour) {
    if (misbehaviour.IsBlind()) {
        throw std::runtime_error("misbehaviour \"" + ToUtf8(misbehaviour.kinds) +
                                 "\" holds for all requests, not for one");
    }
}

std::string KnownKinds_() {
    std::vector<std::wstring_view> names = SpoilingNames();
    std::ranges::transform(kWays, std::back_inserter(names), &Way_::name);
    std::string known;
    for (const std::wstring_view name : names) {
        known += (known.empty() ? "" : ", ") + ToUtf8(name);
    }
    return known;
}

} // namespace

Misbehaviour::Misbehaviour(const std::wstring& asked, const std::wstring& words) : kinds(Trimmed(asked)) {
    std::wstring_view text = kinds;
    for (bool isLast = false; !isLast;) {
        isLast = text.find(L'+') == std::wstring_view::npos;
        const std::wstring_view whole = Trimmed(Cut_(text, L'+'));
        std::wstring_view value = whole;
        const std::wstring_view name = Trimmed(Cut_(value, L'='));
        value = Trimmed(value);
        try {
            if (auto spoiling = FindSpoiling(name, {std::wstring(value), words})) {
                spoilings.push_back(*std::move(spoiling));
                continue;
            }
            if (TakeWay_(name, value, delivery)) {
                continue;
            }
        } catch (const std::runtime_error& failure) {
            throw std::runtime_error("misbehaviour \"" + ToUtf8(whole) + "\": " + failure.what());
        }
        throw std::runtime_error("unknown misbehaviour \"" + ToUtf8(whole) + "\"; known are " + KnownKinds_());
    }
}

Misbehaviour Misbehaviour::OfItem(std::wstring_view text) {
    const std::wstring_view kinds = Cut_(text, L':');
    Misbehaviour misbehaviour(std::wstring(kinds), std::wstring(Trimmed(text)));
    ExpectSight_(misbehaviour);
    return misbehaviour;
}

bool Misbehaviour::IsUnderstood(std::size_t sent, std::size_t size) const {
    return sent == size && delivery.end != Delivery::End::Reset &&
           std::ranges::all_of(spoilings, &Spoiling::isHarmless);
}

const Misbehaviour Misbehaviour::None = {};
const Misbehaviour Misbehaviour::Refuse = L"refuse";
const Misbehaviour Misbehaviour::Silent = L"silent";
const Misbehaviour Misbehaviour::CloseMidMessage = L"close=50%";
const Misbehaviour Misbehaviour::Reset = L"reset";
const Misbehaviour Misbehaviour::Error = L"error";
const Misbehaviour Misbehaviour::Garbage = L"garbage";
const Misbehaviour Misbehaviour::TwoMessages = L"two-messages";
const Misbehaviour Misbehaviour::ByteByByte = L"byte-by-byte";
const Misbehaviour Misbehaviour::OddSplit = L"odd-split";

MisbehaviourRule::MisbehaviourRule(Misbehaviour kind, std::wstring ofMethod)
    : misbehaviour(std::move(kind)), method(std::move(ofMethod)) {
    if (!method.empty()) {
        ExpectSight_(misbehaviour);
    }
}

MisbehaviourRule MisbehaviourRule::FromText(std::wstring_view text) {
    const std::wstring_view kinds = Cut_(text, L':');
    const std::wstring_view method = Trimmed(Cut_(text, L':'));
    return {Misbehaviour(std::wstring(kinds), std::wstring(text)), std::wstring(method)};
}

} // namespace stand_ins
