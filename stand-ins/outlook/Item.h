#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// An item as programs see it. Its kind is told by its class; several objects may show one record.
class Item : public Object {
public:
    Item(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record, const Class& model)
        : Object(std::move(session), model), record_(std::move(record)) {}

    /// The record of a living item. Failure: as of an item that is gone.
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

protected:
    void* OwnInterface(REFIID interfaceId) override;

private:
    std::shared_ptr<ItemRecord> record_;
};

/// The object of a record, of the class of its kind.
DispatchPtr MakeItem(const std::shared_ptr<Session>& session, const std::shared_ptr<ItemRecord>& record);

/// The record behind an object; null for an object that is no item of this Outlook.
std::shared_ptr<ItemRecord> RecordOf(IDispatch* object);

/// Closes the item's window: mode 0 saves, 1 discards what changed, 2 asks, which nobody answers here: with changes
/// it fails with E_ABORT, as if the user had chosen to go on writing.
void CloseItem(Session& session, const std::shared_ptr<ItemRecord>& record, long mode);

/// A program's Send of an item that goes as it is: the item is dead, or everything stays and the caller hears of it.
void SendByProgram(Item& item);

/// The members that all items have.
const Class& ItemClass();
/// Those and the ones of items that somebody is named in to receive them.
const Class& SentItemClass();
/// Those of one kind, with its interface.
const Class& MailItemClass();
const Class& MeetingItemClass();
const Class& AppointmentItemClass();
const Class& PostItemClass();
const Class& TaskItemClass();
const Class& TaskRequestItemClass();

} // namespace stand_ins
