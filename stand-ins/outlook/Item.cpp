#include "stand-ins/outlook/Item.h"

#include "stand-ins/outlook/Account.h"
#include "stand-ins/outlook/Attachments.h"
#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Folder.h"
#include "stand-ins/outlook/Inspector.h"
#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/NameSpace.h"
#include "stand-ins/outlook/PropertyAccessor.h"
#include "stand-ins/outlook/Recipients.h"
#include "stand-ins/outlook/Session.h"
#include "stand-ins/outlook/Text.h"

namespace stand_ins {
namespace {

// Answered by items of this library only, with the item itself.
constexpr GUID kThisItemId = {0x5B5E4C0B, 0x27A5, 0x4C53, {0x9B, 0x0A, 0x3C, 0x60, 0x1D, 0x95, 0x6A, 0x2E}};

// What Outlook answers for a date that is not set: the first of January 4501.
constexpr double kNoDate = 949998;

constexpr long kSave = 0;
constexpr long kDiscard = 1;

_variant_t Date(double date) {
    return _variant_t(date, VT_DATE);
}

DispatchPtr FolderOf(Item& item) {
    return Make<Folder>(item.SharedOwner(), item.Alive().folder);
}

DispatchPtr MoveTo(Item& item, const DispatchPtr& target) {
    const Folder* folder = Folder::Behind(target);
    if (folder == nullptr) {
        throw Failure{E_INVALIDARG, L"The target is no folder of this Outlook."};
    }
    Session& session = item.Owner();
    return session.Show(session.Move(item.Record(), folder->Path()));
}

ClassOf<Item> BuildItemClass() {
    ClassOf<Item> members(L"Item", IID_NULL);
    members.Get(L"Application", [](Item& item) { return ObjectValue(item.Owner().Root()); })
        .Get(L"Session", [](Item& item) { return ObjectValue(Make<NameSpace>(item.SharedOwner())); })
        .Get(L"Parent", [](Item& item) { return ObjectValue(FolderOf(item)); })
        .Get(L"EntryID", [](Item& item) { return TextValue(item.Alive().data.entryId); })
        .Get(L"MessageClass", [](Item& item) { return TextValue(item.Alive().data.messageClass); })
        .Put(L"MessageClass", [](Item& item, const Arguments& a) { item.Changing().data.messageClass = a.Text(0); })
        .Get(L"Subject", [](Item& item) { return TextValue(item.Alive().data.subject); })
        .Put(L"Subject", [](Item& item, const Arguments& a) { item.Changing().data.subject = a.Text(0); })
        .Get(L"Body", [](Item& item) { return TextValue(item.Alive().data.body); })
        .Put(L"Body", [](Item& item, const Arguments& a) { item.Changing().SetBody(a.Text(0)); })
        .Get(L"LastModificationTime",
             [](Item& item) {
                 const double date = item.Alive().data.lastModificationTime;
                 return Date(date == 0 ? kNoDate : date);
             })
        .Get(L"Saved", [](Item& item) { return _variant_t(!item.Alive().dirty); })
        .Get(L"GetInspector",
             [](Item& item) {
                 item.Alive();
                 return ObjectValue(Make<Inspector>(item.SharedOwner(), item.Record()));
             })
        .Get(L"Attachments",
             [](Item& item) {
                 item.Alive();
                 return ObjectValue(Make<Attachments>(item.SharedOwner(), item.Record()));
             })
        .Get(L"PropertyAccessor", [](Item& item) {
            item.Alive();
            return ObjectValue(Make<PropertyAccessor>(item.SharedOwner(), PropertiesOfItem(item.Record())));
        });
    members.Call(L"Save", 0, 0, [](Item& item, const Arguments&) { item.Owner().Save(item.Record()); })
        .Call(L"Close", 1, 1,
              [](Item& item, const Arguments& a) { CloseItem(item.Owner(), item.Record(), a.Number(0)); })
        .Call(L"Display", 0, 1,
              [](Item& item, const Arguments&) {
                  item.Alive();
                  item.Owner().OpenInspector(item.Record());
              })
        .Call(L"Copy", 0, 0,
              [](Item& item, const Arguments&) {
                  Session& session = item.Owner();
                  return ObjectValue(session.Show(session.Copy(item.Record())));
              })
        .Call(L"Move", 1, 1, [](Item& item, const Arguments& a) { return ObjectValue(MoveTo(item, a.Object(0))); })
        .Call(L"Delete", 0, 0, [](Item& item, const Arguments&) { item.Owner().Delete(item.Record()); });
    return members;
}

const Class& ClassOfKind(ItemKind kind) {
    switch (kind) {
    case ItemKind::Post:
        return PostItemClass();
    case ItemKind::Meeting:
        return MeetingItemClass();
    case ItemKind::Appointment:
        return AppointmentItemClass();
    case ItemKind::Task:
        return TaskItemClass();
    case ItemKind::TaskRequest:
        return TaskRequestItemClass();
    default:
        return MailItemClass();
    }
}

} // namespace

void* Item::OwnInterface(REFIID interfaceId) {
    if (interfaceId != kThisItemId) {
        return nullptr;
    }
    AddRef();
    return this;
}

DispatchPtr MakeItem(const std::shared_ptr<Session>& session, const std::shared_ptr<ItemRecord>& record) {
    return Make<Item>(session, record, ClassOfKind(record->data.kind));
}

std::shared_ptr<ItemRecord> RecordOf(IDispatch* object) {
    void* item = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(kThisItemId, &item))) {
        return nullptr;
    }
    const DispatchPtr held(static_cast<Item*>(item), false);
    return static_cast<Item*>(item)->Record();
}

void CloseItem(Session& session, const std::shared_ptr<ItemRecord>& record, long mode) {
    record->CheckAlive();
    if (mode == kSave) {
        session.Save(record);
    } else if (record->dirty && mode == kDiscard) {
        if (record->data.entryId.empty()) {
            record->dead = true; // an item that was never saved goes with its window
        } else {
            record->Reset(session.store.Read(record->folder, record->data.entryId));
            record->dirty = false;
        }
    } else if (record->dirty) {
        throw Failure{E_ABORT, L"Nobody is there to answer whether the changes are to be saved."};
    }
    session.CloseInspector(record);
}

const Class& ItemClass() {
    static const Class members = BuildItemClass();
    return members;
}

const Class& PostItemClass() {
    static const ClassOf<Item> members(L"PostItem", kPostItemId, &ItemClass());
    return members;
}

} // namespace stand_ins
