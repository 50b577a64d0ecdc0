#pragma once
#include <filesystem>
#include <memory>
#include <optional>

#include "benchmarks/outlook/AddIn.h"
#include "foundation/AutoHandle.h"
#include "stand-ins/agent/Agent.h"
#include "stand-ins/outlook/Outlook.h"

namespace outlook_benchmarks {

/// A mail of so many bytes: a body of at most 10 KB, the rest in attachments of at most 1 MB.
stand_ins::ItemData MailOf(std::size_t bytes);

/// The floor of putting a mail aside: its body, which is the HTML one if there is any, and its attachments, each in a
/// new file of the folder.
void WriteParts(const stand_ins::ItemData& mail, const std::filesystem::path& folder);

/// A folder of this process's own, removed with all that lies in it.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// An interactive Outlook with the add-in in it, and an agent beside it, all of this process.
class Desk {
public:
    /// holds: the agent keeps its answers to inspections back until Release.
    explicit Desk(stand_ins::Actions actions = {}, bool holds = false);
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// A saved mail, so that closing its window is no work of Outlook's.
    stand_ins::DispatchPtr SavedMail(const stand_ins::ItemData& mail) { return outlook_.SavedItem(mail); }
    /// Raises the event for it, which puts it aside.
    void Send(const stand_ins::DispatchPtr& mail);
    void Release() { SetEvent(released_.Get()); }
    /// Until so many mails have left or come back to the screen.
    void AwaitDone(int mails);

private:
    stand_ins::AgentOptions Options_(stand_ins::Actions actions, bool holds) const;

    Folder folder_;
    vorlek::FileHandle released_;
    stand_ins::Agent agent_;
    stand_ins::Outlook outlook_;
    std::optional<AddIn> addIn_;
    int done_ = 0;
};

} // namespace outlook_benchmarks
