#include "stand-ins/outlook/Attachment.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/PropertyAccessor.h"

namespace stand_ins {
namespace {

ClassOf<Attachment> BuildAttachmentMembers() {
    ClassOf<Attachment> members(L"Attachment", IID_NULL);
    members.Get(L"FileName", [](Attachment& self) { return TextValue(self.Alive().fileName); })
        .Get(L"DisplayName", [](Attachment& self) { return TextValue(self.Alive().displayName); })
        .Put(L"DisplayName", [](Attachment& self, const Arguments& a) { self.Alive().displayName = a.Text(0); })
        .Get(L"Type", [](Attachment& self) { return _variant_t(self.Alive().type); })
        .Get(L"Position", [](Attachment& self) { return _variant_t(self.Alive().position); })
        .Get(L"Size", [](Attachment& self) { return _variant_t(self.Size()); })
        .Call(L"SaveAsFile", 1, 1, [](Attachment& self, const Arguments& a) { self.SaveAs(a.Text(0)); })
        .Call(L"Delete", 0, 0, [](Attachment& self, const Arguments&) { self.Delete(); });
    return members;
}

} // namespace

const Class& AttachmentMembers() {
    static const Class members = BuildAttachmentMembers();
    return members;
}

const Class& AttachmentClass() {
    static const Class members =
        ClassOf<Attachment>(L"Attachment", kAttachmentId, &AttachmentMembers())
            .Get(L"PropertyAccessor", [](Attachment& self) { return ObjectValue(self.Accessor()); });
    return members;
}

Attachment::Attachment(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record,
                       std::shared_ptr<AttachmentData> attachment, const Class& model)
    : Object(std::move(session), model), record_(std::move(record)), attachment_(std::move(attachment)) {}

long Attachment::Size() const {
    const AttachmentData& attachment = Alive();
    return attachment.saved ? static_cast<long>(attachment.content.size()) : 0;
}

void Attachment::SaveAs(const std::wstring& path) const {
    const std::string& content = Alive().content;
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    const bool whole = file != INVALID_HANDLE_VALUE &&
                       WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr);
    const DWORD error = GetLastError();
    if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
    }
    if (!whole) {
        throw Failure{HRESULT_FROM_WIN32(error), L"Cannot save the attachment."};
    }
}

void Attachment::Delete() {
    Alive();
    std::erase(record_->attachments, attachment_);
    record_->dirty = true;
}

DispatchPtr Attachment::Accessor() {
    Alive();
    return Make<PropertyAccessor>(SharedOwner(), PropertiesOfAttachment(record_, attachment_));
}

} // namespace stand_ins
