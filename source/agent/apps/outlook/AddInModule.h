#pragma once
#include "platform/atl/atlbase.h"

namespace vorlek {

/// The DLL as a COM server.
class CAddInModule : public ATL::CAtlDllModuleT<CAddInModule> {};

} // namespace vorlek

/// The one of the DLL.
extern vorlek::CAddInModule _AtlModule;
