#include <gtest/gtest.h>
#include <log4cxx/logmanager.h>

#include "foundation/AutoHandle.h"
#include "foundation/Exception.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/StringUtils.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/OwnLocalMachine.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Threads.h"

#include <psapi.h>
#include <tlhelp32.h>

using namespace vorlek;
using test_support::ChildProcess;
using test_support::TemporaryFolder;

// A session starts once in a process, so each of these starts is a process of its own.

namespace {

const std::filesystem::path kSample = std::filesystem::path(PACKAGING_FOLDER) / L"QLTLogger.properties";

HMODULE AnyModule_() {
    return GetModuleHandleW(L"KERNEL32.DLL");
}

/// A configuration that writes "LEVEL logger text" lines into a file of the folder.
std::wstring Configure_(const std::filesystem::path& folder, const std::wstring& file) {
    const std::filesystem::path path = folder / (file + L".properties");
    test_support::WriteBytes(path, "log4j.rootLogger=ALL, file\n"
                                   "log4j.appender.file=org.apache.log4j.FileAppender\n"
                                   "log4j.appender.file.File=" +
                                       StringUtils::Replace((folder / file).string(), "\\", "/") +
                                       "\n"
                                       "log4j.appender.file.encoding=UTF-8\n"
                                       "log4j.appender.file.layout=org.apache.log4j.PatternLayout\n"
                                       "log4j.appender.file.layout.ConversionPattern=%p %c %m|\n");
    return path;
}

std::wstring Written_(const std::filesystem::path& path) {
    const std::string bytes = test_support::ReadBytes(path);
    return StringUtils::Replace(StringUtils::FromUtf8(bytes), L"\r\n", L"\n");
}

std::wstring NameOf_(const char* name, bool isFile) {
    LoggerHolder holder;
    InitLogger(holder, name, isFile);
    return holder.Get()->getName();
}

/// How many threads this process has now.
int Threads_() {
    FileHandle snapshot;
    snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    int threads = 0;
    for (BOOL more = Thread32First(snapshot.Get(), &entry); more; more = Thread32Next(snapshot.Get(), &entry)) {
        threads += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    return threads;
}

std::wstring StartTwice_(const std::wstring& folder) {
    const std::wstring first = Configure_(folder, L"first.log");
    const std::wstring second = Configure_(folder, L"second.log");
    StartLogSession(first, AnyModule_(), false);
    StartLogSession(second, nullptr, false);
    StartLog(nullptr, false);
    return GetLogSessionName();
}

std::wstring NamesInASession_(const std::wstring& /*argument*/) {
    LoggerHolder early;
    InitLogger(early, "vorlek::Early::Early", false);
    StartLogSession(L"C:\\no\\such.properties", AnyModule_(), false);
    InitLogger(early, "vorlek::Early::Early", false);
    std::wstring names = early.Get()->getName();
    for (const char* function : {"vorlek::Early::Early", "vorlek::TaskHandler::TaskHandler", "WinMain"}) {
        names += L" " + NameOf_(function, false);
    }
    const std::string tooLong(300, 'x');
    for (const char* file : {"source/plugin-link/MessageCommon.cpp", tooLong.c_str()}) {
        names += L" " + NameOf_(file, true);
    }
    return names;
}

std::wstring ProgramsOwnName_(const std::wstring& /*argument*/) {
    StartLogSession(L"C:\\no\\such.properties", nullptr, false);
    return GetLogSessionName();
}

std::wstring UnknownModule_(const std::wstring& folder) {
    StartLogSession(Configure_(folder, L"first.log"), reinterpret_cast<HMODULE>(0x10), false);
    LogLegacy(0x100000, 1, "silent for the life of the process", "Old.cpp", "Function", 7);
    return std::wstring(L"<") + GetLogSessionName() + L">" + NameOf_("vorlek::TaskHandler::TaskHandler", false);
}

std::wstring StartAtOnce_(const std::wstring& folder) {
    const std::wstring configuration = Configure_(folder, L"first.log");
    test_support::RunThreads(8, [&](int) { StartLogSession(configuration, AnyModule_(), false); });
    return GetLogSessionName();
}

/// Starts the session in the usual way, with its configuration where an administrator puts it.
std::wstring StartUsually_(const std::wstring& folder, bool watch) {
    const test_support::OwnLocalMachine machine;
    machine.ShellFolders()->SetValue(L"Common AppData", folder);
    const std::filesystem::path product = std::filesystem::path(folder) / L"Vorlek";
    std::filesystem::create_directory(product);
    std::filesystem::rename(Configure_(folder, L"first.log"), product / L"QLTLogger.properties");
    const int before = Threads_();
    StartLog(AnyModule_(), watch);
    const int more = Threads_() - before;
    log4cxx::LogManager::shutdown(); // ends a thread that watches
    return GetLogSessionName() + (L" with so many threads more: " + std::to_wstring(more));
}

std::wstring Start_(const std::wstring& folder) {
    return StartUsually_(folder, false);
}

std::wstring Watch_(const std::wstring& folder) {
    return StartUsually_(folder, true);
}

std::wstring StartAgainAfterAFailure_(const std::wstring& folder) {
    const std::wstring configuration = Configure_(folder, L"first.log");
    std::wstring words;
    try {
        const test_support::FailingImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait(
            ERROR_INVALID_HANDLE, WAIT_FAILED);
        StartLogSession(configuration, AnyModule_(), false);
    } catch (const Exception& failure) {
        words = failure.GetMessage();
    }
    StartLogSession(configuration, AnyModule_(), false);
    return words + L", then " + GetLogSessionName();
}

std::wstring ProgramWithoutAName_(const std::wstring& folder) {
    test_support::ReplacedImport<"K32GetModuleBaseNameW", decltype(K32GetModuleBaseNameW)> name(
        [&](HANDLE process, HMODULE module, wchar_t* text, DWORD size) {
            return module == nullptr ? 0 : name.Original(process, module, text, size);
        });
    StartLogSession(Configure_(folder, L"first.log"), AnyModule_(), false);
    LoggerHolder own;
    InitLogger(own, "vorlek::TaskHandler::TaskHandler", false);
    LOG_INFO(own, L"a line");
    return GetLogSessionName();
}

std::wstring ModuleThatCannotBeSplit_(const std::wstring& folder) {
    using Split = errno_t(const wchar_t*, wchar_t*, std::size_t, wchar_t*, std::size_t, wchar_t*, std::size_t, wchar_t*,
                          std::size_t);
    const test_support::FailingImport<"_wsplitpath_s", Split> split(0, ERANGE);
    StartLogSession(Configure_(folder, L"first.log"), AnyModule_(), false);
    return std::wstring(L"<") + GetLogSessionName() + L">";
}

/// Runs under the sample configuration, with the folder for the user's local data.
std::wstring RunSample_(const std::wstring& folder) {
    SetEnvironmentVariableW(L"LOCALAPPDATA", folder.c_str());
    StartLogSession(kSample, nullptr, false);
    LoggerHolder own;
    LoggerHolder foreign;
    InitLogger(own, "vorlek::OutlookController::OutlookController", false);
    foreign.Fill(log4cxx::Logger::getLogger(L"another.module"));
    LOG_INFO(own, L"\x017C\x00F3\x0142w was sent");
    LOG_DEBUG(own, L"a step");
    LOG_INFO(foreign, L"another's milestone");
    LOG_WARN(foreign, L"another's warning");
    const std::wstring filler(3000, L'x');
    for (int line = 0; line < 2500; ++line) { // 7.5 MB, so that the file rolls over once
        LOG_INFO(own, L"line " << line << L" " << filler);
    }
    return GetLogSessionName();
}

const test_support::ChildRoleName startTwice(L"StartTwice", StartTwice_);
const test_support::ChildRoleName namesInASession(L"NamesInASession", NamesInASession_);
const test_support::ChildRoleName programsOwnName(L"ProgramsOwnName", ProgramsOwnName_);
const test_support::ChildRoleName unknownModule(L"UnknownModule", UnknownModule_);
const test_support::ChildRoleName startAtOnce(L"StartAtOnce", StartAtOnce_);
const test_support::ChildRoleName start(L"Start", Start_);
const test_support::ChildRoleName watch(L"Watch", Watch_);
const test_support::ChildRoleName startAgain(L"StartAgainAfterAFailure", StartAgainAfterAFailure_);
const test_support::ChildRoleName withoutAName(L"ProgramWithoutAName", ProgramWithoutAName_);
const test_support::ChildRoleName cannotBeSplit(L"ModuleThatCannotBeSplit", ModuleThatCannotBeSplit_);
const test_support::ChildRoleName runSample(L"RunSample", RunSample_);

/// A copy of this program under another name.
std::wstring CopyOfProgram_(const TemporaryFolder& folder, const std::wstring& name) {
    wchar_t own[MAX_PATH];
    GetModuleFileNameW(nullptr, own, MAX_PATH);
    std::wstring copy = folder / name;
    CopyFileW(own, copy.c_str(), TRUE);
    return copy;
}

const std::wstring kBanner =
    L"INFO kernel32.log4cxxhelper ************************ foundation_tests.exe ************************|";

} // namespace

TEST(LogSession, StartsOnceWithTheFirstCallersModuleAndConfiguration) {
    const TemporaryFolder folder;
    EXPECT_EQ(ChildProcess(L"StartTwice", folder.Path()).Result(), L"kernel32");
    EXPECT_EQ(Written_(folder / L"first.log"), kBanner);
    EXPECT_FALSE(std::filesystem::exists(folder / L"second.log"));
}

TEST(LogSession, ManyThreadsStartItOnce) {
    const TemporaryFolder folder;
    EXPECT_EQ(ChildProcess(L"StartAtOnce", folder.Path()).Result(), L"kernel32");
    EXPECT_EQ(Written_(folder / L"first.log"), kBanner);
}

TEST(LogSession, NamesLoggersBehindTheModule) {
    EXPECT_EQ(ChildProcess(L"NamesInASession").Result(),
              L"vorlek.Early kernel32.vorlek.Early kernel32.vorlek.TaskHandler kernel32. kernel32.messagecommon "
              L"VorlekLogger")
        << "the first was asked for before the session and keeps its name";
}

TEST(LogSession, OfNoModuleIsNamedAfterTheProgramInSmallLetters) {
    const TemporaryFolder folder;
    const std::wstring program = CopyOfProgram_(folder, L"Mixed.Case.EXE");
    EXPECT_EQ(ChildProcess(L"ProgramsOwnName", L"", program).Result(), L"mixed.case");
}

TEST(LogSession, OfAnUnknownModuleHasNoNameButIsConfigured) {
    const TemporaryFolder folder;
    EXPECT_EQ(ChildProcess(L"UnknownModule", folder.Path()).Result(), L"<>vorlek.TaskHandler");
    EXPECT_EQ(Written_(folder / L"first.log"),
              L"INFO Log4CxxHelper ************************ foundation_tests.exe ************************|");
}

TEST(LogSession, OfAModuleThatCannotBeSplitHasNoNameButIsConfigured) {
    const TemporaryFolder folder;
    EXPECT_EQ(ChildProcess(L"ModuleThatCannotBeSplit", folder.Path()).Result(), L"<>");
    EXPECT_EQ(Written_(folder / L"first.log"),
              L"INFO Log4CxxHelper ************************ foundation_tests.exe ************************|");
}

TEST(LogSession, HasNoBannerWhereTheProgramHasNoName) {
    const TemporaryFolder folder;
    EXPECT_EQ(ChildProcess(L"ProgramWithoutAName", folder.Path()).Result(), L"kernel32");
    EXPECT_EQ(Written_(folder / L"first.log"), L"INFO kernel32.vorlek.TaskHandler a line|");
}

TEST(LogSession, StartsWhenALaterCallGetsTheLock) {
    const TemporaryFolder folder;
    EXPECT_EQ(ChildProcess(L"StartAgainAfterAFailure", folder.Path()).Result(),
              L"WaitForSingleObject failed, return code: 4294967295, then kernel32");
    EXPECT_EQ(Written_(folder / L"first.log"), kBanner);
}

TEST(LogSession, FindsItsConfigurationAndStartsNoThread) {
    const TemporaryFolder folder;
    EXPECT_EQ(ChildProcess(L"Start", folder.Path()).Result(), L"kernel32 with so many threads more: 0");
    EXPECT_EQ(Written_(folder / L"first.log"), kBanner);
}

TEST(LogSession, WatchesItsConfigurationOnAThreadWhenAsked) {
    const TemporaryFolder folder;
    EXPECT_EQ(ChildProcess(L"Watch", folder.Path()).Result(), L"kernel32 with so many threads more: 1");
    EXPECT_EQ(Written_(folder / L"first.log"), kBanner);
}

TEST(LogSession, SampleConfigurationLogsTheAddInByUserInFilesThatRoll) {
    const TemporaryFolder folder;
    const std::wstring program = CopyOfProgram_(folder, L"OutlookQLTPlugin.exe");
    EXPECT_EQ(ChildProcess(L"RunSample", folder.Path(), program).Result(), L"outlookqltplugin");
    const std::filesystem::path logs = folder / L"Vorlek";
    const std::wstring first = Written_(logs / L"OutlookQLTPlugin.log.1");
    EXPECT_NE(first.find(L"************************ OutlookQLTPlugin.exe ************************\n"), first.npos);
    EXPECT_NE(first.find(L"] outlookqltplugin.vorlek.OutlookController (LogSessionTest.cpp:"), first.npos);
    EXPECT_NE(first.find(L") \x017C\x00F3\x0142w was sent\n"), first.npos);
    EXPECT_NE(first.find(L") another's warning\n"), first.npos);
    EXPECT_EQ(first.find(L"a step"), first.npos);
    EXPECT_EQ(first.find(L"another's milestone"), first.npos);
    EXPECT_LE(std::filesystem::file_size(logs / L"OutlookQLTPlugin.log.1"), 5U * 1024 * 1024 + 4096);
    EXPECT_NE(Written_(logs / L"OutlookQLTPlugin.log").find(L") line 2499 xxx"), std::wstring::npos);
}
