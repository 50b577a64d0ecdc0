#include "agent/apps/outlook/ItemHandler.h"

#include <cstring>
#include <vector>

#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "agent/apps/outlook/Outlook2007Helper.h"
#include "foundation/Border.h"
#include "foundation/File.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "plugin-link/Vocabulary.h"

namespace vorlek {
namespace {

constexpr BYTE kByteOrderMark[] = {0xFF, 0xFE}; // UTF-16, little-endian

} // namespace

LoggerHolder ItemHandler::logger_;

ItemHandler::ItemHandler() {
    InitLogger(logger_, "vorlek::ItemHandler::ItemHandler", false);
}

bool ItemHandler::HandleOnSpot() {
    if (CommonUtils::IsOnSpotOverrideEnabled(logger_)) {
        LOG_INFO(logger_, L"OnSpot override enabled.");
        return true;
    }
    return false;
}

void ItemHandler::FillInspectorMessage(CInspectorMessage& message) {
    FillItemSubject_(message);
    FillItemSender_(message);
    FillItemRecipients_(message);
    FillItemAttachments_(message);
    FillItemBody_(message);
    FillVersion_(message);
}

std::wstring ItemHandler::ToString() {
    return L"\n ID=" + GetItemUniqueID() + L"\n Subject=" + GetSubject();
}

void ItemHandler::FillItemSubject_(CInspectorMessage& message) {
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception while resolving item subject (skipping): "},
           .stdException = {L"Caught an exception while resolving item subject (skipping): "},
           .other = {L"Caught an exception while resolving item subject - Unknown error (skipping)."}},
          [&] {
              const std::wstring subject = GetSubject();
              message.AddContextItem(vocabulary::key::kEmailSubject, subject);
              message.AddContextItem(vocabulary::key::kEmailNormalizedSubject, GetNormalizedSubject());
              message.AddTextItemToBody(subject, {{vocabulary::key::kItemType, vocabulary::itemType::kEmailSubject}},
                                        vocabulary::textFormat::kClearText);
          });
}

void ItemHandler::FillItemSender_(CInspectorMessage& message) {
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception while resolving item sender (skipping): "},
           .stdException = {L"Caught an exception while resolving item sender (skipping): "},
           .other = {L"Caught an exception while resolving item sender - Unknown error (skipping)."}},
          [&] {
              const std::wstring sender = GlobalConfig::IsOutlookBefore2007()
                                              ? GetSenderSMTP()
                                              : Outlook2007Helper::GetItemSenderSMTP(GetItemDispatch(), logger_);
              message.AddContextItem(vocabulary::key::kEmailFrom, sender);
              LOG_DEBUG(logger_, L"Item sender is: " << sender);
          });
}

void ItemHandler::FillItemRecipients_(CInspectorMessage& message) {
    if (GlobalConfig::IsOutlookBefore2007()) {
        FillItemRecipientsRedemption_(message);
    } else {
        Outlook2007Helper::FillItemRecipients(GetItemDispatch(), message, logger_);
    }
}

void ItemHandler::FillItemAttachments_(CInspectorMessage& message) {
    if (GlobalConfig::IsOutlookBefore2007()) {
        FillItemAttachmentsRedemption_(message);
    } else {
        Outlook2007Helper::FillItemAttachments(GetItemDispatch(), message, logger_);
    }
}

void ItemHandler::FillItemBody_(CInspectorMessage& message) {
    LOG_INFO(logger_, L"Exporting item body to a temporary file");
    std::wstring path;
    _bstr_t plainText;
    ExportBody(path, plainText);
    LOG_INFO(logger_, L"Exported item body, plain text size: " << plainText.length() << L", filename: " << path);
    message.AddContextItem(vocabulary::key::kEmailBody, path);
    message.AddTextItemToBody(std::wstring_view(static_cast<const wchar_t*>(plainText), plainText.length()),
                              {{vocabulary::key::kItemType, vocabulary::itemType::kEmailBody}},
                              vocabulary::textFormat::kClearText);
}

void ItemHandler::FillVersion_(CInspectorMessage& message) {
    const std::wstring version = std::to_wstring(GlobalConfig::GetOutlookMajorVersion());
    if (!version.empty()) {
        message.AddContextItem(vocabulary::key::kApplication, version);
        LOG_DEBUG(logger_, L"Outlook version retrieved: " << version);
    }
}

void ItemHandler::WriteBSTRToFile(const _bstr_t& data, const std::wstring& path, bool writeBom) {
    const auto* const text = static_cast<const wchar_t*>(data);
    const UINT size = SysStringByteLen(const_cast<BSTR>(text)); // of a null one 0
    const std::wstring directory = CommonUtils::GetDirectory(path);
    LOG_DEBUG(logger_, L"Writing BSTR of size " << size << L" to realpath " << directory << L" and full path=" << path);
    if (CommonUtils::DirectoryExists(directory)) {
        LOG_DEBUG(logger_, L"WriteBSTRToFile: realpath=" << directory << L" exits.  Not creating");
    } else {
        LOG_DEBUG(logger_, L"WriteBSTRToFile:full name=" << path << L", realpath=" << directory
                                                         << L" does not exist. creating directory");
        CommonUtils::MakeDirectory(directory);
    }
    File file(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
    if (writeBom) {
        file.Write(kByteOrderMark, sizeof(kByteOrderMark));
    }
    if (size == 0) {
        LOG_DEBUG(logger_, L"Buffer.Size is 0, not writing.\n");
    } else {
        file.Write(text, size);
    }
}

void ItemHandler::ReadFileToBSTR(const std::wstring& path, _bstr_t& data) {
    File file(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    std::vector<char> bytes(static_cast<std::size_t>(file.GetSize()));
    const DWORD size = bytes.empty() ? 0 : file.Read(bytes.data(), static_cast<DWORD>(bytes.size()));
    LOG_DEBUG(logger_, L"Reading BSTR of size " << size << L" from " << path);
    const bool marked =
        size >= sizeof(kByteOrderMark) && std::memcmp(bytes.data(), kByteOrderMark, sizeof(kByteOrderMark)) == 0;
    const DWORD skipped = marked ? sizeof(kByteOrderMark) : 0;
    const BSTR text = SysAllocStringByteLen(bytes.data() + skipped, size - skipped);
    if (text == nullptr) {
        _com_issue_error(E_OUTOFMEMORY);
    }
    data = _bstr_t(text, false);
}

} // namespace vorlek
