#include "plugin-link/Message.h"

#include "fuzz/targets/MessageMaterial.h"
#include "fuzz/targets/Targets.h"

namespace fuzz {
namespace {

using vorlek::Message;

/// The type under which the value can be had.
template <class Value>
bool IsReadAs_(const Message& message, const wchar_t* name) {
    Value value{};
    try {
        message.Get(name, value);
        return true;
    } catch (const vorlek::ArgumentException&) {
        return false;
    }
}

std::string KindOfResult_(const Message& message) {
    constexpr const wchar_t* name = L"Result";
    if (!message.HasValue(name)) {
        return "no result";
    }
    message.GetValueSize(name);
    return IsReadAs_<std::wstring>(message, name)        ? "text"
           : IsReadAs_<std::int32_t>(message, name)      ? "number"
           : IsReadAs_<std::vector<BYTE>>(message, name) ? "bytes"
                                                         : "unknown type";
}

/// A value of white space alone reads back empty.
std::wstring WithoutWhiteSpace_(std::wstring text) {
    std::erase_if(text, [](wchar_t unit) { return unit == L' ' || (unit >= L'\t' && unit <= L'\r'); });
    return text;
}

std::string Run_(UnitsView input) {
    const auto message = Message::FromString(Units(input));
    const std::wstring text = message->ToString();
    message->ToLogString();
    Require(WithoutWhiteSpace_(Message::FromString(text)->ToString()) == WithoutWhiteSpace_(text),
            "a message reads back as another");
    constexpr const char* types[] = {"Request", "Response", "Error", "Test"};
    return std::string(types[static_cast<std::uint32_t>(message->GetMessageType())]) + ", " + KindOfResult_(*message);
}

} // namespace

Target MessageTarget() {
    return {.name = "message", .material = MessageMaterial, .run = Run_, .raises = {L"Exception"}};
}

} // namespace fuzz
