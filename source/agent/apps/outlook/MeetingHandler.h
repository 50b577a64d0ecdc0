#pragma once
#include <cstdint>
#include <string>

#include "agent/apps/outlook/ItemWrapper.h"

namespace vorlek {

/// What a meeting item is to its appointment. The numbers stand in the log.
enum class MeetingItemType : std::int32_t {
    MeetingUnknown = -1, ///< a handler without an item
    MeetingCanceled = 0,
    MeetingResponse = 1,
    MeetingForwarded = 2, ///< a request whose subject is no longer that of its appointment
    MeetingRequest = 3,   ///< and everything else
};

/// A meeting item: an invitation, a response, a cancellation. What is done to a request is done to its appointment in
/// the calendar, and it is the appointment that is sent; the others are changed and sent themselves. The appointment
/// is looked for anew by each operation.
class MeetingHandler : public ItemWrapper<Outlook::_MeetingItemPtr> {
public:
    /// item: any object that answers the interface of a meeting item; another makes a handler without an item.
    explicit MeetingHandler(Outlook::_MeetingItemPtr item);

    /// Whether an object is a meeting item. Raises _com_error if it cannot say.
    static bool QueryType(IDispatchPtr item);

    /// The EntryID of the appointment; of the item where there is none.
    std::wstring GetSentItemUniqueID() override;
    void Send() override;
    /// Shows the appointment and deletes the item, which the appointment's next send makes anew.
    void Display() override;
    /// Saves the item, and an appointment that was never saved.
    void Save() override;
    /// Closes the appointment's window and discards what changed in it; the item's own stays.
    void Close() override;
    bool HandleOnSpot() override;
    bool OverrideItemAttachments(const InspectionDecision::Attachments& attachments) override;
    /// That of the appointment; 0 where there is none, and for one of a series that differs from the rest.
    DATE GetLastModificationTime() override;
    Redemption::ISafeItemPtr GetSafeItem() override;
    /// A meeting's body is exported as plain text, whatever it is.
    void ExportBody(std::wstring& path, _bstr_t& plainText) override;

protected:
    ItemHandler* CreateSameKind(Outlook::_MeetingItemPtr item) override;
    void LabelSubject(const std::wstring& label) override;
    void LabelBody(const std::wstring& path) override;

private:
    MeetingItemType Classify_(const Outlook::_AppointmentItemPtr& appointment);
    bool IsAppointmentOnSpot_();
    bool IsAppointmentOnSpotRDO_();
    bool DisplayWithRDO_();
    void SaveAppointmentWithRDO_();

    // Sending.
    bool SendWithRDO_();
    void SendItem_(const std::wstring& id);
    void SendAppointment_(Outlook::_AppointmentItem& appointment, const std::wstring& id);
    /// Moves the item to Deleted Items and out of there. Never raises.
    void DeleteItem_();
    Outlook::MAPIFolderPtr GetDeletedItemsFolder_();
    Outlook::_MeetingItemPtr FindItemInFolder_(const _bstr_t& id, Outlook::MAPIFolder& folder);

    // Finding the appointment: null where there is none. Neither of the two raises.
    Outlook::_AppointmentItemPtr GetRelatedAppointment_();
    Redemption::IRDOMailPtr GetRelatedAppointmentRDO_();
    std::wstring GetLedgerID_();
    Outlook::_AppointmentItemPtr FindAppointmentByLedger_();
    Outlook::_AppointmentItemPtr FindItemInAllFolders_(const std::wstring& id);
    Outlook::_AppointmentItemPtr TryStoreOf_(Outlook::_NameSpace& session, Outlook::MAPIFolder& folder,
                                             const std::wstring& id);
    Outlook::_AppointmentItemPtr FindInSharedCalendar_(Outlook::_NameSpace& session, const std::wstring& id);
    _bstr_t GetRepresentedSenderName_();

    // Changing.
    bool IsChangedThroughRDO_();
    bool OverrideAppointmentAttachments_(const InspectionDecision::Attachments& attachments);
    bool ModifyAppointmentAttachments_(const InspectionDecision::Attachments& attachments);

    static LoggerHolder logger_;

    MeetingItemType MeetingType_ = MeetingItemType::MeetingUnknown;
    bool isReadingLedger_ = false;
    /// The appointment that no link leads to, which nothing else may hold: Outlook drops unsaved changes with the last
    /// reference, and what the decision replaced would leave after all.
    Outlook::_AppointmentItemPtr heldAppointment_;
};

} // namespace vorlek
