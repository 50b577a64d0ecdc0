#include "stand-ins/outlook/ItemRecord.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Rtf.h"
#include "stand-ins/outlook/Text.h"

namespace stand_ins {

ItemRecord::ItemRecord(ItemData item, FolderPath place) : folder(std::move(place)) {
    Complete(item);
    dirty = item.entryId.empty();
    Reset(std::move(item));
}

void ItemRecord::Reset(ItemData item) {
    recipients.clear();
    attachments.clear();
    for (RecipientData& recipient : item.recipients) {
        recipients.push_back(std::make_shared<RecipientData>(std::move(recipient)));
    }
    for (AttachmentData& attachment : item.attachments) {
        attachments.push_back(std::make_shared<AttachmentData>(std::move(attachment)));
    }
    item.recipients.clear();
    item.attachments.clear();
    data = std::move(item);
}

ItemData ItemRecord::Snapshot() const {
    ItemData item = data;
    if (related) {
        item.relatedId = related->data.entryId.empty() ? related->futureId : related->data.entryId;
    }
    for (const auto& recipient : recipients) {
        item.recipients.push_back(*recipient);
    }
    for (const auto& attachment : attachments) {
        item.attachments.push_back(*attachment);
    }
    return item;
}

void ItemRecord::CheckAlive() const {
    if (dead) {
        throw Failure{kObjectDeleted, L"The item has been moved or deleted."};
    }
}

void ItemRecord::SetBody(const std::wstring& text) {
    data.body = text;
    data.htmlBody.clear();
    data.rtfBody.clear();
    if (data.bodyFormat == Html) {
        data.bodyFormat = Plain;
    }
}

void ItemRecord::SetHtmlBody(const std::wstring& html) {
    data.htmlBody = html;
    data.rtfBody.clear();
    data.body = PlainTextOf(html);
    data.bodyFormat = Html;
}

void ItemRecord::SetRtfBody(std::string rtf) {
    SetBodyFormat(RichText);
    data.body = PlainTextOfRtf(rtf);
    data.rtfBody = std::move(rtf);
}

void ItemRecord::SetBodyFormat(long format) {
    if (format < Plain || format > RichText) {
        throw Failure{E_INVALIDARG, L"The value of BodyFormat is not one of plain, HTML and rich text."};
    }
    if (format == Html && data.htmlBody.empty()) {
        data.htmlBody = HtmlOf(data.body);
    } else if (format != Html) {
        data.htmlBody.clear();
    }
    if (format != RichText) {
        data.rtfBody.clear();
    }
    data.bodyFormat = format;
}

std::wstring ItemRecord::HtmlBody() const {
    return data.bodyFormat == Html || data.body.empty() ? data.htmlBody : HtmlOf(data.body);
}

std::string ItemRecord::RtfBody() const {
    return data.bodyFormat == RichText && data.rtfBody.empty() && !data.body.empty() ? RtfOf(data.body) : data.rtfBody;
}

} // namespace stand_ins
