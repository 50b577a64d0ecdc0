// What the next start of Outlook does with the items that the last one left in the ledger.
#include "agent/apps/outlook/CommonUtils.h"
#include "foundation/RegistryKey.h"
#include "tests/outlook/AsyncTest.h"

namespace vorlek {
namespace {

using outlook_tests::AsyncTest;
using outlook_tests::ErrorText;
using outlook_tests::Hold;
using outlook_tests::kMail;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::wstring kBegin = L"Sending items that were in the middle of inspection when Outlook was closed.";
const std::wstring kRead =
    L"Checking to see if there are items that should be sent - following Outlook closing during inspection";

class RecoveryTest : public AsyncTest {
protected:
    /// A mail of an earlier run that waits for its inspection.
    std::wstring Waiting(const stand_ins::ItemData& data = kMail) {
        std::wstring id = stand_ins::GetText(outlook->SavedItem(data), L"EntryID");
        CommonUtils::AddToInspectedItems(id, id, nullptr);
        return id;
    }
    void Recover() {
        outlook->Calls().Clear();
        log.Clear();
        controller.HandleIncompleteInspections();
    }
};

TEST_F(RecoveryTest, AnEmptyLedgerLeavesTwoLines) {
    Recover();
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(kBegin, kRead));
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
}

TEST_F(RecoveryTest, AnEmbeddedStartLeavesTheLedgerAlone) {
    peer.SetEmbedded(true);
    const std::wstring id = Waiting();
    Recover();
    EXPECT_THAT(Ledger(), ElementsAre(id));
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(kBegin, L"Outlook is embedded - skipping resending of inspected items"));
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
}

TEST_F(RecoveryTest, WithoutAnExplorerTheItemIsInspectedInsideTheStart) {
    const stand_ins::Agent agent;
    const std::wstring id = Waiting();
    outlook->CloseExplorer();
    Recover();
    EXPECT_EQ(outlook->Delivered().size(), 1u);
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode", L"Inspect"));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_TRUE(log.Has(L"INFO", L"Processing resend of item with Id: " + id));
    EXPECT_TRUE(log.Has(L"INFO", L"Triggering send for the item to be re-inspected"));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(RecoveryTest, WithoutAnExplorerABlockedItemStaysWithItsUserAndOutOfTheLedger) {
    const stand_ins::Agent agent(With(stand_ins::Policy::Block()));
    const std::wstring id = Waiting();
    outlook->CloseExplorer();
    Recover();
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_TRUE(outlook->IsOpen(id));
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(RecoveryTest, WithAnExplorerTheItemGoesBackToTheLedgerAndToAWorker) {
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    const std::wstring id = Waiting();
    Recover();
    EXPECT_THAT(Ledger(), ElementsAre(id));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    hold.Open();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_EQ(outlook->Delivered().size(), 1u);
    EXPECT_THAT(Ledger(), IsEmpty());
}

TEST_F(RecoveryTest, AllWaitingItemsStartAtOnce) {
    Hold hold;
    const stand_ins::Agent agent(hold.Inspections());
    for (int i = 0; i < 10; ++i) {
        Waiting();
    }
    Recover();
    EXPECT_EQ(WorkerThread::Running(), 10);
    hold.Open();
    ASSERT_TRUE(WorkersEnd());
    EXPECT_EQ(outlook->Delivered().size(), 10u);
}

TEST_F(RecoveryTest, AnItemThatIsGoneStaysListedAndTheNextIsProcessed) {
    const stand_ins::Agent agent;
    outlook->CloseExplorer();
    CommonUtils::AddToInspectedItems(L"00000000ABCD", L"00000000ABCD", nullptr); // enumerated first
    Waiting();
    Recover();
    EXPECT_EQ(outlook->Delivered().size(), 1u);
    EXPECT_THAT(Ledger(), ElementsAre(L"00000000ABCD"));
    EXPECT_THAT(Errors(), Contains(StartsWith(L"Failed to find and resend an item: OutlookControllerSearch.cpp(")));
    Recover();
    EXPECT_THAT(Ledger(), ElementsAre(L"00000000ABCD"));
}

TEST_F(RecoveryTest, EachKindOfFailureHasItsWordsAndLeavesTheItemListed) {
    const std::pair<stand_ins::Faults::Action, std::wstring> kinds[] = {
        {ThrowStandard("lost"), L"Failed to find and resend an item: lost"},
        {ThrowNumber(), L"Unknown error occured while trying to find and resend an item."},
    };
    const std::wstring id = Waiting();
    for (const auto& [action, line] : kinds) {
        outlook->Failures().Clear();
        outlook->Failures().On(L"Application.Session", action);
        Recover();
        EXPECT_THAT(Errors(), ElementsAre(line));
        EXPECT_THAT(Ledger(), ElementsAre(id));
    }
    outlook->Failures().Clear();
    outlook->Failures().Fail(L"Application.Session", E_ACCESSDENIED);
    Recover();
    EXPECT_THAT(Errors(),
                ElementsAre(L"COM error while trying to find and resend an item: " + ErrorText(E_ACCESSDENIED)));
    outlook->Failures().Clear();
    outlook->Failures().On(L"Application.Session", ThrowException());
    Recover();
    EXPECT_THAT(Errors(), ElementsAre(StartsWith(L"Failed to find and resend an item: ")));
    EXPECT_THAT(Ledger(), ElementsAre(id));
}

TEST_F(RecoveryTest, AnItemWithoutAHandlerIsAFailureOfOutlooks) {
    Waiting({.kind = stand_ins::ItemKind::Post, .subject = L"Posted"});
    Recover();
    EXPECT_THAT(Errors(), ElementsAre(L"COM error while trying to find and resend an item: " + ErrorText(E_POINTER)));
    EXPECT_EQ(Ledger().size(), 1u);
}

TEST_F(RecoveryTest, BeforeOutlook2007TheItemsAreShownAndLeaveTheLedger) {
    SetVersion(L"11.0.8169");
    const std::wstring first = Waiting();
    const std::wstring second = Waiting();
    CommonUtils::AddToInspectedItems(L"00000000ABCD", L"00000000ABCD", nullptr);
    Recover();
    EXPECT_TRUE(outlook->IsOpen(first));
    EXPECT_TRUE(outlook->IsOpen(second));
    EXPECT_THAT(Ledger(), ElementsAre(L"00000000ABCD"));
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_TRUE(log.Has(L"INFO", L"Outlook 2003 - we display the item that wasn't sent"));
}

TEST_F(RecoveryTest, BeforeOutlook2007AnItemThatCannotBeShownStaysListed) {
    SetVersion(L"11.0.8169");
    const std::wstring id = Waiting();
    outlook->Failures().Fail(L"MailItem.Display", E_FAIL);
    Recover();
    EXPECT_THAT(Ledger(), ElementsAre(id));
}

TEST_F(RecoveryTest, AnItemStoppedTwiceIsListedOnce) {
    stand_ins::Agent agent;
    agent.Misbehave(stand_ins::Misbehaviour::Reset, L"Inspect");
    const std::wstring id = Waiting();
    const auto boxes = BoxesDuring([&] {
        Recover();
        ASSERT_TRUE(WorkersEnd());
    });
    EXPECT_EQ(boxes.size(), 1u);
    EXPECT_THAT(Ledger(), ElementsAre(id));
}

} // namespace
} // namespace vorlek
