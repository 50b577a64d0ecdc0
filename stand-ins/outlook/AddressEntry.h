#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

const Class& AddressEntryClass();

/// The entry that a recipient resolved to.
class AddressEntry : public Object {
public:
    AddressEntry(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
                 std::shared_ptr<RecipientData> recipient, const Class& model = AddressEntryClass());

    const RecipientData& Alive() const {
        record_->CheckAlive();
        return *recipient_;
    }
    const std::shared_ptr<ItemRecord>& Record() const { return record_; }
    const std::shared_ptr<RecipientData>& Data() const { return recipient_; }

private:
    std::shared_ptr<ItemRecord> record_;
    std::shared_ptr<RecipientData> recipient_;
};

} // namespace stand_ins
