#pragma once
#include <string>
#include <vector>

namespace vorlek {

/// Whether a process with these arguments, its own path first, holds an Outlook that was started for
/// automation. Any program but Outlook's own counts as such a host. The switch is known with a dash or
/// without; Outlook's form with a slash is not looked for.
bool IsEmbeddedStart(const std::vector<std::wstring>& arguments);

/// The arguments of this process as the system splits them; empty if it cannot.
std::vector<std::wstring> GetProcessArguments();

} // namespace vorlek
