#pragma once
#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins::redemption {

/// An item past the object model's guard. It stands for none until it is given one.
class SafeItem : public Object {
public:
    SafeItem(std::shared_ptr<Session> session, const Class& model);

    /// Failure: E_INVALIDARG for what is no item of Outlook's.
    void Attach(const DispatchPtr& item);
    const DispatchPtr& Attached() const { return item_; }
    /// The record of the item, alive. Failure: E_POINTER without an item.
    const std::shared_ptr<ItemRecord>& Record() const;

protected:
    void* OwnInterface(REFIID interfaceId) override;

private:
    DispatchPtr item_;
    std::shared_ptr<ItemRecord> record_;
};

const Class& SafeMailItemClass();
const Class& SafeMeetingItemClass();
const Class& SafeTaskItemClass();

} // namespace stand_ins::redemption
