// The heap of the checked build: every block of operator new, of some thousands at a time, ends at a page that may not
// be touched, and stays out of bounds for a while after its release. A write past the end or a use after the release
// thus crashes where it happens.
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
constexpr unsigned char kReleased = 0xDD;

/// Stands right in front of the caller's bytes.
struct alignas(kAlignment) Header {
    std::uint64_t state;
    std::size_t size;
    unsigned char* base; ///< of its pages, or of its place in the process heap
    bool hasPages;
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

/// Counts the blocks that have pages of their own. Those beyond the limit share the process heap, with what stands
/// around them checked at their release: a test of a thousand of something is no reason to run out of page ranges.
class PageBudget {
public:
    bool Take() {
        if (InterlockedIncrement(&taken_) <= kMost) {
            return true;
        }
        InterlockedDecrement(&taken_);
        return false;
    }
    void Return() { InterlockedDecrement(&taken_); }

private:
    static constexpr LONG kMost = 8192; // the add-in and the program that loads it have a heap each
    LONG taken_ = 0;
};

constinit PageBudget budget;

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

/// Where the caller's bytes begin, of which there are `body` with their slack: at the end of pages of their own, or
/// within the process heap. Tells the header where that is; null: no memory.
unsigned char* Place(std::size_t body, Header& header) {
    header.hasPages = budget.Take();
    if (header.hasPages) {
        const std::size_t committed = RoundUp(sizeof(Header) + body, kPage);
        header.base = Pages(committed);
        return header.base == nullptr ? nullptr : header.base + committed - body;
    }
    header.base = static_cast<unsigned char*>(HeapAlloc(GetProcessHeap(), 0, sizeof(Header) + body + kAlignment));
    return header.base == nullptr ? nullptr : header.base + sizeof(Header);
}

std::size_t SlackEnd(const Header& header) {
    return RoundUp(header.size, kAlignment) + (header.hasPages ? 0 : kAlignment);
}

void* Allocate(std::size_t size) noexcept {
    const std::size_t body = RoundUp(size, kAlignment);
    if (body + 2 * kPage < size) {
        return nullptr;
    }
    Header header = {kAlive, size, nullptr, false};
    unsigned char* block = Place(body, header);
    if (block == nullptr) {
        if (header.hasPages) {
            budget.Return();
        }
        return nullptr;
    }
    *reinterpret_cast<Header*>(block - sizeof(Header)) = header;
    std::memset(block, kFresh, size);
    std::memset(block + size, kSlack, SlackEnd(header) - size);
    return block;
}

void ReleasePages(const Header& header) {
    const std::size_t committed = RoundUp(sizeof(Header) + RoundUp(header.size, kAlignment), kPage);
    if (IsKept(committed)) {
        DWORD old = 0;
        VirtualProtect(header.base, committed, PAGE_NOACCESS, &old);
    } else {
        VirtualFree(header.base, 0, MEM_DECOMMIT);
    }
    QuarantineOf(committed).Add(header.base);
    budget.Return();
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
    for (std::size_t i = header.size; i < SlackEnd(header); ++i) {
        if (block[i] != kSlack) {
            Fault();
        }
    }
    if (header.hasPages) {
        ReleasePages(header);
        return;
    }
    std::memset(header.base, kReleased, sizeof(Header) + SlackEnd(header)); // a second release meets no living header
    HeapFree(GetProcessHeap(), 0, header.base);
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
