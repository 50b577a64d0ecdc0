#include "tests/support/Threads.h"

#include <vector>

#include "platform/Windows.h"

namespace test_support {
namespace {

struct Start {
    const std::function<void(int)>* body;
    int number;
};

DWORD WINAPI Run_(void* start) {
    const auto& [body, number] = *static_cast<Start*>(start);
    (*body)(number);
    return 0;
}

} // namespace

void RunThreads(int count, const std::function<void(int)>& body) {
    std::vector<Start> starts;
    for (int number = 0; number < count; ++number) {
        starts.push_back({&body, number});
    }
    std::vector<HANDLE> threads;
    for (Start& start : starts) {
        threads.push_back(CreateThread(nullptr, 0, Run_, &start, 0, nullptr));
    }
    for (const HANDLE thread : threads) {
        WaitForSingleObject(thread, INFINITE);
        CloseHandle(thread);
    }
}

} // namespace test_support
