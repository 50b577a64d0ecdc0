#pragma once
#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

#include "platform/Windows.h"

namespace test_support {

/// The name of a system function, as a template argument.
template <std::size_t Size>
struct ImportName {
    char text[Size];
    constexpr ImportName(const char (&name)[Size]) { std::copy_n(name, Size, text); }
};

/// Writes a function into a table of functions, which the system keeps read-only; returns what stood there.
void* ExchangeFunction(void** slot, void* function);

/// Lets the program's import of a system function lead to another one; returns where it led before.
/// Raises std::runtime_error for a function that the program does not import.
void* ExchangeImport(const char* name, void* function);

/// While it lives, this program's calls of a system function come here, from every thread:
/// ReplacedImport<"CloseHandle", decltype(CloseHandle)> close([&](HANDLE handle) { return close.Original(handle); });
template <ImportName Name, class Signature>
class ReplacedImport;

template <ImportName Name, class Result, class... Arguments>
class ReplacedImport<Name, Result(Arguments...)> {
public:
    explicit ReplacedImport(std::function<Result(Arguments...)> body) : body_(std::move(body)) {
        current_ = this;
        original_ = ExchangeImport(Name.text, reinterpret_cast<void*>(Call_));
    }
    ReplacedImport(const ReplacedImport&) = delete;
    ReplacedImport& operator=(const ReplacedImport&) = delete;
    ~ReplacedImport() { ExchangeImport(Name.text, original_); }

    /// The system's own.
    Result Original(Arguments... arguments) const {
        return reinterpret_cast<Result (*)(Arguments...)>(original_)(arguments...);
    }
    int Calls() const { return calls_; }

private:
    static Result Call_(Arguments... arguments) {
        ++current_->calls_;
        return current_->body_(arguments...);
    }

    inline static ReplacedImport* current_ = nullptr;
    std::function<Result(Arguments...)> body_;
    void* original_ = nullptr;
    int calls_ = 0;
};

/// While it lives, every call of the function fails with the error without reaching the system.
template <ImportName Name, class Signature>
class FailingImport;

template <ImportName Name, class Result, class... Arguments>
class FailingImport<Name, Result(Arguments...)> : public ReplacedImport<Name, Result(Arguments...)> {
public:
    explicit FailingImport(DWORD error, Result result = Result{})
        : ReplacedImport<Name, Result(Arguments...)>([=](Arguments...) {
              SetLastError(error);
              return result;
          }) {}
};

/// While it lives, every call of the function but the first fails with the error: as when the system tells the
/// room that a text needs and then not the text.
template <ImportName Name, class Signature>
class FailingLaterCalls;

template <ImportName Name, class Result, class... Arguments>
class FailingLaterCalls<Name, Result(Arguments...)> : public ReplacedImport<Name, Result(Arguments...)> {
public:
    explicit FailingLaterCalls(DWORD error)
        : ReplacedImport<Name, Result(Arguments...)>([this, error](Arguments... arguments) {
              if (this->Calls() == 1) {
                  return this->Original(arguments...);
              }
              SetLastError(error);
              return Result{};
          }) {}
};

} // namespace test_support
