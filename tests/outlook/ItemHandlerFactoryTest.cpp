#include "agent/apps/outlook/ItemHandlerFactory.h"

#include <memory>

#include "agent/apps/outlook/MeetingHandler.h"
#include "agent/apps/outlook/TaskHandler.h"
#include "foundation/Exception.h"
#include "tests/outlook/OutlookTest.h"
#include "tests/support/ExpectFailure.h"

namespace vorlek {
namespace {

using outlook_tests::OutlookTest;
using testing::ElementsAre;
using testing::IsEmpty;

class ItemHandlerFactoryTest : public OutlookTest {
protected:
    std::unique_ptr<ItemHandler> Create(const stand_ins::DispatchPtr& item) {
        log.Clear();
        return std::unique_ptr<ItemHandler>(ItemHandlerFactory().CreateItemHandler(item.GetInterfacePtr()));
    }
};

TEST_F(ItemHandlerFactoryTest, LinesBearTheNameOfTheClass) {
    Create({});
    EXPECT_TRUE(log.Lines().front().logger.ends_with(L"vorlek.ItemHandlerFactory"));
}

TEST_F(ItemHandlerFactoryTest, ANullItemGivesANullHandlerAndAWarning) {
    EXPECT_EQ(Create({}), nullptr);
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Trying to create an item wrapper..."));
    EXPECT_THAT(Warnings(), ElementsAre(L"Null was passed to CreateItemHandler"));
}

TEST_F(ItemHandlerFactoryTest, AMailGivesAMessageHandlerOnThatMail) {
    const auto mail = outlook->NewMail({.subject = L"Plans"});
    const auto handler = Create(mail);
    ASSERT_NE(dynamic_cast<MessageHandler*>(handler.get()), nullptr);
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Calling MeetingItem->QueryType", L"Calling MailItem->QueryType"));
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Trying to create an item wrapper...", L"MailItem wrapper was created successfully"));
    EXPECT_EQ(handler->GetSubject(), L"Plans");
}

TEST_F(ItemHandlerFactoryTest, AnItemOfNoKnownKindGivesANullHandler) {
    EXPECT_EQ(Create(outlook->NewPost({.subject = L"Posted"})), nullptr);
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Calling MeetingItem->QueryType", L"Calling MailItem->QueryType",
                                                L"Calling TaskItem->QueryType"));
    EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(ItemHandlerFactoryTest, AMeetingItemGivesAMeetingHandlerOnThatItem) {
    const auto meeting = outlook->NewItem({.kind = stand_ins::ItemKind::Meeting, .subject = L"Review"});
    const auto handler = Create(meeting);
    ASSERT_NE(dynamic_cast<MeetingHandler*>(handler.get()), nullptr);
    EXPECT_EQ(log.Texts(L"INFO").front(), L"Calling MeetingItem->QueryType");
    EXPECT_EQ(log.Texts(L"DEBUG").front(), L"Trying to create an item wrapper...");
    EXPECT_EQ(log.Texts(L"DEBUG").back(), L"MeetingItem wrapper was created successfully");
    EXPECT_EQ(handler->GetSubject(), L"Review");
}

TEST_F(ItemHandlerFactoryTest, AnItemThatIsBothAMeetingItemAndAMailIsAMeetingItem) {
    outlook->Failures().AnswerInterface(L"MeetingItem", __uuidof(Outlook::_MailItem));
    const auto handler = Create(outlook->NewItem({.kind = stand_ins::ItemKind::Meeting}));
    EXPECT_NE(dynamic_cast<MeetingHandler*>(handler.get()), nullptr);
}

TEST_F(ItemHandlerFactoryTest, AnAppointmentByItselfIsOfNoKnownKind) {
    EXPECT_EQ(Create(outlook->NewItem({.kind = stand_ins::ItemKind::Appointment})), nullptr);
}

TEST_F(ItemHandlerFactoryTest, ATaskRequestGivesATaskHandlerOnThatRequest) {
    const auto request = outlook->NewItem({.kind = stand_ins::ItemKind::TaskRequest, .subject = L"Paint"});
    const auto handler = Create(request);
    ASSERT_NE(dynamic_cast<TaskHandler*>(handler.get()), nullptr);
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Calling MeetingItem->QueryType", L"Calling MailItem->QueryType",
                            L"Calling TaskItem->QueryType", L"Task item class IPM.TaskRequest is 2"));
    EXPECT_EQ(log.Texts(L"DEBUG").back(), L"TaskItem wrapper was created successfully");
    EXPECT_EQ(handler->GetSubject(), L"Paint");
}

TEST_F(ItemHandlerFactoryTest, ATaskItselfIsOfNoKnownKind) {
    EXPECT_EQ(Create(outlook->NewItem({.kind = stand_ins::ItemKind::Task, .subject = L"Paint"})), nullptr);
    EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(ItemHandlerFactoryTest, ARequestThatCannotTellItsClassRaisesAndLetsGoOfTheItem) {
    const auto request = outlook->NewItem({.kind = stand_ins::ItemKind::TaskRequest});
    outlook->Failures().Fail(L"TaskRequestItem.MessageClass", E_FAIL);
    request->AddRef();
    const ULONG before = request->Release();
    EXPECT_THROW(Create(request), _com_error);
    request->AddRef();
    EXPECT_EQ(request->Release(), before);
}

TEST_F(ItemHandlerFactoryTest, AnItemThatCannotSayWhatItIsRaises) {
    const auto mail = outlook->NewMail({});
    outlook->Failures().Fail(L"MailItem.QueryInterface", E_FAIL);
    try {
        Create(mail);
        FAIL() << "Nothing was raised";
    } catch (const _com_error& failure) {
        EXPECT_EQ(failure.Error(), E_FAIL);
    }
}

} // namespace
} // namespace vorlek
