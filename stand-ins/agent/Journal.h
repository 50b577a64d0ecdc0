#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Windows.h"
#include "stand-ins/agent/Agent.h"
#include "stand-ins/agent/Monitor.h"

namespace stand_ins::agent {

/// What has come to an agent and what became of it: for tests to look at and wait for, in numbers, and, in a file, a
/// line for each request.
class Journal {
public:
    /// The lines go to "requests.txt" in the folder; empty: nowhere. Throws std::runtime_error if it cannot be made.
    Journal(const std::wstring& folder, bool keepsRequests);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    void AddConnection();

    /// The client ended, or was ended, after so many bytes of a request.
    void AddBroken(std::size_t bytes);

    /// A request is there. Returns its number, from 1.
    std::uint64_t AddRequest(const Request& request, bool isMalformed);

    /// A request has been dealt with. `outcome` says how.
    void AddOutcome(std::uint64_t number, const Request& request, std::wstring_view outcome);

    Served Numbers() const;
    std::vector<Request> Requests() const;
    bool WaitForRequests(std::size_t count, std::uint32_t milliseconds) const;
    bool WaitForInspections(std::size_t count, std::uint32_t milliseconds) const;
    void Clear();

private:
    void Write_(const std::wstring& line);

    mutable Monitor monitor_;
    HANDLE file_ = INVALID_HANDLE_VALUE;
    bool keepsRequests_;
    Served served_;
    std::vector<Request> requests_;
    std::size_t requestsSinceClear_ = 0;
    std::size_t inspectionsSinceClear_ = 0;
};

} // namespace stand_ins::agent
