// The heap of the checked build: every block of operator new ends at a page that may not be touched, and
// stays out of bounds for a while after its release. A write past the end or a use after the release thus
// crashes where it happens.
#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>

#include "platform/Windows.h"

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kAlignment = 16;
constexpr std::uint64_t kAlive = 0x4556494C41444E41;
constexpr unsigned char kSlack = 0xFD;

/// Stands right in front of the caller's bytes.
struct alignas(kAlignment) Header {
    std::uint64_t state;
    std::size_t size;
    void* base;
    std::uint64_t padding;
};

std::size_t RoundUp(std::size_t size, std::size_t unit) {
    return (size + unit - 1) / unit * unit;
}

[[noreturn]] void Fault() {
    __builtin_trap();
}

/// Released blocks keep their addresses until this many others were released.
class Quarantine {
public:
    constexpr Quarantine() = default;
    Quarantine(const Quarantine&) = delete;
    Quarantine& operator=(const Quarantine&) = delete;
    ~Quarantine() {
        for (std::atomic<void*>& slot : slots_) {
            if (void* base = slot.exchange(nullptr)) {
                VirtualFree(base, 0, MEM_RELEASE);
            }
        }
    }
    void Add(void* base) {
        void* oldest = slots_[next_.fetch_add(1, std::memory_order_relaxed) % kSlots].exchange(base);
        if (oldest != nullptr) {
            VirtualFree(oldest, 0, MEM_RELEASE);
        }
    }

private:
    static constexpr std::size_t kSlots = 4096;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<void*> slots_[kSlots] = {};
};

// The first to be built and the last to be destroyed: a DLL that goes gives all addresses back.
[[gnu::init_priority(101)]] constinit Quarantine quarantine;

void* Allocate(std::size_t size) noexcept {
    const std::size_t body = RoundUp(size, kAlignment);
    const std::size_t committed = RoundUp(sizeof(Header) + body, kPage);
    if (committed < size) {
        return nullptr;
    }
    auto* base = static_cast<unsigned char*>(VirtualAlloc(nullptr, committed + kPage, MEM_RESERVE, PAGE_NOACCESS));
    if (base == nullptr || VirtualAlloc(base, committed, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        return nullptr;
    }
    unsigned char* block = base + committed - body;
    *reinterpret_cast<Header*>(block - sizeof(Header)) = {kAlive, size, base, 0};
    std::memset(block + size, kSlack, body - size);
    return block;
}

void Release(void* pointer) noexcept {
    if (pointer == nullptr) {
        return;
    }
    auto* block = static_cast<unsigned char*>(pointer);
    const Header header = *reinterpret_cast<Header*>(block - sizeof(Header));
    if (header.state != kAlive) {
        Fault();
    }
    for (std::size_t i = header.size; i < RoundUp(header.size, kAlignment); ++i) {
        if (block[i] != kSlack) {
            Fault();
        }
    }
    VirtualFree(header.base, 0, MEM_DECOMMIT);
    quarantine.Add(header.base);
}

void* AllocateOrThrow(std::size_t size) {
    if (void* block = Allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    Release(block);
}
void operator delete[](void* block) noexcept {
    Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    Release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Release(block);
}
