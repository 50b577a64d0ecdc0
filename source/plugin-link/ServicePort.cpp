#include "plugin-link/ServicePort.h"

#include <cstring>

namespace vorlek {
namespace {

/// Everyone may read, the system and the section's creator may write.
constexpr std::uint32_t kReadableByAll = 2;

std::wstring SectionName_(const std::wstring& serviceName) {
    return L"Global\\59EB6F8B-7F42-4CB9-B741-ED434F426458_" + serviceName;
}

} // namespace

ServicePort::ServicePort(const std::wstring& serviceName, std::uint16_t port)
    : section_(SectionName_(serviceName), sizeof port, kReadableByAll, false) {
    std::memcpy(section_.GetData(), &port, sizeof port);
}

std::uint16_t ServicePort::Read(const std::wstring& serviceName) {
    const SharedMemory section(SectionName_(serviceName), true);
    std::uint16_t port = 0;
    std::memcpy(&port, section.GetData(), sizeof port);
    return port;
}

} // namespace vorlek
