#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/apps/outlook/MeetingHandler.h"
#include "tests/outlook/OldOutlookTest.h"

namespace outlook_tests {

/// The handler of a meeting item, with what a test calls directly.
class Meeting : public vorlek::MeetingHandler {
public:
    using MeetingHandler::LabelBody;
    using MeetingHandler::LabelSubject;
    using MeetingHandler::MeetingHandler;
};

inline constexpr wchar_t kResponse[] = L"IPM.Schedule.Meeting.Resp.Pos";
inline constexpr wchar_t kCancellation[] = L"IPM.Schedule.Meeting.Canceled";

/// An invitation "Review", its appointment of the same subject.
stand_ins::ItemData Request();
/// The same forwarded: "FW: Review".
stand_ins::ItemData Forward();
/// A response or cancellation, by its message class.
stand_ins::ItemData OfClass(const wchar_t* messageClass);
/// Of a series, or of one of it.
stand_ins::ItemData Recurring(stand_ins::ItemData meeting, long state);
/// One whose appointment Outlook does not find by itself.
stand_ins::ItemData Unlinked(stand_ins::ItemData meeting);
/// The appointment "Review" of any of these.
stand_ins::ItemData AppointmentOf(stand_ins::ItemData meeting);

/// An Outlook of version 16, a machine without Redemption, and one meeting.
class MeetingTest : public OutlookTest {
protected:
    /// A meeting item saved in Drafts, its appointment in the calendar, and its handler; log and calls are cleared.
    void Start(stand_ins::ItemData meeting);
    /// The same without an appointment anywhere.
    void StartWithoutAppointment(stand_ins::ItemData meeting = Request());
    /// The same, its link broken, its ledger entry leading to the appointment.
    void StartWithLedger(stand_ins::ItemData meeting = Request());
    void InstallRedemption() { redemption_.emplace(); }
    void RemoveRedemption() { redemption_.reset(); }
    /// Outlook of version 11, which the handler takes for what it is from now on.
    void BecomeOld() { SetVersion(kVersion11); }
    void ClearTraces();

    std::wstring ItemId() const { return stand_ins::GetText(item, L"EntryID"); }
    std::wstring AppointmentId() const { return stand_ins::GetText(appointment, L"EntryID"); }
    std::vector<std::wstring> Debug() const { return log.Texts(L"DEBUG"); }
    std::vector<std::wstring> Infos() const { return log.Texts(L"INFO"); }
    static std::vector<std::wstring> Ledger();
    /// The subjects of the items in a folder.
    std::vector<std::wstring> SubjectsIn(const std::wstring& folder) const;
    std::wstring File(const std::wstring& name, const std::string& bytes);

    stand_ins::DispatchPtr item;
    stand_ins::DispatchPtr appointment;
    std::unique_ptr<Meeting> handler;

private:
    std::optional<RedemptionLibrary> redemption_;
};

} // namespace outlook_tests
