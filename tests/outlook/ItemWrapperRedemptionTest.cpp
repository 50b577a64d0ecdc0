// What every item does before Outlook 2007 in another way.
#include "agent/apps/outlook/ItemWrapper.h"

#include "stand-ins/outlook/Window.h"
#include "tests/outlook/OldOutlookTest.h"

namespace vorlek {
namespace {

using outlook_tests::ErrorText;
using outlook_tests::kAccessDenied;
using outlook_tests::kVersion11;
using outlook_tests::OldOutlookTest;
using outlook_tests::ThrowNumber;
using outlook_tests::ThrowStandard;
using stand_ins::Editor;
using stand_ins::ItemData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A mail's handler with the inner operations of every item in reach.
class Wrapper : public MessageHandler {
public:
    using MessageHandler::GetRDOObject;
    using MessageHandler::MessageHandler;
    using MessageHandler::ModifyAttachmentCollection_;
};

class ItemWrapperRedemptionTest : public OldOutlookTest {
protected:
    std::unique_ptr<Wrapper> WrapperOf(const ItemData& data) {
        auto wrapper = std::make_unique<Wrapper>(Outlook::_MailItemPtr(outlook->NewMail(data).GetInterfacePtr()));
        outlook->Calls().Clear();
        log.Clear();
        return wrapper;
    }
    void WriteIn(Editor editor) { Restart({.version = kVersion11, .editor = editor}); }
    std::wstring File(const std::wstring& name, const std::string& bytes) {
        test_support::WriteBytes(folder / name, bytes);
        return (folder / name).wstring();
    }
    /// A handler of an open mail.
    std::unique_ptr<Wrapper> Opened(const ItemData& data = {.subject = L"Plans"}) {
        auto wrapper = WrapperOf(data);
        wrapper->Display();
        outlook->Calls().Clear();
        log.Clear();
        return wrapper;
    }
};

/// The messages that reach a window, as it would be Word's.
class WordWindow {
public:
    explicit WordWindow(const wchar_t* title)
        : window_(
              title, [] {}, stand_ins::Window::kWordClass) {
        previous_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(window_.Handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure_)));
        current_ = this;
    }
    ~WordWindow() { SetWindowLongPtrW(window_.Handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_)); }

    std::vector<std::pair<WPARAM, LPARAM>> closes;

private:
    static LRESULT CALLBACK Procedure_(HWND window, UINT message, WPARAM first, LPARAM second) {
        if (message == WM_CLOSE) {
            current_->closes.emplace_back(first, second);
        }
        return CallWindowProcW(current_->previous_, window, message, first, second);
    }

    inline static WordWindow* current_ = nullptr;
    stand_ins::Window window_;
    WNDPROC previous_;
};

TEST_F(ItemWrapperRedemptionTest, AMailInWordIsClosedByAMessageToWordsWindowAndSaved) {
    WriteIn(Editor::Word);
    const auto wrapper = Opened();
    wrapper->Close();
    EXPECT_THAT(log.Texts(L"DEBUG"),
                ElementsAre(L"Close item was called", L"Office 2003 or lower => handling special close for WordMail"));
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Posting close to WordMail"));
    EXPECT_EQ(outlook->OpenInspectors(), 1u); // posted, not sent
    outlook->HandleMessages();
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_THAT(outlook->Calls().Members(), ElementsAre(L"MailItem.GetInspector get", L"Inspector.Caption get"));
    EXPECT_THAT(Warnings(), IsEmpty());
}

TEST_F(ItemWrapperRedemptionTest, TheMessageToWordIsACloseWithATwo) {
    const auto wrapper = Opened();
    WordWindow word(L"Plans - Message (Plain Text) ");
    wrapper->Close();
    outlook->HandleMessages();
    EXPECT_THAT(word.closes, ElementsAre(std::pair<WPARAM, LPARAM>(2, 0)));
}

TEST_F(ItemWrapperRedemptionTest, AWordWindowOfAnotherTitleIsNotFoundAndTheInspectorCloses) {
    WriteIn(Editor::WordUnderAnotherTitle);
    const auto wrapper = Opened();
    wrapper->Close();
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
    EXPECT_THAT(Warnings(), ElementsAre(L"Item is using WordMail, but we failed to locate the WordMail window and "
                                        L"close it. Attempting to close it directly."));
    EXPECT_EQ(outlook->Calls().All().back().ToString(), L"Inspector.Close(0)");
    EXPECT_THAT(log.Texts(L"INFO"), IsEmpty());
    EXPECT_THAT(outlook->ItemsIn(L"Drafts"), SizeIs(1));
}

TEST_F(ItemWrapperRedemptionTest, AMailInOutlooksOwnEditorClosesThroughItsInspectorWithoutAskingWhereItIsWritten) {
    const auto wrapper = Opened();
    wrapper->Close();
    EXPECT_EQ(outlook->OpenInspectors(), 0u);
    EXPECT_THAT(outlook->Calls().Members(),
                ElementsAre(L"MailItem.GetInspector get", L"Inspector.Caption get", L"Inspector.Close"));
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.Close"), 0u);
}

TEST_F(ItemWrapperRedemptionTest, ACaptionThatIsNotToldPasses) {
    const auto wrapper = Opened();
    outlook->Failures().Fail(L"Inspector.Caption", kAccessDenied);
    EXPECT_THROW(wrapper->Close(), _com_error);
    EXPECT_EQ(outlook->OpenInspectors(), 1u);
}

TEST_F(ItemWrapperRedemptionTest, AMailWithoutAnInspectorIsNotClosed) {
    const auto wrapper = WrapperOf({});
    outlook->Failures().Answer(L"MailItem.GetInspector", stand_ins::NoObject());
    wrapper->Close();
    EXPECT_THAT(Warnings(), ElementsAre(L"Item's Inspector is null"));
}

TEST_F(ItemWrapperRedemptionTest, TheNormalizedSubjectIsAFieldOfTheView) {
    const auto wrapper = WrapperOf({.subject = L"RE: Plans \x65E5\x672C"});
    EXPECT_EQ(wrapper->GetNormalizedSubject(), L"Plans \x65E5\x672C");
    const auto fields = outlook->Calls().All().back();
    EXPECT_EQ(fields.member, L"RDOMail.Fields");
    EXPECT_EQ(fields.arguments.at(0).vt, VT_I4);
    EXPECT_EQ(fields.arguments.at(0).lVal, 0x0E1D001F);
    EXPECT_EQ(outlook->Calls().Count(L"MailItem.PropertyAccessor"), 0u);
}

TEST_F(ItemWrapperRedemptionTest, AViewThatIsNoMailHasNoNormalizedSubject) {
    const auto wrapper = WrapperOf({.subject = L"RE: Plans"});
    outlook->Failures().Answer(L"RDOSession.GetRDOObjectFromOutlookObject",
                               static_cast<IDispatch*>(outlook->Application()));
    EXPECT_EQ(wrapper->GetNormalizedSubject(), L"");
}

TEST_F(ItemWrapperRedemptionTest, AnItemWithoutTheFieldHasAnEmptyNormalizedSubject) {
    const auto wrapper = WrapperOf({.subject = L"RE: Plans"});
    outlook->Failures().Answer(L"RDOMail.Fields", _variant_t());
    EXPECT_EQ(wrapper->GetNormalizedSubject(), L"");
}

TEST_F(ItemWrapperRedemptionTest, WithoutRedemptionThereIsNoNormalizedSubject) {
    RemoveRedemption();
    EXPECT_EQ(WrapperOf({.subject = L"RE: Plans"})->GetNormalizedSubject(), L"");
    EXPECT_THAT(Errors(), ElementsAre(L"Failed to retrieve Redemption.RDOSession CLSID!",
                                      L"Failed to retrieve Redemption.RDOSession instance!"));
}

TEST_F(ItemWrapperRedemptionTest, TheSenderIsTheUserOfTheProfile) {
    const auto wrapper = WrapperOf({.account = L"account@a.example"});
    EXPECT_EQ(wrapper->GetSenderSMTP(), L"anna@example.com");
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Retrieving sender's info by using Redemption...",
                                                L"ItemWrapper<T>::GetSenderSMTP=anna@example.com"));
}

TEST_F(ItemWrapperRedemptionTest, EachViewComesFromASessionOfItsOwn) {
    const auto wrapper = WrapperOf({});
    EXPECT_TRUE(wrapper->GetRDOObject());
    EXPECT_TRUE(wrapper->GetRDOObject());
    EXPECT_EQ(outlook->Calls().Count(L"RDOSession.CreateInstance"), 2u);
    EXPECT_EQ(outlook->Calls().All().back().ToString(),
              L"RDOSession.GetRDOObjectFromOutlookObject(\"<object>\", true)");
}

TEST_F(ItemWrapperRedemptionTest, EveryFailureOfTheViewIsReportedAndNull) {
    const auto wrapper = WrapperOf({});
    constexpr const wchar_t* member = L"RDOSession.GetRDOObjectFromOutlookObject";
    outlook->Failures().Answer(member, stand_ins::NoObject(), 1);
    EXPECT_FALSE(wrapper->GetRDOObject());
    outlook->Failures().Fail(member, kAccessDenied, 1);
    EXPECT_FALSE(wrapper->GetRDOObject());
    outlook->Failures().On(member, ThrowStandard("lost"), 1);
    EXPECT_FALSE(wrapper->GetRDOObject());
    outlook->Failures().On(member, ThrowNumber(), 1);
    EXPECT_FALSE(wrapper->GetRDOObject());
    EXPECT_THAT(Errors(),
                ElementsAre(L"Failed to get RDO object!", L"Caught a COM exception: " + ErrorText(kAccessDenied),
                            L"Caught an STD exception: lost", L"Caught Unknown error"));
}

TEST_F(ItemWrapperRedemptionTest, AllAttachmentsGoAtOnceTheNewOnesComeInTheOrderOfTheirPathsAndTheMailIsSaved) {
    const auto wrapper = WrapperOf(
        {.subject = L"Plans",
         .attachments = {{.fileName = L"one.txt", .content = "first"}, {.fileName = L"two.txt", .content = "second"}}});
    const std::wstring a = File(L"a.bin", "A");
    const std::wstring b = File(L"b.bin", "B");
    wrapper->ModifyAttachmentCollection_(Redemption::IRDOMailPtr(wrapper->GetRDOObject()),
                                         {{b, L"late.txt"}, {a, L"early.txt"}});
    EXPECT_THAT(log.Texts(L"INFO"),
                ElementsAre(L"Replacing attachments - using RDO", L"Item has 2",
                            L"Removed attachments - now setting the new ones.", L"Successfully set new attachments."));
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Adding attachment \"early.txt\": " + a));
    EXPECT_THAT(log.Texts(L"DEBUG"), Contains(L"Adding attachment \"late.txt\": " + b));
    auto calls = outlook->Calls().Members();
    calls.erase(calls.begin(), std::ranges::find(calls, L"RDOMail.Attachments get"));
    EXPECT_THAT(calls, ElementsAre(L"RDOMail.Attachments get", L"RDOAttachments.Count get", L"RDOAttachments.Clear",
                                   L"RDOAttachments.Add", L"RDOAttachments.Add", L"RDOMail.Save"));
    const auto saved = outlook->ItemsIn(L"Drafts");
    ASSERT_THAT(saved, SizeIs(1));
    ASSERT_THAT(saved[0].attachments, SizeIs(2));
    EXPECT_EQ(saved[0].attachments[0].displayName, L"early.txt");
    EXPECT_EQ(saved[0].attachments[0].content, "A");
    EXPECT_EQ(saved[0].attachments[1].displayName, L"late.txt");
    EXPECT_EQ(saved[0].attachments[1].content, "B");
}

TEST_F(ItemWrapperRedemptionTest, AnEmptyListRemovesAllAttachmentsAndTheMailIsSaved) {
    const auto wrapper =
        WrapperOf({.subject = L"Plans", .attachments = {{.fileName = L"one.txt", .content = "first"}}});
    wrapper->ModifyAttachmentCollection_(Redemption::IRDOMailPtr(wrapper->GetRDOObject()), {});
    const auto saved = outlook->ItemsIn(L"Drafts");
    ASSERT_THAT(saved, SizeIs(1));
    EXPECT_THAT(saved[0].attachments, IsEmpty());
}

} // namespace
} // namespace vorlek
