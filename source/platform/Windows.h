#pragma once
// The one door to <windows.h>: Winsock 2 must come first, and macros that would rename
// members of the project's own classes go away again.
#include <winsock2.h>

#include <ws2tcpip.h>

#include <windows.h>

#undef GetMessage
