#pragma once
#include <string>

namespace test_support {

/// A folder that a server of the network shares. It goes with the object, whatever lies in it.
class NetworkShare {
public:
    NetworkShare();
    NetworkShare(const NetworkShare&) = delete;
    NetworkShare& operator=(const NetworkShare&) = delete;
    ~NetworkShare();

    /// "\\server\share".
    std::wstring Path() const { return L"\\\\" + server_ + L"\\share"; }

private:
    std::wstring server_;
};

} // namespace test_support
