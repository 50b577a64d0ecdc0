#include <cstring>

#include "benchmarks/support/Row.h"
#include "foundation/ConversionsUtils.h"

namespace {

using vorlek::ConversionsUtils;

const std::vector<BYTE>& Data_() {
    static const std::vector<BYTE> data = [] {
        std::vector<BYTE> bytes(64 << 20);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<BYTE>(i * 2654435761U >> 13);
        }
        return bytes;
    }();
    return data;
}

const std::wstring& Text_() {
    static const std::wstring text = ConversionsUtils::Base64EncodeData(Data_().data(), Data_().size());
    return text;
}

/// Into memory that is there already.
void Copy_(benchmark::State& state, const void* input, std::size_t size) {
    std::vector<BYTE> copy(size);
    for (auto turn : state) {
        std::memcpy(copy.data(), input, size);
        benchmark::ClobberMemory();
    }
}

void Encode_(benchmark::State& state) {
    const std::vector<BYTE>& data = Data_();
    for (auto turn : state) {
        benchmark::DoNotOptimize(ConversionsUtils::Base64EncodeData(data.data(), data.size()));
    }
}

void Decode_(benchmark::State& state) {
    const std::wstring& text = Text_();
    std::vector<BYTE> decoded;
    for (auto turn : state) {
        ConversionsUtils::Base64DecodeData(text.data(), text.size(), decoded);
        benchmark::ClobberMemory();
    }
    if (decoded != Data_()) {
        state.SkipWithError("the text does not give the data back");
    }
}

void CopyData_(benchmark::State& state) {
    Copy_(state, Data_().data(), Data_().size());
}

void CopyText_(benchmark::State& state) {
    Copy_(state, Text_().data(), Text_().size() * sizeof(wchar_t));
}

const benchmark_support::Row encode("base64 encode of 64 MB / memcpy", "at most 8", Encode_, CopyData_);
const benchmark_support::Row decode("base64 decode of 64 MB / memcpy", "at most 8", Decode_, CopyText_);

} // namespace
