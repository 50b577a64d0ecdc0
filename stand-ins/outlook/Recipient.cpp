#include "stand-ins/outlook/Recipient.h"

#include "stand-ins/outlook/AddressEntry.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/PropertyAccessor.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

// Answered by recipients of this library only, with the recipient itself.
constexpr GUID kThisRecipientId = {0x7C1D2F58, 0x93A6, 0x4E0B, {0xA4, 0x6D, 0x18, 0x5E, 0x2B, 0xC0, 0x97, 0x3F}};

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
        .Call(L"Resolve", 0, 0,
              [](Recipient& self, const Arguments&) { return _variant_t(Resolve(self.Owner(), self.Alive())); });
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

const Recipient* Recipient::Behind(IDispatch* object) {
    void* recipient = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(kThisRecipientId, &recipient))) {
        return nullptr;
    }
    static_cast<Recipient*>(recipient)->Release();
    return static_cast<Recipient*>(recipient);
}

void* Recipient::OwnInterface(REFIID interfaceId) {
    if (interfaceId != kThisRecipientId) {
        return nullptr;
    }
    AddRef();
    return this;
}

bool Resolve(const Session& session, RecipientData& recipient) {
    if (recipient.address.empty() && recipient.name.find(L'@') != std::wstring::npos) {
        recipient.address = recipient.name;
    }
    recipient.resolved =
        recipient.resolved || !recipient.address.empty() || session.store.SharedCalendarOf(recipient.name).has_value();
    return recipient.resolved;
}

} // namespace stand_ins
