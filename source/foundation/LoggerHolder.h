#pragma once
#include <atomic>
#include <utility>

#include <log4cxx/logger.h>

namespace vorlek {

/// The logger variable of a class or source file: null until InitLogger fills it once, and read
/// without a lock from then on.
class LoggerHolder {
public:
    constexpr LoggerHolder() = default;
    LoggerHolder(const LoggerHolder&) = delete;
    LoggerHolder& operator=(const LoggerHolder&) = delete;

    /// The logger, null while the holder is empty.
    const log4cxx::LoggerPtr& Get() const { return filled_.load(std::memory_order_acquire) ? logger_ : empty_; }
    operator const log4cxx::LoggerPtr&() const { return Get(); }

    /// Not to be raced by another Fill: InitLogger holds a lock around it.
    void Fill(log4cxx::LoggerPtr logger) {
        logger_ = std::move(logger);
        filled_.store(true, std::memory_order_release);
    }

private:
    inline static const log4cxx::LoggerPtr empty_{};
    log4cxx::LoggerPtr logger_;
    std::atomic<bool> filled_ = false;
};

} // namespace vorlek
