#include "plugin-link/WinsockInit.h"

#include <atomic>
#include <memory>
#include <sstream>

#include "foundation/Lock.h"
#include "foundation/NamedMutex.h"
#include "plugin-link/WSAInit.h"

namespace vorlek {
namespace {

std::atomic<bool> started_ = false;
std::shared_ptr<WSAInit> winsock_;

/// Private to one loaded copy of this code: neither another process nor another image waits for it.
std::wstring MutexName_() {
    std::wostringstream name;
    name << L"F7BD7E82-4087-48E8-9DB3-D9DCEFD7F3E7-" << static_cast<const void*>(&started_);
    return std::move(name).str();
}

} // namespace

void WinsockInit() {
    if (started_) {
        return;
    }
    NamedMutex mutex(MutexName_(), false);
    const Lock lock(mutex);
    if (!started_) {
        winsock_ = std::make_shared<WSAInit>();
        started_ = true;
    }
}

} // namespace vorlek
