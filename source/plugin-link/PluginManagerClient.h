#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/LoggerHolder.h"
#include "plugin-link/Message.h"
#include "plugin-link/MessageClient.h"

namespace vorlek {

/// The argument of a call.
struct CallParam {
    std::wstring value;
    bool hidden = false; ///< masked in logs
};

/// One call of one method of one plug-in of the agent, on a connection of its own: construct,
/// SetParam, SendRequest, then one of GetResult, or nothing if the answer is of no interest.
class PluginManagerClient {
public:
    /// Connects. Throws Exception if the service cannot be reached, or for an empty argument.
    PluginManagerClient(const std::wstring& plugin, const std::wstring& method);
    PluginManagerClient(const PluginManagerClient&) = delete;
    PluginManagerClient& operator=(const PluginManagerClient&) = delete;
    virtual ~PluginManagerClient() = default;

    void SetParam(CallParam param);
    void SendRequest();

    /// Blocks until the answer is there, without a time limit. Throws RemoteException with the words of
    /// the service if it reports a failure, Exception for anything that is no answer.
    std::unique_ptr<Message> ReceiveResponse();
    /// The same, and reads the result. Throws ArgumentException for a result of another type.
    void GetResult(std::wstring& result);
    void GetResult(std::int32_t& result);

private:
    static LoggerHolder logger_;

    MessageClient client_;
    Message request_;
};

/// A whole call. Each throws what the steps of PluginManagerClient throw.
void CallWithStringResult(const std::wstring& plugin, const std::wstring& method, CallParam param,
                          std::wstring& result);
void CallWithIntResult(const std::wstring& plugin, const std::wstring& method, CallParam param, std::int32_t& result);
/// Returns once the request is sent: what the service answers is lost.
void CallWithoutResult(const std::wstring& plugin, const std::wstring& method, CallParam param);

} // namespace vorlek
