#include "stand-ins/outlook/Recipient.h"

#include "stand-ins/outlook/AddressEntry.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/PropertyAccessor.h"

namespace stand_ins {
namespace {

DispatchPtr EntryOf(Recipient& self) {
    return self.Alive().resolved ? Make<AddressEntry>(self.SharedOwner(), self.Record(), self.Data()) : DispatchPtr();
}

ClassOf<Recipient> BuildRecipientMembers() {
    ClassOf<Recipient> members(L"Recipient", IID_NULL);
    members
        .Get(L"Name",
             [](Recipient& self) {
                 const RecipientData& recipient = self.Alive();
                 return TextValue(recipient.name.empty() ? recipient.address : recipient.name);
             })
        .Get(L"Address", [](Recipient& self) { return TextValue(self.Alive().address); })
        .Get(L"Type", [](Recipient& self) { return _variant_t(self.Alive().type); })
        .Put(L"Type", [](Recipient& self, const Arguments& a) { self.Changing().type = a.Number(0); })
        .Get(L"Resolved", [](Recipient& self) { return _variant_t(self.Alive().resolved); })
        .Call(L"Resolve", 0, 0, [](Recipient& self, const Arguments&) { return _variant_t(Resolve(self.Alive())); });
    return members;
}

} // namespace

const Class& RecipientMembers() {
    static const Class members = BuildRecipientMembers();
    return members;
}

const Class& RecipientClass() {
    static const Class members = ClassOf<Recipient>(L"Recipient", kRecipientId, &RecipientMembers())
                                     .Get(L"AddressEntry", [](Recipient& self) { return ObjectValue(EntryOf(self)); })
                                     .Get(L"PropertyAccessor", [](Recipient& self) {
                                         self.Alive();
                                         return ObjectValue(Make<PropertyAccessor>(
                                             self.SharedOwner(), PropertiesOfRecipient(self.Record(), self.Data())));
                                     });
    return members;
}

Recipient::Recipient(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
                     std::shared_ptr<RecipientData> recipient, const Class& model)
    : Object(std::move(session), model), record_(std::move(record)), recipient_(std::move(recipient)) {}

bool Resolve(RecipientData& recipient) {
    if (recipient.address.empty() && recipient.name.find(L'@') != std::wstring::npos) {
        recipient.address = recipient.name;
    }
    recipient.resolved = recipient.resolved || !recipient.address.empty();
    return recipient.resolved;
}

} // namespace stand_ins
