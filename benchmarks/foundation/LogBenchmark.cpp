#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>

#include <log4cxx/appenderskeleton.h>

#include "benchmarks/support/Row.h"
#include "foundation/Log.h"

namespace {

std::atomic<std::size_t> allocations = 0;
std::atomic<bool> flag = false;

} // namespace

void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* block = std::malloc(size)) {
        return block;
    }
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

/// Takes what is logged to nowhere.
class Discard : public log4cxx::AppenderSkeleton {
public:
    void close() override {}
    bool requiresLayout() const override { return false; }

protected:
    void append(const log4cxx::spi::LoggingEventPtr&, log4cxx::helpers::Pool&) override {}
};

/// The one logger of the benchmark, at the level.
const vorlek::LoggerHolder& Logger_(const log4cxx::LevelPtr& level) {
    static vorlek::LoggerHolder holder;
    if (!holder.Get()) {
        holder.Fill(log4cxx::Logger::getLogger(L"benchmark"));
        holder.Get()->addAppender(std::make_shared<Discard>());
    }
    holder.Get()->setLevel(level);
    return holder;
}

std::size_t AllocationsOfOne_(const vorlek::LoggerHolder& logger) {
    const std::size_t before = allocations;
    LOG_DEBUG(logger, L"A text long enough that no string can hold it within itself: " << before);
    return allocations - before;
}

[[gnu::noinline]] void LogNumber_(const vorlek::LoggerHolder& logger, int number) {
    LOG_DEBUG(logger, L"Successfully added " << number << L" to the registry.");
}

void DisabledStatement_(benchmark::State& state) {
    if (AllocationsOfOne_(Logger_(log4cxx::Level::getDebug())) == 0) {
        return state.SkipWithError("the count does not see what an enabled statement allocates");
    }
    const vorlek::LoggerHolder& logger = Logger_(log4cxx::Level::getOff());
    int number = 0;
    const std::size_t before = allocations;
    for (int statement = 0; statement < 1000; ++statement) {
        LOG_DEBUG(logger, L"A text long enough that no string can hold it within itself: " << ++number);
    }
    if (allocations != before) {
        return state.SkipWithError("a disabled statement allocates");
    }
    for (auto turn : state) {
        LogNumber_(logger, number);
        benchmark::ClobberMemory();
    }
}

[[gnu::noinline]] void TestFlag_() {
    if (flag.load(std::memory_order_relaxed)) {
        std::abort();
    }
}

void EmptyCall_(benchmark::State& state) {
    for (auto turn : state) {
        TestFlag_();
        benchmark::ClobberMemory();
    }
}

const benchmark_support::Row disabled("call with a disabled log statement / with a flag",
                                      "at most 2 ns more, no allocation", DisabledStatement_, EmptyCall_);

} // namespace
