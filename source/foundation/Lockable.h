#pragma once

namespace vorlek {

/// What the scope guard Lock can hold.
class Lockable {
public:
    virtual ~Lockable() = default;
    /// Waits without limit until the caller owns the lock.
    virtual void Lock() = 0;
    /// Gives it back; only the owning thread may.
    virtual void Unlock() = 0;

protected:
    Lockable() = default;
    Lockable(const Lockable&) = delete;
    Lockable& operator=(const Lockable&) = delete;
};

} // namespace vorlek
