#include "stand-ins/outlook/Session.h"

#include <algorithm>
#include <cmath>
#include <cwctype>

#include "stand-ins/outlook/Application.h"
#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Inspector.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/TaskRequest.h"

namespace stand_ins {
namespace {

constexpr DISPID kItemSend = 0xF002;
constexpr const wchar_t* kOtherTitle = L"Document1 - Microsoft Word";

// Local time as an OLE date, to the millisecond.
double Now() {
    FILETIME utc{};
    FILETIME local{};
    GetSystemTimeAsFileTime(&utc);
    FileTimeToLocalFileTime(&utc, &local);
    const ULARGE_INTEGER ticks{{local.dwLowDateTime, local.dwHighDateTime}};
    constexpr double kTicksOfDay = 24.0 * 60 * 60 * 10'000'000;
    constexpr double kDaysFrom1601To1899 = 109205;
    return static_cast<double>(ticks.QuadPart) / kTicksOfDay - kDaysFrom1601To1899;
}

} // namespace

Session::Session(OutlookOptions given)
    : options(std::move(given)),
      caption(std::wstring(L"Inbox - ") + kDefaultStore + L" - Outlook"),
      store(options.profile),
      thread_(GetCurrentThreadId()) {}

std::weak_ptr<Session> Session::current_;

std::shared_ptr<Session> Session::Current() {
    return current_.lock();
}

void Session::BecomeCurrent() {
    current_ = weak_from_this();
}

bool Session::IsBefore2007_() const {
    const int version = _wtoi(options.version.c_str());
    return version > 0 && version < 12;
}

bool Session::MayCall() const {
    return !options.strictThreads || GetCurrentThreadId() == thread_;
}

void Session::End() {
    // A sink's release may come back to Unadvise.
    const auto sinks = std::move(sinks_);
    sinks_.clear();
    inspectors_.clear();
    failures.Clear();
}

Session::RecordPtr Session::Open(const FolderPath& folder, const std::wstring& entryId) {
    if (const auto known = open_.find(entryId); known != open_.end()) {
        if (RecordPtr record = known->second.lock()) {
            return record;
        }
    }
    auto record = std::make_shared<ItemRecord>(store.Read(folder, entryId), folder);
    Remember_(record);
    return record;
}

void Session::Remember_(const RecordPtr& record) {
    std::erase_if(open_, [](const auto& entry) { return entry.second.expired(); });
    open_[record->data.entryId] = record;
}

Session::RecordPtr Session::OpenById(const std::wstring& entryId, const std::wstring& storeId) {
    if (entryId.empty() || !std::ranges::all_of(entryId, [](wchar_t c) { return std::iswxdigit(c) != 0; })) {
        throw Failure{kInvalidEntryId, L"The entry ID is not one."};
    }
    const auto name = storeId.empty() ? std::optional<std::wstring>(kDefaultStore) : store.StoreName(storeId);
    if (!name) {
        throw Failure{kNotFound, L"No store has this ID."};
    }
    const auto folder = store.Find(*name, entryId);
    if (!folder) {
        throw Failure{options.deletedItemError, L"The store does not hold this item."};
    }
    return Open(*folder, entryId);
}

void Session::Save(const RecordPtr& record) {
    record->CheckAlive();
    if (!record->dirty) {
        return;
    }
    ItemData item = record->Snapshot();
    if (item.entryId.empty()) {
        item.entryId = record->futureId.empty() ? NewEntryId() : record->futureId;
    }
    item.lastModificationTime = std::max(Now(), std::nextafter(item.lastModificationTime, HUGE_VAL));
    for (AttachmentData& attachment : item.attachments) {
        attachment.saved = true;
    }
    store.Write(record->folder, item);
    // Only now: a failed save leaves the item as it was.
    record->data.entryId = item.entryId;
    record->data.lastModificationTime = item.lastModificationTime;
    for (const auto& attachment : record->attachments) {
        attachment->saved = true;
    }
    record->dirty = false;
    Remember_(record);
}

Session::RecordPtr Session::Copy(const RecordPtr& record) {
    record->CheckAlive();
    ItemData item = record->Snapshot();
    item.entryId.clear();
    auto copy = std::make_shared<ItemRecord>(std::move(item), record->folder);
    Save(copy);
    return copy;
}

Session::RecordPtr Session::Move(const RecordPtr& record, const FolderPath& target) {
    Save(record);
    if (target == record->folder) {
        return record;
    }
    ItemData item = record->Snapshot();
    if (!options.keepsEntryIdOnMove) {
        item.entryId = NewEntryId();
    }
    store.Write(target, item);
    store.Remove(record->folder, record->data.entryId);
    if (options.keepsEntryIdOnMove) {
        record->folder = target;
        return record;
    }
    Leave_(record);
    return Open(target, item.entryId);
}

void Session::Delete(const RecordPtr& record) {
    record->CheckAlive();
    if (!record->data.entryId.empty()) {
        const FolderPath deleted = Store::DefaultFolderPath(Deleted);
        if (record->folder != deleted) {
            ItemData item = record->Snapshot();
            item.entryId = NewEntryId();
            store.Write(deleted, item);
        }
        store.Remove(record->folder, record->data.entryId);
    }
    Leave_(record);
}

bool Session::Submit(const RecordPtr& record, IDispatch* item) {
    record->CheckAlive();
    const bool cancelled = RaiseItemSend(item, false);
    if (cancelled) {
        return false;
    }
    Deliver(record);
    return true;
}

void Session::Deliver(const RecordPtr& record) {
    record->CheckAlive();
    if (record->recipients.empty()) {
        throw Failure{kNoRecipients, L"There must be at least one name or contact group in the To, Cc, or Bcc box."};
    }
    if (std::ranges::any_of(record->recipients, [](const auto& recipient) { return !recipient->resolved; })) {
        throw Failure{E_FAIL, L"Outlook does not recognize one or more names."};
    }
    const Call submission{L"Transport.Submit", {}, GetCurrentThreadId()};
    calls.Add(submission);
    failures.Apply(submission);
    TakeOverTask(*this, *record);
    ItemData sent = record->Snapshot();
    const std::wstring before = sent.entryId;
    sent.entryId = NewEntryId();
    sent.sent = true;
    sent.lastModificationTime = std::max(Now(), std::nextafter(sent.lastModificationTime, HUGE_VAL));
    store.Deliver(sent);
    store.Write(Store::DefaultFolderPath(SentItems), sent);
    if (!before.empty()) {
        store.Remove(record->folder, before);
    }
    record->data.sent = true;
    Leave_(record);
    failures.ApplyAfter(submission);
}

void Session::ReportCancelledSend() const {
    if (FAILED(options.cancelledSendError)) {
        throw Failure{options.cancelledSendError, L"The send was cancelled."};
    }
}

void Session::Leave_(const RecordPtr& record) {
    open_.erase(record->data.entryId);
    record->dead = true;
    CloseInspector(record);
}

DispatchPtr Session::Show(const RecordPtr& record) {
    return MakeItem(shared_from_this(), record);
}

DispatchPtr Session::Root() {
    return Make<Application>(shared_from_this());
}

void Session::OpenInspector(const RecordPtr& record) {
    if (std::ranges::find(inspectors_, record, &Inspected_::record) != inspectors_.end()) {
        return;
    }
    const bool inWord = IsBefore2007_() && options.editor != Editor::Outlook;
    const std::wstring title =
        options.editor == Editor::WordUnderAnotherTitle ? kOtherTitle : Inspector::CaptionOf(record->data);
    auto window = std::make_unique<Window>(
        title, [this, shown = std::weak_ptr(record)] { CloseByUser_(shown.lock()); },
        inWord ? Window::kWordClass : Window::kOutlookClass);
    inspectors_.push_back({record, std::move(window)});
}

void Session::CloseByUser_(const RecordPtr& record) {
    const std::scoped_lock guard(lock);
    try {
        if (record && IsBefore2007_() && options.editor != Editor::Outlook) {
            Save(record); // Word saves what it closes
        }
        CloseInspector(record);
    } catch (const Failure&) {
        // What cannot be saved stays open.
    } catch (const std::exception&) {
    }
}

void Session::LetWordClose() {
    std::vector<HWND> windows;
    std::ranges::transform(inspectors_, std::back_inserter(windows),
                           [](const Inspected_& shown) { return shown.window->Handle(); });
    for (const HWND window : windows) {
        for (MSG message; PeekMessageW(&message, window, WM_CLOSE, WM_CLOSE, PM_REMOVE);) {
            DispatchMessageW(&message);
        }
    }
}

void Session::CloseInspector(const RecordPtr& record) {
    const auto shown = std::ranges::find(inspectors_, record, &Inspected_::record);
    if (shown != inspectors_.end()) {
        const Inspected_ held = std::move(*shown); // its end may come back here
        inspectors_.erase(shown);
    }
}

std::vector<Session::RecordPtr> Session::Inspectors() const {
    std::vector<RecordPtr> records;
    std::ranges::transform(inspectors_, std::back_inserter(records), &Inspected_::record);
    return records;
}

DWORD Session::Advise(const DispatchPtr& sink) {
    sinks_[++lastCookie_] = sink;
    return lastCookie_;
}

bool Session::Unadvise(DWORD cookie) {
    return sinks_.erase(cookie) == 1;
}

bool Session::RaiseItemSend(IDispatch* item, bool cancel) {
    calls.Add({L"Application.ItemSend", {_variant_t(item)}, GetCurrentThreadId()});
    VARIANT_BOOL cancelled = cancel ? VARIANT_TRUE : VARIANT_FALSE;
    // A copy: a sink may unadvise itself or another while it is called.
    for (const auto& [cookie, sink] : std::map(sinks_)) {
        if (!sinks_.contains(cookie)) {
            continue;
        }
        VARIANT arguments[2];
        VariantInit(&arguments[0]);
        arguments[0].vt = VT_BOOL | VT_BYREF;
        arguments[0].pboolVal = &cancelled;
        VariantInit(&arguments[1]);
        arguments[1].vt = VT_DISPATCH;
        arguments[1].pdispVal = item;
        DISPPARAMS parameters{arguments, nullptr, 2, 0};
        _variant_t ignored;
        sink->Invoke(kItemSend, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, &ignored, nullptr,
                     nullptr);
    }
    return cancelled != VARIANT_FALSE;
}

} // namespace stand_ins
