#include "agent/apps/outlook/AddInModule.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "foundation/Log4CxxHelper.h"

// The compiler's runtime is linked into the DLL and outlives it unless told: of libstdc++ the reserve for exceptions,
// of winpthreads its thread-local slot and what it keeps for each lock and thread.
namespace __gnu_cxx {
void __freeres();
}
extern "C" void winpthreads_release();
extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, LPVOID reserved);

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
    } else if (reason == DLL_PROCESS_DETACH) {
        vorlek::GlobalConfig::SetOutlookApplication(Outlook::_ApplicationPtr());
    }
    return _AtlModule.DllMain(reason, reserved);
}

/// Where the loader enters: around DllMain and the destructors of the static objects.
extern "C" BOOL WINAPI PluginMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr) {
        // The process ends. Its other threads were stopped wherever they stood, perhaps with a lock of ours, and
        // the system takes everything back by itself.
        return TRUE;
    }
    const BOOL result = DllMainCRTStartup(instance, reason, reserved);
    if (reason == DLL_PROCESS_DETACH) {
        __gnu_cxx::__freeres();
        winpthreads_release();
    }
    return result;
}
