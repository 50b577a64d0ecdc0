#include "stand-ins/redemption/RdoMail.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "stand-ins/outlook/Attachments.h"
#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/PropertyAccessor.h"
#include "stand-ins/outlook/Session.h"
#include "stand-ins/redemption/Interfaces.h"
#include "stand-ins/redemption/RdoAttachments.h"
#include "stand-ins/redemption/RdoMeeting.h"

namespace stand_ins::redemption {
namespace {

constexpr long kRtfWithoutHeaders = 1026;
constexpr long kRtf = 1;

ClassOf<RdoMail> BuildRdoMailClass() {
    ClassOf<RdoMail> members(L"RDOMail", kMailId);
    members.Get(L"EntryID", [](RdoMail& self) { return TextValue(self.Alive().data.entryId); })
        .Get(L"Subject", [](RdoMail& self) { return TextValue(self.Alive().data.subject); })
        .Put(L"Subject", [](RdoMail& self, const Arguments& a) { self.Changing().data.subject = a.Text(0); })
        .Get(L"Body", [](RdoMail& self) { return TextValue(self.Alive().data.body); })
        .Put(L"Body", [](RdoMail& self, const Arguments& a) { self.Changing().SetBody(a.Text(0)); })
        .Get(L"HTMLBody", [](RdoMail& self) { return TextValue(self.Alive().HtmlBody()); })
        .Put(L"HTMLBody", [](RdoMail& self, const Arguments& a) { self.Changing().SetHtmlBody(a.Text(0)); })
        .Indexed(L"Fields", [](RdoMail& self, const Arguments& a) { return self.Field(a.Number(0)); })
        .Get(L"Attachments", [](RdoMail& self) {
            self.Alive();
            return ObjectValue(MakeRdoAttachments(self.SharedOwner(), self.Record()));
        });
    members.Call(L"Save", 0, 0, [](RdoMail& self, const Arguments&) { self.Owner().Save(self.Record()); })
        .Call(L"SaveAs", 2, 2, [](RdoMail& self, const Arguments& a) { self.SaveAs(a.Text(0), a.Number(1)); })
        .Call(L"Import", 2, 2, [](RdoMail& self, const Arguments& a) { self.Import(a.Text(0), a.Number(1)); })
        .Call(L"Send", 0, 0, [](RdoMail& self, const Arguments&) { self.Owner().Deliver(self.Record()); })
        .Call(L"Display", 0, 2, [](RdoMail& self, const Arguments&) {
            self.Alive();
            self.Owner().OpenInspector(self.Record());
        });
    return members;
}

Failure NoFile() {
    return {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), L"The file cannot be opened."};
}

void Require(bool offered) {
    if (!offered) {
        throw Failure{E_NOTIMPL, L"This type is not offered."};
    }
}

} // namespace

RdoMail::RdoMail(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record, const Class& model)
    : Object(std::move(session), model), record_(std::move(record)) {}

_variant_t RdoMail::Field(long tag) const {
    const auto value = PropertiesOfItem(record_)(static_cast<unsigned long>(tag));
    return value ? TextValue(*value) : _variant_t();
}

void RdoMail::SaveAs(const std::wstring& path, long type) const {
    const std::string rtf = Alive().RtfBody();
    Require(type == kRtfWithoutHeaders);
    std::ofstream file(std::filesystem::path(path), std::ios::binary);
    if (!file.write(rtf.data(), static_cast<std::streamsize>(rtf.size())).flush()) {
        throw NoFile();
    }
}

void RdoMail::Import(const std::wstring& path, long type) {
    Alive();
    Require(type == kRtf);
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) {
        throw NoFile();
    }
    Changing().SetRtfBody({std::istreambuf_iterator<char>(file), {}});
}

DispatchPtr MakeView(const std::shared_ptr<Session>& session, const std::shared_ptr<ItemRecord>& record) {
    switch (record->data.kind) {
    case ItemKind::Meeting:
        return Make<RdoMail>(session, record, RdoMeetingItemClass());
    case ItemKind::Appointment:
        return Make<RdoMail>(session, record, RdoAppointmentItemClass());
    default:
        return Make<RdoMail>(session, record, RdoMailClass());
    }
}

void* RdoMail::OwnInterface(REFIID interfaceId) {
    if (interfaceId != kMailId) {
        return nullptr;
    }
    AddRef();
    return static_cast<IDispatch*>(this);
}

const Class& RdoMailClass() {
    static const Class members = BuildRdoMailClass();
    return members;
}

} // namespace stand_ins::redemption
