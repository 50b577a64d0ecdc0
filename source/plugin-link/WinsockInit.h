#pragma once

namespace vorlek {

/// Makes sure that Winsock is started in this process, once for each loaded copy of this code and
/// until the process ends. Throws Exception if it cannot be started.
void WinsockInit();

} // namespace vorlek
