#include "tests/outlook/MemberFailure.h"

#include <algorithm>
#include <filesystem>
#include <regex>

#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/WorkerThread.h"
#include "foundation/RegistryKey.h"
#include "foundation/StringUtils.h"
#include "tests/outlook/EventSink.h"
#include "tests/support/ReplacedImport.h"

namespace outlook_tests {
namespace {

using MessageBoxImport = test_support::ReplacedImport<"MessageBoxW", decltype(MessageBoxW)>;
using vorlek::StringUtils;

const wchar_t* const kNone = L"none";
constexpr HRESULT kNotFound = static_cast<HRESULT>(0x8004010F); // what a store says of an item that it does not hold

stand_ins::AgentOptions AlwaysWith(const stand_ins::Actions& actions) {
    stand_ins::AgentOptions options;
    options.policy = stand_ins::Policy::Always(actions);
    return options;
}

/// The calls of a run in their order, without the event, which is Outlook's call and not ours.
std::vector<FailingCall> CallsOf(const std::vector<std::wstring>& members) {
    std::vector<FailingCall> calls;
    for (const std::wstring& member : members) {
        if (member != L"Application.ItemSend") {
            const auto before = std::ranges::count(calls, member, &FailingCall::member);
            calls.push_back({member, 1 + static_cast<std::size_t>(before)});
        }
    }
    return calls;
}

/// The calls from one on to before another, where these are given.
std::vector<FailingCall> Between(std::vector<FailingCall> calls, const FailingCall& from, const FailingCall& until) {
    if (!until.member.empty()) {
        calls.erase(std::ranges::find(calls, until), calls.end());
    }
    if (!from.member.empty()) {
        calls.erase(calls.begin(), std::ranges::find(calls, from));
    }
    EXPECT_FALSE(calls.empty()) << "there is no call " << from.Name();
    return calls;
}

/// Each line once, where it comes first.
std::vector<std::wstring> Once(const std::vector<std::wstring>& lines) {
    std::vector<std::wstring> once;
    std::ranges::copy_if(lines, std::back_inserter(once),
                         [&](const std::wstring& line) { return std::ranges::find(once, line) == once.end(); });
    return once;
}

/// The lines without those of an undisturbed run.
std::vector<std::wstring> Beyond(std::vector<std::wstring> usual, const std::vector<std::wstring>& lines) {
    std::vector<std::wstring> beyond;
    for (const std::wstring& line : lines) {
        if (const auto known = std::ranges::find(usual, line); known != usual.end()) {
            usual.erase(known);
        } else {
            beyond.push_back(line);
        }
    }
    return beyond;
}

} // namespace

stand_ins::Actions Changes() {
    stand_ins::Actions actions;
    actions.subject = L"[Internal] {subject}";
    actions.bodyBefore = L"Internal";
    actions.replacement = {.name = {}, .file = {}, .text = L"Removed.", .displayName = L"notice.txt"};
    return actions;
}

stand_ins::Actions Block() {
    stand_ins::Actions actions;
    actions.block = true;
    return actions;
}

std::wstring MissingChanges(const stand_ins::ItemData& item, const std::wstring& oldSubject) {
    std::wstring missing = item.subject == L"[Internal] " + oldSubject ? L""
                           : item.subject == oldSubject                ? L", old subject"
                                                                       : L", subject \"" + item.subject + L"\"";
    missing += item.body.starts_with(L"Internal") ? L"" : L", old body";
    const bool replaced = item.attachments.size() == 1 && item.attachments.at(0).displayName == L"notice.txt";
    return missing + (replaced ? L"" : L", old attachments");
}

void MemberFailureTest::Expect(const Road& road, const std::vector<Row>& rows) {
    const auto rowOf = [&](const std::wstring& name) {
        const auto row = std::ranges::find_if(
            rows, [&](const Row& each) { return std::ranges::find(each.calls, name) != each.calls.end(); });
        return row == rows.end() ? Row{{}, L"no row", {}} : *row;
    };
    const Fate_ undisturbed = Walk_(road, {});
    EXPECT_EQ(rowOf(kNone).outcome, undisturbed.outcome);
    EXPECT_EQ(rowOf(kNone).lines, Once(undisturbed.lines));
    std::vector<std::wstring> walked = {kNone};
    for (const FailingCall& call : Between(CallsOf(undisturbed.members), road.from, road.until)) {
        const Fate_ fate = Walk_(road, call);
        walked.push_back(call.Name());
        SCOPED_TRACE(testing::PrintToString(call.Name()));
        EXPECT_EQ(rowOf(call.Name()).outcome, fate.outcome);
        EXPECT_EQ(rowOf(call.Name()).lines, Beyond(undisturbed.lines, fate.lines));
    }
    std::vector<std::wstring> told;
    for (const Row& row : rows) {
        told.insert(told.end(), row.calls.begin(), row.calls.end());
    }
    EXPECT_THAT(told, testing::ElementsAreArray(walked));
}

stand_ins::DispatchPtr MemberFailureTest::Prepare(const Road& road) {
    if (!road.waiting) {
        return outlook->NewItem(road.item);
    }
    if (const std::size_t end = road.folder.find(L'\\'); end != std::wstring::npos) {
        outlook->AddStore(road.folder.substr(0, end), {road.folder.substr(end + 1)});
    }
    const auto item = outlook->SavedItem(road.item, road.folder);
    const std::wstring id = outlook->ItemsIn(road.folder).at(0).entryId; // without a call that would be counted
    vorlek::CommonUtils::AddToInspectedItems(id, id, nullptr);
    return item;
}

std::vector<std::wstring> MemberFailureTest::Ledger() {
    std::vector<std::wstring> ids;
    vorlek::CommonUtils::GetInspectedItemIds(ids, nullptr);
    return ids;
}

MemberFailureTest::Fate_ MemberFailureTest::Walk_(const Road& road, const FailingCall& failing) {
    StartAfresh_(road);
    if (road.waiting) {
        Prepare(road);
        outlook->CloseExplorer();
    }
    outlook->Calls().Clear();
    log.Clear();
    const stand_ins::Agent agent(AlwaysWith(road.actions));
    if (!failing.member.empty()) {
        outlook->Failures().Fail(failing.member, kAccessDenied, failing.nth);
    }
    const MessageBoxImport box([](HWND, const wchar_t*, const wchar_t*, UINT) { return IDOK; });
    vorlek::OutlookController controller;
    const EventSink sink(outlook->Application(),
                         [&](IDispatch* sent) { return controller.InspectItemBeforeSending(sent); });
    const bool started = StartController_(controller, road);
    if (!road.waiting) {
        outlook->Send(Prepare(road));
    }
    EXPECT_TRUE(outlook->RunUntil([] { return vorlek::WorkerThread::Running() == 0; }, 20000));
    stand_ins::Outlook::HandleMessages();
    outlook->Failures().Clear();
    Fate_ fate{{}, Lines_(), outlook->Calls().Members()};
    const auto inspections = std::ranges::count(agent.Requests(), L"Inspect", &stand_ins::Request::method);
    fate.outcome = Whereabouts(road) + (Ledger().empty() ? L"" : L", listed") +
                   (inspections == 0  ? L", uninspected"
                    : inspections > 1 ? L", inspected twice"
                                      : L"") +
                   (started ? L"" : L", the start fails") + (box.Calls() == 0 ? L"" : L", the user is told");
    controller.RestoreExplorerWindow_();
    return fate;
}

void MemberFailureTest::StartAfresh_(const Road& road) {
    outlook.reset();
    std::filesystem::remove_all(folder.Path());
    RegistryKey::GetCurrentUser().DeleteSubKeyTree(kPluginKey);
    vorlek::OutlookControllerPeer::ForgetWindows();
    Restart({.version = road.version});
    SetVersion(L"-1."); // not known yet
}

/// As at the add-in's connection: nothing gets out of it. False: the start broke off.
bool MemberFailureTest::StartController_(vorlek::OutlookController& controller, const Road& road) const {
    vorlek::OutlookControllerPeer peer{controller};
    try {
        controller.InitApplication(Outlook::_ApplicationPtr(outlook->Application().GetInterfacePtr()));
        peer.SetEmbedded(road.embedded);
        controller.HandleIncompleteInspections();
        return true;
    } catch (const _com_error& failure) {
        EXPECT_EQ(failure.Error(), kAccessDenied);
        peer.SetEmbedded(road.embedded);
        return false;
    }
}

std::vector<std::wstring> MemberFailureTest::Lines_() const {
    std::vector<std::wstring> lines;
    for (const auto& line : log.Lines()) {
        if (line.level != L"ERROR" && line.level != L"WARN") {
            continue;
        }
        std::wstring text = std::regex_replace(line.text, std::wregex(L"\\b0{8}38A1BB[0-9A-F]+\\b"), L"STORE");
        text = std::regex_replace(text, std::wregex(L"\\b0{8}[0-9A-F]{32}\\b"), L"#");
        text = std::regex_replace(text, std::wregex(L"\\w+\\.cpp\\(\\d+\\)"), L"FILE");
        for (const auto& [result, name] : {std::pair(kAccessDenied, L"~"),
                                           {E_POINTER, L"(E_POINTER)"},
                                           {E_ABORT, L"(E_ABORT)"},
                                           {kNotFound, L"(not found)"}}) {
            text = StringUtils::Replace(text, ErrorText(result), name);
        }
        lines.push_back(line.level + L" " + text);
    }
    return lines;
}

} // namespace outlook_tests
