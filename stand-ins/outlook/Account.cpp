#include "stand-ins/outlook/Account.h"

#include "stand-ins/outlook/Interfaces.h"

namespace stand_ins {
namespace {

const Class& AccountClass() {
    static const Class members = ClassOf<Account>(L"Account", kAccountId)
                                     .Get(L"DisplayName", [](Account& self) { return TextValue(self.Address()); })
                                     .Get(L"SmtpAddress", [](Account& self) { return TextValue(self.Address()); });
    return members;
}

} // namespace

Account::Account(std::shared_ptr<Session> session, std::wstring address)
    : Object(std::move(session), AccountClass()), address_(std::move(address)) {}

} // namespace stand_ins
