// The entry point of the add-in in the coverage build. At the end of the process the DLL does nothing, nor do its
// destructors run, which would write what gcov has counted in it.
#include "platform/Windows.h"

extern "C" void __gcov_dump();
extern "C" BOOL WINAPI PluginMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

extern "C" BOOL WINAPI CoverageMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr) {
        __gcov_dump();
    }
    return PluginMain(instance, reason, reserved);
}
