#pragma once
#include <string>

#include "foundation/Throw.h"

namespace vorlek {

/// FileUtils::RemoveFile and RemovePath, for each class that offers them under its own name. site: where
/// failures say they come from.
void RemoveFileFrom(ThrowSite site, const std::wstring& path);
void RemovePathFrom(ThrowSite site, const std::wstring& path);

} // namespace vorlek
