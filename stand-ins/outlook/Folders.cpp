#include "stand-ins/outlook/Folders.h"

#include <algorithm>

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Folder.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

const Class& FoldersClass() {
    static const Class members =
        ClassOf<Folders>(L"Folders", kFoldersId)
            .Get(L"Count", [](Folders& self) { return _variant_t(self.Count()); })
            .Indexed(L"Item", [](Folders& self, const Arguments& a) { return ObjectValue(self.Item(a)); })
            .Call(L"GetFirst", 0, 0, [](Folders& self, const Arguments&) { return ObjectValue(self.First()); })
            .Call(L"GetNext", 0, 0, [](Folders& self, const Arguments&) { return ObjectValue(self.Next()); });
    return members;
}

} // namespace

Folders::Folders(std::shared_ptr<Session> session, const FolderPath& parent)
    : Object(std::move(session), FoldersClass()), folders_(Owner().store.FoldersIn(parent)) {}

DispatchPtr Folders::At(long index) {
    return index >= 1 && index <= Count() ? Make<Folder>(SharedOwner(), folders_[static_cast<size_t>(index - 1)])
                                          : DispatchPtr();
}

DispatchPtr Folders::Item(const Arguments& arguments) {
    DispatchPtr found;
    if (arguments.Value(0).vt == VT_BSTR) {
        const std::wstring name = arguments.Text(0);
        const auto match = std::ranges::find_if(
            folders_, [&](const FolderPath& folder) { return _wcsicmp(folder.filename().c_str(), name.c_str()) == 0; });
        found = At(static_cast<long>(match - folders_.begin()) + 1);
    } else {
        found = At(arguments.Number(0));
    }
    if (!found) {
        throw Failure{kNotFound, L"The attempted operation failed. An object could not be found."};
    }
    return found;
}

} // namespace stand_ins
