#pragma once
#include "platform/Windows.h"

namespace stand_ins::agent {

/// A lock with a condition to wait for.
class Monitor {
public:
    /// Holds the monitor for its own lifetime.
    class Hold {
    public:
        explicit Hold(Monitor& monitor) : monitor_(monitor) { AcquireSRWLockExclusive(&monitor_.lock_); }
        ~Hold() { ReleaseSRWLockExclusive(&monitor_.lock_); }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

        /// Lets go while waiting for the condition, which is tested while held. False: the time (milliseconds) ran out.
        template <class Condition>
        bool Await(Condition&& isSo, DWORD milliseconds) {
            const ULONGLONG end = GetTickCount64() + milliseconds;
            while (!isSo()) {
                const ULONGLONG now = GetTickCount64();
                if (now >= end ||
                    !SleepConditionVariableSRW(&monitor_.changed_, &monitor_.lock_, static_cast<DWORD>(end - now), 0)) {
                    return isSo();
                }
            }
            return true;
        }

        void Changed() { WakeAllConditionVariable(&monitor_.changed_); }

    private:
        Monitor& monitor_;
    };

private:
    SRWLOCK lock_ = SRWLOCK_INIT;
    CONDITION_VARIABLE changed_ = CONDITION_VARIABLE_INIT;
};

} // namespace stand_ins::agent
