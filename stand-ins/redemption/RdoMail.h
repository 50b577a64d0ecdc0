#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins::redemption {

/// Extended MAPI's view of an item: it shares the item's record, unsaved changes included, and asks neither the object
/// model nor its guard.
class RdoMail : public Object {
public:
    RdoMail(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record, const Class& model);

    ItemRecord& Alive() const {
        record_->CheckAlive();
        return *record_;
    }
    /// The same, about to change: from now on there is something to save.
    ItemRecord& Changing() const {
        Alive().dirty = true;
        return *record_;
    }
    const std::shared_ptr<ItemRecord>& Record() const { return record_; }

    /// A property by its tag, empty if the item has none.
    _variant_t Field(long tag) const;
    /// type: 1026, rich text without headers. Failure: the system's error.
    void SaveAs(const std::wstring& path, long type) const;
    /// type: 1, rich text, which becomes the body. Failure: the system's error.
    void Import(const std::wstring& path, long type);

protected:
    /// The view of any kind of item is one of a mail, too.
    void* OwnInterface(REFIID interfaceId) override;

private:
    std::shared_ptr<ItemRecord> record_;
};

/// The view of an item, of its kind.
DispatchPtr MakeView(const std::shared_ptr<Session>& session, const std::shared_ptr<ItemRecord>& record);

/// The members that the views of all kinds have.
const Class& RdoMailClass();

} // namespace stand_ins::redemption
