#pragma once
#include "platform/Windows.h"

namespace vorlek {

/// Threads that nobody waits for. Each keeps the module of this code mapped until it has ended: an add-in that is
/// unloaded in the middle of an inspection must not take the code from under the inspecting thread.
class WorkerThread {
public:
    WorkerThread() = delete;

    /// Runs the procedure on a thread of its own. Throws Exception if there is none to be had; the argument is then
    /// still the caller's.
    static void Start(LPTHREAD_START_ROUTINE procedure, void* argument);
    /// How many have been started and have not ended.
    static long Running();
};

} // namespace vorlek
