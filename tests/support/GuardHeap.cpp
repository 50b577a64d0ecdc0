// The heap of the checked build: every block of operator new ends at a page that may not be touched, and
// stays out of bounds for a while after its release. A write past the end or a use after the release thus
// crashes where it happens.
#include <cstdint>
#include <cstring>
#include <new>

#include "platform/Windows.h"

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kAlignment = 16;
constexpr std::uint64_t kAlive = 0x4556494C41444E41;
constexpr unsigned char kFresh = 0xCD;
constexpr unsigned char kSlack = 0xFD;

/// Stands right in front of the caller's bytes.
struct alignas(kAlignment) Header {
    std::uint64_t state;
    std::size_t size;
    unsigned char* base;
    std::uint64_t padding;
};

std::size_t RoundUp(std::size_t size, std::size_t unit) {
    return (size + unit - 1) / unit * unit;
}

[[noreturn]] void Fault() {
    __builtin_trap();
}

/// The pages of released blocks of one size, oldest first. They stay out of bounds until this many others were
/// released, and are then used again: to protect pages takes the system a quarter of the time of new ones.
class Quarantine {
public:
    constexpr Quarantine() = default;
    Quarantine(const Quarantine&) = delete;
    Quarantine& operator=(const Quarantine&) = delete;
    ~Quarantine() {
        while (first_ != last_) {
            VirtualFree(slots_[first_++ % kMost], 0, MEM_RELEASE);
        }
    }

    /// Pages to use again, or null if there are none yet.
    unsigned char* Take() {
        AcquireSRWLockExclusive(&lock_);
        unsigned char* oldest = last_ - first_ > kSlots ? slots_[first_++ % kMost] : nullptr;
        ReleaseSRWLockExclusive(&lock_);
        return oldest;
    }

    void Add(unsigned char* base) {
        AcquireSRWLockExclusive(&lock_);
        unsigned char* oldest = last_ - first_ == kMost ? slots_[first_++ % kMost] : nullptr;
        slots_[last_++ % kMost] = base;
        ReleaseSRWLockExclusive(&lock_);
        if (oldest != nullptr) {
            VirtualFree(oldest, 0, MEM_RELEASE);
        }
    }

private:
    // The host of Wine grants a process 65,530 ranges of pages; a slot takes two, and so does a block in use.
    static constexpr std::size_t kSlots = 2048;
    static constexpr std::size_t kMost = kSlots + 512;
    SRWLOCK lock_ = SRWLOCK_INIT;
    std::size_t first_ = 0;
    std::size_t last_ = 0;
    unsigned char* slots_[kMost] = {};
};

// For blocks of one page, of two, and of any other number of pages; these give their memory back at once.
// The first to be built and the last to be destroyed: a DLL that goes gives all addresses back.
[[gnu::init_priority(101)]] constinit Quarantine quarantines[3];

bool IsKept(std::size_t committed) {
    return committed <= 2 * kPage;
}

Quarantine& QuarantineOf(std::size_t committed) {
    return quarantines[IsKept(committed) ? committed / kPage - 1 : 2];
}

unsigned char* NewPages(std::size_t committed) {
    void* base = VirtualAlloc(nullptr, committed + kPage, MEM_RESERVE, PAGE_NOACCESS);
    if (base == nullptr || VirtualAlloc(base, committed, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        return nullptr;
    }
    return static_cast<unsigned char*>(base);
}

unsigned char* Pages(std::size_t committed) {
    unsigned char* base = IsKept(committed) ? QuarantineOf(committed).Take() : nullptr;
    DWORD old = 0;
    return base != nullptr && VirtualProtect(base, committed, PAGE_READWRITE, &old) ? base : NewPages(committed);
}

void* Allocate(std::size_t size) noexcept {
    const std::size_t body = RoundUp(size, kAlignment);
    const std::size_t committed = RoundUp(sizeof(Header) + body, kPage);
    if (committed < size) {
        return nullptr;
    }
    unsigned char* base = Pages(committed);
    if (base == nullptr) {
        return nullptr;
    }
    unsigned char* block = base + committed - body;
    *reinterpret_cast<Header*>(block - sizeof(Header)) = {kAlive, size, base, 0};
    std::memset(block, kFresh, size);
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
    const std::size_t body = RoundUp(header.size, kAlignment);
    for (std::size_t i = header.size; i < body; ++i) {
        if (block[i] != kSlack) {
            Fault();
        }
    }
    const std::size_t committed = RoundUp(sizeof(Header) + body, kPage);
    if (IsKept(committed)) {
        DWORD old = 0;
        VirtualProtect(header.base, committed, PAGE_NOACCESS, &old);
    } else {
        VirtualFree(header.base, 0, MEM_DECOMMIT);
    }
    QuarantineOf(committed).Add(header.base);
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
