// The DLL comes and goes in a process that lives on.
#include "platform/Windows.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "foundation/StringUtils.h"
#include "platform/outlook/Extensibility.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/RegistryPlace.h"
#include "tests/support/ResourceCount.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Threads.h"

namespace {

using test_support::ResourceCount;
using test_support::TemporaryFolder;
using vorlek::StringUtils;

constexpr CLSID kConnect = {0xF7A9E3A1, 0x9D13, 0x4D56, {0x93, 0x3D, 0x5E, 0x5D, 0x79, 0x8C, 0xB0, 0x42}};
constexpr int kFirstRounds = 5; // after which the system has what it keeps for good
constexpr int kRounds = 50;
constexpr int kThreads = 4;
constexpr int kLinesPerThread = 10;
constexpr int kLinesPerRound = (kThreads + 1) * kLinesPerThread;

/// Logs through an add-in of the thread's own.
void Log_(HMODULE module) {
    using GetClassObject = HRESULT STDMETHODCALLTYPE(REFCLSID, REFIID, void**);
    auto* getClassObject =
        reinterpret_cast<GetClassObject*>(reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    IClassFactory* factory = nullptr;
    getClassObject(kConnect, IID_PPV_ARGS(&factory));
    _IDTExtensibility2* addIn = nullptr;
    factory->CreateInstance(nullptr, IID_PPV_ARGS(&addIn));
    for (int line = 0; line < kLinesPerThread; ++line) {
        addIn->OnStartupComplete(nullptr);
    }
    addIn->Release();
    factory->Release();
}

/// Loads the DLL, logs from threads that end and from this one, which lives on, and unloads the DLL again: here, or
/// in another thread. False if it failed or stayed.
bool LoadLogAndUnload_(bool here) {
    const HMODULE module = LoadLibraryW(PLUGIN_FILE);
    if (module == nullptr) {
        return false;
    }
    test_support::RunThreads(kThreads, [&](int) { Log_(module); });
    Log_(module);
    if (here) {
        FreeLibrary(module);
    } else {
        test_support::RunThreads(1, [&](int) { FreeLibrary(module); });
    }
    return GetModuleHandleW(L"OutlookQLTPlugin.dll") == nullptr;
}

/// In turns from this thread, from this one and another, and from one that ends when the DLL is gone.
bool LoadManyTimes_(int rounds) {
    bool succeeded = true;
    for (int round = 0; round < rounds && succeeded; ++round) {
        if (round % 3 < 2) {
            succeeded = LoadLogAndUnload_(round % 3 == 0);
        } else {
            test_support::RunThreads(1, [&](int) { succeeded = LoadLogAndUnload_(true); });
        }
    }
    return succeeded;
}

/// Lets the machine's folder for common data be the given one, for this process alone.
class CommonData {
public:
    explicit CommonData(const std::wstring& folder) {
        machine_->CreateSubKey(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", true)
            ->SetValue(L"Common AppData", folder);
        HKEY key = nullptr;
        RegOpenKeyExW(HKEY_CURRENT_USER, machine_.Name().c_str(), 0, KEY_ALL_ACCESS, &key);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, key);
        RegCloseKey(key);
    }
    CommonData(const CommonData&) = delete;
    CommonData& operator=(const CommonData&) = delete;
    ~CommonData() { RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr); }

private:
    const test_support::RegistryPlace machine_;
};

/// What fifty rounds leave behind, or "failed" when one did.
std::wstring Leave_(const std::wstring& folder) {
    const CommonData commonData(folder);
    if (!LoadManyTimes_(kFirstRounds)) {
        return L"failed";
    }
    const ResourceCount before = ResourceCount::Now();
    if (!LoadManyTimes_(kRounds)) {
        return L"failed";
    }
    return ResourceCount::Now().Since(before);
}

/// "stayed" where the DLL did not go when it was told to.
std::wstring LoadOnce_(const std::wstring& folder) {
    const CommonData commonData(folder);
    return LoadLogAndUnload_(true) ? L"went" : L"stayed";
}

/// Comes back, and so ends the process, with the DLL loaded and a thread that logs.
std::wstring LogToTheEnd_(const std::wstring& folder) {
    const CommonData commonData(folder);
    static const HMODULE module = LoadLibraryW(PLUGIN_FILE);
    static const HANDLE logged = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const auto body = [](void*) -> DWORD {
        for (;;) {
            Log_(module);
            SetEvent(logged);
        }
    };
    CloseHandle(CreateThread(nullptr, 0, body, nullptr, 0, nullptr));
    WaitForSingleObject(logged, INFINITE);
    return L"ended";
}

const test_support::ChildRoleName leave(L"Leave", Leave_);
const test_support::ChildRoleName loadOnce(L"LoadOnce", LoadOnce_);
const test_support::ChildRoleName logToTheEnd(L"LogToTheEnd", LogToTheEnd_);

class Unload : public testing::Test {
protected:
    Unload() { std::filesystem::create_directories(folder_ / L"Vorlek"); }

    /// Configures the log of the child to come. file: where it goes.
    void Configure_(const std::filesystem::path& file, const std::string& more = {}) const {
        test_support::WriteBytes(folder_ / L"Vorlek\\QLTLogger.properties",
                                 "log4j.rootLogger=ALL, file\n"
                                 "log4j.appender.file=org.apache.log4j.FileAppender\n"
                                 "log4j.appender.file.File=" +
                                     StringUtils::Replace(file.string(), "\\", "/") +
                                     "\n"
                                     "log4j.appender.file.layout=org.apache.log4j.PatternLayout\n"
                                     "log4j.appender.file.layout.ConversionPattern=%m|\n" +
                                     more);
    }
    int LinesIn_(const std::filesystem::path& file) const {
        const std::string written = test_support::ReadBytes(file);
        int lines = 0;
        for (std::size_t at = 0; (at = written.find("OnStartupComplete", at)) != written.npos; ++at) {
            ++lines;
        }
        return lines;
    }
    std::wstring Play_(const std::wstring& role) const {
        return test_support::ChildProcess(role, folder_.Path()).Result();
    }

    static constexpr const wchar_t* kNothing_ = L"0 handles, 0 heap blocks, 0 thread slots";
    const TemporaryFolder folder_;
    const std::filesystem::path log_ = folder_ / L"add-in.log";
};

TEST_F(Unload, LeavesNothingOfFiftyTimesWhileThreadsLog) {
    Configure_(log_);
    EXPECT_EQ(Play_(L"Leave"), kNothing_);
    EXPECT_EQ(LinesIn_(log_), (kFirstRounds + kRounds) * kLinesPerRound);
}

TEST_F(Unload, KeepsTheDllWhileItsLogRunsAThread) {
    Configure_(log_, "log4j.appender.file.BufferedIO=true\n");
    EXPECT_EQ(Play_(L"LoadOnce"), L"stayed");
}

TEST_F(Unload, LeavesNothingWhereTheLogCannotBeWritten) {
    Configure_(folder_ / L"Vorlek"); // a folder
    EXPECT_EQ(Play_(L"Leave"), kNothing_);
}

TEST_F(Unload, LeavesNothingWithoutAConfiguration) {
    EXPECT_EQ(Play_(L"Leave"), kNothing_);
}

TEST_F(Unload, EndOfTheProcessWaitsForNoThread) {
    Configure_(log_, "log4j.appender.file.BufferedIO=true\n");
    EXPECT_EQ(Play_(L"LogToTheEnd"), L"ended");
}

} // namespace
