#include <cstdlib>
#include <cstring>
#include <memory>

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

/// Into memory as new as that of an operation's result: the system clears each page when it is first touched.
void CopyAfresh_(benchmark::State& state, const void* input, std::size_t size) {
    for (auto turn : state) {
        const std::unique_ptr<void, decltype(&std::free)> copy(std::malloc(size), std::free);
        benchmark::DoNotOptimize(std::memcpy(copy.get(), input, size));
        benchmark::ClobberMemory();
    }
}

void CopyInPlace_(benchmark::State& state, const void* input, std::size_t size) {
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

void CopyDataAfresh_(benchmark::State& state) {
    CopyAfresh_(state, Data_().data(), Data_().size());
}

void CopyDataInPlace_(benchmark::State& state) {
    CopyInPlace_(state, Data_().data(), Data_().size());
}

void CopyTextAfresh_(benchmark::State& state) {
    CopyAfresh_(state, Text_().data(), Text_().size() * sizeof(wchar_t));
}

void CopyTextInPlace_(benchmark::State& state) {
    CopyInPlace_(state, Text_().data(), Text_().size() * sizeof(wchar_t));
}

using benchmark_support::Row;

const Row encode("base64 encode of 64 MB / memcpy to new memory", "at most 8", Encode_, CopyDataAfresh_);
const Row decode("base64 decode of 64 MB / memcpy to new memory", "at most 8", Decode_, CopyTextAfresh_);
const Row encodeBare("base64 encode of 64 MB / memcpy to used memory", "", Encode_, CopyDataInPlace_);
const Row decodeBare("base64 decode of 64 MB / memcpy to used memory", "at most 8", Decode_, CopyTextInPlace_);

} // namespace
