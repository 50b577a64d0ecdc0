#include "tests/support/DebugOutput.h"

namespace test_support {

thread_local DebugOutput* DebugOutput::current_ = nullptr;

// The system raises such a text as an exception, which a debugger would take.
DebugOutput::DebugOutput() : handler_(AddVectoredExceptionHandler(1, Collect_)) {
    current_ = this;
}

DebugOutput::~DebugOutput() {
    current_ = nullptr;
    RemoveVectoredExceptionHandler(handler_);
}

LONG DebugOutput::Collect_(EXCEPTION_POINTERS* raised) {
    constexpr DWORD kPrinted = 0x40010006; // DBG_PRINTEXCEPTION_C: length with terminator, text
    const EXCEPTION_RECORD& record = *raised->ExceptionRecord;
    if (record.ExceptionCode == kPrinted && current_ != nullptr) {
        current_->lines_.emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace test_support
