#include "tests/outlook/MeetingTest.h"

#include "agent/apps/outlook/CommonUtils.h"

namespace outlook_tests {

using stand_ins::ItemData;
using stand_ins::ItemKind;

ItemData Request() {
    return {.kind = ItemKind::Meeting,
            .subject = L"Review",
            .body = L"Room 4.",
            .recipients = {{.name = L"You", .address = L"you@b.example"}},
            .attachments = {{.fileName = L"plan.txt", .content = "the plan"}}};
}

ItemData Forward() {
    ItemData meeting = Request();
    meeting.subject = L"FW: Review";
    return meeting;
}

ItemData OfClass(const wchar_t* messageClass) {
    ItemData meeting = Request();
    meeting.messageClass = messageClass;
    return meeting;
}

ItemData Recurring(ItemData meeting, long state) {
    meeting.recurrenceState = state;
    return meeting;
}

ItemData Unlinked(ItemData meeting) {
    meeting.linkBroken = true;
    return meeting;
}

ItemData AppointmentOf(ItemData meeting) {
    meeting.kind = ItemKind::Appointment;
    meeting.subject = L"Review";
    meeting.messageClass.clear();
    meeting.linkBroken = false;
    return meeting;
}

void MeetingTest::Start(ItemData meeting) {
    appointment = outlook->SavedItem(AppointmentOf(meeting), L"Calendar");
    meeting.relatedId = AppointmentId();
    item = outlook->SavedItem(meeting);
    handler = std::make_unique<Meeting>(Outlook::_MeetingItemPtr(item.GetInterfacePtr()));
    ClearTraces();
}

void MeetingTest::StartWithoutAppointment(ItemData meeting) {
    Start(Unlinked(std::move(meeting)));
    stand_ins::Invoke(appointment, L"Delete");
    ClearTraces();
}

void MeetingTest::StartWithLedger(ItemData meeting) {
    Start(Unlinked(std::move(meeting)));
    vorlek::CommonUtils::AddToInspectedItems(ItemId(), AppointmentId(), nullptr);
    ClearTraces();
}

void MeetingTest::ClearTraces() {
    outlook->Calls().Clear();
    log.Clear();
}

std::vector<std::wstring> MeetingTest::Ledger() {
    std::vector<std::wstring> ids;
    vorlek::CommonUtils::GetInspectedItemIds(ids, nullptr);
    return ids;
}

std::vector<std::wstring> MeetingTest::SubjectsIn(const std::wstring& folderName) const {
    std::vector<std::wstring> subjects;
    for (const ItemData& each : outlook->ItemsIn(folderName)) {
        subjects.push_back(each.subject);
    }
    return subjects;
}

std::wstring MeetingTest::File(const std::wstring& name, const std::string& bytes) {
    test_support::WriteBytes(folder / name, bytes);
    return (folder / name).wstring();
}

} // namespace outlook_tests
