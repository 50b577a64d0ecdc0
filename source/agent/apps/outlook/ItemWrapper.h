#pragma once
#include <memory>
#include <string>
#include <utility>

#include "agent/apps/outlook/GlobalConfig.h"
#include "agent/apps/outlook/ItemHandler.h"
#include "agent/apps/outlook/Outlook2007Helper.h"
#include "foundation/Border.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/Throw.h"

namespace vorlek {

/// Whether an object answers an interface. A null object does not. Raises _com_error for any failure
/// but E_NOINTERFACE.
bool AnswersInterface(const IDispatchPtr& object, const IID& interfaceId);

/// An in-process object of Redemption by its ProgID, null where the library is not installed. The words of
/// the two failures are logged at Error.
template <class Pointer>
Pointer CreateRedemptionObject(const wchar_t* progId, const wchar_t* noClass, const wchar_t* noInstance,
                               const log4cxx::LoggerPtr& logger) {
    CLSID classId;
    if (FAILED(CLSIDFromProgID(progId, &classId))) {
        LOG_ERROR(logger, noClass);
        return {};
    }
    Pointer object;
    if (FAILED(object.CreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER))) {
        LOG_ERROR(logger, noInstance);
        return {};
    }
    return object;
}

/// What replacing the attachments of an item says of its failures.
inline constexpr BorderPhrases kReplacingAttachments = {
    .exception = {},
    .comError = {L"Caught a com exception while replacing attachments: "},
    .stdException = {L"Caught an exception while replacing attachments: "},
    .other = {L"Caught an exception while replacing attachments - Unknown error."}};

/// Holds an item of Outlook's, T being its smart pointer, with what reads the same for a mail, a meeting
/// item and a task request.
template <class T>
class ItemWrapper : public ItemHandler {
public:
    explicit ItemWrapper(T item);

    std::wstring GetItemUniqueID() override;
    Outlook::MAPIFolderPtr GetCurrentFolder() override;
    void Delete() override { Item_->Delete(); }
    ItemHandler* Copy() override;
    void Display() override { Item_->Display(_variant_t(static_cast<short>(0))); }
    void Save() override;
    void Close() override;
    void ApplyDataLabel(std::shared_ptr<InspectionDecision> decision) override;
    IDispatchPtr GetItemDispatch() override { return Item_; }
    std::wstring GetSubject() override;
    std::wstring GetNormalizedSubject() override;
    std::wstring GetSenderSMTP() override;

protected:
    /// A new handler, the caller's, on another item of the same kind.
    virtual ItemHandler* CreateSameKind(T item) = 0;
    /// A new session without a logon, null without Redemption.
    virtual Redemption::IRDOSessionPtr GetRDOSession();
    virtual void LabelSubject(const std::wstring& label) = 0;
    /// path: of the file with the whole new body.
    virtual void LabelBody(const std::wstring& path) = 0;
    /// Removes all attachments and adds those given, each at the first position, in the order of the paths.
    virtual bool ModifyAttachmentCollection_(Outlook::AttachmentsPtr current,
                                             const InspectionDecision::Attachments& attachments);
    /// The same through Redemption; saves the item.
    virtual void ModifyAttachmentCollection_(Redemption::IRDOMailPtr mail,
                                             const InspectionDecision::Attachments& attachments);

    /// The item's own text, from Outlook 2007 on; where that is empty, and before, the text of Redemption's view.
    /// Without a view: empty.
    _bstr_t ReadPlainText_(const log4cxx::LoggerPtr& logger);
    /// Redemption's view of the item, null if there is none; failures are logged.
    IDispatchPtr GetRDOObject();
    /// The guarded view of the item, made at the first call and kept; null without Redemption.
    Redemption::ISafeItemPtr KeepSafeItem_(const wchar_t* progId, const wchar_t* noClass, const wchar_t* noInstance,
                                           const log4cxx::LoggerPtr& logger);

    T Item_;
    Redemption::ISafeItemPtr SafeItem_;

private:
    /// Closes the window of an item that is written in Word, which has a window of its own before Outlook 2007.
    void ForceCloseItemWindow_(Outlook::_Inspector& inspector);

    template <class Collection>
    void AddAttachments_(Collection& collection, const InspectionDecision::Attachments& attachments);

    inline static LoggerHolder logger_;
};

template <class T>
ItemWrapper<T>::ItemWrapper(T item) : Item_(std::move(item)) {
    InitLogger(logger_, "vorlek::ItemWrapper<T >::ItemWrapper", false);
}

template <class T>
std::wstring ItemWrapper<T>::GetItemUniqueID() {
    if (const _bstr_t id = Item_->GetEntryID(); id.length() != 0) {
        return platform::ToWide(id);
    }
    LOG_DEBUG(logger_, L"Saving item to get the EntryID");
    Save();
    const _bstr_t id = Item_->GetEntryID();
    if (id.length() == 0) {
        Throw(L"vorlek::ItemWrapper<T >::GetItemUniqueID", L"Failed to create item EntryID");
    }
    return platform::ToWide(id);
}

template <class T>
Outlook::MAPIFolderPtr ItemWrapper<T>::GetCurrentFolder() {
    Outlook::MAPIFolderPtr folder;
    GuardAt(log4cxx::Level::getWarn(), logger_, LOG_SITE,
            {.exception = {},
             .comError = {L"COM exception was raised and handled while performing 'GetCurrentFolder': "},
             .stdException = {},
             .other = {}},
            [&] { folder = Item_->GetParent(); });
    return folder;
}

template <class T>
ItemHandler* ItemWrapper<T>::Copy() {
    const T copy = Item_->Copy();
    if (!copy) {
        LOG_DEBUG(logger_, L"ItemWrapper<T>::Copy returns NULL");
        return nullptr;
    }
    ItemHandler* const handler = CreateSameKind(copy);
    LOG_DEBUG(logger_, L"Exit < ItemWrapper<T>::Copy returns new instance");
    return handler;
}

template <class T>
void ItemWrapper<T>::Save() {
    LOG_DEBUG(logger_, L"Saving item...");
    try {
        Item_->Save();
        LOG_DEBUG(logger_, L"Item was saved successfully");
    } catch (const _com_error& failure) {
        LOG_WARN(logger_, L"COM exception: " << failure.ErrorMessage() << L" item wasn't saved");
    }
}

template <class T>
void ItemWrapper<T>::Close() {
    LOG_DEBUG(logger_, L"Close item was called");
    const Outlook::_InspectorPtr inspector = Item_->GetInspector();
    if (!inspector) {
        LOG_WARN(logger_, L"Item's Inspector is null");
        return;
    }
    if (GlobalConfig::IsOutlookBefore2007()) {
        LOG_DEBUG(logger_, L"Office 2003 or lower => handling special close for WordMail");
        ForceCloseItemWindow_(*inspector);
    } else if (inspector->IsWordMail()) {
        inspector->Close(Outlook::olSave);
    } else {
        LOG_DEBUG(logger_, L"Non-WordMail => Closing the item through the regular close command.");
        Item_->Close(Outlook::olSave);
    }
}

template <class T>
void ItemWrapper<T>::ForceCloseItemWindow_(Outlook::_Inspector& inspector) {
    const std::wstring caption = platform::ToWide(inspector.GetCaption());
    if (const HWND window = FindWindowW(L"OpusApp", caption.c_str()); window != nullptr) {
        LOG_INFO(logger_, L"Posting close to WordMail");
        PostMessageW(window, WM_CLOSE, 2, 0); // the 2 means nothing to Windows; Word has always been sent it
    } else {
        LOG_WARN(logger_, L"Item is using WordMail, but we failed to locate the WordMail window and close it. "
                          L"Attempting to close it directly.");
        inspector.Close(Outlook::olSave);
    }
}

template <class T>
void ItemWrapper<T>::ApplyDataLabel(std::shared_ptr<InspectionDecision> decision) {
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {},
           .stdException = {L"Failed applying data label: "},
           .other = {L"Unknown error while applying data label."}},
          [&] {
              if (const std::wstring& label = decision->GetSubjectLabel(); !label.empty()) {
                  LOG_INFO(logger_, L"Replacing subject with: " << label);
                  LabelSubject(label);
              }
              if (const std::wstring& path = decision->GetBodyLabelPath(); !path.empty()) {
                  LOG_INFO(logger_, L"Replacing body with: " << path);
                  LabelBody(path);
                  LOG_INFO(logger_, L"Body labeling finished successfully. ");
              }
          });
}

template <class T>
std::wstring ItemWrapper<T>::GetSubject() {
    std::wstring subject = platform::ToWide(Item_->GetSubject());
    LOG_DEBUG(logger_, L"ItemWrapper<T>::GetSubject = " << subject);
    return subject;
}

template <class T>
std::wstring ItemWrapper<T>::GetNormalizedSubject() {
    if (GlobalConfig::IsOutlookBefore2007()) {
        const Redemption::IRDOMailPtr mail = GetRDOObject();
        return mail ? platform::ToWide(platform::ToText(mail->GetFields(Redemption::PR_NORMALIZED_SUBJECT_W)))
                    : std::wstring();
    }
    return platform::ToWide(Outlook2007Helper::GetNormalizedSubject(Item_, logger_));
}

template <class T>
std::wstring ItemWrapper<T>::GetSenderSMTP() {
    LOG_INFO(logger_, L"Retrieving sender's info by using Redemption...");
    const auto user = CreateRedemptionObject<Redemption::ISafeCurrentUserPtr>(
        L"Redemption.SafeCurrentUser",
        L"Failed to retrieve Redemption.SafeCurrentUser CLSID. This means we couldn't get the mail sender - "
        L"leaving it out of the incident context",
        L"Failed to create Redemption.SafeCurrentUser instance. This means we couldn't get the mail sender - "
        L"leaving it out of the incident context",
        logger_);
    if (!user) {
        return {};
    }
    std::wstring address = platform::ToWide(user->GetSMTPAddress());
    LOG_INFO(logger_, L"ItemWrapper<T>::GetSenderSMTP=" << address);
    return address;
}

template <class T>
Redemption::IRDOSessionPtr ItemWrapper<T>::GetRDOSession() {
    return CreateRedemptionObject<Redemption::IRDOSessionPtr>(
        L"Redemption.RDOSession", L"Failed to retrieve Redemption.RDOSession CLSID!",
        L"Failed to create Redemption.RDOSession instance!", logger_);
}

template <class T>
Redemption::ISafeItemPtr ItemWrapper<T>::KeepSafeItem_(const wchar_t* progId, const wchar_t* noClass,
                                                       const wchar_t* noInstance, const log4cxx::LoggerPtr& logger) {
    if (!SafeItem_) {
        const auto view = CreateRedemptionObject<Redemption::ISafeItemPtr>(progId, noClass, noInstance, logger);
        if (view) {
            view->PutItem(Item_);
            SafeItem_ = view; // not before the item is in it
        }
    }
    return SafeItem_;
}

template <class T>
IDispatchPtr ItemWrapper<T>::GetRDOObject() {
    IDispatchPtr view;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a COM exception: "},
           .stdException = {L"Caught an STD exception: "},
           .other = {L"Caught Unknown error"}},
          [&] {
              const Redemption::IRDOSessionPtr session = GetRDOSession();
              if (!session) {
                  LOG_ERROR(logger_, L"Failed to retrieve Redemption.RDOSession instance!");
                  return;
              }
              LOG_DEBUG(logger_, L"Created Redemption.RDOSession - now getting RDO object.");
              view = session->GetRDOObjectFromOutlookObject(Item_, _variant_t(true));
              if (!view) {
                  LOG_ERROR(logger_, L"Failed to get RDO object!");
              }
          });
    return view;
}

template <class T>
_bstr_t ItemWrapper<T>::ReadPlainText_(const log4cxx::LoggerPtr& logger) {
    if (!GlobalConfig::IsOutlookBefore2007() && Item_) {
        if (const _bstr_t body = Item_->GetBody(); body.length() != 0) {
            return body;
        }
    }
    const Redemption::ISafeItemPtr safeItem = GetSafeItem();
    if (!safeItem) {
        LOG_ERROR(logger, L"Failed to retrieve Redemption SafeItem => exporting an empty text");
        return {};
    }
    return safeItem->GetBody();
}

template <class T>
bool ItemWrapper<T>::ModifyAttachmentCollection_(Outlook::AttachmentsPtr current,
                                                 const InspectionDecision::Attachments& attachments) {
    LOG_INFO(logger_, L"Replacing attachments - using Outlook OM");
    if (!current) {
        LOG_ERROR(logger_, L"Could not get pointer to current attachments");
        return false;
    }
    LOG_INFO(logger_, L"Item has " << current->GetCount() << L" attachments - Removing...");
    while (current->GetCount() >= 1) {
        current->Remove(1);
    }
    LOG_INFO(logger_, L"Removed attachments - now setting the new ones.");
    AddAttachments_(*current, attachments);
    LOG_INFO(logger_, L"Successfully set new attachments.");
    return true;
}

template <class T>
void ItemWrapper<T>::ModifyAttachmentCollection_(Redemption::IRDOMailPtr mail,
                                                 const InspectionDecision::Attachments& attachments) {
    LOG_INFO(logger_, L"Replacing attachments - using RDO");
    const Redemption::IRDOAttachmentsPtr current = mail->GetAttachments();
    LOG_INFO(logger_, L"Item has " << current->GetCount());
    current->Clear();
    LOG_INFO(logger_, L"Removed attachments - now setting the new ones.");
    AddAttachments_(*current, attachments);
    mail->Save();
    LOG_INFO(logger_, L"Successfully set new attachments.");
}

template <class T>
template <class Collection>
void ItemWrapper<T>::AddAttachments_(Collection& collection, const InspectionDecision::Attachments& attachments) {
    const _variant_t byValue(1); // VT_INT, as Outlook takes both
    const _variant_t firstPosition(1);
    for (const auto& [path, name] : attachments) {
        LOG_DEBUG(logger_, L"Adding attachment \"" << name << L"\": " << path);
        collection.Add(_variant_t(path.c_str()), byValue, firstPosition, _variant_t(name.c_str()));
    }
}

} // namespace vorlek
