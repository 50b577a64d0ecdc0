#pragma once
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "stand-ins/outlook/Dispatch.h"
#include "stand-ins/outlook/Faults.h"
#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Options.h"
#include "stand-ins/outlook/Recorder.h"
#include "stand-ins/outlook/Store.h"
#include "stand-ins/outlook/Window.h"

namespace stand_ins {

/// What all objects of one running Outlook share: its options, its store, the open items and inspectors, the sinks of
/// its events.
class Session : public std::enable_shared_from_this<Session> {
public:
    explicit Session(OutlookOptions options);

    /// The session of this process's Outlook, for those who are asked without an item; null if there is none.
    static std::shared_ptr<Session> Current();
    void BecomeCurrent();

    /// Whether this thread may call: with strict threads only the one that started Outlook.
    bool MayCall() const;
    /// Lets go of sinks, faults and inspectors, any of which may hold objects that hold the session.
    void End();

    using RecordPtr = std::shared_ptr<ItemRecord>;

    /// The record of a saved item: the one already open, or a new one from the store.
    RecordPtr Open(const FolderPath& folder, const std::wstring& entryId);
    /// GetItemFromID. An empty store ID means the default store. Failures as of MAPI.
    RecordPtr OpenById(const std::wstring& entryId, const std::wstring& storeId);
    /// Saves a changed or a new item; the modification time moves and never repeats.
    void Save(const RecordPtr& record);
    RecordPtr Copy(const RecordPtr& record);
    /// The record of the item in its new place; the old one is dead unless IDs are kept.
    RecordPtr Move(const RecordPtr& record, const FolderPath& target);
    void Delete(const RecordPtr& record);
    /// Raises ItemSend and, unless it is cancelled, sends: whether the item left. Failure: why it could not.
    bool Submit(const RecordPtr& record, IDispatch* item);
    /// Tells a program whose Send was cancelled what the options want.
    void ReportCancelledSend() const;
    /// Sends without the event, as Extended MAPI does. Failure: why it could not.
    void Deliver(const RecordPtr& record);

    /// The object that shows a record, of the item's kind.
    DispatchPtr Show(const RecordPtr& record);
    DispatchPtr Root();

    /// Whether items are written in Word: always since Outlook 2007, before only if the user wants it.
    bool IsWordMail() const { return !IsBefore2007_() || options.editor != Editor::Outlook; }

    void OpenInspector(const RecordPtr& record);
    void CloseInspector(const RecordPtr& record);
    /// Word is a program of its own: what was posted to its windows happens as soon as Outlook's thread is free.
    void LetWordClose();
    /// The items that an inspector shows, the last one opened at the end.
    std::vector<RecordPtr> Inspectors() const;

    DWORD Advise(const DispatchPtr& sink);
    bool Unadvise(DWORD cookie);
    /// The result is Cancel after all sinks.
    bool RaiseItemSend(IDispatch* item, bool cancel);

    const OutlookOptions options;
    const std::wstring caption;
    Recorder calls;
    Faults failures;
    Store store;
    std::atomic<bool> hasExplorer = false;
    /// Held during every call of a member, for callers of other threads.
    std::recursive_mutex lock;

private:
    struct Inspected_ {
        RecordPtr record;
        std::unique_ptr<Window> window;
    };

    bool IsBefore2007_() const;
    void CloseByUser_(const RecordPtr& record);
    void Remember_(const RecordPtr& record);
    void Leave_(const RecordPtr& record);

    static std::weak_ptr<Session> current_;

    const DWORD thread_;
    std::map<std::wstring, std::weak_ptr<ItemRecord>> open_;
    std::vector<Inspected_> inspectors_;
    std::map<DWORD, DispatchPtr> sinks_;
    DWORD lastCookie_ = 0;
};

} // namespace stand_ins
