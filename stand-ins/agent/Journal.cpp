#include "stand-ins/agent/Journal.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "stand-ins/agent/Text.h"

namespace stand_ins {

using namespace agent;

namespace {

/// Not every name that a client may make up is counted by itself.
constexpr std::wstring_view kMethods[] = {
    L"GetExecutionMode",          L"Inspect",    L"BeginInspect", L"StartAppMgrIdentifyChannels",
    L"HandleAppLaunchFileAccess", L"ProcessExit"};

std::wstring Counted_(std::uint64_t count, const wchar_t* what) {
    return std::to_wstring(count) + L" " + what + (count == 1 ? L"" : L"s");
}

} // namespace

std::wstring Served::ToText() const {
    std::wstring text = L"served " + Counted_(requests, L"request") + L" on " + Counted_(connections, L"connection");
    const wchar_t* before = L": ";
    for (const auto& [method, count] : methods) {
        text += before + std::to_wstring(count) + L" " + method;
        before = L", ";
    }
    if (malformed != 0) {
        text += before + std::to_wstring(malformed) + L" malformed";
    }
    return broken == 0 ? text : text + L"; " + Counted_(broken, L"request") + L" broken off";
}

namespace agent {

Journal::Journal(const std::wstring& folder, bool keepsRequests) : keepsRequests_(keepsRequests) {
    if (folder.empty()) {
        return;
    }
    MakeFolder(folder);
    const std::wstring path = folder + L"\\requests.txt";
    file_ = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                        nullptr);
    if (file_ == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("Cannot write \"" + ToUtf8(path) + "\": error " + std::to_string(GetLastError()));
    }
}

Journal::~Journal() {
    if (file_ != INVALID_HANDLE_VALUE) {
        CloseHandle(file_);
    }
}

void Journal::AddConnection() {
    const Monitor::Hold hold(monitor_);
    ++served_.connections;
}

void Journal::AddBroken(std::size_t bytes) {
    const Monitor::Hold hold(monitor_);
    ++served_.broken;
    Write_(L"-: a request broken off after " + Counted_(bytes, L"byte"));
}

std::uint64_t Journal::AddRequest(const Request& request, bool isMalformed) {
    Monitor::Hold hold(monitor_);
    ++served_.requests;
    if (isMalformed) {
        ++served_.malformed;
    } else {
        const bool isKnown = std::ranges::find(kMethods, request.method) != std::end(kMethods);
        ++served_.methods[isKnown ? request.method : L"unknown"];
    }
    if (keepsRequests_) {
        requests_.push_back(request);
    }
    ++requestsSinceClear_;
    hold.Changed();
    return served_.requests;
}

void Journal::AddOutcome(std::uint64_t number, const Request& request, std::wstring_view outcome) {
    Monitor::Hold hold(monitor_);
    const std::wstring call = request.plugin + L"." + request.method;
    Write_(std::to_wstring(number) + L": " + Counted_(request.raw.size(), L"byte") + L" from process " +
           std::to_wstring(request.pid) + L", " + OneLine(call) + L": " + std::wstring(outcome));
    inspectionsSinceClear_ += request.method == L"Inspect" ? 1 : 0;
    hold.Changed();
}

Served Journal::Numbers() const {
    const Monitor::Hold hold(monitor_);
    return served_;
}

std::vector<Request> Journal::Requests() const {
    const Monitor::Hold hold(monitor_);
    return requests_;
}

bool Journal::WaitForRequests(std::size_t count, std::uint32_t milliseconds) const {
    Monitor::Hold hold(monitor_);
    return hold.Await([&] { return requestsSinceClear_ >= count; }, milliseconds);
}

bool Journal::WaitForInspections(std::size_t count, std::uint32_t milliseconds) const {
    Monitor::Hold hold(monitor_);
    return hold.Await([&] { return inspectionsSinceClear_ >= count; }, milliseconds);
}

void Journal::Clear() {
    const Monitor::Hold hold(monitor_);
    requests_.clear();
    requestsSinceClear_ = 0;
    inspectionsSinceClear_ = 0;
}

/// While the monitor is held. A line that the disk does not take is not worth a request.
void Journal::Write_(const std::wstring& line) {
    if (file_ != INVALID_HANDLE_VALUE) {
        const std::string bytes = ToUtf8(line) + "\n";
        DWORD written = 0;
        WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    }
}

} // namespace agent
} // namespace stand_ins
