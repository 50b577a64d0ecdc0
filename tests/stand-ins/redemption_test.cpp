// The stand-in Redemption over the items of the stand-in Outlook.
#include <algorithm>
#include <fstream>
#include <iterator>

#include "stand-ins/redemption/ClassFactory.h"
#include "stand-ins/redemption/Coclasses.h"
#include "stand-ins/redemption/Interfaces.h"
#include "stand-ins/redemption/Redemption.h"
#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

using redemption::kCoclasses;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

CLSID ClassIdOf(std::wstring_view progId) {
    return std::ranges::find(kCoclasses, progId, &redemption::Coclass::progId)->id;
}

DispatchPtr Create(std::wstring_view progId) {
    DispatchPtr object;
    const HRESULT result = redemption::Make(ClassIdOf(progId), IID_IDispatch, reinterpret_cast<void**>(&object));
    if (FAILED(result)) {
        throw _com_error(result);
    }
    return object;
}

bool Answers(const DispatchPtr& object, const IID& interfaceId) {
    IUnknown* answer = nullptr;
    const bool answers = SUCCEEDED(object->QueryInterface(interfaceId, reinterpret_cast<void**>(&answer)));
    if (answers) {
        answer->Release();
    }
    return answers;
}

_variant_t Object(const DispatchPtr& object) {
    return _variant_t(object.GetInterfacePtr());
}

class RedemptionTest : public RunningOutlookTest {
protected:
    static DispatchPtr View(const DispatchPtr& item) {
        return DispatchPtr(
            Invoke(Create(L"Redemption.RDOSession"), L"GetRDOObjectFromOutlookObject", {Object(item), true}));
    }
    static DispatchPtr SafeItemOf(const DispatchPtr& item) {
        const auto safe = Create(L"Redemption.SafeMailItem");
        Put(safe, L"Item", Object(item));
        return safe;
    }
    std::wstring File(const wchar_t* name, const std::string& bytes) {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
        return (folder_ / name).wstring();
    }
    std::string BytesOf(const wchar_t* name) {
        std::ifstream file(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

using RedemptionWithoutOutlook = OutlookTest;

TEST_F(RedemptionWithoutOutlook, MakesNothing) {
    void* object = this;
    EXPECT_EQ(redemption::Make(ClassIdOf(L"Redemption.RDOSession"), IID_IDispatch, &object), CO_E_NOTINITIALIZED);
}

TEST_F(RedemptionTest, EachClassMakesObjectsOfItsInterface) {
    EXPECT_TRUE(Answers(Create(L"Redemption.RDOSession"), redemption::kSessionId));
    EXPECT_TRUE(Answers(Create(L"Redemption.SafeCurrentUser"), redemption::kSafeCurrentUserId));
    EXPECT_TRUE(Answers(Create(L"Redemption.SafeMailItem"), redemption::kSafeMailItemId));
    EXPECT_TRUE(Answers(Create(L"Redemption.SafeMeetingItem"), redemption::kSafeMeetingItemId));
    EXPECT_TRUE(Answers(Create(L"Redemption.SafeTaskItem"), redemption::kSafeTaskItemId));
    EXPECT_FALSE(Answers(Create(L"Redemption.SafeMailItem"), redemption::kSafeTaskItemId));
}

TEST_F(RedemptionTest, EverySafeItemIsASafeItem) {
    for (const wchar_t* progId :
         {L"Redemption.SafeMailItem", L"Redemption.SafeMeetingItem", L"Redemption.SafeTaskItem"}) {
        EXPECT_TRUE(Answers(Create(progId), redemption::kSafeItemId));
    }
}

TEST_F(RedemptionTest, AnotherClassIsNotAvailable) {
    void* object = nullptr;
    EXPECT_EQ(redemption::Make(IID_IUnknown, IID_IDispatch, &object), CLASS_E_CLASSNOTAVAILABLE);
}

TEST_F(RedemptionTest, CreationIsACallThatIsRecordedAndMayFail) {
    Create(L"Redemption.RDOSession");
    EXPECT_THAT(outlook_.Calls().Members(), ElementsAre(L"RDOSession.CreateInstance"));
    outlook_.Failures().Fail(L"RDOSession.CreateInstance", E_ACCESSDENIED);
    EXPECT_EQ(ErrorOf([] { Create(L"Redemption.RDOSession"); }), E_ACCESSDENIED);
}

TEST_F(RedemptionTest, AClassObjectMakesNoPartOfAnotherObject) {
    auto* const factory = new redemption::ClassFactory(ClassIdOf(L"Redemption.RDOSession"), redemption::Make);
    void* object = nullptr;
    const DispatchPtr outer = outlook_.Application();
    EXPECT_EQ(factory->CreateInstance(outer, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, &object), S_OK);
    static_cast<IDispatch*>(object)->Release();
    EXPECT_EQ(redemption::ClassFactory::Living(), 1);
    factory->Release();
    EXPECT_EQ(redemption::ClassFactory::Living(), 0);
}

TEST_F(RedemptionTest, TheCurrentUserIsThatOfTheProfile) {
    EXPECT_EQ(GetText(Create(L"Redemption.SafeCurrentUser"), L"SMTPAddress"), L"anna@example.com");
}

TEST_F(RedemptionTest, AViewShowsWhatIsNotSavedYetAndChangesTheItemItself) {
    const auto mail = outlook_.NewMail({.subject = L"Plans", .body = L"Tuesday."});
    const auto view = View(mail);
    EXPECT_EQ(GetText(view, L"Body"), L"Tuesday.");
    Put(view, L"Body", L"Wednesday.");
    Put(view, L"Subject", L"Other plans");
    EXPECT_EQ(GetText(mail, L"Body"), L"Wednesday.");
    EXPECT_EQ(GetText(mail, L"Subject"), L"Other plans");
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), IsEmpty());
    Invoke(view, L"Save");
    EXPECT_THAT(outlook_.ItemsIn(L"Drafts"), SizeIs(1));
    EXPECT_EQ(GetText(view, L"EntryID"), GetText(mail, L"EntryID"));
}

TEST_F(RedemptionTest, AViewOfTheHtmlMakesTheMailHtml) {
    const auto mail = Mail();
    const auto view = View(mail);
    Put(view, L"HTMLBody", L"<p>Wednesday.</p>");
    EXPECT_EQ(GetText(view, L"HTMLBody"), L"<p>Wednesday.</p>");
    EXPECT_EQ(GetNumber(mail, L"BodyFormat"), 2);
}

TEST_F(RedemptionTest, OnlyAnItemOfOutlooksHasAView) {
    EXPECT_EQ(ErrorOf([&] { View(outlook_.Application()); }), E_INVALIDARG);
    const auto session = Create(L"Redemption.RDOSession");
    EXPECT_EQ(ErrorOf([&] { Invoke(session, L"GetRDOObjectFromOutlookObject", {Object(Mail())}); }), E_INVALIDARG);
}

TEST_F(RedemptionTest, AViewOfAnItemThatIsGoneIsRefused) {
    const auto mail = Mail();
    const auto view = View(mail);
    Invoke(mail, L"Save");
    Invoke(mail, L"Delete");
    EXPECT_NE(ErrorOf([&] { View(mail); }), S_OK);
    EXPECT_NE(ErrorOf([&] { GetText(view, L"Body"); }), S_OK);
}

TEST_F(RedemptionTest, AFieldIsAPropertyByItsTagAndEmptyIfThereIsNone) {
    const auto view = View(outlook_.NewMail({.subject = L"RE: Plans"}));
    EXPECT_EQ(_bstr_t(Get(view, L"Fields", {0x0E1D001FL})), _bstr_t(L"Plans"));
    EXPECT_EQ(Get(view, L"Fields", {0x0042001FL}).vt, VT_EMPTY);
}

TEST_F(RedemptionTest, AViewSendsWithoutAnEvent) {
    Sink sink(outlook_.Application(), [](IDispatch*) { return true; });
    const auto mail = Mail();
    Invoke(View(mail), L"Send");
    EXPECT_EQ(sink.calls, 0);
    EXPECT_THAT(outlook_.Delivered(), SizeIs(1));
    EXPECT_NE(ErrorOf([&] { GetText(mail, L"Subject"); }), S_OK); // it is dead, as after any send
    sink.Unadvise();
}

TEST_F(RedemptionTest, AViewThatCannotSendLeavesTheMailWhereItIs) {
    const auto mail = outlook_.NewMail({.subject = L"Plans"});
    EXPECT_EQ(ErrorOf([&] { Invoke(View(mail), L"Send"); }), static_cast<HRESULT>(0x80040607));
    EXPECT_EQ(GetText(mail, L"Subject"), L"Plans");
    EXPECT_THAT(outlook_.Delivered(), IsEmpty());
}

TEST_F(RedemptionTest, AViewDisplaysItsItem) {
    Invoke(View(Mail()), L"Display", {false, 0L});
    EXPECT_EQ(outlook_.OpenInspectors(), 1u);
}

TEST_F(RedemptionTest, RichTextIsSavedAsItStandsAndImportedWithItsText) {
    const std::string rtf = "{\\rtf1\\ansi one {\\b two}\\par}";
    const auto mail = outlook_.NewMail({.rtfBody = rtf});
    const auto view = View(mail);
    Invoke(view, L"SaveAs", {(folder_ / L"saved.rtf").c_str(), 1026L});
    EXPECT_EQ(BytesOf(L"saved.rtf"), rtf);
    Invoke(view, L"Import", {File(L"new.rtf", "{\\rtf1\\ansi three}").c_str(), 1L});
    EXPECT_EQ(GetText(mail, L"Body"), L"three");
    EXPECT_EQ(GetNumber(mail, L"BodyFormat"), 3);
}

TEST_F(RedemptionTest, OtherFormsAreNotOffered) {
    const auto view = View(Mail());
    EXPECT_EQ(ErrorOf([&] { Invoke(view, L"SaveAs", {(folder_ / L"saved.msg").c_str(), 3L}); }), E_NOTIMPL);
    EXPECT_EQ(ErrorOf([&] { Invoke(view, L"Import", {File(L"x", "").c_str(), 3L}); }), E_NOTIMPL);
}

TEST_F(RedemptionTest, AFileThatCannotBeOpenedIsAFailure) {
    const auto view = View(Mail());
    const std::wstring path = (folder_ / L"nowhere" / L"a.rtf").wstring();
    EXPECT_EQ(ErrorOf([&] {
                  Invoke(view, L"SaveAs", {path.c_str(), 1026L});
              }),
              HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(ErrorOf([&] { Invoke(view, L"Import", {path.c_str(), 1L}); }), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
}

TEST_F(RedemptionTest, TheAttachmentsOfAViewGoAllAtOnce) {
    const auto mail = outlook_.NewMail({.attachments = {{.fileName = L"a", .content = "A"}, {.fileName = L"b"}}});
    const auto attachments = GetObject(View(mail), L"Attachments");
    EXPECT_TRUE(Answers(attachments, redemption::kRdoAttachmentsId));
    EXPECT_EQ(GetNumber(attachments, L"Count"), 2);
    Invoke(attachments, L"Clear");
    EXPECT_EQ(GetNumber(attachments, L"Count"), 0);
    Invoke(attachments, L"Add", {File(L"c.txt", "C").c_str(), 1L, 1L, L"shown"});
    EXPECT_EQ(GetText(DispatchPtr(Invoke(attachments, L"Item", {1L})), L"DisplayName"), L"shown");
    EXPECT_EQ(outlook_.Calls().Count(L"RDOAttachments.Add"), 1u);
    EXPECT_EQ(outlook_.Calls().Count(L"Attachments.Add"), 0u);
}

TEST_F(RedemptionTest, ASafeItemStandsForNoneUntilItIsGivenOne) {
    const auto safe = Create(L"Redemption.SafeMailItem");
    EXPECT_EQ(ErrorOf([&] { GetText(safe, L"Body"); }), E_POINTER);
    EXPECT_EQ(ErrorOf([&] { Put(safe, L"Item", Object(outlook_.Application())); }), E_INVALIDARG);
    EXPECT_EQ(GetText(SafeItemOf(Mail()), L"Body"), L"Tuesday.");
}

TEST_F(RedemptionTest, ASafeRecipientHasHisFieldsAndHisEntry) {
    const auto recipients = GetObject(SafeItemOf(Mail()), L"Recipients");
    const DispatchPtr ben(Get(recipients, L"Item", {1L}));
    EXPECT_EQ(_bstr_t(Get(ben, L"Fields", {0x3002001FL})), _bstr_t(L"SMTP"));
    EXPECT_EQ(GetText(ben, L"Address"), L"ben@example.com");
    EXPECT_EQ(GetText(ben, L"Name"), L"Ben");
    EXPECT_EQ(GetText(GetObject(ben, L"AddressEntry"), L"SMTPAddress"), L"ben@example.com");
    EXPECT_EQ(ErrorOf([&] { GetObject(ben, L"PropertyAccessor"); }), DISP_E_UNKNOWNNAME);
}

TEST_F(RedemptionTest, AnUnresolvedRecipientHasNoEntry) {
    const auto mail = outlook_.NewMail({.recipients = {{.name = L"Nobody", .resolved = false}}});
    const auto recipients = GetObject(SafeItemOf(mail), L"Recipients");
    Invoke(recipients, L"ResolveAll");
    const DispatchPtr nobody(Get(recipients, L"Item", {1L}));
    EXPECT_FALSE(GetBool(nobody, L"Resolved"));
    EXPECT_FALSE(GetObject(nobody, L"AddressEntry"));
}

TEST_F(RedemptionTest, AnEntryWithoutAnSmtpAddressHasAnEmptyOne) {
    const auto mail = outlook_.NewMail({.recipients = {{.address = L"cn=ben", .addressType = L"EX"}}});
    const DispatchPtr ben(Get(GetObject(SafeItemOf(mail), L"Recipients"), L"Item", {1L}));
    EXPECT_EQ(GetText(GetObject(ben, L"AddressEntry"), L"SMTPAddress"), L"");
}

TEST_F(RedemptionTest, ASafeAttachmentIsSavedByteForByte) {
    const std::string bytes("\0\xFF\r\n", 4);
    const auto mail = outlook_.NewMail({.attachments = {{.fileName = L"a.bin", .content = bytes}}});
    const DispatchPtr attachment(Get(GetObject(SafeItemOf(mail), L"Attachments"), L"Item", {1L}));
    EXPECT_EQ(GetText(attachment, L"FileName"), L"a.bin");
    Invoke(attachment, L"SaveAsFile", {(folder_ / L"saved").c_str()});
    EXPECT_EQ(BytesOf(L"saved"), bytes);
    EXPECT_EQ(outlook_.Calls().Count(L"SafeAttachment.SaveAsFile"), 1u);
}

} // namespace
} // namespace stand_ins
