#include "stand-ins/agent/Decision.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "stand-ins/agent/Inspection.h"
#include "stand-ins/agent/Message.h"
#include "stand-ins/agent/Policy.h"
#include "stand-ins/agent/Text.h"
#include "tests/stand-ins/agent_client.h"

using namespace stand_ins;
using namespace stand_ins::agent;
using agent_tests::OwnFolder;

TEST(AgentDecision, TheVerdictAloneHasNoModifications) {
    const OwnFolder folder;
    Actions actions;
    EXPECT_EQ(MakeDecision({}, actions, folder.Path()).xml, L"<decision result=\"1\" />");
    actions.block = true;
    actions.subject = L"unused";
    EXPECT_EQ(MakeDecision({}, actions, folder.Path()).xml, L"<decision result=\"2\" />");
}

TEST(AgentDecision, TheSubjectIsMadeFromTheOldOne) {
    const OwnFolder folder;
    Inspection mail;
    mail.subject = L"A & \"B\"";
    Actions actions;
    actions.subject = L"[Secret] {subject}";
    EXPECT_EQ(MakeDecision(mail, actions, folder.Path()).xml,
              L"<decision result=\"1\"><DataModifications><EmailSubject value=\"[Secret] A &amp; &quot;B&quot;\" />"
              L"</DataModifications></decision>");
}

TEST(AgentDecision, TheLabelledBodyIsANewFile) {
    const OwnFolder folder;
    const OwnFolder work;
    Inspection mail;
    mail.bodyFile = folder.Write(L"b.txt", "\xFF\xFE" + ToWire(L"Hi"));
    Actions actions;
    actions.bodyBefore = L"L";
    const Decision decision = MakeDecision(mail, actions, work.Path());
    ASSERT_EQ(decision.files.size(), 1u);
    EXPECT_EQ(decision.xml, L"<decision result=\"1\"><DataModifications><EmailBody path=\"" + decision.files[0] +
                                L"\" /></DataModifications></decision>");
    EXPECT_EQ(ReadWholeFile(decision.files[0]), "\xFF\xFE" + ToWire(L"L\r\n\r\nHi"));
    EXPECT_EQ(ReadWholeFile(mail.bodyFile), "\xFF\xFE" + ToWire(L"Hi"));
    EXPECT_TRUE(decision.files[0].ends_with(L".txt"));
}

TEST(AgentDecision, AnItemWithoutABodyFileStaysUnlabelledAndTheSummarySaysSo) {
    Actions actions;
    actions.bodyBefore = L"L";
    const Decision decision = MakeDecision({}, actions, L"C:\\unused");
    EXPECT_EQ(decision.xml, L"<decision result=\"1\" />");
    EXPECT_EQ(decision.summary, L"allowed with its body unlabelled for want of a body file");
}

TEST(AgentDecision, EveryAttachmentIsListedInItsOrder) {
    const OwnFolder folder;
    const OwnFolder work;
    Inspection mail;
    mail.attachments = {{folder.Write(L"1.cip", "one"), L"photo.png"},
                        {folder.Write(L"2.cip", "two"), L"Price-List.CSV"},
                        {folder.Write(L"3.cip", "three"), L"notes"}};
    Actions actions;
    actions.replacement = Replacement{L"price-list", L"", L"{name} is gone", L"{name}.txt"};
    const Decision decision = MakeDecision(mail, actions, work.Path());
    ASSERT_EQ(decision.files.size(), 3u);
    EXPECT_EQ(decision.xml, L"<decision result=\"1\"><DataModifications><EmailAttachments>"
                            L"<Attachment path=\"" +
                                decision.files[0] +
                                L"\" displayName=\"photo.png\" />"
                                L"<Attachment path=\"" +
                                decision.files[1] +
                                L"\" displayName=\"Price-List.CSV.txt\" />"
                                L"<Attachment path=\"" +
                                decision.files[2] +
                                L"\" displayName=\"notes\" />"
                                L"</EmailAttachments></DataModifications></decision>");
    EXPECT_EQ(ReadWholeFile(decision.files[0]), "one");
    EXPECT_EQ(ReadWholeFile(decision.files[1]), "Price-List.CSV is gone");
    EXPECT_EQ(ReadWholeFile(decision.files[2]), "three");
    EXPECT_LT(decision.files[0], decision.files[1]);
    EXPECT_LT(decision.files[1], decision.files[2]);
    EXPECT_EQ(decision.summary, L"allowed with 1 attachment replaced");
}

TEST(AgentDecision, NothingIsListedWhenNoAttachmentIsReplaced) {
    const OwnFolder folder;
    const OwnFolder work;
    Inspection mail;
    mail.attachments = {{folder.Write(L"1.cip", "one"), L"photo.png"}};
    Actions actions;
    actions.replacement = Replacement{L"price-list", L"", L"gone", L""};
    EXPECT_EQ(MakeDecision(mail, actions, work.Path()).xml, L"<decision result=\"1\" />");
    EXPECT_EQ(work.Count(), 0u);
}

TEST(AgentDecision, AFailureLeavesNoFile) {
    const OwnFolder folder;
    const OwnFolder work;
    Inspection mail;
    mail.attachments = {{folder.Write(L"1.cip", "one"), L"a.csv"}, {folder.Path() + L"\\none.cip", L"b.png"}};
    Actions actions;
    actions.replacement = Replacement{L"a.csv", L"", L"gone", L""};
    EXPECT_THROW(MakeDecision(mail, actions, work.Path()), std::runtime_error);
    EXPECT_EQ(work.Count(), 0u);
}

TEST(AgentDecision, AGivenDecisionGoesBackLetterForLetter) {
    Actions actions;
    actions.decision = L"<no xml";
    actions.block = true;
    EXPECT_EQ(MakeDecision({}, actions, L"C:\\unused").xml, L"<no xml");
}
