#pragma once
#include <string>

#include "plugin-link/TCPClient.h"

namespace vorlek {

/// A connection to a service that published its port. A stale port shows itself in Connect only.
class TCPNamedClient : public TCPClient {
public:
    /// Reads the port, once. Throws Exception if the service has published none.
    TCPNamedClient(const std::wstring& host, const std::wstring& serviceName);
};

} // namespace vorlek
