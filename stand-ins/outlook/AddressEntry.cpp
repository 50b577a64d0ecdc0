#include "stand-ins/outlook/AddressEntry.h"

#include "stand-ins/outlook/Interfaces.h"

namespace stand_ins {

const Class& AddressEntryClass() {
    static const Class members =
        ClassOf<AddressEntry>(L"AddressEntry", kAddressEntryId)
            .Get(L"Name", [](AddressEntry& self) { return TextValue(self.Alive().name); })
            .Get(L"Address", [](AddressEntry& self) { return TextValue(self.Alive().address); })
            .Get(L"Type", [](AddressEntry& self) { return TextValue(self.Alive().addressType); });
    return members;
}

AddressEntry::AddressEntry(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
                           std::shared_ptr<RecipientData> recipient, const Class& model)
    : Object(std::move(session), model), record_(std::move(record)), recipient_(std::move(recipient)) {}

} // namespace stand_ins
