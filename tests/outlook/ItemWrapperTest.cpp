#include "agent/apps/outlook/ItemWrapper.h"

#include "foundation/Exception.h"
#include "tests/outlook/OutlookTest.h"
#include "tests/outlook/RedemptionClass.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::OutlookTest;
using outlook_tests::RedemptionClass;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::ItemData;
using test_support::ScriptedObject;
using test_support::ScriptedObjectPtr;
using testing::Contains;
using testing::ElementsAre;

/// A mail's handler with the inner operations of every item in reach.
class Wrapper : public MessageHandler {
public:
    using MessageHandler::GetRDOObject;
    using MessageHandler::GetRDOSession;
    using MessageHandler::MessageHandler;
    using MessageHandler::ModifyAttachmentCollection_;
};

class ItemWrapperTest : public OutlookTest {
protected:
    std::unique_ptr<Wrapper> WrapperOf(const ItemData& data) {
        auto wrapper = std::make_unique<Wrapper>(Outlook::_MailItemPtr(outlook->NewMail(data).GetInterfacePtr()));
        outlook->Calls().Clear();
        log.Clear();
        return wrapper;
    }
    std::wstring File(const std::wstring& name, const std::string& bytes) {
        test_support::WriteBytes(folder / name, bytes);
        return (folder / name).wstring();
    }
    /// The attachments as "displayed name: bytes", in the item's order.
    std::vector<std::string> AttachmentsOf(Wrapper& wrapper) {
        const Outlook::_MailItemPtr mail = wrapper.GetItemDispatch();
        const auto attachments = mail->GetAttachments();
        std::vector<std::string> all;
        for (long index = 1; index <= attachments->GetCount(); ++index) {
            const auto attachment = attachments->Item(index);
            const std::wstring path = (folder / L"saved").wstring();
            attachment->SaveAsFile(path.c_str());
            const std::wstring name = stand_ins::GetText(attachment, L"DisplayName");
            all.push_back(std::string(name.begin(), name.end()) + ": " + test_support::ReadBytes(path));
        }
        return all;
    }
};

TEST_F(ItemWrapperTest, ASavedItemIsNotSavedForItsId) {
    const auto item = outlook->SavedItem({.subject = L"Plans"});
    Wrapper wrapper(Outlook::_MailItemPtr(item.GetInterfacePtr()));
    outlook->Calls().Clear();
    EXPECT_EQ(wrapper.GetItemUniqueID(), stand_ins::GetText(item, L"EntryID"));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Save"), 0u);
}

TEST_F(ItemWrapperTest, AnItemThatWasNeverSavedIsSavedForItsId) {
    const auto wrapper = WrapperOf({.subject = L"Plans"});
    EXPECT_NE(wrapper->GetItemUniqueID(), L"");
    EXPECT_THAT(outlook->Calls().Members(),
                ElementsAre(L"MailItem.EntryID get", L"MailItem.Save", L"MailItem.EntryID get"));
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Saving item to get the EntryID"));
    for (const auto& line : log.Lines()) {
        EXPECT_TRUE(line.logger.ends_with(L"vorlek.ItemWrapper<T >"))
            << std::string(line.logger.begin(), line.logger.end());
    }
}

TEST_F(ItemWrapperTest, AnItemWithoutAnIdAfterItsSaveRaises) {
    const auto wrapper = WrapperOf({});
    outlook->Failures().Answer(L"MailItem.EntryID", _variant_t(L""));
    test_support::ExpectFailure<Exception>([&] { wrapper->GetItemUniqueID(); },
                                           L"vorlek::ItemWrapper<T >::GetItemUniqueID",
                                           L"Failed to create item EntryID");
}

TEST_F(ItemWrapperTest, TheFolderIsTheOneThatHoldsTheItem) {
    const auto item = outlook->SavedItem({});
    Wrapper wrapper(Outlook::_MailItemPtr(item.GetInterfacePtr()));
    const auto holder = wrapper.GetCurrentFolder();
    ASSERT_TRUE(holder);
    EXPECT_EQ(stand_ins::GetText(holder, L"Name"), L"Drafts");
}

TEST_F(ItemWrapperTest, AFolderThatOutlookDoesNotTellIsNullWithAWarning) {
    const auto wrapper = WrapperOf({});
    outlook->Failures().Fail(L"MailItem.Parent", kAccessDenied, 1);
    EXPECT_FALSE(wrapper->GetCurrentFolder());
    EXPECT_THAT(Warnings(), ElementsAre(L"COM exception was raised and handled while performing 'GetCurrentFolder': " +
                                        ErrorText(kAccessDenied)));
    outlook->Failures().Answer(L"MailItem.Parent", static_cast<IDispatch*>(outlook->Application()), 1);
    EXPECT_FALSE(wrapper->GetCurrentFolder()); // a holder that is no folder
}

TEST_F(ItemWrapperTest, DeletingDeletesTheItem) {
    const auto wrapper = WrapperOf({.subject = L"Plans"});
    wrapper->Save();
    wrapper->Delete();
    EXPECT_TRUE(outlook->ItemsIn(L"Drafts").empty());
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Delete"), 1u);
}

TEST_F(ItemWrapperTest, ACopyIsAHandlerOfTheSameKindOnAnotherItem) {
    const auto wrapper = WrapperOf({.subject = L"Plans"});
    const std::unique_ptr<ItemHandler> copy(wrapper->Copy());
    ASSERT_NE(dynamic_cast<MessageHandler*>(copy.get()), nullptr);
    EXPECT_EQ(copy->GetSubject(), L"Plans");
    EXPECT_NE(copy->GetItemUniqueID(), wrapper->GetItemUniqueID());
    EXPECT_TRUE(log.Has(L"DEBUG", L"Exit < ItemWrapper<T>::Copy returns new instance"));
}

TEST_F(ItemWrapperTest, ACopyOfAnotherKindIsNull) {
    const auto wrapper = WrapperOf({});
    outlook->Failures().Answer(L"MailItem.Copy", static_cast<IDispatch*>(outlook->NewPost({}).GetInterfacePtr()));
    EXPECT_EQ(wrapper->Copy(), nullptr);
    EXPECT_TRUE(log.Has(L"DEBUG", L"ItemWrapper<T>::Copy returns NULL"));
}

TEST_F(ItemWrapperTest, AnItemIsDisplayedNotModal) {
    const auto wrapper = WrapperOf({});
    wrapper->Display();
    const auto call = outlook->Calls().All().at(0);
    EXPECT_EQ(call.member, L"MailItem.Display");
    ASSERT_EQ(call.arguments.size(), 1u);
    EXPECT_EQ(call.arguments[0].vt, VT_I2);
    EXPECT_EQ(call.arguments[0].iVal, 0);
    EXPECT_EQ(outlook->OpenInspectors(), 1u);
}

TEST_F(ItemWrapperTest, LinesBearTheNameOfTheTemplate) {
    WrapperOf({})->Save();
    ASSERT_FALSE(log.Lines().empty());
    EXPECT_TRUE(log.Lines().front().logger.ends_with(L"vorlek.ItemWrapper<T >")) << log.Lines().front().logger;
}

TEST_F(ItemWrapperTest, ASaveThatFailsIsWarnedOfAndGoesNoFurther) {
    const auto wrapper = WrapperOf({});
    outlook->Failures().Fail(L"MailItem.Save", kAccessDenied);
    wrapper->Save();
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Saving item..."));
    EXPECT_THAT(Warnings(), ElementsAre(L"COM exception: " + ErrorText(kAccessDenied) + L" item wasn't saved"));
}

TEST_F(ItemWrapperTest, AnItemInAWordWindowClosesThroughItsInspectorWithoutASearchForAWindow) {
    const test_support::ReplacedImport<"FindWindowW", decltype(FindWindowW)> search(
        [](const wchar_t*, const wchar_t*) { return HWND(); });
    const auto wrapper = WrapperOf({});
    wrapper->Display();
    outlook->Calls().Clear();
    log.Clear();
    wrapper->Close();
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
    EXPECT_TRUE(outlook->Calls().Before(L"Inspector.IsWordMail", L"Inspector.Close"));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Close"), 0u);
    EXPECT_EQ(outlook->Calls().All().back().ToString(), L"Inspector.Close(0)");
    EXPECT_EQ(search.Calls(), 0);
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Close item was called"));
}

TEST_F(ItemWrapperTest, AnItemInAnotherWindowClosesItself) {
    const auto wrapper = WrapperOf({});
    wrapper->Display();
    outlook->Failures().Answer(L"Inspector.IsWordMail", _variant_t(false));
    outlook->Calls().Clear();
    wrapper->Close();
    EXPECT_EQ(outlook->Calls().All().back().ToString(), L"MailItem.Close(0)");
    EXPECT_TRUE(log.Has(L"DEBUG", L"Non-WordMail => Closing the item through the regular close command."));
}

TEST_F(ItemWrapperTest, AnItemWithoutAnInspectorIsNotClosed) {
    const auto wrapper = WrapperOf({});
    outlook->Failures().Answer(L"MailItem.GetInspector", stand_ins::NoObject());
    wrapper->Close();
    EXPECT_THAT(Warnings(), ElementsAre(L"Item's Inspector is null"));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Close"), 0u);
}

/// A decision with labels, as the agent sends it; its body file is the caller's.
std::shared_ptr<InspectionDecision> Decision(const std::wstring& changes) {
    auto decision = std::make_shared<InspectionDecision>(L"<decision result=\"1\"><DataModifications>" + changes +
                                                         L"</DataModifications></decision>");
    decision->SetAutomaticFileDeletion(false);
    return decision;
}

TEST_F(ItemWrapperTest, ASubjectLabelAloneChangesTheSubjectOnly) {
    const auto wrapper = WrapperOf({.subject = L"Plans", .body = L"text"});
    const auto decision = Decision(L"<EmailSubject value=\"Labelled\" />");
    log.Clear();
    wrapper->ApplyDataLabel(decision);
    EXPECT_EQ(wrapper->GetSubject(), L"Labelled");
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Body put"), 0u);
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Replacing subject with: Labelled"));
}

TEST_F(ItemWrapperTest, ABodyLabelAloneChangesTheBodyOnly) {
    const auto wrapper = WrapperOf({.subject = L"Plans", .body = L"text"});
    const std::wstring path = File(L"body.txt", std::string("\xFF\xFE"
                                                            "a\0b\0",
                                                            6));
    const auto decision = Decision(L"<EmailBody path=\"" + path + L"\" />");
    log.Clear();
    wrapper->ApplyDataLabel(decision);
    EXPECT_EQ(stand_ins::GetText(wrapper->GetItemDispatch(), L"Body"), L"ab");
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Subject put"), 0u);
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Replacing body with: " + path, L"Item is a plain text message",
                            L"Outlook2007+ - using message object", L"Body labeling finished successfully. "));
}

TEST_F(ItemWrapperTest, ASubjectThatCannotBeLabelledKeepsTheBodyFromBeingTried) {
    const auto wrapper = WrapperOf({.subject = L"Plans", .body = L"text"});
    const auto both = Decision(L"<EmailSubject value=\"Labelled\" /><EmailBody path=\"C:\\nowhere\" />");
    outlook->Failures().On(L"MailItem.Subject put", ThrowStandard("lost"), 1);
    wrapper->ApplyDataLabel(both);
    outlook->Failures().Fail(L"MailItem.Subject put", kAccessDenied, 1);
    wrapper->ApplyDataLabel(both);
    outlook->Failures().On(L"MailItem.Subject put", ThrowNumber(), 1);
    wrapper->ApplyDataLabel(both);
    EXPECT_THAT(Errors(), ElementsAre(L"Failed applying data label: lost", L"Unknown error while applying data label.",
                                      L"Unknown error while applying data label."));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.BodyFormat"), 0u);
}

TEST_F(ItemWrapperTest, ABodyFileThatIsNotThereEndsTheLabelling) {
    const auto wrapper = WrapperOf({.subject = L"Plans", .body = L"text"});
    wrapper->ApplyDataLabel(Decision(L"<EmailBody path=\"C:\\nowhere\" />"));
    EXPECT_THAT(Errors(), ElementsAre(L"Unknown error while applying data label."));
    EXPECT_EQ(stand_ins::GetText(wrapper->GetItemDispatch(), L"Body"), L"text");
}

TEST_F(ItemWrapperTest, TheSubjectIsReadAndLogged) {
    const auto wrapper = WrapperOf({.subject = L"Plans \x65E5\x672C"});
    EXPECT_EQ(wrapper->GetSubject(), L"Plans \x65E5\x672C");
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"ItemWrapper<T>::GetSubject = Plans \x65E5\x672C"));
}

TEST_F(ItemWrapperTest, TheNormalizedSubjectComesFromTheObjectModel) {
    const auto wrapper = WrapperOf({.subject = L"RE: Plans", .properties = {{0x0E1D001F, L"Plans"}}});
    EXPECT_EQ(wrapper->GetNormalizedSubject(), L"Plans");
}

TEST_F(ItemWrapperTest, AllAttachmentsAreReplacedEachAtTheFirstPosition) {
    const auto wrapper = WrapperOf(
        {.attachments = {{.fileName = L"one.txt", .content = "first"}, {.fileName = L"two.txt", .content = "second"}}});
    const Outlook::_MailItemPtr mail = wrapper->GetItemDispatch();
    const std::wstring a = File(L"a.bin", "A");
    const std::wstring b = File(L"b.bin", "B");
    log.Clear();
    outlook->Calls().Clear();
    EXPECT_TRUE(wrapper->ModifyAttachmentCollection_(mail->GetAttachments(), {{b, L"late.txt"}, {a, L"early.txt"}}));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Replacing attachments - using Outlook OM", L"Item has 2 attachments - Removing...",
                            L"Removed attachments - now setting the new ones.", L"Successfully set new attachments."));
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Adding attachment \"early.txt\": " + a, L"Adding attachment \"late.txt\": " + b));
    for (const auto& call : outlook->Calls().All()) {
        if (call.member == L"Attachments.Add") {
            ASSERT_EQ(call.arguments.size(), 4u);
            EXPECT_EQ(call.arguments[0].vt, VT_BSTR);
            EXPECT_EQ(call.arguments[1].vt, VT_INT);
            EXPECT_EQ(call.arguments[1].intVal, 1);
            EXPECT_EQ(call.arguments[2].vt, VT_INT);
            EXPECT_EQ(call.arguments[2].intVal, 1);
            EXPECT_EQ(call.arguments[3].vt, VT_BSTR);
        }
        if (call.member == L"Attachments.Remove") {
            EXPECT_EQ(call.ToString(), L"Attachments.Remove(1)");
        }
    }
    EXPECT_EQ(outlook->Calls().Count(L"Attachments.Add"), 2u);
    EXPECT_THAT(AttachmentsOf(*wrapper), testing::UnorderedElementsAre("early.txt: A", "late.txt: B"));
}

TEST_F(ItemWrapperTest, AnEmptyListRemovesAllAttachments) {
    const auto wrapper = WrapperOf({.attachments = {{.fileName = L"one.txt", .content = "first"}}});
    const Outlook::_MailItemPtr mail = wrapper->GetItemDispatch();
    EXPECT_TRUE(wrapper->ModifyAttachmentCollection_(mail->GetAttachments(), {}));
    EXPECT_EQ(mail->GetAttachments()->GetCount(), 0);
}

TEST_F(ItemWrapperTest, WithoutACollectionNothingIsReplaced) {
    const auto wrapper = WrapperOf({});
    EXPECT_FALSE(wrapper->ModifyAttachmentCollection_(Outlook::AttachmentsPtr(), {}));
    EXPECT_THAT(Errors(), ElementsAre(L"Could not get pointer to current attachments"));
}

TEST_F(ItemWrapperTest, ThroughRedemptionAllAttachmentsAreClearedAtOnceAndTheItemIsSaved) {
    std::vector<std::wstring> calls;
    const auto note = [&calls](const wchar_t* name) {
        return [&calls, name](const test_support::ScriptedCall& call, VARIANT*, EXCEPINFO*) {
            std::wstring line = name;
            for (const auto& argument : call.arguments) {
                line += L" " + platform::ToWide(platform::ToText(_variant_t(argument)));
            }
            calls.push_back(line);
            return S_OK;
        };
    };
    const auto attachments = ScriptedObject::Create();
    attachments->Answers(__uuidof(Redemption::IRDOAttachments))
        .Value(L"Count", 2L)
        .Member(L"Clear", note(L"Clear"))
        .Member(L"Add", note(L"Add"));
    const auto view = ScriptedObject::Create();
    view->Answers(__uuidof(Redemption::IRDOMail))
        .Value(L"Attachments", static_cast<IDispatch*>(attachments.GetInterfacePtr()))
        .Member(L"Save", note(L"Save"));
    WrapperOf({})->ModifyAttachmentCollection_(Redemption::IRDOMailPtr(static_cast<IDispatch*>(view.GetInterfacePtr())),
                                               {{L"C:\\b", L"two"}, {L"C:\\a", L"one"}});
    EXPECT_THAT(calls, ElementsAre(L"Clear", L"Add C:\\a 1 1 one", L"Add C:\\b 1 1 two", L"Save"));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Replacing attachments - using RDO", L"Item has 2",
                            L"Removed attachments - now setting the new ones.", L"Successfully set new attachments."));
}

TEST_F(ItemWrapperTest, WithoutRedemptionThereIsNoSenderNoSessionAndNoView) {
    const auto wrapper = WrapperOf({});
    EXPECT_EQ(wrapper->GetSenderSMTP(), L"");
    EXPECT_FALSE(wrapper->GetRDOSession());
    EXPECT_FALSE(wrapper->GetRDOObject());
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Retrieving sender's info by using Redemption..."));
    EXPECT_THAT(Errors(),
                ElementsAre(L"Failed to retrieve Redemption.SafeCurrentUser CLSID. This means we couldn't get the mail "
                            L"sender - leaving it out of the incident context",
                            L"Failed to retrieve Redemption.RDOSession CLSID!",
                            L"Failed to retrieve Redemption.RDOSession CLSID!",
                            L"Failed to retrieve Redemption.RDOSession instance!"));
}

TEST_F(ItemWrapperTest, ARedemptionThatCannotBeMadeIsReported) {
    const RedemptionClass user(L"Redemption.SafeCurrentUser", [] { return ScriptedObjectPtr(); });
    const RedemptionClass session(L"Redemption.RDOSession", [] { return ScriptedObjectPtr(); });
    const auto wrapper = WrapperOf({});
    EXPECT_EQ(wrapper->GetSenderSMTP(), L"");
    EXPECT_FALSE(wrapper->GetRDOSession());
    EXPECT_THAT(Errors(),
                ElementsAre(L"Failed to create Redemption.SafeCurrentUser instance. This means we couldn't get the "
                            L"mail sender - leaving it out of the incident context",
                            L"Failed to create Redemption.RDOSession instance!"));
}

TEST_F(ItemWrapperTest, TheSenderIsRedemptionsCurrentUser) {
    const RedemptionClass user(L"Redemption.SafeCurrentUser", [] {
        const auto made = ScriptedObject::Create();
        made->Answers(__uuidof(Redemption::ISafeCurrentUser)).Value(L"SMTPAddress", L"me@a.example");
        return made;
    });
    const auto wrapper = WrapperOf({});
    EXPECT_EQ(wrapper->GetSenderSMTP(), L"me@a.example");
    EXPECT_TRUE(log.Has(L"INFO", L"ItemWrapper<T>::GetSenderSMTP=me@a.example"));
}

/// A session whose one operation is the body.
RedemptionClass Session(ScriptedObject::Body body) {
    return RedemptionClass(L"Redemption.RDOSession", [body] {
        const auto made = ScriptedObject::Create();
        made->Answers(__uuidof(Redemption::IRDOSession)).Member(L"GetRDOObjectFromOutlookObject", body);
        return made;
    });
}

TEST_F(ItemWrapperTest, TheViewIsAskedForWithTheItemItselfShallow) {
    std::vector<_variant_t> asked;
    const auto view = ScriptedObject::Create();
    const RedemptionClass session = Session([&](const test_support::ScriptedCall& call, VARIANT* result, EXCEPINFO*) {
        asked = call.arguments;
        const _variant_t value(static_cast<IDispatch*>(view.GetInterfacePtr()));
        return VariantCopy(result, const_cast<_variant_t*>(&value));
    });
    const auto wrapper = WrapperOf({});
    EXPECT_EQ(wrapper->GetRDOObject().GetInterfacePtr(), static_cast<IDispatch*>(view.GetInterfacePtr()));
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].vt, VT_DISPATCH);
    EXPECT_EQ(asked[0].pdispVal, wrapper->GetItemDispatch().GetInterfacePtr());
    EXPECT_EQ(asked[1].vt, VT_BOOL);
    EXPECT_EQ(asked[1].boolVal, VARIANT_TRUE);
    EXPECT_TRUE(log.Has(L"DEBUG", L"Created Redemption.RDOSession - now getting RDO object."));
}

TEST_F(ItemWrapperTest, EveryFailureOfTheViewIsReportedAndNull) {
    int way = 0;
    const RedemptionClass session = Session([&](const test_support::ScriptedCall&, VARIANT* result, EXCEPINFO*) {
        switch (way++) {
        case 0:
            result->vt = VT_DISPATCH;
            result->pdispVal = nullptr;
            return S_OK;
        case 1:
            return kAccessDenied;
        case 2:
            throw std::runtime_error("lost");
        default:
            throw 42;
        }
    });
    const auto wrapper = WrapperOf({});
    for (int call = 0; call < 4; ++call) {
        EXPECT_FALSE(wrapper->GetRDOObject());
    }
    EXPECT_THAT(Errors(),
                ElementsAre(L"Failed to get RDO object!", L"Caught a COM exception: " + ErrorText(kAccessDenied),
                            L"Caught an STD exception: lost", L"Caught Unknown error"));
}

TEST_F(ItemWrapperTest, ANullObjectAnswersNoInterface) {
    EXPECT_FALSE(AnswersInterface({}, IID_IDispatch));
    EXPECT_TRUE(AnswersInterface(IDispatchPtr(outlook->Application().GetInterfacePtr()), IID_IDispatch));
}

TEST_F(ItemWrapperTest, AHandlerWithoutAnItemRaises) {
    Wrapper wrapper(Outlook::_MailItemPtr{});
    try {
        wrapper.GetSubject();
        FAIL() << "Nothing was raised";
    } catch (const _com_error& failure) {
        EXPECT_EQ(failure.Error(), E_POINTER);
    }
}

} // namespace
} // namespace vorlek
