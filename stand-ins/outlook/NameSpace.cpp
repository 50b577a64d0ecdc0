#include "stand-ins/outlook/NameSpace.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Folder.h"
#include "stand-ins/outlook/Folders.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

DispatchPtr DefaultFolderOf(NameSpace& self, long number) {
    const FolderPath path = Store::DefaultFolderPath(number);
    if (path.empty()) {
        throw Failure{E_INVALIDARG, L"The number is not that of a default folder."};
    }
    if (!self.Owner().store.HasFolder(path)) {
        throw Failure{kNotFound, L"The profile lacks this default folder."};
    }
    return Make<Folder>(self.SharedOwner(), path);
}

DispatchPtr ItemFromId(NameSpace& self, const Arguments& arguments) {
    Session& session = self.Owner();
    return session.Show(session.OpenById(arguments.Text(0), arguments.Has(1) ? arguments.Text(1) : L""));
}

const Class& NameSpaceClass() {
    static const Class members =
        ClassOf<NameSpace>(L"NameSpace", kNameSpaceId)
            .Get(L"Application", [](NameSpace& self) { return ObjectValue(self.Owner().Root()); })
            .Get(L"Type", [](NameSpace&) { return TextValue(L"MAPI"); })
            .Get(L"Folders",
                 [](NameSpace& self) { return ObjectValue(Make<Folders>(self.SharedOwner(), FolderPath())); })
            .Call(L"GetDefaultFolder", 1, 1,
                  [](NameSpace& self, const Arguments& a) { return ObjectValue(DefaultFolderOf(self, a.Number(0))); })
            .Call(L"GetItemFromID", 1, 2,
                  [](NameSpace& self, const Arguments& a) { return ObjectValue(ItemFromId(self, a)); });
    return members;
}

} // namespace

NameSpace::NameSpace(std::shared_ptr<Session> session) : Object(std::move(session), NameSpaceClass()) {}

} // namespace stand_ins
