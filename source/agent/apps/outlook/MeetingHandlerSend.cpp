// Sending a meeting, and getting rid of the item whose appointment was sent or shown in its place.
#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/MeetingHandler.h"

namespace vorlek {

void MeetingHandler::Send() {
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"MeetingHandler::Send: Caught a com exception during Send: "},
           .stdException = {L"Caught an exception: "},
           .other = {L"MeetingHandler::Send - Unknown error"}},
          [&] {
              LOG_INFO(logger_, L"Sending meeting request");
              const Outlook::_AppointmentItemPtr appointment = GetRelatedAppointment_();
              bool sent = false;
              if (!appointment || GlobalConfig::IsOutlookBefore2007()) {
                  LOG_INFO(logger_, L"Attempting to send with RDO");
                  sent = SendWithRDO_();
              }
              const std::wstring id = GetItemUniqueID();
              CommonUtils::RemoveFromInspectedItems(id, logger_);
              if (!appointment || sent) {
                  return;
              }
              LOG_DEBUG(logger_, L"Sending the message item using Outlook Object Model...");
              if (MeetingType_ == MeetingItemType::MeetingForwarded) {
                  SendItem_(id);
              } else {
                  SendAppointment_(*appointment, id);
              }
          });
}

bool MeetingHandler::SendWithRDO_() {
    bool sent = false;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"MeetingHandler::SendWithRDO_: Caught a com exception during Send: "},
           .stdException = {L"MeetingHandler::SendWithRDO_: Caught a STD exception: "},
           // Kept as it is: whoever reads logs looks for these words.
           .other = {L"MessageHandler::Send (MeetingHandler::SendWithRDO_) - Unknown error"}},
          [&] {
              LOG_DEBUG(logger_, L"Send item using RDO");
              const Redemption::IRDOMailPtr appointment = GetRelatedAppointmentRDO_();
              if (!appointment) {
                  LOG_ERROR(logger_, L"Failed to get Associated Appointment!");
                  return;
              }
              appointment->Send();
              LOG_DEBUG(logger_, L"Successfully sent item using RDO object module!");
              sent = true;
          });
    return sent;
}

void MeetingHandler::SendItem_(const std::wstring& id) {
    LOG_DEBUG(logger_, L"This is a forwarded meeting - sending the item itself");
    if (!Item_) {
        LOG_DEBUG(logger_, L"item_ == NULL doing nothing");
        return;
    }
    try {
        Item_->Send();
        LOG_DEBUG(logger_, L"Sent Meeting " << id);
    } catch (const _com_error& failure) {
        LOG_ERROR(logger_, L"Caught a COM exception while sending the request itself: " << failure.ErrorMessage());
    }
}

void MeetingHandler::SendAppointment_(Outlook::_AppointmentItem& appointment, const std::wstring& id) {
    try {
        appointment.Send();
    } catch (const _com_error&) {
        LOG_ERROR(logger_, L"MeetingHandler::Send - failed to send the item.");
        throw;
    }
    LOG_DEBUG(logger_, L"Deleting the meeting item.");
    DeleteItem_();
    LOG_DEBUG(logger_, L"Sent Meeting " << id);
}

void MeetingHandler::DeleteItem_() {
    const auto deleteItem = [&] {
        const Outlook::MAPIFolderPtr deletedItems = GetDeletedItemsFolder_();
        if (!deletedItems) {
            LOG_ERROR(logger_, L"Failed to to delete Meeting item - no deleted item folder was found.");
            return;
        }
        LOG_DEBUG(logger_, L"Moving meeting request to deleted items folder.");
        const Outlook::_MeetingItemPtr moved = Item_->Move(deletedItems);
        if (!moved) {
            LOG_ERROR(logger_, L"Failed to move the Meeting item to Deleted Items folder");
            return;
        }
        const Outlook::_MeetingItemPtr found = FindItemInFolder_(moved->GetEntryID(), *deletedItems);
        if (!found) {
            LOG_ERROR(logger_, L"Failed to find the Meeting item in the Deleted Items folder");
            return;
        }
        LOG_DEBUG(logger_, L"Deleting meeting request from deleted items folder.");
        try {
            found->Delete();
        } catch (const _com_error&) {
            LOG_ERROR(logger_, L"Failed to delete the Meeting item from Deleted Items folder");
        }
    };
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception during attempt to delete item: "},
           .stdException = {L"Caught an exception: "},
           .other = {L"Unknown error"}},
          deleteItem);
}

Outlook::MAPIFolderPtr MeetingHandler::GetDeletedItemsFolder_() {
    const Outlook::_NameSpacePtr session = GlobalConfig::GetOutlookApplication()->GetSession();
    if (!session) {
        LOG_ERROR(logger_, L"Failed to retrieve Outlook session.");
        return {};
    }
    Outlook::MAPIFolderPtr folder = session->GetDefaultFolder(Outlook::olFolderDeletedItems);
    if (!folder) {
        LOG_ERROR(logger_, L"Failed to retrieve Deleted Items folder.");
    }
    return folder;
}

Outlook::_MeetingItemPtr MeetingHandler::FindItemInFolder_(const _bstr_t& id, Outlook::MAPIFolder& folder) {
    const Outlook::_NameSpacePtr session = GlobalConfig::GetOutlookApplication()->GetSession();
    if (!session) {
        LOG_ERROR(logger_, L"Failed to retrieve Outlook session.");
        return {};
    }
    Outlook::_MeetingItemPtr item;
    const Phrase failed{L"Caught an exception in outlookSession->GetItemFromID : "};
    Guard(logger_, LOG_SITE, {.exception = failed, .comError = failed, .stdException = failed, .other = failed},
          [&] { item = session->GetItemFromID(id, _variant_t(folder.GetStoreID())); });
    return item;
}

} // namespace vorlek
