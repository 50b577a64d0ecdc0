// Mails on Outlook 2003, with Redemption on the machine and without, and what later versions do with it.
#include <gmock/gmock.h>

#include "tests/end-to-end/Desk.h"

namespace end_to_end {
namespace {

using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const Json kAllow = Json::object();
const Json kBlock = {{"rules", {{{"name", "all"}, {"then", {{"block", true}}}}}}};
const Json kChange = {{"rules",
                       {{{"name", "all"},
                         {"then",
                          {{"subject", "[Secret] {subject}"},
                           {"body", {{"before", "This is secret."}}},
                           {"replaceAttachments", {{"text", "Removed."}, {"displayName", "notice.txt"}}}}}}}}};
const Json kLabelSubject = {{"rules", {{{"name", "all"}, {"then", {{"subject", "[Secret] {subject}"}}}}}}};

constexpr const char* kSentByRedemption = "DEBUG Successfully sent item using RDO object module!";

/// One format of a mail, and the field that holds its body.
struct Format {
    const char* name;
    Json fields;
    const char* body;
};

void PrintTo(const Format& format, std::ostream* stream) {
    *stream << format.name;
}

const Format kFormats[] = {
    {"Plain", {{"body", "Plans for Tuesday."}}, "body"},
    {"Html",
     {{"body", ""}, {"htmlBody", "<html><body><p>Plans for Tuesday.</p></body></html>"}, {"bodyFormat", 2}},
     "htmlBody"},
    // {\rtf1\ansi Plans for Tuesday.}
    {"Rich",
     {{"body", "Plans for Tuesday."}, {"rtfBody", "e1xydGYxXGFuc2kgUGxhbnMgZm9yIFR1ZXNkYXkufQ=="}, {"bodyFormat", 3}},
     "rtfBody"}};

/// A desk with Outlook 2003 and Redemption.
class OldOutlook : public Desk {
protected:
    OldOutlook() { Register(REDEMPTION_MODULE); }
    ~OldOutlook() override { Unregister(REDEMPTION_MODULE); }

    static std::vector<std::wstring> Old(std::vector<std::wstring> options = {}) {
        options.insert(options.begin(), {L"--version", L"11.0.8169.0"});
        return options;
    }
    std::filesystem::path Mail(const Format& format) {
        Json fields = format.fields;
        fields["attachments"] = {{{"fileName", "salaries.csv"}, {"content", "MSwyLDM="}}};
        return Item(fields);
    }
    void ExpectSent() {
        EXPECT_THAT(Delivered(), SizeIs(1));
        EXPECT_THAT(ItemsIn("Sent Items"), SizeIs(1));
        EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
        EXPECT_THAT(Ledger(), IsEmpty());
    }
    void ExpectChanged(const Format& format) {
        ASSERT_THAT(Delivered(), SizeIs(1));
        const Json mail = Delivered().at(0);
        EXPECT_EQ(mail["subject"], "[Secret] Plans");
        EXPECT_THAT(BodyOf(mail, format), HasSubstr("This is secret."));
        EXPECT_THAT(BodyOf(mail, format), HasSubstr("Plans for Tuesday."));
        ASSERT_THAT(mail["attachments"], SizeIs(1));
        EXPECT_EQ(mail["attachments"].at(0)["displayName"], "notice.txt");
        EXPECT_EQ(mail["attachments"].at(0)["content"], "UmVtb3ZlZC4=");
    }
    std::vector<std::string> Errors() const {
        std::vector<std::string> errors;
        for (const std::string& line : Log()) {
            if (line.starts_with("ERROR ")) {
                errors.push_back(line);
            }
        }
        return errors;
    }

private:
    /// A body as its reader sees it.
    static std::string BodyOf(const Json& mail, const Format& format) {
        return format.body == std::string("rtfBody") ? mail["body"] : mail[format.body];
    }
};

class OldOutlookFormats : public OldOutlook, public testing::WithParamInterface<Format> {};

INSTANTIATE_TEST_SUITE_P(Each, OldOutlookFormats, testing::ValuesIn(kFormats),
                         [](const auto& format) { return std::string(format.param.name); });

TEST_P(OldOutlookFormats, MailIsShownWholeToTheAgentAndChangedInsideTheEvent) {
    StartAgent(kChange);
    Send({Mail(GetParam())}, Old({L"-Embedding"}));
    ExpectSent();
    ExpectChanged(GetParam());
    ASSERT_THAT(Documents(), SizeIs(1));
    const std::string document = Documents().at(0);
    EXPECT_THAT(document, HasSubstr("Plans for Tuesday."));
    EXPECT_THAT(document, HasSubstr("name=\"EmailTo\" value=\"ben@example.com\""));
    EXPECT_THAT(document, HasSubstr("name=\"EmailFrom\" value=\"anna@example.com\""));
    EXPECT_THAT(document, HasSubstr("name=\"DataLocation\" value=\"salaries.csv\""));
    EXPECT_THAT(document, HasSubstr("name=\"Application\" value=\"11\""));
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_THAT(Log(), Not(Contains(kSentByRedemption))); // Outlook goes on with its own send
}

TEST_P(OldOutlookFormats, MailIsChangedAndSentByRedemptionBesideTheEvent) {
    StartAgent(kChange);
    const OutlookRun run = Send({Mail(GetParam())}, Old());
    EXPECT_THAT(run.output, HasSubstr("sent by the add-in"));
    ExpectSent();
    ExpectChanged(GetParam());
    EXPECT_THAT(Log(), Contains(kSentByRedemption));
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_EQ(run.boxes, 0);
}

TEST_P(OldOutlookFormats, MailThatRedemptionDoesNotSendIsSentByOutlookOnce) {
    StartAgent(kChange);
    Send({Mail(GetParam())}, Old({L"--fail", L"RDOMail.Send=0x80040119"}));
    ExpectSent();
    ExpectChanged(GetParam());
    EXPECT_THAT(Documents(), SizeIs(1));
    EXPECT_THAT(Errors(), Each(StartsWith("ERROR MessageHandler::SendWithRDO_: Caught a com exception during Send: ")));
    EXPECT_THAT(Errors(), SizeIs(1));
}

TEST_P(OldOutlookFormats, BlockedMailStaysWithItsUserOnBothRoads) {
    StartAgent(kBlock);
    const OutlookRun inside = Send({Mail(GetParam())}, Old({L"-Embedding"}));
    EXPECT_THAT(inside.output, HasSubstr("stopped by the add-in: saved in Drafts, its window is open"));
    const OutlookRun beside = Send({Mail(GetParam())}, Old());
    EXPECT_THAT(beside.output, HasSubstr("stopped by the add-in: brought back to the screen"));
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(2));
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_P(OldOutlookFormats, WithoutRedemptionMailIsLabelledInItsSubjectAloneAndSentByOutlook) {
    Unregister(REDEMPTION_MODULE);
    StartAgent(kLabelSubject);
    Send({Mail(GetParam())}, Old({L"-Embedding"}));
    Send({Mail(GetParam())}, Old());
    EXPECT_THAT(ItemsIn("Drafts"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    ASSERT_THAT(Delivered(), SizeIs(2));
    for (const Json& mail : Delivered()) {
        EXPECT_EQ(mail["subject"], "[Secret] Plans");
        EXPECT_EQ(mail["attachments"].at(0)["content"], "MSwyLDM=");
    }
    ASSERT_THAT(Documents(), SizeIs(2));
    EXPECT_THAT(Documents(), Each(Not(HasSubstr("salaries.csv"))));
    EXPECT_THAT(Documents(), Each(Not(HasSubstr("ben@example.com"))));
    EXPECT_THAT(Errors(),
                Contains("ERROR Failed to retrieve Redemption SafeItem => skipping recipients list").Times(2));
    EXPECT_THAT(Log(), Not(Contains(kSentByRedemption)));
}

TEST_P(OldOutlookFormats, WithoutRedemptionBlockedMailIsBlocked) {
    Unregister(REDEMPTION_MODULE);
    StartAgent(kBlock);
    const OutlookRun run = Send({Mail(GetParam())}, Old());
    EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: brought back to the screen"));
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(OldOutlook, MailWrittenInWordLeavesTheScreenAndIsSent) {
    StartAgent(kAllow);
    Send({Mail(kFormats[0])}, Old({L"--editor", L"word"}));
    ExpectSent();
    EXPECT_THAT(Log(), Contains("INFO Posting close to WordMail"));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(OldOutlook, BlockedMailWrittenInWordComesBackToTheScreen) {
    StartAgent(kBlock);
    const OutlookRun run = Send({Mail(kFormats[0])}, Old({L"--editor", L"word"}));
    EXPECT_THAT(run.output, HasSubstr("stopped by the add-in: brought back to the screen"));
    EXPECT_THAT(Log(), Contains("INFO Posting close to WordMail"));
}

TEST_F(OldOutlook, MailInAWordWindowThatIsNotFoundIsClosedAndSent) {
    StartAgent(kAllow);
    Send({Mail(kFormats[0])}, Old({L"--editor", L"renamed-word"}));
    ExpectSent();
    EXPECT_THAT(Log(),
                Contains("WARN Item is using WordMail, but we failed to locate the WordMail window and close it. "
                         "Attempting to close it directly."));
}

TEST_F(OldOutlook, MailInterruptedByTheLossOfTheAgentIsShownAtTheNextStartAndNotSent) {
    StartAgent(kAllow, {L"--misbehave", L"die:Inspect"});
    Open({Mail(kFormats[0])}, Old());
    EXPECT_TRUE(AwaitBox());
    Close();
    EXPECT_THAT(Ledger(), SizeIs(1));
    StopAgent();
    StartAgent(kAllow);
    const auto record = folder_ / "calls.txt";
    Send({}, Old({L"--record", record.wstring()}));
    EXPECT_THAT(test_support::ReadAll(record), HasSubstr("MailItem.Display(0)"));
    EXPECT_THAT(Log(), Contains("INFO Outlook 2003 - we display the item that wasn't sent"));
    EXPECT_THAT(Delivered(), IsEmpty());
    EXPECT_THAT(ItemsIn("Drafts"), SizeIs(1));
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(OldOutlook, Outlook16TakesRichTextFromRedemptionAndGivesItBack) {
    StartAgent(kChange);
    Send({Mail(kFormats[2])});
    ExpectSent();
    ExpectChanged(kFormats[2]);
    EXPECT_THAT(Documents().at(0), HasSubstr("name=\"Application\" value=\"16\""));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(OldOutlook, Outlook16AsksRedemptionForABodyThatIsEmptyAndSendsTheMailItself) {
    StartAgent(kAllow);
    const auto record = folder_ / "calls.txt";
    Send({Item({{"body", ""}})}, {L"--record", record.wstring()});
    ExpectSent();
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_THAT(test_support::ReadAll(record), HasSubstr("SafeMailItem.Body get"));
    EXPECT_THAT(Log(), Not(Contains(kSentByRedemption)));
}

TEST_F(OldOutlook, UnregisteringTakesEveryClassOutOfTheRegistry) {
    const auto known = [](const wchar_t* progId) {
        CLSID id;
        return SUCCEEDED(CLSIDFromProgID(progId, &id));
    };
    constexpr const wchar_t* classes[] = {L"Redemption.RDOSession", L"Redemption.SafeMailItem",
                                          L"Redemption.SafeMeetingItem", L"Redemption.SafeTaskItem",
                                          L"Redemption.SafeCurrentUser"};
    EXPECT_TRUE(std::ranges::all_of(classes, known));
    Unregister(REDEMPTION_MODULE);
    EXPECT_TRUE(std::ranges::none_of(classes, known));
}

} // namespace
} // namespace end_to_end
