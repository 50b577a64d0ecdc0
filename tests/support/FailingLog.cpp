#include "tests/support/FailingLog.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>
#include <utility>

namespace test_support {

class FailingLog::Appender_ : public log4cxx::AppenderSkeleton {
public:
    Appender_(std::wstring text, std::function<void()> body) : text_(std::move(text)), body_(std::move(body)) {}

    void close() override {}
    bool requiresLayout() const override { return false; }
    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
        if (event->getRenderedMessage() == text_) {
            body_();
        }
    }

private:
    const std::wstring text_;
    const std::function<void()> body_;
};

FailingLog::FailingLog(const std::wstring& text, std::function<void()> body)
    : appender_(std::make_shared<Appender_>(text, std::move(body))) {
    log4cxx::Logger::getRootLogger()->addAppender(appender_);
}

FailingLog::~FailingLog() {
    log4cxx::Logger::getRootLogger()->removeAppender(appender_);
}

} // namespace test_support
