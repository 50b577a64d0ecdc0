#pragma once
#include <string>
#include <vector>

#include "platform/Windows.h"

namespace test_support {

/// The bytes of a self-relative descriptor.
std::vector<BYTE> SecurityBytes(PSECURITY_DESCRIPTOR descriptor);
/// The bytes of what the system makes of a text in the Security Descriptor Definition Language.
std::vector<BYTE> SecurityBytes(const std::wstring& text);
/// The system's own text of a descriptor's discretionary list. Of a label Wine knows no text.
std::wstring SecurityText(PSECURITY_DESCRIPTOR descriptor);

} // namespace test_support
