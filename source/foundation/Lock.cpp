#include "foundation/Lock.h"

namespace vorlek {

Lock::Lock(Lockable& target) : target_(&target) {
    target_->Lock();
    locked_ = true;
}

Lock::~Lock() noexcept(false) {
    if (locked_) {
        target_->Unlock();
    }
}

} // namespace vorlek
