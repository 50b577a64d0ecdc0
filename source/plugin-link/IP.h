#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "platform/Windows.h"

namespace vorlek {

/// Frees a list of the system's, or a private copy of one entry.
struct AddressInfoDeleter {
    bool ownsInfo = false; ///< a private copy
    void operator()(ADDRINFOW* info) const;
};

/// A host and a service (a port in decimal), resolved. Only the first address found is used.
class IP {
public:
    /// host: name or numeric address. port: 0 means none. Throws Exception if they do not resolve.
    IP(const std::wstring& host, std::uint16_t port);
    /// service: empty means none.
    IP(const std::wstring& host, const std::wstring& service);
    /// length: of the address in bytes. Throws Exception also for a null or one without a port.
    IP(const sockaddr* address, int length);
    /// A copy holds an address block of its own.
    IP(const IP& other);
    IP& operator=(const IP& other);
    virtual ~IP() = default;

    /// Frees what was resolved before and resolves host and service again. Throws Exception if they do not resolve.
    void Init();

    /// Not after an Init that failed.
    const ADDRINFOW& GetInfo() const { return *info_; }
    /// Text of the first resolved address.
    const std::wstring& GetAddress() const { return address_; }
    const std::wstring& GetHost() const { return host_; }
    const std::wstring& GetService() const { return service_; }

    /// length: of the address in bytes. Throws Exception for no valid address.
    static std::wstring AddressToString(const sockaddr* address, int length);

private:
    using Info_ = std::unique_ptr<ADDRINFOW, AddressInfoDeleter>;
    static Info_ Copy_(const ADDRINFOW* info);

    std::wstring host_;
    std::wstring service_;
    std::wstring address_;
    Info_ info_;
};

} // namespace vorlek
