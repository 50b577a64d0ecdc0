#pragma once
#include <functional>
#include <string>

#include "platform/Windows.h"

namespace stand_ins {

/// The user in front of the screen: reads every message box of this process and presses OK, as long as the object
/// lives, from a thread of its own.
class Reader {
public:
    /// read: gets the text of each box, on the reader's thread.
    explicit Reader(std::function<void(const std::wstring&)> read);
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

private:
    static DWORD WINAPI Run_(void* self);

    std::function<void(const std::wstring&)> read_;
    HANDLE over_;
    HANDLE thread_;
};

} // namespace stand_ins
