// A fuzzer: makes inputs from examples, runs each target with them in a process that may die of it, and tells what
// came.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include "fuzz/driver/Supervisor.h"
#include "fuzz/driver/WorkerProcess.h"

namespace {

using fuzz::Target;

struct Options {
    std::uint64_t seed = 1;
    fuzz::Budget budget;
    std::filesystem::path folder = "."; ///< for the smallest inputs of faults
    std::vector<const Target*> targets;
};

const Target& Find(const std::string& name) {
    const auto found = std::ranges::find(fuzz::Targets(), name, &Target::name);
    if (found == fuzz::Targets().end()) {
        throw std::runtime_error("there is no target " + name + "; --list names them");
    }
    return *found;
}

std::uint64_t Number(const std::string& text) {
    if (text.empty() || text.size() > 18 || text.find_first_not_of("0123456789") != text.npos) {
        throw std::runtime_error("\"" + text + "\" is no number");
    }
    return std::stoull(text);
}

Options Read(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (!argument.starts_with("--")) {
            options.targets.push_back(&Find(argument));
            continue;
        }
        const std::string value = i + 1 < arguments.size() ? arguments[++i] : "";
        if (argument == "--seed") {
            options.seed = Number(value);
        } else if (argument == "--runs") {
            options.budget.runs = Number(value);
        } else if (argument == "--milliseconds") {
            options.budget.milliseconds = static_cast<DWORD>(Number(value));
        } else if (argument == "--folder") {
            options.folder = value;
        } else {
            throw std::runtime_error("unknown option " + argument);
        }
    }
    if (options.targets.empty()) {
        for (const Target& target : fuzz::Targets()) {
            options.targets.push_back(&target);
        }
    }
    return options;
}

/// The file of a fault's input: UTF-16, or bytes for a target that takes bytes.
std::filesystem::path Save(const fuzz::Fault& fault, const Target& target, std::size_t number, const Options& options) {
    create_directories(options.folder);
    std::filesystem::path path = options.folder / (target.name + ("-" + std::to_string(number)) + ".bin");
    std::ofstream file(path, std::ios::binary);
    if (target.material().highest > 0xFF) {
        file.write(reinterpret_cast<const char*>(fault.input.data()),
                   static_cast<std::streamsize>(fault.input.size() * sizeof(wchar_t)));
    } else {
        file << fuzz::ToBytes(fault.input);
    }
    return path;
}

void Print(const fuzz::Findings& findings, const Target& target, const Options& options) {
    std::printf("%s: %llu runs, %.0f a second, %zu outcomes, %zu faults\n", target.name, findings.runs,
                static_cast<double>(findings.runs) / std::max(findings.seconds, 0.001), findings.outcomes.size(),
                findings.faults.size());
    for (const auto& outcome : findings.outcomes) {
        std::printf("  %12llu  %s\n", outcome.runs, outcome.words);
    }
    std::size_t number = 0;
    for (const auto& fault : findings.faults) {
        std::printf("  FAULT in run %llu: %s\n", fault.run, fault.words.c_str());
        if (!fault.detail.empty()) {
            std::printf("    %s\n", fault.detail.c_str());
        }
        std::printf("    %s input of %zu units: %s\n", fault.repeats ? "smallest" : "not repeated alone; the last",
                    fault.input.size(), Save(fault, target, ++number, options).string().c_str());
    }
    if (findings.gaveUp) {
        std::printf("  too many faults: the rest was left out\n");
    }
    std::fflush(stdout);
}

int Main(const std::vector<std::string>& arguments) {
    if (arguments == std::vector<std::string>{"--list"}) {
        for (const Target& target : fuzz::Targets()) {
            std::printf("%s\n", target.name);
        }
        return 0;
    }
    const Options options = Read(arguments);
    bool isFaulty = false;
    for (const Target* target : options.targets) {
        const fuzz::Findings findings = Fuzz(*target, options.seed, options.budget);
        Print(findings, *target, options);
        isFaulty = isFaulty || !findings.faults.empty();
    }
    return isFaulty ? 1 : 0;
}

} // namespace

int main(int argc, char** argv) {
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    try {
        int status = 0;
        return fuzz::PlayWorker(argc, argv, status) ? status : Main({argv + 1, argv + argc});
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "error: %s\n", failure.what());
        return 2;
    }
}
