#pragma once
#include <array>
#include <bit>
#include <cstddef>

#include "tests/support/ReplacedImport.h"

namespace test_support {

/// While it lives, calls of one method of a COM interface come here, on every object of the same class as the
/// one given:
/// ReplacedMethod<&IXmlReader::SetInput> setInput(reader, [](IXmlReader*, IUnknown*) { return E_FAIL; });
template <auto Method>
class ReplacedMethod;

template <class Interface, class Result, class... Arguments, Result (Interface::*Method)(Arguments...)>
class ReplacedMethod<Method> {
public:
    ReplacedMethod(Interface* object, std::function<Result(Interface*, Arguments...)> body) : body_(std::move(body)) {
        current_ = this;
        // A pointer to a virtual method is one more than its place in the table, in bytes.
        const auto place = std::bit_cast<std::array<std::ptrdiff_t, 2>>(Method)[0] - 1;
        slot_ = reinterpret_cast<void**>(*reinterpret_cast<std::byte**>(object) + place);
        original_ = ExchangeFunction(slot_, reinterpret_cast<void*>(Call_));
    }
    ReplacedMethod(const ReplacedMethod&) = delete;
    ReplacedMethod& operator=(const ReplacedMethod&) = delete;
    ~ReplacedMethod() { ExchangeFunction(slot_, original_); }

    /// The object's own.
    Result Original(Interface* object, Arguments... arguments) const {
        return reinterpret_cast<Result (*)(Interface*, Arguments...)>(original_)(object, arguments...);
    }
    int Calls() const { return calls_; }

private:
    // The 64-bit convention hands the object over like a first argument.
    static Result Call_(Interface* object, Arguments... arguments) {
        ++current_->calls_;
        return current_->body_(object, arguments...);
    }

    inline static ReplacedMethod* current_ = nullptr;
    std::function<Result(Interface*, Arguments...)> body_;
    void** slot_ = nullptr;
    void* original_ = nullptr;
    int calls_ = 0;
};

/// While it lives, every call of the method answers with the result without reaching the object.
template <auto Method>
class FailingMethod;

template <class Interface, class Result, class... Arguments, Result (Interface::*Method)(Arguments...)>
class FailingMethod<Method> : public ReplacedMethod<Method> {
public:
    FailingMethod(Interface* object, Result result)
        : ReplacedMethod<Method>(object, [=](Interface*, Arguments...) { return result; }) {}
};

} // namespace test_support
