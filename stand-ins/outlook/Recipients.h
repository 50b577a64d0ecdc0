#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The recipients of an item.
class Recipients : public Object {
public:
    Recipients(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record);

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
};

} // namespace stand_ins
