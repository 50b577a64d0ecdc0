// Tasks, and the requests that carry them to whom they are assigned.
#include <nlohmann/json.hpp>

#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

using testing::IsEmpty;
using testing::SizeIs;
using Outcome = SendResult::Outcome;

constexpr HRESULT kNotFound = static_cast<HRESULT>(0x8004010F);
constexpr HRESULT kObjectDeleted = static_cast<HRESULT>(0x8004010A);

class OutlookTask : public RunningOutlookTest {
protected:
    static ItemData Task() {
        return {.kind = ItemKind::Task,
                .subject = L"Paint the fence",
                .body = L"Green, please.",
                .account = L"anna@example.com",
                .recipients = {kBen},
                .attachments = {{.fileName = L"colours.txt", .content = "green"}}};
    }
    static ItemData Request(const std::wstring& subject = L"Paint the fence") {
        return {.kind = ItemKind::TaskRequest, .subject = subject, .recipients = {kBen}, .related = {Task()}};
    }
    static DispatchPtr TaskOf(IDispatch* request) { return Invoke(request, L"GetAssociatedTask", {_variant_t(false)}); }
    static bool Answers(IDispatch* object, const GUID& id) {
        UnknownPtr answer;
        return SUCCEEDED(object->QueryInterface(id, reinterpret_cast<void**>(&answer)));
    }
};

TEST_F(OutlookTask, TaskAndRequestEachAnswerTheirOwnInterface) {
    const auto task = outlook_.NewItem(Task());
    const auto request = outlook_.NewRequestFor(task);
    EXPECT_TRUE(Answers(task, kTaskItemId));
    EXPECT_FALSE(Answers(task, kTaskRequestItemId));
    EXPECT_TRUE(Answers(request, kTaskRequestItemId));
    EXPECT_FALSE(Answers(request, kTaskItemId));
    EXPECT_FALSE(Answers(request, kMailItemId));
    EXPECT_EQ(GetText(task, L"MessageClass"), L"IPM.Task");
    EXPECT_EQ(GetText(request, L"MessageClass"), L"IPM.TaskRequest");
    EXPECT_EQ(GetNumber(task, L"Class"), 48);
}

TEST_F(OutlookTask, ClassNumberFollowsTheMessageClass) {
    const auto number = [&](const wchar_t* messageClass) {
        return GetNumber(outlook_.NewItem({.kind = ItemKind::TaskRequest, .messageClass = messageClass}), L"Class");
    };
    EXPECT_EQ(number(L"IPM.TaskRequest"), 49);
    EXPECT_EQ(number(L"IPM.TaskRequest.Update"), 50);
    EXPECT_EQ(number(L"IPM.TaskRequest.Accept"), 51);
    EXPECT_EQ(number(L"IPM.TaskRequest.Decline"), 52);
}

TEST_F(OutlookTask, RequestHasNeitherRecipientsNorASendOfItsOwn) {
    const auto request = outlook_.NewItem(Request());
    EXPECT_EQ(ErrorOf([&] { Get(request, L"Recipients"); }), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ErrorOf([&] { Invoke(request, L"Send"); }), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(GetNumber(GetObject(TaskOf(request), L"Recipients"), L"Count"), 1);
    EXPECT_EQ(GetText(GetObject(TaskOf(request), L"SendUsingAccount"), L"SmtpAddress"), L"anna@example.com");
}

TEST_F(OutlookTask, CreatedTaskIsSavedAmongTheTasks) {
    const DispatchPtr task = Invoke(outlook_.Application(), L"CreateItem", {3L});
    Put(task, L"Subject", L"Sweep the yard");
    Invoke(task, L"Save");
    ASSERT_THAT(outlook_.ItemsIn(L"Tasks"), SizeIs(1));
    EXPECT_EQ(outlook_.ItemsIn(L"Tasks")[0].subject, L"Sweep the yard");
}

TEST_F(OutlookTask, RequestGivesItsTaskUnderTheSameEntryIdEachTime) {
    const auto request = outlook_.NewItem(Request());
    ASSERT_THAT(outlook_.ItemsIn(L"Tasks"), SizeIs(1));
    const std::wstring id = outlook_.ItemsIn(L"Tasks")[0].entryId;
    EXPECT_EQ(GetText(TaskOf(request), L"EntryID"), id);
    EXPECT_EQ(GetText(TaskOf(request), L"EntryID"), id);
    EXPECT_EQ(GetText(request, L"EntryID"), L"");
}

TEST_F(OutlookTask, RequestKnowsItsTaskAfterOutlookWasStartedAnew) {
    const OutlookOptions options{.profile = folder_ / L"other"};
    std::optional<Outlook> other(std::in_place, options);
    const std::wstring id = GetText(other->SavedItem(Request()), L"EntryID");
    other.reset();
    other.emplace(options);
    const DispatchPtr request = Invoke(GetObject(other->Application(), L"Session"), L"GetItemFromID", {id.c_str()});
    EXPECT_EQ(GetText(TaskOf(request), L"Subject"), L"Paint the fence");
}

TEST_F(OutlookTask, RequestSavedBeforeItsTaskLearnsTheTasksEntryIdAtItsNextSave) {
    const auto task = outlook_.NewItem(Task());
    const auto request = outlook_.NewRequestFor(task);
    Invoke(request, L"Save");
    EXPECT_EQ(outlook_.ItemsIn(L"Drafts").at(0).relatedId, L"");
    Invoke(task, L"Save");
    Put(request, L"Body", L"Blue, please.");
    Invoke(request, L"Save");
    EXPECT_EQ(outlook_.ItemsIn(L"Drafts").at(0).relatedId, GetText(task, L"EntryID"));
}

TEST_F(OutlookTask, RequestWithoutATaskGivesNone) {
    EXPECT_EQ(TaskOf(outlook_.NewItem({.kind = ItemKind::TaskRequest})), nullptr);
}

TEST_F(OutlookTask, BrokenLinkFailsAsALookUpOfAnItemThatIsGone) {
    const auto request = outlook_.NewItem({.kind = ItemKind::TaskRequest, .relatedId = L"00000000ABCD"});
    EXPECT_EQ(ErrorOf([&] { TaskOf(request); }), kNotFound);
}

TEST_F(OutlookTask, DeletedTaskIsGivenButDead) {
    const auto request = outlook_.NewItem(Request());
    Invoke(TaskOf(request), L"Delete");
    EXPECT_EQ(ErrorOf([&] { GetText(TaskOf(request), L"Subject"); }), kObjectDeleted);
}

TEST_F(OutlookTask, AssignedTaskLeavesAsARequestAndStaysInTheList) {
    DispatchPtr shown;
    Sink sink(outlook_.Application(), [&](IDispatch* item) {
        shown = DispatchPtr(item);
        EXPECT_EQ(GetText(item, L"MessageClass"), L"IPM.TaskRequest");
        EXPECT_EQ(GetText(item, L"Subject"), L"Paint the fence");
        EXPECT_EQ(GetText(item, L"Body"), L"Green, please.");
        EXPECT_EQ(GetNumber(GetObject(item, L"Attachments"), L"Count"), 1);
        return false;
    });
    EXPECT_EQ(outlook_.Send(outlook_.NewItem(Task())).outcome, Outcome::Sent);
    EXPECT_EQ(sink.calls, 1);
    ASSERT_THAT(outlook_.Delivered(), SizeIs(1));
    EXPECT_EQ(outlook_.Delivered()[0].kind, ItemKind::TaskRequest);
    EXPECT_EQ(outlook_.Delivered()[0].body, L"Green, please.");
    EXPECT_EQ(outlook_.Delivered()[0].recipients.at(0).address, L"ben@example.com");
    ASSERT_THAT(outlook_.ItemsIn(L"Tasks"), SizeIs(1));
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_EQ(ErrorOf([&] { GetText(shown, L"Subject"); }), kObjectDeleted);
}

TEST_F(OutlookTask, WhatChangesInTheTaskBeforeTheRequestLeavesReachesTheReceiver) {
    Sink sink(outlook_.Application(), [&](IDispatch* item) {
        const auto task = TaskOf(item);
        Put(task, L"Subject", L"Sweep the yard");
        Put(task, L"Body", L"Soon.");
        Invoke(GetObject(task, L"Attachments"), L"Remove", {1L});
        Put(item, L"Subject", L"not this");
        Put(item, L"Body", L"nor this");
        return false;
    });
    EXPECT_EQ(outlook_.Send(outlook_.NewItem(Task())).outcome, Outcome::Sent);
    EXPECT_EQ(outlook_.Delivered().at(0).subject, L"Sweep the yard");
    EXPECT_EQ(outlook_.Delivered().at(0).body, L"Soon.");
    EXPECT_THAT(outlook_.Delivered().at(0).attachments, IsEmpty());
    EXPECT_EQ(outlook_.ItemsIn(L"Tasks").at(0).subject, L"Sweep the yard");
}

TEST_F(OutlookTask, ForwardKeepsItsPrefixUnlessTheTaskChanges) {
    bool change = false;
    Sink sink(outlook_.Application(), [&](IDispatch* item) {
        if (change) {
            Put(TaskOf(item), L"Subject", L"Sweep the yard");
        }
        return false;
    });
    EXPECT_EQ(outlook_.Send(outlook_.NewItem(Request(L"FW: Paint the fence"))).outcome, Outcome::Sent);
    EXPECT_EQ(outlook_.Delivered().at(0).subject, L"FW: Paint the fence");
    change = true;
    EXPECT_EQ(outlook_.Send(outlook_.NewItem(Request(L"FW: Paint the fence"))).outcome, Outcome::Sent);
    EXPECT_EQ(outlook_.Delivered().at(1).subject, L"Sweep the yard");
}

TEST_F(OutlookTask, ResponseLeavesWithItsOwnWords) {
    ItemData response = Request(L"Accepted: Paint the fence");
    response.messageClass = L"IPM.TaskRequest.Accept";
    response.body = L"With pleasure.";
    EXPECT_EQ(outlook_.Send(outlook_.NewItem(response)).outcome, Outcome::Sent);
    EXPECT_EQ(outlook_.Delivered().at(0).subject, L"Accepted: Paint the fence");
    EXPECT_EQ(outlook_.Delivered().at(0).body, L"With pleasure.");
}

TEST_F(OutlookTask, RequestWhoseTaskIsGoneLeavesWithItsOwnWords) {
    ItemData broken{.kind = ItemKind::TaskRequest, .subject = L"Paint", .recipients = {kBen}};
    broken.relatedId = L"00000000ABCD";
    EXPECT_EQ(outlook_.Send(outlook_.NewItem(broken)).outcome, Outcome::Sent);
    EXPECT_EQ(outlook_.Delivered().at(0).subject, L"Paint");
}

TEST_F(OutlookTask, StoppedRequestIsSavedInDraftsAndItsWindowStaysOpen) {
    Sink sink(outlook_.Application(), [](IDispatch*) { return true; });
    const SendResult result = outlook_.Send(outlook_.NewItem(Task()));
    EXPECT_EQ(result.outcome, Outcome::Stopped);
    EXPECT_THAT(outlook_.Delivered(), IsEmpty());
    ASSERT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_EQ(outlook_.ItemsIn(L"Drafts")[0].entryId, result.entryId);
    EXPECT_TRUE(outlook_.IsOpen(result.entryId));
    ASSERT_THAT(outlook_.ItemsIn(L"Tasks"), SizeIs(1));
    EXPECT_EQ(outlook_.ItemsIn(L"Drafts")[0].relatedId, outlook_.ItemsIn(L"Tasks")[0].entryId);
}

TEST_F(OutlookTask, ProgramsSendOfATaskRaisesTheEventWithARequest) {
    const auto task = outlook_.NewItem(Task());
    bool cancel = true;
    Sink sink(outlook_.Application(), [&](IDispatch* item) {
        EXPECT_TRUE(Answers(item, kTaskRequestItemId));
        EXPECT_EQ(GetText(TaskOf(item), L"Subject"), L"Paint the fence");
        return cancel;
    });
    EXPECT_EQ(ErrorOf([&] { Invoke(task, L"Send"); }), E_ABORT);
    EXPECT_THAT(outlook_.Delivered(), IsEmpty());
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    cancel = false;
    EXPECT_EQ(ErrorOf([&] { Invoke(task, L"Send"); }), S_OK);
    EXPECT_EQ(sink.calls, 2);
    EXPECT_THAT(outlook_.Delivered(), SizeIs(1));
    EXPECT_EQ(GetText(task, L"EntryID"), outlook_.ItemsIn(L"Tasks").at(0).entryId);
}

TEST_F(OutlookTask, TaskThatNobodyIsAssignedToCannotBeSent) {
    ItemData task = Task();
    task.recipients.clear();
    EXPECT_EQ(ErrorOf([&] { Invoke(outlook_.NewItem(task), L"Send"); }), static_cast<HRESULT>(0x80040607));
}

TEST_F(OutlookTask, DeletedRequestLeavesItsTaskWhereItIs) {
    const auto request = outlook_.SavedItem(Request());
    Invoke(request, L"Delete");
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(outlook_.ItemsIn(L"Deleted Items"), SizeIs(1));
    EXPECT_THAT(outlook_.ItemsIn(L"Tasks"), SizeIs(1));
}

TEST_F(OutlookTask, RequestIsReadFromAFileWithItsTaskInside) {
    const ItemData request = FromJson(nlohmann::json::parse(R"({
        "kind": "taskRequest", "messageClass": "IPM.TaskRequest.Decline", "subject": "Declined: Paint",
        "related": [{"kind": "task", "subject": "Paint", "body": "Green."}]})"));
    EXPECT_EQ(request.kind, ItemKind::TaskRequest);
    EXPECT_EQ(request.messageClass, L"IPM.TaskRequest.Decline");
    ASSERT_THAT(request.related, SizeIs(1));
    EXPECT_EQ(request.related[0].kind, ItemKind::Task);
    EXPECT_EQ(request.related[0].body, L"Green.");
    EXPECT_EQ(ToJson(FromJson(ToJson(request))), ToJson(request));
}

TEST_F(OutlookTask, UnknownKindIsRefusedWithTheKnownOnes) {
    try {
        FromJson({{"kind", "fax"}});
        FAIL() << "it was taken";
    } catch (const std::runtime_error& failure) {
        EXPECT_STREQ(failure.what(),
                     R"(kind is none of "mail", "post", "meeting", "appointment", "task", "taskRequest")");
    }
}

TEST_F(OutlookTask, WindowIsNamedAfterTheTask) {
    EXPECT_EQ(GetText(GetObject(outlook_.NewItem(Task()), L"GetInspector"), L"Caption"), L"Paint the fence - Task");
}

} // namespace
} // namespace stand_ins
