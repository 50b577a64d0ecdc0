#include "tests/support/Program.h"

#include <stdexcept>

#include "tests/support/Offspring.h"

namespace test_support {
namespace {

constexpr DWORD kHangMs = 60000;

/// As CommandLineToArgvW reads it: backslashes are doubled where a quote follows them.
void AppendQuoted(std::wstring& line, const std::wstring& argument) {
    line += line.empty() ? L"\"" : L" \"";
    std::size_t backslashes = 0;
    for (const wchar_t character : argument) {
        if (character == L'\\') {
            ++backslashes;
        } else {
            line.append(character == L'"' ? backslashes + 1 : 0, L'\\');
            backslashes = 0;
        }
        line += character;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

} // namespace

Program::Program(const std::filesystem::path& executable, const std::vector<std::wstring>& arguments,
                 std::filesystem::path output)
    : output_(std::move(output)) {
    std::wstring line;
    AppendQuoted(line, executable.wstring());
    for (const std::wstring& argument : arguments) {
        AppendQuoted(line, argument);
    }
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    vorlek::FileHandle file;
    file = CreateFileW(output_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = file.Get();
    PROCESS_INFORMATION information = {};
    BOOL started = FALSE;
    // Wine on a busy machine now and then fails to bring a process up, with this error and no other.
    for (int attempt = 0; attempt < 3 && !started; ++attempt) {
        started = CreateProcessW(executable.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                                 &information);
        if (!started && GetLastError() != ERROR_INTERNAL_ERROR) {
            break;
        }
    }
    if (!started) {
        throw std::runtime_error("cannot start " + executable.string() + ": " + std::to_string(GetLastError()));
    }
    CloseHandle(information.hThread);
    process_ = information.hProcess;
    id_ = information.dwProcessId;
    EndWithThisProcess(Handle());
}

Program::~Program() {
    Terminate();
}

bool Program::EndsWithin(DWORD milliseconds) const {
    return WaitForSingleObject(Handle(), milliseconds) == WAIT_OBJECT_0;
}

DWORD Program::Wait() const {
    if (!EndsWithin(kHangMs)) {
        throw std::runtime_error("hangs; its output: " + Output());
    }
    DWORD status = 0;
    GetExitCodeProcess(Handle(), &status);
    return status;
}

void Program::Terminate() {
    if (!EndsWithin(0)) {
        TerminateProcess(Handle(), 99);
        EndsWithin(kHangMs);
    }
}

std::string Program::Output() const {
    return ReadAll(output_);
}

std::string ReadAll(const std::filesystem::path& path) {
    // Whoever writes the file may replace it meanwhile; a stream of the library would stand in his way.
    vorlek::FileHandle file;
    file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    std::string text;
    char chunk[4096];
    for (DWORD size = 0; ReadFile(file.Get(), chunk, sizeof(chunk), &size, nullptr) && size != 0;) {
        text.append(chunk, size);
    }
    return text;
}

} // namespace test_support
