// A mail before Outlook 2007, and what of a mail goes through Redemption in every version.
#include "agent/apps/outlook/MessageHandler.h"

#include "agent/apps/outlook/CommonUtils.h"
#include "tests/outlook/OldOutlookTest.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::OldOutlookTest;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::ItemData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const ItemData kMail{.subject = L"Plans",
                     .body = L"The plans of the year.",
                     .recipients = {{.name = L"You", .address = L"you@b.example"}}};
const std::string kRtf = "{\\rtf1\\ansi Plans {\\b of the year}\\par}";

class Labelled : public MessageHandler {
public:
    using MessageHandler::LabelBody;
    using MessageHandler::LabelSubject;
    using MessageHandler::MessageHandler;
};

std::string BytesOf(const std::wstring& text) {
    return {reinterpret_cast<const char*>(text.data()), 2 * text.size()};
}

class MessageHandlerRedemptionTest : public OldOutlookTest {
protected:
    std::unique_ptr<Labelled> LabelledOf(const ItemData& data) {
        auto handler = std::make_unique<Labelled>(Outlook::_MailItemPtr(outlook->NewMail(data).GetInterfacePtr()));
        outlook->Calls().Clear();
        log.Clear();
        return handler;
    }
    std::wstring File(const std::wstring& name, const std::string& bytes) {
        test_support::WriteBytes(folder / name, bytes);
        return (folder / name).wstring();
    }
    static std::vector<std::wstring> Ledger() {
        std::vector<std::wstring> ids;
        CommonUtils::GetInspectedItemIds(ids, nullptr);
        return ids;
    }
};

/// What an export gives.
struct Export {
    explicit Export(MessageHandler& handler) {
        _bstr_t plainText;
        handler.ExportBody(path, plainText);
        text = platform::ToWide(plainText);
    }
    std::wstring Extension() const { return path.substr(path.find_last_of(L'.') + 1); }
    std::string Bytes() const { return test_support::ReadBytes(path); }

    std::wstring path;
    std::wstring text;
};

TEST_F(MessageHandlerRedemptionTest, AMailIsSentByRedemptionWithoutAnEvent) {
    const auto handler = HandlerOf(kMail);
    const std::wstring id = handler->GetItemUniqueID();
    CommonUtils::AddToInspectedItems(id, id, nullptr);
    std::vector<std::wstring> ledgerAtSend{L"not asked"};
    outlook->Failures().On(L"RDOMail.Send", [&](const stand_ins::Call&) -> std::optional<_variant_t> {
        ledgerAtSend = Ledger();
        return std::nullopt;
    });
    log.Clear();
    outlook->Calls().Clear();
    handler->Send();
    EXPECT_THAT(ledgerAtSend, IsEmpty());
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Sending using Redemption (Outlook 2003) - Creating Redemption.RDOSession"));
    EXPECT_EQ(log.Texts(L"DEBUG").front(), L"Sending the message item...");
    EXPECT_TRUE(log.Has(L"DEBUG", L"Setting the subject in case a stamp was applied"));
    EXPECT_EQ(log.Texts(L"DEBUG").back(), L"Successfully sent item using RDO object module!");
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_THAT(outlook->Calls().Members(),
                ElementsAre(L"MailItem.EntryID get", L"RDOSession.CreateInstance",
                            L"RDOSession.GetRDOObjectFromOutlookObject", L"MailItem.Subject get",
                            L"RDOMail.Subject put", L"RDOMail.Send", L"Transport.Submit"));
}

TEST_F(MessageHandlerRedemptionTest, TheSubjectOfTheItemGoesOntoTheViewBeforeTheSend) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Answer(L"MailItem.Subject get", _variant_t(L"[Secret] Plans"));
    handler->Send();
    const auto delivered = outlook->Delivered();
    ASSERT_THAT(delivered, SizeIs(1));
    EXPECT_EQ(delivered[0].subject, L"[Secret] Plans");
}

TEST_F(MessageHandlerRedemptionTest, EveryFailureOfRedemptionsSendLeavesTheMailToOutlook) {
    const auto send = [&](const stand_ins::Faults::Action& action) {
        const auto handler = HandlerOf(kMail);
        outlook->Failures().On(L"RDOMail.Send", action, 1);
        handler->Send();
        EXPECT_THAT(log.Texts(L"INFO"), Contains(L"Sending the message item using Outlook Object Model..."));
        EXPECT_THAT(log.Texts(L"INFO"), Contains(L"display WAS NOT NEEDED as comErrorInSend=0"));
        outlook->Failures().Clear();
    };
    send([](const stand_ins::Call&) -> std::optional<_variant_t> { throw _com_error(kAccessDenied); });
    EXPECT_THAT(Errors(), ElementsAre(L"MessageHandler::SendWithRDO_: Caught a com exception during Send: " +
                                      ErrorText(kAccessDenied)));
    send(ThrowStandard("lost"));
    EXPECT_THAT(Errors(), ElementsAre(L"MessageHandler::SendWithRDO_: Caught an exception: lost"));
    send(ThrowNumber());
    EXPECT_THAT(Errors(), ElementsAre(L"MessageHandler::SendWithRDO_: Caught Unknown error!"));
    send(ThrowException());
    EXPECT_THAT(Errors(), ElementsAre(L"MessageHandler::SendWithRDO_: Caught Unknown error!"));
    EXPECT_THAT(outlook->Delivered(), SizeIs(4));
}

TEST_F(MessageHandlerRedemptionTest, AViewThatIsNoMailLeavesTheMailToOutlook) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Answer(L"RDOSession.GetRDOObjectFromOutlookObject",
                               static_cast<IDispatch*>(outlook->Application()));
    handler->Send();
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Send"), 1u);
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
}

TEST_F(MessageHandlerRedemptionTest, WithoutRedemptionTheMailIsSentByOutlook) {
    RemoveRedemption();
    const auto handler = HandlerOf(kMail);
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.RDOSession CLSID!",
                                      L"Failed to retrieve Redemption.RDOSession instance!"));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Send"), 1u);
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
}

TEST_F(MessageHandlerRedemptionTest, AMailThatNeitherSendsIsGivenBackToItsUser) {
    const auto handler = HandlerOf(kMail);
    const std::wstring id = handler->GetItemUniqueID();
    outlook->Failures().Fail(L"Transport.Submit", kAccessDenied);
    log.Clear();
    handler->Send();
    EXPECT_THAT(
        Errors(),
        ElementsAre(L"MessageHandler::SendWithRDO_: Caught a com exception during Send: " + ErrorText(kAccessDenied),
                    L"MessageHandler::Send: YM:Caught a com exception during Send: " + ErrorText(kAccessDenied),
                    L"MessageHandler::Send - Outlook failed to send the message item."));
    EXPECT_TRUE(outlook->IsOpen(id));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
}

TEST_F(MessageHandlerRedemptionTest, APlainMailIsExportedFromRedemptionsText) {
    const auto handler = HandlerOf(kMail);
    const Export body(*handler);
    EXPECT_EQ(body.text, L"The plans of the year.");
    EXPECT_EQ(body.Extension(), L"txt");
    EXPECT_EQ(body.Bytes(), "\xFF\xFE" + BytesOf(body.text));
    EXPECT_THAT(outlook->Calls().Members(), ElementsAre(L"SafeMailItem.CreateInstance", L"SafeMailItem.Item put",
                                                        L"SafeMailItem.Body get", L"MailItem.BodyFormat get"));
    EXPECT_TRUE(log.Has(L"INFO", L"ExportBody (message) after doing correct GetSafeItem.length=22"));
}

TEST_F(MessageHandlerRedemptionTest, AnHtmlMailIsExportedFromTheView) {
    const std::wstring html = L"<html><body><p>Plans \x65E5\x672C</p></body></html>";
    const auto handler = HandlerOf({.htmlBody = html});
    const Export body(*handler);
    EXPECT_EQ(body.Extension(), L"html");
    EXPECT_EQ(body.Bytes(), BytesOf(html));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.HTMLBody"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"RDOMail.HTMLBody"), 1u);
}

TEST_F(MessageHandlerRedemptionTest, ARichTextMailIsExportedByTheViewInEveryVersion) {
    for (const wchar_t* version : {L"11.0", L"12.0", L"16.0"}) {
        SetVersion(version);
        const auto handler = HandlerOf({.body = L"Plans of the year\r\n", .rtfBody = kRtf, .bodyFormat = 3});
        const Export body(*handler);
        EXPECT_EQ(body.text, L"Plans of the year\r\n");
        EXPECT_EQ(body.Extension(), L"rtf");
        EXPECT_EQ(body.Bytes(), kRtf);
        const auto call = outlook->Calls().All().back();
        EXPECT_EQ(call.member, L"RDOMail.SaveAs");
        EXPECT_EQ(call.arguments.at(1).vt, VT_INT);
        EXPECT_EQ(call.arguments.at(1).intVal, 1026);
    }
}

TEST_F(MessageHandlerRedemptionTest, AMailWhoseBodyOutlook16SaysIsEmptyTakesItsTextFromRedemption) {
    SetVersion(L"16.0");
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Answer(L"MailItem.Body", _variant_t(L""));
    const Export body(*handler);
    EXPECT_EQ(body.text, L"The plans of the year.");
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(MessageHandlerRedemptionTest, TheSafeItemIsMadeOnceForTheHandlersLife) {
    const auto handler = HandlerOf(kMail);
    EXPECT_TRUE(handler->GetSafeItem());
    EXPECT_TRUE(handler->GetSafeItem());
    EXPECT_EQ(outlook->Calls().Count(L"SafeMailItem.CreateInstance"), 1u);
    EXPECT_EQ(outlook->Calls().Count(L"SafeMailItem.Item"), 1u);
}

TEST_F(MessageHandlerRedemptionTest, EveryFailureOfTheExportPasses) {
    const auto fails = [&](const ItemData& data, const wchar_t* member) {
        const auto handler = HandlerOf(data);
        outlook->Failures().Fail(member, kAccessDenied);
        EXPECT_THROW(Export{*handler}, _com_error) << std::string(member, member + wcslen(member));
        outlook->Failures().Clear();
    };
    fails(kMail, L"SafeMailItem.Item");
    fails(kMail, L"SafeMailItem.Body");
    fails(kMail, L"MailItem.BodyFormat");
    fails({.htmlBody = L"<p>Plans</p>"}, L"RDOMail.HTMLBody");
    fails({.rtfBody = kRtf}, L"RDOMail.SaveAs");
}

TEST_F(MessageHandlerRedemptionTest, EmptyBodiesAreFilesOfTheMarkOrOfNothing) {
    const Export plain(*HandlerOf({.bodyFormat = 1}));
    EXPECT_EQ(plain.text, L"");
    EXPECT_EQ(plain.Bytes(), "\xFF\xFE");
    const Export html(*HandlerOf({.bodyFormat = 2}));
    EXPECT_EQ(html.Extension(), L"html");
    EXPECT_EQ(html.Bytes(), "");
    const Export rich(*HandlerOf({.bodyFormat = 3}));
    EXPECT_EQ(rich.Extension(), L"rtf");
    EXPECT_EQ(rich.Bytes(), "");
}

TEST_F(MessageHandlerRedemptionTest, WithoutRedemptionOnlyAPlainMailGivesAFileAndItIsEmpty) {
    RemoveRedemption();
    const Export plain(*HandlerOf(kMail));
    EXPECT_EQ(plain.text, L"");
    EXPECT_EQ(plain.Bytes(), "\xFF\xFE");
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.SafeMailItem CLSID",
                                      L"Failed to retrieve Redemption SafeItem => exporting an empty text"));
    const Export html(*HandlerOf({.htmlBody = L"<p>Plans</p>"}));
    EXPECT_EQ(html.path, L"");
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.SafeMailItem CLSID",
                                      L"Failed to retrieve Redemption SafeItem => exporting an empty text",
                                      L"Failed to retrieve Redemption.RDOSession CLSID!",
                                      L"Failed to retrieve Redemption.RDOSession instance!",
                                      L"Failed to retrieve Redemption RDO mail => exporting no HTML"));
    const Export rich(*HandlerOf({.rtfBody = kRtf}));
    EXPECT_EQ(rich.path, L"");
    EXPECT_EQ(Errors().back(), L"Failed to retrieve Redemption RDO mail => exporting no rich text");
}

TEST_F(MessageHandlerRedemptionTest, APlainBodyIsLabelledThroughTheView) {
    const auto handler = LabelledOf(kMail);
    handler->LabelBody(File(L"body.txt", "\xFF\xFE" + BytesOf(L"labelled \x65E5")));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Item is a plain text message", L"Outlook2003 - using Redemption message object"));
    EXPECT_EQ(stand_ins::GetText(handler->GetItemDispatch(), L"Body"), L"labelled \x65E5");
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Body put"), 0u);
}

TEST_F(MessageHandlerRedemptionTest, AnHtmlBodyIsLabelledThroughTheView) {
    const auto handler = LabelledOf({.htmlBody = L"<html><body>old</body></html>"});
    const std::wstring html = L"<html><body>new</body></html>";
    handler->LabelBody(File(L"body.html", BytesOf(html)));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Item is an HTML message", L"Outlook2003 - using Redemption message object"));
    EXPECT_EQ(stand_ins::GetText(handler->GetItemDispatch(), L"HTMLBody"), html);
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.HTMLBody put"), 0u);
}

TEST_F(MessageHandlerRedemptionTest, ARichTextBodyIsImportedInEveryVersion) {
    const std::string rtf = "{\\rtf1\\ansi [Secret] Plans}";
    const std::wstring path = File(L"body.rtf", rtf);
    for (const wchar_t* version : {L"11.0", L"12.0", L"16.0"}) {
        SetVersion(version);
        const auto handler = LabelledOf({.rtfBody = kRtf});
        handler->LabelBody(path);
        EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Item is a rich text message - importing via Redemption"));
        const auto call = outlook->Calls().All().back();
        EXPECT_EQ(call.member, L"RDOMail.Import");
        EXPECT_EQ(call.arguments.at(1).vt, VT_INT);
        EXPECT_EQ(call.arguments.at(1).intVal, 1);
        EXPECT_EQ(stand_ins::GetText(handler->GetItemDispatch(), L"Body"), L"[Secret] Plans");
    }
}

TEST_F(MessageHandlerRedemptionTest, TheSubjectIsLabelledOnTheItem) {
    const auto handler = LabelledOf(kMail);
    handler->LabelSubject(L"[Secret] Plans");
    EXPECT_THAT(outlook->Calls().Members(), ElementsAre(L"MailItem.Subject put"));
}

TEST_F(MessageHandlerRedemptionTest, WithoutRedemptionLabellingABodyRaises) {
    RemoveRedemption();
    const std::wstring path = File(L"body", "\xFF\xFE");
    for (const ItemData& data : {kMail, ItemData{.htmlBody = L"<p>old</p>"}, ItemData{.rtfBody = kRtf}}) {
        const auto handler = LabelledOf(data);
        try {
            handler->LabelBody(path);
            FAIL() << "Nothing was raised";
        } catch (const _com_error& failure) {
            EXPECT_EQ(failure.Error(), E_POINTER);
        }
        EXPECT_EQ(outlook->Calls().Count(L"MailItem.Body put"), 0u);
        EXPECT_EQ(outlook->Calls().Count(L"MailItem.HTMLBody put"), 0u);
    }
}

TEST_F(MessageHandlerRedemptionTest, ReplacedAttachmentsStandOnTheItem) {
    const auto handler =
        HandlerOf({.subject = L"Plans", .attachments = {{.fileName = L"one.txt", .content = "first"}}});
    EXPECT_TRUE(handler->OverrideItemAttachments({{File(L"a.bin", "A"), L"a.txt"}}));
    EXPECT_TRUE(log.Has(L"INFO", L"Replacing attachments - using RDO"));
    const auto saved = outlook->ItemsIn(L"Drafts");
    ASSERT_THAT(saved, SizeIs(1));
    ASSERT_THAT(saved[0].attachments, SizeIs(1));
    EXPECT_EQ(saved[0].attachments[0].displayName, L"a.txt");
}

TEST_F(MessageHandlerRedemptionTest, EveryFailureOfReplacingAttachmentsIsReportedAndFalse) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Fail(L"RDOMail.Attachments", kAccessDenied, 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    outlook->Failures().On(L"RDOAttachments.Clear", ThrowStandard("lost"), 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    outlook->Failures().On(L"RDOMail.Save", ThrowNumber(), 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while replacing attachments: " + ErrorText(kAccessDenied),
                            L"Caught an exception while replacing attachments: lost",
                            L"Caught an exception while replacing attachments - Unknown error."));
}

TEST_F(MessageHandlerRedemptionTest, WithoutRedemptionAttachmentsAreNotReplaced) {
    RemoveRedemption();
    const auto handler = HandlerOf({.attachments = {{.fileName = L"one.txt", .content = "first"}}});
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    EXPECT_EQ(Errors().back(), L"Caught a com exception while replacing attachments: " + ErrorText(E_POINTER));
    EXPECT_EQ(outlook->Calls().Count(L"Attachments.Remove"), 0u);
}

} // namespace
} // namespace vorlek
