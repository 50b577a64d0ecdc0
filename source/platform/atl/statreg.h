#pragma once
// The registrar: an interpreter of the language in which a COM server writes down its registry keys.
//
//     HKCR { [NoRemove|ForceRemove|Delete] key [= s|d|b value] { val name = s|d|b value ... keys ... } }
//
// A token ends at white space; one with blanks stands in single quotes, a quote inside it doubled.
// %NAME% in a token stands for a replacement, %% for a per cent sign.
#include <map>
#include <string>
#include <string_view>

#include "platform/Windows.h"

namespace ATL {

class CRegObject {
public:
    /// What %key% stands for in the scripts that follow.
    void AddReplacement(const std::wstring& key, const std::wstring& item);

    /// Runs a script. DISP_E_EXCEPTION for one that cannot be read, which then has changed nothing;
    /// otherwise the first failure of the registry.
    HRESULT StringRegister(std::wstring_view script) const noexcept;
    /// Removes what the script's run wrote: values, and keys in which nothing of others is left. A key
    /// under NoRemove stays, one under ForceRemove goes with all it holds; what is absent is no failure.
    HRESULT StringUnregister(std::wstring_view script) const noexcept;

    /// The same with a script in UTF-8 from the module's resources.
    HRESULT ResourceRegister(HINSTANCE module, UINT id, const wchar_t* type) const noexcept;
    HRESULT ResourceUnregister(HINSTANCE module, UINT id, const wchar_t* type) const noexcept;

private:
    std::map<std::wstring, std::wstring> replacements_;
};

} // namespace ATL
