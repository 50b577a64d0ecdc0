#include "foundation/NamedMutex.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sddl.h>

#include "foundation/Exception.h"
#include "foundation/Lock.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/Threads.h"

using namespace vorlek;
using test_support::ChildProcess;
using test_support::FailingImport;
using test_support::ReplacedImport;

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
        const HANDLE handle = OpenMutexW(SYNCHRONIZE, FALSE, fullName.c_str());
        EXPECT_NE(handle, nullptr);
        isFree = WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
        if (isFree) {
            ReleaseMutex(handle);
        }
        CloseHandle(handle);
    });
    static_cast<void>(mutex); // alive until here
    return isFree;
}

/// A mutex as another user would leave it: everyone may wait for it, and no more.
class ForeignMutex {
public:
    explicit ForeignMutex(const std::wstring& name, bool isOwned = false) {
        SECURITY_ATTRIBUTES attributes{sizeof(attributes), nullptr, FALSE};
        ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(A;;0x00100000;;;WD)", SDDL_REVISION_1,
                                                             &attributes.lpSecurityDescriptor, nullptr);
        handle_ = CreateMutexW(&attributes, isOwned, name.c_str());
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

std::wstring HoldForeignMutex_(const std::wstring& name) {
    const ForeignMutex mutex(name, true);
    test_support::SayReady();
    test_support::WaitToBeKilled();
}

const test_support::ChildRoleName holdMutex(L"HoldMutex", HoldMutex_);
const test_support::ChildRoleName holdForeignMutex(L"HoldForeignMutex", HoldForeignMutex_);

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
    const ForeignMutex foreign(name);
    ASSERT_EQ(CreateMutexW(nullptr, FALSE, name.c_str()), nullptr);
    ASSERT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
    NamedMutex mutex(name, false);
    mutex.Lock();
    test_support::RunThreads(1, [&](int) { EXPECT_EQ(WaitForSingleObject(foreign.Handle(), 0), DWORD{WAIT_TIMEOUT}); });
    mutex.Unlock();
    test_support::RunThreads(1,
                             [&](int) { EXPECT_EQ(WaitForSingleObject(foreign.Handle(), 0), DWORD{WAIT_OBJECT_0}); });
}

TEST(NamedMutex, MutexThatAnotherProcessGuardsIsWaitedFor) {
    const std::wstring name = UniqueName_();
    ChildProcess child(L"HoldForeignMutex", name);
    child.WaitUntilReady();
    NamedMutex mutex(name, false);
    EXPECT_FALSE(IsFree_(mutex, name));
    child.Terminate();
    EXPECT_NO_THROW(mutex.Lock());
}

TEST(NamedMutex, ForeignMutexIsOpenedToWaitAndForNothingElse) {
    const std::wstring name = UniqueName_();
    const ForeignMutex foreign(name);
    DWORD asked = 0;
    ReplacedImport<"OpenMutexW", decltype(OpenMutexW)> open([&](DWORD access, BOOL inherit, const wchar_t* fullName) {
        asked = access;
        EXPECT_FALSE(inherit);
        EXPECT_EQ(fullName, name);
        return open.Original(access, inherit, fullName);
    });
    const NamedMutex mutex(name, false);
    EXPECT_EQ(asked, DWORD{SYNCHRONIZE});
}

TEST(NamedMutex, ForeignMutexThatGoesBeforeItIsJoinedRaises) {
    const std::wstring name = UniqueName_();
    auto foreign = std::make_unique<ForeignMutex>(name);
    ReplacedImport<"OpenMutexW", decltype(OpenMutexW)> open([&](DWORD access, BOOL inherit, const wchar_t* fullName) {
        foreign.reset();
        return open.Original(access, inherit, fullName);
    });
    EXPECT_EQ(Words_([&] { NamedMutex mutex(name, false); }),
              L"Exception: vorlek::NamedMutex::NamedMutex: Failed to open named mutex \"" + name + L"\" with: 2");
}

TEST(NamedMutex, SystemIsAskedForAMutexThatNobodyOwnsYet) {
    struct Asked {
        SECURITY_ATTRIBUTES* attributes;
        BOOL isOwned;
        std::wstring name;
        bool operator==(const Asked&) const = default;
    };
    std::vector<Asked> asked;
    ReplacedImport<"CreateMutexW", decltype(CreateMutexW)> create(
        [&](SECURITY_ATTRIBUTES* attributes, BOOL isOwned, const wchar_t* name) {
            asked.push_back({attributes, isOwned, name == nullptr ? L"null" : name});
            return create.Original(attributes, isOwned, name);
        });
    const NamedMutex anonymous(L"", true);
    const NamedMutex global(UniqueName_(), true);
    EXPECT_EQ(asked, (std::vector<Asked>{{nullptr, FALSE, L"null"}, {nullptr, FALSE, L"Global\\" + UniqueName_()}}));
}

TEST(NamedMutex, MutexThatCannotBeMadeRaises) {
    const FailingImport<"CreateMutexW", decltype(CreateMutexW)> create(ERROR_NOT_ENOUGH_MEMORY);
    const FailingImport<"OpenMutexW", decltype(OpenMutexW)> open(ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Words_([] { NamedMutex mutex(L"", false); }),
              L"Exception: vorlek::NamedMutex::NamedMutex: Failed to create mutex with: 8");
    EXPECT_EQ(Words_([] { NamedMutex mutex(L"name", true); }),
              L"Exception: vorlek::NamedMutex::NamedMutex: Failed to create named mutex \"name\" with: 8");
    EXPECT_EQ(open.Calls(), 0);
}

TEST(NamedMutex, AnonymousMutexThatIsRefusedIsNotLookedFor) {
    const FailingImport<"CreateMutexW", decltype(CreateMutexW)> create(ERROR_ACCESS_DENIED);
    const FailingImport<"OpenMutexW", decltype(OpenMutexW)> open(ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Words_([] { NamedMutex mutex(L"", false); }),
              L"Exception: vorlek::NamedMutex::NamedMutex: Failed to create mutex with: 5");
    EXPECT_EQ(open.Calls(), 0);
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

TEST(NamedMutex, WaitHasNoLimit) {
    NamedMutex mutex(L"", false);
    DWORD limit = 0;
    ReplacedImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait([&](HANDLE handle, DWORD milliseconds) {
        limit = milliseconds;
        return wait.Original(handle, milliseconds);
    });
    const Lock guard(mutex);
    EXPECT_EQ(limit, DWORD{INFINITE});
}

TEST(NamedMutex, WaitThatFailsRaisesAndLeavesNothingToUnlock) {
    NamedMutex mutex(L"", false);
    const FailingImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait(ERROR_INVALID_HANDLE, WAIT_FAILED);
    const FailingImport<"ReleaseMutex", decltype(ReleaseMutex)> release(ERROR_NOT_OWNER);
    EXPECT_EQ(Words_([&] { const Lock guard(mutex); }),
              L"Exception: vorlek::NamedMutex::Lock: WaitForSingleObject failed, return code: 4294967295");
    EXPECT_EQ(release.Calls(), 0);
}

TEST(NamedMutex, ClosesItsHandleHoweverItIsReached) {
    const DWORD before = test_support::CountOpenHandles();
    std::unique_ptr<Lockable> mutex = std::make_unique<NamedMutex>(L"", false);
    EXPECT_EQ(test_support::CountOpenHandles(), before + 1);
    mutex.reset();
    EXPECT_EQ(test_support::CountOpenHandles(), before);
}
