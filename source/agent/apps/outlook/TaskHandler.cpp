#include "agent/apps/outlook/TaskHandler.h"

#include "agent/apps/outlook/CommonUtils.h"

namespace vorlek {
namespace {

const _bstr_t kRequestClass(L"IPM.TaskRequest");
const _bstr_t kUpdateClass(L"IPM.TaskRequest.Update");
const _bstr_t kAcceptClass(L"IPM.TaskRequest.Accept");
const _bstr_t kDeclineClass(L"IPM.TaskRequest.Decline");

} // namespace

LoggerHolder TaskHandler::logger_;

TaskHandler::TaskHandler(Outlook::_TaskRequestItemPtr item) : ItemWrapper(item) {
    InitLogger(logger_, "vorlek::TaskHandler::TaskHandler", false);
    if (!Item_) {
        LOG_ERROR(logger_, L"Null item was passed to the TaskHandler CTOR");
        return;
    }
    const Outlook::_TaskItemPtr task = GetRelatedTask_();
    const _bstr_t messageClass = Item_->GetMessageClass();
    kind_ = Classify_(messageClass, task);
    LOG_INFO(logger_, L"Task item class " << platform::ToWide(messageClass) << L" is " << kind_);
}

bool TaskHandler::QueryType(IDispatchPtr item) {
    return AnswersInterface(item, __uuidof(Outlook::_TaskRequestItem));
}

TaskItemKind TaskHandler::Classify_(const _bstr_t& messageClass, const Outlook::_TaskItemPtr& task) {
    if (messageClass == kDeclineClass || messageClass == kAcceptClass) {
        return TaskResponse;
    }
    // Nothing tells a forward but the prefix that Outlook has put on its subject.
    if ((messageClass == kRequestClass || messageClass == kUpdateClass) && task &&
        task->GetSubject() != Item_->GetSubject()) {
        return TaskForward;
    }
    return TaskRequest;
}

Outlook::_TaskItemPtr TaskHandler::GetRelatedTask_() {
    Outlook::_TaskItemPtr task;
    const auto ask = [&] {
        LOG_DEBUG(logger_, L"Retrieving the TaskRequestItem's task");
        task = Item_->GetAssociatedTask(false); // with true, asking alone would put it in the user's task list
        if (task) {
            LOG_DEBUG(logger_, L"Related task was retrieved from the item");
        } else {
            LOG_ERROR(logger_, L"Related task could not be retrieved from the item - returning NULL");
        }
    };
    const BorderPhrases comPhrase = {.exception = {},
                                     .comError = {L"Caught a com exception while getting related task: "},
                                     .stdException = {},
                                     .other = {}};
    GuardAt(log4cxx::Level::getWarn(), logger_, LOG_SITE,
            {.exception = {},
             .comError = {},
             .stdException = {L"Caught an exception while getting related task: "},
             .other = {L"Caught for Unknown error while getting related task"}},
            [&] { Guard(logger_, LOG_SITE, comPhrase, ask); });
    return task;
}

template <class Body>
void TaskHandler::Change_(Body body) {
    if (kind_ == TaskResponse) {
        LOG_INFO(logger_, L"Item is a task response - using the item and not its related task");
        body(*Item_);
    } else {
        LOG_INFO(logger_, L"Item is a task request or forward - using related task");
        const Outlook::_TaskItemPtr task = GetRelatedTask_();
        body(*task);
    }
}

bool TaskHandler::HandleOnSpot() {
    LOG_DEBUG(logger_, L"Always inspecting task requests on spot");
    return true;
}

std::wstring TaskHandler::GetSentItemUniqueID() {
    LOG_DEBUG(logger_, L"GetSentItemUniqueID called for task");
    const Outlook::_TaskItemPtr task = GetRelatedTask_();
    if (!task) {
        LOG_ERROR(logger_, L"Failed to get related task - returning TaskRequestItem id");
        return GetItemUniqueID();
    }
    std::wstring id = platform::ToWide(task->GetEntryID());
    LOG_DEBUG(logger_, L"Returning ID for the related task item " << id);
    return id;
}

void TaskHandler::Send() {
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught(TaskHandler::Send) a com exception during Send: "},
           .stdException = {L"Caught (TaskHandler::Send)  an exception: "},
           .other = {L"TaskHandler::Send - Exception:(TaskHandler::Send) Unknown error"}},
          [&] {
              LOG_INFO(logger_, L"Sending task request");
              const Outlook::_TaskItemPtr task = GetRelatedTask_();
              const std::wstring id = GetItemUniqueID();
              CommonUtils::RemoveFromInspectedItems(id, logger_);
              if (!task) {
                  LOG_ERROR(logger_, L"TaskHandler::Send - failed to send the task.");
                  return;
              }
              task->Send();
              LOG_DEBUG(logger_, L"Sent task request and item " << id << L", " << platform::ToWide(task->GetEntryID()));
              LOG_DEBUG(logger_, L"Delete the task request item.");
              if (FAILED(Item_->Delete())) {
                  LOG_WARN(logger_, L"Could not delete the task request item.");
              }
          });
}

void TaskHandler::Save() {
    if (GlobalConfig::IsOutlookBefore2007()) {
        LOG_DEBUG(logger_, L"We don't save tasks in 2003");
        return;
    }
    LOG_DEBUG(logger_, L"Save the task request");
    ItemWrapper::Save();
    LOG_DEBUG(logger_, L"Checking if we need to save the task item");
    const Outlook::_TaskItemPtr task = GetRelatedTask_();
    if (!task) {
        LOG_ERROR(logger_, L"Couldn't get the related task item! Save failed.");
        return;
    }
    if (const _bstr_t id = task->GetEntryID(); id.length() != 0) {
        LOG_DEBUG(logger_, L"No need to save the related task item, it already has ID " << platform::ToWide(id));
        return;
    }
    LOG_DEBUG(logger_, L"Saving related task item - as it has no ID");
    task->Save();
}

void TaskHandler::Close() {
    LOG_DEBUG(logger_, L"Closing task item");
    const Outlook::_TaskItemPtr task = GetRelatedTask_();
    if (!task) {
        return;
    }
    LOG_DEBUG(logger_, L"Trying to close related task");
    const BorderPhrases comPhrase = {.exception = {},
                                     .comError = {L"Caught a com exception whilte closing task: "},
                                     .stdException = {},
                                     .other = {}};
    const BorderPhrases anyPhrase = {
        .exception = {}, .comError = {}, .stdException = {}, .other = {L"Yep... sometimes it fails..."}};
    GuardAt(log4cxx::Level::getDebug(), logger_, LOG_SITE, anyPhrase,
            [&] { Guard(logger_, LOG_SITE, comPhrase, [&] { task->Close(Outlook::olDiscard); }); });
}

bool TaskHandler::OverrideItemAttachments(const InspectionDecision::Attachments& attachments) {
    bool replaced = false;
    Guard(logger_, LOG_SITE, kReplacingAttachments, [&] {
        Change_([&](Outlook::OutgoingItem& item) {
            if (!ModifyAttachmentCollection_(item.GetAttachments(), attachments)) {
                return;
            }
            item.Save();
            if (kind_ != TaskResponse) {
                LOG_INFO(logger_, L"Successfully set new attachments.");
            }
            replaced = true;
        });
    });
    return replaced;
}

DATE TaskHandler::GetLastModificationTime() {
    LOG_DEBUG(logger_, L"GetLastModificationTime called for task");
    DATE time = 0.0;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {L"Caught a com exception - returning old date: "},
           .stdException = {L"Caught an exception - returning old date: "},
           .other = {L"Unknown error - returning old date"}},
          [&] {
              if (const Outlook::_TaskItemPtr task = GetRelatedTask_()) {
                  time = task->GetLastModificationTime();
              } else {
                  LOG_ERROR(logger_, L"Failed to get related task - returning TaskRequestItem date");
                  time = Item_->GetLastModificationTime();
              }
          });
    LOG_DEBUG(logger_, L"Returning modification time: " << time);
    return time;
}

Redemption::ISafeItemPtr TaskHandler::GetSafeItem() {
    if (SafeItem_) {
        return SafeItem_;
    }
    const auto view = CreateRedemptionObject<Redemption::ISafeItemPtr>(
        L"Redemption.SafeTaskItem", L"Failed to retrieve Redemption.SafeTaskItem CLSID",
        L"Failed to create Redemption.SafeTaskItem instance", logger_);
    if (!view) {
        return {};
    }
    const Outlook::_TaskItemPtr task = GetRelatedTask_();
    if (!task) {
        SafeItem_ = view; // attached to nothing: the next call gives it as it is
        LOG_ERROR(logger_, L"Failed to create Redemption.SafeTaskItem - Couldn't retrieve related task item");
        return {};
    }
    view->PutItem(task);
    SafeItem_ = view; // not before the task is in it
    return SafeItem_;
}

void TaskHandler::ExportBody(std::wstring& path, _bstr_t& plainText) {
    path = CommonUtils::MakeTemporaryPath(L"txt");
    plainText = ReadPlainText_(logger_);
    LOG_INFO(logger_, L"ExportBody (Task) after doing correct GetSafeItem . length=" << plainText.length());
    WriteBSTRToFile(plainText, path, true);
}

void TaskHandler::LabelSubject(const std::wstring& label) {
    Change_([&](Outlook::OutgoingItem& item) {
        item.PutSubject(label.c_str());
        item.Save();
    });
}

void TaskHandler::LabelBody(const std::wstring& path) {
    _bstr_t body;
    ReadFileToBSTR(path, body);
    Change_([&](Outlook::OutgoingItem& item) {
        item.PutBody(body);
        item.Save();
    });
}

ItemHandler* TaskHandler::CreateSameKind(Outlook::_TaskRequestItemPtr item) {
    return new TaskHandler(item);
}

} // namespace vorlek
