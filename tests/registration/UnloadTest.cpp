// The DLL comes and goes in a process that lives on.
#include "platform/Windows.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "foundation/StringUtils.h"
#include "platform/outlook/Extensibility.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/RegistryPlace.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Threads.h"

namespace {

using test_support::TemporaryFolder;
using vorlek::StringUtils;

constexpr CLSID kConnect = {0xF7A9E3A1, 0x9D13, 0x4D56, {0x93, 0x3D, 0x5E, 0x5D, 0x79, 0x8C, 0xB0, 0x42}};
constexpr int kRounds = 50;
constexpr int kThreads = 4;
constexpr int kLinesPerThread = 10;

/// Loads the DLL, lets threads log through add-ins of their own, and unloads it. False if it failed or stayed.
bool LoadLogAndUnload_() {
    const HMODULE module = LoadLibraryW(PLUGIN_FILE);
    if (module == nullptr) {
        return false;
    }
    using GetClassObject = HRESULT STDMETHODCALLTYPE(REFCLSID, REFIID, void**);
    auto* getClassObject =
        reinterpret_cast<GetClassObject*>(reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    test_support::RunThreads(kThreads, [&](int) {
        IClassFactory* factory = nullptr;
        getClassObject(kConnect, IID_PPV_ARGS(&factory));
        _IDTExtensibility2* addIn = nullptr;
        factory->CreateInstance(nullptr, IID_PPV_ARGS(&addIn));
        for (int line = 0; line < kLinesPerThread; ++line) {
            addIn->OnStartupComplete(nullptr);
        }
        addIn->Release();
        factory->Release();
    });
    FreeLibrary(module);
    return GetModuleHandleW(L"OutlookQLTPlugin.dll") == nullptr;
}

/// Lets the machine's folder for common data be the given one, for this process alone.
void UseCommonData_(const RegistryKey& machine, const std::wstring& name, const std::wstring& folder) {
    machine.CreateSubKey(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", true)
        ->SetValue(L"Common AppData", folder);
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, name.c_str(), 0, KEY_ALL_ACCESS, &key);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, key);
    RegCloseKey(key);
}

/// "unloaded", or "failed" when one round did.
std::wstring LoadManyTimes_(const std::wstring& folder) {
    const test_support::RegistryPlace machine;
    UseCommonData_(machine.Key(), machine.Name(), folder);
    for (int round = 0; round < kRounds; ++round) {
        if (!LoadLogAndUnload_()) {
            return L"failed";
        }
    }
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    return L"unloaded";
}

const test_support::ChildRoleName loadManyTimes(L"LoadManyTimes", LoadManyTimes_);

TEST(Plugin, LoadedAndUnloadedFiftyTimesWhileThreadsLogEnds) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / L"Vorlek");
    const std::filesystem::path log = folder / L"add-in.log";
    test_support::WriteBytes(folder / L"Vorlek\\QLTLogger.properties",
                             "log4j.rootLogger=ALL, file\n"
                             "log4j.appender.file=org.apache.log4j.FileAppender\n"
                             "log4j.appender.file.File=" +
                                 StringUtils::Replace(log.string(), "\\", "/") +
                                 "\n"
                                 "log4j.appender.file.layout=org.apache.log4j.PatternLayout\n"
                                 "log4j.appender.file.layout.ConversionPattern=%m|\n");
    EXPECT_EQ(test_support::ChildProcess(L"LoadManyTimes", folder.Path()).Result(), L"unloaded");
    const std::string written = test_support::ReadBytes(log);
    std::size_t lines = 0;
    for (std::size_t at = 0; (at = written.find("OnStartupComplete", at)) != written.npos; ++at) {
        ++lines;
    }
    EXPECT_EQ(lines, static_cast<std::size_t>(kRounds * kThreads * kLinesPerThread));
}

} // namespace
