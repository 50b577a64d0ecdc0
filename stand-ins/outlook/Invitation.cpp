// Meetings and their appointments. What the real Outlook does between the two is not documented; the simple way is
// taken: a meeting item knows its appointment by EntryID, also before the appointment's first save, and each send of an
// appointment makes a meeting item of its own.
#include "stand-ins/outlook/Invitation.h"

#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

// "Accepted: Plans" and "FW: Plans" are about "Plans".
std::wstring WithoutPrefix(const std::wstring& subject) {
    const size_t colon = subject.find(L": ");
    return colon == std::wstring::npos ? subject : subject.substr(colon + 2);
}

std::shared_ptr<ItemRecord> InvitationTo(const std::shared_ptr<ItemRecord>& appointment) {
    if (appointment->data.entryId.empty() && appointment->futureId.empty()) {
        appointment->futureId = NewEntryId();
    }
    ItemData request = appointment->Snapshot();
    request.kind = ItemKind::Meeting;
    request.messageClass.clear();
    request.entryId.clear();
    request.lastModificationTime = 0;
    request.sent = false;
    auto record = std::make_shared<ItemRecord>(std::move(request), Store::HomeOf(ItemKind::Meeting));
    record->related = appointment;
    return record;
}

void SaveAsSent(Session& session, const std::shared_ptr<ItemRecord>& appointment) {
    if (!appointment->dead) {
        appointment->data.sent = true;
        appointment->dirty = true;
        session.Save(appointment);
    }
    session.CloseInspector(appointment);
}

} // namespace

std::shared_ptr<ItemRecord> AppointmentOf(Session& session, ItemRecord& meeting) {
    if (meeting.data.linkBroken) {
        return nullptr;
    }
    if (meeting.related && !meeting.related->dead) {
        return meeting.related;
    }
    for (const FolderPath& store : session.store.FoldersIn({})) {
        if (const auto folder = session.store.Find(store.wstring(), meeting.data.relatedId)) {
            meeting.related = session.Open(*folder, meeting.data.relatedId);
            return meeting.related;
        }
    }
    return nullptr;
}

std::shared_ptr<ItemRecord> AddToCalendar(Session& session, ItemRecord& meeting) {
    ItemData item = meeting.Snapshot();
    item.kind = ItemKind::Appointment;
    item.messageClass.clear();
    item.entryId.clear();
    item.relatedId.clear();
    item.linkBroken = false;
    item.subject = WithoutPrefix(item.subject);
    meeting.related = std::make_shared<ItemRecord>(std::move(item), Store::HomeOf(ItemKind::Appointment));
    session.Save(meeting.related);
    return meeting.related;
}

bool Invite(Session& session, const std::shared_ptr<ItemRecord>& appointment) {
    appointment->CheckAlive();
    const auto request = InvitationTo(appointment);
    const bool left = session.Submit(request, session.Show(request));
    if (left) {
        SaveAsSent(session, appointment);
    } else if (!appointment->dead) {
        session.Save(appointment);
    }
    return left;
}

void DeliverInvitation(Session& session, const std::shared_ptr<ItemRecord>& appointment) {
    appointment->CheckAlive();
    session.Deliver(InvitationTo(appointment));
    SaveAsSent(session, appointment);
}

} // namespace stand_ins
