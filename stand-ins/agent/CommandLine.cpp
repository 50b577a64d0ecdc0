#include "stand-ins/agent/CommandLine.h"

#include <algorithm>
#include <cwchar>
#include <stdexcept>

#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

std::uint32_t Number_(const std::wstring& option, const std::wstring& text, std::uint32_t most) {
    const bool isNumber = !text.empty() && text.size() < 10 && text.find_first_not_of(L"0123456789") == text.npos;
    const unsigned long number = isNumber ? std::wcstoul(text.c_str(), nullptr, 10) : 0;
    if (number == 0 || number > most) {
        throw std::runtime_error(ToUtf8(option) + " needs a number from 1 to " + std::to_string(most) + ", not \"" +
                                 ToUtf8(text) + "\"");
    }
    return static_cast<std::uint32_t>(number);
}

} // namespace

CommandLine CommandLine::FromArguments(const std::vector<std::wstring>& arguments) {
    CommandLine line;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const std::wstring& option = *argument;
        const auto value = [&]() -> const std::wstring& {
            if (std::next(argument) == arguments.end() || std::next(argument)->empty()) {
                throw std::runtime_error(ToUtf8(option) + " needs a value");
            }
            return *++argument;
        };
        if (option == L"--policy") {
            line.policyFile = value();
        } else if (option == L"--service") {
            line.service = value();
        } else if (option == L"--port") {
            line.port = static_cast<std::uint16_t>(Number_(L"--port", value(), 65535));
        } else if (option == L"--work") {
            line.workFolder = value();
        } else if (option == L"--record") {
            line.recordFolder = value();
        } else if (option == L"--ready-file") {
            line.readyFile = value();
        } else if (option == L"--misbehave") {
            line.misbehaviour.push_back(MisbehaviourRule::FromText(value()));
        } else if (option == L"--once") {
            line.once = true;
        } else if (option == L"--seconds") {
            line.seconds = Number_(L"--seconds", value(), 4000000);
        } else if (option == L"--stop") {
            line.stop = true;
        } else if (option == L"--help") {
            line.help = true;
        } else {
            throw std::runtime_error("unknown option \"" + ToUtf8(option) + "\"; --help tells what there is");
        }
    }
    if (line.service.find(L'\\') != std::wstring::npos) {
        throw std::runtime_error("--service needs a name without a backslash");
    }
    return line;
}

std::wstring CommandLine::Usage() {
    return LR"(usage: agent.exe [OPTION ...]
Stands in for a data-protection agent: publishes its port and answers an add-in's questions.
  --policy FILE      what to do with which mail (JSON); without it every mail is allowed
  --service NAME     the name that it is published under (QLTPluginService)
  --port N           the port to listen on (any free one)
  --work DIR         where files of decisions are made (%temp%\agent)
  --record DIR       keep each inspection's document and decision there
  --ready-file FILE  write the line that tells the port there, too
  --misbehave KIND[:METHOD]  let the client down; may be given more than once
  --once             end after one inspection
  --seconds N        end after that time
  --stop             end the agent that runs under the name, and wait until it is gone
)";
}

} // namespace stand_ins::agent
