#include "agent/apps/outlook/AddInModule.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "foundation/Log4CxxHelper.h"

namespace {

/// Without a log the add-in still protects; the loader must see no exception.
void StartLog_(HINSTANCE instance) {
    try {
        vorlek::StartLog(instance, false);
    } catch (...) {
        OutputDebugStringW(L"OutlookQLTPlugin: the log could not be started\n");
    }
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(instance);
        StartLog_(instance);
        ATL::_AtlBaseModule.m_hInst = instance;
    } else if (reason == DLL_PROCESS_DETACH && reserved == nullptr) {
        vorlek::GlobalConfig::SetOutlookApplication(Outlook::_ApplicationPtr());
    }
    return _AtlModule.DllMain(reason, reserved);
}
