// What of a task request is read for an inspection, and what of a decision is put on it.
#include "agent/apps/outlook/TaskHandler.h"

#include "tests/outlook/RedemptionClass.h"
#include "tests/outlook/TaskTest.h"

namespace vorlek {
namespace {

using outlook_tests::ContextOf;
using outlook_tests::ErrorText;
using outlook_tests::kAcceptClass;
using outlook_tests::kAccessDenied;
using outlook_tests::kRequestClass;
using outlook_tests::RedemptionClass;
using outlook_tests::RequestOf;
using outlook_tests::TaskTest;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::GetText;
using test_support::ScriptedCall;
using test_support::ScriptedObject;
using test_support::ScriptedObjectPtr;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::wstring kAsking = L"DEBUG Retrieving the TaskRequestItem's task";
const std::wstring kFound = L"DEBUG Related task was retrieved from the item";
const std::wstring kOnTask = L"INFO Item is a task request or forward - using related task";
const std::wstring kOnItem = L"INFO Item is a task response - using the item and not its related task";

/// Redemption's view of a task, which notes what it is attached to.
class SafeTask {
public:
    SafeTask()
        : class_(L"Redemption.SafeTaskItem", [this] {
              ++made;
              const auto view = ScriptedObject::Create();
              view->Answers(__uuidof(Redemption::ISafeItem))
                  .Value(L"Body", L"What the view shows.")
                  .Member(L"Item", [this](const ScriptedCall& call, VARIANT*, EXCEPINFO*) {
                      attached.push_back(GetText(stand_ins::DispatchPtr(call.arguments.at(0)), L"EntryID"));
                      return S_OK;
                  });
              return view;
          }) {}

    int made = 0;
    std::vector<std::wstring> attached; ///< IDs

private:
    RedemptionClass class_;
};

class TaskHandlerContentTest : public TaskTest {
protected:
    static std::vector<std::wstring> AttachmentsOf(IDispatch* object) {
        std::vector<std::wstring> names;
        const auto attachments = stand_ins::GetObject(object, L"Attachments");
        for (long i = 1; i <= stand_ins::GetNumber(attachments, L"Count"); ++i) {
            names.push_back(GetText(stand_ins::DispatchPtr(stand_ins::Get(attachments, L"Item", {i})), L"DisplayName"));
        }
        return names;
    }
    /// Whether all changes of an object are saved.
    static bool Saved(IDispatch* object) { return stand_ins::GetBool(object, L"Saved"); }
};

TEST_F(TaskHandlerContentTest, TheSafeItemIsAViewOfTheTaskAndMadeOnce) {
    SafeTask safe;
    const auto handler = HandlerOf(RequestOf(kAcceptClass));
    const auto view = handler->GetSafeItem();
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(handler->GetSafeItem() == view);
    EXPECT_EQ(safe.made, 1);
    EXPECT_THAT(safe.attached, ElementsAre(IdOf(task)));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(TaskHandlerContentTest, WithoutRedemptionThereIsNoSafeItem) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    EXPECT_EQ(handler->GetSafeItem(), nullptr);
    EXPECT_THAT(Lines(), ElementsAre(L"ERROR Failed to retrieve Redemption.SafeTaskItem CLSID"));
}

TEST_F(TaskHandlerContentTest, ASafeItemThatCannotBeMadeIsTriedAnew) {
    const RedemptionClass broken(L"Redemption.SafeTaskItem", [] { return ScriptedObjectPtr(); });
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    EXPECT_EQ(handler->GetSafeItem(), nullptr);
    EXPECT_EQ(handler->GetSafeItem(), nullptr);
    const std::wstring failure = L"ERROR Failed to create Redemption.SafeTaskItem instance";
    EXPECT_THAT(Lines(), ElementsAre(failure, failure));
}

TEST_F(TaskHandlerContentTest, WithoutATaskTheSafeItemStaysUnattachedAndIsGivenTheNextTime) {
    SafeTask safe;
    const auto handler = HandlerOf(RequestOf(kRequestClass, L"Paint the fence", false));
    EXPECT_EQ(handler->GetSafeItem(), nullptr);
    EXPECT_EQ(Lines().back(), L"ERROR Failed to create Redemption.SafeTaskItem - Couldn't retrieve related task item");
    EXPECT_NE(handler->GetSafeItem(), nullptr);
    EXPECT_EQ(safe.made, 1);
    EXPECT_THAT(safe.attached, IsEmpty());
}

TEST_F(TaskHandlerContentTest, TheBodyIsExportedAsTextWithItsMark) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    std::wstring path;
    _bstr_t text;
    handler->ExportBody(path, text);
    EXPECT_STREQ(text, L"You are asked to do this.");
    EXPECT_TRUE(path.ends_with(L".txt"));
    const std::string bytes = test_support::ReadBytes(path);
    EXPECT_EQ(bytes.substr(0, 4), std::string("\xFF\xFEY\0", 4));
    EXPECT_EQ(bytes.size(), 2 + 2 * text.length());
    EXPECT_THAT(Lines(), ElementsAre(L"INFO ExportBody (Task) after doing correct GetSafeItem . length=25"));
}

TEST_F(TaskHandlerContentTest, AnEmptyBodyIsReadFromTheView) {
    SafeTask safe;
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    stand_ins::Put(item, L"Body", L"");
    std::wstring path;
    _bstr_t text;
    handler->ExportBody(path, text);
    EXPECT_STREQ(text, L"What the view shows.");
    EXPECT_EQ(test_support::ReadBytes(path).size(), 2 + 2 * text.length());
}

TEST_F(TaskHandlerContentTest, WithoutRedemptionAnEmptyBodyIsAnEmptyTextAndTwoErrorLines) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    stand_ins::Put(item, L"Body", L"");
    std::wstring path;
    _bstr_t text;
    handler->ExportBody(path, text);
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(test_support::ReadBytes(path), "\xFF\xFE");
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.SafeTaskItem CLSID",
                                      L"Failed to retrieve Redemption SafeItem => exporting an empty text"));
}

TEST_F(TaskHandlerContentTest, ABodyThatCannotBeReadRaises) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    outlook->Failures().Fail(L"TaskRequestItem.Body", kAccessDenied);
    std::wstring path;
    _bstr_t text;
    EXPECT_THROW(handler->ExportBody(path, text), _com_error);
}

TEST_F(TaskHandlerContentTest, ARequestSaysWhoSendsItAndNamesNoRecipients) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    CInspectorMessage message(L"Email");
    handler->FillInspectorMessage(message);
    auto context = ContextOf(message);
    ASSERT_THAT(context, SizeIs(5));
    EXPECT_THAT(context[3], HasSubstr(L"EmailBody=")); // a path that is new each time
    context.erase(context.begin() + 3);
    EXPECT_THAT(context, ElementsAre(L"EmailSubject=Paint the fence", L"EmailNormalizedSubject=Paint the fence",
                                     L"EmailFrom=me@a.example", L"Application=16"));
    EXPECT_THAT(Warnings(), Contains(L"Could not get recipients"));
    const std::wstring document = message.GetFormattedMessage();
    EXPECT_THAT(document, HasSubstr(L"request.txt"));
    EXPECT_THAT(document, HasSubstr(L"You are asked to do this."));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(TaskHandlerContentTest, ALabelledSubjectIsSavedWithTheTask) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    handler->LabelSubject(L"[Internal] Paint");
    EXPECT_THAT(Lines(), ElementsAre(kOnTask, kAsking, kFound));
    EXPECT_EQ(GetText(task, L"Subject"), L"[Internal] Paint");
    EXPECT_TRUE(Saved(task));
    EXPECT_THAT(outlook->Calls().Count(L"TaskItem.Save"), 1u);
    EXPECT_EQ(GetText(item, L"Subject"), L"Paint the fence");
}

TEST_F(TaskHandlerContentTest, ALabelledSubjectOfAResponseIsSavedWithTheItem) {
    const auto handler = HandlerOf(RequestOf(kAcceptClass));
    handler->LabelSubject(L"[Internal] Accepted");
    EXPECT_THAT(Lines(), ElementsAre(kOnItem));
    EXPECT_EQ(GetText(item, L"Subject"), L"[Internal] Accepted");
    EXPECT_TRUE(Saved(item));
    EXPECT_EQ(GetText(task, L"Subject"), L"Paint the fence");
    EXPECT_EQ(outlook->Calls().Count(L"TaskRequestItem.GetAssociatedTask"), 0u);
}

TEST_F(TaskHandlerContentTest, ALabelledBodyReplacesTheTasksWhole) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    handler->LabelBody(File(L"body.txt", std::string("\xFF\xFEN\0e\0w\0", 8)));
    EXPECT_THAT(Lines(), ElementsAre(kOnTask, kAsking, kFound));
    EXPECT_EQ(GetText(task, L"Body"), L"New");
    EXPECT_TRUE(Saved(task));
    EXPECT_EQ(GetText(item, L"Body"), L"You are asked to do this.");
}

TEST_F(TaskHandlerContentTest, ALabelledBodyOfAResponseReplacesTheItems) {
    const auto handler = HandlerOf(RequestOf(kAcceptClass));
    handler->LabelBody(File(L"body.txt", std::string("N\0e\0w\0", 6)));
    EXPECT_THAT(Lines(), ElementsAre(kOnItem));
    EXPECT_EQ(GetText(item, L"Body"), L"New");
    EXPECT_TRUE(Saved(item));
    EXPECT_EQ(GetText(task, L"Body"), L"Green, please.");
}

TEST_F(TaskHandlerContentTest, AMissingFileOfTheBodyEndsTheLabelBeforeTheTaskIsAskedFor) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    EXPECT_THROW(handler->LabelBody((folder / L"missing.txt").wstring()), Exception);
    EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(TaskHandlerContentTest, ReplacedAttachmentsOfARequestAreSavedWithTheTask) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    const InspectionDecision::Attachments list = {{File(L"a.cip", "A"), L"notice.txt"},
                                                  {File(L"b.cip", "B"), L"second.txt"}};
    EXPECT_TRUE(handler->OverrideItemAttachments(list));
    EXPECT_THAT(Lines(), ElementsAre(kOnTask, kAsking, kFound, L"INFO Successfully set new attachments."));
    EXPECT_THAT(AttachmentsOf(task), ElementsAre(L"notice.txt", L"second.txt"));
    EXPECT_TRUE(Saved(task));
    EXPECT_THAT(AttachmentsOf(item), ElementsAre(L"request.txt"));
}

TEST_F(TaskHandlerContentTest, ReplacedAttachmentsOfAResponseAreSavedWithTheItem) {
    const auto handler = HandlerOf(RequestOf(kAcceptClass));
    EXPECT_TRUE(handler->OverrideItemAttachments({{File(L"a.cip", "A"), L"notice.txt"}}));
    EXPECT_THAT(Lines(), ElementsAre(kOnItem));
    EXPECT_THAT(AttachmentsOf(item), ElementsAre(L"notice.txt"));
    EXPECT_TRUE(Saved(item));
    EXPECT_THAT(AttachmentsOf(task), ElementsAre(L"colours.txt"));
}

TEST_F(TaskHandlerContentTest, AnEmptyListRemovesAllAttachments) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    EXPECT_TRUE(handler->OverrideItemAttachments({}));
    EXPECT_THAT(AttachmentsOf(task), IsEmpty());
}

TEST_F(TaskHandlerContentTest, AttachmentsThatOutlookDoesNotGiveAreNotReplacedNorSaved) {
    for (const wchar_t* messageClass : {kRequestClass, kAcceptClass}) {
        const auto handler = HandlerOf(RequestOf(messageClass));
        outlook->Failures().Answer(L"TaskItem.Attachments", stand_ins::NoObject());
        outlook->Failures().Answer(L"TaskRequestItem.Attachments", stand_ins::NoObject());
        EXPECT_FALSE(handler->OverrideItemAttachments({{File(L"a.cip", "A"), L"notice.txt"}}));
        EXPECT_THAT(Errors(), ElementsAre(L"Could not get pointer to current attachments"));
        EXPECT_EQ(outlook->Calls().Count(L"TaskItem.Save") + outlook->Calls().Count(L"TaskRequestItem.Save"), 0u);
    }
}

TEST_F(TaskHandlerContentTest, EveryFailureOfReplacingAttachmentsHasItsWords) {
    const auto handler = HandlerOf(RequestOf(kRequestClass));
    const InspectionDecision::Attachments list = {{File(L"a.cip", "A"), L"notice.txt"}};
    outlook->Failures().Fail(L"TaskItem.Save", kAccessDenied, 1);
    EXPECT_FALSE(handler->OverrideItemAttachments(list));
    for (const auto& failure : {ThrowStandard("lost"), ThrowException(), ThrowNumber()}) {
        outlook->Failures().On(L"TaskItem.Save", failure, 1);
        EXPECT_FALSE(handler->OverrideItemAttachments(list));
    }
    const std::wstring unknown = L"Caught an exception while replacing attachments - Unknown error.";
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while replacing attachments: " + ErrorText(kAccessDenied),
                            L"Caught an exception while replacing attachments: lost", unknown, unknown));
}

TEST_F(TaskHandlerContentTest, WithoutATaskTheLabelsOfARequestFailAndTheItemStaysAsItIs) {
    const auto handler = HandlerOf(RequestOf(kRequestClass, L"Paint the fence", false));
    handler->ApplyDataLabel(std::make_shared<InspectionDecision>(
        L"<decision result=\"1\"><DataModifications><EmailSubject value=\"Label\" /></DataModifications></decision>"));
    EXPECT_EQ(Errors().back(), L"Unknown error while applying data label.");
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    EXPECT_EQ(Errors().back(), L"Caught a com exception while replacing attachments: " + ErrorText(E_POINTER));
    EXPECT_EQ(GetText(item, L"Subject"), L"Paint the fence");
    EXPECT_THAT(AttachmentsOf(item), ElementsAre(L"request.txt"));
    EXPECT_EQ(outlook->Calls().Count(L"TaskRequestItem.Save"), 0u);
}

} // namespace
} // namespace vorlek
