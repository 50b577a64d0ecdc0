#pragma once
#include <cstdint>
#include <string>

#include "platform/Windows.h"

namespace stand_ins::agent {

/// The named section of two bytes in which clients find a service's port, for as long as the object lives.
class PublishedPort {
public:
    /// Throws std::runtime_error if the service is published already or the section cannot be made.
    PublishedPort(const std::wstring& service, std::uint16_t port);
    ~PublishedPort();
    PublishedPort(const PublishedPort&) = delete;
    PublishedPort& operator=(const PublishedPort&) = delete;

    void Set(std::uint16_t port);

private:
    HANDLE section_ = nullptr;
    unsigned char* view_ = nullptr;
};

} // namespace stand_ins::agent
