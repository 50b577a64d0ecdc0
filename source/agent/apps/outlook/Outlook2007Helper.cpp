#include "agent/apps/outlook/Outlook2007Helper.h"

#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/RecipientKey.h"
#include "foundation/Border.h"
#include "foundation/Log.h"
#include "platform/outlook/Outlook.h"
#include "plugin-link/Vocabulary.h"

namespace vorlek {
namespace {

// MAPI properties in Outlook's schema notation.
const _bstr_t kSmtpAddress_(L"http://schemas.microsoft.com/mapi/proptag/0x39FE001E");
const _bstr_t kSentRepresentingName_(L"http://schemas.microsoft.com/mapi/proptag/0x0042001F");
const _bstr_t kNormalizedSubject_(L"http://schemas.microsoft.com/mapi/proptag/0x0E1D001F");

Outlook::RecipientsPtr GetRecipients_(const IDispatchPtr& item, const log4cxx::LoggerPtr& logger) {
    LOG_DEBUG(logger, L"Trying to get recipients for the mail item");
    if (const Outlook::_MailItemPtr mail = item) {
        LOG_DEBUG(logger, L"cast to mail item succeeded");
        return mail->GetRecipients();
    }
    if (const Outlook::_MeetingItemPtr meeting = item) {
        LOG_DEBUG(logger, L"cast to meeting item succeeded");
        return meeting->GetRecipients();
    }
    // A task, where the other three functions ask for a task request. Kept so.
    if (const Outlook::_TaskItemPtr task = item) {
        LOG_DEBUG(logger, L"cast to task item succeeded");
        return task->GetRecipients();
    }
    return {};
}

Outlook::AttachmentsPtr GetAttachments_(const IDispatchPtr& item, const log4cxx::LoggerPtr& logger) {
    LOG_DEBUG(logger, L"Trying to get attachments for the mail item");
    if (const Outlook::_MailItemPtr mail = item) {
        LOG_DEBUG(logger, L"cast to mail item succeeded");
        return mail->GetAttachments();
    }
    if (const Outlook::_MeetingItemPtr meeting = item) {
        LOG_DEBUG(logger, L"cast to meeting item succeeded");
        return meeting->GetAttachments();
    }
    if (const Outlook::_TaskRequestItemPtr request = item) {
        LOG_DEBUG(logger, L"cast to task request item succeeded.");
        return request->GetAttachments();
    }
    return {};
}

Outlook::_PropertyAccessorPtr GetPropertyAccessor_(const IDispatchPtr& item, const log4cxx::LoggerPtr& logger) {
    if (const Outlook::_MailItemPtr mail = item) {
        LOG_DEBUG(logger, L"Cast to mail item succeeded");
        return mail->GetPropertyAccessor();
    }
    if (const Outlook::_MeetingItemPtr meeting = item) {
        LOG_DEBUG(logger, L"Cast to meeting item succeeded");
        return meeting->GetPropertyAccessor();
    }
    if (const Outlook::_TaskRequestItemPtr request = item) {
        LOG_DEBUG(logger, L"Cast to task request item succeeded");
        return request->GetPropertyAccessor();
    }
    return {};
}

Outlook::_AccountPtr GetAccount_(const IDispatchPtr& item, const log4cxx::LoggerPtr& logger) {
    if (const Outlook::_MailItemPtr mail = item) {
        LOG_DEBUG(logger, L"cast to mail item succeeded");
        return mail->GetSendUsingAccount();
    }
    // Looked at with false: looking must add nothing to the user's calendar or task list.
    if (const Outlook::_MeetingItemPtr meeting = item) {
        LOG_DEBUG(logger, L"cast to meeting item succeeded - getting related appointment");
        const Outlook::_AppointmentItemPtr appointment = meeting->GetAssociatedAppointment(false);
        if (!appointment) {
            LOG_WARN(logger, L"Could not get associated appointment");
            return {};
        }
        LOG_DEBUG(logger, L"acquired related appointment");
        return appointment->GetSendUsingAccount();
    }
    if (const Outlook::_TaskRequestItemPtr request = item) {
        LOG_DEBUG(logger, L"cast to task request item succeeded - getting related task item");
        const Outlook::_TaskItemPtr task = request->GetAssociatedTask(false);
        if (!task) {
            LOG_WARN(logger, L"Could not get associated task");
            return {};
        }
        LOG_DEBUG(logger, L"acquired related task item");
        return task->GetSendUsingAccount();
    }
    LOG_WARN(logger, L"Could not get account");
    return {};
}

void FillRecipient_(Outlook::Recipients& recipients, long index, CInspectorMessage& message,
                    const log4cxx::LoggerPtr& logger) {
    const Outlook::RecipientPtr recipient = recipients.Item(_variant_t(index));
    if (!recipient->GetResolved()) {
        LOG_DEBUG(logger, L"Recipient is not resolved. Continue to next recipient.");
        return;
    }
    LOG_DEBUG(logger, L"Got recipient " << index);
    const Outlook::_PropertyAccessorPtr accessor = recipient->GetPropertyAccessor();
    LOG_DEBUG(logger, L"Got prop accessesor " << index);
    _variant_t property = accessor->GetProperty(kSmtpAddress_);
    LOG_DEBUG(logger, L"Got property");
    const std::wstring address = platform::ToWide(platform::ToText(std::move(property)));
    LOG_DEBUG(logger, L"Got address " << address);
    if (address.empty()) {
        LOG_DEBUG(logger, L"Failed to retrieve SMTP address to recipient #" << index << L" - skipping it");
        return;
    }
    const wchar_t* const key = RecipientKey(recipient->GetType());
    if (*key == L'\0') {
        LOG_DEBUG(logger, L"Invalid type to recipient #" << index << L" - skipping it");
        return;
    }
    LOG_DEBUG(logger,
              L"Recipient [" << index << L"] address=[" << address << L"] recipientContextType=[" << key << L"]");
    message.AddContextItem(key, address);
    message.AddContextItem(vocabulary::key::kIncidentDestination, address);
}

/// Makes the folder of a temporary file again if it went away since the process found it.
void RequireDirectory_(const std::wstring& path, const std::wstring& originalName, const log4cxx::LoggerPtr& logger) {
    const std::wstring directory = CommonUtils::GetDirectory(path);
    LOG_INFO(logger, L"Attachment is saved to: " << directory << L" Original path: " << path);
    if (CommonUtils::DirectoryExists(directory)) {
        LOG_INFO(logger, L"Attachment is saved realpath- " << directory << L" exits.  Not creating");
    } else {
        LOG_INFO(logger, L"Attachment is saved path " << originalName << L", realpath=" << directory
                                                      << L" does not exist. creating directory");
        CommonUtils::MakeDirectory(directory);
    }
}

void FillAttachment_(Outlook::Attachments& attachments, long index, CInspectorMessage& message,
                     const log4cxx::LoggerPtr& logger) {
    const Outlook::AttachmentPtr attachment = attachments.Item(_variant_t(index));
    const std::wstring path = CommonUtils::MakeTemporaryPath(L"cip");
    const std::wstring originalName = platform::ToWide(attachment->GetFileName());
    RequireDirectory_(path, originalName, logger);
    attachment->SaveAsFile(path.c_str());
    message.AddFileItemToBody(path, {{vocabulary::key::kDataLocation, originalName}}, false);
    LOG_INFO(logger, L"Attachment was saved to: " << path << L"Original name: " << originalName);
}

} // namespace

_variant_t Outlook2007Helper::GetProperty(IDispatchPtr item, const _bstr_t& name, const log4cxx::LoggerPtr& logger) {
    _variant_t property;
    Guard(logger, LOG_SITE,
          {.exception = {},
           .comError = {L"COM exception while resolving property: "},
           .stdException = {L"STD exception while resolving property: "},
           .other = {L"Unknown error while resolving property."}},
          [&] {
              if (!item) {
                  LOG_WARN(logger, L"NULL item was passed");
                  return;
              }
              const Outlook::_PropertyAccessorPtr accessor = GetPropertyAccessor_(item, logger);
              if (!accessor) {
                  LOG_WARN(logger, L"Failed to get property accessor for item");
                  return;
              }
              LOG_DEBUG(logger, L"Successfully acquired property accessor");
              property = accessor->GetProperty(name);
          });
    return property;
}

_bstr_t Outlook2007Helper::GetRepresentedSenderName(IDispatchPtr item, const log4cxx::LoggerPtr& logger) {
    LOG_DEBUG(logger, L"Trying to get sender represented name using 2007 OOM");
    _variant_t property = GetProperty(item, kSentRepresentingName_, logger);
    if (property.vt != VT_BSTR) {
        return {};
    }
    const _bstr_t name = platform::ToText(std::move(property));
    LOG_DEBUG(logger, L"Represented Sender Name = " << platform::ToWide(name));
    return name;
}

_bstr_t Outlook2007Helper::GetNormalizedSubject(IDispatchPtr item, const log4cxx::LoggerPtr& logger) {
    LOG_DEBUG(logger, L"Trying to get normalized subject using 2007 OOM");
    _variant_t property = GetProperty(item, kNormalizedSubject_, logger);
    if (property.vt != VT_BSTR) {
        return {};
    }
    const _bstr_t subject = platform::ToText(std::move(property));
    LOG_DEBUG(logger, L"Normalized Subject = " << platform::ToWide(subject));
    return subject;
}

std::wstring Outlook2007Helper::GetItemSenderSMTP(IDispatchPtr item, const log4cxx::LoggerPtr& logger) {
    std::wstring address;
    Guard(logger, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception while resolving item sender (skipping): "},
           .stdException = {L"Caught an exception while resolving item sender (skipping): "},
           .other = {L"Caught an exception while resolving item sender - Unknown error (skipping)."}},
          [&] {
              LOG_DEBUG(logger, L"Trying to get sender using 2007 OOM");
              if (!item) {
                  LOG_WARN(logger, L"Null was passed");
                  return;
              }
              if (const Outlook::_AccountPtr account = GetAccount_(item, logger)) {
                  address = platform::ToWide(account->GetSmtpAddress());
              }
          });
    return address;
}

void Outlook2007Helper::FillItemRecipients(IDispatchPtr item, CInspectorMessage& message,
                                           const log4cxx::LoggerPtr& logger) {
    const auto fill = [&] {
        LOG_DEBUG(logger, L"Trying to get recipients using 2007 OOM");
        if (!item) {
            LOG_WARN(logger, L"Null was passed");
            return;
        }
        const Outlook::RecipientsPtr recipients = GetRecipients_(item, logger);
        if (!recipients) {
            LOG_WARN(logger, L"Could not get recipients");
            return;
        }
        const long count = recipients->GetCount();
        LOG_DEBUG(logger, L"Item has numOfRecipients=" << count);
        recipients->ResolveAll();
        for (long index = 1; index <= count; ++index) {
            constexpr wchar_t skipping[] = L" - (skipping): ";
            const Phrase failed{L"Caught an exception while resolving item recipient #", skipping, index};
            Guard(logger, LOG_SITE,
                  {.exception = {},
                   .comError = {L"Caught a com exception while resolving item recipient #", skipping, index},
                   .stdException = failed,
                   .other = failed},
                  [&] { FillRecipient_(*recipients, index, message, logger); });
        }
    };
    Guard(logger, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception while resolving item recipients (skipping): "},
           .stdException = {L"Caught an exception while resolving item recipients (skipping): "},
           .other = {L"Caught an exception while resolving item recipients - Unknown error (skipping)."}},
          fill);
}

void Outlook2007Helper::FillItemAttachments(IDispatchPtr item, CInspectorMessage& message,
                                            const log4cxx::LoggerPtr& logger) {
    const auto fill = [&] {
        LOG_DEBUG(logger, L"Trying to get attachments using 2007 OOM");
        if (!item) {
            LOG_WARN(logger, L"Null was passed");
            return;
        }
        const Outlook::AttachmentsPtr attachments = GetAttachments_(item, logger);
        if (!attachments) {
            LOG_WARN(logger, L"Could not get attachments");
            return;
        }
        const long count = attachments->GetCount();
        LOG_DEBUG(logger, L"Item has numOfAttachments=" << count);
        for (long index = 1; index <= count; ++index) {
            constexpr wchar_t skipping[] = L" - (skipping): ";
            const Phrase failed{L"Caught an exception while adding attachment #", skipping, index};
            Guard(logger, LOG_SITE,
                  {.exception = {},
                   .comError = {L"Caught a com exception while adding attachment #", skipping, index},
                   .stdException = failed,
                   .other = failed},
                  [&] { FillAttachment_(*attachments, index, message, logger); });
        }
        LOG_DEBUG(logger, L"Filled total number of attachments: " << count);
    };
    Guard(logger, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception while adding attachments (skipping): "},
           .stdException = {L"Caught an exception while adding attachments (skipping): "},
           .other = {L"Caught an exception while adding attachments - Unknown error (skipping)."}},
          fill);
}

} // namespace vorlek
