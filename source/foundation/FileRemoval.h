#pragma once
#include <string>

#include "foundation/Throw.h"
#include "platform/Windows.h"

namespace vorlek {

/// FileUtils::RemoveFile and RemovePath, for each class that offers them under its own name. site: where
/// failures say they come from.
void RemoveFileFrom(ThrowSite site, const std::wstring& path);
void RemovePathFrom(ThrowSite site, const std::wstring& path);

/// Raises UnauthorizedAccessException for ERROR_ACCESS_DENIED, IOException for any other error.
[[noreturn]] void RaiseRemovalFailure(ThrowSite site, const std::wstring& path, DWORD error);

} // namespace vorlek
