#include "agent/apps/outlook/WorkerThread.h"

#include <gtest/gtest.h>

#include "foundation/AutoHandle.h"
#include "foundation/Exception.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"

namespace vorlek {
namespace {

/// What a worker is told, and what it does.
struct Orders {
    FileHandle started{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    FileHandle end{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    FileHandle thread;
};

DWORD WINAPI Obey(void* parameter) {
    auto& orders = *static_cast<Orders*>(parameter);
    HANDLE thread = nullptr;
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    orders.thread = thread;
    SetEvent(orders.started.Get());
    WaitForSingleObject(orders.end.Get(), INFINITE);
    return 7;
}

TEST(WorkerThreadTest, AWorkerIsCountedUntilItEndsWithTheResultOfItsProcedure) {
    Orders orders;
    EXPECT_EQ(WorkerThread::Running(), 0);
    WorkerThread::Start(Obey, &orders);
    EXPECT_EQ(WorkerThread::Running(), 1);
    WaitForSingleObject(orders.started.Get(), INFINITE);
    SetEvent(orders.end.Get());
    WaitForSingleObject(orders.thread.Get(), INFINITE);
    DWORD status = 0;
    GetExitCodeThread(orders.thread.Get(), &status);
    EXPECT_EQ(status, 7u);
    EXPECT_EQ(WorkerThread::Running(), 0);
}

TEST(WorkerThreadTest, WithoutAThreadItThrowsAndCountsNoneAndGivesItsModuleBack) {
    Orders orders;
    HMODULE freed = nullptr;
    const test_support::ReplacedImport<"FreeLibrary", decltype(FreeLibrary)> free([&](HMODULE module) {
        freed = module;
        return free.Original(module);
    });
    {
        const test_support::FailingImport<"CreateThread", decltype(CreateThread)> none(ERROR_NOT_ENOUGH_MEMORY);
        test_support::ExpectFailure<Exception>([&] { WorkerThread::Start(Obey, &orders); },
                                               L"vorlek::WorkerThread::Start", L"CreateThread failed with: 8");
    }
    EXPECT_EQ(WorkerThread::Running(), 0);
    EXPECT_EQ(freed, GetModuleHandleW(nullptr));
}

TEST(WorkerThreadTest, WithoutAHoldOnItsModuleItThrowsAndCountsNone) {
    Orders orders;
    const test_support::FailingImport<"GetModuleHandleExW", decltype(GetModuleHandleExW)> none(ERROR_MOD_NOT_FOUND);
    test_support::ExpectFailure<Exception>([&] { WorkerThread::Start(Obey, &orders); }, L"vorlek::WorkerThread::Start",
                                           L"GetModuleHandleExW failed with: 126");
    EXPECT_EQ(WorkerThread::Running(), 0);
}

TEST(WorkerThreadTest, TheHandleOfAWorkerIsGivenBackAtOnce) {
    using Create = test_support::ReplacedImport<"CreateThread", decltype(CreateThread)>;
    using Close = test_support::ReplacedImport<"CloseHandle", decltype(CloseHandle)>;
    Orders orders;
    HANDLE thread = nullptr;
    bool closed = false;
    {
        const Create create([&](LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE procedure,
                                LPVOID argument, DWORD flags, LPDWORD id) {
            EXPECT_EQ(stack, 0u);
            EXPECT_EQ(flags, 0u);
            return thread = create.Original(security, stack, procedure, argument, flags, id);
        });
        const Close close([&](HANDLE handle) {
            closed |= handle == thread;
            return close.Original(handle);
        });
        WorkerThread::Start(Obey, &orders);
    }
    EXPECT_TRUE(closed);
    WaitForSingleObject(orders.started.Get(), INFINITE);
    SetEvent(orders.end.Get());
    WaitForSingleObject(orders.thread.Get(), INFINITE);
}

} // namespace
} // namespace vorlek
