#include "fuzz/driver/WorkerProcess.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include <psapi.h>

#include "fuzz/driver/Worker.h"

namespace fuzz {
namespace {

constexpr const char* kOption = "--work";
constexpr DWORD kPollMs = 50;
constexpr DWORD kStartMs = 60000;

[[noreturn]] void Fail_(const std::string& what) {
    throw std::runtime_error(what + ": error " + std::to_string(GetLastError()));
}

/// The processes of a job end with it, and the job with this process, however that ends.
HANDLE Job_() {
    static const vorlek::FileHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job.Get();
}

/// What the code under test prints goes nowhere.
HANDLE Start_(HANDLE board, const Target& target) {
    wchar_t program[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    wchar_t line[MAX_PATH + 100];
    std::swprintf(line, std::size(line), L"\"%ls\" %hs %hs %llu", program, kOption, target.name,
                  reinterpret_cast<unsigned long long>(board));
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    const vorlek::FileHandle nothing(CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                                 OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = nothing.Get();
    PROCESS_INFORMATION started = {};
    BOOL isStarted = FALSE;
    // Wine on a busy machine now and then fails to bring a process up, with this error and no other.
    for (int attempt = 0; attempt < 3 && !isStarted; ++attempt) {
        isStarted = CreateProcessW(program, line, nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr, nullptr, &startup,
                                   &started);
        if (!isStarted && GetLastError() != ERROR_INTERNAL_ERROR) {
            break;
        }
    }
    if (!isStarted) {
        Fail_("no worker can be started");
    }
    AssignProcessToJobObject(Job_(), started.hProcess);
    ResumeThread(started.hThread);
    CloseHandle(started.hThread);
    return started.hProcess;
}

std::size_t MemoryOf_(HANDLE process) {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(process, &counters, sizeof(counters));
    return counters.WorkingSetSize;
}

std::string End_(HANDLE process, const char* fault) {
    TerminateProcess(process, kFault);
    WaitForSingleObject(process, INFINITE);
    return fault;
}

} // namespace

SharedBoard::SharedBoard() {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    section_ = CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, 0, sizeof(Board), nullptr);
    Map_();
}

SharedBoard::SharedBoard(HANDLE inherited) : section_(inherited) {
    Map_();
}

void SharedBoard::Map_() {
    view_ = static_cast<BYTE*>(MapViewOfFile(section_.Get(), FILE_MAP_WRITE, 0, 0, sizeof(Board)));
    if (!view_.IsValid()) {
        Fail_("there is no board");
    }
}

std::string RunWorker(const SharedBoard& board, const Target& target, ULONGLONG deadline, DWORD longestRun) {
    board->stop = false;
    board->heartbeat = 0;
    board->fault[0] = board->detail[0] = '\0';
    const vorlek::FileHandle process(Start_(board.Handle(), target));
    std::uint64_t heartbeat = 0;
    ULONGLONG since = GetTickCount64();
    while (WaitForSingleObject(process.Get(), kPollMs) == WAIT_TIMEOUT) {
        const ULONGLONG now = GetTickCount64();
        if (now >= deadline) {
            board->stop = true;
        }
        if (board->heartbeat != heartbeat) {
            heartbeat = board->heartbeat;
            since = now;
        } else if (now - since > (heartbeat == 0 ? kStartMs : longestRun)) {
            return End_(process.Get(), kHang);
        }
        if (MemoryOf_(process.Get()) > target.mostMemory) {
            return End_(process.Get(), "growth");
        }
    }
    DWORD status = 0;
    GetExitCodeProcess(process.Get(), &status);
    if (status == kDone || board->fault[0] != '\0') {
        return board->fault;
    }
    char text[60];
    std::snprintf(text, sizeof(text), "ended with status 0x%lx", status);
    return text;
}

bool PlayWorker(int argc, char** argv, int& status) {
    if (argc != 4 || std::strcmp(argv[1], kOption) != 0) {
        return false;
    }
    const SharedBoard board(reinterpret_cast<HANDLE>(std::stoull(argv[3])));
    const auto target = std::ranges::find(Targets(), std::string_view(argv[2]), &Target::name);
    status = Work(*board, *target);
    return true;
}

} // namespace fuzz
