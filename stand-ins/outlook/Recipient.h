#pragma once
#include <memory>

#include "stand-ins/outlook/ItemRecord.h"
#include "stand-ins/outlook/Object.h"

namespace stand_ins {

/// The members of a recipient, whoever shows it.
const Class& RecipientMembers();
/// Those of Outlook's own.
const Class& RecipientClass();

/// One recipient of an item.
class Recipient : public Object {
public:
    Recipient(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
              std::shared_ptr<RecipientData> recipient, const Class& model = RecipientClass());

    RecipientData& Alive() const {
        record_->CheckAlive();
        return *recipient_;
    }
    RecipientData& Changing() const {
        RecipientData& recipient = Alive();
        record_->dirty = true;
        return recipient;
    }
    /// The recipient behind an object; null for any other object.
    static const Recipient* Behind(IDispatch* object);

    const std::shared_ptr<ItemRecord>& Record() const { return record_; }
    const std::shared_ptr<RecipientData>& Data() const { return recipient_; }

protected:
    void* OwnInterface(REFIID interfaceId) override;

private:
    std::shared_ptr<ItemRecord> record_;
    std::shared_ptr<RecipientData> recipient_;
};

/// Resolves a recipient that has an address, whose name is one, or who shares his calendar and is known by that.
/// Whether it is resolved now.
bool Resolve(const Session& session, RecipientData& recipient);

} // namespace stand_ins
