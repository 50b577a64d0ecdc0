#pragma once
#include <type_traits>

#include "platform/Windows.h"

namespace vorlek {

/// Owner of one system handle. Invalid: the value that stands for none. Close: the function that
/// gives a handle back. Null or 0 is never valid either, since half of the system's functions fail
/// with null where the other half fails with -1.
template <class H, INT_PTR Invalid, auto Close>
class AutoHandle {
public:
    AutoHandle() = default;
    explicit AutoHandle(H handle) : handle_(handle) {}
    AutoHandle(const AutoHandle&) = delete;
    AutoHandle& operator=(const AutoHandle&) = delete;
    virtual ~AutoHandle() { Reset_(); }

    /// Takes over the handle and closes the present one. The handle that is held already stays as it is.
    AutoHandle& operator=(H handle) {
        if (handle != handle_) {
            Reset_();
            handle_ = handle;
        }
        return *this;
    }

    H Get() const { return handle_; }

    bool IsValid() const { return handle_ != H{} && handle_ != InvalidHandle_(); }

private:
    static H InvalidHandle_() {
        if constexpr (std::is_pointer_v<H>) {
            return reinterpret_cast<H>(Invalid);
        } else {
            return static_cast<H>(Invalid);
        }
    }

    void Reset_() {
        if (IsValid()) {
            Close(handle_);
        }
        handle_ = InvalidHandle_();
    }

    H handle_ = InvalidHandle_();
};

using FileHandle = AutoHandle<HANDLE, -1, CloseHandle>;
using ViewHandle = AutoHandle<BYTE*, 0, UnmapViewOfFile>;

} // namespace vorlek
