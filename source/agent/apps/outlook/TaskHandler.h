#pragma once
#include <cstdint>
#include <string>

#include "agent/apps/outlook/ItemWrapper.h"

namespace vorlek {

/// What a task request is, and with that which object its operations act on.
enum TaskItemKind : std::int32_t {
    TaskResponse = 0, ///< an accept or a decline: the item itself
    TaskForward = 1,  ///< the subject differs from the task's: the related task
    TaskRequest = 2,  ///< anything else: the related task
};

/// A task request. What leaves is the task that it is about; a response has none of its own to change. The related task
/// is asked for anew by each operation.
class TaskHandler : public ItemWrapper<Outlook::_TaskRequestItemPtr> {
public:
    /// item: any object that answers the interface of a task request; another makes a handler without an item. Raises
    /// _com_error if the item does not tell its class.
    explicit TaskHandler(Outlook::_TaskRequestItemPtr item);

    /// Whether an object is a task request. Raises _com_error if it cannot say.
    static bool QueryType(IDispatchPtr item);

    std::wstring GetSentItemUniqueID() override;
    /// Sends the related task and deletes the request, which the send has replaced by one of its own.
    void Send() override;
    /// Saves the item, and the related task if that never was. Raises _com_error if the task cannot be saved.
    void Save() override;
    /// Closes the related task without saving; the request's own window stays.
    void Close() override;
    bool HandleOnSpot() override;
    bool OverrideItemAttachments(const InspectionDecision::Attachments& attachments) override;
    /// 0.0 if it cannot be read.
    DATE GetLastModificationTime() override;
    Redemption::ISafeItemPtr GetSafeItem() override;
    void ExportBody(std::wstring& path, _bstr_t& plainText) override;

protected:
    ItemHandler* CreateSameKind(Outlook::_TaskRequestItemPtr item) override;
    void LabelSubject(const std::wstring& label) override;
    void LabelBody(const std::wstring& path) override;

private:
    TaskItemKind Classify_(const _bstr_t& messageClass, const Outlook::_TaskItemPtr& task);
    Outlook::_TaskItemPtr GetRelatedTask_();
    /// Runs the body on the object that is to change. Raises E_POINTER where the related task is and there is none.
    template <class Body>
    void Change_(Body body);

    static LoggerHolder logger_;

    TaskItemKind kind_ = TaskResponse;
};

} // namespace vorlek
