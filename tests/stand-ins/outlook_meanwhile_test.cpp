// What the user does in the middle of an inspection.
#include "stand-ins/outlook/Meanwhile.h"

#include <future>

#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class OutlookMeanwhile : public RunningOutlookTest {
protected:
    /// As an add-in's own thread reads when the item was changed.
    void ReadOnAnotherThread(const std::wstring& id) {
        const DispatchPtr session = Session();
        std::async(std::launch::async, [&] { Read(session, id); }).get();
    }
    static void Read(const DispatchPtr& session, const std::wstring& id) {
        Get(DispatchPtr(Invoke(session, L"GetItemFromID", {id.c_str()})), L"LastModificationTime");
    }
    std::wstring Saved(const ItemData& data) { return GetText(outlook_.SavedItem(data), L"EntryID"); }

    const ItemData plain_{.subject = L"Plans", .body = L"Tuesday.", .recipients = {kBen}};
};

TEST_F(OutlookMeanwhile, PlainItemIsEditedAndSavedAfterTheReading) {
    Meanwhile meanwhile(outlook_, {{Deed::Kind::Edit, L"Tuesday"}});
    const std::wstring id = Saved(plain_);
    const double before = outlook_.ItemsIn(L"Drafts").at(0).lastModificationTime;
    meanwhile.DoDue();
    EXPECT_EQ(outlook_.ItemsIn(L"Drafts").at(0).lastModificationTime, before);
    ReadOnAnotherThread(id);
    meanwhile.DoDue();
    const ItemData item = outlook_.ItemsIn(L"Drafts").at(0);
    EXPECT_EQ(item.body, L"Tuesday.\r\nOne more thing: see you on Friday.");
    EXPECT_GT(item.lastModificationTime, before);
}

TEST_F(OutlookMeanwhile, HtmlItemStaysHtml) {
    Meanwhile meanwhile(outlook_, {{Deed::Kind::Edit, L"Plans"}});
    ReadOnAnotherThread(Saved({.subject = L"Plans", .htmlBody = L"<p>Tuesday.</p>"}));
    meanwhile.DoDue();
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts").at(0).htmlBody, HasSubstr(L"see you on Friday.</p>"));
}

TEST_F(OutlookMeanwhile, EachItemIsDoneOnce) {
    Meanwhile meanwhile(outlook_, {{Deed::Kind::Edit, L""}});
    const std::wstring id = Saved(plain_);
    ReadOnAnotherThread(id);
    meanwhile.DoDue();
    const double once = outlook_.ItemsIn(L"Drafts").at(0).lastModificationTime;
    ReadOnAnotherThread(id);
    meanwhile.DoDue();
    EXPECT_EQ(outlook_.ItemsIn(L"Drafts").at(0).lastModificationTime, once);
}

TEST_F(OutlookMeanwhile, ReadingOfTheUsersOwnThreadIsNoInspection) {
    Meanwhile meanwhile(outlook_, {{Deed::Kind::Delete, L"Plans"}});
    Read(Session(), Saved(plain_));
    meanwhile.DoDue();
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
}

TEST_F(OutlookMeanwhile, OtherItemsAreLeftAlone) {
    Meanwhile meanwhile(outlook_, {{Deed::Kind::Delete, L"Budget"}});
    ReadOnAnotherThread(Saved(plain_));
    meanwhile.DoDue();
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
}

TEST_F(OutlookMeanwhile, ItemIsDeleted) {
    Meanwhile meanwhile(outlook_, {{Deed::Kind::Delete, L"Plans"}});
    ReadOnAnotherThread(Saved(plain_));
    meanwhile.DoDue();
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(outlook_.ItemsIn(L"Deleted Items"), SizeIs(1));
}

TEST_F(OutlookMeanwhile, ItemIsMoved) {
    Meanwhile meanwhile(outlook_, {{Deed::Kind::Move, L"Plans"}});
    ReadOnAnotherThread(Saved(plain_));
    meanwhile.DoDue();
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(outlook_.ItemsIn(L"Archive"), SizeIs(1));
}

TEST_F(OutlookMeanwhile, ExplorerIsClosed) {
    Meanwhile meanwhile(outlook_, {{Deed::Kind::CloseExplorer, L"Plans"}});
    ReadOnAnotherThread(Saved(plain_));
    meanwhile.DoDue();
    EXPECT_EQ(outlook_.ExplorerWindow(), nullptr);
}

} // namespace
} // namespace stand_ins
