#include "tests/support/LogCapture.h"

#include <algorithm>

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/level.h>
#include <log4cxx/spi/loggingevent.h>

#include "foundation/CriticalSection.h"
#include "foundation/Lock.h"

namespace test_support {

class LogCapture::Appender_ : public log4cxx::AppenderSkeleton {
public:
    void close() override {}
    bool requiresLayout() const override { return false; }
    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
        const log4cxx::spi::LocationInfo& site = event->getLocationInformation();
        const vorlek::Lock lock(section);
        lines.push_back(
            {event->getLevel()->toString(), event->getLoggerName(), event->getRenderedMessage(),
             site.getShortFileName() + ("(" + std::to_string(site.getLineNumber())) + "): " + site.getMethodName()});
    }

    mutable vorlek::CriticalSection section;
    std::vector<LogLine> lines;
};

LogCapture::LogCapture() : appender_(std::make_shared<Appender_>()) {
    const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
    root->removeAllAppenders();
    root->setLevel(log4cxx::Level::getAll());
    root->addAppender(appender_);
}

LogCapture::~LogCapture() {
    const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
    root->removeAppender(appender_);
    root->setLevel(log4cxx::Level::getOff());
}

std::vector<LogLine> LogCapture::Lines() const {
    const vorlek::Lock lock(appender_->section);
    return appender_->lines;
}

std::vector<std::wstring> LogCapture::Texts(const std::wstring& level) const {
    std::vector<std::wstring> texts;
    for (const LogLine& line : Lines()) {
        if (line.level == level) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

bool LogCapture::Has(const std::wstring& level, const std::wstring& text) const {
    const std::vector<LogLine> lines = Lines();
    return std::ranges::any_of(lines, [&](const LogLine& line) { return line.level == level && line.text == text; });
}

void LogCapture::Clear() {
    const vorlek::Lock lock(appender_->section);
    appender_->lines.clear();
}

} // namespace test_support
