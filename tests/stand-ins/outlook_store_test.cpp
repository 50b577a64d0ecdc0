// Items on disk: what a killed process keeps, IDs, folders, stores.
#include <fstream>

#include "stand-ins/outlook/Store.h"
#include "tests/stand-ins/OutlookTest.h"
#include "tests/support/ChildProcess.h"

namespace stand_ins {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr HRESULT kNotFound = static_cast<HRESULT>(0x8004010F);
constexpr HRESULT kInvalidEntryId = static_cast<HRESULT>(0x80040107);

// The other process: saves two mails, changes one without saving, and is killed.
std::wstring SaveAndHang(const std::wstring& profile) {
    Outlook outlook({.profile = profile});
    const auto first = outlook.SavedItem({.subject = L"first", .recipients = {kBen}});
    const auto second = outlook.SavedItem({.subject = L"second", .recipients = {kBen}});
    Put(second, L"Subject", L"never saved");
    test_support::SayReady();
    test_support::WaitToBeKilled();
}
const test_support::ChildRoleName kSaveAndHang(L"OutlookSaveAndHang", SaveAndHang);

class OutlookStoreFiles : public OutlookTest {};

TEST_F(OutlookStoreFiles, KilledProcessLosesNothingThatWasSaved) {
    test_support::ChildProcess child(L"OutlookSaveAndHang", folder_.Path().wstring());
    child.WaitUntilReady();
    child.Terminate();
    const Outlook outlook({.profile = folder_.Path()});
    std::vector<std::wstring> subjects;
    for (const ItemData& item : outlook.ItemsIn(L"Drafts")) {
        subjects.push_back(item.subject);
    }
    EXPECT_THAT(subjects, testing::UnorderedElementsAre(L"first", L"second"));
}

TEST_F(OutlookStoreFiles, ProfileServesOneOutlookAtATime) {
    const Outlook outlook({.profile = folder_.Path()});
    try {
        const Outlook second({.profile = folder_.Path()});
        FAIL() << "the profile was opened twice";
    } catch (const std::runtime_error& failure) {
        EXPECT_THAT(failure.what(), testing::EndsWith("is in use by another Outlook"));
    }
}

TEST_F(OutlookStoreFiles, ProfileThatIsAFileIsRefused) {
    std::ofstream(folder_ / L"file") << "x";
    EXPECT_THROW(Outlook({.profile = folder_ / L"file"}), std::runtime_error);
}

TEST_F(OutlookStoreFiles, ItemOutlivesItsOutlook) {
    DispatchPtr mail;
    {
        Outlook outlook({.profile = folder_.Path()});
        mail = outlook.SavedItem({.subject = L"Plans"});
    }
    EXPECT_EQ(GetText(mail, L"Subject"), L"Plans");
}

class OutlookStore : public RunningOutlookTest {
protected:
    DispatchPtr ById(const std::wstring& entryId) { return Invoke(Session(), L"GetItemFromID", {entryId.c_str()}); }
    std::filesystem::path DraftFile(const DispatchPtr& mail) {
        return folder_.Path() / L"Stores" / kDefaultStore / L"Drafts" / (GetText(mail, L"EntryID") + L".json");
    }
    DispatchPtr DefaultFolderOf(long number) { return Invoke(Session(), L"GetDefaultFolder", {number}); }
};

TEST_F(OutlookStore, EntryIdIsEmptyUntilTheFirstSave) {
    const auto mail = Mail();
    EXPECT_EQ(GetText(mail, L"EntryID"), L"");
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    Invoke(mail, L"Save");
    const std::wstring id = GetText(mail, L"EntryID");
    EXPECT_THAT(id, testing::Not(testing::IsEmpty()));
    EXPECT_EQ(GetText(ById(id), L"Subject"), L"Plans");
}

TEST_F(OutlookStore, SaveReplacesTheFileAndNeverWritesIntoIt) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    const auto file = DraftFile(mail);
    const auto old = folder_ / L"old.json";
    ASSERT_TRUE(CreateHardLinkW(old.c_str(), file.c_str(), nullptr));
    Put(mail, L"Subject", L"Other plans");
    Invoke(mail, L"Save");
    EXPECT_EQ(ReadItemFile(old).subject, L"Plans");
    EXPECT_EQ(ReadItemFile(file).subject, L"Other plans");
    EXPECT_FALSE(std::filesystem::exists(file.wstring() + L".new"));
}

TEST_F(OutlookStore, SaveThatFailsLeavesTheOldFileAndTheChange) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    const auto inTheWay = DraftFile(mail).wstring() + L".new";
    std::filesystem::create_directory(inTheWay);
    Put(mail, L"Subject", L"Other plans");
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Save"); }), E_FAIL);
    EXPECT_EQ(ReadItemFile(DraftFile(mail)).subject, L"Plans");
    std::filesystem::remove(inTheWay);
    Invoke(mail, L"Save");
    EXPECT_EQ(ReadItemFile(DraftFile(mail)).subject, L"Other plans");
}

TEST_F(OutlookStore, ModificationTimeMovesWithEachSaveThatChanges) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    const double first = Get(mail, L"LastModificationTime");
    Invoke(mail, L"Save");
    EXPECT_EQ(double(Get(mail, L"LastModificationTime")), first);
    Put(mail, L"Subject", L"Other plans");
    EXPECT_EQ(double(Get(mail, L"LastModificationTime")), first);
    Invoke(mail, L"Save");
    EXPECT_GT(double(Get(mail, L"LastModificationTime")), first);
}

TEST_F(OutlookStore, ModificationTimeIsNow) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    SYSTEMTIME now{};
    GetLocalTime(&now);
    double date = 0;
    SystemTimeToVariantTime(&now, &date);
    EXPECT_NEAR(double(Get(mail, L"LastModificationTime")), date, 60.0 / 86400);
}

TEST_F(OutlookStore, TwoObjectsOfOneItemShareItsState) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    const auto same = ById(GetText(mail, L"EntryID"));
    EXPECT_NE(same.GetInterfacePtr(), mail.GetInterfacePtr());
    Put(same, L"Subject", L"Other plans");
    EXPECT_EQ(GetText(mail, L"Subject"), L"Other plans");
}

TEST_F(OutlookStore, MoveGivesANewIdAndKillsTheOldObject) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    const std::wstring before = GetText(mail, L"EntryID");
    const DispatchPtr moved = Invoke(mail, L"Move", {DefaultFolderOf(4).GetInterfacePtr()});
    EXPECT_NE(GetText(moved, L"EntryID"), before);
    EXPECT_EQ(ErrorOf([&] { GetText(mail, L"Subject"); }), static_cast<HRESULT>(0x8004010A));
    EXPECT_THAT(outlook_.ItemsIn(L"Outbox"), SizeIs(1));
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
}

TEST_F(OutlookStore, MoveKeepsTheIdWhereIdsAreKept) {
    Outlook outlook({.profile = folder_ / L"pst", .keepsEntryIdOnMove = true});
    const auto mail = outlook.SavedItem({.subject = L"Plans"});
    const std::wstring before = GetText(mail, L"EntryID");
    const DispatchPtr outbox = Invoke(GetObject(outlook.Application(), L"Session"), L"GetDefaultFolder", {4L});
    const DispatchPtr moved = Invoke(mail, L"Move", {outbox.GetInterfacePtr()});
    EXPECT_EQ(GetText(moved, L"EntryID"), before);
    EXPECT_EQ(GetText(GetObject(mail, L"Parent"), L"Name"), L"Outbox");
}

TEST_F(OutlookStore, DeletedItemGoesToDeletedItemsAndItsIdIsGone) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    const std::wstring before = GetText(mail, L"EntryID");
    Invoke(mail, L"Delete");
    EXPECT_THAT(outlook_.ItemsIn(L"Deleted Items"), SizeIs(1));
    EXPECT_EQ(ErrorOf([&] { ById(before); }), kNotFound);
}

TEST_F(OutlookStore, TestChoosesWhatIsSaidOfADeletedItem) {
    constexpr HRESULT kDeleted = static_cast<HRESULT>(0x8004010A);
    Outlook outlook({.profile = folder_ / L"exchange", .deletedItemError = kDeleted});
    const auto session = GetObject(outlook.Application(), L"Session");
    EXPECT_EQ(ErrorOf([&] { Invoke(session, L"GetItemFromID", {L"00000000AA"}); }), kDeleted);
}

TEST_F(OutlookStore, WhatIsNoIdIsSaidToBeNone) {
    EXPECT_EQ(ErrorOf([&] { ById(L""); }), kInvalidEntryId);
    EXPECT_EQ(ErrorOf([&] { ById(L"..\\..\\x"); }), kInvalidEntryId);
}

TEST_F(OutlookStore, ItemOfAnotherStoreIsFoundWithThatStoresIdOnly) {
    outlook_.AddStore(L"Archive", {L"Old mail"});
    const auto mail = outlook_.SavedItem({.subject = L"Plans"}, L"Archive\\Old mail");
    const std::wstring id = GetText(mail, L"EntryID");
    const std::wstring store = GetText(GetObject(mail, L"Parent"), L"StoreID");
    EXPECT_NE(store, GetText(DefaultFolderOf(16), L"StoreID"));
    EXPECT_EQ(ErrorOf([&] { ById(id); }), kNotFound);
    EXPECT_EQ(ErrorOf([&] { Invoke(Session(), L"GetItemFromID", {id.c_str(), L""}); }), kNotFound);
    const DispatchPtr found = Invoke(Session(), L"GetItemFromID", {id.c_str(), store.c_str()});
    EXPECT_EQ(GetText(found, L"Subject"), L"Plans");
}

TEST_F(OutlookStore, FoldersAreWalkedToTheirEnd) {
    outlook_.AddStore(L"Archive", {L"A", L"B"});
    const auto stores = GetObject(Session(), L"Folders");
    EXPECT_EQ(GetText(DispatchPtr(Invoke(stores, L"GetFirst")), L"Name"), L"Outlook Data File");
    const DispatchPtr archive = Invoke(stores, L"GetNext");
    EXPECT_EQ(GetText(archive, L"FolderPath"), L"\\\\Archive");
    EXPECT_EQ(DispatchPtr(Invoke(stores, L"GetNext")), nullptr);
    const auto folders = GetObject(archive, L"Folders");
    EXPECT_EQ(GetText(DispatchPtr(Invoke(folders, L"GetFirst")), L"FolderPath"), L"\\\\Archive\\A");
    EXPECT_EQ(GetText(DispatchPtr(Invoke(folders, L"GetNext")), L"Name"), L"B");
    EXPECT_EQ(DispatchPtr(Invoke(folders, L"GetNext")), nullptr);
}

TEST_F(OutlookStore, DefaultFoldersAnswerToTheirNumbers) {
    const std::map<long, std::wstring> names = {{3, L"Deleted Items"}, {4, L"Outbox"},   {5, L"Sent Items"},
                                                {6, L"Inbox"},         {9, L"Calendar"}, {13, L"Tasks"},
                                                {16, L"Drafts"}};
    for (const auto& [number, name] : names) {
        EXPECT_EQ(GetText(DefaultFolderOf(number), L"Name"), name);
    }
    EXPECT_EQ(ErrorOf([&] { DefaultFolderOf(99); }), E_INVALIDARG);
}

TEST_F(OutlookStore, TornFileIsAFailureAndNoCrash) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    const std::wstring id = GetText(mail, L"EntryID") + L"0";
    std::ofstream(folder_.Path() / L"Stores" / L"Outlook Data File" / L"Drafts" / (id + L".json")) << "{\"subject\":";
    EXPECT_EQ(ErrorOf([&] { ById(id); }), E_FAIL);
}

TEST_F(OutlookStore, DiscardingCloseGoesBackToWhatWasSaved) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    Put(mail, L"Subject", L"Other plans");
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Close", {2L}); }), E_ABORT);
    Invoke(mail, L"Close", {1L});
    EXPECT_EQ(GetText(mail, L"Subject"), L"Plans");
}

TEST_F(OutlookStore, SavingCloseOfTheInspectorSaves) {
    const auto mail = Mail();
    Invoke(mail, L"Display");
    EXPECT_EQ(outlook_.OpenInspectors(), 1u);
    Invoke(GetObject(mail, L"GetInspector"), L"Close", {0L});
    EXPECT_EQ(outlook_.OpenInspectors(), 0u);
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
}

TEST_F(OutlookStore, CopyIsAnotherSavedItem) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans"});
    const DispatchPtr copy = Invoke(mail, L"Copy");
    EXPECT_NE(GetText(copy, L"EntryID"), GetText(mail, L"EntryID"));
    EXPECT_EQ(GetText(copy, L"Subject"), L"Plans");
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(2));
}

} // namespace
} // namespace stand_ins
