#include "tests/end-to-end/Figures.h"

#include <cstdio>
#include <regex>
#include <sstream>

namespace end_to_end {

std::map<int, Figures> FiguresOf(const std::string& output) {
    static const std::regex form(
        "figures after (\\d+): handles (\\d+), heap blocks (\\d+), threads (\\d+), objects (\\d+)");
    std::map<int, Figures> figures;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_search(line, match, form)) {
            std::printf("%s\n", line.c_str());
            figures[std::stoi(match[1])] = {.handles = std::stol(match[2]),
                                            .heapBlocks = std::stol(match[3]),
                                            .threads = std::stol(match[4]),
                                            .objects = std::stol(match[5])};
        }
    }
    return figures;
}

} // namespace end_to_end
