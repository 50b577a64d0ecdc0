#include "plugin-link/ConnectionManager.h"

#include "foundation/Border.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/Log4CxxTracer.h"
#include "foundation/Throw.h"
#include "plugin-link/Exceptions.h"
#include "plugin-link/PluginManagerClient.h"
#include "plugin-link/Vocabulary.h"

namespace vorlek::PluginUtils {
namespace {

namespace plugin = vocabulary::plugin;
namespace method = vocabulary::method;

/// What an operation says when its call fails.
struct CallWords_ {
    const wchar_t* remote; ///< logged before the agent's own account
    const wchar_t* other;  ///< logged for anything else
    const wchar_t* thrown;
};

constexpr CallWords_ kInspectWords = {L"Failed to call Inspect: ", L"Failed to call Inspect.",
                                      L"Failed to call Inspect"};
constexpr CallWords_ kBeginInspectWords = {L"Failed to call BeginInspect: ", L"Failed to call BeginInspect.",
                                           L"Failed to call BeginInspect"};
constexpr CallWords_ kHandleAppLaunchFileAccessWords = {L"Failed to call HandleAppLaunchFileAccess: ",
                                                        L"Failed to call HandleAppLaunchFileAccess.",
                                                        L"Failed to call HandleAppLaunchFileAccess"};
// "at" and "At": logs and failures are searched for these very words.
constexpr CallWords_ kProcessExitWords = {L"Failed to call ProcessExit(at QLTAgent): ",
                                          L"Failed to call ProcessExit(At QLTAgent).",
                                          L"Failed to call ProcessExit(At QLTAgent)"};
constexpr CallWords_ kGetExecutionModeWords = {L"Failed to call GetExecutionMode: ",
                                               L"Failed to call GetExecutionMode.", L"Failed to call GetExecutionMode"};

/// Makes a call: what the agent itself reports passes, all else becomes a failure of the connection.
template <class Call>
auto Translated_(const LoggerHolder& logger, const log4cxx::spi::LocationInfo& site, ThrowSite thrower,
                 const CallWords_& words, Call&& call) {
    Log4CxxTracer tracer(logger);
    if (log4cxx::Logger::isTraceEnabledFor(logger)) {
        tracer.Trace(site);
    }
    const auto report = [&](const wchar_t* phrase, const wchar_t* text) {
        border::Report(logger, log4cxx::Level::getError(), {.words = phrase}, site, text);
    };
    try {
        return call();
    } catch (const RemoteException& failure) {
        report(words.remote, failure.GetMessage().c_str());
        throw;
    } catch (...) {
        report(words.other, L"");
        Throw<PluginManagerConnectionException>(thrower, words.thrown);
    }
}

template <class Body>
auto Formatting_(ThrowSite thrower, Body&& body) {
    try {
        return body();
    } catch (...) {
        Throw<PluginManagerFormatException>(thrower, L"Failed on CInspectorMessage::GetFormattedMessage");
    }
}

std::wstring Format_(ThrowSite thrower, const CInspectorMessage& message) {
    return Formatting_(thrower, [&] { return message.GetFormattedMessage(); });
}

} // namespace

LoggerHolder CConnectionManager::logger_;

CConnectionManager::CConnectionManager() {
    InitLogger(logger_, "vorlek::PluginUtils::CConnectionManager::CConnectionManager", false);
}

CConnectionManager::~CConnectionManager() {
    LOG_DEBUG(logger_, L"CConnection manager instance destructed");
}

std::shared_ptr<InspectionDecision> CConnectionManager::Inspect(std::wstring param) const {
    return Translated_(logger_, LOG_SITE, L"vorlek::PluginUtils::CConnectionManager::Inspect", kInspectWords, [&] {
        std::wstring result;
        CallWithStringResult(plugin::kDataControlPlugin, method::kInspect, {std::move(param), false}, result);
        return std::make_shared<InspectionDecision>(result);
    });
}

// Unlike its siblings this one answers for the whole call: its callers know one failure only.
std::shared_ptr<InspectionDecision> CConnectionManager::Inspect(const CInspectorMessage& message) const {
    return Formatting_(L"vorlek::PluginUtils::CConnectionManager::Inspect",
                       [&] { return Inspect(message.GetFormattedMessage()); });
}

void CConnectionManager::BeginInspect(std::wstring param) const {
    Translated_(logger_, LOG_SITE, L"vorlek::PluginUtils::CConnectionManager::BeginInspect", kBeginInspectWords, [&] {
        CallWithoutResult(plugin::kDataControlPlugin, method::kBeginInspect, {std::move(param), false});
    });
}

void CConnectionManager::BeginInspect(const CInspectorMessage& message) const {
    BeginInspect(Format_(L"vorlek::PluginUtils::CConnectionManager::BeginInspect", message));
}

void CConnectionManager::HandleAppLaunchFileAccess(std::wstring param) const {
    Translated_(logger_, LOG_SITE, L"vorlek::PluginUtils::CConnectionManager::HandleAppLaunchFileAccess",
                kHandleAppLaunchFileAccessWords, [&] {
                    std::int32_t result = 0;
                    CallWithIntResult(plugin::kApplicationControlPlugin, method::kHandleAppLaunchFileAccess,
                                      {std::move(param), false}, result);
                });
}

void CConnectionManager::HandleAppLaunchFileAccess(const CInspectorMessage& message) const {
    HandleAppLaunchFileAccess(Format_(L"vorlek::PluginUtils::CConnectionManager::HandleAppLaunchFileAccess", message));
}

void CConnectionManager::ProcessExit(std::wstring param) const {
    Translated_(logger_, LOG_SITE, L"vorlek::PluginUtils::CConnectionManager::ProcessExit", kProcessExitWords, [&] {
        std::int32_t result = 0;
        CallWithIntResult(plugin::kApplicationControlPlugin, method::kProcessExit, {std::move(param), false}, result);
    });
}

void CConnectionManager::ProcessExit(const CInspectorMessage& message) const {
    ProcessExit(Format_(L"vorlek::PluginUtils::CConnectionManager::ProcessExit", message));
}

std::int32_t CConnectionManager::GetExecutionMode(std::wstring channel) const {
    return Translated_(
        logger_, LOG_SITE, L"vorlek::PluginUtils::CConnectionManager::GetExecutionMode", kGetExecutionModeWords, [&] {
            std::int32_t mode = -1;
            CallWithIntResult(plugin::kDataControlPlugin, method::kGetExecutionMode, {std::move(channel), false}, mode);
            return mode;
        });
}

std::shared_ptr<DataAccessChannelsMessage>
CConnectionManager::StartAppMgrIdentifyChannels(const CInspectorMessage& message) const {
    LOG_INFO(logger_, L"StartAppMgrIdentifyChannels: executing QLTAGENT command (look for after. if that get stuck, "
                      L"there will be 5 sec delay on process from mojave to TOBIAS)");
    std::wstring result;
    try {
        CallWithStringResult(plugin::kApplicationControlPlugin, method::kStartAppMgrIdentifyChannels,
                             {message.GetFormattedMessage(), false}, result);
        LOG_INFO(logger_, L"StartAppMgrIdentifyChannels: AFTER executing QLTAGENT command.result= " << result);
    } catch (const RemoteException& failure) {
        LOG_ERROR(logger_, L"Failed to call StartAppMgrIdentifyChannels: " << failure.GetMessage());
        throw;
    } catch (...) {
        LOG_ERROR(logger_, L"Failed to call StartAppMgrIdentifyChannels.");
        throw;
    }
    return std::make_shared<DataAccessChannelsMessage>(result);
}

} // namespace vorlek::PluginUtils
