#include "stand-ins/outlook/Outlook.h"

#include <algorithm>
#include <stdexcept>

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Invitation.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/Session.h"
#include "stand-ins/outlook/TaskRequest.h"

namespace stand_ins {

namespace {

FolderPath PathOf(const std::wstring& folder) {
    return folder.find(L'\\') == std::wstring::npos ? FolderPath(kDefaultStore) / folder : FolderPath(folder);
}

// The item in memory; what it brings along is saved.
std::shared_ptr<ItemRecord> MakeRecord(Session& session, ItemData item, FolderPath folder) {
    item.entryId.clear();
    const std::vector<ItemData> related = std::exchange(item.related, {});
    auto record = std::make_shared<ItemRecord>(std::move(item), std::move(folder));
    if (!related.empty()) {
        const auto other = MakeRecord(session, related[0], Store::HomeOf(related[0].kind));
        session.Save(other);
        record->related = other;
    } else if (record->data.kind == ItemKind::Meeting && record->data.relatedId.empty()) {
        AddToCalendar(session, *record);
    }
    return record;
}

} // namespace

struct Outlook::Apartment_ {
    Apartment_() {
        if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
            throw std::runtime_error("this thread cannot be a single-threaded apartment");
        }
    }
    ~Apartment_() { CoUninitialize(); }
};

Outlook::Outlook(OutlookOptions options)
    : apartment_(std::make_unique<Apartment_>()),
      lock_(std::make_unique<ProfileLock>(options.profile)),
      session_(std::make_shared<Session>(std::move(options))) {
    session_->BecomeCurrent();
    if (session_->options.explorer != ExplorerState::Missing) {
        OpenExplorer(session_->options.explorer == ExplorerState::Shown);
    }
    application_ = session_->Root();
}

Outlook::~Outlook() {
    session_->End();
}

DispatchPtr Outlook::Application() const {
    return application_;
}

DispatchPtr Outlook::NewItem(ItemData data) {
    FolderPath folder = Store::HomeOf(data.kind);
    const std::scoped_lock lock(session_->lock);
    return session_->Show(MakeRecord(*session_, std::move(data), std::move(folder)));
}

DispatchPtr Outlook::NewMail(ItemData data) {
    data.kind = ItemKind::Mail;
    return NewItem(std::move(data));
}

DispatchPtr Outlook::NewPost(ItemData data) {
    data.kind = ItemKind::Post;
    return NewItem(std::move(data));
}

DispatchPtr Outlook::SavedItem(ItemData data, const std::wstring& folder) {
    const std::scoped_lock lock(session_->lock);
    const auto record = MakeRecord(*session_, std::move(data), PathOf(folder));
    session_->Save(record);
    return session_->Show(record);
}

DispatchPtr Outlook::NewRequestFor(const DispatchPtr& task) {
    return session_->Show(RequestFor(RecordOf(task)));
}

SendResult Outlook::Send(const DispatchPtr& item) {
    const auto record = RecordOf(item);
    if (!record) {
        throw std::invalid_argument("what is to be sent is no item of this Outlook");
    }
    if (record->data.kind == ItemKind::Task) {
        return Send(NewRequestFor(item));
    }
    const std::scoped_lock lock(session_->lock);
    SendResult result;
    result.item = record;
    try {
        record->CheckAlive();
        session_->OpenInspector(record);
        const bool left =
            record->data.kind == ItemKind::Appointment ? Invite(*session_, record) : session_->Submit(record, item);
        result.outcome = left ? SendResult::Outcome::Sent : SendResult::Outcome::Stopped;
        session_->LetWordClose();
    } catch (const Failure& failure) {
        result.error = failure.result;
        result.reason = failure.words;
    }
    // Unless it was sent, or whoever stopped it took it away, it stays on the screen. Should the program end, it is in
    // Drafts, and what it is about has a place, too.
    if (result.outcome != SendResult::Outcome::Sent && !record->dead) {
        if (record->related && !record->related->dead) {
            session_->Save(record->related);
        }
        session_->Save(record);
    }
    if (!record->dead) {
        result.entryId = record->data.entryId;
    }
    return result;
}

bool Outlook::RaiseItemSend(IDispatch* item, bool cancel) {
    return session_->RaiseItemSend(item, cancel);
}

void Outlook::AddStore(const std::wstring& name, const std::vector<std::wstring>& folders) {
    session_->store.AddStore(name, folders);
}

void Outlook::AddSharedCalendar(const std::wstring& person) {
    session_->store.AddSharedCalendar(person);
}

std::vector<ItemData> Outlook::ItemsIn(const std::wstring& folder) const {
    const FolderPath path = PathOf(folder);
    const std::scoped_lock lock(session_->lock);
    std::vector<ItemData> items;
    for (const std::wstring& entryId : session_->store.EntryIdsIn(path)) {
        items.push_back(session_->store.Read(path, entryId));
    }
    return items;
}

std::vector<ItemData> Outlook::Delivered() const {
    return session_->store.Delivered();
}

std::filesystem::path Outlook::DeliveredFolder() const {
    return session_->store.DeliveredFolder();
}

bool Outlook::IsOpen(const std::wstring& entryId) const {
    const std::scoped_lock lock(session_->lock);
    return std::ranges::any_of(session_->Inspectors(),
                               [&](const auto& record) { return record->data.entryId == entryId; });
}

size_t Outlook::OpenInspectors() const {
    const std::scoped_lock lock(session_->lock);
    return session_->Inspectors().size();
}

bool Outlook::HasLeft(const SendResult& result) {
    return result.item && result.item->data.sent;
}

bool Outlook::IsGone(const SendResult& result) {
    return result.item && result.item->dead && !result.item->data.sent;
}

HWND Outlook::ExplorerWindow() const {
    return explorer_ ? explorer_->Handle() : nullptr;
}

void Outlook::OpenExplorer(bool enabled) {
    if (!explorer_) {
        explorer_ = std::make_unique<Window>(session_->caption, [this] { CloseExplorer(); });
        EnableWindow(explorer_->Handle(), enabled);
        session_->hasExplorer = true;
    }
}

void Outlook::CloseExplorer() {
    session_->hasExplorer = false;
    explorer_.reset();
}

bool Outlook::RunUntil(const std::function<bool()>& condition, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!condition()) {
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            return false;
        }
        // Not longer than a moment: the condition may come true without a message.
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(std::min<ULONGLONG>(end - now, 20)), QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
        HandleMessages();
    }
    return true;
}

void Outlook::HandleMessages() {
    for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

std::vector<AddInLoad> Outlook::LoadAddIns() {
    return addIns_.Load(application_);
}

void Outlook::TellShutdown() {
    addIns_.TellShutdown();
}

Recorder& Outlook::Calls() {
    return session_->calls;
}

Faults& Outlook::Failures() {
    return session_->failures;
}

const std::wstring& Outlook::Caption() const {
    return session_->caption;
}

} // namespace stand_ins
