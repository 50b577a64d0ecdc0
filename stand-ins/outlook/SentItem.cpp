// What the kinds of items that are sent to somebody have in common.
#include "stand-ins/outlook/Account.h"
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

ClassOf<Item> BuildSentItemClass() {
    ClassOf<Item> members(L"Item", IID_NULL, &ItemClass());
    members.Get(L"SendUsingAccount", AccountOf)
        .Put(L"SendUsingAccount", [](Item& item, const Arguments& a) { SetAccount(item, a.Object(0)); })
        .Get(L"Recipients", [](Item& item) {
            item.Alive();
            return ObjectValue(Make<Recipients>(item.SharedOwner(), item.Record()));
        });
    return members;
}

} // namespace

void SendByProgram(Item& item) {
    if (!item.Owner().Submit(item.Record(), &item)) {
        if (!item.Record()->dead) {
            item.Owner().Save(item.Record());
        }
        item.Owner().ReportCancelledSend();
    }
}

const Class& SentItemClass() {
    static const Class members = BuildSentItemClass();
    return members;
}

} // namespace stand_ins
