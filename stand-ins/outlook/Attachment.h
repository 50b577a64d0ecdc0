#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The members of an attachment, whoever shows it.
const Class& AttachmentMembers();
/// Those of Outlook's own.
const Class& AttachmentClass();

/// One attachment of an item.
class Attachment : public Object {
public:
    Attachment(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
               std::shared_ptr<AttachmentData> attachment, const Class& model = AttachmentClass());

    AttachmentData& Alive() const {
        record_->CheckAlive();
        return *attachment_;
    }
    /// Its size in bytes, 0 before the item is saved with it.
    long Size() const;
    /// Failure: the system's error.
    void SaveAs(const std::wstring& path) const;
    /// Takes it out of its item.
    void Delete();
    DispatchPtr Accessor();

private:
    std::shared_ptr<ItemRecord> record_;
    std::shared_ptr<AttachmentData> attachment_;
};

} // namespace stand_ins
