// From a meeting item to its appointment: by Outlook's own link, by the ledger, through all stores, and last in the
// calendar of whom the sender represents.
#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/MeetingHandler.h"

namespace vorlek {
namespace {

/// The border of both roads. A failure of COM is an error, any other a warning.
template <class Body>
void GuardResolution_(const log4cxx::LoggerPtr& logger, const log4cxx::spi::LocationInfo& site, const Body& body) {
    GuardAt(log4cxx::Level::getWarn(), logger, site,
            {.exception = {},
             .comError = {},
             .stdException = {L"Caught an exception while getting related appointment: "},
             .other = {L"Caught for Unknown error while getting related appointment"}},
            [&] {
                Guard(logger, site,
                      {.exception = {},
                       .comError = {L"Caught a com exception while getting related appointment: "},
                       .stdException = {},
                       .other = {}},
                      body);
            });
}

} // namespace

Outlook::_AppointmentItemPtr MeetingHandler::GetRelatedAppointment_() {
    Outlook::_AppointmentItemPtr appointment;
    GuardResolution_(logger_, LOG_SITE, [&] {
        LOG_DEBUG(logger_, L"Retrieving the MeetingItem's appointment");
        appointment = Item_->GetAssociatedAppointment(false);
        if (appointment) {
            LOG_DEBUG(logger_, L"Related appointment was retrieved from the item");
            return;
        }
        LOG_WARN(logger_, L"Item is not associated to its appointment. Attempting to find the appointment ID manually");
        appointment = FindAppointmentByLedger_();
        if (appointment) {
            LOG_DEBUG(logger_, L"Related appointment was retrieved for the item using ID");
        }
    });
    return appointment;
}

Redemption::IRDOMailPtr MeetingHandler::GetRelatedAppointmentRDO_() {
    Redemption::IRDOMailPtr appointment;
    GuardResolution_(logger_, LOG_SITE, [&] {
        const Redemption::IRDOSessionPtr session = GetRDOSession();
        if (!session) {
            LOG_ERROR(logger_, L"Failed to retrieve Redemption.RDOSession instance!");
            return;
        }
        LOG_DEBUG(logger_, L"Created Redemption.RDOSession - using it to get Redemption::IRDOMeetingItemPtr");
        const _variant_t shallow(true);
        const Redemption::IRDOMeetingItemPtr meeting = session->GetRDOObjectFromOutlookObject(Item_, shallow);
        if (!meeting) {
            LOG_ERROR(logger_, L"Failed to get IRDOMeetingItemPtr!");
            return;
        }
        appointment = meeting->GetAssociatedAppointment(false);
        if (appointment) {
            LOG_DEBUG(logger_, L"Successfully found associated appointment using RDO");
            return;
        }
        LOG_DEBUG(logger_, L"RDO Meeting is not associated to its appointment - try manually");
        if (const Outlook::_AppointmentItemPtr found = FindAppointmentByLedger_()) {
            LOG_DEBUG(logger_, L"Related appointment was retrieved for the item using ID - getting RDO item");
            appointment = session->GetRDOObjectFromOutlookObject(found, shallow);
        }
    });
    return appointment;
}

Outlook::_AppointmentItemPtr MeetingHandler::FindAppointmentByLedger_() {
    const std::wstring id = GetLedgerID_();
    if (id.empty()) {
        LOG_ERROR(logger_, L"Failed to get related appointment - returning NULL");
        return {};
    }
    Outlook::_AppointmentItemPtr appointment = FindItemInAllFolders_(id);
    if (appointment) {
        heldAppointment_ = appointment; // by a later look-up in vain it is not let go
    } else {
        LOG_ERROR(logger_, L"Failed to get related appointment using ID - returning NULL");
    }
    return appointment;
}

std::wstring MeetingHandler::GetLedgerID_() {
    // The ID of a new item comes of a save, which asks for the appointment in its turn. Where the save gives no ID
    // either, the two would call each other for ever: the appointment counts as not found.
    if (isReadingLedger_ && Item_->GetEntryID().length() == 0) {
        return {};
    }
    struct Reading {
        explicit Reading(bool& flag) : flag_(flag), before_(flag) { flag_ = true; }
        ~Reading() { flag_ = before_; }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

    private:
        bool& flag_;
        bool before_;
    };
    const Reading reading(isReadingLedger_);
    return CommonUtils::GetSentItemId(GetItemUniqueID(), logger_);
}

Outlook::_AppointmentItemPtr MeetingHandler::FindItemInAllFolders_(const std::wstring& id) {
    LOG_DEBUG(logger_, L"Looking for item with id " << id << L"in all folders");
    const Outlook::_NameSpacePtr session = GlobalConfig::GetOutlookApplication()->GetSession();
    const Outlook::_FoldersPtr stores = session->GetFolders();
    for (Outlook::MAPIFolderPtr store = stores->GetFirst(); store; store = stores->GetNext()) {
        const Outlook::_FoldersPtr folders = store->GetFolders();
        for (Outlook::MAPIFolderPtr folder = folders->GetFirst(); folder; folder = folders->GetNext()) {
            if (Outlook::_AppointmentItemPtr appointment = TryStoreOf_(*session, *folder, id)) {
                return appointment;
            }
        }
    }
    LOG_DEBUG(logger_, L"Item wasn't found - looking in shared calendar");
    Outlook::_AppointmentItemPtr appointment = FindInSharedCalendar_(*session, id);
    if (!appointment) {
        LOG_DEBUG(logger_, L"Item wasn't found in shared folder");
    }
    return appointment;
}

Outlook::_AppointmentItemPtr MeetingHandler::TryStoreOf_(Outlook::_NameSpace& session, Outlook::MAPIFolder& folder,
                                                         const std::wstring& id) {
    Outlook::_AppointmentItemPtr appointment;
    const Phrase failed{L" MeetingHandler::FindItemInAllFolders__:Caught an  exception: A"};
    Guard(logger_, LOG_SITE, {.exception = failed, .comError = failed, .stdException = failed, .other = failed}, [&] {
        const Outlook::_AppointmentItemPtr found = session.GetItemFromID(id.c_str(), _variant_t(folder.GetStoreID()));
        if (found) {
            LOG_DEBUG(logger_, L"Item " << id << L" found in " << platform::ToWide(folder.GetFolderPath()));
            appointment = found;
        }
    });
    return appointment;
}

Outlook::_AppointmentItemPtr MeetingHandler::FindInSharedCalendar_(Outlook::_NameSpace& session,
                                                                   const std::wstring& id) {
    Outlook::_AppointmentItemPtr appointment;
    const Phrase failed{L" MeetingHandler::FindItemInAllFolders__:Caught an  exception  in the shared calendar: "};
    Guard(logger_, LOG_SITE, {.exception = failed, .comError = failed, .stdException = failed, .other = failed}, [&] {
        LOG_DEBUG(logger_, L"Getting sender name");
        const _bstr_t name = GlobalConfig::IsOutlookBefore2007()
                                 ? GetRepresentedSenderName_()
                                 : Outlook2007Helper::GetRepresentedSenderName(GetItemDispatch(), logger_);
        LOG_DEBUG(logger_, L"Attempting to create recipient using " << platform::ToWide(name));
        const Outlook::RecipientPtr person = session.CreateRecipient(name);
        LOG_DEBUG(logger_, L"recipient created - trying to resolve");
        person->Resolve();
        if (!person->GetResolved()) {
            return;
        }
        LOG_DEBUG(logger_, L"recipient was resolved - trying to get shared calendar");
        const Outlook::MAPIFolderPtr calendar = session.GetSharedDefaultFolder(person, Outlook::olFolderCalendar);
        LOG_DEBUG(logger_, L"Trying to get store id for the shared calendar");
        const _bstr_t storeId = calendar->GetStoreID();
        LOG_DEBUG(logger_, L"Looking for the item in the shared calendar");
        appointment = session.GetItemFromID(id.c_str(), _variant_t(storeId));
        if (appointment) {
            LOG_DEBUG(logger_, L"Item " << id << L" found!");
        }
    });
    return appointment;
}

_bstr_t MeetingHandler::GetRepresentedSenderName_() {
    _bstr_t name;
    Guard(logger_, LOG_SITE,
          {.exception = {L"Exception:Failed to get the property: "},
           .comError = {L"Caught a com exception: "},
           .stdException = {L"Caught an exception : "},
           .other = {L"Caught for Unknown error"}},
          [&] {
              LOG_DEBUG(logger_, L"Trying to get sender represented name");
              const Redemption::IRDOMeetingItemPtr meeting = GetRDOObject();
              if (!meeting) {
                  LOG_ERROR(logger_, L"Failed to get IRDOMeetingItemPtr!");
                  return;
              }
              LOG_DEBUG(logger_, L"Attempting to get property PR_SENT_REPRESENTING_NAME_W");
              const _bstr_t sender = platform::ToText(meeting->GetFields(Redemption::PR_SENT_REPRESENTING_NAME_W));
              LOG_DEBUG(logger_, L"Got represented sender: " << platform::ToWide(sender));
              name = sender;
          });
    return name;
}

} // namespace vorlek
