#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>

#include "stand-ins/outlook/Com.h"

#include <shellapi.h>

#include "stand-ins/outlook/CommandLine.h"
#include "stand-ins/outlook/Outlook.h"
#include "stand-ins/outlook/Store.h"
#include "stand-ins/outlook/Text.h"

namespace {

using namespace stand_ins;

// One line for one thing told, whatever a subject holds.
void Say(std::wstring line) {
    std::ranges::replace_if(
        line, [](wchar_t c) { return c < L' '; }, L' ');
    std::printf("%s\n", ToUtf8(line).c_str());
    std::fflush(stdout);
}

std::vector<std::wstring> Arguments() {
    int count = 0;
    wchar_t** list = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> arguments(list + 1, list + count);
    LocalFree(list);
    return arguments;
}

void LoadAddIns(Outlook& outlook) {
    for (const AddInLoad& load : outlook.LoadAddIns()) {
        if (load.loaded) {
            Say(L"add-in " + load.progId + L": loaded in " + std::to_wstring(static_cast<long>(load.milliseconds)) +
                L" ms");
        } else {
            Say(L"add-in " + load.progId + L": not loaded, LoadBehavior set to 2: " + load.failure);
        }
    }
}

// What became of a send that an add-in stopped: whoever closed the item's window has it in hand and may send it or
// bring it back to the screen.
std::wstring AfterStop(Outlook& outlook, const SendResult& result, DWORD waitMs) {
    if (outlook.IsOpen(result.entryId)) {
        return L"stopped by the add-in: saved in Drafts, its window is open";
    }
    const bool decided =
        outlook.RunUntil([&] { return Outlook::HasLeft(result) || outlook.IsOpen(result.entryId); }, waitMs);
    if (!decided) {
        return L"stopped by the add-in: saved in Drafts, nothing more was heard of it";
    }
    return Outlook::HasLeft(result) ? L"sent by the add-in" : L"stopped by the add-in: brought back to the screen";
}

std::wstring SendItem(Outlook& outlook, ItemData item, DWORD waitMs) {
    const SendResult result = outlook.Send(outlook.NewItem(std::move(item)));
    switch (result.outcome) {
    case SendResult::Outcome::Sent:
        return L"sent";
    case SendResult::Outcome::Stopped:
        return AfterStop(outlook, result, waitMs);
    case SendResult::Outcome::Failed:
        break;
    }
    return L"failed: " + result.reason + L" (" + Hex(result.error) + L")";
}

void WriteRecord(const std::filesystem::path& file, const Recorder& calls) {
    std::ofstream stream(file, std::ios::binary);
    for (const Call& call : calls.All()) {
        stream << ToUtf8(call.ToString()) << '\n';
    }
    if (!stream.flush()) {
        throw std::runtime_error("cannot write " + ToUtf8(file.wstring()));
    }
}

int Run(const CommandLine& line) {
    // All items are read before any leaves: a bad one among them stops the lot.
    std::vector<ItemData> items;
    for (const auto& file : line.items) {
        items.push_back(ReadItemFile(file));
    }
    Outlook outlook(line.outlook);
    outlook.Calls().Enable(!line.record.empty());
    for (const FaultOption& fault : line.faults) {
        outlook.Failures().Fail(fault.member, fault.result, fault.nth);
    }
    if (line.addIns) {
        LoadAddIns(outlook);
    }
    for (size_t i = 0; i < items.size(); ++i) {
        const std::wstring subject = items[i].subject;
        const std::wstring became = SendItem(outlook, std::move(items[i]), line.waitMs);
        Say(line.items[i].filename().wstring() + L" \"" + subject + L"\": " + became);
    }
    if (line.tellShutdown) {
        outlook.TellShutdown();
    }
    if (!line.record.empty()) {
        WriteRecord(line.record, outlook.Calls());
    }
    return 0;
}

} // namespace

int main() {
    try {
        const CommandLine line = ParseCommandLine(Arguments());
        if (line.help) {
            std::fputs(Usage(), stdout);
            return 0;
        }
        return Run(line);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "outlook: %s\n", failure.what());
        return 2;
    }
}
