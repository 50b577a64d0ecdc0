#include "stand-ins/outlook/NameSpace.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Folder.h"
#include "stand-ins/outlook/Folders.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Recipient.h"
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

// A recipient of no item, not resolved yet.
DispatchPtr NewRecipient(NameSpace& self, const std::wstring& name) {
    return Make<Recipient>(self.SharedOwner(), std::make_shared<ItemRecord>(ItemData{}, FolderPath()),
                           std::make_shared<RecipientData>(RecipientData{.name = name, .resolved = false}));
}

// Nobody shares anything but a calendar.
DispatchPtr SharedFolderOf(NameSpace& self, const DispatchPtr& person, long number) {
    const Recipient* recipient = Recipient::Behind(person);
    if (recipient == nullptr || !recipient->Alive().resolved) {
        throw Failure{E_INVALIDARG, L"The recipient is not resolved."};
    }
    const auto calendar = self.Owner().store.SharedCalendarOf(recipient->Alive().name);
    if (!calendar || number != Calendar) {
        throw Failure{kNotFound, L"The folder is not shared."};
    }
    return Make<Folder>(self.SharedOwner(), *calendar);
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
            .Call(L"CreateRecipient", 1, 1,
                  [](NameSpace& self, const Arguments& a) { return ObjectValue(NewRecipient(self, a.Text(0))); })
            .Call(L"GetSharedDefaultFolder", 2, 2,
                  [](NameSpace& self, const Arguments& a) {
                      return ObjectValue(SharedFolderOf(self, a.Object(0), a.Number(1)));
                  })
            .Call(L"GetItemFromID", 1, 2,
                  [](NameSpace& self, const Arguments& a) { return ObjectValue(ItemFromId(self, a)); });
    return members;
}

} // namespace

NameSpace::NameSpace(std::shared_ptr<Session> session) : Object(std::move(session), NameSpaceClass()) {}

} // namespace stand_ins
