#include "fuzz/driver/Random.h"
#include "fuzz/targets/MessageMaterial.h"
#include "fuzz/targets/ScriptedSocket.h"
#include "fuzz/targets/Targets.h"
#include "plugin-link/MessageCommon.h"

namespace fuzz {
namespace {

using vorlek::Message;
using vorlek::MessageType;

/// The text as XML can hold it and gives it back: no characters that it knows none of, no half surrogates, no carriage
/// return, which becomes a line feed, and not white space alone.
std::wstring Writable_(UnitsView input) {
    std::wstring text = L"x";
    for (std::size_t i = 0; i < input.size(); ++i) {
        const wchar_t unit = input[i];
        const bool isControl = unit < L' ' && unit != L'\t' && unit != L'\n';
        if (IS_HIGH_SURROGATE(unit) && i + 1 < input.size() && IS_LOW_SURROGATE(input[i + 1])) {
            text.append(input, i++, 2);
        } else {
            text.push_back(isControl || IS_HIGH_SURROGATE(unit) || IS_LOW_SURROGATE(unit) || unit >= 0xFFFE ? L'?'
                                                                                                            : unit);
        }
    }
    return text;
}

std::string Run_(UnitsView input) {
    Random random(Hash(input));
    const std::wstring text = Writable_(input);
    const std::vector<BYTE> bytes(reinterpret_cast<const BYTE*>(input.data()),
                                  reinterpret_cast<const BYTE*>(input.data() + input.size()));
    const auto number = static_cast<std::int32_t>(random.Next());
    Message sent(MessageType::Request, 1);
    sent.Set(L"Param", text, random.OneIn(2));
    sent.Set(L"Bytes", bytes, random.OneIn(2));
    sent.Set(L"Number", number, random.OneIn(2));

    ScriptedSocket out({});
    vorlek::MessageCommon::Send(out.Get(), sent);
    ScriptedSocket in(out.Sent(), {random.Below(out.Sent().size())});
    std::vector<std::unique_ptr<Message>> received;
    vorlek::MessageCommon::Receive(in.Get(), received);

    Require(in.IsAtEnd() && received.size() == 1, "one message arrives as several");
    std::wstring textBack;
    std::vector<BYTE> bytesBack;
    std::int32_t numberBack = 0;
    received[0]->Get(L"Param", textBack);
    received[0]->Get(L"Bytes", bytesBack);
    received[0]->Get(L"Number", numberBack);
    Require(textBack == text, "a text arrives as another");
    Require(bytesBack == bytes, "bytes arrive as others");
    Require(numberBack == number, "a number arrives as another");
    return "the same";
}

Material Material_() {
    Material material = MessageMaterial();
    material.most = 2048;
    return material;
}

} // namespace

Target ExchangeTarget() {
    return {.name = "exchange", .material = Material_, .run = Run_, .raises = {}};
}

} // namespace fuzz
