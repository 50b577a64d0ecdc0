#include "agent/apps/outlook/MessageHandler.h"

#include <exception>

#include "agent/apps/outlook/CommonUtils.h"

namespace vorlek {
namespace {

constexpr int kRtfWithoutHeaders = 1026; // a save type of Redemption
constexpr int kImportRtf = 1;

} // namespace

LoggerHolder MessageHandler::logger_;

MessageHandler::MessageHandler(Outlook::_MailItemPtr item) : ItemWrapper(item) {
    InitLogger(logger_, "vorlek::MessageHandler::MessageHandler", false);
}

bool MessageHandler::QueryType(IDispatchPtr item) {
    return AnswersInterface(item, __uuidof(Outlook::_MailItem));
}

bool MessageHandler::HandleOnSpot() {
    return ItemHandler::HandleOnSpot() || Item_->GetAutoForwarded() || Item_->GetVotingResponse().length() != 0;
}

std::wstring MessageHandler::GetSentItemUniqueID() {
    return GetItemUniqueID();
}

void MessageHandler::Send() {
    LOG_DEBUG(logger_, L"Sending the message item...");
    bool sent = false;
    if (!LeaveLedger_(sent) || sent) {
        return;
    }
    LOG_INFO(logger_, L"Sending the message item using Outlook Object Model...");
    if (!Item_) {
        LOG_ERROR(logger_, L"message)Item_ is NULL");
        return;
    }
    SendThroughOutlook_();
}

bool MessageHandler::LeaveLedger_(bool& sent) {
    return Guard(logger_, LOG_SITE,
                 {.exception = {},
                  .comError = {L"MessageHandler::Send: Caught a com exception during RemoveFromInspectedItems or "
                               L"SendWithRDO_() "},
                  .stdException = {L"MessageHandler::Send: Caught an exception: during RemoveFromInspectedItems or "
                                   L"SendWithRDO_() "},
                  .other = {L"MessageHandler::Send: Caught Unknown error! during RemoveFromInspectedItems or "
                            L"SendWithRDO_()"}},
                 [&] {
                     CommonUtils::RemoveFromInspectedItems(GetItemUniqueID(), logger_);
                     sent = GlobalConfig::IsOutlookBefore2007() && SendWithRDO_();
                 });
}

bool MessageHandler::SendWithRDO_() {
    bool sent = false;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"MessageHandler::SendWithRDO_: Caught a com exception during Send: "},
           .stdException = {L"MessageHandler::SendWithRDO_: Caught an exception: "},
           .other = {L"MessageHandler::SendWithRDO_: Caught Unknown error!"}},
          [&] {
              LOG_INFO(logger_, L"Sending using Redemption (Outlook 2003) - Creating Redemption.RDOSession");
              const Redemption::IRDOMailPtr mail = GetRDOObject();
              if (!mail) {
                  return;
              }
              LOG_DEBUG(logger_, L"Setting the subject in case a stamp was applied");
              mail->PutSubject(Item_->GetSubject());
              mail->Send();
              LOG_DEBUG(logger_, L"Successfully sent item using RDO object module!");
              sent = true;
          });
    return sent;
}

void MessageHandler::SendThroughOutlook_() {
    HRESULT status = S_OK;
    bool comErrorInSend = false;
    try {
        const Outlook::_NameSpacePtr session = GlobalConfig::GetOutlookApplication()->GetSession();
        if (!session) {
            LOG_ERROR(logger_, L"Failed to retrieve Outlook session.");
            return;
        }
        // Nothing reads the folder: the reference alone is wanted, for as long as the send runs.
        const Outlook::MAPIFolderPtr sentItems = session->GetDefaultFolder(Outlook::olFolderSentMail);
        LOG_INFO(logger_, L"Sending the message deb5");
        status = Item_->Send();
        LOG_INFO(logger_, L"Sending the message deb6.sta=" << status);
    } catch (const _com_error& failure) {
        LOG_ERROR(logger_, L"MessageHandler::Send: YM:Caught a com exception during Send: " << failure.ErrorMessage());
        status = failure.Error();
        comErrorInSend = true;
    } catch (const std::exception& failure) {
        LOG_ERROR(logger_, L"MessageHandler::Send: Caught an exception: " << failure.what());
    } catch (...) {
        LOG_ERROR(logger_, L"MessageHandler::Send: Caught Unknown error!");
    }
    LOG_INFO(logger_, L"- Send():still alive..sta=" << status);
    if (status < 0) {
        LOG_ERROR(logger_, L"MessageHandler::Send - Outlook failed to send the message item.");
    }
    if (comErrorInSend) {
        GiveBackToUser_();
    } else {
        LOG_INFO(logger_, L"display WAS NOT NEEDED as comErrorInSend=" << comErrorInSend);
    }
}

void MessageHandler::GiveBackToUser_() {
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"MessageHandler::Send: Caught a com exception during display: "},
           .stdException = {L"MessageHandler::Send: Caught an exception during display: "},
           .other = {L"MessageHandler::Send: Unknown  error during display!"}},
          [&] {
              Item_->Display(platform::Missing());
              LOG_INFO(logger_, L"display was run as comerrorinsend=" << true);
          });
}

DATE MessageHandler::GetLastModificationTime() {
    LOG_DEBUG(logger_, L"GetLastModificationTime called for message");
    const DATE time = Item_->GetLastModificationTime();
    LOG_DEBUG(logger_, L"Returning modification time: " << time);
    return time;
}

Redemption::ISafeItemPtr MessageHandler::GetSafeItem() {
    return KeepSafeItem_(L"Redemption.SafeMailItem", L"Failed to retrieve Redemption.SafeMailItem CLSID",
                         L"Failed to create Redemption.SafeMailItem instance", logger_);
}

void MessageHandler::ExportBody(std::wstring& path, _bstr_t& plainText) {
    plainText = ReadPlainText_(logger_);
    LOG_INFO(logger_, L"ExportBody (message) after doing correct GetSafeItem.length=" << plainText.length());
    if (!Item_) {
        LOG_ERROR(logger_, L"(message)Item_ is NULL");
        return;
    }
    switch (Item_->GetBodyFormat()) {
    case Outlook::olFormatPlain:
        path = CommonUtils::MakeTemporaryPath(L"txt");
        WriteBSTRToFile(plainText, path, true);
        break;
    case Outlook::olFormatHTML:
        path = ExportHtml_();
        break;
    case Outlook::olFormatRichText:
        path = ExportRichText_();
        break;
    default:
        break;
    }
}

std::wstring MessageHandler::ExportHtml_() {
    _bstr_t html;
    if (GlobalConfig::IsOutlookBefore2007()) {
        const Redemption::IRDOMailPtr mail = GetRDOObject();
        if (!mail) {
            LOG_ERROR(logger_, L"Failed to retrieve Redemption RDO mail => exporting no HTML");
            return {};
        }
        html = mail->GetHTMLBody();
    } else {
        html = Item_->GetHTMLBody();
        LOG_DEBUG(logger_, L"ExportBody (message) after getting HTMLbody.length=" << html.length());
    }
    std::wstring path = CommonUtils::MakeTemporaryPath(L"html");
    WriteBSTRToFile(html, path, false); // without a mark: the agent tells HTML by that
    return path;
}

std::wstring MessageHandler::ExportRichText_() {
    // Outlook's own object model gives no rich text in any version.
    const Redemption::IRDOMailPtr mail = GetRDOObject();
    if (!mail) {
        LOG_ERROR(logger_, L"Failed to retrieve Redemption RDO mail => exporting no rich text");
        return {};
    }
    std::wstring path = CommonUtils::MakeTemporaryPath(L"rtf");
    mail->SaveAs(path.c_str(), _variant_t(kRtfWithoutHeaders));
    return path;
}

void MessageHandler::LabelSubject(const std::wstring& label) {
    Item_->PutSubject(label.c_str());
}

void MessageHandler::LabelBody(const std::wstring& path) {
    if (!Item_) {
        LOG_ERROR(logger_, L"Item_ is NULL not labelling");
        return;
    }
    _bstr_t body;
    switch (Item_->GetBodyFormat()) {
    case Outlook::olFormatPlain:
        LOG_INFO(logger_, L"Item is a plain text message");
        ReadFileToBSTR(path, body);
        if (GlobalConfig::IsOutlookBefore2007()) {
            GetLabelledMail_()->PutBody(body);
        } else {
            LOG_INFO(logger_, L"Outlook2007+ - using message object");
            Item_->PutBody(body);
        }
        break;
    case Outlook::olFormatHTML:
        LOG_INFO(logger_, L"Item is an HTML message");
        ReadFileToBSTR(path, body);
        if (GlobalConfig::IsOutlookBefore2007()) {
            GetLabelledMail_()->PutHTMLBody(body);
        } else {
            Item_->PutHTMLBody(body);
            LOG_DEBUG(logger_, L"ExportBody (message) after using message object.length=" << body.length());
        }
        break;
    case Outlook::olFormatRichText: {
        LOG_INFO(logger_, L"Item is a rich text message - importing via Redemption");
        const Redemption::IRDOMailPtr mail = GetRDOObject();
        mail->Import(path.c_str(), _variant_t(kImportRtf)); // without Redemption: E_POINTER
        break;
    }
    default:
        break;
    }
}

Redemption::IRDOMailPtr MessageHandler::GetLabelledMail_() {
    LOG_INFO(logger_, L"Outlook2003 - using Redemption message object");
    return GetRDOObject(); // without Redemption null, whose use raises E_POINTER
}

bool MessageHandler::OverrideItemAttachments(const InspectionDecision::Attachments& attachments) {
    bool replaced = false;
    Guard(logger_, LOG_SITE, kReplacingAttachments, [&] {
        if (GlobalConfig::IsOutlookBefore2007()) {
            ModifyAttachmentCollection_(Redemption::IRDOMailPtr(GetRDOObject()), attachments);
            replaced = true;
        } else {
            replaced = ModifyAttachmentCollection_(Item_->GetAttachments(), attachments);
        }
    });
    return replaced;
}

ItemHandler* MessageHandler::CreateSameKind(Outlook::_MailItemPtr item) {
    return new MessageHandler(item);
}

} // namespace vorlek
