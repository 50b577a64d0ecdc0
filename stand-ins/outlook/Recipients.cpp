#include "stand-ins/outlook/Recipients.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Recipient.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {

const Class& RecipientsClass() {
    static const Class members =
        ClassOf<Recipients>(L"Recipients", kRecipientsId)
            .Get(L"Count",
                 [](Recipients& self) { return _variant_t(static_cast<long>(self.Alive().recipients.size())); })
            .Indexed(L"Item", [](Recipients& self, const Arguments& a) { return ObjectValue(self.At(a.Number(0))); })
            .Call(L"Add", 1, 1, [](Recipients& self, const Arguments& a) { return ObjectValue(self.Add(a.Text(0))); })
            .Call(L"Remove", 1, 1, [](Recipients& self, const Arguments& a) { self.Remove(a.Number(0)); })
            .Call(L"ResolveAll", 0, 0,
                  [](Recipients& self, const Arguments&) { return _variant_t(self.ResolveAll()); });
    return members;
}

Recipients::Recipients(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record, const Class& model,
                       const Class& entry)
    : Object(std::move(session), model), record_(std::move(record)), entry_(entry) {}

size_t Recipients::Index_(long index) const {
    if (index < 1 || index > static_cast<long>(Alive().recipients.size())) {
        throw Failure{kIndexOutOfBounds, L"Array index out of bounds."};
    }
    return static_cast<size_t>(index - 1);
}

DispatchPtr Recipients::At(long index) {
    return Make<Recipient>(SharedOwner(), record_, record_->recipients[Index_(index)], entry_);
}

DispatchPtr Recipients::Add(const std::wstring& name) {
    Alive().dirty = true;
    const auto recipient = std::make_shared<RecipientData>(RecipientData{.name = name, .resolved = false});
    record_->recipients.push_back(recipient);
    return Make<Recipient>(SharedOwner(), record_, recipient, entry_);
}

void Recipients::Remove(long index) {
    record_->recipients.erase(record_->recipients.begin() + static_cast<std::ptrdiff_t>(Index_(index)));
    record_->dirty = true;
}

bool Recipients::ResolveAll() {
    bool all = true;
    for (const auto& recipient : Alive().recipients) {
        all = Resolve(Owner(), *recipient) && all;
    }
    return all;
}

} // namespace stand_ins
