#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "stand-ins/outlook/Meanwhile.h"
#include "stand-ins/outlook/Options.h"

namespace stand_ins {

/// A member that the command line tells to fail: "MailItem.Send=0x80040119#2".
struct FaultOption {
    std::wstring member;
    HRESULT result = E_FAIL;
    size_t nth = 0;
};

/// Where the command line tells outlook.exe to die: "after:MailItem.Send#2".
struct DeathOption {
    std::wstring member;
    bool after = false;
    size_t nth = 1;
};

/// What outlook.exe was told.
struct CommandLine {
    OutlookOptions outlook;
    bool addIns = true;
    bool tellShutdown = false;
    bool help = false;
    bool earlyExplorer = false; ///< the main window comes before the add-ins
    bool figures = false;
    bool readBoxes = false;
    DWORD waitMs = 60000; ///< for the items that an add-in took into its hands
    std::wstring until;   ///< event; empty: until the items' fate is known
    std::vector<Deed> deeds;
    std::filesystem::path record; ///< empty: no calls are recorded
    std::vector<FaultOption> faults;
    std::vector<DeathOption> deaths;
    std::vector<std::filesystem::path> items;
};

/// Reads the arguments behind the program's name. Failure: std::runtime_error with one line.
CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

/// The help that --help prints.
const char* Usage();

} // namespace stand_ins
