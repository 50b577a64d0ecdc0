#include "agent/apps/outlook/CommonUtils.h"
#include "tests/outlook/MeetingTest.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::Forward;
using outlook_tests::kAccessDenied;
using outlook_tests::kResponse;
using outlook_tests::Meeting;
using outlook_tests::MeetingTest;
using outlook_tests::OfClass;
using outlook_tests::Request;
using outlook_tests::ThrowException;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::ItemData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;

class MeetingHandlerSendTest : public MeetingTest {
protected:
    /// The same as Start, with the item in the ledger as an inspection leaves it.
    void StartInspected(const ItemData& meeting) {
        Start(meeting);
        CommonUtils::AddToInspectedItems(ItemId(), AppointmentId(), nullptr);
        ClearTraces();
    }
    std::vector<std::wstring> Delivered() const {
        std::vector<std::wstring> delivered;
        for (const ItemData& each : outlook->Delivered()) {
            delivered.push_back(each.messageClass + L" " + each.subject);
        }
        return delivered;
    }
    void ExpectNothingLeft() const {
        EXPECT_THAT(outlook->Delivered(), IsEmpty());
        EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1)) << "the item stays where it is";
        EXPECT_THAT(outlook->ItemsIn(L"Deleted Items"), IsEmpty());
        EXPECT_THAT(outlook->ItemsIn(L"Calendar"), SizeIs(1));
    }
};

TEST_F(MeetingHandlerSendTest, ARequestIsSentByItsAppointmentAndThenDeleted) {
    StartInspected(Request());
    const std::wstring id = ItemId();
    handler->Send();
    EXPECT_THAT(Delivered(), ElementsAre(L"IPM.Schedule.Meeting.Request Review"));
    EXPECT_THAT(SubjectsIn(L"Calendar"), ElementsAre(L"Review"));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
    EXPECT_THAT(outlook->ItemsIn(L"Deleted Items"), IsEmpty());
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Infos(), ElementsAre(L"Sending meeting request"));
    EXPECT_THAT(Debug(), IsSupersetOf({std::wstring(L"Sending the message item using Outlook Object Model..."),
                                       std::wstring(L"Deleting the meeting item."),
                                       std::wstring(L"Moving meeting request to deleted items folder."),
                                       std::wstring(L"Deleting meeting request from deleted items folder."),
                                       L"Sent Meeting " + id}));
    EXPECT_EQ(Debug().back(), L"Sent Meeting " + id);
    EXPECT_THAT(Errors(), IsEmpty());
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Send"), 0u);
    EXPECT_TRUE(outlook->Calls().Before(L"AppointmentItem.Send", L"MeetingItem.Move"));
    EXPECT_TRUE(outlook->Calls().Before(L"MeetingItem.Move", L"MeetingItem.Delete"));
}

TEST_F(MeetingHandlerSendTest, AResponseIsSentByItsAppointmentLikeARequest) {
    StartInspected(OfClass(kResponse));
    handler->Send();
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.Send"), 1u);
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
}

TEST_F(MeetingHandlerSendTest, AForwardedMeetingIsSentItself) {
    StartInspected(Forward());
    const std::wstring id = ItemId();
    handler->Send();
    EXPECT_THAT(Delivered(), ElementsAre(L"IPM.Schedule.Meeting.Request FW: Review"));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.Send"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Move"), 0u) << "it has left by itself";
    EXPECT_THAT(Debug(), IsSupersetOf({std::wstring(L"This is a forwarded meeting - sending the item itself"),
                                       L"Sent Meeting " + id}));
}

TEST_F(MeetingHandlerSendTest, ALedgerEntryGoesBeforeTheSend) {
    for (const ItemData& meeting : {Request(), Forward()}) {
        StartInspected(meeting);
        std::vector<std::wstring> ledgerAtSend{L"not asked"};
        const auto look = [&](const stand_ins::Call&) -> std::optional<_variant_t> {
            ledgerAtSend = Ledger();
            return std::nullopt;
        };
        outlook->Failures().On(L"AppointmentItem.Send", look);
        outlook->Failures().On(L"MeetingItem.Send", look);
        handler->Send();
        EXPECT_THAT(ledgerAtSend, IsEmpty());
        outlook->Failures().Clear();
    }
}

TEST_F(MeetingHandlerSendTest, AnAppointmentThatIsNotSentLeavesTheItemWhereItIs) {
    StartInspected(Request());
    constexpr HRESULT refused = static_cast<HRESULT>(0x80040119);
    outlook->Failures().Fail(L"AppointmentItem.Send", refused);
    handler->Send();
    EXPECT_THAT(Errors(),
                ElementsAre(L"MeetingHandler::Send - failed to send the item.",
                            L"MeetingHandler::Send: Caught a com exception during Send: " + ErrorText(refused)));
    ExpectNothingLeft();
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Move"), 0u);
}

TEST_F(MeetingHandlerSendTest, EveryOtherFailureOfTheSendIsReportedAndLeavesTheItem) {
    StartInspected(Request());
    outlook->Failures().On(L"AppointmentItem.Send", ThrowStandard("lost"), 1);
    handler->Send();
    outlook->Failures().On(L"AppointmentItem.Send", ThrowException(), 1);
    handler->Send();
    outlook->Failures().On(L"AppointmentItem.Send", ThrowNumber(), 1);
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"Caught an exception: lost", L"MeetingHandler::Send - Unknown error",
                                      L"MeetingHandler::Send - Unknown error"));
    ExpectNothingLeft();
}

TEST_F(MeetingHandlerSendTest, AForwardThatIsNotSentIsReportedAndStays) {
    StartInspected(Forward());
    outlook->Failures().Fail(L"MeetingItem.Send", kAccessDenied);
    handler->Send();
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a COM exception while sending the request itself: " + ErrorText(kAccessDenied)));
    ExpectNothingLeft();
    EXPECT_THAT(Debug(), Not(Contains(L"Sent Meeting " + ItemId())));
}

TEST_F(MeetingHandlerSendTest, WithoutAppointmentAndRedemptionNothingIsSentAndTheLedgerIsLeft) {
    StartWithoutAppointment();
    CommonUtils::AddToInspectedItems(ItemId(), L"gone", nullptr);
    ClearTraces();
    handler->Send();
    EXPECT_THAT(Infos(), Contains(L"Attempting to send with RDO"));
    EXPECT_THAT(Errors(), IsSupersetOf({L"Failed to retrieve Redemption.RDOSession instance!",
                                        L"Failed to get Associated Appointment!"}));
    EXPECT_EQ(Errors().back(), L"Failed to get Associated Appointment!");
    EXPECT_THAT(outlook->Delivered(), IsEmpty());
    EXPECT_THAT(SubjectsIn(L"Drafts"), ElementsAre(L"Review"));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Debug(), Not(Contains(L"Sending the message item using Outlook Object Model...")));
}

TEST_F(MeetingHandlerSendTest, WhereOnlyRedemptionFindsTheAppointmentItSends) {
    InstallRedemption();
    StartInspected(Request());
    outlook->Failures().Answer(L"MeetingItem.GetAssociatedAppointment", stand_ins::NoObject());
    CommonUtils::RemoveFromInspectedItems(ItemId(), nullptr);
    ClearTraces();
    handler->Send();
    EXPECT_THAT(Delivered(), ElementsAre(L"IPM.Schedule.Meeting.Request Review"));
    EXPECT_THAT(Debug(), IsSupersetOf({L"Send item using RDO", L"Successfully sent item using RDO object module!"}));
    EXPECT_EQ(outlook->Calls().Count(L"Application.ItemSend"), 0u) << "Redemption sends past the event";
}

TEST_F(MeetingHandlerSendTest, BeforeOutlook2007TheAppointmentIsSentByRedemptionAndThenLeavesTheLedger) {
    InstallRedemption();
    StartInspected(Request());
    BecomeOld();
    std::vector<std::wstring> ledgerAtSend;
    outlook->Failures().On(L"RDOAppointmentItem.Send", [&](const stand_ins::Call&) -> std::optional<_variant_t> {
        ledgerAtSend = Ledger();
        return std::nullopt;
    });
    handler->Send();
    EXPECT_THAT(ledgerAtSend, ElementsAre(ItemId()));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_THAT(Delivered(), ElementsAre(L"IPM.Schedule.Meeting.Request Review"));
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.Send"), 0u);
    EXPECT_THAT(SubjectsIn(L"Drafts"), ElementsAre(L"Review")) << "only the object model's road deletes the item";
}

TEST_F(MeetingHandlerSendTest, BeforeOutlook2007WhatRedemptionDoesNotSendTheObjectModelSends) {
    InstallRedemption();
    StartInspected(Request());
    BecomeOld();
    outlook->Failures().Fail(L"RDOAppointmentItem.Send", kAccessDenied);
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"MeetingHandler::SendWithRDO_: Caught a com exception during Send: " +
                                      ErrorText(kAccessDenied)));
    EXPECT_THAT(Delivered(), ElementsAre(L"IPM.Schedule.Meeting.Request Review"));
    EXPECT_EQ(outlook->Calls().Count(L"AppointmentItem.Send"), 1u);
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), IsEmpty());
}

TEST_F(MeetingHandlerSendTest, EveryFailureOfRedemptionsSendIsReported) {
    InstallRedemption();
    StartInspected(Request());
    BecomeOld();
    outlook->Failures().Fail(L"AppointmentItem.Send", kAccessDenied);
    outlook->Failures().On(L"RDOAppointmentItem.Send", ThrowStandard("lost"), 1);
    handler->Send();
    outlook->Failures().On(L"RDOAppointmentItem.Send", ThrowNumber(), 1);
    handler->Send();
    EXPECT_THAT(Errors(), IsSupersetOf({L"MeetingHandler::SendWithRDO_: Caught a STD exception: lost",
                                        L"MessageHandler::Send (MeetingHandler::SendWithRDO_) - Unknown error"}));
    ExpectNothingLeft();
}

TEST_F(MeetingHandlerSendTest, AHandlerWithoutAnItemSendsNothing) {
    Meeting on(Outlook::_MeetingItemPtr{});
    log.Clear();
    on.Send();
    EXPECT_EQ(Errors().back(), L"MeetingHandler::Send: Caught a com exception during Send: " + ErrorText(E_POINTER));
}

TEST_F(MeetingHandlerSendTest, WithoutADeletedItemsFolderTheItemStays) {
    StartInspected(Request());
    outlook->Failures().Answer(L"NameSpace.GetDefaultFolder", stand_ins::NoObject());
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Deleted Items folder.",
                                      L"Failed to to delete Meeting item - no deleted item folder was found."));
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_THAT(SubjectsIn(L"Drafts"), ElementsAre(L"Review"));
    EXPECT_EQ(Debug().back(), L"Sent Meeting " + ItemId());
}

TEST_F(MeetingHandlerSendTest, WithoutASessionTheItemStays) {
    StartInspected(Request());
    outlook->Failures().Answer(L"Application.Session", stand_ins::NoObject());
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Outlook session.",
                                      L"Failed to to delete Meeting item - no deleted item folder was found."));
}

TEST_F(MeetingHandlerSendTest, AnItemThatDoesNotMoveIsReported) {
    StartInspected(Request());
    outlook->Failures().Answer(L"MeetingItem.Move", stand_ins::NoObject());
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to move the Meeting item to Deleted Items folder"));
    EXPECT_EQ(outlook->Calls().Count(L"MeetingItem.Delete"), 0u);
}

TEST_F(MeetingHandlerSendTest, EveryFailureOfTheMoveIsReported) {
    StartInspected(Request());
    outlook->Failures().Fail(L"MeetingItem.Move", kAccessDenied, 1);
    handler->Send();
    outlook->Failures().On(L"MeetingItem.Move", ThrowStandard("lost"), 1);
    handler->Send();
    outlook->Failures().On(L"MeetingItem.Move", ThrowNumber(), 1);
    handler->Send();
    EXPECT_THAT(Errors(),
                ElementsAre(L"Caught a com exception during attempt to delete item: " + ErrorText(kAccessDenied),
                            L"Caught an exception: lost", L"Unknown error"));
    EXPECT_EQ(Debug().back(), L"Sent Meeting " + ItemId());
}

TEST_F(MeetingHandlerSendTest, AMovedItemThatIsNotFoundAgainStaysInDeletedItems) {
    constexpr wchar_t notFound[] = L"Failed to find the Meeting item in the Deleted Items folder";
    constexpr wchar_t failed[] = L"Caught an exception in outlookSession->GetItemFromID : ";
    StartInspected(Request());
    outlook->Failures().Answer(L"NameSpace.GetItemFromID", stand_ins::NoObject());
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(notFound));
    EXPECT_THAT(SubjectsIn(L"Deleted Items"), ElementsAre(L"Review"));
    outlook->Failures().Clear();
    StartInspected(Request());
    outlook->Failures().Fail(L"NameSpace.GetItemFromID", kAccessDenied);
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(failed + ErrorText(kAccessDenied), notFound));
    outlook->Failures().Clear();
    StartInspected(Request());
    outlook->Failures().On(L"NameSpace.GetItemFromID", ThrowStandard("lost"));
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(std::wstring(failed) + L"lost", notFound));
}

TEST_F(MeetingHandlerSendTest, AMovedItemIsLookedForWithoutASessionInVain) {
    StartInspected(Request());
    outlook->Failures().Answer(L"Application.Session", stand_ins::NoObject(), 2);
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Outlook session.",
                                      L"Failed to find the Meeting item in the Deleted Items folder"));
}

TEST_F(MeetingHandlerSendTest, AnItemThatIsNotDeletedStaysInDeletedItems) {
    StartInspected(Request());
    outlook->Failures().Fail(L"MeetingItem.Delete", kAccessDenied);
    handler->Send();
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to delete the Meeting item from Deleted Items folder"));
    EXPECT_THAT(SubjectsIn(L"Deleted Items"), ElementsAre(L"Review"));
}

} // namespace
} // namespace vorlek
