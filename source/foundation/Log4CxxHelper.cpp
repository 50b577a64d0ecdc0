#include "foundation/Log4CxxHelper.h"

#include <atomic>
#include <comdef.h>
#include <cstdlib>
#include <cwctype>
#include <exception>
#include <sstream>
#include <string_view>

#include <log4cxx/file.h>
#include <log4cxx/ndc.h>
#include <log4cxx/propertyconfigurator.h>

#include "foundation/Brand.h"
#include "foundation/Exception.h"
#include "foundation/Lock.h"
#include "foundation/Log.h"
#include "foundation/NamedMutex.h"
#include "foundation/RegistryKey.h"
#include "foundation/StringUtils.h"

#include <psapi.h>

namespace vorlek {
namespace {

constexpr const wchar_t* kConfigurationFileName = L"QLTLogger.properties";
constexpr const wchar_t* kMutexPrefix = L"VORLEK_LOG4CXX";
constexpr const wchar_t* kDefaultLoggerName = L"VorlekLogger";
constexpr const wchar_t* kBannerRule = L"************************";

constexpr long kWatchDelayMs = 60000;

// Read while the module loads and while the process ends: plain memory, with nothing to build or destroy.
constinit std::atomic<bool> firstStart_ = true;
constinit std::atomic<bool> isNamed_ = false;
constinit wchar_t sessionName_[MAX_PATH] = L"";

LoggerHolder bannerLogger_;

std::wstring Widen_(std::string_view text) {
    std::wstring wide;
    wide.reserve(text.size());
    for (const char character : text) {
        wide.push_back(static_cast<unsigned char>(character));
    }
    return wide;
}

std::wstring MutexName_(const std::wstring& purpose) {
    return kMutexPrefix + purpose + std::to_wstring(GetCurrentProcessId());
}

void NameSession_(HMODULE module) {
    wchar_t file[MAX_PATH];
    if (GetModuleBaseNameW(GetCurrentProcess(), module, file, MAX_PATH) == 0 ||
        _wsplitpath_s(file, nullptr, 0, nullptr, 0, sessionName_, MAX_PATH, nullptr, 0) != 0) {
        return;
    }
    for (wchar_t& character : sessionName_) {
        character = static_cast<wchar_t>(std::towlower(character));
    }
    isNamed_.store(true, std::memory_order_release);
}

void WriteBanner_() {
    InitLogger(bannerLogger_, __FILE__, true);
    wchar_t program[MAX_PATH];
    if (GetModuleBaseNameW(GetCurrentProcess(), nullptr, program, MAX_PATH) != 0) {
        LOG_INFO(bannerLogger_, kBannerRule << L" " << program << L" " << kBannerRule);
    }
}

std::wstring FileLoggerName_(const char* path) {
    char base[_MAX_FNAME];
    if (_splitpath_s(path, nullptr, 0, nullptr, 0, base, _MAX_FNAME, nullptr, 0) != 0) {
        return kDefaultLoggerName;
    }
    std::wstring name = Widen_(base);
    const std::wstring session = GetLogSessionName();
    if (session.empty()) {
        return name;
    }
    for (wchar_t& character : name) {
        character = static_cast<wchar_t>(std::towlower(character));
    }
    return session + L"." + name;
}

std::wstring FunctionLoggerName_(std::string_view function) {
    constexpr std::string_view separator = "::";
    const std::size_t last = function.rfind(separator);
    const std::string_view scope = last == std::string_view::npos ? std::string_view() : function.substr(0, last);
    const std::wstring name = Widen_(StringUtils::Replace(scope, separator, "."));
    const std::wstring session = GetLogSessionName();
    return session.empty() ? name : session + L"." + name;
}

/// The words of the exception being handled. lastError: the system's, read before anything else.
void DescribeCurrent_(std::wostream& text, DWORD lastError) {
    try {
        throw;
    } catch (const Exception& failure) {
        text << L" " << failure.ToString();
    } catch (const std::exception& failure) {
        text << L" " << StringUtils::FromUtf8(failure.what());
    } catch (const _com_error& failure) {
        const _bstr_t description = failure.Description();
        const wchar_t* words = description; // null without error information
        text << L" Description: " << (words != nullptr ? words : L"") << L", error: " << failure.Error()
             << L", error message: " << failure.ErrorMessage();
    } catch (...) {
        text << L" LogCurrentException:Unknown exception. Last error: " << lastError;
    }
}

} // namespace

std::wstring GetLogConfigurationPath() {
    try {
        const auto folders = RegistryKey::GetLocalMachine().OpenSubKey(
            L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders");
        std::wstring data;
        folders->GetValue(L"Common AppData", data);
        return data + L"\\" + GetBrandString(BrandString::Product) + L"\\" + kConfigurationFileName;
    } catch (const Exception&) {
        // A machine without that folder: the system directory, whose separator is doubled.
        wchar_t directory[MAX_PATH] = L"";
        GetSystemDirectoryW(directory, MAX_PATH);
        return std::wstring(directory) + L"\\" + L"\\" + kConfigurationFileName;
    }
}

void StartLogSession(const std::wstring& configurationPath, HMODULE module, bool watch) {
    if (!firstStart_) {
        return;
    }
    NamedMutex mutex(MutexName_(L"StartLogSession"), true);
    const Lock lock(mutex);
    if (!firstStart_.exchange(false)) {
        return;
    }
    NameSession_(module);
    const log4cxx::File configuration(configurationPath);
    if (watch) {
        log4cxx::PropertyConfigurator::configureAndWatch(configuration, kWatchDelayMs);
    } else {
        log4cxx::PropertyConfigurator::configure(configuration);
    }
    WriteBanner_();
}

void StartLog(HMODULE module, bool watch) {
    StartLogSession(GetLogConfigurationPath(), module, watch);
}

const wchar_t* GetLogSessionName() {
    return isNamed_.load(std::memory_order_acquire) ? sessionName_ : L"";
}

void InitLogger(LoggerHolder& holder, const char* name, bool isFile) {
    if (holder.Get()) {
        return;
    }
    const std::wstring loggerName = isFile ? FileLoggerName_(name) : FunctionLoggerName_(name);
    NamedMutex mutex(MutexName_(loggerName), true);
    const Lock lock(mutex);
    if (!holder.Get()) {
        holder.Fill(log4cxx::Logger::getLogger(loggerName));
    }
}

void EndThreadLog() {
    log4cxx::NDC::remove(); // the library's thread-specific data go with its last use
}

void LogCurrentException(LoggerHolder& holder, const std::wstring& prefix, const log4cxx::spi::LocationInfo& location) {
    const DWORD lastError = GetLastError();
    std::wostringstream text;
    text << prefix;
    DescribeCurrent_(text, lastError);
    if (const log4cxx::LoggerPtr& logger = holder.Get()) {
        WriteLog(logger, log4cxx::Level::getFatal(), text.str(), location);
    }
}

} // namespace vorlek
