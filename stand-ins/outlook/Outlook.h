#pragma once
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "stand-ins/outlook/AddIns.h"
#include "stand-ins/outlook/Com.h"
#include "stand-ins/outlook/Dispatch.h"
#include "stand-ins/outlook/Faults.h"
#include "stand-ins/outlook/ItemData.h"
#include "stand-ins/outlook/Options.h"
#include "stand-ins/outlook/ProfileLock.h"
#include "stand-ins/outlook/Recorder.h"
#include "stand-ins/outlook/Window.h"

namespace stand_ins {

class ItemRecord;
class Session;

/// What became of a send.
struct SendResult {
    enum class Outcome { Sent, Stopped, Failed };
    Outcome outcome = Outcome::Failed;
    HRESULT error = S_OK; ///< of a failure
    std::wstring reason;  ///< of a failure, in words
    std::wstring entryId; ///< of the item if it did not leave; empty when it was never saved
    std::shared_ptr<const ItemRecord> item;
};

/// An Outlook of one thread: the one that constructs it, which enters a single-threaded apartment for as long as the
/// object lives. Objects handed out may outlive it, and be called from any thread unless threads are strict.
///
///     Outlook outlook({.profile = folder.Path()});
///     const auto mail = outlook.NewMail({.subject = L"Hello", .body = L"Text", .recipients = {{.address =
///     L"a@b.example"}}}); EXPECT_EQ(outlook.Send(mail).outcome, SendResult::Outcome::Sent);
class Outlook {
public:
    /// Opens the profile, which is created when it is missing, and shows the explorer window.
    /// Failure: std::runtime_error with one clear line.
    explicit Outlook(OutlookOptions options);
    ~Outlook();
    Outlook(const Outlook&) = delete;
    Outlook& operator=(const Outlook&) = delete;

    /// The Application object.
    DispatchPtr Application() const;
    /// A new item, not saved: its EntryID is empty and no inspector shows it. The task or appointment that an item
    /// brings along is saved where its kind stands; a meeting that neither brings nor names an appointment gets one.
    DispatchPtr NewItem(ItemData data);
    DispatchPtr NewMail(ItemData data);
    DispatchPtr NewPost(ItemData data);
    /// The request that a send of an assigned task makes, not sent and not saved.
    DispatchPtr NewRequestFor(const DispatchPtr& task);
    /// An item saved in a folder of the default store, by the folder's name.
    DispatchPtr SavedItem(ItemData data, const std::wstring& folder = L"Drafts");

    /// The user opens the item and presses Send: ItemSend is raised, Cancel obeyed. A stopped item is saved and stays
    /// on the screen, unless somebody closed it meanwhile. Of a task what is sent, and stays, is a new request;
    /// of an appointment it is an invitation, which does not stay.
    /// Failure: std::invalid_argument for what is no item.
    SendResult Send(const DispatchPtr& item);
    /// Raises ItemSend alone, with any object or none; the result is Cancel.
    bool RaiseItemSend(IDispatch* item, bool cancel = false);

    /// One more store, with folders of its own.
    void AddStore(const std::wstring& name, const std::vector<std::wstring>& folders);
    /// A calendar that another person, known by his name, shares with this user; a folder by the name of the person:
    /// "Anna\\Calendar".
    void AddSharedCalendar(const std::wstring& person);
    /// The saved items of a folder; "Sent Items" of the default store, or "Store\\Folder".
    std::vector<ItemData> ItemsIn(const std::wstring& folder) const;
    /// The items that left, oldest first.
    std::vector<ItemData> Delivered() const;
    std::filesystem::path DeliveredFolder() const;
    /// Whether an inspector shows the item with this EntryID.
    bool IsOpen(const std::wstring& entryId) const;
    size_t OpenInspectors() const;
    /// Whether the item of a send that was stopped has left after all: somebody sent it himself later.
    static bool HasLeft(const SendResult& result);
    /// Whether that item is no more, moved under another ID or deleted, without having left.
    static bool IsGone(const SendResult& result);

    /// The explorer's window; null when there is none.
    HWND ExplorerWindow() const;
    /// The user opens the main window, unless it is open, or closes it.
    void OpenExplorer(bool enabled = true);
    void CloseExplorer();
    /// Runs the message loop until the condition holds. False: the time ran out first.
    bool RunUntil(const std::function<bool()>& condition, DWORD milliseconds = 10000);
    /// Handles the messages that wait, as between two things that the user does.
    static void HandleMessages();

    /// Loads the registered add-ins in the order of their names; those that fail are not loaded again until somebody
    /// sets LoadBehavior.
    std::vector<AddInLoad> LoadAddIns();
    /// OnBeginShutdown and OnDisconnection to every loaded add-in. Without this call none is told of the end.
    void TellShutdown();

    Recorder& Calls();
    Faults& Failures();
    const std::wstring& Caption() const;

private:
    struct Apartment_;

    std::unique_ptr<Apartment_> apartment_; ///< first in, last out: everything below calls COM
    std::unique_ptr<ProfileLock> lock_;
    std::shared_ptr<Session> session_;
    std::unique_ptr<Window> explorer_;
    DispatchPtr application_;
    AddIns addIns_;
};

} // namespace stand_ins
