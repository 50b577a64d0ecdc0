#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The entry that a recipient resolved to.
class AddressEntry : public Object {
public:
    AddressEntry(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
                 std::shared_ptr<RecipientData> recipient);

    const RecipientData& Alive() const {
        record_->CheckAlive();
        return *recipient_;
    }

private:
    std::shared_ptr<ItemRecord> record_;
    std::shared_ptr<RecipientData> recipient_;
};

} // namespace stand_ins
