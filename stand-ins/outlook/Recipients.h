#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"
#include "stand-ins/outlook/Recipient.h"

namespace stand_ins {

const Class& RecipientsClass();

/// The recipients of an item.
class Recipients : public Object {
public:
    /// entry: the class of the single ones.
    Recipients(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
               const Class& model = RecipientsClass(), const Class& entry = RecipientClass());

    ItemRecord& Alive() const {
        record_->CheckAlive();
        return *record_;
    }
    /// index from 1. Failure: as of a recipient that is not there.
    DispatchPtr At(long index);
    /// A recipient of that name or address, resolved when it is an address.
    DispatchPtr Add(const std::wstring& name);
    void Remove(long index);
    /// Resolves whoever has an address, or a name that is one. Whether all are resolved.
    bool ResolveAll();

private:
    size_t Index_(long index) const;

    std::shared_ptr<ItemRecord> record_;
    const Class& entry_;
};

} // namespace stand_ins
