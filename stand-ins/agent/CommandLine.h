#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "stand-ins/agent/Misbehaviour.h"

namespace stand_ins::agent {

/// What agent.exe was asked to do.
struct CommandLine {
    std::wstring policyFile; ///< empty: every item is allowed
    std::wstring service = L"QLTPluginService";
    std::uint16_t port = 0;
    std::wstring workFolder;
    std::wstring recordFolder;
    std::wstring readyFile; ///< written once the agent listens; empty: none
    std::vector<MisbehaviourRule> misbehaviour;
    bool once = false;         ///< end after one inspection
    std::uint32_t seconds = 0; ///< end after that time; 0: never
    bool stop = false;         ///< end the agent that runs under the same service name
    bool help = false;

    /// Takes the arguments behind the program's name. Throws std::runtime_error that names the argument.
    static CommandLine FromArguments(const std::vector<std::wstring>& arguments);

    static std::wstring Usage();
};

} // namespace stand_ins::agent
