#pragma once
#include <string>

namespace vorlek {

/// What FileUtils::RemoveAllFiles does, with its trail on the debugger's output.
void RemoveTree(std::wstring path, bool includePath);

} // namespace vorlek
