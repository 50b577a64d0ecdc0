#include "stand-ins/outlook/Attachments.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "stand-ins/outlook/Attachment.h"
#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Interfaces.h"

namespace stand_ins {
namespace {

constexpr long kByValue = 1;

std::string ReadSource(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream || std::filesystem::is_directory(path)) {
        throw Failure{HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND),
                      L"Cannot find this file. Verify the path and file name are correct."};
    }
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

const Class& AttachmentsClass() {
    static const Class members =
        ClassOf<Attachments>(L"Attachments", kAttachmentsId)
            .Get(L"Count",
                 [](Attachments& self) { return _variant_t(static_cast<long>(self.Alive().attachments.size())); })
            .Indexed(L"Item", [](Attachments& self, const Arguments& a) { return ObjectValue(self.At(a.Number(0))); })
            .Call(L"Add", 1, 4, [](Attachments& self, const Arguments& a) { return ObjectValue(self.Add(a)); })
            .Call(L"Remove", 1, 1, [](Attachments& self, const Arguments& a) { self.Remove(a.Number(0)); });
    return members;
}

Attachments::Attachments(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record, const Class& model,
                         const Class& entry)
    : Object(std::move(session), model), record_(std::move(record)), entry_(entry) {}

size_t Attachments::Index_(long index) const {
    if (index < 1 || index > static_cast<long>(Alive().attachments.size())) {
        throw Failure{kIndexOutOfBounds, L"Array index out of bounds."};
    }
    return static_cast<size_t>(index - 1);
}

DispatchPtr Attachments::At(long index) {
    return Make<Attachment>(SharedOwner(), record_, record_->attachments[Index_(index)], entry_);
}

void Attachments::Remove(long index) {
    record_->attachments.erase(record_->attachments.begin() + static_cast<std::ptrdiff_t>(Index_(index)));
    record_->dirty = true;
}

void Attachments::Clear() {
    Alive().attachments.clear();
    record_->dirty = true;
}

DispatchPtr Attachments::Add(const Arguments& arguments) {
    ItemRecord& record = Alive();
    const std::filesystem::path source = arguments.Text(0);
    auto attachment = std::make_shared<AttachmentData>();
    attachment->type = arguments.Has(1) ? arguments.Number(1) : kByValue;
    if (attachment->type != kByValue) {
        throw Failure{E_INVALIDARG, L"A file can be attached by value only."};
    }
    attachment->position = arguments.Has(2) ? arguments.Number(2) : 0;
    attachment->content = ReadSource(source);
    attachment->fileName = source.filename().wstring();
    attachment->displayName = arguments.Has(3) ? arguments.Text(3) : attachment->fileName;
    record.attachments.push_back(attachment);
    record.dirty = true;
    return Make<Attachment>(SharedOwner(), record_, attachment, entry_);
}

} // namespace stand_ins
