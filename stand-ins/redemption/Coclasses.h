#pragma once
#include <array>

#include "platform/Windows.h"

namespace stand_ins::redemption {

/// One class of the library, as the registry knows it.
struct Coclass {
    const wchar_t* progId;
    GUID id;
};

inline constexpr std::array<Coclass, 5> kCoclasses = {{
    {L"Redemption.RDOSession", {0x29AB7A12, 0xB531, 0x450E, {0x8F, 0x7A, 0xEA, 0x94, 0xC2, 0xF3, 0xC0, 0x5F}}},
    {L"Redemption.SafeMailItem", {0x741BEEFD, 0xAEC0, 0x4AFF, {0x84, 0xAF, 0x4F, 0x61, 0xD1, 0x5F, 0x55, 0x26}}},
    {L"Redemption.SafeMeetingItem", {0xFA2CBAFB, 0xF7B1, 0x4F41, {0x9B, 0x7A, 0x73, 0x32, 0x9A, 0x6C, 0x1C, 0xB7}}},
    {L"Redemption.SafeTaskItem", {0x7A41359E, 0x0407, 0x470F, {0xB3, 0xF7, 0x7C, 0x6A, 0x0F, 0x7C, 0x44, 0x9A}}},
    {L"Redemption.SafeCurrentUser", {0x7ED1E9B1, 0xCB57, 0x4FA0, {0x84, 0xE8, 0xFA, 0xE6, 0x53, 0xFE, 0x8E, 0x6B}}},
}};

/// Makes an object of a class, in the Outlook of this process. The HRESULT is that of a class object's CreateInstance.
using MakeObject = HRESULT (*)(REFCLSID classId, REFIID interfaceId, void** object);

/// The name under which outlook.exe exports its MakeObject: what the library needs of Outlook lies inside it.
inline constexpr char kMakeObjectExport[] = "MakeRedemptionObject";

} // namespace stand_ins::redemption
