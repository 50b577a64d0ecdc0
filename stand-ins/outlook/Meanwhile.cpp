#include "stand-ins/outlook/Meanwhile.h"

#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "stand-ins/outlook/Death.h"
#include "stand-ins/outlook/Dispatch.h"
#include "stand-ins/outlook/Store.h"

namespace stand_ins {
namespace {

constexpr const wchar_t* kArchive = L"Archive";
constexpr const wchar_t* kAddition = L"One more thing: see you on Friday.";

void Edit(const DispatchPtr& item) {
    const bool isMail = GetText(item, L"MessageClass").starts_with(L"IPM.Note");
    if (isMail && GetNumber(item, L"BodyFormat") == Html) {
        Put(item, L"HTMLBody", (GetText(item, L"HTMLBody") + L"<p>" + kAddition + L"</p>").c_str());
    } else {
        Put(item, L"Body", (GetText(item, L"Body") + L"\r\n" + kAddition).c_str());
    }
    Invoke(item, L"Save");
}

void Move(Outlook& outlook, const DispatchPtr& item) {
    outlook.AddStore(kDefaultStore, {kArchive});
    const DispatchPtr stores = GetObject(GetObject(item, L"Session"), L"Folders");
    const DispatchPtr folders = GetObject(GetObject(stores, L"Item", {kDefaultStore}), L"Folders");
    Invoke(item, L"Move", {_variant_t(GetObject(folders, L"Item", {kArchive}).GetInterfacePtr())});
}

void Do(Deed::Kind kind, Outlook& outlook, const DispatchPtr& item) {
    switch (kind) {
    case Deed::Kind::Edit:
        return Edit(item);
    case Deed::Kind::Move:
        return Move(outlook, item);
    case Deed::Kind::Delete:
        Invoke(item, L"Delete");
        return;
    case Deed::Kind::CloseExplorer:
        return outlook.CloseExplorer();
    case Deed::Kind::Die:
        return Die();
    }
}

} // namespace

struct Meanwhile::Watch_ {
    std::mutex lock;
    DWORD user = GetCurrentThreadId();
    std::map<DWORD, std::wstring> found; ///< by thread, the item that it looked for last
    std::set<std::wstring> seen;
    std::vector<std::wstring> due;

    void SeeSearch(const Call& call) {
        const std::scoped_lock guard(lock);
        if (call.thread != user) {
            found[call.thread] = static_cast<const wchar_t*>(_bstr_t(call.arguments.at(0)));
        }
    }
    void SeeReading(const Call& call) {
        const std::scoped_lock guard(lock);
        if (call.thread != user && seen.insert(found[call.thread]).second) {
            due.push_back(found[call.thread]);
        }
    }
};

Meanwhile::Meanwhile(Outlook& outlook, std::vector<Deed> deeds)
    : outlook_(outlook), deeds_(std::move(deeds)), watch_(std::make_shared<Watch_>()) {
    if (deeds_.empty()) {
        return;
    }
    outlook.Failures().On(L"NameSpace.GetItemFromID", [watch = watch_](const Call& call) {
        watch->SeeSearch(call);
        return std::optional<_variant_t>();
    });
    for (const wchar_t* reading : {L"MailItem.LastModificationTime", L"AppointmentItem.LastModificationTime"}) {
        outlook.Failures().On(reading, [watch = watch_](const Call& call) {
            watch->SeeReading(call);
            return std::optional<_variant_t>();
        });
    }
}

void Meanwhile::DoDue() {
    std::vector<std::wstring> due;
    {
        const std::scoped_lock guard(watch_->lock);
        due.swap(watch_->due);
    }
    for (const std::wstring& entryId : due) {
        try {
            DoTo_(entryId);
        } catch (const _com_error&) {
            // It has left: the inspection was faster than its user.
        }
    }
}

void Meanwhile::DoTo_(const std::wstring& entryId) {
    const DispatchPtr session = GetObject(outlook_.Application(), L"Session");
    DispatchPtr item(Invoke(session, L"GetItemFromID", {entryId.c_str()}));
    if (GetText(item, L"MessageClass").starts_with(L"IPM.Schedule.Meeting.")) {
        // What the user sees of a meeting is its appointment.
        item = Invoke(item, L"GetAssociatedAppointment", {_variant_t(false)});
    }
    for (const Deed& deed : deeds_) {
        if (GetText(item, L"Subject").find(deed.text) != std::wstring::npos ||
            GetText(item, L"Body").find(deed.text) != std::wstring::npos) {
            return Do(deed.kind, outlook_, item);
        }
    }
}

} // namespace stand_ins
