#pragma once
#include <cstdint>
#include <string>

namespace vorlek {

/// One entry of a Message: a named value in its text form.
struct MessageValue {
    std::wstring name;
    std::wstring value;
    std::wstring type;      ///< "int", "string" or "byte[]"
    std::uint32_t size = 0; ///< of the value in bytes; informative, nothing checks it
    bool hidden = false;    ///< the value must not appear in logs
};

} // namespace vorlek
