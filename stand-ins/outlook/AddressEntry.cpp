#include "stand-ins/outlook/AddressEntry.h"

#include "stand-ins/outlook/Interfaces.h"

namespace stand_ins {
namespace {

const Class& AddressEntryClass() {
    static const Class members =
        ClassOf<AddressEntry>(L"AddressEntry", kAddressEntryId)
            .Get(L"Name", [](AddressEntry& self) { return TextValue(self.Alive().name); })
            .Get(L"Address", [](AddressEntry& self) { return TextValue(self.Alive().address); })
            .Get(L"Type", [](AddressEntry& self) { return TextValue(self.Alive().addressType); });
    return members;
}

} // namespace

AddressEntry::AddressEntry(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
                           std::shared_ptr<RecipientData> recipient)
    : Object(std::move(session), AddressEntryClass()), record_(std::move(record)), recipient_(std::move(recipient)) {}

} // namespace stand_ins
