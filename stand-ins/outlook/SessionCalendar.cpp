// Meetings and their appointments. What the real Outlook does between the two is not documented; the simple way is
// taken: a meeting item knows its appointment by EntryID, also before the appointment's first save, and each send of an
// appointment makes a meeting item of its own.
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

// "Accepted: Plans" and "FW: Plans" are about "Plans".
std::wstring WithoutPrefix(const std::wstring& subject) {
    const size_t colon = subject.find(L": ");
    return colon == std::wstring::npos ? subject : subject.substr(colon + 2);
}

ItemData Invitation(const ItemRecord& appointment, const std::wstring& appointmentId) {
    ItemData request = appointment.Snapshot();
    request.kind = ItemKind::Meeting;
    request.messageClass.clear();
    request.entryId.clear();
    request.lastModificationTime = 0;
    request.sent = false;
    request.appointmentId = appointmentId;
    return request;
}

} // namespace

std::wstring Session::IdOf_(const RecordPtr& record) {
    if (!record->data.entryId.empty()) {
        return record->data.entryId;
    }
    if (record->futureId.empty()) {
        record->futureId = NewEntryId();
    }
    open_[record->futureId] = record;
    return record->futureId;
}

Session::RecordPtr Session::AppointmentOf(const ItemRecord& meeting) {
    const std::wstring& id = meeting.data.appointmentId;
    if (meeting.data.linkBroken || id.empty()) {
        return nullptr;
    }
    // Not to one of somebody else's calendar, though it may be open.
    const auto isOwn = [&](const FolderPath& folder) { return !store.SharedCalendarOf(folder.begin()->wstring()); };
    if (const auto open = open_.find(id); open != open_.end()) {
        if (RecordPtr record = open->second.lock(); record && !record->dead && isOwn(record->folder)) {
            return record;
        }
    }
    for (const FolderPath& place : store.FoldersIn({})) {
        if (const auto folder = store.Find(place.wstring(), id)) {
            return Open(*folder, id);
        }
    }
    return nullptr;
}

Session::RecordPtr Session::AddToCalendar(const RecordPtr& meeting) {
    ItemData item = meeting->Snapshot();
    item.kind = ItemKind::Appointment;
    item.messageClass.clear();
    item.entryId.clear();
    item.subject = WithoutPrefix(item.subject);
    item.linkBroken = false;
    auto appointment = std::make_shared<ItemRecord>(std::move(item), Store::HomeOf(ItemKind::Appointment));
    Save(appointment);
    meeting->data.appointmentId = appointment->data.entryId;
    meeting->dirty = true;
    return appointment;
}

bool Session::Invite(const RecordPtr& appointment) {
    appointment->CheckAlive();
    const auto request =
        std::make_shared<ItemRecord>(Invitation(*appointment, IdOf_(appointment)), Store::HomeOf(ItemKind::Meeting));
    const bool cancelled = RaiseItemSend(Show(request), false);
    if (!cancelled) {
        Transmit_(request);
    }
    if (!appointment->dead) {
        appointment->data.sent = appointment->data.sent || !cancelled;
        appointment->dirty = appointment->dirty || !cancelled;
        Save(appointment);
    }
    if (!cancelled) {
        CloseInspector(appointment);
    }
    return !cancelled;
}

} // namespace stand_ins
