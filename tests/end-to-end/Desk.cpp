#include "tests/end-to-end/Desk.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "foundation/Log4CxxHelper.h"
#include "stand-ins/redemption/Coclasses.h"

namespace end_to_end {
namespace fs = std::filesystem;
namespace {

constexpr wchar_t kAddIns[] = L"SOFTWARE\\Microsoft\\Office\\Outlook\\Addins\\OutlookQLTPlugin.Connect";
constexpr wchar_t kInput[] = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin\\Input";
constexpr wchar_t kUnsent[] = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin\\Unsent";
constexpr wchar_t kProduct[] = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin";
constexpr wchar_t kKeptUnsent[] = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin\\Kept";
constexpr const char* kKept = "kept";
constexpr wchar_t kBoxCaption[] = L"Microsoft Outlook";
constexpr wchar_t kOnSpot[] = L"onspotenabled";
constexpr DWORD kLoadAtStart = 3;
constexpr DWORD kPollMs = 20;
constexpr int kReadyPolls = 1500;

void RunToEnd(const fs::path& program, const std::vector<std::wstring>& arguments, const fs::path& output) {
    const test_support::Program run(program, arguments, output);
    if (const DWORD status = run.Wait(); status != 0) {
        throw std::runtime_error(program.string() + " ended with " + std::to_string(status) + ": " + run.Output());
    }
}

/// A path of the build as Windows writes it: the add-in looks at what follows the last backslash.
fs::path Built(const char* path) {
    return fs::path(L"Z:") / fs::path(path).make_preferred();
}

fs::path SystemProgram(const wchar_t* name) {
    wchar_t folder[MAX_PATH] = L"";
    GetSystemDirectoryW(folder, MAX_PATH);
    return fs::path(folder) / name;
}

void TellOutlook() {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kAddIns, L"FriendlyName", REG_SZ, L"Mail inspection", 32);
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kAddIns, L"Description", REG_SZ, L"Mail inspection", 32);
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kAddIns, L"LoadBehavior", REG_DWORD, &kLoadAtStart, sizeof(kLoadAtStart));
}

void CopyKey(const wchar_t* from, const wchar_t* to) {
    RegDeleteTreeW(HKEY_CURRENT_USER, to);
    HKEY target = nullptr;
    LSTATUS status = RegCreateKeyW(HKEY_CURRENT_USER, to, &target);
    if (status == ERROR_SUCCESS) {
        status = RegCopyTreeW(HKEY_CURRENT_USER, from, target);
        RegCloseKey(target);
    }
    if (status != ERROR_SUCCESS) {
        throw std::runtime_error("the ledger cannot be copied: " + std::to_string(status));
    }
}

std::vector<Json> ReadItems(const fs::path& folder) {
    std::vector<fs::path> files;
    if (fs::exists(folder)) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == L".json") {
                files.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(files);
    std::vector<Json> items;
    for (const fs::path& file : files) {
        items.push_back(Json::parse(test_support::ReadAll(file)));
    }
    return items;
}

std::wstring CloseEvent() {
    return L"desk-" + std::to_wstring(GetCurrentProcessId()) + L"-close";
}

} // namespace

Desk::Desk() : close_(CreateEventW(nullptr, TRUE, FALSE, CloseEvent().c_str())) {
    folder_ = fs::temp_directory_path() / (L"desk-" + std::to_wstring(GetCurrentProcessId()));
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    RegDeleteTreeW(HKEY_CURRENT_USER, kProduct);
    for (const auto& coclass : stand_ins::redemption::kCoclasses) { // left by a test that was killed
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, (std::wstring(L"SOFTWARE\\Classes\\") + coclass.progId).c_str());
    }
    WriteLogConfiguration_();
    Register(ADDIN_MODULE);
    TellOutlook();
}

Desk::~Desk() {
    outlook_.reset();
    StopAgent();
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kAddIns);
    RegDeleteTreeW(HKEY_CURRENT_USER, kProduct);
    std::error_code ignored;
    fs::remove(vorlek::GetLogConfigurationPath(), ignored);
    if (!HasFailure()) {
        fs::remove_all(folder_, ignored);
    }
}

void Desk::Register(const char* module) const {
    RunToEnd(SystemProgram(L"regsvr32.exe"), {L"/s", Built(module).wstring()}, folder_ / "regsvr32.txt");
}

void Desk::Unregister(const char* module) const {
    RunToEnd(SystemProgram(L"regsvr32.exe"), {L"/s", L"/u", Built(module).wstring()}, folder_ / "regsvr32.txt");
}

void Desk::WriteLogConfiguration_() const {
    const fs::path path = vorlek::GetLogConfigurationPath();
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "log4j.rootLogger=ALL, file\n"
                           "log4j.appender.file=org.apache.log4j.FileAppender\n"
                           "log4j.appender.file.File="
                        << (folder_ / "add-in.log").generic_string()
                        << "\n"
                           "log4j.appender.file.encoding=UTF-8\n"
                           "log4j.appender.file.layout=org.apache.log4j.PatternLayout\n"
                           "log4j.appender.file.layout.ConversionPattern=%p %m%n\n";
}

void Desk::StartAgent(const Json& policy, const std::vector<std::wstring>& options) {
    const fs::path policyFile = folder_ / "policy.json";
    const fs::path ready = folder_ / "agent-ready.txt";
    std::ofstream(policyFile) << policy;
    fs::remove(ready);
    std::vector<std::wstring> arguments = {L"--policy",     policyFile.wstring(),
                                           L"--work",       (folder_ / "agent").wstring(),
                                           L"--record",     (folder_ / "documents").wstring(),
                                           L"--ready-file", ready.wstring()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    agent_ = std::make_unique<test_support::Program>(Built(AGENT_PROGRAM), arguments, folder_ / "agent.txt");
    for (int polls = 0; !fs::exists(ready); ++polls) {
        if (agent_->EndsWithin(kPollMs) || polls == kReadyPolls) {
            throw std::runtime_error("the agent does not listen: " + agent_->Output());
        }
    }
}

void Desk::StopAgent() {
    agent_.reset();
}

fs::path Desk::Item(const Json& fields) {
    Json item = {{"kind", "mail"},
                 {"subject", "Plans"},
                 {"body", "The plans for next week."},
                 {"account", "anna@example.com"},
                 {"recipients", {{{"name", "Ben"}, {"address", "ben@example.com"}, {"type", 1}}}}};
    item.update(fields);
    fs::path path = folder_ / ("item-" + std::to_string(++items_) + ".json");
    std::ofstream(path) << item;
    return path;
}

OutlookRun Desk::Send(const std::vector<fs::path>& items, std::vector<std::wstring> options) {
    return Finish_(*StartOutlook_(items, std::move(options)));
}

void Desk::Open(const std::vector<fs::path>& items, std::vector<std::wstring> options) {
    ResetEvent(close_.Get());
    options.insert(options.end(), {L"--until", CloseEvent()});
    outlook_ = StartOutlook_(items, std::move(options));
}

OutlookRun Desk::Close() {
    SetEvent(close_.Get());
    OutlookRun run = Finish_(*outlook_);
    outlook_.reset();
    return run;
}

void Desk::Kill() {
    outlook_.reset();
}

std::optional<DWORD> Desk::AwaitEnd() {
    if (!outlook_->EndsWithin(kPollMs * kReadyPolls)) {
        return std::nullopt;
    }
    const DWORD status = outlook_->Wait();
    outlook_.reset();
    return status;
}

void Desk::StartAfresh() const {
    fs::remove_all(folder_ / "profile");
    fs::remove(folder_ / "add-in.log");
    RegDeleteTreeW(HKEY_CURRENT_USER, kUnsent);
}

void Desk::Keep() const {
    fs::remove_all(folder_ / kKept);
    fs::copy(folder_ / "profile", folder_ / kKept, fs::copy_options::recursive);
    CopyKey(kUnsent, kKeptUnsent);
}

void Desk::Restore() const {
    StartAfresh();
    fs::copy(folder_ / kKept, folder_ / "profile", fs::copy_options::recursive);
    CopyKey(kKeptUnsent, kUnsent);
}

bool Desk::Await(const std::function<bool()>& condition) const {
    for (int polls = 0; !condition(); ++polls) {
        if (outlook_->EndsWithin(kPollMs) || polls == kReadyPolls) {
            return false;
        }
    }
    return true;
}

std::optional<test_support::ShownBox> Desk::AwaitBox() const {
    int polls = 0;
    return test_support::AnswerMessageBox(kBoxCaption,
                                          [&] { return outlook_->EndsWithin(kPollMs) || ++polls == kReadyPolls; });
}

std::unique_ptr<test_support::Program> Desk::StartOutlook_(const std::vector<fs::path>& items,
                                                           std::vector<std::wstring> options) {
    std::vector<std::wstring> arguments = {L"--profile", (folder_ / "profile").wstring()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.emplace_back(L"--send");
    for (const fs::path& item : items) {
        arguments.push_back(item.wstring());
    }
    return std::make_unique<test_support::Program>(Built(OUTLOOK_PROGRAM), arguments,
                                                   folder_ / ("outlook-" + std::to_string(++runs_) + ".txt"));
}

OutlookRun Desk::Finish_(const test_support::Program& outlook) {
    OutlookRun run;
    while (auto box = test_support::AnswerMessageBox(kBoxCaption, [&] { return outlook.EndsWithin(kPollMs); })) {
        run.box = std::move(box);
        ++run.boxes;
    }
    run.status = outlook.Wait();
    run.output = outlook.Output();
    return run;
}

std::vector<Json> Desk::Delivered() const {
    return ReadItems(folder_ / "profile" / "Delivered");
}

std::vector<Json> Desk::ItemsIn(const std::string& folder) const {
    return ReadItems(folder_ / "profile" / "Stores" / "Outlook Data File" / folder);
}

std::vector<std::string> Desk::Documents() const {
    std::vector<std::string> documents;
    const fs::path folder = folder_ / "documents";
    if (fs::exists(folder)) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().string().ends_with("-inspector.xml")) {
                documents.push_back(test_support::ReadAll(entry.path()));
            }
        }
    }
    return documents;
}

std::vector<std::string> Desk::Log() const {
    std::istringstream text(test_support::ReadAll(folder_ / "add-in.log"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<std::wstring> Desk::Ledger() {
    std::vector<std::wstring> ids;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kUnsent, 0, KEY_READ, &key) == ERROR_SUCCESS) {
        wchar_t name[256];
        for (DWORD i = 0, size = 256;
             RegEnumValueW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++i, size = 256) {
            ids.emplace_back(name);
        }
        RegCloseKey(key);
    }
    return ids;
}

HWND Desk::ExplorerWindow() {
    return FindWindowW(L"rctrl_renwnd32", L"Inbox - Outlook Data File - Outlook");
}

bool Desk::Logged(const std::string& line) const {
    return std::ranges::count(Log(), line) > 0;
}

void Desk::SetOnSpot(bool on) const {
    const std::uint64_t value = on ? 1 : 0;
    RegSetKeyValueW(HKEY_CURRENT_USER, kInput, kOnSpot, REG_QWORD, &value, sizeof(value));
}

} // namespace end_to_end
