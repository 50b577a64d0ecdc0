#include "foundation/SharedMemory.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/Exception.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ReplacedImport.h"

using test_support::ChildProcess;
using test_support::FailingImport;
using test_support::ReplacedImport;
using vorlek::Exception;

namespace {

constexpr std::uint32_t kReadForEveryone = 2;
constexpr std::uint32_t kAllForEveryone = 3;

std::wstring UniqueName_() {
    return L"Global\\vorlek-section-test-" + std::to_wstring(GetCurrentProcessId());
}

/// What the action raised, without file and line.
template <class Action>
std::wstring Words_(const Action& action) {
    try {
        action();
        return L"nothing raised";
    } catch (const Exception& failure) {
        return failure.GetExceptionName() + L": " + failure.GetLocation() + L": " + failure.GetMessage();
    }
}

DWORD Protection_(const SharedMemory& memory) {
    MEMORY_BASIC_INFORMATION page{};
    VirtualQuery(memory.GetData(), &page, sizeof(page));
    return page.Protect;
}

/// The other process: reads the first four bytes, then asks for more than it may.
std::wstring ReadSection_(const std::wstring& name) {
    const SharedMemory memory(name, true);
    const std::wstring read(memory.GetData(), memory.GetData() + 4);
    return read + (Protection_(memory) == PAGE_READONLY ? L", read-only, " : L", writable, ") +
           Words_([&] { SharedMemory writable(name, false); });
}

std::wstring HoldSection_(const std::wstring& name) {
    const SharedMemory memory(name, 16, kAllForEveryone, false);
    std::fill_n(memory.GetData(), 16, BYTE{7});
    test_support::SayReady();
    test_support::WaitToBeKilled();
}

const test_support::ChildRoleName readSection(L"ReadSection", ReadSection_);
const test_support::ChildRoleName holdSection(L"HoldSection", HoldSection_);

} // namespace

TEST(SharedMemory, IsCreatedMappedAndZeroFilled) {
    const SharedMemory memory(UniqueName_(), 4096, kReadForEveryone, false);
    ASSERT_TRUE(memory.IsMapped());
    EXPECT_TRUE(std::all_of(memory.GetData(), memory.GetData() + 4096, [](BYTE byte) { return byte == 0; }));
    EXPECT_EQ(Protection_(memory), DWORD{PAGE_READWRITE});
}

TEST(SharedMemory, IsSeenThroughAnotherMapping) {
    const SharedMemory writer(UniqueName_(), 2, kAllForEveryone, false);
    const SharedMemory reader(UniqueName_(), true);
    const SharedMemory second(UniqueName_(), false);
    writer.GetData()[1] = 0xAB;
    EXPECT_EQ(reader.GetData()[1], 0xAB);
    second.GetData()[0] = 0xCD;
    EXPECT_EQ(reader.GetData()[0], 0xCD);
    EXPECT_NE(reader.GetData(), writer.GetData());
}

TEST(SharedMemory, ReadOnlyMappingCannotBeWritten) {
    const SharedMemory created(UniqueName_(), 64, kAllForEveryone, true);
    EXPECT_EQ(Protection_(created), DWORD{PAGE_READONLY});
    const SharedMemory opened(UniqueName_(), true);
    EXPECT_EQ(Protection_(opened), DWORD{PAGE_READONLY});
}

TEST(SharedMemory, IsCreatedInThePagingFileWithItsProtectionAndSize) {
    std::vector<DWORD> protections;
    ReplacedImport<"CreateFileMappingW", decltype(CreateFileMappingW)> create(
        [&](HANDLE file, SECURITY_ATTRIBUTES* attributes, DWORD protection, DWORD high, DWORD low,
            const wchar_t* name) {
            EXPECT_EQ(file, INVALID_HANDLE_VALUE);
            EXPECT_EQ(high, 0U);
            EXPECT_EQ(low, 64U);
            EXPECT_EQ(name, UniqueName_());
            protections.push_back(protection);
            return create.Original(file, attributes, protection, high, low, name);
        });
    { const SharedMemory writable(UniqueName_(), 64, kAllForEveryone, false); }
    { const SharedMemory readable(UniqueName_(), 64, kAllForEveryone, true); }
    EXPECT_EQ(protections, (std::vector<DWORD>{PAGE_READWRITE, PAGE_READONLY}));
}

TEST(SharedMemory, IsMappedWholeByWhoOpensIt) {
    constexpr std::size_t kThreePages = 3 * 4096;
    const SharedMemory created(UniqueName_(), kThreePages, kAllForEveryone, false);
    const SharedMemory opened(UniqueName_(), true);
    MEMORY_BASIC_INFORMATION pages{};
    VirtualQuery(opened.GetData(), &pages, sizeof(pages));
    EXPECT_EQ(pages.RegionSize, kThreePages);
    created.GetData()[kThreePages - 1] = 9;
    EXPECT_EQ(opened.GetData()[kThreePages - 1], 9);
}

TEST(SharedMemory, IsOpenedAndMappedWithTheSameAccess) {
    const SharedMemory created(UniqueName_(), 64, kAllForEveryone, false);
    std::vector<DWORD> asked;
    ReplacedImport<"OpenFileMappingW", decltype(OpenFileMappingW)> open(
        [&](DWORD access, BOOL inherit, const wchar_t* name) {
            EXPECT_FALSE(inherit);
            asked.push_back(access);
            return open.Original(access, inherit, name);
        });
    ReplacedImport<"MapViewOfFile", decltype(MapViewOfFile)> map(
        [&](HANDLE section, DWORD access, DWORD high, DWORD low, SIZE_T size) {
            EXPECT_EQ((std::vector<SIZE_T>{high, low, size}), (std::vector<SIZE_T>{0, 0, 0}));
            asked.push_back(access);
            return map.Original(section, access, high, low, size);
        });
    const SharedMemory reader(UniqueName_(), true);
    const SharedMemory writer(UniqueName_(), false);
    EXPECT_EQ(asked, (std::vector<DWORD>{4, 4, 0xF001F, 0xF001F}));
}

TEST(SharedMemory, AnotherProcessReadsButMayNotWriteASectionOfKindTwo) {
    const SharedMemory memory(UniqueName_(), 16, kReadForEveryone, false);
    std::copy_n("port", 4, memory.GetData());
    ChildProcess child(L"ReadSection", UniqueName_());
    EXPECT_EQ(child.Result(), L"port, read-only, Exception: SharedMemory::Init: OpenFileMapping failed with: 5");
}

TEST(SharedMemory, LivesAsLongAsAnybodyHoldsIt) {
    ChildProcess child(L"HoldSection", UniqueName_());
    child.WaitUntilReady();
    const SharedMemory memory(UniqueName_(), true);
    child.Terminate();
    EXPECT_EQ(memory.GetData()[15], 7);
    EXPECT_EQ(SharedMemory(UniqueName_(), true).GetData()[0], 7);
}

TEST(SharedMemory, GoesWithItsLastHolder) {
    { const SharedMemory memory(UniqueName_(), 16, kReadForEveryone, false); }
    EXPECT_EQ(Words_([] { SharedMemory memory(UniqueName_(), true); }),
              L"Exception: SharedMemory::Init: OpenFileMapping failed with: 2");
}

TEST(SharedMemory, SecondCreatorIsRefusedAndHoldsNothing) {
    const std::wstring words =
        L"Exception: SharedMemory::Init: The specified section: " + UniqueName_() + L" already exists!";
    {
        const SharedMemory first(UniqueName_(), 16, kAllForEveryone, false);
        EXPECT_EQ(Words_([] { SharedMemory second(UniqueName_(), 16, kAllForEveryone, false); }), words);
    }
    // A handle left over from the refused one would keep the name taken.
    EXPECT_NO_THROW(SharedMemory(UniqueName_(), 16, kAllForEveryone, false));
}

TEST(SharedMemory, SecondCreatorWithoutFullAccessIsRefusedByTheSystem) {
    const SharedMemory first(UniqueName_(), 16, kReadForEveryone, false);
    EXPECT_EQ(Words_([] { SharedMemory second(UniqueName_(), 16, kReadForEveryone, false); }),
              L"Exception: SharedMemory::Init: CreateFileMapping failed with: 5");
}

TEST(SharedMemory, CreatorInAnotherProcessComesFirstToo) {
    ChildProcess child(L"HoldSection", UniqueName_());
    child.WaitUntilReady();
    EXPECT_EQ(Words_([] { SharedMemory memory(UniqueName_(), 16, kAllForEveryone, false); }),
              L"Exception: SharedMemory::Init: The specified section: " + UniqueName_() + L" already exists!");
}

TEST(SharedMemory, SizeZeroCannotBeCreated) {
    EXPECT_EQ(Words_([] { SharedMemory memory(UniqueName_(), 0, kReadForEveryone, false); }),
              L"Exception: SharedMemory::Init: CreateFileMapping failed with: 87");
}

TEST(SharedMemory, SectionThatFindsNoAddressesRaises) {
    constexpr std::uint64_t kFourTerabytes = std::uint64_t{4} << 40; // of the 128 that a process has at most
    std::vector<std::unique_ptr<SharedMemory>> sections;
    EXPECT_EQ(Words_([&] {
                  while (sections.size() < 33) {
                      sections.push_back(std::make_unique<SharedMemory>(
                          UniqueName_() + std::to_wstring(sections.size()), kFourTerabytes, kAllForEveryone, false));
                  }
              }),
              L"Exception: SharedMemory::Init: MapViewOfFile failed with: 8");
}

TEST(SharedMemory, SectionThatCannotBeMappedIsClosed) {
    {
        const FailingImport<"MapViewOfFile", decltype(MapViewOfFile)> map(ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(Words_([] { SharedMemory memory(UniqueName_(), 16, kAllForEveryone, false); }),
                  L"Exception: SharedMemory::Init: MapViewOfFile failed with: 8");
    }
    EXPECT_NO_THROW(SharedMemory(UniqueName_(), 16, kAllForEveryone, false));
}

TEST(SharedMemory, IsUnmappedBeforeItsSectionIsClosed) {
    auto memory = std::make_unique<SharedMemory>(UniqueName_(), 16, kAllForEveryone, false);
    std::vector<std::wstring> order;
    ReplacedImport<"UnmapViewOfFile", decltype(UnmapViewOfFile)> unmap([&](const void* view) {
        order.emplace_back(L"unmap");
        return unmap.Original(view);
    });
    ReplacedImport<"CloseHandle", decltype(CloseHandle)> close([&](HANDLE handle) {
        order.emplace_back(L"close");
        return close.Original(handle);
    });
    memory.reset();
    EXPECT_EQ(order, (std::vector<std::wstring>{L"unmap", L"close"}));
}

TEST(SharedMemory, FailureIsLoggedOnceAndPasses) {
    const test_support::LogCapture log;
    std::wstring rendered;
    try {
        SharedMemory memory(UniqueName_(), true);
    } catch (const Exception& failure) {
        rendered = failure.ToString();
    }
    ASSERT_EQ(log.Lines().size(), 1U);
    EXPECT_EQ(log.Lines()[0].level, L"ERROR");
    EXPECT_EQ(log.Lines()[0].logger, L"SharedMemory");
    EXPECT_EQ(log.Lines()[0].text, L"Init failed with: " + rendered);
}

TEST(SharedMemory, UnknownKindOfSecurityIsLoggedAndPasses) {
    const test_support::LogCapture log;
    EXPECT_EQ(Words_([] { SharedMemory memory(UniqueName_(), 16, 4, false); }),
              L"Exception: SecUtils::GenSA: Unsupported SA type: 4");
    EXPECT_EQ(log.Texts(L"ERROR").size(), 1U);
}
