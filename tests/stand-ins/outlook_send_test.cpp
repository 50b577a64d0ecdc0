// What becomes of an item that is sent.
#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Outcome = SendResult::Outcome;

constexpr HRESULT kObjectDeleted = static_cast<HRESULT>(0x8004010A);
constexpr HRESULT kNoRecipients = static_cast<HRESULT>(0x80040607);
constexpr HRESULT kExtendedError = static_cast<HRESULT>(0x80040119);

class OutlookSend : public RunningOutlookTest {};

TEST_F(OutlookSend, ItemThatNobodyStopsIsDeliveredAndMovedToSentItems) {
    const SendResult result = outlook_.Send(Mail());
    EXPECT_EQ(result.outcome, Outcome::Sent);
    EXPECT_EQ(result.entryId, L"");
    const auto delivered = outlook_.Delivered();
    ASSERT_THAT(delivered, SizeIs(1));
    EXPECT_EQ(delivered[0].subject, L"Plans");
    EXPECT_EQ(delivered[0].recipients.at(0).address, L"ben@example.com");
    ASSERT_THAT(outlook_.ItemsIn(L"Sent Items"), SizeIs(1));
    EXPECT_TRUE(outlook_.ItemsIn(L"Sent Items")[0].sent);
    EXPECT_EQ(outlook_.OpenInspectors(), 0u);
}

TEST_F(OutlookSend, SavedItemLeavesDraftsAndItsCopyHasAnotherEntryId) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans", .recipients = {kBen}});
    const std::wstring before = GetText(mail, L"EntryID");
    outlook_.Send(mail);
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    ASSERT_THAT(outlook_.ItemsIn(L"Sent Items"), SizeIs(1));
    EXPECT_NE(outlook_.ItemsIn(L"Sent Items")[0].entryId, before);
    EXPECT_EQ(ErrorOf([&] { Invoke(Session(), L"GetItemFromID", {before.c_str()}); }),
              static_cast<HRESULT>(0x8004010F));
}

TEST_F(OutlookSend, SinkSeesTheItemOnceAndMayChangeIt) {
    Sink sink(outlook_.Application(), [](IDispatch* item) {
        Put(item, L"Subject", L"[Internal] Plans");
        return false;
    });
    ASSERT_EQ(sink.advised, S_OK);
    EXPECT_EQ(outlook_.Send(Mail()).outcome, Outcome::Sent);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_EQ(outlook_.Delivered().at(0).subject, L"[Internal] Plans");
}

TEST_F(OutlookSend, CancelLeavesTheItemInDraftsAndItsWindowOpen) {
    Sink sink(outlook_.Application(), [](IDispatch*) { return true; });
    const auto mail = Mail();
    const SendResult result = outlook_.Send(mail);
    EXPECT_EQ(result.outcome, Outcome::Stopped);
    EXPECT_THAT(outlook_.Delivered(), IsEmpty());
    ASSERT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_EQ(outlook_.ItemsIn(L"Drafts")[0].entryId, result.entryId);
    EXPECT_TRUE(outlook_.IsOpen(result.entryId));
    EXPECT_EQ(GetText(mail, L"Subject"), L"Plans");
    EXPECT_FALSE(Outlook::HasLeft(result));
}

TEST_F(OutlookSend, EverySinkIsAskedAndTheLastWordCounts) {
    Sink first(outlook_.Application(), [](IDispatch*) { return true; });
    Sink second(outlook_.Application(), [](IDispatch*) { return false; });
    EXPECT_EQ(outlook_.Send(Mail()).outcome, Outcome::Sent);
    EXPECT_EQ(first.calls + second.calls, 2);
}

TEST_F(OutlookSend, UnadvisedSinkIsNotAskedAndReleased) {
    Sink sink(outlook_.Application(), [](IDispatch*) { return true; });
    EXPECT_EQ(sink.references, 2u);
    sink.Unadvise();
    EXPECT_EQ(sink.references, 1u);
    EXPECT_EQ(outlook_.Send(Mail()).outcome, Outcome::Sent);
    EXPECT_EQ(sink.calls, 0);
}

TEST_F(OutlookSend, EndReleasesSinks) {
    std::optional<Outlook> other(std::in_place, OutlookOptions{.profile = folder_ / L"other"});
    Sink sink(other->Application(), [](IDispatch*) { return true; });
    EXPECT_EQ(sink.references, 2u);
    other.reset();
    EXPECT_EQ(sink.references, 1u);
}

TEST_F(OutlookSend, ProgramsSendRaisesTheEventTooAndHearsOfACancel) {
    bool cancel = true;
    Sink sink(outlook_.Application(), [&](IDispatch*) { return cancel; });
    const auto mail = Mail();
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Send"); }), E_ABORT);
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
    cancel = false;
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Send"); }), S_OK);
    EXPECT_EQ(sink.calls, 2);
    EXPECT_THAT(outlook_.Delivered(), SizeIs(1));
}

TEST_F(OutlookSend, SinkMayCloseTheItemAndSendItLater) {
    bool inHand = false;
    Sink sink(outlook_.Application(), [&](IDispatch* item) {
        if (!inHand) {
            Invoke(item, L"Close", {0L});
        }
        return !inHand;
    });
    const SendResult result = outlook_.Send(Mail());
    EXPECT_EQ(result.outcome, Outcome::Stopped);
    EXPECT_EQ(outlook_.OpenInspectors(), 0u);
    inHand = true;
    Invoke(GetObject(Invoke(Session(), L"GetItemFromID", {result.entryId.c_str()}), L"Session"), L"GetDefaultFolder",
           {5L});
    Invoke(DispatchPtr(Invoke(Session(), L"GetItemFromID", {result.entryId.c_str()})), L"Send");
    EXPECT_TRUE(Outlook::HasLeft(result));
    EXPECT_THAT(outlook_.Delivered(), SizeIs(1));
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
}

TEST_F(OutlookSend, ItemWithoutRecipientsFailsAfterTheEventAndIsKept) {
    Sink sink(outlook_.Application(), [](IDispatch*) { return false; });
    const SendResult result = outlook_.Send(outlook_.NewMail({.subject = L"Plans"}));
    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.error, kNoRecipients);
    EXPECT_EQ(result.reason, L"There must be at least one name or contact group in the To, Cc, or Bcc box.");
    EXPECT_EQ(sink.calls, 1);
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
}

TEST_F(OutlookSend, UnresolvedRecipientFails) {
    const SendResult result =
        outlook_.Send(outlook_.NewMail({.subject = L"Plans", .recipients = {{.name = L"Nobody", .resolved = false}}}));
    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.reason, L"Outlook does not recognize one or more names.");
}

TEST_F(OutlookSend, TransportThatFailsLeavesTheItemInDrafts) {
    outlook_.Failures().Fail(L"Transport.Submit", kExtendedError);
    const SendResult result = outlook_.Send(Mail());
    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.error, kExtendedError);
    EXPECT_THAT(outlook_.Delivered(), IsEmpty());
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
}

TEST_F(OutlookSend, SubmissionIsOverWhenTheItemHasLeft) {
    const auto mail = Mail();
    std::vector<size_t> counts;
    const auto count = [&] {
        counts.push_back(outlook_.Delivered().size());
        counts.push_back(outlook_.ItemsIn(L"Drafts").size());
    };
    Invoke(mail, L"Save");
    outlook_.Failures().On(L"Transport.Submit", [&](const Call&) { return (count(), std::optional<_variant_t>()); });
    outlook_.Failures().After(L"Transport.Submit", count);
    outlook_.Send(mail);
    EXPECT_THAT(counts, testing::ElementsAre(0u, 1u, 1u, 0u));
}

TEST_F(OutlookSend, SentItemIsDead) {
    const auto mail = Mail();
    const auto attachments = GetObject(mail, L"Attachments");
    outlook_.Send(mail);
    EXPECT_EQ(ErrorOf([&] { GetText(mail, L"Subject"); }), kObjectDeleted);
    EXPECT_EQ(ErrorOf([&] { Put(mail, L"Subject", L"x"); }), kObjectDeleted);
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Send"); }), kObjectDeleted);
    EXPECT_EQ(ErrorOf([&] { GetNumber(attachments, L"Count"); }), kObjectDeleted);
    EXPECT_EQ(outlook_.Send(mail).error, kObjectDeleted);
}

TEST_F(OutlookSend, EventComesBeforeTheSubmission) {
    outlook_.Send(Mail());
    EXPECT_THAT(outlook_.Calls().Members(), ElementsAre(L"Application.ItemSend", L"Transport.Submit"));
}

TEST_F(OutlookSend, WhatIsNoItemIsRefused) {
    EXPECT_THROW(outlook_.Send(outlook_.Application()), std::invalid_argument);
    EXPECT_THROW(outlook_.Send({}), std::invalid_argument);
}

TEST_F(OutlookSend, RaisedEventAnswersWithCancel) {
    EXPECT_FALSE(outlook_.RaiseItemSend(nullptr));
    EXPECT_TRUE(outlook_.RaiseItemSend(nullptr, true));
    Sink sink(outlook_.Application(), [](IDispatch* item) { return item == nullptr; });
    EXPECT_TRUE(outlook_.RaiseItemSend(nullptr));
}

} // namespace
} // namespace stand_ins
