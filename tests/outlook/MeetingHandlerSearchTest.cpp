// The road from a meeting item to its appointment, seen through what an operation answers: the sent item's ID is the
// appointment's where there is one and the item's own where there is none.
#include "agent/apps/outlook/CommonUtils.h"
#include "stand-ins/outlook/Store.h"
#include "tests/outlook/MeetingTest.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::MeetingTest;
using outlook_tests::Request;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using outlook_tests::Unlinked;
using stand_ins::GetText;
using stand_ins::ItemData;
using stand_ins::ItemKind;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;

constexpr wchar_t kAnna[] = L"Anna Weber";
constexpr wchar_t kInStore[] = L" MeetingHandler::FindItemInAllFolders__:Caught an  exception: A";
constexpr wchar_t kInSharedCalendar[] =
    L" MeetingHandler::FindItemInAllFolders__:Caught an  exception  in the shared calendar: ";
constexpr HRESULT kNotFound = static_cast<HRESULT>(0x8004010F);
constexpr std::size_t kFoldersOfDefaultStore = 7;

class MeetingHandlerSearchTest : public MeetingTest {
protected:
    /// A broken link, its ledger entry leading to an appointment that stands elsewhere than in the user's calendar.
    void StartElsewhere(const std::wstring& calendar, ItemData meeting = Request()) {
        StartWithLedger(std::move(meeting));
        stand_ins::Invoke(appointment, L"Delete");
        appointment = outlook->SavedItem({.kind = ItemKind::Appointment, .subject = L"Review"}, calendar);
        CommonUtils::AddToInspectedItems(ItemId(), AppointmentId(), nullptr);
        ClearTraces();
    }
    void StartWithDelegate(ItemData meeting = Request()) {
        outlook->AddSharedCalendar(kAnna);
        meeting.fromName = kAnna;
        StartElsewhere(std::wstring(kAnna) + L"\\Calendar", std::move(meeting));
    }
    bool IsFound() { return handler->GetSentItemUniqueID() == id_(); }
    /// The stores that were asked for the appointment, in order.
    std::vector<std::wstring> StoresAsked() const {
        std::vector<std::wstring> stores;
        for (const auto& call : outlook->Calls().All()) {
            if (call.member == L"NameSpace.GetItemFromID") {
                stores.emplace_back(_bstr_t(call.arguments.at(1)));
            }
        }
        return stores;
    }

private:
    std::wstring id_() const {
        const std::wstring id = AppointmentId();
        return id.empty() ? L"no appointment" : id;
    }
};

TEST_F(MeetingHandlerSearchTest, WhatChangedOnAnAppointmentThatNoLinkLeadsToStaysThoughALaterLookUpIsInVain) {
    StartWithLedger();
    appointment = nullptr; // nobody else holds it
    handler->LabelSubject(L"[Internal] Review");
    outlook->Failures().Fail(L"NameSpace.GetItemFromID", kAccessDenied);
    EXPECT_EQ(handler->GetSentItemUniqueID(), ItemId());
    outlook->Failures().Clear();
    handler->Send();
    ASSERT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_EQ(outlook->Delivered().at(0).subject, L"[Internal] Review");
}

TEST_F(MeetingHandlerSearchTest, AWorkingLinkNeverReadsTheRegistry) {
    Start(Request());
    EXPECT_TRUE(IsFound());
    EXPECT_THAT(Debug(),
                ElementsAre(L"GetSentItemUniqueID called for meeting", L"Retrieving the MeetingItem's appointment",
                            L"Related appointment was retrieved from the item",
                            L"Returning ID for the related appointment " + AppointmentId()));
    EXPECT_THAT(Infos(), IsEmpty()) << "the ledger tells of its reading at Info";
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, outlook_tests::kUnsentKey, 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND)
        << "a reading would have made the key";
}

TEST_F(MeetingHandlerSearchTest, LookingAddsNothingToTheCalendar) {
    StartWithoutAppointment();
    EXPECT_EQ(handler->GetSentItemUniqueID(), ItemId());
    std::vector<std::wstring> asked;
    for (const auto& call : outlook->Calls().All()) {
        if (call.member == L"MeetingItem.GetAssociatedAppointment") {
            asked.push_back(call.ToString());
        }
    }
    EXPECT_THAT(asked, ElementsAre(L"MeetingItem.GetAssociatedAppointment(false)"));
    EXPECT_THAT(outlook->ItemsIn(L"Calendar"), IsEmpty());
}

TEST_F(MeetingHandlerSearchTest, AMissingLedgerEntryGivesNoneWithoutAnySearch) {
    Start(Unlinked(Request()));
    EXPECT_FALSE(IsFound());
    EXPECT_THAT(Warnings(), ElementsAre(L"Item is not associated to its appointment. Attempting to find the "
                                        L"appointment ID manually",
                                        L"Failed to get related appointment - returning MeetingItem id"));
    EXPECT_THAT(Infos(), ElementsAre(L"looking for item with id - " + ItemId() + L" in the registry"));
    EXPECT_THAT(Errors(), Contains(L"Failed to get related appointment - returning NULL"));
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.GetItemFromID"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"Application.Session"), 0u);
}

TEST_F(MeetingHandlerSearchTest, TheFirstHitEndsTheSearch) {
    StartWithLedger();
    EXPECT_TRUE(IsFound());
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.GetItemFromID"), 1u);
    const std::wstring id = AppointmentId();
    EXPECT_THAT(Debug(), IsSupersetOf({L"Looking for item with id " + id + L"in all folders",
                                       L"Item " + id + L" found in \\\\Outlook Data File\\Calendar",
                                       std::wstring(L"Related appointment was retrieved for the item using ID")}));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(MeetingHandlerSearchTest, EverySubfolderOfAStoreRepeatsTheRequestUntilAnotherStoreHasTheItem) {
    outlook->AddStore(L"Archive", {L"Appointments", L"Mails"});
    StartElsewhere(L"Archive\\Appointments");
    EXPECT_TRUE(IsFound());
    std::vector<std::wstring> stores(kFoldersOfDefaultStore, stand_ins::Store::StoreId(stand_ins::kDefaultStore));
    stores.push_back(stand_ins::Store::StoreId(L"Archive"));
    EXPECT_EQ(StoresAsked(), stores);
    EXPECT_THAT(Errors(), Each(kInStore + ErrorText(kNotFound)));
    EXPECT_EQ(Errors().size(), kFoldersOfDefaultStore);
    EXPECT_THAT(Debug(), Contains(L"Item " + AppointmentId() + L" found in \\\\Archive\\Appointments"));
}

TEST_F(MeetingHandlerSearchTest, AStoreThatRefusesIsSkippedWhateverItRaises) {
    StartWithLedger();
    outlook->Failures().Fail(L"NameSpace.GetItemFromID", kAccessDenied, 1);
    outlook->Failures().On(L"NameSpace.GetItemFromID", ThrowStandard("lost"), 2);
    outlook->Failures().On(L"NameSpace.GetItemFromID", ThrowNumber(), 3);
    outlook->Failures().Fail(L"MAPIFolder.StoreID", kAccessDenied, 4);
    EXPECT_TRUE(IsFound());
    EXPECT_THAT(Errors(), ElementsAre(kInStore + ErrorText(kAccessDenied), std::wstring(kInStore) + L"lost", kInStore,
                                      kInStore + ErrorText(kAccessDenied)));
    EXPECT_EQ(outlook->Calls().Count(L"MAPIFolder.StoreID"), 5u);
}

TEST_F(MeetingHandlerSearchTest, AnItemThatIsNoAppointmentIsNotTaken) {
    Start(Unlinked(Request()));
    const auto mail = outlook->SavedItem({.subject = L"Review"});
    CommonUtils::AddToInspectedItems(ItemId(), GetText(mail, L"EntryID"), nullptr);
    ClearTraces();
    EXPECT_EQ(handler->GetSentItemUniqueID(), ItemId());
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.GetItemFromID"), kFoldersOfDefaultStore);
    EXPECT_THAT(Errors(), Contains(L"Failed to get related appointment using ID - returning NULL"));
}

TEST_F(MeetingHandlerSearchTest, TheCalendarOfTheRepresentedPersonComesLast) {
    StartWithDelegate();
    EXPECT_TRUE(IsFound());
    std::vector<std::wstring> stores(kFoldersOfDefaultStore, stand_ins::Store::StoreId(stand_ins::kDefaultStore));
    stores.push_back(stand_ins::Store::StoreId(kAnna));
    EXPECT_EQ(StoresAsked(), stores);
    const std::wstring id = AppointmentId();
    auto lines = Debug();
    lines.erase(lines.begin(), std::ranges::find(lines, L"Item wasn't found - looking in shared calendar"));
    EXPECT_THAT(
        lines,
        ElementsAre(L"Item wasn't found - looking in shared calendar", L"Getting sender name",
                    L"Trying to get sender represented name using 2007 OOM", L"Cast to meeting item succeeded",
                    L"Successfully acquired property accessor", L"Represented Sender Name = Anna Weber",
                    L"Attempting to create recipient using Anna Weber", L"recipient created - trying to resolve",
                    L"recipient was resolved - trying to get shared calendar",
                    L"Trying to get store id for the shared calendar", L"Looking for the item in the shared calendar",
                    L"Item " + id + L" found!", L"Related appointment was retrieved for the item using ID",
                    L"Returning ID for the related appointment " + id));
    const auto calls = outlook->Calls().All();
    EXPECT_THAT(outlook->Calls().Members(), Contains(L"NameSpace.GetSharedDefaultFolder"));
    for (const auto& call : calls) {
        if (call.member == L"NameSpace.GetSharedDefaultFolder") {
            EXPECT_EQ(call.ToString(), L"NameSpace.GetSharedDefaultFolder(\"<object>\", 9)");
        }
    }
}

TEST_F(MeetingHandlerSearchTest, ARepresentedNameThatDoesNotResolveGivesNone) {
    StartElsewhere(L"Calendar", [] {
        ItemData meeting = Request();
        meeting.fromName = L"Somebody";
        return meeting;
    }());
    stand_ins::Invoke(appointment, L"Delete");
    ClearTraces();
    EXPECT_EQ(handler->GetSentItemUniqueID(), ItemId());
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.GetSharedDefaultFolder"), 0u);
    const auto lines = Debug();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], L"recipient created - trying to resolve");
    EXPECT_EQ(lines.back(), L"Item wasn't found in shared folder");
    EXPECT_EQ(Errors().back(), L"Failed to get related appointment using ID - returning NULL");
}

TEST_F(MeetingHandlerSearchTest, EveryMemberOnTheWayToTheSharedCalendarMayFail) {
    StartWithDelegate();
    for (const wchar_t* member : {L"NameSpace.CreateRecipient", L"Recipient.Resolve", L"Recipient.Resolved",
                                  L"NameSpace.GetSharedDefaultFolder"}) {
        outlook->Failures().Fail(member, kAccessDenied, 1);
        ClearTraces();
        EXPECT_FALSE(IsFound()) << member;
        EXPECT_THAT(Errors(), Contains(kInSharedCalendar + ErrorText(kAccessDenied)));
        EXPECT_EQ(Debug().back(), L"Item wasn't found in shared folder");
    }
    outlook->Failures().On(L"NameSpace.CreateRecipient", ThrowStandard("lost"), 1);
    EXPECT_FALSE(IsFound());
    EXPECT_THAT(Errors(), Contains(std::wstring(kInSharedCalendar) + L"lost"));
    outlook->Failures().On(L"NameSpace.CreateRecipient", ThrowNumber(), 1);
    EXPECT_FALSE(IsFound());
    EXPECT_THAT(Errors(), Contains(std::wstring(kInSharedCalendar)));
}

TEST_F(MeetingHandlerSearchTest, EveryFailureOfTheLinkGivesNoneAndIsLoggedAtItsLevel) {
    StartWithLedger();
    outlook->Failures().Fail(L"MeetingItem.GetAssociatedAppointment", kAccessDenied, 1);
    EXPECT_FALSE(IsFound());
    outlook->Failures().On(L"MeetingItem.GetAssociatedAppointment", ThrowStandard("lost"), 1);
    EXPECT_FALSE(IsFound());
    outlook->Failures().On(L"MeetingItem.GetAssociatedAppointment", ThrowException(), 1);
    EXPECT_FALSE(IsFound());
    outlook->Failures().On(L"MeetingItem.GetAssociatedAppointment", ThrowNumber(), 1);
    EXPECT_FALSE(IsFound());
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while getting related appointment: " + ErrorText(kAccessDenied)));
    constexpr wchar_t none[] = L"Failed to get related appointment - returning MeetingItem id";
    EXPECT_THAT(Warnings(), ElementsAre(none, L"Caught an exception while getting related appointment: lost", none,
                                        L"Caught for Unknown error while getting related appointment", none,
                                        L"Caught for Unknown error while getting related appointment", none));
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.GetItemFromID"), 0u) << "a link that fails is no missing link";
}

TEST_F(MeetingHandlerSearchTest, AWalkThatFailsGivesNone) {
    StartWithLedger();
    for (const wchar_t* member :
         {L"Application.Session", L"NameSpace.Folders", L"Folders.GetFirst", L"MAPIFolder.Folders"}) {
        outlook->Failures().Fail(member, kAccessDenied, 1);
        ClearTraces();
        EXPECT_FALSE(IsFound()) << member;
        EXPECT_THAT(Errors(), ElementsAre(L"Caught a com exception while getting related appointment: " +
                                          ErrorText(kAccessDenied)))
            << member;
    }
    outlook->Failures().Answer(L"Application.Session", stand_ins::NoObject(), 1);
    ClearTraces();
    EXPECT_FALSE(IsFound());
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while getting related appointment: " + ErrorText(E_POINTER)));
}

TEST_F(MeetingHandlerSearchTest, EachOperationSearchesAgain) {
    StartWithLedger();
    EXPECT_TRUE(IsFound());
    EXPECT_TRUE(IsFound());
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.GetItemFromID"), 2u);
}

TEST_F(MeetingHandlerSearchTest, AnItemThatIsNeitherLinkedNorSavedIsSavedToBeLookedUp) {
    item = outlook->NewItem(Unlinked(Request()));
    ClearTraces();
    handler = std::make_unique<outlook_tests::Meeting>(Outlook::_MeetingItemPtr(item.GetInterfacePtr()));
    EXPECT_NE(ItemId(), L"");
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Save"), 1u);
    EXPECT_THAT(Infos(), Contains(L"looking for item with id - " + ItemId() + L" in the registry").Times(2))
        << "once for the save's own question";
    EXPECT_THAT(Errors(), Contains(L"Couldn't get the related appointment! Save failed."));
    EXPECT_THAT(Infos(), Contains(L"Meeting item class IPM.Schedule.Meeting.Request is 3"));
}

TEST_F(MeetingHandlerSearchTest, AnItemThatCannotBeSavedAndHasNoLinkIsNotLookedForInACircle) {
    outlook->Failures().Fail(L"MeetingItem.Save", kAccessDenied);
    item = outlook->NewItem(Unlinked(Request()));
    ClearTraces();
    handler = std::make_unique<outlook_tests::Meeting>(Outlook::_MeetingItemPtr(item.GetInterfacePtr()));
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Save"), 1u);
    EXPECT_THAT(Errors(), Contains(L"Failed to get related appointment - returning NULL"));
    EXPECT_THAT(Warnings(), Contains(L"Caught for Unknown error while getting related appointment"))
        << "no EntryID after the save";
    EXPECT_EQ(Infos(), std::vector<std::wstring>{L"Meeting item class IPM.Schedule.Meeting.Request is 3"})
        << "no ledger is read for no ID";
    ClearTraces();
    EXPECT_EQ(handler->GetSentItemUniqueID(), L"");
    EXPECT_THAT(Errors(), Contains(L"Unknown error - returning empty ID"));
}

/// The same road through Redemption, seen through the question that the old road asks it: whether the meeting is to be
/// handled on the spot, which it is where there is no appointment.
class MeetingHandlerSearchRedemptionTest : public MeetingHandlerSearchTest {
protected:
    MeetingHandlerSearchRedemptionTest() {
        InstallRedemption();
        BecomeOld();
    }
    bool IsFoundByRedemption() { return !handler->HandleOnSpot(); }
    static constexpr wchar_t kNone[] = L"Failed to get Associated Appointment! Handle on spot.";
};

TEST_F(MeetingHandlerSearchRedemptionTest, AWorkingLinkNeverReadsTheRegistry) {
    Start(Request());
    EXPECT_TRUE(IsFoundByRedemption());
    EXPECT_THAT(Debug(), ElementsAre(L"Checking if the MeetingItem should be handled \"OnSpot\"",
                                     L"Checking for OnSpot override",
                                     L"Accessing the on-spot value in the Registry - opened subkey",
                                     L"Created Redemption.RDOSession - using it to get Redemption::IRDOMeetingItemPtr",
                                     L"Successfully found associated appointment using RDO"));
    EXPECT_THAT(Infos(), IsEmpty());
    std::vector<std::wstring> calls;
    for (const auto& call : outlook->Calls().All()) {
        calls.push_back(call.ToString());
    }
    EXPECT_THAT(calls,
                ElementsAre(L"RDOSession.CreateInstance",
                            L"RDOSession.GetRDOObjectFromOutlookObject(\"<object>\", true)",
                            L"RDOMeetingItem.GetAssociatedAppointment(false)", L"RDOAppointmentItem.IsRecurring get"));
}

TEST_F(MeetingHandlerSearchRedemptionTest, WithoutALinkTheLedgerLeadsToTheAppointment) {
    StartWithLedger();
    EXPECT_TRUE(IsFoundByRedemption());
    EXPECT_THAT(Debug(),
                IsSupersetOf({std::wstring(L"RDO Meeting is not associated to its appointment - try manually"),
                              L"Item " + AppointmentId() + L" found in \\\\Outlook Data File\\Calendar",
                              std::wstring(L"Related appointment was retrieved for the item using ID - getting RDO "
                                           L"item")}));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(MeetingHandlerSearchRedemptionTest, AMissingLedgerEntryGivesNoneWithoutAnySearch) {
    Start(Unlinked(Request()));
    EXPECT_FALSE(IsFoundByRedemption());
    EXPECT_THAT(Errors(), IsSupersetOf({L"Failed to get related appointment - returning NULL", kNone}));
    EXPECT_EQ(outlook->Calls().Count(L"NameSpace.GetItemFromID"), 0u);
}

TEST_F(MeetingHandlerSearchRedemptionTest, AnEntryThatLeadsNowhereGivesNone) {
    StartWithLedger();
    stand_ins::Invoke(appointment, L"Delete");
    ClearTraces();
    EXPECT_FALSE(IsFoundByRedemption());
    EXPECT_THAT(Errors(), Contains(L"Failed to get related appointment using ID - returning NULL"));
    EXPECT_EQ(Errors().back(), kNone);
}

TEST_F(MeetingHandlerSearchRedemptionTest, AViewThatIsNoMeetingGivesNone) {
    Start(Request());
    outlook->Failures().Answer(L"RDOSession.GetRDOObjectFromOutlookObject", stand_ins::NoObject());
    EXPECT_FALSE(IsFoundByRedemption());
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to get IRDOMeetingItemPtr!", kNone));
}

TEST_F(MeetingHandlerSearchRedemptionTest, EveryFailureGivesNoneAndIsLoggedAtItsLevel) {
    Start(Request());
    outlook->Failures().Fail(L"RDOMeetingItem.GetAssociatedAppointment", kAccessDenied, 1);
    EXPECT_FALSE(IsFoundByRedemption());
    outlook->Failures().On(L"RDOMeetingItem.GetAssociatedAppointment", ThrowStandard("lost"), 1);
    EXPECT_FALSE(IsFoundByRedemption());
    outlook->Failures().On(L"RDOMeetingItem.GetAssociatedAppointment", ThrowNumber(), 1);
    EXPECT_FALSE(IsFoundByRedemption());
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception while getting related appointment: " + ErrorText(kAccessDenied),
                            kNone, kNone, kNone));
    EXPECT_THAT(Warnings(), ElementsAre(L"Caught an exception while getting related appointment: lost",
                                        L"Caught for Unknown error while getting related appointment"));
}

TEST_F(MeetingHandlerSearchTest, WithoutRedemptionTheOldRoadFindsNone) {
    Start(Request());
    BecomeOld();
    EXPECT_TRUE(handler->HandleOnSpot());
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.RDOSession CLSID!",
                                      L"Failed to retrieve Redemption.RDOSession instance!",
                                      L"Failed to get Associated Appointment! Handle on spot."));
}

TEST_F(MeetingHandlerSearchRedemptionTest, TheRepresentedSenderIsReadFromTheViewOfTheItem) {
    StartWithDelegate();
    EXPECT_TRUE(IsFoundByRedemption());
    EXPECT_THAT(Debug(), IsSupersetOf({L"Getting sender name", L"Trying to get sender represented name",
                                       L"Attempting to get property PR_SENT_REPRESENTING_NAME_W",
                                       L"Got represented sender: Anna Weber",
                                       L"Attempting to create recipient using Anna Weber"}));
    for (const auto& call : outlook->Calls().All()) {
        if (call.member == L"RDOMeetingItem.Fields") {
            EXPECT_EQ(call.arguments.at(0).vt, VT_I4);
            EXPECT_EQ(call.arguments.at(0).lVal, 0x0042001F);
        }
    }
    EXPECT_EQ(outlook->Calls().Count(L"RDOMeetingItem.Fields"), 1u);
}

TEST_F(MeetingHandlerSearchRedemptionTest, EveryFailureOfTheRepresentedSenderIsAnEmptyName) {
    StartWithDelegate();
    outlook->Failures().Fail(L"RDOMeetingItem.Fields", kAccessDenied, 1);
    EXPECT_FALSE(IsFoundByRedemption());
    outlook->Failures().On(L"RDOMeetingItem.Fields", ThrowStandard("lost"), 1);
    EXPECT_FALSE(IsFoundByRedemption());
    outlook->Failures().On(L"RDOMeetingItem.Fields", ThrowException(), 1);
    EXPECT_FALSE(IsFoundByRedemption());
    outlook->Failures().On(L"RDOMeetingItem.Fields", ThrowNumber(), 1);
    EXPECT_FALSE(IsFoundByRedemption());
    outlook->Failures().Answer(L"RDOSession.GetRDOObjectFromOutlookObject", stand_ins::NoObject(), 2);
    EXPECT_FALSE(IsFoundByRedemption());
    std::vector<std::wstring> lines;
    for (const auto& line : Errors()) {
        if (!line.starts_with(kInStore) && !line.starts_with(L"Failed to get related") && line != kNone) {
            lines.push_back(line.starts_with(L"Exception:") ? L"Exception: ..." : line);
        }
    }
    EXPECT_THAT(lines, ElementsAre(L"Caught a com exception: " + ErrorText(kAccessDenied),
                                   L"Caught an exception : lost", L"Exception: ...", L"Caught for Unknown error",
                                   L"Failed to get RDO object!", L"Failed to get IRDOMeetingItemPtr!"));
    EXPECT_THAT(Debug(), Contains(L"Attempting to create recipient using ").Times(5));
}

} // namespace
} // namespace vorlek
