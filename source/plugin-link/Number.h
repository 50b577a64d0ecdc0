#pragma once
#include <sstream>
#include <string>

namespace vorlek {

/// Reads a number as the agent writes it: hexadecimal behind "0x" in either case, otherwise decimal.
/// Number: an integer type or bool. A text that is no number reads as 0 or false.
template <class Number>
Number ParseNumber(const std::wstring& text) {
    std::wistringstream stream(text);
    if (text.starts_with(L"0x") || text.starts_with(L"0X")) {
        stream >> std::hex;
    }
    Number number{};
    stream >> number;
    return number;
}

} // namespace vorlek
