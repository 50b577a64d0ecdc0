#pragma once
#include <memory>
#include <string>

#include "foundation/LoggerHolder.h"
#include "platform/outlook/Outlook.h"
#include "platform/redemption/Redemption.h"
#include "plugin-link/CInspectorMessage.h"
#include "plugin-link/InspectionDecision.h"

namespace vorlek {

/// An outgoing item of Outlook, whatever its kind. Reading raises _com_error or Exception; what finishes
/// an item (Send, Save, ApplyDataLabel) logs its failures and returns. A handler belongs to the thread
/// that made it. The order of the virtual operations is part of the interface.
class ItemHandler {
public:
    ItemHandler();
    ItemHandler(const ItemHandler&) = delete;
    ItemHandler& operator=(const ItemHandler&) = delete;
    virtual ~ItemHandler() = default;

    /// The item's EntryID; an item that has none yet is saved first. Raises Exception if that gives none.
    virtual std::wstring GetItemUniqueID() = 0;
    /// The ID by which the sent copy is known.
    virtual std::wstring GetSentItemUniqueID() = 0;
    /// Takes the item out of the ledger and sends it. Never raises.
    virtual void Send() = 0;
    /// The folder that holds the item, null if Outlook does not tell.
    virtual Outlook::MAPIFolderPtr GetCurrentFolder() = 0;
    virtual void Delete() = 0;
    /// A new handler, the caller's, on a copy of the item; null if there is no copy of its kind.
    virtual ItemHandler* Copy() = 0;
    /// Opens the item's inspector, not modal.
    virtual void Display() = 0;
    /// A failure of Outlook is logged and goes no further.
    virtual void Save() = 0;
    /// Closes the item's inspector, if there is one, and saves.
    virtual void Close() = 0;
    /// Whether the item must be inspected inside the send event.
    virtual bool HandleOnSpot();
    /// Puts the decision's subject and body on the item. Never raises.
    virtual void ApplyDataLabel(std::shared_ptr<InspectionDecision> decision) = 0;
    virtual IDispatchPtr GetItemDispatch() = 0;
    /// Adds subject, sender, recipients, attachments, body and version, in this order.
    virtual void FillInspectorMessage(CInspectorMessage& message);
    /// Replaces all attachments by those given. False: they could not be replaced.
    virtual bool OverrideItemAttachments(const InspectionDecision::Attachments& attachments) = 0;
    virtual DATE GetLastModificationTime() = 0;
    virtual std::wstring GetSubject() = 0;
    /// The subject without its prefix ("RE: ").
    virtual std::wstring GetNormalizedSubject() = 0;
    /// The sender's address as Redemption knows it, empty if it does not.
    virtual std::wstring GetSenderSMTP() = 0;
    /// Redemption's view of the item, null without Redemption.
    virtual Redemption::ISafeItemPtr GetSafeItem() = 0;
    /// Gives the plain text, and writes the body in its own format to a temporary file. path: empty if no
    /// file was written.
    virtual void ExportBody(std::wstring& path, _bstr_t& plainText) = 0;

    /// The item's ID and subject, for the log.
    std::wstring ToString();

    /// Writes the characters as UTF-16 little-endian, the folder made if it is missing. writeBom: whether
    /// the mark FF FE stands in front. Raises IOException.
    static void WriteBSTRToFile(const _bstr_t& data, const std::wstring& path, bool writeBom);
    /// Reads what WriteBSTRToFile wrote, byte for byte, a mark in front left out. Raises IOException.
    static void ReadFileToBSTR(const std::wstring& path, _bstr_t& data);

private:
    void FillItemSubject_(CInspectorMessage& message);
    void FillItemSender_(CInspectorMessage& message);
    void FillItemRecipients_(CInspectorMessage& message);
    void FillItemRecipientsRedemption_(CInspectorMessage& message);
    void FillItemAttachments_(CInspectorMessage& message);
    void FillItemAttachmentsRedemption_(CInspectorMessage& message);
    void FillItemBody_(CInspectorMessage& message);
    void FillVersion_(CInspectorMessage& message);

    static LoggerHolder logger_;
};

} // namespace vorlek
