#pragma once
#include <string>

#include "platform/Windows.h"

namespace test_support {

/// Everything a key holds, in lines that a test compares whole; keys and values in the order of their
/// names. Empty when there is no such key.
///
///     [Sub]
///     @ = s text of the default value
///     name = d 42
///     name = b 00ff
std::wstring DumpRegistry(HKEY root, const std::wstring& path);

/// Removes a key with all it holds; one that is not there is no failure.
void RemoveRegistryKey(HKEY root, const std::wstring& path);

} // namespace test_support
