#pragma once

namespace fuzz {

/// From now on this process changes nothing outside itself through what it is linked with: every file that it opens is
/// one and the same, which goes with the process, and folders, names, registry keys, events and processes are refused.
void Confine();

/// Whether the disk is full.
void LetWritesFail(bool fail);

} // namespace fuzz
