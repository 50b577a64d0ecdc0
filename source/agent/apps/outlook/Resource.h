#pragma once
// Numbers of the DLL's resources.
#define IDR_TYPELIB 1
#define IDS_PROJNAME 100
#define IDR_OUTLOOKQLTPLUGIN 101
