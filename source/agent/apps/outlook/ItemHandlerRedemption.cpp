// What goes into the inspector message before Outlook 2007, whose object model guards it: read through Redemption.
#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/ItemHandler.h"
#include "agent/apps/outlook/RecipientKey.h"
#include "foundation/Border.h"
#include "foundation/Log.h"
#include "plugin-link/Vocabulary.h"

namespace vorlek {
namespace {

constexpr wchar_t kSmtp[] = L"SMTP"; // the address type, in this spelling alone

std::wstring ReadAddress_(Redemption::ISafeRecipient& recipient, Redemption::IAddressEntry& entry) {
    const std::wstring type = platform::ToWide(platform::ToText(recipient.GetFields(Redemption::PR_ADDRTYPE_W)));
    return platform::ToWide(type == kSmtp ? recipient.GetAddress() : entry.GetSMTPAddress());
}

void FillRecipient_(Redemption::ISafeRecipients& recipients, long index, CInspectorMessage& message,
                    const log4cxx::LoggerPtr& logger) {
    const Redemption::ISafeRecipientPtr recipient = recipients.Item(_variant_t(index));
    if (!recipient->GetResolved()) {
        LOG_DEBUG(logger, L"Recipient is not resolved. Continue to next recipient.");
        return;
    }
    const Redemption::IAddressEntryPtr entry = recipient->GetAddressEntry();
    if (!entry) {
        LOG_DEBUG(logger, L"No address entry. Might this be a mailing list which we can't currently handle?");
        return;
    }
    const std::wstring address = ReadAddress_(*recipient, *entry);
    const std::wstring name = platform::ToWide(recipient->GetName());
    if (address.empty()) {
        LOG_DEBUG(logger,
                  L"Failed to retrieve smtp address ro recipient #" << index << L" [" << name << L"]. Mailing list?");
        return;
    }
    const wchar_t* const key = RecipientKey(recipient->GetType());
    LOG_DEBUG(logger, L"Recipient [" << index << L"] address=[" << address << L"] recipientContextType=[" << key
                                     << L"] name=[" << name << L"]");
    message.AddContextItem(key, address);
    message.AddContextItem(vocabulary::key::kIncidentDestination, address);
}

void FillAttachment_(Redemption::IAttachments& attachments, long index, CInspectorMessage& message,
                     const log4cxx::LoggerPtr& logger) {
    const Redemption::IAttachmentPtr attachment = attachments.Item(_variant_t(index));
    const std::wstring path = CommonUtils::MakeTemporaryPath(L"cip");
    const std::wstring originalName = platform::ToWide(attachment->GetFileName());
    attachment->SaveAsFile(path.c_str());
    message.AddFileItemToBody(path, {{vocabulary::key::kDataLocation, originalName}}, false);
    LOG_DEBUG(logger, L"Attachment was saved to: " << path << L"Original name: " << originalName);
}

} // namespace

void ItemHandler::FillItemRecipientsRedemption_(CInspectorMessage& message) {
    const auto fill = [&] {
        const Redemption::ISafeItemPtr safeItem = GetSafeItem();
        if (!safeItem) {
            LOG_ERROR(logger_, L"Failed to retrieve Redemption SafeItem => skipping recipients list");
            return;
        }
        const Redemption::ISafeRecipientsPtr recipients = safeItem->GetRecipients();
        recipients->ResolveAll();
        const long count = recipients->GetCount();
        LOG_DEBUG(logger_, L"Item has numOfRecipients=" << count);
        bool read = true; // one that fails is the last one looked at
        for (long index = 1; index <= count && read; ++index) {
            read = Guard(logger_, LOG_SITE,
                         {.exception = {},
                          .comError = {L"Caught a com exception while resolving an item recipient: "},
                          .stdException = {L"Caught an exception while resolving an item recipient: "},
                          .other = {L"Caught an exception while resolving an item recipient - Unknown error"}},
                         [&] { FillRecipient_(*recipients, index, message, logger_); });
        }
    };
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception while resolving item recipients (skipping): "},
           .stdException = {L"Caught an exception while resolving item recipients (skipping): "},
           .other = {L"Caught an exception while resolving item recipients - Unknown error (skipping)."}},
          fill);
}

void ItemHandler::FillItemAttachmentsRedemption_(CInspectorMessage& message) {
    const Redemption::ISafeItemPtr safeItem = GetSafeItem();
    if (!safeItem) {
        LOG_ERROR(logger_, L"Failed to retrieve Redemption SafeItem => skipping preparing attachments for inspection");
        return;
    }
    const Redemption::IAttachmentsPtr attachments = safeItem->GetAttachments();
    const long count = attachments->GetCount();
    LOG_DEBUG(logger_, L"Item (REDEMPTION) contains " << count << L" attachment");
    for (long index = 1; index <= count; ++index) {
        FillAttachment_(*attachments, index, message, logger_);
    }
    LOG_DEBUG(logger_, L"Total number of attachments: " << count);
}

} // namespace vorlek
