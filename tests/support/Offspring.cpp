#include "tests/support/Offspring.h"

#include <stdexcept>
#include <string>

namespace test_support {
namespace {

/// Holds processes, and ends them when its last handle goes, which is this process's.
HANDLE NewJob() {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

} // namespace

void EndWithThisProcess(HANDLE process) {
    static const HANDLE job = NewJob();
    if (!AssignProcessToJobObject(job, process)) {
        throw std::runtime_error("a process cannot be put into the job: " + std::to_string(GetLastError()));
    }
}

} // namespace test_support
