#include "stand-ins/outlook/Explorer.h"

#include "stand-ins/outlook/Folder.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

const Class& ExplorerClass() {
    static const Class members =
        ClassOf<Explorer>(L"Explorer", kExplorerId)
            .Get(L"Application", [](Explorer& self) { return ObjectValue(self.Owner().Root()); })
            .Get(L"Caption", [](Explorer& self) { return TextValue(self.Owner().caption); })
            .Get(L"CurrentFolder", [](Explorer& self) {
                return ObjectValue(Make<Folder>(self.SharedOwner(), Store::DefaultFolderPath(Inbox)));
            });
    return members;
}

} // namespace

Explorer::Explorer(std::shared_ptr<Session> session) : Object(std::move(session), ExplorerClass()) {}

} // namespace stand_ins
