#pragma once
#include <memory>
#include <string>
#include <vector>

#include <log4cxx/logger.h>

namespace test_support {

struct LogLine {
    std::wstring level; ///< "INFO" and the like
    std::wstring logger;
    std::wstring text;
    std::string site; ///< "File.cpp(17): Function"
};

/// Collects what is logged while it lives, from the lowest level up, in place of any other destination.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> Lines() const;
    /// The texts of one level, in order: Texts(L"ERROR").
    std::vector<std::wstring> Texts(const std::wstring& level) const;
    /// Whether this whole line stands at this level.
    bool Has(const std::wstring& level, const std::wstring& text) const;
    void Clear();

private:
    class Appender_;
    std::shared_ptr<Appender_> appender_;
};

} // namespace test_support
