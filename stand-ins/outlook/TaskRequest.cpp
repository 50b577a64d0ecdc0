#include "stand-ins/outlook/TaskRequest.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Session.h"

namespace stand_ins {
namespace {

bool TravelsWithItsTask(const ItemData& item) {
    return item.kind == ItemKind::TaskRequest &&
           (item.messageClass == L"IPM.TaskRequest" || item.messageClass == L"IPM.TaskRequest.Update");
}

} // namespace

std::shared_ptr<ItemRecord> RequestFor(const std::shared_ptr<ItemRecord>& task) {
    ItemData request = task->Snapshot();
    request.kind = ItemKind::TaskRequest;
    request.messageClass.clear();
    request.entryId.clear();
    request.lastModificationTime = 0;
    auto record = std::make_shared<ItemRecord>(std::move(request), Store::DefaultFolderPath(Drafts));
    record->related = task;
    return record;
}

std::shared_ptr<ItemRecord> TaskOf(Session& session, ItemRecord& request) {
    if (!request.related && !request.data.relatedId.empty()) {
        request.related = session.OpenById(request.data.relatedId, {});
    }
    return request.related;
}

// A request travels with its task inside, and what its receiver reads is that task: so much is documented of the
// format. Here, where no format is written, the request itself takes the task's place.
void TakeOverTask(Session& session, ItemRecord& request) {
    if (!TravelsWithItsTask(request.data) || (!request.related && request.data.relatedId.empty())) {
        return;
    }
    std::shared_ptr<ItemRecord> task;
    try {
        task = TaskOf(session, request);
        session.Save(task);
    } catch (const Failure&) {
        return; // the task is gone: the request leaves with what it says itself
    }
    if (!request.data.subject.ends_with(task->data.subject)) {
        request.data.subject = task->data.subject;
    }
    request.data.body = task->data.body;
    request.data.htmlBody = task->data.htmlBody;
    request.data.rtfBody = task->data.rtfBody;
    request.data.bodyFormat = task->data.bodyFormat;
    request.attachments = task->attachments;
}

} // namespace stand_ins
