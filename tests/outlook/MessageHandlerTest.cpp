#include "agent/apps/outlook/MessageHandler.h"

#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "foundation/Exception.h"
#include "tests/outlook/OutlookTest.h"
#include "tests/outlook/RedemptionClass.h"
#include "tests/support/ExpectFailure.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::OutlookTest;
using outlook_tests::RedemptionClass;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::ItemData;
using test_support::ScriptedCall;
using test_support::ScriptedObject;
using test_support::ScriptedObjectPtr;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const ItemData kMail{.subject = L"Plans",
                     .body = L"The plans of the year.",
                     .recipients = {{.name = L"You", .address = L"you@b.example"}}};

class Labelled : public MessageHandler {
public:
    using MessageHandler::LabelBody;
    using MessageHandler::LabelSubject;
    using MessageHandler::MessageHandler;
};

/// A handler without a mail that has an ID all the same.
class Mailless : public MessageHandler {
public:
    Mailless() : MessageHandler(Outlook::_MailItemPtr()) {}
    std::wstring GetItemUniqueID() override { return L"ID-1"; }
};

class MessageHandlerTest : public OutlookTest {
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
    std::vector<std::wstring> Ledger() {
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

    std::wstring path;
    std::wstring text;
};

/// The Redemption library's view of a mail, with the one member that a test looks at.
class RedemptionMail {
public:
    explicit RedemptionMail(const wchar_t* member)
        : session_(L"Redemption.RDOSession", [this, member] {
              const auto view = ScriptedObject::Create();
              view->Answers(__uuidof(Redemption::IRDOMail))
                  .Member(member, [this](const ScriptedCall& call, VARIANT*, EXCEPINFO*) {
                      calls.push_back(call);
                      return S_OK;
                  });
              const auto made = ScriptedObject::Create();
              made->Answers(__uuidof(Redemption::IRDOSession))
                  .Value(L"GetRDOObjectFromOutlookObject", static_cast<IDispatch*>(view.GetInterfacePtr()));
              return made;
          }) {}

    std::vector<ScriptedCall> calls;

private:
    RedemptionClass session_;
};

TEST_F(MessageHandlerTest, AnOrdinaryMailIsNotOnTheSpot) {
    EXPECT_FALSE(HandlerOf(kMail)->HandleOnSpot());
}

TEST_F(MessageHandlerTest, AForwardedMailIsOnTheSpot) {
    EXPECT_TRUE(HandlerOf({.autoForwarded = true})->HandleOnSpot());
}

TEST_F(MessageHandlerTest, AVoteIsOnTheSpotInEveryVersion) {
    const auto handler = HandlerOf({.votingResponse = L"Yes"});
    for (const wchar_t* version : {L"10.0", L"11.0", L"12.0", L"16.0"}) {
        SetVersion(version);
        EXPECT_TRUE(handler->HandleOnSpot());
    }
}

TEST_F(MessageHandlerTest, LinesBearTheNameOfTheClass) {
    HandlerOf(kMail)->GetLastModificationTime();
    EXPECT_TRUE(log.Lines().front().logger.ends_with(L"vorlek.MessageHandler"));
}

TEST_F(MessageHandlerTest, TheSentCopyIsKnownByTheItemsOwnId) {
    const auto handler = HandlerOf(kMail);
    EXPECT_EQ(handler->GetSentItemUniqueID(), handler->GetItemUniqueID());
}

TEST_F(MessageHandlerTest, AMailIsSentAndLeavesTheLedgerBefore) {
    const auto handler = HandlerOf(kMail);
    const std::wstring id = handler->GetItemUniqueID();
    CommonUtils::AddToInspectedItems(id, id, nullptr);
    std::vector<std::wstring> ledgerAtSend{L"not asked"};
    outlook->Failures().On(L"MailItem.Send", [&](const stand_ins::Call&) -> std::optional<_variant_t> {
        ledgerAtSend = Ledger();
        return std::nullopt;
    });
    log.Clear();
    outlook->Calls().Clear();
    handler->Send();
    EXPECT_THAT(ledgerAtSend, IsEmpty());
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Sending the message item using Outlook Object Model...", L"Sending the message deb5",
                            L"Sending the message deb6.sta=0", L"- Send():still alive..sta=0",
                            L"display WAS NOT NEEDED as comErrorInSend=0"));
    EXPECT_EQ(log.Texts(L"DEBUG").front(), L"Sending the message item...");
    EXPECT_THAT(Errors(), IsEmpty());
    auto calls = outlook->Calls().Members();
    ASSERT_GE(calls.size(), 4u);
    calls.resize(4); // the rest is Outlook's own
    EXPECT_THAT(calls, ElementsAre(L"MailItem.EntryID get", L"Application.Session get", L"NameSpace.GetDefaultFolder",
                                   L"MailItem.Send"));
    EXPECT_EQ(outlook->Calls().All()[2].ToString(), L"NameSpace.GetDefaultFolder(5)");
}

TEST_F(MessageHandlerTest, ASendThatOutlookRefusesGivesTheMailBackToTheUser) {
    const auto handler = HandlerOf(kMail);
    const std::wstring id = handler->GetItemUniqueID();
    CommonUtils::AddToInspectedItems(id, id, nullptr);
    constexpr HRESULT refused = static_cast<HRESULT>(0x80040119);
    outlook->Failures().Fail(L"MailItem.Send", refused);
    log.Clear();
    outlook->Calls().Clear();
    handler->Send();
    EXPECT_THAT(Errors(),
                ElementsAre(L"MessageHandler::Send: YM:Caught a com exception during Send: " + ErrorText(refused),
                            L"MessageHandler::Send - Outlook failed to send the message item."));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Sending the message item using Outlook Object Model...", L"Sending the message deb5",
                            L"- Send():still alive..sta=" + std::to_wstring(refused),
                            L"display was run as comerrorinsend=1"));
    EXPECT_TRUE(outlook->IsOpen(id));
    EXPECT_THAT(Ledger(), IsEmpty());
    const auto display = outlook->Calls().All().back();
    EXPECT_EQ(display.member, L"MailItem.Display");
    ASSERT_THAT(display.arguments, SizeIs(1));
    EXPECT_EQ(display.arguments[0].vt, VT_ERROR);
    EXPECT_EQ(display.arguments[0].scode, DISP_E_PARAMNOTFOUND);
}

TEST_F(MessageHandlerTest, AnotherFailureOfTheSendDoesNotShowTheMail) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().On(L"MailItem.Send", ThrowStandard("lost"), 1);
    handler->Send();
    outlook->Failures().On(L"MailItem.Send", ThrowNumber(), 1);
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"MessageHandler::Send: Caught an exception: lost",
                                      L"MessageHandler::Send: Caught Unknown error!"));
    EXPECT_THAT(log.Texts(L"INFO"), Contains(L"- Send():still alive..sta=0").Times(2));
    EXPECT_THAT(log.Texts(L"INFO"), Contains(L"display WAS NOT NEEDED as comErrorInSend=0").Times(2));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Display"), 0u);
}

TEST_F(MessageHandlerTest, EveryFailureOfShowingTheMailIsReported) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Fail(L"MailItem.Send", kAccessDenied);
    outlook->Failures().Fail(L"MailItem.Display", kAccessDenied, 1);
    handler->Send();
    outlook->Failures().On(L"MailItem.Display", ThrowStandard("lost"), 1);
    handler->Send();
    outlook->Failures().On(L"MailItem.Display", ThrowNumber(), 1);
    handler->Send();
    std::vector<std::wstring> display;
    for (const auto& line : Errors()) {
        if (line.find(L"during display") != std::wstring::npos || line.find(L"error during") != std::wstring::npos) {
            display.push_back(line);
        }
    }
    EXPECT_THAT(display,
                ElementsAre(L"MessageHandler::Send: Caught a com exception during display: " + ErrorText(kAccessDenied),
                            L"MessageHandler::Send: Caught an exception during display: lost",
                            L"MessageHandler::Send: Unknown  error during display!"));
    EXPECT_THAT(log.Texts(L"INFO"), Not(Contains(L"display was run as comerrorinsend=1")));
}

TEST_F(MessageHandlerTest, WithoutASessionNothingIsSent) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Answer(L"Application.Session", stand_ins::NoObject());
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Outlook session."));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Send"), 0u);
    EXPECT_FALSE(log.Has(L"INFO", L"- Send():still alive..sta=0"));
}

TEST_F(MessageHandlerTest, AHandlerWithoutAMailLeavesTheLedgerAndSendsNothing) {
    CommonUtils::AddToInspectedItems(L"ID-1", L"ID-1", nullptr);
    Mailless handler;
    log.Clear();
    outlook->Calls().Clear();
    handler.Send();
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Errors(), ElementsAre(L"message)Item_ is NULL"));
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
}

TEST_F(MessageHandlerTest, EveryFailureOfLeavingTheLedgerEndsTheSend) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Fail(L"MailItem.EntryID", kAccessDenied, 1);
    handler->Send();
    outlook->Failures().On(L"MailItem.EntryID", ThrowStandard("lost"), 1);
    handler->Send();
    outlook->Failures().On(L"MailItem.EntryID", ThrowNumber(), 1);
    handler->Send();
    EXPECT_THAT(Errors(),
                ElementsAre(L"MessageHandler::Send: Caught a com exception during RemoveFromInspectedItems or "
                            L"SendWithRDO_() " +
                                ErrorText(kAccessDenied),
                            L"MessageHandler::Send: Caught an exception: during RemoveFromInspectedItems or "
                            L"SendWithRDO_() lost",
                            L"MessageHandler::Send: Caught Unknown error! during RemoveFromInspectedItems or "
                            L"SendWithRDO_()"));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Send"), 0u);
}

TEST_F(MessageHandlerTest, TheModificationTimeIsOutlooks) {
    const auto item = outlook->SavedItem(kMail);
    MessageHandler handler(Outlook::_MailItemPtr(item.GetInterfacePtr()));
    outlook->Failures().Answer(L"MailItem.LastModificationTime", _variant_t(45000.5, VT_DATE));
    log.Clear();
    EXPECT_EQ(handler.GetLastModificationTime(), 45000.5);
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"GetLastModificationTime called for message", L"Returning modification time: 45000.5"));
}

TEST_F(MessageHandlerTest, APlainMailIsExportedWithItsMark) {
    const Export body(*HandlerOf(kMail));
    EXPECT_EQ(body.text, L"The plans of the year.");
    EXPECT_EQ(body.Extension(), L"txt");
    const std::string bytes = test_support::ReadBytes(body.path);
    EXPECT_EQ(bytes.substr(0, 4), std::string("\xFF\xFET\0", 4));
    EXPECT_EQ(bytes.size(), 2 + 2 * body.text.size());
    EXPECT_TRUE(log.Has(L"INFO", L"ExportBody (message) after doing correct GetSafeItem.length=22"));
}

TEST_F(MessageHandlerTest, AnHtmlMailIsExportedWithoutAMarkAndItsTextAsideIt) {
    const std::wstring html = L"<html><body><p>Plans</p></body></html>";
    const auto handler = HandlerOf({.htmlBody = html});
    const Export body(*handler);
    EXPECT_EQ(body.Extension(), L"html");
    EXPECT_NE(body.text.find(L"Plans"), std::wstring::npos);
    EXPECT_EQ(body.text.find(L'<'), std::wstring::npos);
    const std::wstring shown = stand_ins::GetText(handler->GetItemDispatch(), L"HTMLBody");
    const std::string bytes = test_support::ReadBytes(body.path);
    EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(shown.data()), 2 * shown.size()));
    EXPECT_TRUE(
        log.Has(L"DEBUG", L"ExportBody (message) after getting HTMLbody.length=" + std::to_wstring(shown.size())));
}

TEST_F(MessageHandlerTest, AnEmptyHtmlBodyIsAnEmptyFile) {
    const auto handler = HandlerOf({.htmlBody = L"<html></html>"});
    outlook->Failures().Answer(L"MailItem.HTMLBody", _variant_t(L""));
    const Export body(*handler);
    ASSERT_EQ(body.Extension(), L"html");
    EXPECT_EQ(std::filesystem::file_size(body.path), 0u);
}

TEST_F(MessageHandlerTest, WithoutRedemptionAnEmptyBodyIsAnEmptyTextAndTwoErrorLines) {
    const Export body(*HandlerOf({.bodyFormat = 1}));
    EXPECT_EQ(body.text, L"");
    ASSERT_EQ(body.Extension(), L"txt");
    EXPECT_EQ(test_support::ReadBytes(body.path), "\xFF\xFE");
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.SafeMailItem CLSID",
                                      L"Failed to retrieve Redemption SafeItem => exporting an empty text"));
}

TEST_F(MessageHandlerTest, WithoutRedemptionARichTextMailGivesItsTextAndNoFile) {
    const Export body(*HandlerOf({.body = L"Plans", .rtfBody = "{\\rtf1 Plans}", .bodyFormat = 3}));
    EXPECT_EQ(body.text, L"Plans");
    EXPECT_EQ(body.path, L"");
    EXPECT_THAT(Errors(), Contains(L"Failed to retrieve Redemption RDO mail => exporting no rich text"));
}

TEST_F(MessageHandlerTest, AnUnknownFormatGivesItsTextAndNoFile) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Answer(L"MailItem.BodyFormat", _variant_t(0L));
    const Export body(*handler);
    EXPECT_EQ(body.text, L"The plans of the year.");
    EXPECT_EQ(body.path, L"");
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(MessageHandlerTest, AnEmptyBodyTakesItsTextFromRedemptionsViewWhichIsMadeOnce) {
    int made = 0;
    std::vector<ScriptedCall> put;
    const RedemptionClass safeMail(L"Redemption.SafeMailItem", [&] {
        ++made;
        const auto item = ScriptedObject::Create();
        item->Answers(__uuidof(Redemption::ISafeItem))
            .Member(L"Item",
                    [&put](const ScriptedCall& call, VARIANT*, EXCEPINFO*) {
                        put.push_back(call);
                        return S_OK;
                    })
            .Value(L"Body", L"guarded text");
        return item;
    });
    const auto handler = HandlerOf({.bodyFormat = 1});
    EXPECT_EQ(Export(*handler).text, L"guarded text");
    EXPECT_EQ(Export(*handler).text, L"guarded text");
    EXPECT_EQ(made, 1);
    ASSERT_THAT(put, SizeIs(1));
    EXPECT_EQ(put[0].kind, DISPATCH_PROPERTYPUT);
    EXPECT_EQ(put[0].arguments.at(0).pdispVal, handler->GetItemDispatch().GetInterfacePtr());
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(MessageHandlerTest, ARedemptionThatCannotBeMadeIsReported) {
    const RedemptionClass safeMail(L"Redemption.SafeMailItem", [] { return ScriptedObjectPtr(); });
    EXPECT_FALSE(HandlerOf(kMail)->GetSafeItem());
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to create Redemption.SafeMailItem instance"));
}

TEST_F(MessageHandlerTest, ARichTextMailIsExportedByRedemptionWithoutHeaders) {
    RedemptionMail redemption(L"SaveAs");
    const Export body(*HandlerOf({.body = L"Plans", .rtfBody = "{\\rtf1 Plans}", .bodyFormat = 3}));
    EXPECT_EQ(body.Extension(), L"rtf");
    ASSERT_THAT(redemption.calls, SizeIs(1));
    EXPECT_EQ(platform::ToWide(platform::ToText(_variant_t(redemption.calls[0].arguments.at(0)))), body.path);
    EXPECT_EQ(redemption.calls[0].arguments.at(1).vt, VT_INT);
    EXPECT_EQ(redemption.calls[0].arguments.at(1).intVal, 1026);
}

TEST_F(MessageHandlerTest, AHandlerWithoutAMailExportsNothing) {
    MessageHandler handler(Outlook::_MailItemPtr{});
    log.Clear();
    const Export body(handler);
    EXPECT_EQ(body.path, L"");
    EXPECT_THAT(Errors(), Contains(L"(message)Item_ is NULL"));
}

TEST_F(MessageHandlerTest, AFailureOfTheExportPasses) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Fail(L"MailItem.Body", kAccessDenied);
    EXPECT_THROW(Export{*handler}, _com_error);
}

TEST_F(MessageHandlerTest, TheSubjectIsReplacedWhole) {
    const auto handler = LabelledOf(kMail);
    handler->LabelSubject(L"[Secret] Plans");
    EXPECT_EQ(handler->GetSubject(), L"[Secret] Plans");
}

TEST_F(MessageHandlerTest, AnHtmlBodyIsReplacedWhole) {
    const auto handler = LabelledOf({.htmlBody = L"<html><body>old</body></html>"});
    const std::wstring html = L"<html><body>new</body></html>";
    handler->LabelBody(File(L"body.html", std::string(reinterpret_cast<const char*>(html.data()), 2 * html.size())));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.HTMLBody put"), 1u);
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Body put"), 0u);
    EXPECT_EQ(platform::ToWide(platform::ToText(_variant_t(outlook->Calls().All().back().arguments.at(0)))), html);
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Item is an HTML message"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"ExportBody (message) after using message object.length=29"));
}

TEST_F(MessageHandlerTest, ARichTextBodyIsImportedByRedemption) {
    RedemptionMail redemption(L"Import");
    const auto handler = LabelledOf({.body = L"Plans", .rtfBody = "{\\rtf1 Plans}", .bodyFormat = 3});
    handler->LabelBody(L"C:\\label.rtf");
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Item is a rich text message - importing via Redemption"));
    ASSERT_THAT(redemption.calls, SizeIs(1));
    EXPECT_EQ(platform::ToWide(platform::ToText(_variant_t(redemption.calls[0].arguments.at(0)))), L"C:\\label.rtf");
    EXPECT_EQ(redemption.calls[0].arguments.at(1).vt, VT_INT);
    EXPECT_EQ(redemption.calls[0].arguments.at(1).intVal, 1);
}

TEST_F(MessageHandlerTest, WithoutRedemptionLabellingRichTextRaises) {
    const auto handler = LabelledOf({.body = L"Plans", .rtfBody = "{\\rtf1 Plans}", .bodyFormat = 3});
    try {
        handler->LabelBody(L"C:\\label.rtf");
        FAIL() << "Nothing was raised";
    } catch (const _com_error& failure) {
        EXPECT_EQ(failure.Error(), E_POINTER);
    }
}

TEST_F(MessageHandlerTest, ABodyOfUnknownFormatIsLeftAlone) {
    const auto handler = LabelledOf(kMail);
    outlook->Failures().Answer(L"MailItem.BodyFormat", _variant_t(0L));
    handler->LabelBody(L"C:\\nowhere");
    EXPECT_THAT(outlook->Calls().Members(), ElementsAre(L"MailItem.BodyFormat get"));
}

TEST_F(MessageHandlerTest, WithoutAMailNothingIsLabelled) {
    Labelled handler(Outlook::_MailItemPtr{});
    log.Clear();
    handler.LabelBody(L"C:\\nowhere");
    EXPECT_THAT(Errors(), ElementsAre(L"Item_ is NULL not labelling"));
}

TEST_F(MessageHandlerTest, EveryFailureOfReplacingAttachmentsIsReportedAndFalse) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Fail(L"MailItem.Attachments", kAccessDenied, 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    outlook->Failures().On(L"MailItem.Attachments", ThrowStandard("lost"), 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    outlook->Failures().On(L"MailItem.Attachments", ThrowNumber(), 1);
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while replacing attachments: " + ErrorText(kAccessDenied),
                            L"Caught an exception while replacing attachments: lost",
                            L"Caught an exception while replacing attachments - Unknown error."));
}

TEST_F(MessageHandlerTest, ReplacingAttachmentsThatAreNoCollectionIsFalse) {
    const auto handler = HandlerOf(kMail);
    outlook->Failures().Answer(L"MailItem.Attachments", stand_ins::NoObject());
    EXPECT_FALSE(handler->OverrideItemAttachments({}));
    EXPECT_THAT(Errors(), ElementsAre(L"Could not get pointer to current attachments"));
}

TEST_F(MessageHandlerTest, ReplacingAttachmentsIsTrueWhenTheyStand) {
    const auto handler = HandlerOf({.attachments = {{.fileName = L"one.txt", .content = "first"}}});
    EXPECT_TRUE(handler->OverrideItemAttachments({{File(L"a.bin", "A"), L"a.txt"}}));
    EXPECT_TRUE(log.Has(L"INFO", L"Replacing attachments - using Outlook OM"));
}

TEST_F(MessageHandlerTest, OnlyAMailIsAMail) {
    EXPECT_TRUE(MessageHandler::QueryType(outlook->NewMail({}).GetInterfacePtr()));
    EXPECT_FALSE(MessageHandler::QueryType(outlook->NewPost({}).GetInterfacePtr()));
    EXPECT_FALSE(MessageHandler::QueryType({}));
}

} // namespace
} // namespace vorlek
