#include "tests/support/HangGuard.h"

#include <cstdio>

namespace test_support {
namespace {

class Progress : public testing::EmptyTestEventListener {
public:
    explicit Progress(HANDLE progress) : progress_(progress) {}
    void OnTestStart(const testing::TestInfo&) override { SetEvent(progress_); }

private:
    HANDLE progress_;
};

} // namespace

HangGuard::HangGuard()
    : progress_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      finished_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      watcher_(CreateThread(nullptr, 0, Watch_, this, 0, nullptr)) {}

HangGuard::~HangGuard() {
    SetEvent(finished_);
    WaitForSingleObject(watcher_, INFINITE);
    for (HANDLE handle : {watcher_, finished_, progress_}) {
        CloseHandle(handle);
    }
}

testing::TestEventListener* HangGuard::NewListener() {
    return new Progress(progress_);
}

DWORD WINAPI HangGuard::Watch_(void* self) {
    const auto& guard = *static_cast<HangGuard*>(self);
    const HANDLE either[] = {guard.finished_, guard.progress_};
    for (;;) {
        switch (WaitForMultipleObjects(2, either, FALSE, kLimitMs)) {
        case WAIT_OBJECT_0:
            return 0;
        case WAIT_OBJECT_0 + 1:
            continue;
        default:
            break;
        }
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        std::fprintf(stderr, "hangs in %s.%s\n", test ? test->test_suite_name() : "?", test ? test->name() : "?");
        std::fflush(stderr);
        TerminateProcess(GetCurrentProcess(), 99);
    }
}

} // namespace test_support
