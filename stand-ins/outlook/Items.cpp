#include "stand-ins/outlook/Items.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

const Class& ItemsClass() {
    static const Class members =
        ClassOf<Items>(L"Items", kItemsId)
            .Get(L"Count", [](Items& self) { return _variant_t(self.Count()); })
            .Indexed(L"Item", [](Items& self, const Arguments& a) { return ObjectValue(self.At(a.Number(0))); });
    return members;
}

} // namespace

Items::Items(std::shared_ptr<Session> session, FolderPath folder)
    : Object(std::move(session), ItemsClass()), folder_(std::move(folder)) {}

long Items::Count() const {
    return static_cast<long>(Owner().store.EntryIdsIn(folder_).size());
}

DispatchPtr Items::At(long index) {
    const auto ids = Owner().store.EntryIdsIn(folder_);
    if (index < 1 || index > static_cast<long>(ids.size())) {
        throw Failure{kIndexOutOfBounds, L"Array index out of bounds."};
    }
    return Owner().Show(Owner().Open(folder_, ids[static_cast<size_t>(index - 1)]));
}

} // namespace stand_ins
