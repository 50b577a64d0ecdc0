#pragma once
// The part of the Redemption library that the add-in uses, called by name like Outlook's own objects.
#include "platform/com/LateBound.h"

LATE_BOUND_INTERFACE(Redemption, ISafeItem, 0xDBCAD616, 0xBFD4, 0x4C72, 0x8D, 0x87, 0xC5, 0x92, 0x69, 0x21, 0xD3, 0x78)
LATE_BOUND_INTERFACE(Redemption, ISafeRecipients, 0xCACB61E0, 0xAEEA, 0x404D, 0x88, 0xE1, 0x7F, 0x3B, 0xCA, 0x8B, 0x87,
                     0x26)
LATE_BOUND_INTERFACE(Redemption, ISafeRecipient, 0x5C61669E, 0xF0CE, 0x4126, 0xB3, 0x65, 0x31, 0x65, 0x88, 0xE6, 0x22,
                     0x8F)
LATE_BOUND_INTERFACE(Redemption, IAddressEntry, 0x78412EB9, 0xE06B, 0x4484, 0xBC, 0x85, 0x0B, 0x15, 0x94, 0xF6, 0xE2,
                     0x3A)
LATE_BOUND_INTERFACE(Redemption, IAttachments, 0x82B58FCB, 0x73F3, 0x46DC, 0xA5, 0x2D, 0x74, 0xD3, 0xFE, 0x35, 0x97,
                     0x02)
LATE_BOUND_INTERFACE(Redemption, IAttachment, 0x47146231, 0xB550, 0x4B13, 0xB9, 0xE7, 0x42, 0x57, 0xF7, 0x40, 0xF3,
                     0x9D)
LATE_BOUND_INTERFACE(Redemption, ISafeCurrentUser, 0xD7E6FB7C, 0xA22F, 0x4A9D, 0xA8, 0x9D, 0x65, 0x3D, 0x1A, 0xA3, 0x73,
                     0x24)
LATE_BOUND_INTERFACE(Redemption, IRDOSession, 0xE54C5168, 0xAA8C, 0x405F, 0x9C, 0x14, 0xA4, 0x03, 0x73, 0x02, 0xBD,
                     0x9D)
LATE_BOUND_INTERFACE(Redemption, IRDOMail, 0xD85047E0, 0x7767, 0x4D48, 0x86, 0xB6, 0x28, 0xBD, 0xB5, 0x72, 0x8A, 0xBB)
LATE_BOUND_INTERFACE(Redemption, IRDOMeetingItem, 0x3FE12D4F, 0xCD08, 0x4DAC, 0x9D, 0xBB, 0xD3, 0x10, 0x7C, 0x63, 0xA1,
                     0x69)
LATE_BOUND_INTERFACE(Redemption, IRDOAppointmentItem, 0x4959BA11, 0xF9D0, 0x4E57, 0xAA, 0x7E, 0x12, 0x56, 0x36, 0xEE,
                     0xE4, 0x4A)
LATE_BOUND_INTERFACE(Redemption, IRDOAttachments, 0x9ED8DA28, 0x908D, 0x4DA3, 0xB7, 0xAC, 0x8D, 0xF8, 0x58, 0x7A, 0x9D,
                     0xD0)

namespace Redemption {

using platform::LateBound;

/// The tags of MAPI properties.
constexpr long PR_SENT_REPRESENTING_NAME_W = 0x0042001F;
constexpr long PR_NORMALIZED_SUBJECT_W = 0x0E1D001F;
constexpr long PR_ADDRTYPE_W = 0x3002001F;

struct IAddressEntry : LateBound {
    _bstr_t GetSMTPAddress() { return Get_<_bstr_t>(L"SMTPAddress"); }
};

struct ISafeRecipient : LateBound {
    bool GetResolved() { return Get_<bool>(L"Resolved"); }
    IAddressEntryPtr GetAddressEntry() { return Get_<IAddressEntryPtr>(L"AddressEntry"); }
    _variant_t GetFields(long tag) { return Call_<_variant_t>(L"Fields", tag); }
    long GetType() { return Get_<long>(L"Type"); }
    _bstr_t GetAddress() { return Get_<_bstr_t>(L"Address"); }
    _bstr_t GetName() { return Get_<_bstr_t>(L"Name"); }
};

/// Indices start at 1.
struct ISafeRecipients : LateBound {
    bool ResolveAll() { return Call_<bool>(L"ResolveAll"); }
    long GetCount() { return Get_<long>(L"Count"); }
    ISafeRecipientPtr Item(const _variant_t& index) { return Call_<ISafeRecipientPtr>(L"Item", index); }
};

struct IAttachment : LateBound {
    _bstr_t GetFileName() { return Get_<_bstr_t>(L"FileName"); }
    void SaveAsFile(const _bstr_t& path) { Do_(L"SaveAsFile", path); }
};

/// Indices start at 1.
struct IAttachments : LateBound {
    long GetCount() { return Get_<long>(L"Count"); }
    IAttachmentPtr Item(const _variant_t& index) { return Call_<IAttachmentPtr>(L"Item", index); }
};

/// Reads past the object model's guard what Outlook would ask its user about.
struct ISafeItem : LateBound {
    void PutItem(IDispatch* item) { Put_(L"Item", item); }
    _bstr_t GetBody() { return Get_<_bstr_t>(L"Body"); }
    ISafeRecipientsPtr GetRecipients() { return Get_<ISafeRecipientsPtr>(L"Recipients"); }
    IAttachmentsPtr GetAttachments() { return Get_<IAttachmentsPtr>(L"Attachments"); }
};

struct ISafeCurrentUser : LateBound {
    _bstr_t GetSMTPAddress() { return Get_<_bstr_t>(L"SMTPAddress"); }
};

struct IRDOSession : LateBound {
    /// shallow: the view shares the item's own MAPI object, unsaved changes included.
    IDispatchPtr GetRDOObjectFromOutlookObject(IDispatch* object, const _variant_t& shallow) {
        return Call_<IDispatchPtr>(L"GetRDOObjectFromOutlookObject", object, shallow);
    }
};

struct IRDOAttachments : LateBound {
    long GetCount() { return Get_<long>(L"Count"); }
    void Clear() { Do_(L"Clear"); }
    void Add(const _variant_t& source, const _variant_t& type, const _variant_t& position,
             const _variant_t& displayName) {
        Do_(L"Add", source, type, position, displayName);
    }
};

/// Redemption's view of an item of any kind.
struct IRDOMail : LateBound {
    void PutSubject(const _bstr_t& subject) { Put_(L"Subject", subject); }
    void PutBody(const _bstr_t& body) { Put_(L"Body", body); }
    _bstr_t GetHTMLBody() { return Get_<_bstr_t>(L"HTMLBody"); }
    void PutHTMLBody(const _bstr_t& body) { Put_(L"HTMLBody", body); }
    /// A MAPI property by its tag, empty if the item has none.
    _variant_t GetFields(long tag) { return Call_<_variant_t>(L"Fields", tag); }
    IRDOAttachmentsPtr GetAttachments() { return Get_<IRDOAttachmentsPtr>(L"Attachments"); }
    void Save() { Do_(L"Save"); }
    void SaveAs(const _bstr_t& path, const _variant_t& type) { Do_(L"SaveAs", path, type); }
    void Import(const _bstr_t& path, const _variant_t& type) { Do_(L"Import", path, type); }
    /// Sends past Outlook, which raises no event for it.
    void Send() { Do_(L"Send"); }
    void Display(const _variant_t& modal, const _variant_t& parentWindow) { Do_(L"Display", modal, parentWindow); }
};

struct IRDOMeetingItem : IRDOMail {
    IRDOMailPtr GetAssociatedAppointment(bool addToCalendar) {
        return Call_<IRDOMailPtr>(L"GetAssociatedAppointment", addToCalendar);
    }
};

struct IRDOAppointmentItem : IRDOMail {
    bool GetIsRecurring() { return Get_<bool>(L"IsRecurring"); }
    long GetRecurrenceState() { return Get_<long>(L"RecurrenceState"); }
};

} // namespace Redemption
