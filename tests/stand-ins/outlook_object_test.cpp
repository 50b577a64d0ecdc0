// Calls by name, interfaces, threads, recorded calls and faults.
#include <stdexcept>

#include "tests/stand-ins/OutlookTest.h"

namespace stand_ins {
namespace {

using testing::ElementsAre;

class OutlookObject : public RunningOutlookTest {
protected:
    static HRESULT Raw(IDispatch* object, const wchar_t* member, WORD flags, std::vector<VARIANT> arguments,
                       EXCEPINFO* exception = nullptr) {
        auto* name = const_cast<wchar_t*>(member);
        DISPID id = 0;
        if (const HRESULT result = object->GetIDsOfNames(IID_NULL, &name, 1, 0, &id); FAILED(result)) {
            return result;
        }
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        return object->Invoke(id, IID_NULL, 0, flags, &parameters, nullptr, exception, nullptr);
    }

    static bool Answers(IDispatch* object, const IID& interfaceId) {
        UnknownPtr found;
        const HRESULT result = object->QueryInterface(interfaceId, reinterpret_cast<void**>(&found));
        EXPECT_TRUE(result == S_OK || result == E_NOINTERFACE);
        return result == S_OK;
    }
};

TEST_F(OutlookObject, EachClassAnswersItsOwnInterfaceAndNoOther) {
    const auto mail = Mail();
    EXPECT_TRUE(Answers(mail, IID_IDispatch));
    EXPECT_TRUE(Answers(mail, kMailItemId));
    EXPECT_FALSE(Answers(mail, kPostItemId));
    EXPECT_FALSE(Answers(mail, OutlookId(0x00063062)));
    EXPECT_TRUE(Answers(outlook_.NewPost({}), kPostItemId));
    EXPECT_FALSE(Answers(outlook_.NewPost({}), kMailItemId));
    EXPECT_TRUE(Answers(outlook_.Application(), kApplicationId));
    EXPECT_TRUE(Answers(Session(), kNameSpaceId));
    EXPECT_TRUE(Answers(GetObject(mail, L"Recipients"), kRecipientsId));
    EXPECT_TRUE(Answers(GetObject(mail, L"GetInspector"), kInspectorId));
    EXPECT_TRUE(Answers(DispatchPtr(Invoke(outlook_.Application(), L"ActiveExplorer")), kExplorerId));
}

TEST_F(OutlookObject, NamesAreFoundWithoutRegardToCase) {
    EXPECT_EQ(GetText(Mail(), L"sUBJECT"), L"Plans");
    EXPECT_EQ(ErrorOf([&] { Get(Mail(), L"Nonsense"); }), DISP_E_UNKNOWNNAME);
}

TEST_F(OutlookObject, KindsOfCallsAreKeptApart) {
    const auto mail = Mail();
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Subject"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(ErrorOf([&] { Get(mail, L"Save"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(ErrorOf([&] { Put(mail, L"EntryID", L"x"); }), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(ErrorOf([&] { Get(GetObject(mail, L"Recipients"), L"Item", {1L}); }), S_OK);
    EXPECT_EQ(ErrorOf([&] { Invoke(GetObject(mail, L"Recipients"), L"Item", {1L}); }), S_OK);
}

TEST_F(OutlookObject, WrongArgumentsAreRefused) {
    const auto mail = Mail();
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Close"); }), DISP_E_PARAMNOTOPTIONAL);
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Close", {0L, 0L}); }), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Close", {L"no number"}); }), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(ErrorOf([&] { Invoke(mail, L"Display", {_variant_t(DISP_E_PARAMNOTFOUND, VT_ERROR)}); }), S_OK);
}

TEST_F(OutlookObject, ByReferenceArgumentsAreUnwrapped) {
    const auto recipients = GetObject(Mail(), L"Recipients");
    long index = 1;
    VARIANT byReference;
    byReference.vt = VT_I4 | VT_BYREF;
    byReference.plVal = &index;
    EXPECT_EQ(Raw(recipients, L"Item", DISPATCH_METHOD, {byReference}), S_OK);
    VARIANT variant;
    variant.vt = VT_VARIANT | VT_BYREF;
    _variant_t inner(1L);
    variant.pvarVal = &inner;
    EXPECT_EQ(Raw(recipients, L"Item", DISPATCH_METHOD, {variant}), S_OK);
}

TEST_F(OutlookObject, FailureCarriesItsScodeAndOutlooksName) {
    outlook_.Failures().Fail(L"MailItem.Save", static_cast<HRESULT>(0x80040119));
    EXCEPINFO exception{};
    EXPECT_EQ(Raw(Mail(), L"Save", DISPATCH_METHOD, {}, &exception), DISP_E_EXCEPTION);
    EXPECT_EQ(exception.scode, static_cast<SCODE>(0x80040119));
    EXPECT_EQ(exception.wCode, 0x1000);
    EXPECT_STREQ(exception.bstrSource, L"Microsoft Outlook");
    EXPECT_STREQ(exception.bstrDescription, L"MailItem.Save was told to fail with 0x80040119.");
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
}

TEST_F(OutlookObject, FaultsMeetOneCallOrOneKind) {
    const auto mail = Mail();
    outlook_.Failures().Fail(L"MailItem.Subject put", E_ACCESSDENIED);
    EXPECT_EQ(ErrorOf([&] { GetText(mail, L"Subject"); }), S_OK);
    EXPECT_EQ(ErrorOf([&] { Put(mail, L"Subject", L"x"); }), E_ACCESSDENIED);
    outlook_.Failures().Clear();
    outlook_.Failures().Fail(L"MailItem.Subject", E_ACCESSDENIED, 2);
    EXPECT_EQ(ErrorOf([&] { GetText(mail, L"Subject"); }), S_OK);
    EXPECT_EQ(ErrorOf([&] { GetText(mail, L"Subject"); }), E_ACCESSDENIED);
    EXPECT_EQ(ErrorOf([&] { GetText(mail, L"Subject"); }), S_OK);
}

TEST_F(OutlookObject, ActionsAfterAMemberComeOnceItHasDoneItsWork) {
    const auto mail = Mail();
    std::vector<std::wstring> seen;
    outlook_.Failures().After(
        L"MailItem.Subject put", [&] { seen.push_back(GetText(mail, L"Subject")); }, 2);
    Put(mail, L"Subject", L"First");
    Put(mail, L"Subject", L"Second");
    Put(mail, L"Subject", L"Third");
    outlook_.Failures().After(L"MailItem.Body", [&] { seen.emplace_back(L"failed"); });
    outlook_.Failures().Fail(L"MailItem.Body", E_ACCESSDENIED);
    EXPECT_EQ(ErrorOf([&] { Put(mail, L"Body", L"Fourth"); }), E_ACCESSDENIED);
    EXPECT_THAT(seen, ElementsAre(L"Second"));
}

TEST_F(OutlookObject, WhatAnActionThrowsComesOutAsItIs) {
    outlook_.Failures().On(L"MailItem.Subject",
                           [](const Call&) -> std::optional<_variant_t> { throw std::runtime_error("thrown"); });
    outlook_.Failures().On(L"MailItem.Body", [](const Call&) -> std::optional<_variant_t> { throw 7; });
    EXPECT_THROW(GetText(Mail(), L"Subject"), std::runtime_error);
    EXPECT_THROW(GetText(Mail(), L"Body"), int);
}

TEST_F(OutlookObject, AnswersStandInForMembersByTheirArguments) {
    outlook_.Failures().Answer(L"MailItem.EntryID", L"");
    outlook_.Failures().On(L"NameSpace.GetDefaultFolder", [](const Call& call) -> std::optional<_variant_t> {
        return long(call.arguments.at(0)) == 16 ? std::optional(NoObject()) : std::nullopt;
    });
    EXPECT_EQ(GetText(outlook_.SavedItem({}), L"EntryID"), L"");
    EXPECT_EQ(DispatchPtr(Invoke(Session(), L"GetDefaultFolder", {16L})), nullptr);
    EXPECT_NE(DispatchPtr(Invoke(Session(), L"GetDefaultFolder", {4L})), nullptr);
}

TEST_F(OutlookObject, QueriesOfInterfacesFailAndSucceedOnRequest) {
    UnknownPtr found;
    const auto mail = Mail();
    outlook_.Failures().Fail(L"MailItem.QueryInterface _MailItem", E_ACCESSDENIED);
    EXPECT_EQ(mail->QueryInterface(kMailItemId, reinterpret_cast<void**>(&found)), E_ACCESSDENIED);
    EXPECT_TRUE(Answers(mail, IID_IDispatch));
    outlook_.Failures().Clear();
    outlook_.Failures().AnswerInterface(L"MailItem", OutlookId(0x00063062));
    EXPECT_TRUE(Answers(mail, OutlookId(0x00063062)));
    EXPECT_TRUE(Answers(mail, kMailItemId));
}

TEST_F(OutlookObject, AdviseFailsOnRequest) {
    outlook_.Failures().Fail(L"Application.Advise", static_cast<HRESULT>(CONNECT_E_ADVISELIMIT));
    const Sink sink(outlook_.Application(), [](IDispatch*) { return true; });
    EXPECT_EQ(sink.advised, static_cast<HRESULT>(CONNECT_E_ADVISELIMIT));
}

TEST_F(OutlookObject, CallsAreRecordedInOrderWithTheirArguments) {
    const auto mail = Mail();
    Put(mail, L"subject", L"New");
    GetText(mail, L"Body");
    Invoke(mail, L"Close", {0L});
    EXPECT_THAT(outlook_.Calls().Members(),
                ElementsAre(L"MailItem.Subject put", L"MailItem.Body get", L"MailItem.Close"));
    std::vector<std::wstring> lines;
    for (const Call& call : outlook_.Calls().All()) {
        lines.push_back(call.ToString());
    }
    EXPECT_THAT(lines, ElementsAre(L"MailItem.Subject put(\"New\")", L"MailItem.Body get", L"MailItem.Close(0)"));
    EXPECT_EQ(outlook_.Calls().Count(L"MailItem.Subject"), 1u);
    EXPECT_EQ(outlook_.Calls().Count(L"MailItem.Subject get"), 0u);
    EXPECT_TRUE(outlook_.Calls().Before(L"MailItem.Subject", L"MailItem.Close"));
    EXPECT_FALSE(outlook_.Calls().Before(L"MailItem.Close", L"MailItem.Subject"));
    EXPECT_FALSE(outlook_.Calls().Before(L"MailItem.Send", L"MailItem.Close"));
}

TEST_F(OutlookObject, RecordHoldsNoObjectAlive) {
    const auto mail = Mail();
    mail->AddRef();
    const ULONG before = mail->Release();
    outlook_.RaiseItemSend(mail);
    mail->AddRef();
    EXPECT_EQ(mail->Release(), before);
}

TEST_F(OutlookObject, RecorderThatIsOffKeepsNothing) {
    outlook_.Calls().Enable(false);
    GetText(Mail(), L"Subject");
    EXPECT_THAT(outlook_.Calls().All(), testing::IsEmpty());
}

struct ForeignCall {
    IDispatch* object;
    HRESULT result;
};

DWORD WINAPI CallFromAnotherThread(void* parameter) {
    auto& call = *static_cast<ForeignCall*>(parameter);
    call.result = ErrorOf([&] { GetText(call.object, L"Subject"); });
    return 0;
}

HRESULT CallElsewhere(IDispatch* object) {
    ForeignCall call{object, E_FAIL};
    const HANDLE thread = CreateThread(nullptr, 0, CallFromAnotherThread, &call, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    return call.result;
}

TEST_F(OutlookObject, ForeignThreadsPassUnlessOutlookIsStrict) {
    EXPECT_EQ(CallElsewhere(Mail()), S_OK);
    Outlook strict({.profile = folder_ / L"strict", .strictThreads = true});
    const auto mail = strict.NewMail({.subject = L"Plans"});
    EXPECT_EQ(CallElsewhere(mail), RPC_E_WRONG_THREAD);
    EXPECT_EQ(GetText(mail, L"Subject"), L"Plans");
}

TEST_F(OutlookObject, ExplorerShowsTheCaptionOfARealWindow) {
    const DispatchPtr explorer = Invoke(outlook_.Application(), L"ActiveExplorer");
    wchar_t title[128];
    GetWindowTextW(outlook_.ExplorerWindow(), title, 128);
    EXPECT_EQ(GetText(explorer, L"Caption"), title);
    EXPECT_EQ(GetWindowThreadProcessId(outlook_.ExplorerWindow(), nullptr), GetCurrentThreadId());
    EXPECT_TRUE(IsWindowEnabled(outlook_.ExplorerWindow()));
}

TEST_F(OutlookObject, ExplorerIsDisabledOrMissingOnRequest) {
    const Outlook disabled({.profile = folder_ / L"d", .explorer = ExplorerState::Disabled});
    EXPECT_FALSE(IsWindowEnabled(disabled.ExplorerWindow()));
    const Outlook missing({.profile = folder_ / L"m", .explorer = ExplorerState::Missing});
    EXPECT_EQ(missing.ExplorerWindow(), nullptr);
    EXPECT_EQ(DispatchPtr(Invoke(missing.Application(), L"ActiveExplorer")), nullptr);
}

DWORD WINAPI Rename(void* window) {
    SetWindowTextW(static_cast<HWND>(window), L"changed");
    return 0;
}

TEST_F(OutlookObject, MessageLoopServesOtherThreadsUntilTheConditionHolds) {
    const HANDLE thread = CreateThread(nullptr, 0, Rename, outlook_.ExplorerWindow(), 0, nullptr);
    EXPECT_TRUE(outlook_.RunUntil([&] {
        wchar_t title[16];
        GetWindowTextW(outlook_.ExplorerWindow(), title, 16);
        return std::wstring(title) == L"changed";
    }));
    EXPECT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
    CloseHandle(thread);
    EXPECT_FALSE(outlook_.RunUntil([] { return false; }, 1));
}

TEST_F(OutlookObject, ApplicationTellsVersionAndSession) {
    EXPECT_EQ(GetText(outlook_.Application(), L"Version"), L"16.0.5.1");
    EXPECT_NE(GetObject(outlook_.Application(), L"Session"), nullptr);
    EXPECT_EQ(ErrorOf([&] { Invoke(outlook_.Application(), L"CreateItem", {2L}); }), E_INVALIDARG);
    EXPECT_EQ(GetText(DispatchPtr(Invoke(outlook_.Application(), L"CreateItem", {0L})), L"MessageClass"), L"IPM.Note");
}

} // namespace
} // namespace stand_ins
