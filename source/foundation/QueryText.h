#pragma once
#include <cwchar>
#include <string>

#include "foundation/Throw.h"
#include "platform/Windows.h"

namespace vorlek {

/// A text that the system hands out in two calls: the room it needs, the terminator included, then the
/// text itself. call: takes buffer and room in characters, returns 0 on failure, else the length or the
/// room needed. Failures of the two are raised with their own words and the system's error.
template <class Failure, class Call>
std::wstring QueryText(ThrowSite site, Call call, const std::wstring& sizeWords, const std::wstring& textWords) {
    SetLastError(ERROR_SUCCESS);
    DWORD room = call(nullptr, 0);
    if (room == 0) {
        Throw<Failure>(site, sizeWords, GetLastError());
    }
    for (;;) {
        std::wstring text(room, L'\0');
        SetLastError(ERROR_SUCCESS);
        const DWORD result = call(text.data(), room);
        if (result == 0 && GetLastError() != ERROR_SUCCESS) { // an empty text has the length 0 as well
            Throw<Failure>(site, textWords, GetLastError());
        }
        if (result <= room) {
            text.resize(wcsnlen(text.data(), room));
            return text;
        }
        room = result; // it grew between the calls
    }
}

} // namespace vorlek
