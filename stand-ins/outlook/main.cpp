#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <optional>

#include "stand-ins/outlook/Com.h"

#include <shellapi.h>

#include "stand-ins/outlook/CommandLine.h"
#include "stand-ins/outlook/Death.h"
#include "stand-ins/outlook/Figures.h"
#include "stand-ins/outlook/Meanwhile.h"
#include "stand-ins/outlook/Outlook.h"
#include "stand-ins/outlook/Reader.h"
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

// The items that the user has sent; of each it is told once what became of it.
class Outbox {
public:
    explicit Outbox(Outlook& outlook) : outlook_(outlook) {}

    void Send(const std::filesystem::path& file, ItemData item) {
        Item sent;
        sent.name = file.filename().wstring() + L" \"" + item.subject + L"\": ";
        sent.home = Store::HomeOf(item.kind).filename().wstring();
        sent.result = outlook_.Send(outlook_.NewItem(std::move(item)));
        sent.staysOpen = sent.result.outcome == SendResult::Outcome::Stopped && outlook_.IsOpen(sent.result.entryId);
        items_.push_back(std::move(sent));
    }

    // Whether all is told.
    bool Tell() {
        std::erase_if(items_, [&](const Item& item) {
            const std::wstring fate = Fate_(item);
            if (!fate.empty()) {
                Say(item.name + fate);
            }
            return !fate.empty();
        });
        return items_.empty();
    }

    void TellTheRest() {
        for (const Item& item : items_) {
            Say(item.name + L"stopped by the add-in: saved in " + item.home + L", nothing more was heard of it");
        }
        items_.clear();
    }

private:
    struct Item {
        std::wstring name;
        SendResult result;
        std::wstring home;      ///< the folder where it stands until it leaves
        bool staysOpen = false; ///< the window in which it was sent was not closed
    };

    // What became of an item so far; empty while an add-in has it in hand. Whoever closed the window of an item that he
    // stopped may send it or bring it back to the screen; whoever left it open may send it as long as he is at work.
    std::wstring Fate_(const Item& item) const {
        switch (item.result.outcome) {
        case SendResult::Outcome::Sent:
            return L"sent";
        case SendResult::Outcome::Failed:
            return L"failed: " + item.result.reason + L" (" + Hex(item.result.error) + L")";
        case SendResult::Outcome::Stopped:
            break;
        }
        if (Outlook::HasLeft(item.result)) {
            return L"sent by the add-in";
        }
        if (!outlook_.IsOpen(item.result.entryId)) {
            return Outlook::IsGone(item.result) ? L"moved or deleted while the add-in had it" : L"";
        }
        if (!item.staysOpen) {
            return L"stopped by the add-in: brought back to the screen";
        }
        return CountThreads() > threads_ ? L""
                                         : L"stopped by the add-in: saved in " + item.home + L", its window is open";
    }

    Outlook& outlook_;
    const size_t threads_ = CountThreads();
    std::vector<Item> items_;
};

void SayFigures(Outlook& outlook, size_t items, size_t threads) {
    // Whoever has sent an item may still be on his way home.
    outlook.RunUntil([&] { return CountThreads() <= threads; });
    Say(L"figures after " + std::to_wstring(items) + L": " + Figures::Measure().ToString());
}

// Sends all items without waiting for any, and stays as long as the command line wants.
void SendAll(Outlook& outlook, const CommandLine& line, const std::vector<ItemData>& items) {
    Meanwhile meanwhile(outlook, line.deeds);
    Outbox outbox(outlook);
    const auto settled = [&] {
        meanwhile.DoDue();
        return outbox.Tell();
    };
    const size_t threads = CountThreads();
    for (size_t i = 0; i < items.size(); ++i) {
        outbox.Send(line.items[i], items[i]);
        Outlook::HandleMessages();
        settled();
        if (line.figures && i == 0) {
            outlook.RunUntil(settled, line.waitMs);
            SayFigures(outlook, 1, threads);
        }
    }
    if (line.until.empty()) {
        outlook.RunUntil(settled, line.waitMs);
    } else {
        const HANDLE end = CreateEventW(nullptr, TRUE, FALSE, line.until.c_str());
        outlook.RunUntil([&] { return (settled(), WaitForSingleObject(end, 0)) == WAIT_OBJECT_0; }, INFINITE);
        CloseHandle(end);
    }
    outbox.TellTheRest();
    if (line.figures) {
        SayFigures(outlook, items.size(), threads);
    }
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
    OutlookOptions options = line.outlook;
    if (!line.earlyExplorer) {
        options.explorer = ExplorerState::Missing;
    }
    Outlook outlook(options);
    outlook.Calls().Enable(!line.record.empty());
    for (const FaultOption& fault : line.faults) {
        outlook.Failures().Fail(fault.member, fault.result, fault.nth);
    }
    for (const DeathOption& death : line.deaths) {
        if (death.after) {
            outlook.Failures().After(death.member, Die, death.nth);
        } else {
            outlook.Failures().On(
                death.member, [](const Call&) { return (Die(), std::optional<_variant_t>()); }, death.nth);
        }
    }
    std::optional<Reader> reader;
    if (line.readBoxes) {
        reader.emplace([](const std::wstring& text) { Say(L"message box: " + text); });
    }
    if (line.addIns) {
        LoadAddIns(outlook);
    }
    if (line.outlook.explorer != ExplorerState::Missing) {
        outlook.OpenExplorer(line.outlook.explorer == ExplorerState::Shown);
    }
    SendAll(outlook, line, items);
    if (line.tellShutdown) {
        outlook.TellShutdown();
    }
    if (!line.record.empty()) {
        WriteRecord(line.record, outlook.Calls());
    }
    return 0;
}

int Main() {
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

} // namespace

int main() {
    const int status = Main();
    // Without a look back: an add-in's threads may run, and call, to the very last.
    std::fflush(nullptr);
    std::_Exit(status);
}
