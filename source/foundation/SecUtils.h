#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/SA.h"

#include <accctrl.h>

namespace SecUtils {

/// The descriptors that the program uses. 0: no entries of its own, so default protection. 1: signed-in
/// users read, write and execute, the machine's users own. 2: the system owns, everyone reads. 3: everyone
/// owns, processes of low integrity too. Raises Exception for another kind.
std::shared_ptr<SA> GenSA(std::uint32_t kind);

/// Gives a named object, such as a file or folder, the discretionary list of the attributes. Raises
/// FileNotFoundException where the object is missing, otherwise Exception.
void SetObjectSecurity(SE_OBJECT_TYPE objectType, const std::wstring& objectName, SA& attributes);

} // namespace SecUtils
