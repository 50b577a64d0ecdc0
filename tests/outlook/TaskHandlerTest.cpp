// What a task request is, and what each operation says and does. On which object the operations act is the table of
// TaskHandlerTargetTest.cpp.
#include "agent/apps/outlook/TaskHandler.h"

#include "agent/apps/outlook/CommonUtils.h"
#include "tests/outlook/TaskTest.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::kAcceptClass;
using outlook_tests::kAccessDenied;
using outlook_tests::kDeclineClass;
using outlook_tests::kRequestClass;
using outlook_tests::kUpdateClass;
using outlook_tests::OpenTaskHandler;
using outlook_tests::RequestOf;
using outlook_tests::TaskTest;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::GetText;
using stand_ins::ItemData;
using stand_ins::ItemKind;
using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::wstring kForwarded = L"FW: Paint the fence";
const std::wstring kAsking = L"DEBUG Retrieving the TaskRequestItem's task";
const std::wstring kFound = L"DEBUG Related task was retrieved from the item";
const std::wstring kNotFound = L"ERROR Related task could not be retrieved from the item - returning NULL";

const std::wstring kOnItem = L"INFO Item is a task response - using the item and not its related task";
const std::wstring kNoPointer = ErrorText(E_POINTER);

class TaskHandlerTest : public TaskTest {
protected:
    /// The number that the constructor logs for a request.
    std::wstring KindOf(const ItemData& request) {
        const auto made = outlook->NewItem(request);
        log.Clear();
        const TaskHandler handler(Pointer(made));
        const std::wstring line = log.Texts(L"INFO").back();
        EXPECT_EQ(line.substr(0, line.size() - 1), L"Task item class " + request.messageClass + L" is ");
        return line.substr(line.size() - 1);
    }
    static std::vector<std::wstring> Ledger() {
        std::vector<std::wstring> ids;
        CommonUtils::GetInspectedItemIds(ids, nullptr);
        return ids;
    }
};

TEST_F(TaskHandlerTest, AnAcceptOrADeclineIsAResponseWhateverItsSubject) {
    for (const wchar_t* messageClass : {kAcceptClass, kDeclineClass}) {
        EXPECT_EQ(KindOf(RequestOf(messageClass)), L"0");
        EXPECT_EQ(KindOf(RequestOf(messageClass, L"Accepted: Paint the fence")), L"0");
        EXPECT_EQ(KindOf(RequestOf(messageClass, L"Accepted: Paint the fence", false)), L"0");
    }
}

TEST_F(TaskHandlerTest, ARequestOrAnUpdateWithAnotherSubjectThanItsTaskIsAForward) {
    for (const wchar_t* messageClass : {kRequestClass, kUpdateClass}) {
        EXPECT_EQ(KindOf(RequestOf(messageClass, kForwarded)), L"1");
        EXPECT_EQ(KindOf(RequestOf(messageClass)), L"2");
        EXPECT_EQ(KindOf(RequestOf(messageClass, L"paint the fence")), L"1");
    }
}

TEST_F(TaskHandlerTest, ARequestWithoutATaskAndAnUnknownClassAreRequests) {
    EXPECT_EQ(KindOf(RequestOf(kRequestClass, kForwarded, false)), L"2");
    EXPECT_EQ(KindOf(RequestOf(L"IPM.TaskRequest.Else", kForwarded)), L"2");
    EXPECT_EQ(KindOf(RequestOf(L"ipm.taskrequest.accept")), L"2");
    EXPECT_EQ(KindOf(RequestOf(L"IPM.TaskRequest.Accept.Else")), L"2");
}

TEST_F(TaskHandlerTest, TheTaskIsAskedForOnceAtTheConstruction) {
    const auto made = outlook->NewItem(RequestOf(kRequestClass));
    outlook->Calls().Clear();
    log.Clear();
    const TaskHandler handler(Pointer(made));
    EXPECT_THAT(Lines(), ElementsAre(kAsking, kFound, L"INFO Task item class IPM.TaskRequest is 2"));
    EXPECT_EQ(outlook->Calls().All().front().ToString(), L"TaskRequestItem.GetAssociatedTask(false)");
    EXPECT_EQ(outlook->Calls().Count(L"TaskRequestItem.GetAssociatedTask"), 1u);
}

TEST_F(TaskHandlerTest, AHandlerWithoutAnItemIsAResponse) {
    OpenTaskHandler handler{Outlook::_TaskRequestItemPtr()};
    EXPECT_THAT(Lines(), ElementsAre(L"ERROR Null item was passed to the TaskHandler CTOR"));
    EXPECT_THROW(handler.LabelSubject(L"Label"), _com_error);
    EXPECT_TRUE(log.Has(L"INFO", kOnItem.substr(5)));
}

TEST_F(TaskHandlerTest, AnItemOfAnotherKindMakesAHandlerWithoutOne) {
    const TaskHandler handler(Pointer(outlook->NewMail({})));
    EXPECT_THAT(Lines(), ElementsAre(L"ERROR Null item was passed to the TaskHandler CTOR"));
}

TEST_F(TaskHandlerTest, OnlyATaskRequestIsOfTheType) {
    EXPECT_TRUE(TaskHandler::QueryType(outlook->NewItem(RequestOf(kAcceptClass)).GetInterfacePtr()));
    EXPECT_FALSE(TaskHandler::QueryType(outlook->NewItem({.kind = ItemKind::Task}).GetInterfacePtr()));
    EXPECT_FALSE(TaskHandler::QueryType(outlook->NewMail({}).GetInterfacePtr()));
    EXPECT_FALSE(TaskHandler::QueryType({}));
    outlook->Failures().Fail(L"TaskRequestItem.QueryInterface", E_FAIL);
    EXPECT_THROW(TaskHandler::QueryType(outlook->NewItem(RequestOf(kAcceptClass)).GetInterfacePtr()), _com_error);
}

TEST_F(TaskHandlerTest, EveryFailureOfAskingForTheTaskHasItsWordsAndItsLevel) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    outlook->Failures().Fail(L"TaskRequestItem.GetAssociatedTask", kAccessDenied, 1);
    handler->Close();
    outlook->Failures().On(L"TaskRequestItem.GetAssociatedTask", ThrowStandard("lost"), 1);
    handler->Close();
    outlook->Failures().On(L"TaskRequestItem.GetAssociatedTask", ThrowException(), 1);
    handler->Close();
    outlook->Failures().On(L"TaskRequestItem.GetAssociatedTask", ThrowNumber(), 1);
    handler->Close();
    const std::wstring closing = L"DEBUG Closing task item";
    EXPECT_THAT(Lines(),
                ElementsAre(closing, kAsking,
                            L"ERROR Caught a com exception while getting related task: " + ErrorText(kAccessDenied),
                            closing, kAsking, L"WARN Caught an exception while getting related task: lost", closing,
                            kAsking, L"WARN Caught for Unknown error while getting related task", closing, kAsking,
                            L"WARN Caught for Unknown error while getting related task"));
}

TEST_F(TaskHandlerTest, ANullTaskIsAnErrorOfItsOwn) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    outlook->Failures().Answer(L"TaskRequestItem.GetAssociatedTask", stand_ins::NoObject());
    handler->Close();
    EXPECT_THAT(Lines(), ElementsAre(L"DEBUG Closing task item", kAsking, kNotFound));
}

TEST_F(TaskHandlerTest, AHandlerWithoutAnItemFailsToAskLikeAnyOther) {
    TaskHandler handler{Outlook::_TaskRequestItemPtr()};
    log.Clear();
    handler.Close();
    EXPECT_THAT(Lines(), ElementsAre(L"DEBUG Closing task item", kAsking,
                                     L"ERROR Caught a com exception while getting related task: " + kNoPointer));
}

TEST_F(TaskHandlerTest, ATaskRequestIsAlwaysOnTheSpot) {
    for (const wchar_t* messageClass : {kRequestClass, kUpdateClass, kAcceptClass, kDeclineClass}) {
        const auto handler = HandlerOf(RequestOf(messageClass));
        EXPECT_TRUE(handler->HandleOnSpot());
        EXPECT_THAT(Lines(), ElementsAre(L"DEBUG Always inspecting task requests on spot"));
        EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
    }
}

TEST_F(TaskHandlerTest, TheSentCopyIsKnownByTheTasksId) {
    const auto handler = HandlerOf(RequestOf(kAcceptClass));
    const std::wstring id = IdOf(task);
    EXPECT_EQ(handler->GetSentItemUniqueID(), id);
    EXPECT_THAT(Lines(), ElementsAre(L"DEBUG GetSentItemUniqueID called for task", kAsking, kFound,
                                     L"DEBUG Returning ID for the related task item " + id));
}

TEST_F(TaskHandlerTest, WithoutATaskTheSentCopyIsKnownByTheRequestsId) {
    const auto handler = HandlerOf(RequestOf(kRequestClass, L"Paint the fence", false));
    EXPECT_EQ(handler->GetSentItemUniqueID(), IdOf(item));
    EXPECT_THAT(Lines(), ElementsAre(L"DEBUG GetSentItemUniqueID called for task", kAsking, kNotFound,
                                     L"ERROR Failed to get related task - returning TaskRequestItem id"));
}

TEST_F(TaskHandlerTest, SendingSendsTheTaskAndDeletesTheRequest) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    const std::wstring id = IdOf(item);
    const std::wstring taskId = IdOf(task);
    CommonUtils::AddToInspectedItems(id, taskId, nullptr);
    std::vector<std::wstring> ledgerAtSend{L"not asked"};
    outlook->Failures().On(L"TaskItem.Send", [&](const stand_ins::Call&) -> std::optional<_variant_t> {
        ledgerAtSend = Ledger();
        return std::nullopt;
    });
    log.Clear();
    outlook->Calls().Clear();
    handler->Send();
    EXPECT_THAT(ledgerAtSend, IsEmpty());
    EXPECT_THAT(Lines(), ElementsAre(L"INFO Sending task request", kAsking, kFound,
                                     L"DEBUG RemoveFromInspectedItems for itemID = " + id, _, _, _,
                                     L"DEBUG Successfully removed " + id + L" from the registry.",
                                     L"DEBUG Sent task request and item " + id + L", " + taskId,
                                     L"DEBUG Delete the task request item."));
    EXPECT_THAT(outlook->Calls().Members(),
                ElementsAre(L"TaskRequestItem.GetAssociatedTask", L"TaskRequestItem.EntryID get", L"TaskItem.Send",
                            L"Application.ItemSend", L"Transport.Submit", L"TaskItem.EntryID get",
                            L"TaskRequestItem.Delete"));
    ASSERT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_EQ(outlook->Delivered()[0].body, L"Green, please.");
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(outlook->ItemsIn(L"Tasks"), SizeIs(1));
}

TEST_F(TaskHandlerTest, AResponseToo) {
    const auto handler = HandlerOf(RequestOf(kAcceptClass));
    handler->Send();
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
}

TEST_F(TaskHandlerTest, WithoutATaskNothingIsSentAndTheLedgerIsLeftAllTheSame) {
    const auto handler = HandlerOf(RequestOf(kRequestClass, L"Paint the fence", false));
    CommonUtils::AddToInspectedItems(IdOf(item), IdOf(item), nullptr);
    log.Clear();
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(kNotFound.substr(6), L"TaskHandler::Send - failed to send the task."));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
}

TEST_F(TaskHandlerTest, EveryFailureOfTheSendLeavesTheRequestWhereItIs) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    outlook->Failures().Fail(L"TaskItem.Send", kAccessDenied, 1);
    handler->Send();
    outlook->Failures().On(L"TaskItem.Send", ThrowStandard("lost"), 1);
    handler->Send();
    outlook->Failures().On(L"TaskItem.Send", ThrowException(), 1);
    handler->Send();
    outlook->Failures().On(L"TaskItem.Send", ThrowNumber(), 1);
    handler->Send();
    const std::wstring unknown = L"TaskHandler::Send - Exception:(TaskHandler::Send) Unknown error";
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught(TaskHandler::Send) a com exception during Send: " + ErrorText(kAccessDenied),
                            L"Caught (TaskHandler::Send)  an exception: lost", unknown, unknown));
    EXPECT_EQ(outlook->Calls().Count(L"TaskRequestItem.Delete"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"TaskRequestItem.Display"), 0u);
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
}

TEST_F(TaskHandlerTest, ARequestThatCannotBeDeletedIsReportedAfterTheSend) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    outlook->Failures().Fail(L"TaskRequestItem.Delete", kAccessDenied);
    handler->Send();
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught(TaskHandler::Send) a com exception during Send: " + ErrorText(kAccessDenied)));
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
}

TEST_F(TaskHandlerTest, ARequestWithoutAnIdIsNotSent) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    outlook->Failures().Fail(L"TaskRequestItem.EntryID", kAccessDenied);
    handler->Send();
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught(TaskHandler::Send) a com exception during Send: " + ErrorText(kAccessDenied)));
    EXPECT_EQ(outlook->Calls().Count(L"TaskItem.Send"), 0u);
}

TEST_F(TaskHandlerTest, SavingLeavesATaskAloneThatIsSavedAlready) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    stand_ins::Put(item, L"Body", L"changed");
    stand_ins::Put(task, L"Body", L"changed");
    outlook->Calls().Clear();
    handler->Save();
    EXPECT_THAT(Lines(),
                ElementsAre(L"DEBUG Save the task request", L"DEBUG Checking if we need to save the task item", kAsking,
                            kFound, L"DEBUG No need to save the related task item, it already has ID " + IdOf(task)));
    EXPECT_TRUE(stand_ins::GetBool(item, L"Saved"));
    EXPECT_FALSE(stand_ins::GetBool(task, L"Saved"));
}

TEST_F(TaskHandlerTest, SavingSavesATaskThatNeverWas) {
    task = outlook->NewItem(outlook_tests::PaintTheFence());
    item = outlook->NewRequestFor(task);
    OpenTaskHandler handler(Pointer(item));
    log.Clear();
    handler.Save();
    EXPECT_THAT(Lines(), ElementsAre(L"DEBUG Save the task request", L"DEBUG Checking if we need to save the task item",
                                     kAsking, kFound, L"DEBUG Saving related task item - as it has no ID"));
    EXPECT_NE(IdOf(task), L"");
    EXPECT_NE(IdOf(item), L"");
}

TEST_F(TaskHandlerTest, SavingWithoutATaskSavesTheRequestAndSaysSo) {
    const auto handler = HandlerOf(RequestOf(kRequestClass, L"Paint the fence", false));
    stand_ins::Put(item, L"Body", L"changed");
    handler->Save();
    EXPECT_THAT(Lines(), ElementsAre(L"DEBUG Save the task request", L"DEBUG Checking if we need to save the task item",
                                     kAsking, kNotFound, L"ERROR Couldn't get the related task item! Save failed."));
    EXPECT_TRUE(stand_ins::GetBool(item, L"Saved"));
}

TEST_F(TaskHandlerTest, ARequestThatCannotBeSavedDoesNotKeepItsTaskFromBeing) {
    task = outlook->NewItem(outlook_tests::PaintTheFence());
    OpenTaskHandler handler(Pointer(outlook->NewRequestFor(task)));
    outlook->Failures().Fail(L"TaskRequestItem.Save", kAccessDenied);
    handler.Save();
    EXPECT_THAT(Warnings(), ElementsAre(L"COM exception: " + ErrorText(kAccessDenied) + L" item wasn't saved"));
    EXPECT_NE(IdOf(task), L"");
}

TEST_F(TaskHandlerTest, ATaskThatCannotBeSavedRaises) {
    OpenTaskHandler handler(Pointer(outlook->NewRequestFor(outlook->NewItem(outlook_tests::PaintTheFence()))));
    outlook->Failures().Fail(L"TaskItem.Save", kAccessDenied);
    EXPECT_THROW(handler.Save(), _com_error);
}

TEST_F(TaskHandlerTest, BeforeOutlook2007NothingIsSaved) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    SetVersion(L"11.0");
    log.Clear();
    handler->Save();
    EXPECT_THAT(Lines(), ElementsAre(L"DEBUG We don't save tasks in 2003"));
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
}

TEST_F(TaskHandlerTest, ClosingDiscardsWhatChangedInTheTaskAndLeavesTheRequestsWindow) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    stand_ins::Invoke(item, L"Display");
    stand_ins::Invoke(task, L"Display");
    stand_ins::Put(task, L"Body", L"changed");
    outlook->Calls().Clear();
    handler->Close();
    EXPECT_THAT(Lines(),
                ElementsAre(L"DEBUG Closing task item", kAsking, kFound, L"DEBUG Trying to close related task"));
    EXPECT_EQ(outlook->Calls().All().back().ToString(), L"TaskItem.Close(1)");
    EXPECT_EQ(GetText(task, L"Body"), L"Green, please.");
    EXPECT_FALSE(outlook->IsOpen(IdOf(task)));
    EXPECT_TRUE(outlook->IsOpen(IdOf(item)));
}

TEST_F(TaskHandlerTest, EveryFailureOfClosingHasItsWordsAndItsLevel) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    outlook->Failures().Fail(L"TaskItem.Close", kAccessDenied, 1);
    handler->Close();
    EXPECT_EQ(Lines().back(), L"ERROR Caught a com exception whilte closing task: " + ErrorText(kAccessDenied));
    for (const auto& failure : {ThrowStandard("lost"), ThrowException(), ThrowNumber()}) {
        outlook->Failures().On(L"TaskItem.Close", failure, 1);
        handler->Close();
        EXPECT_EQ(Lines().back(), L"DEBUG Yep... sometimes it fails...");
    }
}

TEST_F(TaskHandlerTest, TheModificationTimeIsTheTasks) {
    const auto handler = HandlerOf(RequestOf(kAcceptClass));
    outlook->Failures().Answer(L"TaskItem.LastModificationTime", _variant_t(45000.5, VT_DATE));
    EXPECT_EQ(handler->GetLastModificationTime(), 45000.5);
    EXPECT_THAT(Lines(), ElementsAre(L"DEBUG GetLastModificationTime called for task", kAsking, kFound,
                                     L"DEBUG Returning modification time: 45000.5"));
}

TEST_F(TaskHandlerTest, WithoutATaskTheModificationTimeIsTheRequests) {
    const auto handler = HandlerOf(RequestOf(kRequestClass, L"Paint the fence", false));
    outlook->Failures().Answer(L"TaskRequestItem.LastModificationTime", _variant_t(45000.5, VT_DATE));
    EXPECT_EQ(handler->GetLastModificationTime(), 45000.5);
    EXPECT_THAT(Errors(),
                ElementsAre(kNotFound.substr(6), L"Failed to get related task - returning TaskRequestItem date"));
}

TEST_F(TaskHandlerTest, AModificationTimeThatCannotBeReadIsZero) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    const std::wstring member = L"TaskItem.LastModificationTime";
    outlook->Failures().Fail(member, kAccessDenied, 1);
    EXPECT_EQ(handler->GetLastModificationTime(), 0.0);
    for (const auto& failure : {ThrowStandard("lost"), ThrowException(), ThrowNumber()}) {
        outlook->Failures().On(member, failure, 1);
        EXPECT_EQ(handler->GetLastModificationTime(), 0.0);
    }
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception - returning old date: " + ErrorText(kAccessDenied),
                                      L"Caught an exception - returning old date: lost",
                                      L"Unknown error - returning old date", L"Unknown error - returning old date"));
    EXPECT_EQ(Lines().back(), L"DEBUG Returning modification time: 0");
}

TEST_F(TaskHandlerTest, ACopyIsOfTheSameKind) {
    const auto handler = HandlerOf(RequestOf(kRequestClass, kForwarded));
    const std::unique_ptr<ItemHandler> copy(handler->Copy());
    ASSERT_NE(dynamic_cast<TaskHandler*>(copy.get()), nullptr);
    EXPECT_TRUE(log.Has(L"INFO", L"Task item class IPM.TaskRequest is 1"));
    EXPECT_NE(copy->GetItemUniqueID(), handler->GetItemUniqueID());
    EXPECT_EQ(copy->GetSubject(), kForwarded);
}

} // namespace
} // namespace vorlek
