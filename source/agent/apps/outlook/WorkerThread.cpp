#include "agent/apps/outlook/WorkerThread.h"

#include <atomic>
#include <memory>

#include "foundation/AutoHandle.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/Throw.h"

namespace vorlek {
namespace {

struct Work {
    LPTHREAD_START_ROUTINE procedure;
    void* argument;
    HMODULE module; ///< with a reference of the thread's own
};

std::atomic<long> running_ = 0;

Work Take_(void* parameter) {
    return *std::unique_ptr<Work>(static_cast<Work*>(parameter));
}

DWORD WINAPI Run_(void* parameter) {
    const Work work = Take_(parameter);
    const DWORD status = work.procedure(work.argument);
    EndThreadLog();
    --running_;
    // Not a return: there may be nothing left here to return from.
    FreeLibraryAndExitThread(work.module, status);
}

HMODULE ReferToThisModule_() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&Run_), &module)) {
        Throw(L"vorlek::WorkerThread::Start", L"GetModuleHandleExW failed with: ", GetLastError());
    }
    return module;
}

} // namespace

void WorkerThread::Start(LPTHREAD_START_ROUTINE procedure, void* argument) {
    auto work = std::make_unique<Work>(procedure, argument, ReferToThisModule_());
    ++running_;
    const AutoHandle<HANDLE, 0, CloseHandle> thread(CreateThread(nullptr, 0, Run_, work.get(), 0, nullptr));
    if (!thread.IsValid()) {
        const DWORD error = GetLastError();
        --running_;
        FreeLibrary(work->module);
        Throw(L"vorlek::WorkerThread::Start", L"CreateThread failed with: ", error);
    }
    static_cast<void>(work.release()); // the thread's from now on
}

long WorkerThread::Running() {
    return running_;
}

} // namespace vorlek
