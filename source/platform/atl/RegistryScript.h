#pragma once
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Windows.h"

namespace ATL {

/// A registrar script as it was read: what to write, with nothing written yet.
struct RegistryScript {
    enum class Handling { Plain, NoRemove, ForceRemove, Delete };

    struct Value {
        std::wstring name; ///< empty for the key's default value
        DWORD type;
        std::vector<BYTE> data;
        bool noRemove;
    };

    struct Key {
        std::wstring name;
        Handling handling;
        std::vector<Value> values;
        std::vector<Key> keys;
    };

    struct Root {
        HKEY key;
        std::vector<Key> keys;
    };

    /// Throws CAtlException of DISP_E_EXCEPTION when the text is not a script.
    static std::vector<Root> Parse(std::wstring_view text, const std::map<std::wstring, std::wstring>& replacements);
};

} // namespace ATL
