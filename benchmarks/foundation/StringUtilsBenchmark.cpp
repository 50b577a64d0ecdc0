#include "benchmarks/support/Row.h"
#include "foundation/StringUtils.h"

namespace {

using vorlek::StringUtils;

constexpr std::size_t kCharacters = 1 << 20;

/// Mostly ASCII, as mail is.
const std::wstring& Wide_() {
    static const std::wstring wide = [] {
        std::wstring text;
        while (text.size() < kCharacters) {
            text += L"Please find the figures in Z\x00FCrich, \x017C\x00F3\x0142w, attached. ";
        }
        return text;
    }();
    return wide;
}

const std::string& Utf8_() {
    static const std::string utf8 = StringUtils::ToUtf8(Wide_());
    return utf8;
}

void ToUtf8_(benchmark::State& state) {
    const std::wstring& wide = Wide_();
    for (auto turn : state) {
        benchmark::DoNotOptimize(StringUtils::ToUtf8(wide));
    }
}

void WideCharToMultiByte_(benchmark::State& state) {
    const std::wstring& wide = Wide_();
    for (auto turn : state) {
        std::string utf8(Utf8_().size(), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), utf8.data(),
                            static_cast<int>(utf8.size()), nullptr, nullptr);
        benchmark::DoNotOptimize(utf8.data());
    }
}

void FromUtf8_(benchmark::State& state) {
    const std::string& utf8 = Utf8_();
    for (auto turn : state) {
        benchmark::DoNotOptimize(StringUtils::FromUtf8(utf8));
    }
}

void MultiByteToWideChar_(benchmark::State& state) {
    const std::string& utf8 = Utf8_();
    for (auto turn : state) {
        std::wstring wide(Wide_().size(), L'\0');
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(),
                            static_cast<int>(wide.size()));
        benchmark::DoNotOptimize(wide.data());
    }
}

const benchmark_support::Row toUtf8("to UTF-8, 1 M characters / one system call", "", ToUtf8_, WideCharToMultiByte_);
const benchmark_support::Row fromUtf8("from UTF-8, 1 M characters / one system call", "", FromUtf8_,
                                      MultiByteToWideChar_);

} // namespace
