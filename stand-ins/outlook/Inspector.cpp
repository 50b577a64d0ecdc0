#include "stand-ins/outlook/Inspector.h"

#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

const Class& InspectorClass() {
    static const Class members =
        ClassOf<Inspector>(L"Inspector", kInspectorId)
            .Get(L"IsWordMail", [](Inspector& self) { return _variant_t(self.Owner().IsWordMail()); })
            .Get(L"Caption",
                 [](Inspector& self) {
                     self.Record()->CheckAlive();
                     return TextValue(Inspector::CaptionOf(self.Record()->data));
                 })
            .Get(L"CurrentItem",
                 [](Inspector& self) {
                     self.Record()->CheckAlive();
                     return ObjectValue(self.Owner().Show(self.Record()));
                 })
            .Call(L"Close", 1, 1,
                  [](Inspector& self, const Arguments& a) { CloseItem(self.Owner(), self.Record(), a.Number(0)); })
            .Call(L"Display", 0, 1, [](Inspector& self, const Arguments&) {
                self.Record()->CheckAlive();
                self.Owner().OpenInspector(self.Record());
            });
    return members;
}

} // namespace

Inspector::Inspector(std::shared_ptr<Session> session, std::shared_ptr<ItemRecord> record)
    : Object(std::move(session), InspectorClass()), record_(std::move(record)) {}

std::wstring Inspector::CaptionOf(const ItemData& item) {
    const std::wstring subject = item.subject.empty() ? L"Untitled" : item.subject;
    if (item.kind == ItemKind::Task || item.kind == ItemKind::TaskRequest) {
        return subject + L" - Task";
    }
    if (item.kind == ItemKind::Meeting || item.kind == ItemKind::Appointment) {
        return subject + L" - Meeting";
    }
    const wchar_t* format = item.bodyFormat == Html       ? L"HTML"
                            : item.bodyFormat == RichText ? L"Rich Text"
                                                          : L"Plain Text";
    return subject + L" - Message (" + format + L") ";
}

} // namespace stand_ins
