#pragma once
#include <string>

#include "foundation/Exception.h"
#include "platform/Windows.h"

/// Accounts and their profiles. Failures raise vorlek::Exception with the system's error.
namespace UserUtils {

/// The account's name and its domain, which may be empty, of an identifier such as "S-1-5-18".
/// Raises TrustedRelationshipFailure where the domain is one whose trust is broken.
void GetSidInfo(const std::wstring& sidText, std::wstring& account, std::wstring& domain);

/// Whether the identifier is of an account that this machine itself keeps. Raises as GetSidInfo does,
/// but for an account behind a broken trust, which is a domain's.
bool IsLocalUser(const std::wstring& sidText);

/// Whether the caller acts as a member of the machine's administrators.
bool IsAdministrator();

/// The profile's folder of the user who is logged on in a terminal session. Only the system's own account
/// may ask. Raises as RegistryKey does where the user has no profile.
std::wstring GetProfileDir(DWORD sessionId);

} // namespace UserUtils
