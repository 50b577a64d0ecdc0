#pragma once
#include "agent/apps/outlook/TaskHandler.h"
#include "tests/outlook/OutlookTest.h"

namespace outlook_tests {

inline constexpr wchar_t kRequestClass[] = L"IPM.TaskRequest";
inline constexpr wchar_t kUpdateClass[] = L"IPM.TaskRequest.Update";
inline constexpr wchar_t kAcceptClass[] = L"IPM.TaskRequest.Accept";
inline constexpr wchar_t kDeclineClass[] = L"IPM.TaskRequest.Decline";

/// The task that the requests are about.
inline stand_ins::ItemData PaintTheFence() {
    return {.kind = stand_ins::ItemKind::Task,
            .subject = L"Paint the fence",
            .body = L"Green, please.",
            .account = L"me@a.example",
            .recipients = {{.name = L"You", .address = L"you@b.example"}},
            .attachments = {{.fileName = L"colours.txt", .content = "green"}}};
}

/// A task request of a class, about that task unless it is to have none. Its words differ from the task's, so that a
/// test sees whose they are; its subject does where it is given.
inline stand_ins::ItemData RequestOf(const std::wstring& messageClass, const std::wstring& subject = L"Paint the fence",
                                     bool task = true) {
    stand_ins::ItemData request{.kind = stand_ins::ItemKind::TaskRequest,
                                .subject = subject,
                                .body = L"You are asked to do this.",
                                .recipients = {{.name = L"You", .address = L"you@b.example"}},
                                .attachments = {{.fileName = L"request.txt", .content = "request"}},
                                .messageClass = messageClass};
    if (task) {
        request.related.push_back(PaintTheFence());
    }
    return request;
}

/// A handler whose protected operations a test may call.
class OpenTaskHandler : public vorlek::TaskHandler {
public:
    using TaskHandler::CreateSameKind;
    using TaskHandler::LabelBody;
    using TaskHandler::LabelSubject;
    using TaskHandler::TaskHandler;
};

class TaskTest : public OutlookTest {
protected:
    static Outlook::_TaskRequestItemPtr Pointer(const stand_ins::DispatchPtr& item) { return item.GetInterfacePtr(); }

    /// A handler on a saved request, with calls and log as they are from then on.
    std::shared_ptr<OpenTaskHandler> HandlerOf(const stand_ins::ItemData& request) {
        item = outlook->SavedItem(request);
        task = request.related.empty() ? stand_ins::DispatchPtr()
                                       : stand_ins::DispatchPtr(stand_ins::Invoke(item, L"GetAssociatedTask", {false}));
        auto handler = std::make_shared<OpenTaskHandler>(Pointer(item));
        outlook->Calls().Clear();
        log.Clear();
        return handler;
    }
    static std::wstring IdOf(IDispatch* object) { return stand_ins::GetText(object, L"EntryID"); }
    std::wstring File(const std::wstring& name, const std::string& bytes) {
        test_support::WriteBytes(folder / name, bytes);
        return (folder / name).wstring();
    }
    /// The lines of all levels in order, without the template's and Outlook's own.
    std::vector<std::wstring> Lines() const {
        std::vector<std::wstring> texts;
        for (const auto& line : log.Lines()) {
            if (line.logger.ends_with(L"vorlek.TaskHandler")) {
                texts.push_back(line.level + L" " + line.text);
            }
        }
        return texts;
    }

    stand_ins::DispatchPtr item; ///< the request of the last handler
    stand_ins::DispatchPtr task; ///< its task
};

} // namespace outlook_tests
