// The explorer's window: found once, subclassed once, and the messages of the workers through it.
#include <future>

#include "tests/outlook/OutlookControllerTest.h"
#include "tests/support/FailingLog.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::kMail;
using outlook_tests::OutlookControllerTest;
using testing::ElementsAre;
using testing::IsEmpty;

/// What the window's own procedure was asked, while it stands in.
struct WindowCall {
    UINT message;
    WPARAM first;
    LPARAM second;
};
std::vector<WindowCall> seen;
constexpr LRESULT kAnswer = 4711;

LRESULT CALLBACK Ours(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message >= WM_USER) {
        seen.push_back({message, first, second});
        return kAnswer;
    }
    return DefWindowProcW(window, message, first, second);
}

LONG_PTR ProcedureOf(HWND window) {
    return GetWindowLongPtrW(window, GWLP_WNDPROC);
}

class ExplorerWindowTest : public OutlookControllerTest {
protected:
    ExplorerWindowTest() {
        controller.InitApplication(App());
        peer.SetEmbedded(false);
        log.Clear();
    }

    /// Subclasses an explorer whose own procedure is the one above.
    HWND Subclass() {
        const HWND window = outlook->ExplorerWindow();
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Ours));
        peer.Subclass();
        seen.clear();
        log.Clear();
        return window;
    }
    static WPARAM NumberOf(const AsyncProcessingParams& params) { return reinterpret_cast<WPARAM>(&params); }
    std::wstring Saved() { return stand_ins::GetText(outlook->SavedItem(kMail), L"EntryID"); }
};

TEST_F(ExplorerWindowTest, AWindowWhoseTitleBeginsWithTheCaptionIsTheExplorersToo) {
    SetWindowTextW(outlook->ExplorerWindow(), (outlook->Caption() + L" (1 new)").c_str());
    EXPECT_FALSE(peer.IsEmbedded());
    EXPECT_EQ(OutlookControllerPeer::FoundWindow(), outlook->ExplorerWindow());
}

TEST_F(ExplorerWindowTest, WithoutAWindowOfThatCaptionOutlookIsEmbedded) {
    SetWindowTextW(outlook->ExplorerWindow(), L"Another title");
    EXPECT_TRUE(peer.IsEmbedded());
    EXPECT_EQ(OutlookControllerPeer::FoundWindow(), nullptr);
}

TEST_F(ExplorerWindowTest, AWindowOfAnotherThreadIsNotTheExplorers) {
    SetWindowTextW(outlook->ExplorerWindow(), L"Another title");
    std::promise<HWND> shown;
    auto thread = std::async(std::launch::async, [&] {
        const HWND window = CreateWindowExW(0, L"STATIC", outlook->Caption().c_str(), WS_OVERLAPPED, 0, 0, 0, 0,
                                            nullptr, nullptr, nullptr, nullptr);
        shown.set_value(window);
        MSG message;
        while (window != nullptr && GetMessageW(&message, nullptr, 0, 0) > 0) { // which answers who asks for the title
        }
        DestroyWindow(window);
    });
    const HWND window = shown.get_future().get();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(peer.IsEmbedded());
    EXPECT_EQ(OutlookControllerPeer::FoundWindow(), nullptr);
    PostThreadMessageW(GetWindowThreadProcessId(window, nullptr), WM_QUIT, 0, 0);
}

TEST_F(ExplorerWindowTest, AnEmptyCaptionIsThatOfNoWindow) {
    for (const wchar_t* caption : {L"", static_cast<const wchar_t*>(nullptr)}) {
        outlook->Failures().Clear();
        outlook->Failures().Answer(L"Explorer.Caption", _variant_t(_bstr_t(caption)));
        EXPECT_TRUE(peer.IsEmbedded());
        EXPECT_EQ(OutlookControllerPeer::FoundWindow(), nullptr);
    }
}

TEST_F(ExplorerWindowTest, OfTwoWindowsOfTheCaptionTheFirstIsTheExplorers) {
    const HWND another = CreateWindowExW(0, L"STATIC", outlook->Caption().c_str(), WS_OVERLAPPED, 0, 0, 0, 0, nullptr,
                                         nullptr, nullptr, nullptr);
    std::vector<HWND> windows;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM all) -> BOOL {
            reinterpret_cast<std::vector<HWND>*>(all)->push_back(window);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&windows));
    const HWND both[] = {another, outlook->ExplorerWindow()};
    const auto first = std::ranges::find_first_of(windows, both);
    ASSERT_NE(first, windows.end());
    EXPECT_FALSE(peer.IsEmbedded());
    EXPECT_EQ(OutlookControllerPeer::FoundWindow(), *first);
    DestroyWindow(another);
}

TEST_F(ExplorerWindowTest, AWindowOnceFoundIsKeptWhateverItsTitle) {
    peer.IsEmbedded();
    SetWindowTextW(outlook->ExplorerWindow(), L"Another title");
    EXPECT_FALSE(peer.IsEmbedded());
    EnableWindow(outlook->ExplorerWindow(), FALSE);
    EXPECT_TRUE(peer.IsEmbedded());
}

TEST_F(ExplorerWindowTest, TheFirstInspectionSubclassesTheActiveExplorer) {
    const HWND window = outlook->ExplorerWindow();
    const LONG_PTR own = ProcedureOf(window);
    peer.Subclass();
    EXPECT_EQ(OutlookControllerPeer::SubclassedWindow(), window);
    EXPECT_NE(ProcedureOf(window), own);
}

TEST_F(ExplorerWindowTest, TheSecondDoesNothing) {
    peer.Subclass();
    const LONG_PTR procedure = ProcedureOf(outlook->ExplorerWindow());
    outlook->Calls().Clear();
    peer.Subclass();
    EXPECT_EQ(ProcedureOf(outlook->ExplorerWindow()), procedure);
    EXPECT_THAT(outlook->Calls().Members(), IsEmpty());
}

TEST_F(ExplorerWindowTest, AnotherExplorerIsNotSubclassed) {
    const HWND window = outlook->ExplorerWindow();
    peer.Subclass();
    const LONG_PTR procedure = ProcedureOf(window);
    outlook->CloseExplorer();
    outlook->OpenExplorer();
    peer.Subclass();
    EXPECT_EQ(OutlookControllerPeer::SubclassedWindow(), window);
    EXPECT_NE(ProcedureOf(outlook->ExplorerWindow()), procedure);
}

TEST_F(ExplorerWindowTest, WithoutAnExplorerNoWindowIsSubclassed) {
    outlook->CloseExplorer();
    peer.Subclass();
    EXPECT_EQ(OutlookControllerPeer::SubclassedWindow(), nullptr);
}

TEST_F(ExplorerWindowTest, WithoutAWindowOfItsCaptionNoneIsSubclassed) {
    SetWindowTextW(outlook->ExplorerWindow(), L"Another title");
    const LONG_PTR own = ProcedureOf(outlook->ExplorerWindow());
    peer.Subclass();
    EXPECT_EQ(OutlookControllerPeer::SubclassedWindow(), nullptr);
    EXPECT_EQ(ProcedureOf(outlook->ExplorerWindow()), own);
}

TEST_F(ExplorerWindowTest, AnyOtherMessageGoesToTheWindowsOwnProcedure) {
    const HWND window = Subclass();
    EXPECT_EQ(SendMessageW(window, WM_USER + 1, 2, 3), kAnswer);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].message, WM_USER + 1u);
    EXPECT_EQ(seen[0].first, 2u);
    EXPECT_EQ(seen[0].second, 3);
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(ExplorerWindowTest, TheWorkersMessagesHaveTheirNumbers) {
    EXPECT_EQ(OutlookControllerPeer::kSendMail, 1062u);
    EXPECT_EQ(OutlookControllerPeer::kOpenBlockedItem, 1063u);
}

TEST_F(ExplorerWindowTest, TheirMessagesAreHandledAndNotPassedOn) {
    const HWND window = Subclass();
    AsyncProcessingParams sent(&controller, Saved(), nullptr);
    sent.SetDecision(std::make_shared<InspectionDecision>(1));
    EXPECT_EQ(SendMessageW(window, OutlookControllerPeer::kSendMail, NumberOf(sent), 0), 1);
    EXPECT_TRUE(log.Has(L"INFO", L"Got WM_SEND_MAIL"));
    EXPECT_EQ(outlook->Delivered().size(), 1u);
    auto* const opened = new AsyncProcessingParams(&controller, Saved(), nullptr);
    EXPECT_EQ(SendMessageW(window, OutlookControllerPeer::kOpenBlockedItem, NumberOf(*opened), 0), 1);
    EXPECT_EQ(outlook->OpenInspectors(), 1u);
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(ExplorerWindowTest, MessagesOfTheSameNumbersFromSomebodyElseArePassedOn) {
    const HWND window = Subclass();
    for (const UINT message : {OutlookControllerPeer::kSendMail, OutlookControllerPeer::kOpenBlockedItem}) {
        for (const WPARAM first : {WPARAM{0}, WPARAM{1}, ~WPARAM{0}}) {
            EXPECT_EQ(SendMessageW(window, message, first, 5), kAnswer);
        }
    }
    EXPECT_EQ(seen.size(), 6u);
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(ExplorerWindowTest, AControllerThatIsGoneLeavesTheWindowItsOwnProcedure) {
    const LONG_PTR own = ProcedureOf(outlook->ExplorerWindow());
    {
        OutlookController another;
        OutlookControllerPeer(another).SetApplication(App());
        OutlookControllerPeer(another).Subclass();
        EXPECT_NE(ProcedureOf(outlook->ExplorerWindow()), own);
    }
    EXPECT_EQ(ProcedureOf(outlook->ExplorerWindow()), own);
}

TEST_F(ExplorerWindowTest, ASecondControllerDoesNotSubclassItself) {
    const HWND window = Subclass();
    OutlookController another; // forgets the window
    EXPECT_EQ(OutlookControllerPeer::SubclassedWindow(), nullptr);
    OutlookControllerPeer(another).SetApplication(App());
    OutlookControllerPeer(another).Subclass();
    EXPECT_EQ(SendMessageW(window, WM_USER + 1, 2, 3), kAnswer);
}

TEST_F(ExplorerWindowTest, AControllerThatFindsNoWindowLeavesTheFirstItsOwnProcedure) {
    const HWND window = Subclass();
    OutlookController another;
    OutlookControllerPeer(another).SetApplication(App());
    outlook->Failures().Answer(L"Application.ActiveExplorer", stand_ins::NoObject());
    OutlookControllerPeer(another).Subclass();
    EXPECT_EQ(SendMessageW(window, WM_USER + 1, 2, 3), kAnswer);
}

/// A failure of one kind, and what the window procedure makes of it.
struct WindowFailure {
    const char* name;
    std::function<void()> raise;
    std::wstring line;
};

const WindowFailure kFailures[] = {
    {"Exception", [] { throw IOException(L"Disk.cpp", 7, L"vorlek::Disk::Read", L"broken"); },
     L"Caught a vorlek exception: Disk.cpp(7): vorlek::Disk::Read: IOException: broken"},
    {"ComError", [] { throw _com_error(E_ACCESSDENIED); }, L"Caught a com exception: " + ErrorText(E_ACCESSDENIED)},
    {"StandardException", [] { throw std::runtime_error("standard"); }, L"Caught an exception: standard"},
    {"AnythingElse", [] { throw 42; }, L"Caught for Unknown error"},
};

class ExplorerWindowFailure : public ExplorerWindowTest, public testing::WithParamInterface<WindowFailure> {};

TEST_P(ExplorerWindowFailure, WhileSendingIsLoggedAndTheMessagePassedOn) {
    const HWND window = Subclass();
    AsyncProcessingParams params(&controller, Saved(), nullptr);
    params.SetDecision(std::make_shared<InspectionDecision>(1));
    const test_support::FailingLog failing(L"now doing the handler->send()", GetParam().raise);
    EXPECT_EQ(SendMessageW(window, OutlookControllerPeer::kSendMail, NumberOf(params), 0), kAnswer);
    EXPECT_THAT(Errors(), ElementsAre(GetParam().line));
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].message, OutlookControllerPeer::kSendMail);
    EXPECT_EQ(seen[0].first, NumberOf(params));
}

TEST_P(ExplorerWindowFailure, WhileOpeningIsLoggedAndTheMessagePassedOn) {
    const HWND window = Subclass();
    auto* const params = new AsyncProcessingParams(&controller, Saved(), nullptr);
    const WPARAM number = NumberOf(*params);
    const test_support::FailingLog failing(L"Opening (blocked) item.", GetParam().raise);
    EXPECT_EQ(SendMessageW(window, OutlookControllerPeer::kOpenBlockedItem, number, 0), kAnswer);
    EXPECT_THAT(Errors(), ElementsAre(GetParam().line));
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].first, number);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExplorerWindowFailure, testing::ValuesIn(kFailures),
                         [](const auto& kind) { return kind.param.name; });

TEST_F(ExplorerWindowTest, TheExplorerWindowGetsItsOwnProcedureBackOnce) {
    const HWND window = outlook->ExplorerWindow();
    const auto own = SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Ours));
    OutlookControllerPeer::SetSubclassed(window, reinterpret_cast<WNDPROC>(own));
    controller.RestoreExplorerWindow_();
    EXPECT_EQ(GetWindowLongPtrW(window, GWLP_WNDPROC), own);
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Ours));
    controller.RestoreExplorerWindow_();
    EXPECT_EQ(GetWindowLongPtrW(window, GWLP_WNDPROC), reinterpret_cast<LONG_PTR>(&Ours));
    SetWindowLongPtrW(window, GWLP_WNDPROC, own);
}

} // namespace
} // namespace vorlek
