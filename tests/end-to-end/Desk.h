#pragma once
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "foundation/AutoHandle.h"
#include "tests/support/MessageBox.h"
#include "tests/support/Program.h"

namespace end_to_end {

using Json = nlohmann::json;

/// One run of Outlook, from start to end.
struct OutlookRun {
    DWORD status = 0;
    std::string output;
    std::optional<test_support::ShownBox> box; ///< the last message box that the user saw and answered
    int boxes = 0;
};

/// A user's desk: the add-in registered and told to Outlook, a profile, an agent, and the log at its lowest level, all
/// in a folder of the test's own.
class Desk : public testing::Test {
protected:
    Desk();
    ~Desk() override;

    /// Registers a DLL of the build, or takes it out of the registry again.
    void Register(const char* module) const;
    void Unregister(const char* module) const;

    /// Starts the agent with a policy and waits until it listens.
    void StartAgent(const Json& policy, const std::vector<std::wstring>& options = {});
    void StopAgent();

    /// Writes an item for Outlook to send; the fields given stand beside a sender, a recipient, a subject and a body.
    std::filesystem::path Item(const Json& fields);
    std::filesystem::path Item() { return Item(Json::object()); }

    /// Starts Outlook, lets it send the items, and answers every box that the add-in shows.
    OutlookRun Send(const std::vector<std::filesystem::path>& items,
                    std::vector<std::wstring> options = {L"-Embedding"});

    /// Starts Outlook, which sends the items and stays until it is closed.
    void Open(const std::vector<std::filesystem::path>& items, std::vector<std::wstring> options = {});
    /// Ends it, answering the boxes that are still to come.
    OutlookRun Close();
    /// Ends it as a crash does.
    void Kill();
    /// Waits until it has ended by itself, and says how. Nothing when it goes on for longer than a test may take.
    std::optional<DWORD> AwaitEnd();
    /// Waits until the condition holds. False: Outlook ended first, or the time for a test is over.
    bool Await(const std::function<bool()>& condition) const;
    /// Waits for a box of the add-in's and answers it. Nothing as above.
    std::optional<test_support::ShownBox> AwaitBox() const;

    /// An empty profile, ledger and log, as before the first run. Outlook is closed.
    void StartAfresh() const;
    /// Puts the profile and the ledger by, and as they were then back in their places. Outlook is closed.
    void Keep() const;
    void Restore() const;

    std::vector<Json> Delivered() const;
    std::vector<Json> ItemsIn(const std::string& folder) const;
    /// The documents that the agent was shown.
    std::vector<std::string> Documents() const;
    /// "LEVEL text" of every line that the add-in logged.
    std::vector<std::string> Log() const;
    bool Logged(const std::string& line) const;
    /// The IDs of the items that the add-in has in hand.
    static std::vector<std::wstring> Ledger();

    void SetOnSpot(bool on) const;
    /// Of the Outlook that is open; null when it has none.
    static HWND ExplorerWindow();

    std::filesystem::path folder_;

private:
    void WriteLogConfiguration_() const;
    std::unique_ptr<test_support::Program> StartOutlook_(const std::vector<std::filesystem::path>& items,
                                                         std::vector<std::wstring> options);
    static OutlookRun Finish_(const test_support::Program& outlook);

    vorlek::FileHandle close_; ///< the event that ends an open Outlook
    std::unique_ptr<test_support::Program> agent_;
    std::unique_ptr<test_support::Program> outlook_;
    int runs_ = 0;
    int items_ = 0;
};

} // namespace end_to_end
