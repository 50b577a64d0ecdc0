#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/Windows.h"

namespace vorlek {

/// Root of all failures that the program's own code detects. Thrown by value, caught by reference;
/// not a std::exception, so that a border names the two separately.
class Exception {
public:
    /// file: source file without directories. line: of the throw. location: qualified name of the
    /// throwing function. message: the failure's words.
    Exception(std::wstring file, std::int32_t line, std::wstring location, std::wstring message);
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    virtual ~Exception() = default;

    /// "file(line): location: name: message", on one line; no separator is dropped for an empty part.
    virtual std::wstring ToString() const;
    /// The short name of the most derived class, without namespaces.
    virtual const std::wstring& GetExceptionName() const;

    const std::wstring& GetMessage() const { return message_; }
    const std::wstring& GetLocation() const { return location_; }

private:
    std::wstring file_;
    std::wstring location_;
    std::int32_t line_;
    std::wstring message_;
};

/// A class name usable as a template argument.
template <std::size_t Size>
struct ExceptionName {
    wchar_t text[Size];
    constexpr ExceptionName(const wchar_t (&name)[Size]) { std::copy_n(name, Size, text); }
};

/// What every derived failure adds to its base: its name, and nothing else.
template <ExceptionName Name, class Base>
class NamedException : public Base {
public:
    using Base::Base;
    const std::wstring& GetExceptionName() const override {
        static const std::wstring name = Name.text;
        return name;
    }

protected:
    using Named = NamedException;
};

class IOException : public NamedException<L"IOException", Exception> {
    using Named::Named;
};
class FileCreateException : public NamedException<L"FileCreateException", IOException> {
    using Named::Named;
};
class FileAlreadyExist : public NamedException<L"FileAlreadyExist", FileCreateException> {
    using Named::Named;
};
class FileNotFoundException : public NamedException<L"FileNotFoundException", IOException> {
    using Named::Named;
};
class UnauthorizedAccessException : public NamedException<L"UnauthorizedAccessException", IOException> {
    using Named::Named;
};
class ArgumentException : public NamedException<L"ArgumentException", Exception> {
    using Named::Named;
};
class ArgumentNullException : public NamedException<L"ArgumentNullException", ArgumentException> {
    using Named::Named;
};
class ArgumentOutOfRangeException : public NamedException<L"ArgumentOutOfRangeException", ArgumentException> {
    using Named::Named;
};
class AllocationFailureException : public NamedException<L"AllocationFailureException", Exception> {
    using Named::Named;
};
class NotImplementedException : public NamedException<L"NotImplementedException", Exception> {
    using Named::Named;
};
class ProcessUtilsException : public NamedException<L"ProcessUtilsException", Exception> {
    using Named::Named;
};

} // namespace vorlek

class RegistryKeyException : public vorlek::NamedException<L"RegistryKeyException", vorlek::Exception> {
    using Named::Named;
};
class RegistryInvalidKeyTypeException
    : public vorlek::NamedException<L"RegistryInvalidKeyTypeException", vorlek::Exception> {
    using Named::Named;
};

namespace UserUtils {
class TrustedRelationshipFailure : public vorlek::NamedException<L"TrustedRelationshipFailure", vorlek::Exception> {
    using Named::Named;
};
} // namespace UserUtils
