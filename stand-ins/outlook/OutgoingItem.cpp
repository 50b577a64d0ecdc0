#include "stand-ins/outlook/Account.h"
#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/Recipients.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

_variant_t AccountOf(Item& item) {
    const ItemData& data = item.Alive().data;
    return ObjectValue(data.hasAccount ? Make<Account>(item.SharedOwner(), data.account) : DispatchPtr());
}

void SetAccount(Item& item, const DispatchPtr& account) {
    ItemData& data = item.Changing().data;
    data.hasAccount = account != nullptr;
    data.account = account != nullptr ? GetText(account, L"SmtpAddress") : L"";
}

ClassOf<Item> BuildOutgoingItemClass() {
    ClassOf<Item> members(L"OutgoingItem", IID_NULL, &ItemClass());
    members.Get(L"SendUsingAccount", AccountOf)
        .Put(L"SendUsingAccount", [](Item& item, const Arguments& a) { SetAccount(item, a.Object(0)); })
        .Get(L"Sent", [](Item& item) { return _variant_t(item.Alive().data.sent); })
        .Get(L"Recipients",
             [](Item& item) {
                 item.Alive();
                 return ObjectValue(Make<Recipients>(item.SharedOwner(), item.Record()));
             })
        .Call(L"Send", 0, 0,
              [](Item& item, const Arguments&) { EndSend(item.Owner(), item.Owner().Submit(item.Record(), &item)); });
    return members;
}

} // namespace

void EndSend(const Session& session, bool left) {
    if (const HRESULT cancelled = session.options.cancelledSendError; !left && FAILED(cancelled)) {
        throw Failure{cancelled, L"The send was cancelled."};
    }
}

const Class& OutgoingItemClass() {
    static const Class members = BuildOutgoingItemClass();
    return members;
}

} // namespace stand_ins
