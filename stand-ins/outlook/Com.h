#pragma once
// <comdef.h> behind the one door to <windows.h>: the other way round Winsock 2 comes too late.
#include "platform/Windows.h"

#include <comdef.h>
