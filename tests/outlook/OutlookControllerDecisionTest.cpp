// What the UI thread makes of the agent's answer: the test for changes, the send, the way back to the screen.
#include "foundation/RegistryKey.h"
#include "tests/outlook/AsyncTest.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/FailingLog.h"
#include "tests/support/ReplacedImport.h"

namespace vorlek {
namespace {

using outlook_tests::AsyncTest;
using outlook_tests::kMail;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using MessageBoxImport = test_support::ReplacedImport<"MessageBoxW", decltype(MessageBoxW)>;

const std::wstring kNotBlocked = L"The email wasn't blocked - make sure it wasn't modified.";
const std::wstring kModified = L"The mail item was modified during the inspection!!";

class ModificationTest : public AsyncTest {};

TEST_F(ModificationTest, AnItemSavedNoLaterIsUnchanged) {
    const MessageBoxImport box([](HWND, const wchar_t*, const wchar_t*, UINT) { return IDOK; });
    EXPECT_FALSE(OutlookControllerPeer::CheckModified(45000.5, 45000.5));
    EXPECT_FALSE(OutlookControllerPeer::CheckModified(45000.5, 45000.25));
    EXPECT_FALSE(OutlookControllerPeer::CheckModified(45000.5, 0.0)); // the second reading failed
    EXPECT_EQ(box.Calls(), 0);
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(kNotBlocked, kNotBlocked, kNotBlocked));
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(ModificationTest, AFirstReadingThatFailedCountsAsUnchanged) {
    const MessageBoxImport box([](HWND, const wchar_t*, const wchar_t*, UINT) { return IDOK; });
    EXPECT_FALSE(OutlookControllerPeer::CheckModified(0.0, 45000.5));
    EXPECT_FALSE(OutlookControllerPeer::CheckModified(0.0, 0.0));
    EXPECT_EQ(box.Calls(), 0);
}

TEST_F(ModificationTest, AnItemSavedLaterIsToldToItsUser) {
    const MessageBoxImport box([](HWND owner, const wchar_t* text, const wchar_t* caption, UINT flags) {
        EXPECT_EQ(owner, nullptr);
        EXPECT_STREQ(text, L"The mail item was modified during inspection and was not sent.");
        EXPECT_STREQ(caption, L"Microsoft Outlook");
        EXPECT_EQ(flags, 48u);
        return IDOK;
    });
    EXPECT_TRUE(OutlookControllerPeer::CheckModified(45000.5, std::nextafter(45000.5, 50000.0)));
    EXPECT_EQ(box.Calls(), 1);
    EXPECT_THAT(Errors(), ElementsAre(kModified));
}

TEST_F(ModificationTest, ADateBeforeTheEpochIsADateLikeAnyOther) {
    const MessageBoxImport box([](HWND, const wchar_t*, const wchar_t*, UINT) { return IDOK; });
    EXPECT_TRUE(OutlookControllerPeer::CheckModified(-2.0, -1.0));
}

TEST_F(ModificationTest, ATestThatFailsCountsAsUnchanged) {
    const MessageBoxImport box([](HWND, const wchar_t*, const wchar_t*, UINT) { return IDOK; });
    const std::function<void()> failures[] = {[] { throw IOException(L"", 0, L"", L""); },
                                              [] { throw _com_error(E_FAIL); }, [] { throw std::runtime_error(""); },
                                              [] { throw 42; }};
    for (const auto& raise : failures) {
        log.Clear();
        const test_support::FailingLog failing(kModified, raise);
        EXPECT_FALSE(OutlookControllerPeer::CheckModified(1.0, 2.0));
        EXPECT_EQ(Errors().back(), L"Could not check if item was modified - returning false");
    }
    EXPECT_EQ(box.Calls(), 0);
}

/// What is done on the UI thread, called as the window procedure calls it.
class SendingTest : public AsyncTest {
protected:
    /// An item that waits for its verdict.
    std::wstring Waiting(const stand_ins::ItemData& data = kMail) {
        std::wstring id = stand_ins::GetText(outlook->SavedItem(data), L"EntryID");
        CommonUtils::AddToInspectedItems(id, id, nullptr);
        outlook->Calls().Clear();
        log.Clear();
        return id;
    }
    void SendMail(const std::wstring& id, const std::wstring& decision = L"<decision result=\"1\" />") {
        AsyncProcessingParams params(&controller, id, nullptr);
        params.SetDecision(std::make_shared<InspectionDecision>(decision));
        peer.SendMail(params);
    }
    void OpenInspector(const std::wstring& id) {
        peer.OpenInspector(new AsyncProcessingParams(&controller, id, nullptr));
    }

    static std::wstring Labels(const std::wstring& subject, const std::wstring& file = {}) {
        return L"<decision result=\"1\"><DataModifications><EmailSubject value=\"" + subject + L"\" />" +
               (file.empty() ? std::wstring()
                             : L"<EmailAttachments><Attachment path=\"" + file +
                                   L"\" displayName=\"notice.txt\" /></EmailAttachments>") +
               L"</DataModifications></decision>";
    }

    const stand_ins::Agent agent; ///< allows everything
};

TEST_F(SendingTest, TheMailLeavesAndTheLedgerWithIt) {
    const std::wstring id = Waiting();
    SendMail(id);
    EXPECT_THAT(outlook->Delivered(), SizeIs(1));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_TRUE(log.Has(L"INFO", L"Sending (non-blocked) item." + id));
    EXPECT_EQ(log.Texts(L"INFO").back(), L"after handler->send. Item was sent.");
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Subject put"), 0u);
    EXPECT_EQ(outlook->Calls().Count(L"Attachments.Remove"), 0u);
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(SendingTest, TheMemoryIsThereWhenTheEventComesAndSpentAfterwards) {
    const std::wstring id = Waiting();
    bool remembered = false;
    outlook->Failures().On(L"MailItem.Send", [&](const stand_ins::Call&) {
        remembered = peer.Remembers(id);
        return std::optional<_variant_t>();
    });
    SendMail(id);
    EXPECT_TRUE(remembered);
    EXPECT_FALSE(peer.Remembers(id));
    EXPECT_TRUE(log.Has(L"INFO", L"InspectItemBeforeSending:success on async sentbyplugin.returning false"));
    EXPECT_THAT(Methods(agent), ElementsAre(L"GetExecutionMode")); // no second inspection
}

TEST_F(SendingTest, TheItemLeavesTheLedgerBeforeItIsSent) {
    const std::wstring id = Waiting();
    std::size_t listed = 1;
    outlook->Failures().On(L"MailItem.Send", [&](const stand_ins::Call&) {
        listed = Ledger().size();
        return std::optional<_variant_t>();
    });
    SendMail(id);
    EXPECT_EQ(listed, 0u);
}

TEST_F(SendingTest, LabelsComeFirstThenAttachmentsThenTheMemoryThenTheSend) {
    const std::wstring id = Waiting();
    bool early = false;
    for (const wchar_t* member : {L"MailItem.Subject put", L"Attachments.Add"}) {
        outlook->Failures().On(member, [&](const stand_ins::Call&) {
            early |= peer.Remembers(id);
            return std::optional<_variant_t>();
        });
    }
    SendMail(id, Labels(L"[Secret] Plans", File(L"new.bin", "harmless")));
    const auto& calls = outlook->Calls();
    EXPECT_TRUE(calls.Before(L"MailItem.Subject put", L"Attachments.Remove"));
    EXPECT_TRUE(calls.Before(L"Attachments.Add", L"MailItem.Send"));
    EXPECT_FALSE(early);
    EXPECT_EQ(outlook->Delivered().at(0).subject, L"[Secret] Plans");
    EXPECT_EQ(outlook->Delivered().at(0).attachments.at(0).displayName, L"notice.txt");
}

TEST_F(SendingTest, ALabelAloneLeavesTheAttachmentsAlone) {
    SendMail(Waiting(), Labels(L"[Secret] Plans"));
    EXPECT_EQ(outlook->Calls().Count(L"Attachments.Remove"), 0u);
    EXPECT_EQ(outlook->Delivered().at(0).subject, L"[Secret] Plans");
}

TEST_F(SendingTest, ALabelThatFailsDoesNotKeepTheMailBack) {
    outlook->Failures().Fail(L"MailItem.Subject put", E_ACCESSDENIED);
    SendMail(Waiting(), Labels(L"[Secret] Plans"));
    EXPECT_EQ(outlook->Delivered().at(0).subject, L"Plans");
    EXPECT_THAT(Errors(), ElementsAre(L"Unknown error while applying data label."));
}

TEST_F(SendingTest, AttachmentsThatCannotBeReplacedKeepTheMailBackAndListed) {
    const std::wstring id = Waiting();
    outlook->Failures().Fail(L"Attachments.Add", E_ACCESSDENIED);
    test_support::ExpectFailure<Exception>([&] { SendMail(id, Labels(L"Plans", File(L"new.bin", "harmless"))); },
                                           L"vorlek::OutlookController::SendMail_", L"Failed to replace attacments!");
    EXPECT_FALSE(peer.Remembers(id));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Send"), 0u);
    EXPECT_THAT(Ledger(), ElementsAre(id));
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_THAT(Errors(), Contains(L"Failed to override attachments - cannot send the email"));
}

TEST_F(SendingTest, AnItemOfAnotherKindIsNotSent) {
    const std::wstring id = Waiting({.kind = stand_ins::ItemKind::Post, .subject = L"Posted"});
    SendMail(id);
    EXPECT_THAT(Errors(), ElementsAre(L"Could not send the mail item - NULL handler."));
    EXPECT_THAT(Ledger(), ElementsAre(id));
}

TEST_F(SendingTest, AnItemThatIsNowhereRaisesAndStaysListed) {
    CommonUtils::AddToInspectedItems(L"00000000ABCD", L"00000000ABCD", nullptr);
    EXPECT_THROW(SendMail(L"00000000ABCD"), Exception);
    EXPECT_THAT(Ledger(), ElementsAre(L"00000000ABCD"));
}

TEST_F(SendingTest, ABlockedItemIsShownNotModalAndLeavesTheLedger) {
    const std::wstring id = Waiting();
    OpenInspector(id);
    EXPECT_TRUE(outlook->IsOpen(id));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_EQ(log.Texts(L"INFO").front(), L"Opening (blocked) item.");
    std::vector<std::wstring> shown;
    for (const auto& call : outlook->Calls().All()) {
        if (call.member == L"MailItem.Display") {
            shown.push_back(call.ToString());
        }
    }
    EXPECT_THAT(shown, ElementsAre(L"MailItem.Display(0)"));
}

TEST_F(SendingTest, ABlockedItemOfAnotherKindIsNotShownButLeavesTheLedger) {
    const std::wstring id = Waiting({.kind = stand_ins::ItemKind::Post, .subject = L"Posted"});
    OpenInspector(id);
    EXPECT_THAT(Warnings(), ElementsAre(L"Couldn't find the outlook item which needs to be opened"));
    EXPECT_THAT(Ledger(), IsEmpty());
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
}

TEST_F(SendingTest, ABlockedItemThatIsNowhereRaisesAndStaysListed) {
    CommonUtils::AddToInspectedItems(L"00000000ABCD", L"00000000ABCD", nullptr);
    auto* const params = new AsyncProcessingParams(&controller, L"00000000ABCD", nullptr);
    EXPECT_THROW(peer.OpenInspector(params), Exception);
    EXPECT_THAT(Ledger(), ElementsAre(L"00000000ABCD"));
}

TEST_F(SendingTest, ABlockedItemThatCannotBeShownRaisesAndStaysListed) {
    const std::wstring id = Waiting();
    outlook->Failures().Fail(L"MailItem.Display", E_FAIL);
    EXPECT_THROW(OpenInspector(id), _com_error);
    EXPECT_THAT(Ledger(), ElementsAre(id));
}

TEST_F(SendingTest, TheParametersOfABlockedItemAreGoneOnEveryWayOut) {
    const std::wstring id = Waiting();
    auto* const shown = new AsyncProcessingParams(&controller, id, nullptr);
    const auto number = reinterpret_cast<WPARAM>(shown);
    peer.OpenInspector(shown);
    EXPECT_EQ(AsyncProcessingParams::From(number), nullptr);
    auto* const lost = new AsyncProcessingParams(&controller, L"00000000ABCD", nullptr);
    const auto lostNumber = reinterpret_cast<WPARAM>(lost);
    EXPECT_THROW(peer.OpenInspector(lost), Exception);
    EXPECT_EQ(AsyncProcessingParams::From(lostNumber), nullptr);
}

} // namespace
} // namespace vorlek
