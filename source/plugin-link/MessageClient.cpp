#include "plugin-link/MessageClient.h"

#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "plugin-link/MessageCommon.h"

namespace vorlek {

LoggerHolder MessageClient::logger_;

MessageClient::MessageClient(const std::wstring& serviceName)
    : TCPNamedClient(L"127.0.0.1", serviceName), name_(serviceName) {
    InitLogger(logger_, "vorlek::MessageClient::MessageClient", false);
}

void MessageClient::OnConnect() {
    LOG_TRACE(logger_, L"Connected to: " << name_);
}

void MessageClient::Send(const Message& message) const {
    MessageCommon::Send(GetSocket(), message);
}

void MessageClient::Receive(std::vector<std::unique_ptr<Message>>& messages) const {
    MessageCommon::Receive(GetSocket(), messages);
}

} // namespace vorlek
