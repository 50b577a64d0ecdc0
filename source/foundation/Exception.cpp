#include "foundation/Exception.h"

#include <utility>

namespace vorlek {

Exception::Exception(std::wstring file, std::int32_t line, std::wstring location, std::wstring message)
    : file_(std::move(file)), location_(std::move(location)), line_(line), message_(std::move(message)) {}

std::wstring Exception::ToString() const {
    return file_ + L"(" + std::to_wstring(line_) + L"): " + location_ + L": " + GetExceptionName() + L": " + message_;
}

const std::wstring& Exception::GetExceptionName() const {
    static const std::wstring name = L"Exception";
    return name;
}

} // namespace vorlek
