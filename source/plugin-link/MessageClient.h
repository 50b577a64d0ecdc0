#pragma once
#include <memory>
#include <string>
#include <vector>

#include "foundation/LoggerHolder.h"
#include "plugin-link/Message.h"
#include "plugin-link/TCPNamedClient.h"

namespace vorlek {

/// Exchanges messages with a named service on this machine.
class MessageClient : public TCPNamedClient {
public:
    /// Throws Exception if the service has published no port.
    explicit MessageClient(const std::wstring& serviceName);

    void OnConnect() override;

    /// As the operations of MessageCommon, on this connection.
    void Send(const Message& message) const;
    void Receive(std::vector<std::unique_ptr<Message>>& messages) const;

private:
    static LoggerHolder logger_;

    std::wstring name_;
};

} // namespace vorlek
