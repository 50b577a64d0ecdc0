#include "foundation/Lock.h"

#include <exception>

namespace vorlek {

Lock::Lock(Lockable& target) : target_(&target) {
    target_->Lock();
    locked_ = true;
}

Lock::~Lock() noexcept(false) {
    if (!locked_) {
        return;
    }
    try {
        target_->Unlock();
    } catch (...) {
        // Where a failure leaves the scope already, a second one would end the process.
        if (std::uncaught_exceptions() == 0) {
            throw;
        }
    }
}

} // namespace vorlek
