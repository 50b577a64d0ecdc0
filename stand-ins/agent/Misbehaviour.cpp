#include "stand-ins/agent/Misbehaviour.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "stand-ins/agent/Text.h"

namespace stand_ins {

using namespace agent;

namespace {

struct Name_ {
    std::wstring_view text;
    Misbehaviour kind;
};

constexpr Name_ kNames[] = {
    {L"none", Misbehaviour::None},
    {L"refuse", Misbehaviour::Refuse},
    {L"silent", Misbehaviour::Silent},
    {L"close-mid-message", Misbehaviour::CloseMidMessage},
    {L"reset", Misbehaviour::Reset},
    {L"error", Misbehaviour::Error},
    {L"garbage", Misbehaviour::Garbage},
    {L"two-messages", Misbehaviour::TwoMessages},
    {L"byte-by-byte", Misbehaviour::ByteByByte},
    {L"odd-split", Misbehaviour::OddSplit},
    {L"no-result", Misbehaviour::NoResult},
    {L"wrong-tag", Misbehaviour::WrongTag},
    {L"wrong-type-test", Misbehaviour::WrongTypeTest},
    {L"wrong-type-request", Misbehaviour::WrongTypeRequest},
    {L"die", Misbehaviour::Die},
};

/// Cuts the text before the next colon off.
std::wstring_view Cut_(std::wstring_view& text) {
    const std::size_t colon = text.find(L':');
    const std::wstring_view first = text.substr(0, colon);
    text.remove_prefix(colon == std::wstring_view::npos ? text.size() : colon + 1);
    return first;
}

} // namespace

MisbehaviourRule MisbehaviourRule::FromText(std::wstring_view text) {
    std::wstring_view rest = text;
    const std::wstring_view kind = Cut_(rest);
    const auto found = std::ranges::find(kNames, kind, &Name_::text);
    MisbehaviourRule rule;
    if (found != std::end(kNames)) {
        rule.kind = found->kind;
        rule.method = rule.kind == Misbehaviour::Error ? Cut_(rest) : rest;
        if (rule.kind == Misbehaviour::Error && !rest.empty()) {
            rule.words = rest;
        }
        return rule;
    }
    std::string known;
    for (const Name_& name : kNames) {
        known += (known.empty() ? "" : ", ") + ToUtf8(name.text);
    }
    throw std::runtime_error("unknown misbehaviour \"" + ToUtf8(text) + "\"; known are " + known);
}

} // namespace stand_ins
