#include "stand-ins/outlook/Interfaces.h"
#include "stand-ins/outlook/Item.h"
#include "stand-ins/outlook/Session.h"
#include "stand-ins/outlook/TaskRequest.h"

namespace stand_ins {
namespace {

constexpr long kTaskClass = 48;

// A program's Send of a task that is assigned to somebody. What is sent, and what ItemSend shows, is a request made for
// this send; it goes with a send that is cancelled or fails, unless somebody saved it.
void Send(Item& item) {
    item.Alive();
    Session& session = item.Owner();
    const auto request = RequestFor(item.Record());
    if (!session.Submit(request, session.Show(request))) {
        session.ReportCancelledSend();
    }
}

} // namespace

const Class& TaskItemClass() {
    static const Class members = ClassOf<Item>(L"TaskItem", kTaskItemId, &SentItemClass())
                                     .Get(L"Class", [](Item&) { return _variant_t(kTaskClass); })
                                     .Call(L"Send", 0, 0, [](Item& item, const Arguments&) { Send(item); });
    return members;
}

} // namespace stand_ins
