#include "plugin-link/PluginManagerClient.h"

#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/Throw.h"
#include "plugin-link/Exceptions.h"

namespace vorlek {
namespace {

constexpr wchar_t kServiceName[] = L"QLTPluginService";
constexpr wchar_t kPlugin[] = L"Plugin";
constexpr wchar_t kMethod[] = L"Method";
constexpr wchar_t kParam[] = L"Param";
constexpr wchar_t kResult[] = L"Result";
constexpr wchar_t kError[] = L"Error";

} // namespace

LoggerHolder PluginManagerClient::logger_;

// The connection's port is read before anything else, so a service that is down is reported before an
// empty argument is.
PluginManagerClient::PluginManagerClient(const std::wstring& plugin, const std::wstring& method)
    : client_(kServiceName), request_(MessageType::Request) {
    InitLogger(logger_, "vorlek::PluginManagerClient::PluginManagerClient", false);
    if (plugin.empty() || method.empty()) {
        Throw(L"vorlek::PluginManagerClient::PluginManagerClient", L"Invalid parameters!");
    }
    client_.Connect();
    request_.Set(kPlugin, plugin, false);
    request_.Set(kMethod, method, false);
}

void PluginManagerClient::SetParam(CallParam param) {
    request_.Set(kParam, std::move(param.value), param.hidden);
}

void PluginManagerClient::SendRequest() {
    client_.Send(request_);
}

std::unique_ptr<Message> PluginManagerClient::ReceiveResponse() {
    constexpr ThrowSite site = L"vorlek::PluginManagerClient::ReceiveResponse";
    std::vector<std::unique_ptr<Message>> messages;
    client_.Receive(messages);
    if (messages.empty()) {
        Throw(site, L"Couldn't receive any response messages!");
    }
    if (messages.size() > 1) {
        LOG_WARN(logger_, L"Received more than a single message! Only single message is currently supported!");
    }
    std::unique_ptr<Message> response = std::move(messages.front());
    switch (response->GetMessageType()) {
    case MessageType::Response:
        if (!response->HasValue(kResult)) {
            Throw(site, kResult, L" doesn't exist!");
        }
        return response;
    case MessageType::Error: {
        if (!response->HasValue(kError)) {
            Throw(site, kError, L" doesn't exist!");
        }
        std::wstring words;
        response->Get(kError, words);
        Throw<RemoteException>(site, words);
    }
    default:
        Throw(site, L"Unexpected response type: ", static_cast<std::uint32_t>(response->GetMessageType()));
    }
}

void PluginManagerClient::GetResult(std::wstring& result) {
    ReceiveResponse()->Get(kResult, result);
}

void PluginManagerClient::GetResult(std::int32_t& result) {
    ReceiveResponse()->Get(kResult, result);
}

void CallWithStringResult(const std::wstring& plugin, const std::wstring& method, CallParam param,
                          std::wstring& result) {
    PluginManagerClient client(plugin, method);
    client.SetParam(std::move(param));
    client.SendRequest();
    client.GetResult(result);
}

void CallWithIntResult(const std::wstring& plugin, const std::wstring& method, CallParam param, std::int32_t& result) {
    PluginManagerClient client(plugin, method);
    client.SetParam(std::move(param));
    client.SendRequest();
    client.GetResult(result);
}

void CallWithoutResult(const std::wstring& plugin, const std::wstring& method, CallParam param) {
    PluginManagerClient client(plugin, method);
    client.SetParam(std::move(param));
    client.SendRequest();
}

} // namespace vorlek
