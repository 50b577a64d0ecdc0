// What outlook.exe offers to redemption.dll.
#include "stand-ins/redemption/Redemption.h"

extern "C" __declspec(dllexport) HRESULT MakeRedemptionObject(REFCLSID classId, REFIID interfaceId, void** object) {
    return stand_ins::redemption::Make(classId, interfaceId, object);
}
