#include "plugin-link/WinsockInit.h"

#include <gtest/gtest.h>
#include <log4cxx/logger.h>

#include "platform/Windows.h"
#include "tests/support/ChildProcess.h"

namespace {

DWORD WINAPI Start_(void* go) {
    WaitForSingleObject(go, INFINITE);
    vorlek::WinsockInit();
    const SOCKET handle = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    const bool works = handle != INVALID_SOCKET;
    ::closesocket(handle);
    return works ? 1 : 0;
}

/// How often Winsock was started; none of it is left then.
int CountStarts_() {
    int starts = 0;
    while (WSACleanup() == 0) {
        ++starts;
    }
    return starts;
}

/// In a process that has not used sockets yet: threads that do so at the same moment. The result tells how
/// many of them had sockets, and how often Winsock was started.
std::wstring StartTogether(const std::wstring& threads) {
    log4cxx::Logger::getRootLogger(); // its run-time library starts Winsock for itself, when first used
    CountStarts_();
    const HANDLE go = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::vector<HANDLE> started(std::stoul(threads));
    for (HANDLE& thread : started) {
        thread = CreateThread(nullptr, 0, Start_, go, 0, nullptr);
    }
    SetEvent(go);
    DWORD working = 0;
    for (const HANDLE thread : started) {
        DWORD works = 0;
        WaitForSingleObject(thread, INFINITE);
        GetExitCodeThread(thread, &works);
        working += works;
        CloseHandle(thread);
    }
    CloseHandle(go);
    return std::to_wstring(working) + L" of " + threads + L", started " + std::to_wstring(CountStarts_());
}

const test_support::ChildRoleName kRole(L"StartWinsockTogether", StartTogether);

} // namespace

TEST(WinsockInit, StartsWinsockOnceForThreadsThatNeedItAtTheSameMoment) {
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(test_support::ChildProcess(L"StartWinsockTogether", L"8").Result(), L"8 of 8, started 1");
    }
}

TEST(WinsockInit, DoesNothingTheSecondTime) {
    EXPECT_EQ(test_support::ChildProcess(L"StartWinsockTogether", L"1").Result(), L"1 of 1, started 1");
    vorlek::WinsockInit();
    vorlek::WinsockInit();
    const SOCKET handle = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    EXPECT_NE(handle, INVALID_SOCKET);
    ::closesocket(handle);
}
