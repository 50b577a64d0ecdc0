#include "stand-ins/redemption/SafeRecipients.h"

#include "stand-ins/outlook/AddressEntry.h"
#include "stand-ins/outlook/PropertyAccessor.h"
#include "stand-ins/outlook/Recipients.h"
#include "stand-ins/redemption/Interfaces.h"

namespace stand_ins::redemption {
namespace {

constexpr unsigned long kSmtpAddress = 0x39FE001F; // PR_SMTP_ADDRESS_W

const Class& SafeAddressEntryClass() {
    static const Class members =
        ClassOf<AddressEntry>(L"SafeAddressEntry", kSafeAddressEntryId, &AddressEntryClass())
            .Get(L"SMTPAddress", [](AddressEntry& self) {
                self.Alive();
                return TextValue(PropertiesOfRecipient(self.Record(), self.Data())(kSmtpAddress).value_or(L""));
            });
    return members;
}

DispatchPtr EntryOf(Recipient& self) {
    return self.Alive().resolved
               ? Make<AddressEntry>(self.SharedOwner(), self.Record(), self.Data(), SafeAddressEntryClass())
               : DispatchPtr();
}

_variant_t FieldOf(Recipient& self, long tag) {
    self.Alive();
    const auto value = PropertiesOfRecipient(self.Record(), self.Data())(static_cast<unsigned long>(tag));
    return value ? TextValue(*value) : _variant_t();
}

const Class& SafeRecipientClass() {
    static const Class members =
        ClassOf<Recipient>(L"SafeRecipient", kSafeRecipientId, &RecipientMembers())
            .Get(L"AddressEntry", [](Recipient& self) { return ObjectValue(EntryOf(self)); })
            .Indexed(L"Fields", [](Recipient& self, const Arguments& a) { return FieldOf(self, a.Number(0)); });
    return members;
}

const Class& SafeRecipientsClass() {
    static const ClassOf<Recipients> members(L"SafeRecipients", kSafeRecipientsId, &RecipientsClass());
    return members;
}

} // namespace

DispatchPtr MakeSafeRecipients(const std::shared_ptr<Session>& session, const std::shared_ptr<ItemRecord>& record) {
    return Make<Recipients>(session, record, SafeRecipientsClass(), SafeRecipientClass());
}

} // namespace stand_ins::redemption
