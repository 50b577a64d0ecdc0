#include "foundation/NamedMutex.h"

#include <atomic>
#include <string>

#include <gtest/gtest.h>
#include <sddl.h>

#include "foundation/Exception.h"
#include "foundation/Lock.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Threads.h"

using namespace vorlek;
using test_support::ChildProcess;

namespace {

std::wstring UniqueName_() {
    return L"vorlek-mutex-test-" + std::to_wstring(GetCurrentProcessId());
}

template <class Action>
std::wstring Words_(const Action& action) {
    try {
        action();
        return L"nothing raised";
    } catch (const Exception& failure) {
        return failure.GetExceptionName() + L": " + failure.GetLocation() + L": " + failure.GetMessage();
    }
}

/// Whether another thread could take the mutex now.
bool IsFree_(NamedMutex& mutex, const std::wstring& fullName) {
    bool isFree = false;
    test_support::RunThreads(1, [&](int) {
        const HANDLE handle = OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, fullName.c_str());
        isFree = WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
        if (isFree) {
            ReleaseMutex(handle);
        }
        CloseHandle(handle);
    });
    static_cast<void>(mutex); // alive until here
    return isFree;
}

/// A mutex as another user would leave it: with an access list of its own.
class ForeignMutex {
public:
    ForeignMutex(const std::wstring& name, const wchar_t* accessList) {
        SECURITY_ATTRIBUTES attributes{sizeof(attributes), nullptr, FALSE};
        ConvertStringSecurityDescriptorToSecurityDescriptorW(accessList, SDDL_REVISION_1,
                                                             &attributes.lpSecurityDescriptor, nullptr);
        handle_ = CreateMutexW(&attributes, FALSE, name.c_str());
        LocalFree(attributes.lpSecurityDescriptor);
    }
    ForeignMutex(const ForeignMutex&) = delete;
    ForeignMutex& operator=(const ForeignMutex&) = delete;
    ~ForeignMutex() { CloseHandle(handle_); }

    HANDLE Handle() const { return handle_; }

private:
    HANDLE handle_;
};

std::wstring HoldMutex_(const std::wstring& name) {
    NamedMutex mutex(name, false);
    mutex.Lock();
    test_support::SayReady();
    test_support::WaitToBeKilled();
}

const test_support::ChildRoleName holdMutex(L"HoldMutex", HoldMutex_);

} // namespace

TEST(NamedMutex, GlobalNameStandsInTheMachinesFolder) {
    const NamedMutex mutex(L"", false);
    EXPECT_EQ(mutex.GetMutexName(L"name", true), L"Global\\name");
    EXPECT_EQ(mutex.GetMutexName(L"name", false), L"name");
}

TEST(NamedMutex, IsCreatedUnderItsNameAndNotOwned) {
    const std::wstring name = UniqueName_();
    NamedMutex local(name, false);
    EXPECT_TRUE(IsFree_(local, name));
    NamedMutex global(name, true);
    EXPECT_TRUE(IsFree_(global, L"Global\\" + name));
}

TEST(NamedMutex, EmptyNameMakesAMutexOfItsOwn) {
    NamedMutex first(L"", true);
    NamedMutex second(L"", true);
    const Lock guard(first);
    test_support::RunThreads(1, [&](int) { const Lock other(second); });
}

TEST(NamedMutex, SameNameIsTheSameLock) {
    const std::wstring name = UniqueName_();
    NamedMutex first(name, false);
    NamedMutex second(name, false);
    {
        const Lock guard(first);
        EXPECT_FALSE(IsFree_(second, name));
        const Lock again(second); // by its owner
    }
    EXPECT_TRUE(IsFree_(second, name));
}

TEST(NamedMutex, GoesWithItsLastOwner) {
    const std::wstring name = UniqueName_();
    { const NamedMutex mutex(name, false); }
    EXPECT_EQ(OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
}

TEST(NamedMutex, AbandonedByAKilledProcessIsAcquired) {
    const std::wstring name = UniqueName_();
    NamedMutex mutex(name, false);
    ChildProcess child(L"HoldMutex", name);
    child.WaitUntilReady();
    EXPECT_FALSE(IsFree_(mutex, name));
    child.Terminate();
    EXPECT_NO_THROW(mutex.Lock());
    EXPECT_FALSE(IsFree_(mutex, name));
    mutex.Unlock();
    EXPECT_TRUE(IsFree_(mutex, name));
}

TEST(NamedMutex, ForeignMutexThatGrantsOnlyWaitingIsJoined) {
    const std::wstring name = UniqueName_();
    const ForeignMutex foreign(name, L"D:(A;;0x00100000;;;WD)");
    ASSERT_EQ(CreateMutexW(nullptr, FALSE, name.c_str()), nullptr);
    ASSERT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
    NamedMutex mutex(name, false);
    mutex.Lock();
    test_support::RunThreads(1, [&](int) { EXPECT_EQ(WaitForSingleObject(foreign.Handle(), 0), DWORD{WAIT_TIMEOUT}); });
}

TEST(NamedMutex, ForeignMutexThatGoesBeforeItIsJoinedRaises) {
    const std::wstring name = UniqueName_();
    std::atomic<bool> seen = false;
    std::wstring words;
    test_support::RunThreads(2, [&](int thread) {
        while (!seen) {
            if (thread == 0) {
                const ForeignMutex foreign(name, L"D:(A;;0x00100000;;;WD)");
                continue;
            }
            words = Words_([&] { NamedMutex mutex(name, false); });
            seen = words != L"nothing raised";
        }
    });
    EXPECT_EQ(words,
              L"Exception: vorlek::NamedMutex::NamedMutex: Failed to open named mutex \"" + name + L"\" with: 2");
}

TEST(NamedMutex, NameOfAnotherKindOfObjectRaises) {
    const std::wstring name = UniqueName_();
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, (L"Global\\" + name).c_str());
    EXPECT_EQ(Words_([&] { NamedMutex mutex(name, true); }),
              L"Exception: vorlek::NamedMutex::NamedMutex: Failed to create named mutex \"" + name + L"\" with: 6");
    CloseHandle(event);
}

TEST(NamedMutex, UnlockByAnotherThanTheOwnerRaises) {
    NamedMutex mutex(L"", false);
    EXPECT_EQ(Words_([&] { mutex.Unlock(); }),
              L"Exception: vorlek::NamedMutex::Unlock: ReleaseMutex failed with error: 288");
}

TEST(NamedMutex, WaitThatFailsRaisesAndLeavesNothingToUnlock) {
    // The system gives out the handle that was closed last, which tells the mutex's own.
    const HANDLE next = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CloseHandle(next);
    NamedMutex mutex(L"", false);
    ASSERT_EQ(WaitForSingleObject(next, 0), DWORD{WAIT_OBJECT_0});
    ReleaseMutex(next);
    CloseHandle(next);
    EXPECT_EQ(Words_([&] { const Lock guard(mutex); }),
              L"Exception: vorlek::NamedMutex::Lock: WaitForSingleObject failed, return code: 4294967295");
}
