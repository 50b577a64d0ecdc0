#include "agent/apps/outlook/MeetingHandler.h"

#include <cwchar>

#include "agent/apps/outlook/CommonUtils.h"

namespace vorlek {
namespace {

constexpr wchar_t kCanceledClass[] = L"IPM.Schedule.Meeting.Canceled";
constexpr wchar_t kResponseClass[] = L"IPM.Schedule.Meeting.Resp.";
constexpr wchar_t kRequestClass[] = L"IPM.Schedule.Meeting.Request";

template <std::size_t Size>
bool StartsWith_(const std::wstring& text, const wchar_t (&start)[Size]) {
    return std::wcsncmp(text.c_str(), start, Size - 1) == 0;
}

} // namespace

LoggerHolder MeetingHandler::logger_;

MeetingHandler::MeetingHandler(Outlook::_MeetingItemPtr item) : ItemWrapper(item) {
    InitLogger(logger_, "vorlek::MeetingHandler::MeetingHandler", false);
    if (!Item_) {
        LOG_ERROR(logger_, L"Null item was passed to the MeetingHandler CTOR");
        return;
    }
    MeetingType_ = Classify_(GetRelatedAppointment_());
}

MeetingItemType MeetingHandler::Classify_(const Outlook::_AppointmentItemPtr& appointment) {
    const std::wstring messageClass = platform::ToWide(Item_->GetMessageClass());
    MeetingItemType type = MeetingItemType::MeetingRequest;
    if (StartsWith_(messageClass, kCanceledClass)) {
        type = MeetingItemType::MeetingCanceled;
    } else if (StartsWith_(messageClass, kResponseClass)) {
        type = MeetingItemType::MeetingResponse;
    } else if (StartsWith_(messageClass, kRequestClass) && appointment &&
               platform::ToWide(appointment->GetSubject()) != platform::ToWide(Item_->GetSubject())) {
        type = MeetingItemType::MeetingForwarded;
    }
    LOG_INFO(logger_, L"Meeting item class " << messageClass << L" is " << static_cast<std::int32_t>(type));
    return type;
}

bool MeetingHandler::QueryType(IDispatchPtr item) {
    return AnswersInterface(item, __uuidof(Outlook::_MeetingItem));
}

bool MeetingHandler::HandleOnSpot() {
    LOG_DEBUG(logger_, L"Checking if the MeetingItem should be handled \"OnSpot\"");
    if (ItemHandler::HandleOnSpot()) {
        return true;
    }
    if (MeetingType_ == MeetingItemType::MeetingCanceled || MeetingType_ == MeetingItemType::MeetingResponse) {
        LOG_DEBUG(logger_, L"The MeetingItem is a response or cancellation which should be handled \"OnSpot\"");
        return true;
    }
    return GlobalConfig::IsOutlookBefore2007() ? IsAppointmentOnSpotRDO_() : IsAppointmentOnSpot_();
}

bool MeetingHandler::IsAppointmentOnSpotRDO_() {
    const Redemption::IRDOAppointmentItemPtr appointment = GetRelatedAppointmentRDO_();
    if (!appointment) {
        LOG_ERROR(logger_, L"Failed to get Associated Appointment! Handle on spot.");
        return true;
    }
    if (appointment->GetIsRecurring()) {
        LOG_INFO(logger_, L"The related appointment is recurring - and should be handled \"OnSpot\". Recurrence state: "
                              << appointment->GetRecurrenceState());
        return true;
    }
    // Here a forwarded meeting is on the spot, below it is not. Both are wanted so.
    return MeetingType_ == MeetingItemType::MeetingForwarded;
}

bool MeetingHandler::IsAppointmentOnSpot_() {
    LOG_DEBUG(logger_, L"Checking if the related appointment is recurring - which should be handled \"OnSpot\"");
    const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_();
    if (!appointment) {
        LOG_ERROR(logger_, L"Failed to get Associated Appointment! Handle on spot.");
        return true;
    }
    if (appointment->GetIsRecurring()) {
        LOG_INFO(logger_, L"The related appointment is recurring - and should be handled \"OnSpot\". Recurrence state: "
                              << appointment->GetRecurrenceState());
        return true;
    }
    LOG_DEBUG(logger_, L"The related appointment is not recurring - and shouldn't be handled \"OnSpot\"");
    return false;
}

void MeetingHandler::Save() {
    try {
        LOG_DEBUG(logger_, L"Save called for meeting - Save the meeting item");
        ItemWrapper::Save();
        LOG_DEBUG(logger_, L"Checking if we need to save the appointment");
        const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_();
        if (!appointment) {
            LOG_ERROR(logger_, L"Couldn't get the related appointment! Save failed.");
            SaveAppointmentWithRDO_();
            return;
        }
        if (const _bstr_t id = appointment->GetEntryID(); id.length() != 0) {
            LOG_DEBUG(logger_, L"No need to save the related appointment, it already has ID " << platform::ToWide(id));
            return;
        }
        LOG_DEBUG(logger_, L"Saving related appointment - as it has no ID");
        appointment->Save();
    } catch (const _com_error& failure) {
        LOG_WARN(logger_,
                 L"MeetingHandler::Save:COM exception: " << failure.ErrorMessage() << L" appointment wasn't saved");
    }
}

void MeetingHandler::SaveAppointmentWithRDO_() {
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"MeetingHandler::SaveAppointmentWithRDO_:Caught a com exception: "},
           .stdException = {L"MeetingHandler::SaveAppointmentWithRDO_:Caught an exception: "},
           .other = {L"MeetingHandler::SaveAppointmentWithRDO_:Unknown error"}},
          [&] {
              LOG_DEBUG(logger_, L"Saveing item using RDO");
              const Redemption::IRDOMailPtr appointment = GetRelatedAppointmentRDO_();
              if (!appointment) {
                  LOG_ERROR(logger_, L"Failed to get Associated Appointment!");
                  return;
              }
              appointment->Save();
              LOG_DEBUG(logger_, L"Successfully save item using RDO object module!");
          });
}

void MeetingHandler::Close() {
    LOG_DEBUG(logger_, L"Closing meeting item");
    if (const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_()) {
        LOG_DEBUG(logger_, L"Closing related appointment");
        appointment->Close(Outlook::olDiscard);
    }
}

void MeetingHandler::Display() {
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception while displaying the meeting: "},
           .stdException = {L"Caught an exception while displaying the meeting: "},
           .other = {L"Caught for Unknown error while displaying the meeting"}},
          [&] {
              const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_();
              if (appointment && !GlobalConfig::IsOutlookBefore2007()) {
                  LOG_DEBUG(logger_, L"Display the related appointment");
                  appointment->Display(_variant_t(static_cast<short>(0)));
              } else {
                  LOG_ERROR(logger_, L"Failed to get appointment - attempting to display with RDO");
                  DisplayWithRDO_();
              }
              DeleteItem_();
          });
}

bool MeetingHandler::DisplayWithRDO_() {
    LOG_DEBUG(logger_, L"Display item using RDO");
    const Redemption::IRDOMailPtr appointment = GetRelatedAppointmentRDO_();
    if (!appointment) {
        LOG_ERROR(logger_, L"Failed to get Associated Appointment!");
        return false;
    }
    appointment->Display(_variant_t(false), _variant_t(0));
    return true;
}

std::wstring MeetingHandler::GetSentItemUniqueID() {
    std::wstring id;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception - returning empty ID: "},
           .stdException = {L"Caught an exception - returning empty ID: "},
           .other = {L"Unknown error - returning empty ID"}},
          [&] {
              LOG_DEBUG(logger_, L"GetSentItemUniqueID called for meeting");
              const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_();
              if (!appointment) {
                  LOG_WARN(logger_, L"Failed to get related appointment - returning MeetingItem id");
                  id = GetItemUniqueID();
                  return;
              }
              std::wstring appointmentId = platform::ToWide(appointment->GetEntryID());
              LOG_DEBUG(logger_, L"Returning ID for the related appointment " << appointmentId);
              id = std::move(appointmentId);
          });
    return id;
}

DATE MeetingHandler::GetLastModificationTime() {
    DATE time = 0;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception - returning old date: "},
           .stdException = {},
           .other = {L"Unknown error - returning old date"}},
          [&] {
              LOG_DEBUG(logger_, L"GetLastModificationTime called for meeting");
              const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_();
              if (!appointment) {
                  LOG_ERROR(logger_, L"Failed to get related appointment - returning 0");
                  return;
              }
              if (appointment->GetIsRecurring() && appointment->GetRecurrenceState() == Outlook::olApptException) {
                  LOG_INFO(logger_, L"This is a specific occurrence - returning 0");
                  return;
              }
              const DATE modified = appointment->GetLastModificationTime();
              LOG_DEBUG(logger_, L"Returning modification time: " << modified);
              time = modified;
          });
    return time;
}

Redemption::ISafeItemPtr MeetingHandler::GetSafeItem() {
    return KeepSafeItem_(L"Redemption.SafeMeetingItem", L"Failed to retrieve Redemption.SafeMeetingItem CLSID",
                         L"Failed to create Redemption.SafeMeetingItem instance", logger_);
}

void MeetingHandler::ExportBody(std::wstring& path, _bstr_t& plainText) {
    path = CommonUtils::MakeTemporaryPath(L"txt");
    plainText = ReadPlainText_(logger_);
    LOG_INFO(logger_, L"ExportBody (meeting) after doing correct GetSafeItem.length=" << plainText.length());
    WriteBSTRToFile(plainText, path, true);
}

ItemHandler* MeetingHandler::CreateSameKind(Outlook::_MeetingItemPtr item) {
    return new MeetingHandler(item);
}

} // namespace vorlek
