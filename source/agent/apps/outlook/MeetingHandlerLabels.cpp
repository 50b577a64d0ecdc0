// How a decision reaches a meeting. A request is changed on its appointment, through the object model or, on the old
// road, through Redemption; every other meeting item is changed itself.
#include "agent/apps/outlook/MeetingHandler.h"

namespace vorlek {

/// Of an item that is changed itself.
bool MeetingHandler::IsChangedThroughRDO_() {
    return !HandleOnSpot() && GlobalConfig::IsOutlookBefore2007();
}

void MeetingHandler::LabelSubject(const std::wstring& label) {
    const auto putThroughRDO = [&](const Redemption::IRDOMailPtr& mail) {
        mail->PutSubject(label.c_str()); // of nothing: E_POINTER
        mail->Save();
    };
    if (MeetingType_ == MeetingItemType::MeetingRequest) {
        if (GlobalConfig::IsOutlookBefore2007()) {
            putThroughRDO(GetRelatedAppointmentRDO_());
        } else if (const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_()) {
            appointment->PutSubject(label.c_str());
        } else {
            LOG_ERROR(logger_, L"Error getting related appointment. Attempting with RDO.");
            putThroughRDO(GetRelatedAppointmentRDO_());
        }
    } else if (IsChangedThroughRDO_()) {
        putThroughRDO(GetRDOObject());
    } else if (!Item_) {
        LOG_ERROR(logger_, L"item_ is NULL.  doing nothing");
    } else {
        Item_->PutSubject(label.c_str());
    }
}

void MeetingHandler::LabelBody(const std::wstring& path) {
    _bstr_t body;
    ReadFileToBSTR(path, body);
    const auto putThroughRDO = [&](const Redemption::IRDOMailPtr& mail) {
        mail->PutBody(body);
        mail->Save();
    };
    if (MeetingType_ == MeetingItemType::MeetingRequest) {
        LOG_DEBUG(logger_, L"Item is a meeting request");
        if (GlobalConfig::IsOutlookBefore2007()) {
            LOG_DEBUG(logger_, L"Outlook2003 - using Redemption related appointment");
            putThroughRDO(GetRelatedAppointmentRDO_());
        } else {
            // Unlike the subject, the body never falls back to Redemption.
            LOG_DEBUG(logger_, L"Outlook2007+ - using related appointment");
            GetRelatedAppointment_()->PutBody(body);
        }
        return;
    }
    LOG_DEBUG(logger_, L"Item is a meeting response or cancellation");
    if (IsChangedThroughRDO_()) {
        LOG_DEBUG(logger_, L"Using Redemption to set new body.");
        putThroughRDO(GetRDOObject());
    } else if (!Item_) {
        LOG_ERROR(logger_, L"item_ is NULL, doing nothing");
    } else {
        Item_->PutBody(body);
    }
}

bool MeetingHandler::OverrideItemAttachments(const InspectionDecision::Attachments& attachments) {
    bool replaced = false;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception while replacing attachments: "},
           .stdException = {L"Caught an exception while replacing attachments: "},
           .other = {L"Caught an exception while replacing attachments - Unknown error."}},
          [&] {
              if (MeetingType_ == MeetingItemType::MeetingRequest) {
                  replaced = OverrideAppointmentAttachments_(attachments);
              } else if (IsChangedThroughRDO_()) {
                  LOG_DEBUG(logger_, L"Legacy Outlook version - handling attachments with RDO.");
                  ModifyAttachmentCollection_(Redemption::IRDOMailPtr(GetRDOObject()), attachments);
                  replaced = true;
              } else {
                  LOG_INFO(logger_, L"Either on-spot or non-request. Replacing attachments.");
                  if (!Item_) {
                      LOG_INFO(logger_, L" item_ == NULL doing nothing");
                      return;
                  }
                  replaced = ModifyAttachmentCollection_(Item_->GetAttachments(), attachments);
              }
          });
    return replaced;
}

bool MeetingHandler::OverrideAppointmentAttachments_(const InspectionDecision::Attachments& attachments) {
    LOG_INFO(logger_, L"The meeting request is a request type - attachments will be changed in the appointment.");
    if (GlobalConfig::IsOutlookBefore2007()) {
        LOG_DEBUG(logger_, L"Legacy Outlook version - handling attachments with RDO.");
        return ModifyAppointmentAttachments_(attachments);
    }
    LOG_DEBUG(logger_, L"Newer outlook version - trying to handle attachments with OOM.");
    const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_();
    if (!appointment) {
        LOG_ERROR(logger_, L"Error getting related appointment. Attempting with RDO.");
        return ModifyAppointmentAttachments_(attachments);
    }
    const bool replaced = ModifyAttachmentCollection_(appointment->GetAttachments(), attachments);
    if (replaced) {
        LOG_INFO(logger_, L"Successfully set new attachments.");
    }
    return replaced;
}

bool MeetingHandler::ModifyAppointmentAttachments_(const InspectionDecision::Attachments& attachments) {
    const Redemption::IRDOMailPtr appointment = GetRelatedAppointmentRDO_();
    if (!appointment) {
        LOG_ERROR(logger_, L"Failed to get Associated Appointment!");
        return false;
    }
    ModifyAttachmentCollection_(appointment, attachments);
    return true;
}

} // namespace vorlek
