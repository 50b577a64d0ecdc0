#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/LoggerHolder.h"
#include "plugin-link/CInspectorMessage.h"
#include "plugin-link/DataAccessChannelsMessage.h"
#include "plugin-link/InspectionDecision.h"

namespace vorlek::PluginUtils {

/// The agent's operations, each one call on a connection of its own, from any thread. A call blocks its
/// thread until the agent answers, without a time limit, and is never repeated. param: a formatted
/// inspector message. With a text, each throws RemoteException for a failure that the agent reports
/// and PluginManagerConnectionException for any other; with a CInspectorMessage also
/// PluginManagerFormatException if it cannot be formatted.
class CConnectionManager {
public:
    CConnectionManager();
    virtual ~CConnectionManager();

    std::shared_ptr<InspectionDecision> Inspect(std::wstring param) const;
    /// Throws PluginManagerFormatException for every failure.
    std::shared_ptr<InspectionDecision> Inspect(const CInspectorMessage& message) const;

    /// Returns once the request is sent.
    void BeginInspect(std::wstring param) const;
    void BeginInspect(const CInspectorMessage& message) const;

    void HandleAppLaunchFileAccess(std::wstring param) const;
    void HandleAppLaunchFileAccess(const CInspectorMessage& message) const;

    void ProcessExit(std::wstring param) const;
    void ProcessExit(const CInspectorMessage& message) const;

    /// The mode of a channel, one of vocabulary::channel; 0 is disabled.
    std::int32_t GetExecutionMode(std::wstring channel) const;

    /// Which channels are in force for an application. Alone among the operations it translates nothing:
    /// throws what the call throws, and DataAccessChannelsMessageFormatException for an answer that cannot be read.
    std::shared_ptr<DataAccessChannelsMessage> StartAppMgrIdentifyChannels(const CInspectorMessage& message) const;

private:
    static LoggerHolder logger_;
};

} // namespace vorlek::PluginUtils
