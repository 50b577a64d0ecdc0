#pragma once
#include "foundation/Lockable.h"

namespace vorlek {

/// Holds a Lockable for the length of a scope.
class Lock {
public:
    /// Takes the target, which must outlive the guard. A failure of the target passes, and nothing
    /// is left to release.
    explicit Lock(Lockable& target);
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    /// Releases what was taken; a failure of the target passes, unless another one leaves the scope already.
    virtual ~Lock() noexcept(false);

private:
    Lockable* target_;
    bool locked_ = false;
};

} // namespace vorlek
