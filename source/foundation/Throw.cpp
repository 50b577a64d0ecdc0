#include "foundation/Throw.h"

#include <string_view>

namespace vorlek {

std::wstring ThrowSite::File() const {
    std::string_view path = source_.file_name();
    path.remove_prefix(path.find_last_of("/\\") + 1); // npos + 1 is 0: nothing to remove
    return {path.begin(), path.end()};
}

} // namespace vorlek
