#include "agent/apps/outlook/Outlook2007Helper.h"

#include <regex>

#include "agent/apps/outlook/CommonUtils.h"
#include "tests/outlook/OutlookTest.h"
#include "tests/support/ScriptedObject.h"

namespace vorlek {
namespace {

using outlook_tests::ContextOf;
using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::OutlookTest;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::ItemData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const unsigned long kNormalizedSubjectTag = 0x0E1D001F;
const unsigned long kRepresentingTag = 0x0042001F;

class Outlook2007HelperTest : public OutlookTest {
protected:
    IDispatchPtr Mail(const ItemData& data) {
        const IDispatchPtr mail = outlook->NewMail(data).GetInterfacePtr();
        outlook->Calls().Clear();
        log.Clear();
        return mail;
    }
    IDispatchPtr Post() { return outlook->NewPost({.subject = L"Posted"}).GetInterfacePtr(); }

    std::vector<std::wstring> Recipients(const IDispatchPtr& item) {
        CInspectorMessage message(L"Email");
        Outlook2007Helper::FillItemRecipients(item, message, logger);
        return ContextOf(message);
    }
    std::wstring Attachments(const IDispatchPtr& item) {
        CInspectorMessage message(L"Email");
        Outlook2007Helper::FillItemAttachments(item, message, logger);
        return message.GetFormattedMessage();
    }
    /// The paths of the files that a message names.
    static std::vector<std::wstring> Files(const std::wstring& message) {
        std::vector<std::wstring> files;
        const std::wregex data(L"<dataEncoding>filePath</dataEncoding><data>([^<]*)</data>");
        for (std::wsregex_iterator file(message.begin(), message.end(), data), end; file != end; ++file) {
            files.push_back((*file)[1]);
        }
        return files;
    }

    log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger(L"caller");
};

const ItemData kThreeRecipients{.recipients = {{.name = L"To", .address = L"to@a.example"},
                                               {.name = L"Cc", .address = L"cc@a.example", .type = 2},
                                               {.name = L"Bcc", .address = L"bcc@a.example", .type = 3}}};
const ItemData kThreeAttachments{.attachments = {{.fileName = L"one.txt", .content = "first"},
                                                 {.fileName = L"two.txt", .content = "second"},
                                                 {.fileName = L"three.txt", .content = "third"}}};

TEST_F(Outlook2007HelperTest, APropertyIsReadByItsNameWhateverItsType) {
    const auto mail = Mail({.properties = {{0x1000001F, L"text"}}});
    const auto property =
        Outlook2007Helper::GetProperty(mail, L"http://schemas.microsoft.com/mapi/proptag/0x1000001F", logger);
    EXPECT_EQ(platform::ToWide(platform::ToText(_variant_t(property))), L"text");
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Cast to mail item succeeded", L"Successfully acquired property accessor"));
}

TEST_F(Outlook2007HelperTest, APropertyOfNoItemIsEmptyWithAWarning) {
    EXPECT_EQ(Outlook2007Helper::GetProperty({}, L"any", logger).vt, VT_EMPTY);
    EXPECT_EQ(Outlook2007Helper::GetProperty(Post(), L"any", logger).vt, VT_EMPTY);
    EXPECT_THAT(Warnings(), ElementsAre(L"NULL item was passed", L"Failed to get property accessor for item"));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(Outlook2007HelperTest, EveryFailureOfAPropertyIsReportedAndEmpty) {
    const auto mail = Mail({});
    const auto read = [&] { return Outlook2007Helper::GetProperty(mail, L"any", logger).vt; };
    outlook->Failures().Fail(L"PropertyAccessor.GetProperty", kAccessDenied, 1);
    EXPECT_EQ(read(), VT_EMPTY);
    outlook->Failures().On(L"PropertyAccessor.GetProperty", ThrowStandard("lost"), 1);
    EXPECT_EQ(read(), VT_EMPTY);
    outlook->Failures().On(L"PropertyAccessor.GetProperty", ThrowNumber(), 1);
    EXPECT_EQ(read(), VT_EMPTY);
    EXPECT_THAT(Errors(), ElementsAre(L"COM exception while resolving property: " + ErrorText(kAccessDenied),
                                      L"STD exception while resolving property: lost",
                                      L"Unknown error while resolving property."));
}

TEST_F(Outlook2007HelperTest, TheNormalizedSubjectIsThePropertyOfThatTag) {
    const auto mail = Mail({.properties = {{kNormalizedSubjectTag, L"Plans"}}});
    EXPECT_EQ(platform::ToWide(Outlook2007Helper::GetNormalizedSubject(mail, logger)), L"Plans");
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Trying to get normalized subject using 2007 OOM", L"Cast to mail item succeeded",
                            L"Successfully acquired property accessor", L"Normalized Subject = Plans"));
    EXPECT_EQ(outlook->Calls().All().back().ToString(),
              L"PropertyAccessor.GetProperty(\"http://schemas.microsoft.com/mapi/proptag/0x0E1D001F\")");
}

TEST_F(Outlook2007HelperTest, ASubjectThatIsNoTextIsEmptyWithoutAWarning) {
    const auto mail = Mail({});
    outlook->Failures().Answer(L"PropertyAccessor.GetProperty", _variant_t(7L));
    EXPECT_EQ(platform::ToWide(Outlook2007Helper::GetNormalizedSubject(mail, logger)), L"");
    EXPECT_EQ(platform::ToWide(Outlook2007Helper::GetRepresentedSenderName(mail, logger)), L"");
    EXPECT_THAT(Warnings(), IsEmpty());
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(Outlook2007HelperTest, TheRepresentedSenderIsThePropertyOfThatTag) {
    const auto mail = Mail({.properties = {{kRepresentingTag, L"The Board"}}});
    EXPECT_EQ(platform::ToWide(Outlook2007Helper::GetRepresentedSenderName(mail, logger)), L"The Board");
    EXPECT_TRUE(log.Has(L"DEBUG", L"Trying to get sender represented name using 2007 OOM"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Represented Sender Name = The Board"));
    EXPECT_EQ(outlook->Calls().All().back().ToString(),
              L"PropertyAccessor.GetProperty(\"http://schemas.microsoft.com/mapi/proptag/0x0042001F\")");
}

TEST_F(Outlook2007HelperTest, TheSenderIsTheSendingAccountsAddress) {
    const auto mail = Mail({.account = L"me@a.example"});
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(mail, logger), L"me@a.example");
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Trying to get sender using 2007 OOM", L"cast to mail item succeeded"));
}

TEST_F(Outlook2007HelperTest, AnAccountWithoutAnAddressGivesAnEmptySenderAndNoFailure) {
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(Mail({.hasAccount = true}), logger), L"");
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(Outlook2007HelperTest, AMailWithoutASendingAccountHasNoSenderAndNothingElseIsTried) {
    const auto mail = Mail({.fromName = L"Me"});
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(mail, logger), L"");
    EXPECT_THAT(outlook->Calls().Members(), ElementsAre(L"MailItem.SendUsingAccount get"));
}

TEST_F(Outlook2007HelperTest, EveryFailureOfTheSenderIsReportedAndEmpty) {
    const auto mail = Mail({.account = L"me@a.example"});
    outlook->Failures().Fail(L"Account.SmtpAddress", kAccessDenied, 1);
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(mail, logger), L"");
    outlook->Failures().On(L"Account.SmtpAddress", ThrowStandard("lost"), 1);
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(mail, logger), L"");
    outlook->Failures().On(L"Account.SmtpAddress", ThrowException(), 1);
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(mail, logger), L"");
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while resolving item sender (skipping): " +
                                          ErrorText(kAccessDenied),
                                      L"Caught an exception while resolving item sender (skipping): lost",
                                      L"Caught an exception while resolving item sender - Unknown error (skipping)."));
}

TEST_F(Outlook2007HelperTest, AnItemOfNoKindGivesNothingAndAWarningEach) {
    const IDispatchPtr post = Post();
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(post, logger), L"");
    EXPECT_THAT(Recipients(post), IsEmpty());
    EXPECT_THAT(Files(Attachments(post)), IsEmpty());
    EXPECT_THAT(Warnings(),
                ElementsAre(L"Could not get account", L"Could not get recipients", L"Could not get attachments"));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(Outlook2007HelperTest, AnItemThatCannotSayWhatItIsGivesNothingAndAnErrorLineEach) {
    const auto mail = Mail(kThreeRecipients);
    outlook->Failures().Fail(L"MailItem.QueryInterface _MailItem", kAccessDenied);
    EXPECT_EQ(Outlook2007Helper::GetProperty(mail, L"any", logger).vt, VT_EMPTY);
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(mail, logger), L"");
    EXPECT_THAT(Recipients(mail), IsEmpty());
    EXPECT_THAT(Files(Attachments(mail)), IsEmpty());
    const std::wstring denied = ErrorText(kAccessDenied);
    EXPECT_THAT(Errors(), ElementsAre(L"COM exception while resolving property: " + denied,
                                      L"Caught a com exception while resolving item sender (skipping): " + denied,
                                      L"Caught a com exception while resolving item recipients (skipping): " + denied,
                                      L"Caught a com exception while adding attachments (skipping): " + denied));
}

TEST_F(Outlook2007HelperTest, ANullItemGivesNothingAndAWarningEach) {
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP({}, logger), L"");
    EXPECT_THAT(Recipients({}), IsEmpty());
    EXPECT_THAT(Files(Attachments({})), IsEmpty());
    EXPECT_THAT(Warnings(), ElementsAre(L"Null was passed", L"Null was passed", L"Null was passed"));
}

TEST_F(Outlook2007HelperTest, EachRecipientIsAddedUnderItsTypeAndAsADestination) {
    const auto mail = Mail(kThreeRecipients);
    EXPECT_THAT(Recipients(mail), ElementsAre(L"EmailTo=to@a.example", L"IncidentDestination=to@a.example",
                                              L"EmailCc=cc@a.example", L"IncidentDestination=cc@a.example",
                                              L"EmailBcc=bcc@a.example", L"IncidentDestination=bcc@a.example"));
    EXPECT_EQ(outlook->Calls().Count(L"Recipients.ResolveAll"), 1u);
    EXPECT_TRUE(outlook->Calls().Before(L"Recipients.ResolveAll", L"Recipients.Item"));
}

TEST_F(Outlook2007HelperTest, TheStepsOfARecipientAreLogged) {
    Recipients(Mail({.recipients = {{.name = L"To", .address = L"to@a.example"}}}));
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Trying to get recipients using 2007 OOM", L"Trying to get recipients for the mail item",
                            L"cast to mail item succeeded", L"Item has numOfRecipients=1", L"Got recipient 1",
                            L"Got prop accessesor 1", L"Got property", L"Got address to@a.example",
                            L"Recipient [1] address=[to@a.example] recipientContextType=[EmailTo]"));
}

TEST_F(Outlook2007HelperTest, TheAddressOfARecipientIsThePropertyOfThatTag) {
    Recipients(Mail({.recipients = {{.name = L"To", .address = L"to@a.example"}}}));
    std::vector<std::wstring> asked;
    for (const auto& call : outlook->Calls().All()) {
        if (stand_ins::IsMember(call.member, L"PropertyAccessor.GetProperty")) {
            asked.push_back(call.ToString());
        }
    }
    EXPECT_THAT(asked, ElementsAre(L"PropertyAccessor.GetProperty("
                                   L"\"http://schemas.microsoft.com/mapi/proptag/0x39FE001E\")"));
}

TEST_F(Outlook2007HelperTest, RecipientsAreAskedForByLongNumbersFromOne) {
    const auto mail = Mail(kThreeRecipients);
    Recipients(mail);
    std::vector<long> indices;
    for (const auto& call : outlook->Calls().All()) {
        if (stand_ins::IsMember(call.member, L"Recipients.Item")) {
            EXPECT_EQ(call.arguments.at(0).vt, VT_I4);
            indices.push_back(call.arguments.at(0).lVal);
        }
    }
    EXPECT_THAT(indices, ElementsAre(1, 2, 3));
}

TEST_F(Outlook2007HelperTest, ARecipientThatIsNotResolvedIsSkipped) {
    const auto mail = Mail(kThreeRecipients);
    outlook->Failures().Answer(L"Recipient.Resolved", _variant_t(false), 1);
    EXPECT_THAT(Recipients(mail), SizeIs(4));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Recipient is not resolved. Continue to next recipient."));
    EXPECT_FALSE(log.Has(L"DEBUG", L"Got recipient 1"));
}

TEST_F(Outlook2007HelperTest, ARecipientWithoutAnSmtpAddressIsSkipped) {
    const auto mail = Mail(kThreeRecipients);
    outlook->Failures().Answer(L"PropertyAccessor.GetProperty", _variant_t(L""), 2);
    EXPECT_THAT(Recipients(mail), ElementsAre(L"EmailTo=to@a.example", L"IncidentDestination=to@a.example",
                                              L"EmailBcc=bcc@a.example", L"IncidentDestination=bcc@a.example"));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Failed to retrieve SMTP address to recipient #2 - skipping it"));
}

TEST_F(Outlook2007HelperTest, ARecipientOfUnknownTypeIsSkippedAfterItsAddressWasRead) {
    const auto mail = Mail({.recipients = {{.name = L"Me", .address = L"me@a.example", .type = 0},
                                           {.name = L"Room", .address = L"room@a.example", .type = 4}}});
    EXPECT_THAT(Recipients(mail), IsEmpty());
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Got address me@a.example"));
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Invalid type to recipient #1 - skipping it"));
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Invalid type to recipient #2 - skipping it"));
}

TEST_F(Outlook2007HelperTest, TwoRecipientsWithOneAddressAreBothAdded) {
    const auto mail =
        Mail({.recipients = {{.name = L"A", .address = L"a@a.example"}, {.name = L"B", .address = L"a@a.example"}}});
    EXPECT_THAT(Recipients(mail), ElementsAre(L"EmailTo=a@a.example", L"IncidentDestination=a@a.example",
                                              L"EmailTo=a@a.example", L"IncidentDestination=a@a.example"));
}

TEST_F(Outlook2007HelperTest, EveryFailureOfARecipientSkipsThatOneOnly) {
    const auto mail = Mail(kThreeRecipients);
    outlook->Failures().Fail(L"PropertyAccessor.GetProperty", kAccessDenied, 2);
    EXPECT_THAT(Recipients(mail), SizeIs(4));
    outlook->Failures().Clear();
    outlook->Failures().On(L"PropertyAccessor.GetProperty", ThrowStandard("lost"), 1);
    EXPECT_THAT(Recipients(mail), SizeIs(4));
    outlook->Failures().Clear();
    outlook->Failures().On(L"PropertyAccessor.GetProperty", ThrowNumber(), 3);
    EXPECT_THAT(Recipients(mail), SizeIs(4));
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while resolving item recipient #2 - (skipping): " +
                                          ErrorText(kAccessDenied),
                                      L"Caught an exception while resolving item recipient #1 - (skipping): lost",
                                      L"Caught an exception while resolving item recipient #3 - (skipping): "));
}

TEST_F(Outlook2007HelperTest, EveryFailureAroundTheRecipientsSkipsThemAll) {
    const auto mail = Mail(kThreeRecipients);
    outlook->Failures().Fail(L"Recipients.ResolveAll", kAccessDenied, 1);
    EXPECT_THAT(Recipients(mail), IsEmpty());
    outlook->Failures().On(L"Recipients.ResolveAll", ThrowStandard("lost"), 1);
    EXPECT_THAT(Recipients(mail), IsEmpty());
    outlook->Failures().On(L"Recipients.ResolveAll", ThrowException(), 1);
    EXPECT_THAT(Recipients(mail), IsEmpty());
    EXPECT_THAT(
        Errors(),
        ElementsAre(L"Caught a com exception while resolving item recipients (skipping): " + ErrorText(kAccessDenied),
                    L"Caught an exception while resolving item recipients (skipping): lost",
                    L"Caught an exception while resolving item recipients - Unknown error (skipping)."));
}

TEST_F(Outlook2007HelperTest, EachAttachmentIsSavedToAFileAndNamedAsTheUserSeesIt) {
    const std::wstring message = Attachments(Mail(kThreeAttachments));
    const auto files = Files(message);
    ASSERT_THAT(files, SizeIs(3));
    EXPECT_EQ(test_support::ReadBytes(files[0]), "first");
    EXPECT_EQ(test_support::ReadBytes(files[1]), "second");
    EXPECT_EQ(test_support::ReadBytes(files[2]), "third");
    EXPECT_EQ(files[0].substr(files[0].size() - 5), L"}.cip");
    EXPECT_NE(message.find(L"<dataItem><contextItem name=\"DataLocation\" value=\"two.txt\" />"
                           L"<dataEncoding>filePath</dataEncoding><data>" +
                           files[1] + L"</data></dataItem>"),
              std::wstring::npos);
}

TEST_F(Outlook2007HelperTest, TheStepsOfAnAttachmentAreLogged) {
    const auto files = Files(Attachments(Mail({.attachments = {{.fileName = L"one.txt", .content = "first"}}})));
    ASSERT_THAT(files, SizeIs(1));
    const std::wstring directory = CommonUtils::GetDirectory(files[0]);
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Trying to get attachments using 2007 OOM", L"Trying to get attachments for the mail item",
                            L"cast to mail item succeeded", L"Item has numOfAttachments=1",
                            L"Filled total number of attachments: 1"));
    EXPECT_THAT(log.Texts(L"INFO"), Contains(L"Attachment is saved to: " + directory + L" Original path: " + files[0]));
    EXPECT_THAT(log.Texts(L"INFO"), Contains(L"Attachment is saved realpath- " + directory + L" exits.  Not creating"));
    EXPECT_THAT(log.Texts(L"INFO"), Contains(L"Attachment was saved to: " + files[0] + L"Original name: one.txt"));
}

TEST_F(Outlook2007HelperTest, ATemporaryFolderThatWentAwayIsMadeAgain) {
    const std::wstring directory = CommonUtils::GetDirectory(CommonUtils::MakeTemporaryPath(L"cip"));
    std::filesystem::remove_all(directory);
    const auto files = Files(Attachments(Mail({.attachments = {{.fileName = L"one.txt", .content = "first"}}})));
    ASSERT_THAT(files, SizeIs(1));
    EXPECT_EQ(test_support::ReadBytes(files[0]), "first");
    EXPECT_THAT(log.Texts(L"INFO"), Contains(L"Attachment is saved path one.txt, realpath=" + directory +
                                             L" does not exist. creating directory"));
}

TEST_F(Outlook2007HelperTest, AnItemWithoutAttachmentsAddsNothing) {
    EXPECT_THAT(Files(Attachments(Mail({}))), IsEmpty());
    EXPECT_TRUE(log.Has(L"DEBUG", L"Filled total number of attachments: 0"));
}

TEST_F(Outlook2007HelperTest, AnAttachmentThatCannotBeSavedIsSkippedAndStillCounted) {
    const auto mail = Mail(kThreeAttachments);
    outlook->Failures().Fail(L"Attachment.SaveAsFile", kAccessDenied, 2);
    const auto files = Files(Attachments(mail));
    ASSERT_THAT(files, SizeIs(2));
    EXPECT_EQ(test_support::ReadBytes(files[0]), "first");
    EXPECT_EQ(test_support::ReadBytes(files[1]), "third");
    EXPECT_TRUE(log.Has(L"DEBUG", L"Filled total number of attachments: 3"));
}

TEST_F(Outlook2007HelperTest, EveryFailureOfAnAttachmentSkipsThatOneOnly) {
    const auto mail = Mail(kThreeAttachments);
    outlook->Failures().Fail(L"Attachment.SaveAsFile", kAccessDenied, 2);
    EXPECT_THAT(Files(Attachments(mail)), SizeIs(2));
    outlook->Failures().Clear();
    outlook->Failures().On(L"Attachment.SaveAsFile", ThrowStandard("lost"), 1);
    EXPECT_THAT(Files(Attachments(mail)), SizeIs(2));
    outlook->Failures().Clear();
    outlook->Failures().On(L"Attachment.SaveAsFile", ThrowException(), 3);
    EXPECT_THAT(Files(Attachments(mail)), SizeIs(2));
    EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while adding attachment #2 - (skipping): " +
                                          ErrorText(kAccessDenied),
                                      L"Caught an exception while adding attachment #1 - (skipping): lost",
                                      L"Caught an exception while adding attachment #3 - (skipping): "));
}

TEST_F(Outlook2007HelperTest, EveryFailureAroundTheAttachmentsSkipsThemAll) {
    const auto mail = Mail(kThreeAttachments);
    outlook->Failures().Fail(L"Attachments.Count", kAccessDenied, 1);
    EXPECT_THAT(Files(Attachments(mail)), IsEmpty());
    outlook->Failures().On(L"Attachments.Count", ThrowStandard("lost"), 1);
    EXPECT_THAT(Files(Attachments(mail)), IsEmpty());
    outlook->Failures().On(L"Attachments.Count", ThrowNumber(), 1);
    EXPECT_THAT(Files(Attachments(mail)), IsEmpty());
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while adding attachments (skipping): " + ErrorText(kAccessDenied),
                            L"Caught an exception while adding attachments (skipping): lost",
                            L"Caught an exception while adding attachments - Unknown error (skipping)."));
}

/// A meeting item or task request with one member that leads to what it is about.
test_support::ScriptedObjectPtr Related(const IID& kind, const wchar_t* member, const _variant_t& related,
                                        std::vector<_variant_t>& asked) {
    auto item = test_support::ScriptedObject::Create();
    item->Answers(kind).Member(member,
                               [related, &asked](const test_support::ScriptedCall& call, VARIANT* result, EXCEPINFO*) {
                                   asked = call.arguments;
                                   return VariantCopy(result, const_cast<_variant_t*>(&related));
                               });
    return item;
}

/// The sender of an item whose related one, which is asked for with false, is sent through an account.
std::wstring SenderThrough(const IID& kind, const wchar_t* member, const IID& relatedKind,
                           const log4cxx::LoggerPtr& logger) {
    const auto account = test_support::ScriptedObject::Create();
    account->Answers(__uuidof(Outlook::_Account)).Value(L"SmtpAddress", L"host@a.example");
    const auto related = test_support::ScriptedObject::Create();
    related->Answers(relatedKind).Value(L"SendUsingAccount", static_cast<IDispatch*>(account.GetInterfacePtr()));
    std::vector<_variant_t> asked;
    const auto item = Related(kind, member, static_cast<IDispatch*>(related.GetInterfacePtr()), asked);
    std::wstring sender = Outlook2007Helper::GetItemSenderSMTP(static_cast<IDispatch*>(item.GetInterfacePtr()), logger);
    EXPECT_THAT(asked, SizeIs(1));
    EXPECT_EQ(asked.at(0).vt, VT_BOOL);
    EXPECT_EQ(asked.at(0).boolVal, VARIANT_FALSE);
    return sender;
}

TEST_F(Outlook2007HelperTest, TheSenderOfAMeetingIsThatOfItsAppointmentAndLookingAddsNoneToTheCalendar) {
    EXPECT_EQ(SenderThrough(__uuidof(Outlook::_MeetingItem), L"GetAssociatedAppointment",
                            __uuidof(Outlook::_AppointmentItem), logger),
              L"host@a.example");
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Trying to get sender using 2007 OOM",
                                                 L"cast to meeting item succeeded - getting related appointment",
                                                 L"acquired related appointment"));
}

TEST_F(Outlook2007HelperTest, TheSenderOfATaskRequestIsThatOfItsTaskAndLookingAddsNoneToTheTaskList) {
    EXPECT_EQ(
        SenderThrough(__uuidof(Outlook::_TaskRequestItem), L"GetAssociatedTask", __uuidof(Outlook::_TaskItem), logger),
        L"host@a.example");
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Trying to get sender using 2007 OOM",
                                                 L"cast to task request item succeeded - getting related task item",
                                                 L"acquired related task item"));
}

TEST_F(Outlook2007HelperTest, AMeetingOrTaskRequestThatLeadsNowhereHasNoSender) {
    std::vector<_variant_t> asked;
    const auto meeting =
        Related(__uuidof(Outlook::_MeetingItem), L"GetAssociatedAppointment", stand_ins::NoObject(), asked);
    const auto request =
        Related(__uuidof(Outlook::_TaskRequestItem), L"GetAssociatedTask", stand_ins::NoObject(), asked);
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(static_cast<IDispatch*>(meeting.GetInterfacePtr()), logger), L"");
    EXPECT_EQ(Outlook2007Helper::GetItemSenderSMTP(static_cast<IDispatch*>(request.GetInterfacePtr()), logger), L"");
    EXPECT_THAT(Warnings(), ElementsAre(L"Could not get associated appointment", L"Could not get associated task"));
}

TEST_F(Outlook2007HelperTest, WhatKindOfItemIsReadIsLogged) {
    const IDispatchPtr meeting = outlook->NewItem({.kind = stand_ins::ItemKind::Meeting}).GetInterfacePtr();
    log.Clear();
    Recipients(meeting);
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"cast to meeting item succeeded").Times(1));
    Attachments(meeting);
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"cast to meeting item succeeded").Times(2));
    Outlook2007Helper::GetNormalizedSubject(meeting, logger);
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Cast to meeting item succeeded"));
    const IDispatchPtr request = outlook->NewItem({.kind = stand_ins::ItemKind::TaskRequest}).GetInterfacePtr();
    Attachments(request);
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"cast to task request item succeeded."));
    Outlook2007Helper::GetNormalizedSubject(request, logger);
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Cast to task request item succeeded"));
}

TEST_F(Outlook2007HelperTest, ATaskRequestHasRecipientsOnlyIfItAnswersForATaskToo) {
    const Outlook::_MailItemPtr mail = Mail(kThreeRecipients);
    const auto request = test_support::ScriptedObject::Create();
    request->Answers(__uuidof(Outlook::_TaskRequestItem))
        .Value(L"Recipients", static_cast<IDispatch*>(mail->GetRecipients().GetInterfacePtr()));
    EXPECT_THAT(Recipients(static_cast<IDispatch*>(request.GetInterfacePtr())), IsEmpty());
    EXPECT_THAT(Warnings(), ElementsAre(L"Could not get recipients"));
    request->Answers(__uuidof(Outlook::_TaskItem));
    EXPECT_THAT(Recipients(static_cast<IDispatch*>(request.GetInterfacePtr())), SizeIs(6));
    EXPECT_TRUE(log.Has(L"DEBUG", L"cast to task item succeeded"));
}

} // namespace
} // namespace vorlek
