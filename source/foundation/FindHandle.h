#pragma once
#include "foundation/AutoHandle.h"

namespace vorlek {

/// An open listing of a directory.
using FindHandle = AutoHandle<HANDLE, -1, FindClose>;

/// Whether the name of a listed entry stands for the directory itself or its parent.
inline bool IsDots(const WIN32_FIND_DATAW& entry) {
    return wcscmp(entry.cFileName, L".") == 0 || wcscmp(entry.cFileName, L"..") == 0;
}

} // namespace vorlek
