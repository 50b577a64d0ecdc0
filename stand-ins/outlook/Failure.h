#pragma once
#include <string>

#include "platform/Windows.h"

namespace stand_ins {

/// A member that fails: its caller sees DISP_E_EXCEPTION with the scode and the words.
struct Failure {
    HRESULT result;
    std::wstring words;
};

/// A call that is wrong in itself: its caller sees the HRESULT of Invoke.
struct BadCall {
    HRESULT result;
    UINT argument = 0; ///< index in rgvarg
};

inline constexpr HRESULT kInvalidEntryId = static_cast<HRESULT>(0x80040107);
inline constexpr HRESULT kObjectDeleted = static_cast<HRESULT>(0x8004010A);
inline constexpr HRESULT kNotFound = static_cast<HRESULT>(0x8004010F);
inline constexpr HRESULT kNoRecipients = static_cast<HRESULT>(0x80040607);
inline constexpr HRESULT kIndexOutOfBounds = DISP_E_BADINDEX;

} // namespace stand_ins
