#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/Session.h"
#include "stand-ins/outlook/TaskRequest.h"

namespace stand_ins {
namespace {

long ClassNumber(Item& item) {
    const std::wstring& messageClass = item.Alive().data.messageClass;
    return messageClass == L"IPM.TaskRequest.Update"    ? 50
           : messageClass == L"IPM.TaskRequest.Accept"  ? 51
           : messageClass == L"IPM.TaskRequest.Decline" ? 52
                                                        : 49;
}

// The task of a request is in the task list already, so that to add it there, when that is wanted, does nothing.
DispatchPtr AssociatedTask(Item& item) {
    const auto task = TaskOf(item.Owner(), item.Alive());
    return task ? item.Owner().Show(task) : DispatchPtr();
}

} // namespace

// As in Outlook, a request names no recipients and has no Send of its own: both are its task's.
const Class& TaskRequestItemClass() {
    static const Class members = ClassOf<Item>(L"TaskRequestItem", kTaskRequestItemId, &ItemClass())
                                     .Get(L"Class", [](Item& item) { return _variant_t(ClassNumber(item)); })
                                     .Call(L"GetAssociatedTask", 1, 1, [](Item& item, const Arguments& a) {
                                         return (a.Truth(0), ObjectValue(AssociatedTask(item)));
                                     });
    return members;
}

} // namespace stand_ins
