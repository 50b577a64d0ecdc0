// agent.exe as a process of its own.
#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/Windows.h"
#include "stand-ins/agent/Text.h"
#include "tests/stand-ins/agent_client.h"
#include "tests/support/Offspring.h"

using namespace agent_tests;

namespace {

/// A run of agent.exe with its output in files.
class Program_ {
public:
    Program_(const OwnFolder& folder, const std::wstring& arguments)
        : output_(folder.Path() + L"\\" + stand_ins::agent::NewGuid() + L".out") {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        const HANDLE file = CreateFileW(output_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = file;
        start.hStdError = file;
        PROCESS_INFORMATION process{};
        std::wstring command = L"\"" AGENT_PROGRAM L"\" " + arguments;
        BOOL isStarted = FALSE;
        // Wine on a busy machine now and then fails to bring a process up, with this error and no other.
        for (int attempt = 0; attempt < 3 && !isStarted; ++attempt) {
            isStarted = CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                                       nullptr, &start, &process);
            if (!isStarted && GetLastError() != ERROR_INTERNAL_ERROR) {
                break;
            }
        }
        const DWORD error = GetLastError();
        CloseHandle(file);
        if (!isStarted) {
            throw std::runtime_error("agent.exe does not start: error " + std::to_string(error));
        }
        CloseHandle(process.hThread);
        process_ = process.hProcess;
        test_support::EndWithThisProcess(process_);
    }

    ~Program_() {
        TerminateProcess(process_, 99);
        WaitForSingleObject(process_, INFINITE);
        CloseHandle(process_);
    }

    Program_(const Program_&) = delete;
    Program_& operator=(const Program_&) = delete;

    DWORD Status() const {
        DWORD status = 0;
        WaitForSingleObject(process_, 30000);
        GetExitCodeProcess(process_, &status);
        return status;
    }

    bool IsRunning() const { return WaitForSingleObject(process_, 0) == WAIT_TIMEOUT; }

    /// All that it wrote; line ends are line feeds.
    std::wstring Output() const {
        const HANDLE file = CreateFileW(output_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        std::string bytes(65536, '\0');
        DWORD read = 0;
        ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
        CloseHandle(file);
        return stand_ins::agent::FromUtf8(bytes.substr(0, read));
    }

    /// Waits until the file of --ready-file is there.
    static void AwaitFile(const OwnFolder& folder, const std::wstring& name) {
        const HANDLE change = FindFirstChangeNotificationW(folder.Path().c_str(), FALSE,
                                                           FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE);
        const std::wstring path = folder.Path() + L"\\" + name;
        for (int i = 0; i < 300 && GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES; ++i) {
            WaitForSingleObject(change, 100);
            FindNextChangeNotification(change);
        }
        FindCloseChangeNotification(change);
    }

private:
    std::wstring output_;
    HANDLE process_;
};

class AgentProgram : public testing::Test {
protected:
    std::wstring Listening_() const {
        return L"listening on 127.0.0.1:" + std::to_wstring(PublishedPortOf(service_)) + L" as " + service_ + L"\n";
    }

    const std::wstring service_ = OwnService();
    const OwnFolder folder_;
    const std::wstring common_ = L"--service " + service_ + L" --ready-file \"" + folder_.Path() +
                                 L"\\ready\" --work \"" + folder_.Path() + L"\" ";
};

} // namespace

TEST_F(AgentProgram, ListensUntilItIsToldToStop) {
    const Program_ program(folder_, common_);
    Program_::AwaitFile(folder_, L"ready");
    ASSERT_NE(PublishedPortOf(service_), 0);
    EXPECT_EQ(program.Output(), Listening_());
    EXPECT_EQ(Call(PublishedPortOf(service_), L"DataControlPlugin", L"GetExecutionMode", L"Email"), L"Response int: 1");
    EXPECT_EQ(Program_(folder_, L"--stop --service " + service_).Status(), 0u);
    EXPECT_FALSE(program.IsRunning() && PublishedPortOf(service_) != 0);
    EXPECT_EQ(program.Status(), 0u);
}

TEST_F(AgentProgram, AnswersByItsPolicyAndEndsAfterOneInspection) {
    const std::wstring policy = folder_.Write(
        L"policy.json", R"({"rules": [{"name": "plans", "match": {"subject": "plans"}, "then": {"block": true}}]})");
    const Program_ program(folder_, common_ + L"--once --policy \"" + policy + L"\"");
    Program_::AwaitFile(folder_, L"ready");
    const std::wstring listening = Listening_();
    EXPECT_EQ(Call(PublishedPortOf(service_), L"DataControlPlugin", L"Inspect", MailDocument(L"Plans", L"")),
              L"Response string: <decision result=\"2\" />");
    EXPECT_EQ(program.Status(), 0u);
    EXPECT_EQ(program.Output(), listening + L"Email \"Plans\": blocked (rule \"plans\")\n"
                                            L"served 1 request on 1 connection: 1 Inspect\n");
}

TEST_F(AgentProgram, ASecondOneIsRefusedInOneLine) {
    const Program_ program(folder_, common_);
    Program_::AwaitFile(folder_, L"ready");
    const Program_ second(folder_, L"--service " + service_);
    EXPECT_EQ(second.Status(), 1u);
    EXPECT_EQ(second.Output(), L"agent: The service " + service_ + L" is published already by another process\n");
    EXPECT_TRUE(program.IsRunning());
}

TEST_F(AgentProgram, AFaultyPolicyIsToldInOneLineAndNothingPublished) {
    const std::wstring policy = folder_.Write(L"policy.json", "{\"rules\": [{\"name\": \"a\", \"when\": 1}]}");
    const Program_ program(folder_, common_ + L"--policy \"" + policy + L"\"");
    EXPECT_EQ(program.Status(), 1u);
    EXPECT_EQ(program.Output(), L"agent: " + policy + L": rules[0].when: unknown; known here are name, match, then\n");
    EXPECT_EQ(PublishedPortOf(service_), 0);
}

TEST_F(AgentProgram, AnUnknownOptionIsRefused) {
    const Program_ program(folder_, L"--polite");
    EXPECT_EQ(program.Status(), 2u);
    EXPECT_EQ(program.Output(), L"agent: unknown option \"--polite\"; --help tells what there is\n");
}

TEST_F(AgentProgram, MayDieDuringAnInspection) {
    const Program_ program(folder_, common_ + L"--misbehave die");
    Program_::AwaitFile(folder_, L"ready");
    const std::uint16_t port = PublishedPortOf(service_);
    EXPECT_EQ(Call(port, L"DataControlPlugin", L"GetExecutionMode", L"Email"), L"Response int: 1");
    EXPECT_EQ(Exchange(port, CallBytes(L"DataControlPlugin", L"Inspect", MailDocument(L"", L""))).bytes, "");
    EXPECT_EQ(program.Status(), 3u);
    EXPECT_EQ(PublishedPortOf(service_), 0);
}

TEST_F(AgentProgram, MayDieInTheMiddleOfAnAnswer) {
    const Program_ program(folder_, common_ + L"--misbehave die=100:GetExecutionMode");
    Program_::AwaitFile(folder_, L"ready");
    EXPECT_EQ(Exchange(PublishedPortOf(service_), CallBytes(L"DataControlPlugin", L"GetExecutionMode", L"Email"))
                  .bytes.size(),
              100u);
    EXPECT_EQ(program.Status(), 3u);
}

TEST_F(AgentProgram, AFaultyMisbehaviourIsToldInOneLine) {
    const Program_ program(folder_, L"--misbehave unread:Inspect");
    EXPECT_EQ(program.Status(), 2u);
    EXPECT_EQ(program.Output(), L"agent: misbehaviour \"unread\" holds for all requests, not for one\n");
}

TEST_F(AgentProgram, StopsInTheMiddleOfWhatItDoes) {
    const Program_ program(folder_, common_ + L"--misbehave silent:Inspect");
    Program_::AwaitFile(folder_, L"ready");
    const std::uint16_t port = PublishedPortOf(service_);
    Client waiting(port);
    waiting.Send(CallBytes(L"DataControlPlugin", L"Inspect", MailDocument(L"Plans", L"")));
    Client half(port);
    half.Send("<");
    EXPECT_EQ(Call(port, L"DataControlPlugin", L"GetExecutionMode", L"Email"), L"Response int: 1");
    EXPECT_EQ(Program_(folder_, L"--stop --service " + service_).Status(), 0u);
    EXPECT_EQ(program.Status(), 0u);
    EXPECT_EQ(waiting.Read().bytes, "");
}

TEST_F(AgentProgram, WithNobodyToStopItSaysSo) {
    const Program_ program(folder_, L"--stop --service " + service_);
    EXPECT_EQ(program.Status(), 1u);
    EXPECT_EQ(program.Output(), L"agent: no agent runs as " + service_ + L"\n");
}

TEST_F(AgentProgram, EndsAfterItsTime) {
    const Program_ program(folder_, common_ + L"--seconds 1");
    EXPECT_EQ(program.Status(), 0u);
}
