// Where the controller looks for an item of which it has the ID alone.
#include "tests/outlook/OutlookControllerTest.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/Threads.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::kMail;
using outlook_tests::OutlookControllerTest;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr HRESULT kNotFound = static_cast<HRESULT>(0x8004010F);

const std::wstring kNotInDrafts = L"Could not locate the requested item in the Drafts folder - searching in OUTBOX";
const std::wstring kSearchAll = L"Could not Locate the requested item in the Outbox folder - search all";
const std::wstring kDraftsFailed = L"Caught a com exception when searching in Drafts: ";
const std::wstring kOutboxFailed = L"Caught a com exception when searching in Outbox: ";

class ItemSearchTest : public OutlookControllerTest {
protected:
    ItemSearchTest() {
        controller.InitApplication(App());
        outlook->AddStore(L"Archive", {L"2024", L"2025"});
        outlook->AddStore(L"Bare", {});
    }

    /// The ID of a mail saved in a folder; what happened so far is forgotten.
    std::wstring SavedIn(const std::wstring& folder) {
        std::wstring id = stand_ins::GetText(outlook->SavedItem(kMail, folder), L"EntryID");
        outlook->Calls().Clear();
        log.Clear();
        return id;
    }
    std::wstring Deleted() {
        const auto mail = outlook->SavedItem(kMail);
        std::wstring id = stand_ins::GetText(mail, L"EntryID");
        stand_ins::Invoke(mail, L"Delete");
        outlook->Calls().Clear();
        log.Clear();
        return id;
    }
    /// The store IDs that were tried, in order.
    std::vector<std::wstring> Tried() const {
        std::vector<std::wstring> ids;
        for (const auto& call : outlook->Calls().All()) {
            if (call.member == L"NameSpace.GetItemFromID") {
                ids.emplace_back(static_cast<const wchar_t*>(_bstr_t(call.arguments.at(1))));
            }
        }
        return ids;
    }
    std::wstring StoreId(const std::wstring& store) {
        const auto stores = stand_ins::GetObject(stand_ins::GetObject(outlook->Application(), L"Session"), L"Folders");
        return stand_ins::GetText(stand_ins::GetObject(stores, L"Item", {store.c_str()}), L"StoreID");
    }
    static std::wstring About(const std::wstring& id, const std::wstring& store) {
        return L".itemUniqueID.c_str()=." + id + L". storeID.c_str()=." + store + L".";
    }
    void ExpectNowhere(const std::wstring& id) {
        test_support::ExpectFailure<Exception>([&] { peer.FindItem(id); }, L"vorlek::OutlookController::FindItem_",
                                               L"Failed to find item " + id + L" in any folder.");
    }
};

TEST_F(ItemSearchTest, AnEmptyIdIsNoItemAndNoFailure) {
    outlook->Calls().Clear();
    EXPECT_EQ(peer.FindItem(L""), nullptr);
    EXPECT_THAT(Warnings(), ElementsAre(L"Passed item unique ID is empty."));
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
}

TEST_F(ItemSearchTest, WithoutAnApplicationThereIsNoItem) {
    peer.SetApplication({});
    EXPECT_EQ(peer.FindItem(L"ID-1"), nullptr);
    EXPECT_THAT(Warnings(), ElementsAre(L"Outlook application pointer is NULL. Cannot locate item ID-1"));
}

TEST_F(ItemSearchTest, WithoutASessionThereIsNoItem) {
    outlook->Failures().Answer(L"Application.Session", stand_ins::NoObject());
    EXPECT_EQ(peer.FindItem(L"ID-1"), nullptr);
    EXPECT_THAT(Warnings(), ElementsAre(L"Could not retrieve Outlook's session pointer for item ID-1"));
}

TEST_F(ItemSearchTest, AFailureToGetTheSessionRaises) {
    outlook->Failures().Fail(L"Application.Session", E_FAIL);
    EXPECT_THROW(peer.FindItem(L"ID-1"), _com_error);
}

TEST_F(ItemSearchTest, AnItemOfTheDefaultStoreIsLookedForTwiceAndNoFurther) {
    const std::wstring id = SavedIn(L"Drafts");
    const auto handler = peer.FindItem(id);
    ASSERT_NE(handler, nullptr);
    EXPECT_EQ(handler->GetItemUniqueID(), id);
    EXPECT_THAT(Tried(), ElementsAre(platform::ToWide(peer.DraftsStoreId()), platform::ToWide(peer.OutboxStoreId())));
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.Folders"), 0u);
    EXPECT_EQ(log.Texts(L"INFO").front(), L"Searching for itemID = " + id);
    EXPECT_TRUE(log.Has(L"DEBUG", L"Item was located successfully"));
    EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(ItemSearchTest, TheStoreIsNamedByAText) {
    VARTYPE type = VT_EMPTY;
    const std::wstring id = SavedIn(L"Drafts");
    outlook->Failures().On(L"NameSpace.GetItemFromID", [&](const stand_ins::Call& call) {
        type = call.arguments.at(1).vt;
        return std::optional<_variant_t>();
    });
    peer.FindItem(id);
    EXPECT_EQ(type, VT_BSTR);
}

TEST_F(ItemSearchTest, OfTwoItemsTheSecondIsUsed) {
    const auto second = outlook->SavedItem({.subject = L"The second"});
    const std::wstring id = SavedIn(L"Drafts");
    outlook->Failures().Answer(L"NameSpace.GetItemFromID", _variant_t(second.GetInterfacePtr()), 2);
    EXPECT_EQ(peer.FindItem(id)->GetSubject(), L"The second");
}

TEST_F(ItemSearchTest, AFailureInDraftsIsWarnedOfAndTheOutboxAnswers) {
    const std::wstring id = SavedIn(L"Drafts");
    outlook->Failures().Fail(L"NameSpace.GetItemFromID", kNotFound, 1);
    EXPECT_EQ(peer.FindItem(id)->GetItemUniqueID(), id);
    EXPECT_THAT(Warnings(), ElementsAre(kDraftsFailed + ErrorText(kNotFound), kNotInDrafts));
}

TEST_F(ItemSearchTest, NothingInDraftsIsWarnedOfAndTheOutboxAnswers) {
    const std::wstring id = SavedIn(L"Drafts");
    outlook->Failures().Answer(L"NameSpace.GetItemFromID", stand_ins::NoObject(), 1);
    EXPECT_EQ(peer.FindItem(id)->GetItemUniqueID(), id);
    EXPECT_THAT(Warnings(), ElementsAre(kNotInDrafts));
}

TEST_F(ItemSearchTest, AFailureInTheOutboxLeavesTheItemOfDrafts) {
    const std::wstring id = SavedIn(L"Drafts");
    outlook->Failures().Fail(L"NameSpace.GetItemFromID", kNotFound, 2);
    EXPECT_EQ(peer.FindItem(id)->GetItemUniqueID(), id);
    EXPECT_THAT(Warnings(), ElementsAre(kOutboxFailed + ErrorText(kNotFound)));
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.Folders"), 0u);
}

TEST_F(ItemSearchTest, NothingInTheOutboxTakesTheItemOfDraftsAway) {
    const std::wstring id = SavedIn(L"Drafts");
    outlook->Failures().Answer(L"NameSpace.GetItemFromID", stand_ins::NoObject(), 2);
    EXPECT_EQ(peer.FindItem(id)->GetItemUniqueID(), id); // found again in the wider search
    EXPECT_THAT(Warnings(), ElementsAre(kSearchAll));
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.Folders"), 1u);
}

TEST_F(ItemSearchTest, FailuresOfAnotherKindAreNotCaughtInTheTwoLookUps) {
    const std::wstring id = SavedIn(L"Drafts");
    outlook->Failures().On(L"NameSpace.GetItemFromID", ThrowStandard("lost"), 1);
    EXPECT_THROW(peer.FindItem(id), std::runtime_error);
}

TEST_F(ItemSearchTest, AnItemOfAnotherStoreIsFoundInTheWiderSearch) {
    const std::wstring id = SavedIn(L"Archive\\2025");
    EXPECT_EQ(peer.FindItem(id)->GetItemUniqueID(), id);
    EXPECT_THAT(Warnings(), ElementsAre(kDraftsFailed + ErrorText(kNotFound), kNotInDrafts,
                                        kOutboxFailed + ErrorText(kNotFound), kSearchAll));
    EXPECT_TRUE(log.Has(L"INFO", L"looking" + About(id, StoreId(L"Archive"))));
    // The folder only supplies its store's ID, so the first one of the store is where it is found.
    EXPECT_TRUE(log.Has(L"INFO", L"Item " + id + L" found in \\\\Archive\\2024"));
}

TEST_F(ItemSearchTest, TheSearchEndsAtTheFirstItem) {
    const std::wstring id = SavedIn(L"Archive\\2024");
    peer.FindItem(id);
    EXPECT_EQ(std::ranges::count(Tried(), StoreId(L"Archive")), 1);
}

TEST_F(ItemSearchTest, AStoreWithoutFoldersIsNeverTried) {
    const std::wstring id = SavedIn(L"Bare\\."); // in the top folder itself
    ExpectNowhere(id);
    EXPECT_EQ(std::ranges::count(Tried(), StoreId(L"Bare")), 0);
}

TEST_F(ItemSearchTest, FoldersAreWalkedTwoLevelsDeep) {
    outlook->AddStore(L"Archive", {L"2024\\March", L"2024\\April"});
    const std::wstring id = Deleted();
    ExpectNowhere(id);
    EXPECT_EQ(std::ranges::count(Tried(), StoreId(L"Archive")), 2); // 2024 and 2025, not what lies below
}

TEST_F(ItemSearchTest, ADeletedItemIsNowhere) {
    const std::wstring id = Deleted();
    ExpectNowhere(id);
    EXPECT_EQ(log.Texts(L"INFO").back(), L"Item  was not found in all folders");
    EXPECT_FALSE(log.Has(L"DEBUG", L"Item was located successfully"));
}

TEST_F(ItemSearchTest, EveryFailureOfAnAttemptIsLoggedAndTheWalkGoesOn) {
    const std::wstring id = SavedIn(L"Archive\\2025");
    const std::wstring own = platform::ToWide(peer.DraftsStoreId());
    // The default store has seven folders; its attempts are the third to the ninth call.
    outlook->Failures().On(L"NameSpace.GetItemFromID", ThrowStandard("lost"), 3);
    outlook->Failures().On(L"NameSpace.GetItemFromID", ThrowException(), 4);
    outlook->Failures().On(L"NameSpace.GetItemFromID", ThrowNumber(), 5);
    EXPECT_EQ(peer.FindItem(id)->GetItemUniqueID(), id);
    EXPECT_EQ(Errors(), std::vector<std::wstring>(7, L" item look caused exception" + About(id, own)));
}

TEST_F(ItemSearchTest, AnAttemptThatGivesNothingIsNoFailure) {
    const std::wstring id = SavedIn(L"Archive\\2025");
    for (std::size_t attempt = 3; attempt <= 9; ++attempt) {
        outlook->Failures().Answer(L"NameSpace.GetItemFromID", stand_ins::NoObject(), attempt);
    }
    EXPECT_EQ(peer.FindItem(id)->GetItemUniqueID(), id);
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(ItemSearchTest, AFailureOfTheWalkEndsTheSearchWithAnErrorLine) {
    const std::wstring id = Deleted();
    for (const wchar_t* member : {L"NameSpace.Folders", L"Folders.GetFirst", L"Folders.GetNext", L"MAPIFolder.StoreID",
                                  L"MAPIFolder.Folders"}) {
        outlook->Failures().Clear();
        outlook->Failures().Fail(member, E_FAIL, 1);
        log.Clear();
        EXPECT_FALSE(peer.FindItemInAllFolders(id)) << member;
        EXPECT_EQ(Errors().back(), L"Caught a com exception when searching in Some Other Folder: " + ErrorText(E_FAIL));
        EXPECT_FALSE(log.Has(L"INFO", L"Item  was not found in all folders"));
    }
}

TEST_F(ItemSearchTest, AnyOtherFailureOfTheWalkEndsItWithAnInfoLine) {
    const std::wstring id = Deleted();
    for (const auto& action : {ThrowStandard("lost"), ThrowException(), ThrowNumber()}) {
        outlook->Failures().Clear();
        outlook->Failures().On(L"NameSpace.Folders", action);
        log.Clear();
        EXPECT_FALSE(peer.FindItemInAllFolders(id));
        EXPECT_THAT(log.Texts(L"INFO"),
                    ElementsAre(L"general exception while caused exception.itemUniqueID.c_str()=." + id + L"."));
        EXPECT_THAT(Errors(), IsEmpty());
    }
}

TEST_F(ItemSearchTest, ASearchThatFailedRaisesAsForAnItemThatIsNowhere) {
    const std::wstring id = Deleted();
    outlook->Failures().Fail(L"NameSpace.Folders", E_FAIL);
    ExpectNowhere(id);
}

TEST_F(ItemSearchTest, AnItemOfAnotherKindHasNoHandler) {
    const std::wstring id =
        stand_ins::GetText(outlook->SavedItem({.kind = stand_ins::ItemKind::Post, .subject = L"Posted"}), L"EntryID");
    EXPECT_EQ(peer.FindItem(id), nullptr);
    EXPECT_TRUE(log.Has(L"DEBUG", L"Item was located successfully"));
}

TEST_F(ItemSearchTest, WithoutStoreIdsTheStoreIsLeftToOutlook) {
    const std::wstring id = SavedIn(L"Drafts");
    OutlookController fresh;
    OutlookControllerPeer bare{fresh};
    bare.SetApplication(App());
    EXPECT_EQ(bare.FindItem(id)->GetItemUniqueID(), id);
    EXPECT_THAT(Tried(), ElementsAre(L"", L""));
}

TEST_F(ItemSearchTest, AnyThreadMaySearchWithoutPreparingItselfForCom) {
    const std::wstring id = SavedIn(L"Drafts");
    test_support::RunThreads(4, [&](int) { EXPECT_EQ(peer.FindItem(id)->GetItemUniqueID(), id); });
}

TEST_F(ItemSearchTest, TheModificationTimeIsThatOfTheItem) {
    const std::wstring id = SavedIn(L"Drafts");
    EXPECT_EQ(peer.GetLastModification(id), outlook->ItemsIn(L"Drafts").at(0).lastModificationTime);
    EXPECT_EQ(log.Texts(L"INFO").front(), L"Finding the email item in order to read the modification time");
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(ItemSearchTest, AModificationTimeThatCannotBeReadIsTheOldestDate) {
    const std::wstring failed = L"Could not get item and last modification - returning old date";
    const std::wstring id = SavedIn(L"Drafts");
    for (const auto& action : {ThrowStandard("lost"), ThrowException(), ThrowNumber()}) {
        outlook->Failures().Clear();
        outlook->Failures().On(L"MailItem.LastModificationTime", action);
        log.Clear();
        EXPECT_EQ(peer.GetLastModification(id), 0.0);
        EXPECT_THAT(Errors(), ElementsAre(failed));
    }
    outlook->Failures().Clear();
    outlook->Failures().Fail(L"MailItem.LastModificationTime", E_FAIL);
    EXPECT_EQ(peer.GetLastModification(id), 0.0);
    EXPECT_EQ(peer.GetLastModification(Deleted()), 0.0);
    EXPECT_EQ(Errors().back(), failed);
}

TEST_F(ItemSearchTest, WithoutAHandlerTheModificationTimeIsTheOldestDate) {
    EXPECT_EQ(peer.GetLastModification(L""), 0.0);
    EXPECT_THAT(Errors(), ElementsAre(L"Could not get item and last modification - returning old date"));
}

} // namespace
} // namespace vorlek
