#pragma once
#include <cstddef>

namespace test_support {

/// While it lives, the operator new that does not throw has no memory for objects of this size (bytes) on the
/// calling thread. The test program is linked with --wrap=_ZnwyRKSt9nothrow_t.
class NoMemory {
public:
    explicit NoMemory(std::size_t size);
    ~NoMemory();
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;
};

} // namespace test_support
