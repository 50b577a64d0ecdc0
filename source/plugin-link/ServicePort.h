#pragma once
#include <cstdint>
#include <string>

#include "foundation/SharedMemory.h"

namespace vorlek {

/// The port of a named service on this machine, in a named section of two bytes: 16 bits,
/// little-endian. The section lives for as long as the service holds this object.
class ServicePort {
public:
    /// Publishes the port. Throws Exception if a service of that name has published one already.
    ServicePort(const std::wstring& serviceName, std::uint16_t port);

    /// The published port. Throws Exception if there is none.
    static std::uint16_t Read(const std::wstring& serviceName);

private:
    SharedMemory section_;
};

} // namespace vorlek
