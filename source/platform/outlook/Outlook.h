#pragma once
// The part of Outlook's object model that the add-in uses. Members are called by name, as a script
// would: they stand the same in every version from Outlook 2000 on, and need no type library. Each
// member raises _com_error with the failure's code; a property that holds no object gives a null pointer.
#include "platform/com/LateBound.h"

#define OUTLOOK_INTERFACE(name, number)                                                                                \
    LATE_BOUND_INTERFACE(Outlook, name, number, 0x0000, 0x0000, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

OUTLOOK_INTERFACE(_Application, 0x00063001)
OUTLOOK_INTERFACE(_NameSpace, 0x00063002)
OUTLOOK_INTERFACE(_Explorer, 0x00063003)
OUTLOOK_INTERFACE(_Inspector, 0x00063005)
OUTLOOK_INTERFACE(MAPIFolder, 0x00063006)
OUTLOOK_INTERFACE(_Folders, 0x00063040)
OUTLOOK_INTERFACE(_Account, 0x000630C5)
OUTLOOK_INTERFACE(_PropertyAccessor, 0x0006302D)
OUTLOOK_INTERFACE(Attachments, 0x0006303C)
OUTLOOK_INTERFACE(Attachment, 0x00063007)
OUTLOOK_INTERFACE(Recipients, 0x0006303B)
OUTLOOK_INTERFACE(Recipient, 0x00063045)
OUTLOOK_INTERFACE(_MailItem, 0x00063034)
OUTLOOK_INTERFACE(_MeetingItem, 0x00063062)
OUTLOOK_INTERFACE(_AppointmentItem, 0x00063033)
OUTLOOK_INTERFACE(_TaskRequestItem, 0x00063036)
OUTLOOK_INTERFACE(_TaskItem, 0x00063035)

#undef OUTLOOK_INTERFACE

namespace Outlook {

using platform::LateBound;

enum OlDefaultFolders : long {
    olFolderDeletedItems = 3,
    olFolderOutbox = 4,
    olFolderSentMail = 5,
    olFolderCalendar = 9,
    olFolderDrafts = 16
};
enum OlBodyFormat : long { olFormatPlain = 1, olFormatHTML = 2, olFormatRichText = 3 };
enum OlInspectorClose : long { olSave = 0, olDiscard = 1 };
enum OlRecurrenceState : long { olApptException = 3 };

struct _Account : LateBound {
    _bstr_t GetSmtpAddress() { return Get_<_bstr_t>(L"SmtpAddress"); }
};

struct _PropertyAccessor : LateBound {
    /// name: a property's name in Outlook's schema notation, such as ".../mapi/proptag/0x39FE001E".
    _variant_t GetProperty(const _bstr_t& name) { return Call_<_variant_t>(L"GetProperty", name); }
};

struct Attachment : LateBound {
    _bstr_t GetFileName() { return Get_<_bstr_t>(L"FileName"); }
    void SaveAsFile(const _bstr_t& path) { Do_(L"SaveAsFile", path); }
};

/// Indices start at 1.
struct Attachments : LateBound {
    long GetCount() { return Get_<long>(L"Count"); }
    AttachmentPtr Item(const _variant_t& index) { return Call_<AttachmentPtr>(L"Item", index); }
    void Remove(long index) { Do_(L"Remove", index); }
    AttachmentPtr Add(const _variant_t& source, const _variant_t& type, const _variant_t& position,
                      const _variant_t& displayName) {
        return Call_<AttachmentPtr>(L"Add", source, type, position, displayName);
    }
};

struct Recipient : LateBound {
    bool Resolve() { return Call_<bool>(L"Resolve"); }
    bool GetResolved() { return Get_<bool>(L"Resolved"); }
    long GetType() { return Get_<long>(L"Type"); }
    _PropertyAccessorPtr GetPropertyAccessor() { return Get_<_PropertyAccessorPtr>(L"PropertyAccessor"); }
};

/// Indices start at 1.
struct Recipients : LateBound {
    long GetCount() { return Get_<long>(L"Count"); }
    RecipientPtr Item(const _variant_t& index) { return Call_<RecipientPtr>(L"Item", index); }
    bool ResolveAll() { return Call_<bool>(L"ResolveAll"); }
};

struct _Folders : LateBound {
    MAPIFolderPtr GetFirst() { return Call_<MAPIFolderPtr>(L"GetFirst"); }
    MAPIFolderPtr GetNext() { return Call_<MAPIFolderPtr>(L"GetNext"); }
};

struct MAPIFolder : LateBound {
    _bstr_t GetStoreID() { return Get_<_bstr_t>(L"StoreID"); }
    _bstr_t GetFolderPath() { return Get_<_bstr_t>(L"FolderPath"); }
    _FoldersPtr GetFolders() { return Get_<_FoldersPtr>(L"Folders"); }
};

struct _NameSpace : LateBound {
    MAPIFolderPtr GetDefaultFolder(OlDefaultFolders folder) {
        return Call_<MAPIFolderPtr>(L"GetDefaultFolder", static_cast<long>(folder));
    }
    IDispatchPtr GetItemFromID(const _bstr_t& entryId, const _variant_t& storeId) {
        return Call_<IDispatchPtr>(L"GetItemFromID", entryId, storeId);
    }
    _FoldersPtr GetFolders() { return Get_<_FoldersPtr>(L"Folders"); }
    /// A recipient of no item; a name that is not resolved yet.
    RecipientPtr CreateRecipient(const _bstr_t& name) { return Call_<RecipientPtr>(L"CreateRecipient", name); }
    MAPIFolderPtr GetSharedDefaultFolder(Recipient* person, OlDefaultFolders folder) {
        return Call_<MAPIFolderPtr>(L"GetSharedDefaultFolder", static_cast<IDispatch*>(person),
                                    static_cast<long>(folder));
    }
};

struct _Explorer : LateBound {
    _bstr_t GetCaption() { return Get_<_bstr_t>(L"Caption"); }
};

struct _Application : LateBound {
    _bstr_t GetVersion() { return Get_<_bstr_t>(L"Version"); }
    _NameSpacePtr GetSession() { return Get_<_NameSpacePtr>(L"Session"); }
    _ExplorerPtr ActiveExplorer() { return Call_<_ExplorerPtr>(L"ActiveExplorer"); }
};

struct _Inspector : LateBound {
    _bstr_t GetCaption() { return Get_<_bstr_t>(L"Caption"); }
    bool IsWordMail() { return Call_<bool>(L"IsWordMail"); }
    void Close(OlInspectorClose mode) { Do_(L"Close", static_cast<long>(mode)); }
};

/// What a mail, a meeting item and a task request have in common.
struct OutgoingItem : LateBound {
    IDispatchPtr GetParent() { return Get_<IDispatchPtr>(L"Parent"); }
    _bstr_t GetEntryID() { return Get_<_bstr_t>(L"EntryID"); }
    _bstr_t GetMessageClass() { return Get_<_bstr_t>(L"MessageClass"); }
    _bstr_t GetSubject() { return Get_<_bstr_t>(L"Subject"); }
    void PutSubject(const _bstr_t& subject) { Put_(L"Subject", subject); }
    _bstr_t GetBody() { return Get_<_bstr_t>(L"Body"); }
    void PutBody(const _bstr_t& body) { Put_(L"Body", body); }
    DATE GetLastModificationTime() { return Get_<DATE>(L"LastModificationTime"); }
    AttachmentsPtr GetAttachments() { return Get_<AttachmentsPtr>(L"Attachments"); }
    _PropertyAccessorPtr GetPropertyAccessor() { return Get_<_PropertyAccessorPtr>(L"PropertyAccessor"); }
    _InspectorPtr GetInspector() { return Get_<_InspectorPtr>(L"GetInspector"); }
    void Close(OlInspectorClose mode) { Do_(L"Close", static_cast<long>(mode)); }
    IDispatchPtr Copy() { return Call_<IDispatchPtr>(L"Copy"); }
    HRESULT Delete() {
        Do_(L"Delete");
        return S_OK;
    }
    void Display(const _variant_t& modal) { Do_(L"Display", modal); }
    void Save() { Do_(L"Save"); }
    HRESULT Send() {
        Do_(L"Send");
        return S_OK;
    }
};

struct _MailItem : OutgoingItem {
    bool GetAutoForwarded() { return Get_<bool>(L"AutoForwarded"); }
    _bstr_t GetVotingResponse() { return Get_<_bstr_t>(L"VotingResponse"); }
    long GetBodyFormat() { return Get_<long>(L"BodyFormat"); }
    _bstr_t GetHTMLBody() { return Get_<_bstr_t>(L"HTMLBody"); }
    void PutHTMLBody(const _bstr_t& body) { Put_(L"HTMLBody", body); }
    RecipientsPtr GetRecipients() { return Get_<RecipientsPtr>(L"Recipients"); }
    _AccountPtr GetSendUsingAccount() { return Get_<_AccountPtr>(L"SendUsingAccount"); }
};

struct _AppointmentItem : OutgoingItem {
    bool GetIsRecurring() { return Get_<bool>(L"IsRecurring"); }
    long GetRecurrenceState() { return Get_<long>(L"RecurrenceState"); }
    _AccountPtr GetSendUsingAccount() { return Get_<_AccountPtr>(L"SendUsingAccount"); }
};

struct _MeetingItem : OutgoingItem {
    _bstr_t GetMessageClass() { return Get_<_bstr_t>(L"MessageClass"); }
    /// The item in its new place; the one that moved is dead.
    IDispatchPtr Move(MAPIFolder* folder) { return Call_<IDispatchPtr>(L"Move", static_cast<IDispatch*>(folder)); }
    RecipientsPtr GetRecipients() { return Get_<RecipientsPtr>(L"Recipients"); }
    _AppointmentItemPtr GetAssociatedAppointment(bool addToCalendar) {
        return Call_<_AppointmentItemPtr>(L"GetAssociatedAppointment", addToCalendar);
    }
};

struct _TaskItem : OutgoingItem {
    RecipientsPtr GetRecipients() { return Get_<RecipientsPtr>(L"Recipients"); }
    _AccountPtr GetSendUsingAccount() { return Get_<_AccountPtr>(L"SendUsingAccount"); }
};

struct _TaskRequestItem : OutgoingItem {
    _TaskItemPtr GetAssociatedTask(bool addToTaskList) {
        return Call_<_TaskItemPtr>(L"GetAssociatedTask", addToTaskList);
    }
};

} // namespace Outlook
