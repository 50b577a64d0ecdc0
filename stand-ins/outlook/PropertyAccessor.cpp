#include "stand-ins/outlook/PropertyAccessor.h"

#include <algorithm>
#include <cwctype>

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Text.h"

namespace stand_ins {
namespace {

constexpr std::wstring_view kProptag = L"http://schemas.microsoft.com/mapi/proptag/0x";

// Tags of MAPI, each with the type of a 16-bit text.
enum Tag : unsigned long {
    kMessageClass = 0x001A001F,
    kSubject = 0x0037001F,
    kSentRepresentingName = 0x0042001F,
    kSenderAddress = 0x0C1F001F,
    kNormalizedSubject = 0x0E1D001F,
    kBody = 0x1000001F,
    kDisplayName = 0x3001001F,
    kAddressType = 0x3002001F,
    kEmailAddress = 0x3003001F,
    kAttachFileName = 0x3707001F,
    kAttachMimeType = 0x370E001F,
    kAttachContentId = 0x3712001F,
    kSmtpAddress = 0x39FE001F,
};

using Text = std::optional<std::wstring>;

Text NotEmpty(const std::wstring& text) {
    return text.empty() ? Text() : Text(text);
}

Text Own(const Properties& properties, unsigned long tag) {
    for (const unsigned long form : {tag, (tag & 0xFFFF0000) | 0x001E}) {
        if (const auto found = properties.find(form); found != properties.end()) {
            return found->second;
        }
    }
    return {};
}

const Class& PropertyAccessorClass() {
    static const Class members = ClassOf<PropertyAccessor>(L"PropertyAccessor", kPropertyAccessorId)
                                     .Call(L"GetProperty", 1, 1, [](PropertyAccessor& self, const Arguments& a) {
                                         return TextValue(self.Read(a.Text(0)));
                                     });
    return members;
}

} // namespace

PropertyAccessor::PropertyAccessor(std::shared_ptr<Session> session, PropertyReader reader)
    : Object(std::move(session), PropertyAccessorClass()), reader_(std::move(reader)) {}

std::wstring PropertyAccessor::Read(const std::wstring& name) const {
    const std::wstring digits = name.starts_with(kProptag) ? name.substr(kProptag.size()) : L"";
    if (digits.size() != 8 || !std::ranges::all_of(digits, [](wchar_t c) { return std::iswxdigit(c) != 0; })) {
        throw Failure{E_INVALIDARG, L"The property name \"" + name + L"\" is not valid."};
    }
    unsigned long tag = std::wcstoul(digits.c_str(), nullptr, 16);
    if ((tag & 0xFFFF) == 0x001E) {
        tag |= 0x001F;
    }
    const Text value = reader_(tag);
    if (!value) {
        throw Failure{kNotFound, L"The property \"" + name + L"\" is unknown or cannot be found."};
    }
    return *value;
}

PropertyReader PropertiesOfItem(std::shared_ptr<ItemRecord> record) {
    return [record](unsigned long tag) -> Text {
        record->CheckAlive();
        const ItemData& item = record->data;
        if (auto own = Own(item.properties, tag)) {
            return own;
        }
        switch (tag) {
        case kMessageClass:
            return item.messageClass;
        case kSubject:
            return item.subject;
        case kNormalizedSubject:
            return NormalizedSubject(item.subject);
        case kBody:
            return item.body;
        case kSentRepresentingName:
            return NotEmpty(item.fromName);
        case kSenderAddress:
            return NotEmpty(item.account);
        default:
            return {};
        }
    };
}

PropertyReader PropertiesOfRecipient(std::shared_ptr<ItemRecord> record, std::shared_ptr<RecipientData> recipient) {
    return [record, recipient](unsigned long tag) -> Text {
        record->CheckAlive();
        if (auto own = Own(recipient->properties, tag)) {
            return own;
        }
        switch (tag) {
        case kDisplayName:
            return recipient->name.empty() ? recipient->address : recipient->name;
        case kAddressType:
            return recipient->addressType;
        case kEmailAddress:
            return NotEmpty(recipient->address);
        case kSmtpAddress:
            return recipient->addressType == L"SMTP" ? NotEmpty(recipient->address) : Text();
        default:
            return {};
        }
    };
}

PropertyReader PropertiesOfAttachment(std::shared_ptr<ItemRecord> record, std::shared_ptr<AttachmentData> attachment) {
    return [record, attachment](unsigned long tag) -> Text {
        record->CheckAlive();
        switch (tag) {
        case kDisplayName:
            return attachment->displayName;
        case kAttachFileName:
            return attachment->fileName;
        case kAttachMimeType:
            return NotEmpty(attachment->mimeType);
        case kAttachContentId:
            return NotEmpty(attachment->contentId);
        default:
            return {};
        }
    };
}

} // namespace stand_ins
