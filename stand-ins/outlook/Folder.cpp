#include "stand-ins/outlook/Folder.h"

#include "stand-ins/outlook/Folders.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Items.h"
#include "stand-ins/outlook/NameSpace.h"
#include "stand-ins/outlook/Session.h"
#include "stand-ins/outlook/Text.h"

namespace stand_ins {
namespace {

// Answered by folders of this library only, with the folder itself.
constexpr GUID kThisFolderId = {0x0E5B7A16, 0x6B2D, 0x4B0E, {0x8E, 0x31, 0x52, 0x3F, 0x0C, 0x7D, 0x94, 0xA1}};

DispatchPtr ParentOf(Folder& folder) {
    return folder.Path().has_parent_path() ? Make<Folder>(folder.SharedOwner(), folder.Path().parent_path())
                                           : Make<NameSpace>(folder.SharedOwner());
}

const Class& FolderClass() {
    static const Class members =
        ClassOf<Folder>(L"MAPIFolder", kFolderId)
            .Get(L"Name", [](Folder& self) { return TextValue(self.Path().filename().wstring()); })
            .Get(L"EntryID", [](Folder& self) { return TextValue(L"00000000" + HexOf(ToUtf8(self.Path().wstring()))); })
            .Get(L"StoreID", [](Folder& self) { return TextValue(Store::StoreId(self.Path())); })
            .Get(L"FolderPath", [](Folder& self) { return TextValue(L"\\\\" + self.Path().wstring()); })
            .Get(L"Parent", [](Folder& self) { return ObjectValue(ParentOf(self)); })
            .Get(L"Folders", [](Folder& self) { return ObjectValue(Make<Folders>(self.SharedOwner(), self.Path())); })
            .Get(L"Items", [](Folder& self) { return ObjectValue(Make<Items>(self.SharedOwner(), self.Path())); });
    return members;
}

} // namespace

Folder::Folder(std::shared_ptr<Session> session, FolderPath path)
    : Object(std::move(session), FolderClass()), path_(std::move(path)) {}

const Folder* Folder::Behind(IDispatch* object) {
    void* folder = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(kThisFolderId, &folder))) {
        return nullptr;
    }
    static_cast<Folder*>(folder)->Release();
    return static_cast<Folder*>(folder);
}

void* Folder::OwnInterface(REFIID interfaceId) {
    if (interfaceId != kThisFolderId) {
        return nullptr;
    }
    AddRef();
    return this;
}

} // namespace stand_ins
