#include "tests/support/NoMemory.h"

#include <new>

namespace {

thread_local std::size_t missingSize = 0;

} // namespace

// The linker sends the program's calls here, and leaves the library's own under the second name.
void* RealNew(std::size_t size, const std::nothrow_t& tag) noexcept __asm__("__real__ZnwyRKSt9nothrow_t");
void* WrappedNew(std::size_t size, const std::nothrow_t& tag) noexcept __asm__("__wrap__ZnwyRKSt9nothrow_t");
void* WrappedNew(std::size_t size, const std::nothrow_t& tag) noexcept {
    return size == missingSize ? nullptr : RealNew(size, tag);
}

namespace test_support {

NoMemory::NoMemory(std::size_t size) {
    missingSize = size;
}

NoMemory::~NoMemory() {
    missingSize = 0;
}

} // namespace test_support
