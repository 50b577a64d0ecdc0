// Targets that break their promises in every way that the fuzzer knows, at the word "boom".
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>

#include "foundation/Throw.h"
#include "fuzz/driver/Random.h"
#include "fuzz/driver/Target.h"
#include "platform/Windows.h"

namespace {

using fuzz::Material;
using fuzz::UnitsView;

Material Example() {
    return {.corpus = {L"a text with boom in its middle"}, .tokens = {L"boom", L"x"}, .boundaries = L" "};
}

bool IsAtFault(UnitsView input) {
    return input.find(L"boom") != input.npos;
}

volatile int* nowhere = reinterpret_cast<volatile int*>(64);
volatile std::size_t one = 1;

std::size_t Recurse(std::size_t depth) { // NOLINT(misc-no-recursion)
    volatile char frame[1000];
    frame[0] = static_cast<char>(depth);
    return depth == 0 ? 0 : Recurse(depth + one) + static_cast<std::size_t>(frame[0]);
}

using Body = void (*)();

template <Body fault>
std::string Run(UnitsView input) {
    if (IsAtFault(input)) {
        fault();
    }
    return "nothing";
}

void Crash() {
    *nowhere = 1;
}
void Trap() {
    __builtin_trap();
}
void Overflow() {
    Recurse(1);
}
void Overrun() {
    const auto bytes = std::make_unique<volatile char[]>(100);
    bytes[112 * one] = 'x'; // behind the page
}
void Slack() {
    const auto bytes = std::make_unique<volatile char[]>(100);
    bytes[100 * one] = 'x'; // before its end
}
void UseReleased() {
    auto bytes = std::make_unique<volatile char[]>(100);
    volatile char* released = bytes.get();
    bytes.reset();
    released[50] = 'x';
}
void Abort() {
    std::terminate();
}
void End() {
    TerminateProcess(GetCurrentProcess(), 5);
}
void Violate() {
    fuzz::Require(false, "a promise was broken");
}
void Raise() {
    vorlek::Throw<vorlek::IOException>(L"place", L"file 17 \"name\" <path> is gone: 5");
}
void RaiseStandard() {
    throw std::length_error("too long");
}
void RaiseUnknown() {
    throw 1; // NOLINT(hicpp-exception-baseclass)
}
void Hang() {
    while (one != 0) {
    }
}
void Grow() {
    constexpr std::size_t size = 1 << 24;
    for (int i = 0; i < 32; ++i) {
        std::memset(VirtualAlloc(nullptr, size, MEM_COMMIT, PAGE_READWRITE), 1, size);
    }
    WaitForSingleObject(GetCurrentProcess(), INFINITE);
}

/// The half of all inputs.
std::string RunSometimes(UnitsView input) {
    fuzz::Require(fuzz::Hash(input) % 2 == 0, "odd");
    return "even";
}

int runsBefore = 0;

std::string RunWithMemory(UnitsView) {
    fuzz::Require(++runsBefore != 5, "the fifth run");
    return "nothing";
}

std::string RunWithoutFault(UnitsView input) {
    if (input.size() % 3 == 0) {
        vorlek::Throw(L"place", L"size ", input.size(), L" is no size: ", input.size());
    }
    return IsAtFault(input) ? "boom" : "no boom";
}

} // namespace

namespace fuzz {

const std::vector<Target>& Targets() {
    static const std::vector<Target> targets = {
        {"crash", Example, Run<Crash>, {}},
        {"trap", Example, Run<Trap>, {}},
        {"stack_overflow", Example, Run<Overflow>, {}},
        {"overrun", Example, Run<Overrun>, {}},
        {"slack", Example, Run<Slack>, {}},
        {"use_of_released", Example, Run<UseReleased>, {}},
        {"abort", Example, Run<Abort>, {}},
        {"end", Example, Run<End>, {}},
        {"violation", Example, Run<Violate>, {}},
        {"exception", Example, Run<Raise>, {L"ArgumentException"}},
        {"standard_exception", Example, Run<RaiseStandard>, {}},
        {"unknown_exception", Example, Run<RaiseUnknown>, {}},
        {.name = "hang", .material = Example, .run = Run<Hang>, .raises = {}, .longestRun = 1000},
        {.name = "growth", .material = Example, .run = Run<Grow>, .raises = {}, .mostMemory = std::size_t{1} << 27},
        {"sometimes", Example, RunSometimes, {}},
        {"with_memory", Example, RunWithMemory, {}},
        {"short_lived", Example, RunWithMemory, {}, 4},
        {"without_fault", Example, RunWithoutFault, {L"Exception"}},
    };
    return targets;
}

} // namespace fuzz
