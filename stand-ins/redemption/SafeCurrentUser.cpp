#include "stand-ins/redemption/SafeCurrentUser.h"

#include "stand-ins/outlook/Session.h"
#include "stand-ins/redemption/Interfaces.h"

namespace stand_ins::redemption {
namespace {

const Class& SafeCurrentUserClass() {
    static const Class members =
        ClassOf<SafeCurrentUser>(L"SafeCurrentUser", kSafeCurrentUserId).Get(L"SMTPAddress", [](SafeCurrentUser& self) {
            return TextValue(self.Owner().options.userAddress);
        });
    return members;
}

} // namespace

SafeCurrentUser::SafeCurrentUser(std::shared_ptr<Session> session)
    : Object(std::move(session), SafeCurrentUserClass()) {}

} // namespace stand_ins::redemption
