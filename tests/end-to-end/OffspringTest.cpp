// What the tests start ends with them: nothing holds the service's name against later tests.
#include <fstream>

#include <gtest/gtest.h>

#include "foundation/AutoHandle.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

namespace end_to_end {
namespace {

constexpr DWORD kLongMs = 20000;
constexpr DWORD kPollMs = 20;

std::wstring StayForEver(const std::wstring&) {
    test_support::SayReady();
    test_support::WaitToBeKilled();
}
const test_support::ChildRoleName stayForEver(L"StayForEver", StayForEver);

/// Starts an agent and another process as tests do, notes their numbers, and is killed with both running.
std::wstring StartPrograms(const std::wstring& folder) {
    const std::filesystem::path place(folder);
    const test_support::Program agent((std::filesystem::path(L"Z:") / AGENT_PROGRAM).make_preferred(),
                                      {L"--ready-file", place / L"ready.txt"}, place / L"agent.txt");
    test_support::ChildProcess child(L"StayForEver");
    child.WaitUntilReady();
    while (!std::filesystem::exists(place / L"ready.txt") && !agent.EndsWithin(kPollMs)) {
    }
    std::ofstream(place / L"started.txt") << agent.Id() << ' ' << child.Id();
    test_support::SayReady();
    test_support::WaitToBeKilled();
}
const test_support::ChildRoleName startPrograms(L"StartPrograms", StartPrograms);

TEST(Offspring, EndsWithATestProgramThatIsKilled) {
    const test_support::TemporaryFolder folder;
    test_support::ChildProcess tests(L"StartPrograms", folder.Path());
    tests.WaitUntilReady();
    DWORD ids[2] = {};
    std::ifstream(folder / L"started.txt") >> ids[0] >> ids[1];
    const vorlek::FileHandle agent(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, ids[0]));
    const vorlek::FileHandle child(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, ids[1]));
    for (const HANDLE process : {agent.Get(), child.Get()}) {
        ASSERT_EQ(WaitForSingleObject(process, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    }
    tests.Terminate();
    for (const HANDLE process : {agent.Get(), child.Get()}) {
        EXPECT_EQ(WaitForSingleObject(process, kLongMs), WAIT_OBJECT_0);
        TerminateProcess(process, 99); // one that was left behind is not left to the next test
    }
}

} // namespace
} // namespace end_to_end
