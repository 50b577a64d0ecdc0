#include "tests/support/NetworkShare.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "platform/Windows.h"

namespace test_support {
namespace {

/// The bench keeps the servers of the network as folders beside its drives.
std::filesystem::path Servers_() {
    wchar_t prefix[MAX_PATH] = L"";
    if (GetEnvironmentVariableW(L"WINEPREFIX", prefix, MAX_PATH) == 0) {
        throw std::runtime_error("the bench does not tell where it keeps its drives");
    }
    return std::filesystem::path(std::wstring(L"Z:") + prefix) / L"dosdevices" / L"unc";
}

} // namespace

NetworkShare::NetworkShare() : server_(L"tests-" + std::to_wstring(GetCurrentProcessId())) {
    std::filesystem::create_directories(Servers_() / server_ / L"share");
}

NetworkShare::~NetworkShare() {
    std::error_code ignored;
    std::filesystem::remove_all(Servers_() / server_, ignored);
}

} // namespace test_support
