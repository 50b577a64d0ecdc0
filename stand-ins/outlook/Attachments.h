#pragma once
#include <memory>

#include "stand-ins/outlook/Attachment.h"
#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

const Class& AttachmentsClass();

/// The attachments of an item.
class Attachments : public Object {
public:
    /// entry: the class of the single ones.
    Attachments(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
                const Class& model = AttachmentsClass(), const Class& entry = AttachmentClass());

    ItemRecord& Alive() const {
        record_->CheckAlive();
        return *record_;
    }
    /// index from 1. Failure: as of an attachment that is not there.
    DispatchPtr At(long index);
    void Remove(long index);
    void Clear();
    /// Source (a path), Type, Position, DisplayName. The new one stands last; Position only tells a rich-text body
    /// where to show it. Failure: as of a file that cannot be read.
    DispatchPtr Add(const Arguments& arguments);

private:
    size_t Index_(long index) const;

    std::shared_ptr<ItemRecord> record_;
    const Class& entry_;
};

} // namespace stand_ins
