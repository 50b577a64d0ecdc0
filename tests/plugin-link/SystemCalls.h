#pragma once
#include <functional>
#include <string>
#include <vector>

#include "platform/Windows.h"

namespace plugin_link_tests {

/// Watches the calling thread's Winsock calls, and lets chosen ones fail, for as long as it lives. Calls of
/// other threads go straight to the system.
class SystemCalls {
public:
    SystemCalls();
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    /// The names of the calls so far, in order.
    const std::vector<std::string>& Names() const { return names_; }
    /// Of one call.
    std::size_t Count(const std::string& name) const;

    /// From now on the call fails with the Winsock error, without reaching the system. error: what
    /// WSAGetLastError tells; for WSAStartup and GetAddrInfoW the result itself.
    void Fail(const std::string& name, int error);
    /// From now on select answers with this, without reaching the system.
    void AnswerSelect(int result) {
        selectResult_ = result;
        hasSelectResult_ = true;
    }

    /// What the latest select was given.
    struct Selection {
        bool read = false;
        bool write = false;
        bool exception = false;
        bool hasLimit = false;
        timeval limit{};
        fd_set chosen{};
    };
    Selection selection;

    /// For the wrapped calls: notes the name and returns the error to fail with, or 0.
    int Enter_(const std::string& name);
    bool HasSelectResult_() const { return hasSelectResult_; }
    int SelectResult_() const { return selectResult_; }
    /// The calling thread's watcher, or null.
    static SystemCalls* Current_();

private:
    std::vector<std::string> names_;
    std::vector<std::pair<std::string, int>> failures_;
    int selectResult_ = 0;
    bool hasSelectResult_ = false;
};

} // namespace plugin_link_tests
