#include "fuzz/driver/Outcome.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <typeinfo>

#include <cxxabi.h>

namespace fuzz {

std::string WithoutVariables(std::string_view words) {
    std::string fixed;
    char closing = '\0';
    for (const char character : words.substr(0, words.find(": "))) {
        if (closing != '\0') {
            closing = character == closing ? '\0' : closing;
        } else if (character == '"' || character == '<') {
            closing = character == '<' ? '>' : '"';
        } else if (character < '0' || character > '9') {
            fixed.push_back(character);
        }
    }
    return fixed;
}

std::string NameOfType(const std::exception& failure) {
    const char* mangled = typeid(failure).name();
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(mangled, nullptr, nullptr, &status),
                                                           std::free);
    return name != nullptr ? name.get() : mangled;
}

void CountOutcome(Board& board, std::string_view words) {
    words = words.substr(0, sizeof(OutcomeCount::words) - 1);
    const auto end = board.outcomes.begin() + board.outcomeCount;
    auto found =
        std::find_if(board.outcomes.begin(), end, [&](const OutcomeCount& each) { return each.words == words; });
    if (found == end) {
        if (board.outcomeCount == board.outcomes.size()) {
            --found;
        } else {
            ++board.outcomeCount;
            std::memcpy(found->words, words.data(), words.size());
        }
    }
    ++found->runs;
}

} // namespace fuzz
