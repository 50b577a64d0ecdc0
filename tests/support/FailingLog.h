#pragma once
#include <functional>
#include <memory>
#include <string>

namespace test_support {

/// A log destination that fails: the body runs, and may throw, when a line with exactly this text is logged.
/// Lives beside a LogCapture, which must have been made before it.
class FailingLog {
public:
    FailingLog(const std::wstring& text, std::function<void()> body);
    ~FailingLog();
    FailingLog(const FailingLog&) = delete;
    FailingLog& operator=(const FailingLog&) = delete;

private:
    class Appender_;
    std::shared_ptr<Appender_> appender_;
};

} // namespace test_support
