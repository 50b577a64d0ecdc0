#include "stand-ins/redemption/RdoAttachments.h"

#include "stand-ins/outlook/Attachments.h"
#include "stand-ins/redemption/Interfaces.h"

namespace stand_ins::redemption {
namespace {

const Class& RdoAttachmentClass() {
    static const ClassOf<Attachment> members(L"RDOAttachment", IID_NULL, &AttachmentMembers());
    return members;
}

const Class& RdoAttachmentsClass() {
    static const Class members = ClassOf<Attachments>(L"RDOAttachments", kRdoAttachmentsId, &AttachmentsClass())
                                     .Call(L"Clear", 0, 0, [](Attachments& self, const Arguments&) { self.Clear(); });
    return members;
}

} // namespace

DispatchPtr MakeRdoAttachments(const std::shared_ptr<Session>& session, const std::shared_ptr<ItemRecord>& record) {
    return Make<Attachments>(session, record, RdoAttachmentsClass(), RdoAttachmentClass());
}

} // namespace stand_ins::redemption
