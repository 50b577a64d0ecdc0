// Outlook's windows, and who may call it while its user works in them.
#include <future>

#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

constexpr wchar_t kWindowClass[] = L"rctrl_renwnd32";
constexpr wchar_t kInspectorTitle[] = L"Plans - Message (Plain Text) ";

class OutlookWindows : public RunningOutlookTest {
protected:
    DispatchPtr Explorer() { return DispatchPtr(Invoke(outlook_.Application(), L"ActiveExplorer")); }
    static HWND InspectorWindow() { return FindWindowW(kWindowClass, kInspectorTitle); }
};

TEST_F(OutlookWindows, ExplorerIsThereFromTheStart) {
    EXPECT_EQ(FindWindowW(kWindowClass, outlook_.Caption().c_str()), outlook_.ExplorerWindow());
    EXPECT_EQ(GetText(Explorer(), L"Caption"), outlook_.Caption());
}

TEST_F(OutlookWindows, ExplorerThatIsClosedIsActiveNoMore) {
    const HWND window = outlook_.ExplorerWindow();
    outlook_.CloseExplorer();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(outlook_.ExplorerWindow(), nullptr);
    EXPECT_FALSE(Explorer());
    outlook_.OpenExplorer();
    EXPECT_NE(outlook_.ExplorerWindow(), nullptr);
    EXPECT_TRUE(Explorer());
}

TEST_F(OutlookWindows, ExplorerThatIsOpenIsNotOpenedAgain) {
    const HWND window = outlook_.ExplorerWindow();
    outlook_.OpenExplorer();
    EXPECT_EQ(outlook_.ExplorerWindow(), window);
}

TEST_F(OutlookWindows, ExplorerMayBeOpenedDisabled) {
    outlook_.CloseExplorer();
    outlook_.OpenExplorer(false);
    EXPECT_FALSE(IsWindowEnabled(outlook_.ExplorerWindow()));
}

TEST_F(OutlookWindows, UserClosesTheExplorer) {
    PostMessageW(outlook_.ExplorerWindow(), WM_CLOSE, 0, 0);
    Outlook::HandleMessages();
    EXPECT_EQ(outlook_.ExplorerWindow(), nullptr);
    EXPECT_FALSE(Explorer());
}

TEST_F(OutlookWindows, ItemOnTheScreenHasAWindowWithTheInspectorsCaption) {
    const auto mail = Mail();
    EXPECT_EQ(InspectorWindow(), nullptr);
    Invoke(mail, L"Display");
    EXPECT_NE(InspectorWindow(), nullptr);
    EXPECT_EQ(GetText(GetObject(mail, L"GetInspector"), L"Caption"), kInspectorTitle);
    Invoke(mail, L"Close", {0L});
    EXPECT_EQ(InspectorWindow(), nullptr);
}

TEST_F(OutlookWindows, UserClosesTheItem) {
    const auto mail = Mail();
    Invoke(mail, L"Display");
    PostMessageW(InspectorWindow(), WM_CLOSE, 0, 0);
    Outlook::HandleMessages();
    EXPECT_EQ(InspectorWindow(), nullptr);
    EXPECT_EQ(outlook_.OpenInspectors(), 0u);
    EXPECT_EQ(GetText(mail, L"Subject"), L"Plans");
}

TEST_F(OutlookWindows, SentItemsWindowIsGone) {
    const auto mail = Mail();
    Invoke(mail, L"Display");
    outlook_.Send(mail);
    EXPECT_EQ(InspectorWindow(), nullptr);
}

TEST_F(OutlookWindows, OtherThreadsReadItemsWhileTheUserWritesThem) {
    const auto mail = outlook_.SavedItem({.subject = L"Plans", .recipients = {kBen}});
    const std::wstring id = GetText(mail, L"EntryID");
    const DispatchPtr session = Session();
    std::atomic<bool> over = false;
    const auto read = [&] {
        double last = 0;
        while (!over) {
            const DispatchPtr found(Invoke(session, L"GetItemFromID", {id.c_str()}));
            const double time = Get(found, L"LastModificationTime");
            EXPECT_GE(time, last);
            last = time;
        }
        return last;
    };
    auto first = std::async(std::launch::async, read);
    auto second = std::async(std::launch::async, read);
    for (int i = 0; i < 50; ++i) {
        Put(mail, L"Body", std::to_wstring(i).c_str());
        Invoke(mail, L"Save");
        outlook_.Send(outlook_.NewMail({.recipients = {kBen}}));
    }
    over = true;
    EXPECT_GT(first.get(), 0);
    EXPECT_GT(second.get(), 0);
}

TEST_F(OutlookTest, ProgramsSendMayMeetNothingWhenTheEventIsCancelled) {
    Outlook outlook({.profile = folder_.Path(), .cancelledSendError = S_OK});
    Sink sink(outlook.Application(), [](IDispatch*) { return true; });
    const auto mail = outlook.NewMail({.recipients = {kBen}});
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Send"); }), S_OK);
    EXPECT_THAT(outlook.Delivered(), testing::IsEmpty());
}

TEST_F(OutlookWindows, ItemThatWasMovedOrDeletedIsGone) {
    Sink sink(outlook_.Application(), [](IDispatch*) { return true; });
    const auto mail = Mail();
    const SendResult result = outlook_.Send(mail);
    EXPECT_FALSE(Outlook::IsGone(result));
    Invoke(mail, L"Delete");
    EXPECT_TRUE(Outlook::IsGone(result));
}

TEST_F(OutlookWindows, ItemThatHasLeftIsNotGone) {
    EXPECT_FALSE(Outlook::IsGone(outlook_.Send(Mail())));
}

/// Before version 2007, with an editor.
class OldOutlookWindows : public OutlookTest {
protected:
    std::unique_ptr<Outlook> OutlookWith(Editor editor, const wchar_t* version = L"11.0") {
        return std::make_unique<Outlook>(
            OutlookOptions{.profile = folder_.Path(), .version = version, .editor = editor});
    }
    static bool IsWordMail(const DispatchPtr& item) { return GetBool(GetObject(item, L"GetInspector"), L"IsWordMail"); }
    static HWND WordWindow() { return FindWindowW(L"OpusApp", kInspectorTitle); }
};

TEST_F(OldOutlookWindows, ItemWrittenInWordHasWordsWindowWhichSavesAndCloses) {
    const auto outlook = OutlookWith(Editor::Word);
    const auto mail = outlook->NewMail({.subject = L"Plans"});
    Invoke(mail, L"Display");
    EXPECT_NE(WordWindow(), nullptr);
    EXPECT_EQ(FindWindowW(kWindowClass, kInspectorTitle), nullptr);
    PostMessageW(WordWindow(), WM_CLOSE, 2, 0);
    Outlook::HandleMessages();
    EXPECT_EQ(WordWindow(), nullptr);
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
    EXPECT_EQ(outlook->ItemsIn(L"Drafts").size(), 1u);
}

TEST_F(OldOutlookWindows, ItemThatCannotBeSavedStaysOpenInWord) {
    const auto outlook = OutlookWith(Editor::Word);
    const auto mail = outlook->NewMail({.subject = L"Plans"});
    Invoke(mail, L"Display");
    std::filesystem::remove_all(folder_ / L"Stores");
    PostMessageW(WordWindow(), WM_CLOSE, 2, 0);
    Outlook::HandleMessages();
    EXPECT_EQ(outlook->OpenInspectors(), 1u);
}

TEST_F(OldOutlookWindows, ItemWrittenInOutlookIsNotSavedWhenItsUserClosesIt) {
    const auto outlook = OutlookWith(Editor::Outlook);
    Invoke(outlook->NewMail({.subject = L"Plans"}), L"Display");
    PostMessageW(FindWindowW(kWindowClass, kInspectorTitle), WM_CLOSE, 0, 0);
    Outlook::HandleMessages();
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
    EXPECT_TRUE(outlook->ItemsIn(L"Drafts").empty());
}

TEST_F(OldOutlookWindows, WordMayShowAnotherTitle) {
    const auto outlook = OutlookWith(Editor::WordUnderAnotherTitle);
    Invoke(outlook->NewMail({.subject = L"Plans"}), L"Display");
    EXPECT_EQ(WordWindow(), nullptr);
    EXPECT_NE(FindWindowW(L"OpusApp", L"Document1 - Microsoft Word"), nullptr);
}

TEST_F(OldOutlookWindows, MailIsWordMailByTheUsersChoiceBefore2007AndAlwaysLater) {
    EXPECT_FALSE(IsWordMail(OutlookWith(Editor::Outlook)->NewMail({})));
    EXPECT_TRUE(IsWordMail(OutlookWith(Editor::Word)->NewMail({})));
    EXPECT_TRUE(IsWordMail(OutlookWith(Editor::Outlook, L"12.0")->NewMail({})));
}

TEST_F(OldOutlookWindows, Outlook2007HasNoWindowOfWords) {
    const auto outlook = OutlookWith(Editor::Word, L"12.0");
    Invoke(outlook->NewMail({.subject = L"Plans"}), L"Display");
    EXPECT_EQ(WordWindow(), nullptr);
    EXPECT_NE(FindWindowW(kWindowClass, kInspectorTitle), nullptr);
}

TEST_F(OldOutlookWindows, CloseThatWasPostedToWordIsDoneWhenTheSendIs) {
    const auto outlook = OutlookWith(Editor::Word);
    Sink sink(outlook->Application(), [](IDispatch*) {
        PostMessageW(WordWindow(), WM_CLOSE, 2, 0);
        return true;
    });
    outlook->Send(outlook->NewMail({.subject = L"Plans"}));
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
    sink.Unadvise();
}

} // namespace
} // namespace stand_ins
