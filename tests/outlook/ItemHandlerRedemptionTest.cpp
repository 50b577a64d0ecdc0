// The content of an item before Outlook 2007, as it goes to the agent.
#include <regex>

#include "agent/apps/outlook/CommonUtils.h"
#include "tests/outlook/OldOutlookTest.h"

namespace vorlek {
namespace {

using outlook_tests::ContextOf;
using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::OldOutlookTest;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::ItemData;
using stand_ins::RecipientData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr unsigned long kSmtpAddressTag = 0x39FE001F;

const ItemData kMail{.subject = L"RE: Plans",
                     .body = L"The plans of the year.",
                     .account = L"account@a.example",
                     .recipients = {{.name = L"You", .address = L"you@b.example"}},
                     .attachments = {{.fileName = L"plan.txt", .content = "secret"}}};

const ItemData kThreeRecipients{.body = L"text",
                                .recipients = {{.name = L"To", .address = L"to@a.example"},
                                               {.name = L"Cc", .address = L"cc@a.example", .type = 2},
                                               {.name = L"Bcc", .address = L"bcc@a.example", .type = 3}}};

class ItemHandlerRedemptionTest : public OldOutlookTest {
protected:
    CInspectorMessage Fill(const ItemData& data) {
        const auto handler = HandlerOf(data);
        CInspectorMessage message(L"Email");
        handler->FillInspectorMessage(message);
        return message;
    }
    /// The context pairs of the recipients alone.
    std::vector<std::wstring> Recipients(const std::vector<RecipientData>& recipients) {
        return RecipientsIn(Fill({.body = L"text", .recipients = recipients}));
    }
    static std::vector<std::wstring> RecipientsIn(const CInspectorMessage& message) {
        std::vector<std::wstring> pairs;
        for (const std::wstring& pair : ContextOf(message)) {
            const std::wstring key = pair.substr(0, pair.find(L'='));
            if (key.empty() || key == L"EmailTo" || key == L"EmailCc" || key == L"EmailBcc" ||
                key == L"IncidentDestination") {
                pairs.push_back(pair);
            }
        }
        return pairs;
    }
    /// The files of the attachments, as "original name: bytes".
    static std::vector<std::string> FilesIn(const CInspectorMessage& message) {
        const std::wstring text = message.GetFormattedMessage();
        const std::wregex item(L"name=\"DataLocation\" value=\"([^\"]*)\" />.*?"
                               L"<dataEncoding>filePath</dataEncoding><data>([^<]*)</data>");
        std::vector<std::string> files;
        for (std::wsregex_iterator file(text.begin(), text.end(), item), end; file != end; ++file) {
            const std::wstring name = (*file)[1];
            const std::wstring path = (*file)[2];
            EXPECT_TRUE(path.ends_with(L".cip"));
            files.push_back(std::string(name.begin(), name.end()) + ": " + test_support::ReadBytes(path));
        }
        return files;
    }
};

TEST_F(ItemHandlerRedemptionTest, AMessageHoldsSubjectSenderRecipientsAttachmentsBodyAndVersionInThisOrder) {
    const auto message = Fill(kMail);
    const auto context = ContextOf(message);
    ASSERT_THAT(context, SizeIs(7));
    EXPECT_EQ(context[0], L"EmailSubject=RE: Plans");
    EXPECT_EQ(context[1], L"EmailNormalizedSubject=Plans");
    EXPECT_EQ(context[2], L"EmailFrom=anna@example.com"); // the profile's user, whatever the account
    EXPECT_EQ(context[3], L"EmailTo=you@b.example");
    EXPECT_EQ(context[4], L"IncidentDestination=you@b.example");
    EXPECT_THAT(context[5], StartsWith(L"EmailBody="));
    EXPECT_EQ(context[6], L"Application=11");
    EXPECT_THAT(FilesIn(message), ElementsAre("plan.txt: secret"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Item sender is: anna@example.com"));
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(ItemHandlerRedemptionTest, NothingThatOutlookGuardsIsAskedOfOutlook) {
    Fill(kMail);
    for (const wchar_t* guarded :
         {L"MailItem.Body", L"MailItem.HTMLBody", L"MailItem.Recipients", L"MailItem.Attachments",
          L"MailItem.SendUsingAccount", L"MailItem.PropertyAccessor"}) {
        EXPECT_EQ(outlook->Calls().Count(guarded), 0u) << std::string(guarded, guarded + wcslen(guarded));
    }
}

TEST_F(ItemHandlerRedemptionTest, EachKindOfRecipientHasItsKey) {
    const auto message = Fill(kThreeRecipients);
    EXPECT_THAT(RecipientsIn(message), ElementsAre(L"EmailTo=to@a.example", L"IncidentDestination=to@a.example",
                                                   L"EmailCc=cc@a.example", L"IncidentDestination=cc@a.example",
                                                   L"EmailBcc=bcc@a.example", L"IncidentDestination=bcc@a.example"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Item has numOfRecipients=3"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Recipient [2] address=[cc@a.example] recipientContextType=[EmailCc] name=[Cc]"));
}

TEST_F(ItemHandlerRedemptionTest, ARecipientOfAnotherKindStandsUnderAnEmptyKey) {
    EXPECT_THAT(Recipients({{.name = L"Me", .address = L"me@a.example", .type = 0},
                            {.name = L"Room", .address = L"room@a.example", .type = 4}}),
                ElementsAre(L"=me@a.example", L"IncidentDestination=me@a.example", L"=room@a.example",
                            L"IncidentDestination=room@a.example"));
}

TEST_F(ItemHandlerRedemptionTest, EveryoneIsResolvedBeforeAnyoneIsRead) {
    EXPECT_THAT(Recipients({{.name = L"new@a.example", .resolved = false}}),
                ElementsAre(L"EmailTo=new@a.example", L"IncidentDestination=new@a.example"));
    EXPECT_TRUE(outlook->Calls().Before(L"SafeRecipients.ResolveAll", L"SafeRecipients.Count"));
    EXPECT_TRUE(outlook->Calls().Before(L"SafeRecipients.Count", L"SafeRecipients.Item"));
}

TEST_F(ItemHandlerRedemptionTest, AnUnresolvedRecipientIsPassedOver) {
    EXPECT_THAT(Recipients({{.name = L"Nobody", .resolved = false}, {.name = L"You", .address = L"you@b.example"}}),
                ElementsAre(L"EmailTo=you@b.example", L"IncidentDestination=you@b.example"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Recipient is not resolved. Continue to next recipient."));
    EXPECT_EQ(outlook->Calls().Count(L"SafeRecipient.AddressEntry"), 1u);
}

TEST_F(ItemHandlerRedemptionTest, ARecipientWithoutAnAddressEntryIsPassedOver) {
    const auto handler = HandlerOf(kThreeRecipients);
    outlook->Failures().Answer(L"SafeRecipient.AddressEntry", stand_ins::NoObject(), 2);
    CInspectorMessage message(L"Email");
    handler->FillInspectorMessage(message);
    EXPECT_THAT(RecipientsIn(message), SizeIs(4));
    EXPECT_THAT(RecipientsIn(message), Not(Contains(L"EmailCc=cc@a.example")));
    EXPECT_TRUE(log.Has(L"DEBUG", L"No address entry. Might this be a mailing list which we can't currently handle?"));
}

TEST_F(ItemHandlerRedemptionTest, AnExchangeRecipientsAddressIsThatOfHisEntry) {
    EXPECT_THAT(Recipients({{.name = L"Colleague",
                             .address = L"/o=Example/cn=Recipients/cn=colleague",
                             .addressType = L"EX",
                             .properties = {{kSmtpAddressTag, L"colleague@a.example"}}}}),
                ElementsAre(L"EmailTo=colleague@a.example", L"IncidentDestination=colleague@a.example"));
    EXPECT_EQ(outlook->Calls().Count(L"SafeRecipient.Address"), 0u);
}

TEST_F(ItemHandlerRedemptionTest, AnSmtpRecipientsAddressIsHisOwn) {
    EXPECT_THAT(
        Recipients(
            {{.name = L"You", .address = L"you@b.example", .properties = {{kSmtpAddressTag, L"another@b.example"}}}}),
        ElementsAre(L"EmailTo=you@b.example", L"IncidentDestination=you@b.example"));
    EXPECT_EQ(outlook->Calls().Count(L"SafeAddressEntry.SMTPAddress"), 0u);
    EXPECT_THAT(outlook->Calls().Members(), Contains(L"SafeRecipient.Fields"));
}

TEST_F(ItemHandlerRedemptionTest, TheTypeOfAnAddressIsComparedLetterByLetter) {
    EXPECT_THAT(Recipients({{.name = L"You",
                             .address = L"you@b.example",
                             .addressType = L"smtp",
                             .properties = {{kSmtpAddressTag, L"entry@b.example"}}}}),
                ElementsAre(L"EmailTo=entry@b.example", L"IncidentDestination=entry@b.example"));
}

TEST_F(ItemHandlerRedemptionTest, TheTypeOfAnAddressIsAskedForAsAPropertyOfTextByItsTag) {
    Recipients({{.name = L"You", .address = L"you@b.example"}});
    for (const auto& call : outlook->Calls().All()) {
        if (call.member == L"SafeRecipient.Fields") {
            EXPECT_EQ(call.arguments.at(0).vt, VT_I4);
            EXPECT_EQ(call.arguments.at(0).lVal, 0x3002001F);
        }
    }
    EXPECT_EQ(outlook->Calls().Count(L"SafeRecipient.Fields"), 1u);
}

TEST_F(ItemHandlerRedemptionTest, AMailingListWithoutAnSmtpAddressIsPassedOver) {
    EXPECT_THAT(Recipients({{.name = L"Everyone", .address = L"cn=everyone", .addressType = L"MAPIPDL"},
                            {.name = L"Fax", .address = L"555", .addressType = L"FAX"},
                            {.name = L"You", .address = L"you@b.example"}}),
                ElementsAre(L"EmailTo=you@b.example", L"IncidentDestination=you@b.example"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Failed to retrieve smtp address ro recipient #1 [Everyone]. Mailing list?"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Failed to retrieve smtp address ro recipient #2 [Fax]. Mailing list?"));
}

TEST_F(ItemHandlerRedemptionTest, AMailWithoutRecipientsHasNone) {
    EXPECT_THAT(Recipients({}), IsEmpty());
    EXPECT_TRUE(log.Has(L"DEBUG", L"Item has numOfRecipients=0"));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(ItemHandlerRedemptionTest, TheSameRecipientTwiceStandsTwice) {
    EXPECT_THAT(
        Recipients({{.name = L"You", .address = L"you@b.example"}, {.name = L"You", .address = L"you@b.example"}}),
        SizeIs(4));
}

TEST_F(ItemHandlerRedemptionTest, EveryFailureOfARecipientEndsTheListAndKeepsWhatStands) {
    const auto fill = [&] {
        outlook->Calls().Clear();
        return RecipientsIn(Fill(kThreeRecipients));
    };
    const auto first = ElementsAre(L"EmailTo=to@a.example", L"IncidentDestination=to@a.example");
    outlook->Failures().Fail(L"SafeRecipient.Type", kAccessDenied, 2);
    EXPECT_THAT(fill(), first);
    EXPECT_EQ(outlook->Calls().Count(L"SafeRecipients.Item"), 2u);
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while resolving an item recipient: " + ErrorText(kAccessDenied)));
    outlook->Failures().Clear();
    outlook->Failures().On(L"SafeRecipient.Resolved", ThrowStandard("lost"), 2);
    EXPECT_THAT(fill(), first);
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception while resolving an item recipient: lost"));
    outlook->Failures().Clear();
    outlook->Failures().On(L"SafeRecipient.Fields", ThrowNumber(), 2);
    EXPECT_THAT(fill(), first);
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception while resolving an item recipient - Unknown error"));
    outlook->Failures().Clear();
    outlook->Failures().On(L"SafeRecipients.Item", ThrowException(), 2);
    EXPECT_THAT(fill(), first);
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception while resolving an item recipient - Unknown error"));
}

TEST_F(ItemHandlerRedemptionTest, EveryFailureOfTheRecipientsIsReportedAndTheOtherStepsRun) {
    const auto fill = [&] {
        const auto context = ContextOf(Fill(kThreeRecipients));
        EXPECT_THAT(context, SizeIs(5)); // all but recipients
    };
    outlook->Failures().Fail(L"SafeMailItem.Recipients", kAccessDenied);
    fill();
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while resolving item recipients (skipping): " +
                                      ErrorText(kAccessDenied)));
    outlook->Failures().Clear();
    outlook->Failures().On(L"SafeRecipients.ResolveAll", ThrowStandard("lost"));
    fill();
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception while resolving item recipients (skipping): lost"));
    outlook->Failures().Clear();
    outlook->Failures().On(L"SafeRecipients.Count", ThrowNumber());
    fill();
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception while resolving item recipients - Unknown error "
                                      L"(skipping)."));
    outlook->Failures().Clear();
    outlook->Failures().On(L"SafeRecipients.Count", ThrowException());
    fill();
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception while resolving item recipients - Unknown error "
                                      L"(skipping)."));
}

TEST_F(ItemHandlerRedemptionTest, EachAttachmentIsSavedUnderANameOfItsOwn) {
    const std::string bytes("\0\xFF\r\n\x1A", 5);
    const auto message = Fill({.body = L"text",
                               .attachments = {{.fileName = L"one.txt", .content = "first"},
                                               {.fileName = L"one.txt", .content = bytes},
                                               {.fileName = L"none.txt", .content = ""}}});
    EXPECT_THAT(FilesIn(message), ElementsAre("one.txt: first", "one.txt: " + bytes, "none.txt: "));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Item (REDEMPTION) contains 3 attachment"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Total number of attachments: 3"));
}

TEST_F(ItemHandlerRedemptionTest, AnAttachmentsPathAndNameAreLogged) {
    Fill(kMail);
    std::vector<std::wstring> saved;
    for (const std::wstring& line : log.Texts(L"DEBUG")) {
        if (line.starts_with(L"Attachment was saved to: ")) {
            saved.push_back(line);
        }
    }
    ASSERT_THAT(saved, SizeIs(1));
    EXPECT_TRUE(saved[0].ends_with(L".cipOriginal name: plan.txt"));
}

TEST_F(ItemHandlerRedemptionTest, AnAttachmentIsAskedForByANumberOf32Bits) {
    Fill(kMail);
    for (const auto& call : outlook->Calls().All()) {
        if (call.member == L"SafeAttachments.Item") {
            EXPECT_EQ(call.arguments.at(0).vt, VT_I4);
        }
    }
    EXPECT_EQ(outlook->Calls().Count(L"SafeAttachments.Item"), 1u);
    EXPECT_TRUE(outlook->Calls().Before(L"SafeAttachment.FileName", L"SafeAttachment.SaveAsFile"));
}

TEST_F(ItemHandlerRedemptionTest, AMailWithoutAttachmentsHasNoneAndLogsATotalOfZero) {
    EXPECT_THAT(FilesIn(Fill({.body = L"text"})), IsEmpty());
    EXPECT_TRUE(log.Has(L"DEBUG", L"Total number of attachments: 0"));
}

TEST_F(ItemHandlerRedemptionTest, AFailureOfAnAttachmentEndsTheMessage) {
    for (const wchar_t* member : {L"SafeMailItem.Attachments", L"SafeAttachments.Count", L"SafeAttachments.Item",
                                  L"SafeAttachment.FileName", L"SafeAttachment.SaveAsFile"}) {
        const auto handler = HandlerOf(kMail);
        outlook->Failures().Fail(member, kAccessDenied);
        CInspectorMessage message(L"Email");
        EXPECT_THROW(handler->FillInspectorMessage(message), _com_error);
        EXPECT_THAT(ContextOf(message), SizeIs(5)); // no body, no version
        EXPECT_THAT(FilesIn(message), IsEmpty());
        outlook->Failures().Clear();
    }
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(ItemHandlerRedemptionTest, TheAttachmentsBeforeOneThatFailsStand) {
    const auto handler = HandlerOf(
        {.attachments = {{.fileName = L"one.txt", .content = "first"}, {.fileName = L"two.txt", .content = "second"}}});
    outlook->Failures().Fail(L"SafeAttachment.SaveAsFile", kAccessDenied, 2);
    CInspectorMessage message(L"Email");
    EXPECT_THROW(handler->FillInspectorMessage(message), _com_error);
    EXPECT_THAT(FilesIn(message), ElementsAre("one.txt: first"));
    EXPECT_FALSE(log.Has(L"DEBUG", L"Total number of attachments: 2"));
}

TEST_F(ItemHandlerRedemptionTest, EveryFailureOfTheSenderIsReportedAndTheOtherStepsRun) {
    const auto fill = [&] { EXPECT_THAT(ContextOf(Fill(kMail)), SizeIs(6)); };
    outlook->Failures().Fail(L"SafeCurrentUser.SMTPAddress", kAccessDenied);
    fill();
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while resolving item sender (skipping): " +
                                      ErrorText(kAccessDenied)));
    outlook->Failures().Clear();
    outlook->Failures().On(L"SafeCurrentUser.SMTPAddress", ThrowStandard("lost"));
    fill();
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception while resolving item sender (skipping): lost"));
    outlook->Failures().Clear();
    outlook->Failures().On(L"SafeCurrentUser.SMTPAddress", ThrowNumber());
    fill();
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception while resolving item sender - Unknown error (skipping)."));
}

TEST_F(ItemHandlerRedemptionTest, AFailureOfTheNormalizedSubjectSkipsTheRestOfTheSubject) {
    outlook->Failures().Fail(L"RDOMail.Fields", kAccessDenied);
    const auto message = Fill(kMail);
    EXPECT_THAT(ContextOf(message), Contains(L"EmailSubject=RE: Plans"));
    EXPECT_THAT(ContextOf(message), SizeIs(6));
    EXPECT_EQ(message.GetFormattedMessage().find(L"value=\"EmailSubject\""), std::wstring::npos);
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while resolving item subject (skipping): " +
                                      ErrorText(kAccessDenied)));
}

TEST_F(ItemHandlerRedemptionTest, WithoutRedemptionThereAreSubjectTextAndVersionAlone) {
    RemoveRedemption();
    const auto message = Fill(kMail);
    const auto context = ContextOf(message);
    ASSERT_THAT(context, SizeIs(5));
    EXPECT_EQ(context[0], L"EmailSubject=RE: Plans");
    EXPECT_EQ(context[1], L"EmailNormalizedSubject=");
    EXPECT_EQ(context[2], L"EmailFrom=");
    EXPECT_TRUE(context[3].ends_with(L".txt"));
    EXPECT_EQ(test_support::ReadBytes(context[3].substr(10)), "\xFF\xFE");
    EXPECT_EQ(context[4], L"Application=11");
    EXPECT_THAT(FilesIn(message), IsEmpty());
    EXPECT_THAT(
        Errors(),
        ElementsAre(L"Failed to retrieve Redemption.RDOSession CLSID!",
                    L"Failed to retrieve Redemption.RDOSession instance!",
                    L"Failed to retrieve Redemption.SafeCurrentUser CLSID. This means we couldn't get the mail sender "
                    L"- leaving it out of the incident context",
                    L"Failed to retrieve Redemption.SafeMailItem CLSID",
                    L"Failed to retrieve Redemption SafeItem => skipping recipients list",
                    L"Failed to retrieve Redemption.SafeMailItem CLSID",
                    L"Failed to retrieve Redemption SafeItem => skipping preparing attachments for inspection",
                    L"Failed to retrieve Redemption.SafeMailItem CLSID",
                    L"Failed to retrieve Redemption SafeItem => exporting an empty text"));
}

TEST_F(ItemHandlerRedemptionTest, ARedemptionThatMakesNoObjectsIsAsOneThatIsNotThere) {
    for (const wchar_t* made :
         {L"RDOSession.CreateInstance", L"SafeCurrentUser.CreateInstance", L"SafeMailItem.CreateInstance"}) {
        outlook->Failures().Fail(made, E_FAIL);
    }
    EXPECT_THAT(ContextOf(Fill(kMail)), SizeIs(5));
    EXPECT_THAT(Errors(), Contains(L"Failed to create Redemption.RDOSession instance!"));
    EXPECT_THAT(Errors(), Contains(L"Failed to create Redemption.SafeMailItem instance").Times(3));
}

} // namespace
} // namespace vorlek
