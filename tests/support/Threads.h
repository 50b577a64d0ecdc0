#pragma once
#include <functional>

namespace test_support {

/// Runs the body on so many threads at once, each with its number from 0, until all have ended.
void RunThreads(int count, const std::function<void(int)>& body);

} // namespace test_support
