#include "stand-ins/redemption/SafeItem.h"

#include "stand-ins/outlook/Attachments.h"
#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/redemption/Interfaces.h"
#include "stand-ins/redemption/SafeRecipients.h"

namespace stand_ins::redemption {
namespace {

const Class& SafeAttachmentClass() {
    static const ClassOf<Attachment> members(L"SafeAttachment", kSafeAttachmentId, &AttachmentMembers());
    return members;
}

const Class& SafeAttachmentsClass() {
    static const ClassOf<Attachments> members(L"SafeAttachments", kSafeAttachmentsId, &AttachmentsClass());
    return members;
}

const Class& SafeItemClass() {
    static const Class members =
        ClassOf<SafeItem>(L"SafeItem", kSafeItemId)
            .Get(L"Item", [](SafeItem& self) { return ObjectValue(self.Attached()); })
            .Put(L"Item", [](SafeItem& self, const Arguments& a) { self.Attach(a.Object(0)); })
            .Get(L"Body", [](SafeItem& self) { return TextValue(self.Record()->data.body); })
            .Get(L"Recipients",
                 [](SafeItem& self) { return ObjectValue(MakeSafeRecipients(self.SharedOwner(), self.Record())); })
            .Get(L"Attachments", [](SafeItem& self) {
                return ObjectValue(Make<Attachments>(self.SharedOwner(), self.Record(), SafeAttachmentsClass(),
                                                     SafeAttachmentClass()));
            });
    return members;
}

} // namespace

SafeItem::SafeItem(std::shared_ptr<Session> session, const Class& model) : Object(std::move(session), model) {}

void SafeItem::Attach(const DispatchPtr& item) {
    auto record = RecordOf(item);
    if (!record) {
        throw Failure{E_INVALIDARG, L"This is no item of Outlook's."};
    }
    item_ = item;
    record_ = std::move(record);
}

const std::shared_ptr<ItemRecord>& SafeItem::Record() const {
    if (!record_) {
        throw Failure{E_POINTER, L"The Item property must be set first."};
    }
    record_->CheckAlive();
    return record_;
}

void* SafeItem::OwnInterface(REFIID interfaceId) {
    if (interfaceId != kSafeItemId) {
        return nullptr;
    }
    AddRef();
    return static_cast<IDispatch*>(this);
}

const Class& SafeMailItemClass() {
    static const ClassOf<SafeItem> members(L"SafeMailItem", kSafeMailItemId, &SafeItemClass());
    return members;
}

const Class& SafeMeetingItemClass() {
    static const ClassOf<SafeItem> members(L"SafeMeetingItem", kSafeMeetingItemId, &SafeItemClass());
    return members;
}

const Class& SafeTaskItemClass() {
    static const ClassOf<SafeItem> members(L"SafeTaskItem", kSafeTaskItemId, &SafeItemClass());
    return members;
}

} // namespace stand_ins::redemption
