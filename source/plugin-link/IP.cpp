#include "plugin-link/IP.h"

#include <cstring>

#include "foundation/Throw.h"
#include "plugin-link/WinsockInit.h"

namespace vorlek {
namespace {

constexpr DWORD kAddressLength = 260;

/// What a private copy consists of: the entry, and the address that it points to.
struct InfoCopy_ {
    ADDRINFOW info;
    SOCKADDR_STORAGE address;
};

} // namespace

void AddressInfoDeleter::operator()(ADDRINFOW* info) const {
    if (ownsInfo) {
        delete reinterpret_cast<InfoCopy_*>(info);
    } else {
        FreeAddrInfoW(info);
    }
}

IP::IP(const std::wstring& host, std::uint16_t port) : IP(host, port == 0 ? std::wstring() : std::to_wstring(port)) {}

IP::IP(const std::wstring& host, const std::wstring& service) : host_(host), service_(service) {
    Init();
}

IP::IP(const sockaddr* address, int length) {
    if (address == nullptr || length == 0) {
        Throw(L"vorlek::IP::IP", L"Invalid parameter!");
    }
    WinsockInit();
    const std::wstring text = AddressToString(address, length);
    const std::size_t colon = text.rfind(L':');
    if (colon == std::wstring::npos) {
        Throw(L"vorlek::IP::IP", L"Invalid address: \"", text, L"\"!");
    }
    host_ = text.substr(0, colon);
    service_ = text.substr(colon + 1);
    Init();
}

IP::IP(const IP& other)
    : host_(other.host_), service_(other.service_), address_(other.address_), info_(Copy_(other.info_.get())) {}

IP& IP::operator=(const IP& other) {
    if (this != &other) {
        host_ = other.host_;
        service_ = other.service_;
        address_ = other.address_;
        info_ = Copy_(other.info_.get());
    }
    return *this;
}

void IP::Init() {
    WinsockInit();
    info_.reset();
    ADDRINFOW hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    ADDRINFOW* list = nullptr;
    const int error = GetAddrInfoW(host_.c_str(), service_.empty() ? nullptr : service_.c_str(), &hints, &list);
    if (error != 0) {
        Throw(L"vorlek::IP::Init", L"GetAddrInfo failed with: ", error);
    }
    info_ = Info_(list, AddressInfoDeleter{.ownsInfo = false});
    address_ = AddressToString(list->ai_addr, static_cast<int>(list->ai_addrlen));
}

std::wstring IP::AddressToString(const sockaddr* address, int length) {
    wchar_t text[kAddressLength] = {};
    DWORD size = kAddressLength;
    // The system asks for a writable address and does not write to it.
    if (WSAAddressToStringW(const_cast<sockaddr*>(address), static_cast<DWORD>(length), nullptr, text, &size) != 0) {
        Throw(L"vorlek::IP::AddressToString", L"WSAAddressToString failed with: ", WSAGetLastError());
    }
    return text;
}

IP::Info_ IP::Copy_(const ADDRINFOW* info) {
    if (info == nullptr) {
        return {};
    }
    auto copy = std::make_unique<InfoCopy_>();
    copy->info = *info;
    copy->info.ai_canonname = nullptr;
    copy->info.ai_next = nullptr;
    copy->info.ai_addr = reinterpret_cast<sockaddr*>(&copy->address);
    std::memcpy(&copy->address, info->ai_addr, info->ai_addrlen);
    return Info_(&copy.release()->info, AddressInfoDeleter{.ownsInfo = true});
}

} // namespace vorlek
