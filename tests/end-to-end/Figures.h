#pragma once
#include <map>
#include <string>

namespace end_to_end {

/// What Outlook says that its process holds.
struct Figures {
    long handles = 0;
    long heapBlocks = 0;
    long threads = 0;
    long objects = 0; ///< of the object model
};

/// The figures in the output of a run with --figures, by the number of items sent before; they are printed, too.
std::map<int, Figures> FiguresOf(const std::string& output);

} // namespace end_to_end
