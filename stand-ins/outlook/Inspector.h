#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The window of an item, shown or not.
class Inspector : public Object {
public:
    Inspector(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record);

    const std::shared_ptr<ItemRecord>& Record() const { return record_; }
    /// The title of the window that shows an item.
    static std::wstring CaptionOf(const ItemData& item);

private:
    std::shared_ptr<ItemRecord> record_;
};

} // namespace stand_ins
