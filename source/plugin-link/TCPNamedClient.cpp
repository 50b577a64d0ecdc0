#include "plugin-link/TCPNamedClient.h"

#include "plugin-link/ServicePort.h"

namespace vorlek {

TCPNamedClient::TCPNamedClient(const std::wstring& host, const std::wstring& serviceName)
    : TCPClient(host, ServicePort::Read(serviceName)) {}

} // namespace vorlek
