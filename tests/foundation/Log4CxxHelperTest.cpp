#include "foundation/Log4CxxHelper.h"

#include <comdef.h>
#include <stdexcept>

#include <gmock/gmock.h>
#include <log4cxx/ndc.h>

#include "foundation/Exception.h"
#include "foundation/Log.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OwnLocalMachine.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/Threads.h"

using namespace vorlek;
using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::LogCapture;
using test_support::OwnLocalMachine;
using test_support::ReplacedImport;

namespace {

std::wstring NameOf_(const char* name, bool isFile) {
    LoggerHolder holder;
    InitLogger(holder, name, isFile);
    return holder.Get()->getName();
}

/// A mutex name of this layer, taken by an object of another kind: whoever wants the mutex fails.
class TakenName {
public:
    explicit TakenName(const std::wstring& purpose)
        : name_(L"VORLEK_LOG4CXX" + purpose + std::to_wstring(GetCurrentProcessId())),
          event_(CreateEventW(nullptr, TRUE, FALSE, (L"Global\\" + name_).c_str())) {}
    TakenName(const TakenName&) = delete;
    TakenName& operator=(const TakenName&) = delete;
    ~TakenName() { CloseHandle(event_); }

    std::wstring Words() const { return L"Failed to create named mutex \"" + name_ + L"\" with: 6"; }

private:
    std::wstring name_;
    HANDLE event_;
};

std::wstring SystemDirectory_() {
    wchar_t directory[MAX_PATH];
    GetSystemDirectoryW(directory, MAX_PATH);
    return directory;
}

/// What LogCurrentException logs for what the action raises.
template <class Action>
std::vector<std::wstring> Reported_(const Action& action) {
    const LogCapture log;
    LoggerHolder holder;
    InitLogger(holder, "vorlek::Reporter::Reporter", false);
    holder.Get()->setLevel(log4cxx::Level::getOff()); // the report is made all the same
    try {
        action();
    } catch (...) {
        const log4cxx::spi::LocationInfo site = LOG_SITE;
        SetLastError(1234); // not before the throw, which may leave an error of its own
        LogCurrentException(holder, L"Prefix:", site);
    }
    holder.Get()->setLevel(nullptr);
    return log.Texts(L"FATAL");
}

} // namespace

TEST(LoggerName, OfAFunctionDropsTheFunction) {
    EXPECT_EQ(NameOf_("vorlek::TaskHandler::TaskHandler", false), L"vorlek.TaskHandler");
    EXPECT_EQ(NameOf_("vorlek::PluginUtils::CConnectionManager::CConnectionManager", false),
              L"vorlek.PluginUtils.CConnectionManager");
    EXPECT_EQ(NameOf_("SharedMemory::SharedMemory", false), L"SharedMemory");
}

TEST(LoggerName, OfATemplateKeepsItsBrackets) {
    EXPECT_EQ(NameOf_("vorlek::ItemWrapper<Outlook::_MailItem>::ItemWrapper", false),
              L"vorlek.ItemWrapper<Outlook._MailItem>");
}

TEST(LoggerName, OfAFreeFunctionIsEmpty) {
    EXPECT_EQ(NameOf_("WinMain", false), L"");
    EXPECT_EQ(NameOf_("", false), L"");
}

TEST(LoggerName, OfAFileIsItsBaseName) {
    EXPECT_EQ(NameOf_("source/foundation/Log4CxxHelper.cpp", true), L"Log4CxxHelper");
    EXPECT_EQ(NameOf_("C:\\source\\Message.Common.cpp", true), L"Message.Common");
    EXPECT_EQ(NameOf_("plain", true), L"plain");
}

TEST(LoggerName, OfAFileThatCannotBeSplitIsTheDefault) {
    EXPECT_EQ(NameOf_((std::string(300, 'x') + ".cpp").c_str(), true), L"VorlekLogger");
}

TEST(InitLogger, FillsOnceAndForGood) {
    LoggerHolder holder;
    InitLogger(holder, "vorlek::First::First", false);
    const log4cxx::LoggerPtr first = holder.Get();
    InitLogger(holder, "vorlek::Second::Second", false);
    EXPECT_EQ(holder.Get(), first);
    EXPECT_EQ(holder.Get()->getName(), L"vorlek.First");
}

TEST(InitLogger, ManyThreadsFillOneHolder) {
    LoggerHolder holder;
    std::vector<log4cxx::LoggerPtr> seen(8);
    test_support::RunThreads(8, [&](int thread) {
        InitLogger(holder, "vorlek::Shared::Shared", false);
        seen[static_cast<std::size_t>(thread)] = holder.Get();
    });
    EXPECT_THAT(seen, testing::Each(log4cxx::Logger::getLogger(L"vorlek.Shared")));
}

TEST(InitLogger, IsGuardedByAMutexOfTheLoggerAndTheProcess) {
    const TakenName taken(L"vorlek.Guarded");
    LoggerHolder holder;
    ExpectFailure<Exception>([&] { InitLogger(holder, "vorlek::Guarded::Guarded", false); },
                             L"vorlek::NamedMutex::NamedMutex", taken.Words());
    EXPECT_EQ(holder.Get(), nullptr);
    EXPECT_NO_THROW(InitLogger(holder, "vorlek::Other::Other", false));
    EXPECT_NO_THROW(InitLogger(holder, "vorlek::Guarded::Guarded", false)) << "a filled holder asks for no mutex";
}

TEST(InitLogger, LockThatFailsPasses) {
    LoggerHolder holder;
    const FailingImport<"WaitForSingleObject", decltype(WaitForSingleObject)> wait(ERROR_INVALID_HANDLE, WAIT_FAILED);
    ExpectFailure<Exception>([&] { InitLogger(holder, "vorlek::Locked::Locked", false); }, L"vorlek::NamedMutex::Lock",
                             L"WaitForSingleObject failed, return code: 4294967295");
    EXPECT_EQ(holder.Get(), nullptr);
}

TEST(StartLogSession, IsGuardedByAMutexOfTheProcess) {
    const TakenName taken(L"StartLogSession");
    ExpectFailure<Exception>([] { StartLogSession(L"C:\\no.properties", nullptr, false); },
                             L"vorlek::NamedMutex::NamedMutex", taken.Words());
    EXPECT_STREQ(GetLogSessionName(), L"");
}

TEST(EndThreadLog, LeavesNothingOfTheThreadAndLetsItLogAgain) {
    const LogCapture log;
    LoggerHolder holder;
    InitLogger(holder, "vorlek::Thread::Run", false);
    test_support::RunThreads(1, [&](int) {
        log4cxx::NDC::push(L"context");
        LOG_INFO(holder, L"first");
        EndThreadLog();
        EXPECT_TRUE(log4cxx::NDC::empty());
        LOG_INFO(holder, L"second");
        EndThreadLog();
    });
    EXPECT_THAT(log.Texts(L"INFO"), testing::ElementsAre(L"first", L"second"));
}

TEST(LogConfigurationPath, LiesInTheProductsFolderOfTheCommonData) {
    const OwnLocalMachine machine;
    machine.ShellFolders()->SetValue(L"Common AppData", std::wstring(L"D:\\Data \x017C"));
    EXPECT_EQ(GetLogConfigurationPath(), L"D:\\Data \x017C\\Vorlek\\QLTLogger.properties");
}

TEST(LogConfigurationPath, FallsBackToTheSystemDirectoryWithADoubledSeparator) {
    const OwnLocalMachine machine;
    const std::wstring fallBack = SystemDirectory_() + L"\\\\QLTLogger.properties";
    EXPECT_EQ(GetLogConfigurationPath(), fallBack) << "no key";
    const auto folders = machine.ShellFolders();
    EXPECT_EQ(GetLogConfigurationPath(), fallBack) << "no value";
    folders->SetValue(L"Common AppData", 5);
    EXPECT_EQ(GetLogConfigurationPath(), fallBack) << "a value of another type";
}

TEST(LogConfigurationPath, FailureOfAnotherKindPasses) {
    const ReplacedImport<"RegOpenKeyExW", decltype(RegOpenKeyExW)> open(
        [](HKEY, LPCWSTR, DWORD, REGSAM, HKEY*) -> LSTATUS { throw std::runtime_error("out of order"); });
    EXPECT_THROW(GetLogConfigurationPath(), std::runtime_error);
}

TEST(LogCurrentException, GivesAnExceptionsRendering) {
    EXPECT_THAT(Reported_([] { throw IOException(L"File.cpp", 7, L"vorlek::Place", L"words"); }),
                testing::ElementsAre(L"Prefix: File.cpp(7): vorlek::Place: IOException: words"));
}

TEST(LogCurrentException, GivesAStandardExceptionsText) {
    EXPECT_THAT(Reported_([] { throw std::runtime_error("caf\xC3\xA9 closed"); }),
                testing::ElementsAre(L"Prefix: caf\x00E9 closed"));
}

TEST(LogCurrentException, GivesAComErrorsNumberInSignedDecimal) {
    EXPECT_THAT(Reported_([] { _com_raise_error(E_OUTOFMEMORY); }),
                testing::ElementsAre(std::wstring(L"Prefix: Description: , error: -2147024882, error message: ") +
                                     _com_error(E_OUTOFMEMORY).ErrorMessage()));
}

TEST(LogCurrentException, GivesAComErrorsDescription) {
    const auto raise = [] {
        ICreateErrorInfo* created = nullptr;
        CreateErrorInfo(&created);
        std::wstring words = L"what went wrong";
        created->SetDescription(words.data());
        IErrorInfo* information = nullptr;
        created->QueryInterface(__uuidof(IErrorInfo), reinterpret_cast<void**>(&information));
        created->Release();
        _com_raise_error(E_FAIL, information);
    };
    EXPECT_THAT(Reported_(raise),
                testing::ElementsAre(std::wstring(L"Prefix: Description: what went wrong, error: -2147467259, error "
                                                  L"message: ") +
                                     _com_error(E_FAIL).ErrorMessage()));
}

TEST(LogCurrentException, GivesTheLastErrorForAnythingElse) {
    EXPECT_THAT(Reported_([] { throw 5; }),
                testing::ElementsAre(L"Prefix: LogCurrentException:Unknown exception. Last error: 1234"));
}

TEST(LogCurrentException, ReportsFromTheSiteThatItIsGiven) {
    const LogCapture log;
    LoggerHolder holder;
    InitLogger(holder, "vorlek::Reporter::Reporter", false);
    try {
        throw 5;
    } catch (...) {
        LogCurrentException(holder, L"Prefix:", {"source/Here.cpp", "Here.cpp", "vorlek::Place::Function", 7});
    }
    ASSERT_EQ(log.Lines().size(), 1U);
    EXPECT_EQ(log.Lines()[0].site, "Here.cpp(7): Function");
    EXPECT_EQ(log.Lines()[0].logger, L"vorlek.Reporter");
}

TEST(LogCurrentException, ReportsNothingThroughAnEmptyHolder) {
    LoggerHolder holder;
    try {
        throw 5;
    } catch (...) {
        EXPECT_NO_THROW(LogCurrentException(holder, L"Prefix:", LOG_SITE));
    }
}
