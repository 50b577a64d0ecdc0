#include "platform/atl/atldispevent.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/platform/EventSource.h"

namespace {

using test_support::EventSource;

constexpr IID kEvents = {0x0006304E, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kOtherEvents = {0x0006300E, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr ATL::_ATL_FUNC_INFO kSendInfo = {CC_STDCALL, VT_EMPTY, 2, {VT_DISPATCH, VT_BYREF | VT_BOOL}};
constexpr ATL::_ATL_FUNC_INFO kQuitInfo = {CC_STDCALL, VT_EMPTY, 0, {}};

/// A sink that counts its references and keeps what it was called with.
class Listener : public ATL::IDispEventSimpleImpl<1, Listener, &kEvents> {
public:
    BEGIN_SINK_MAP(Listener)
    SINK_ENTRY_INFO(1, kEvents, 0xF002, &Listener::OnSend, &kSendInfo)
    SINK_ENTRY_INFO(1, kEvents, 0xF007, &Listener::OnQuit, &kQuitInfo)
    SINK_ENTRY_INFO(2, kEvents, 0xF003, &Listener::OnQuit, &kQuitInfo)
    SINK_ENTRY_INFO(1, kOtherEvents, 0xF004, &Listener::OnQuit, &kQuitInfo)
    END_SINK_MAP()

    void OnSend(IDispatch* sent, VARIANT_BOOL* cancel) {
        item = sent;
        *cancel = VARIANT_TRUE;
    }
    void OnQuit() {
        ++quits;
        if (fails) {
            throw std::runtime_error("quit");
        }
    }
    ULONG AddRef() { return ++references; }
    ULONG Release() { return --references; }

    IDispatch* item = nullptr;
    int quits = 0;
    bool fails = false;
    ULONG references = 1;
};

class EventSink : public testing::Test {
protected:
    EventSink() { EXPECT_EQ(listener_.DispEventAdvise(Source()), S_OK); }
    ~EventSink() override { source_.sink = nullptr; }

    IUnknown* Source() { return static_cast<IConnectionPointContainer*>(&source_); }

    HRESULT RaiseSend(VARIANT item, VARIANT cancel) {
        VARIANT arguments[] = {cancel, item};
        DISPPARAMS parameters = {arguments, nullptr, 2, 0};
        return source_.Raise(0xF002, parameters);
    }
    HRESULT RaiseQuit(DISPID id = 0xF007) {
        DISPPARAMS parameters = {};
        return source_.Raise(id, parameters);
    }

    static VARIANT Dispatch(IDispatch* object) {
        VARIANT variant = {};
        variant.vt = VT_DISPATCH;
        variant.pdispVal = object;
        return variant;
    }
    static VARIANT ByReference(VARIANT_BOOL* value) {
        VARIANT variant = {};
        variant.vt = VT_BYREF | VT_BOOL;
        variant.pboolVal = value;
        return variant;
    }
    static VARIANT ByReference(VARIANT* value) {
        VARIANT variant = {};
        variant.vt = VT_BYREF | VT_VARIANT;
        variant.pvarVal = value;
        return variant;
    }

    Listener listener_;
    EventSource source_{kEvents};
};

TEST_F(EventSink, KeepsTheCookieWhileAdvised) {
    EXPECT_EQ(listener_.m_dwEventCookie, EventSource::kCookie);
    EXPECT_EQ(listener_.references, 2u);
    EXPECT_EQ(listener_.DispEventUnadvise(Source()), S_OK);
    EXPECT_EQ(listener_.m_dwEventCookie, 0xFEFEFEFEu);
    EXPECT_EQ(listener_.references, 1u);
}

TEST_F(EventSink, AdviseTwiceRaisesEFail) {
    try {
        listener_.DispEventAdvise(Source());
        ADD_FAILURE() << "advised twice";
    } catch (const ATL::CAtlException& failure) {
        EXPECT_EQ(HRESULT{failure}, E_FAIL);
    }
    EXPECT_EQ(listener_.m_dwEventCookie, EventSource::kCookie);
}

TEST_F(EventSink, AdviseReturnsTheFailureOfTheChain) {
    Listener other;
    EventSource elsewhere(kOtherEvents);
    EXPECT_EQ(other.DispEventAdvise(nullptr), E_INVALIDARG);
    EXPECT_EQ(other.DispEventAdvise(source_.sink), E_NOINTERFACE);
    EXPECT_EQ(other.DispEventAdvise(static_cast<IConnectionPointContainer*>(&elsewhere)), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(other.m_dwEventCookie, 0xFEFEFEFEu);
}

TEST_F(EventSink, UnadviseResetsTheCookieWhateverTheSourceSays) {
    Listener other;
    EXPECT_EQ(other.DispEventUnadvise(nullptr), E_INVALIDARG);
    EXPECT_EQ(other.DispEventUnadvise(Source()), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(other.m_dwEventCookie, 0xFEFEFEFEu);
}

TEST_F(EventSink, HandsItsArgumentsOverInTheOrderOfTheDeclaration) {
    VARIANT_BOOL cancel = VARIANT_FALSE;
    EXPECT_EQ(RaiseSend(Dispatch(source_.sink), ByReference(&cancel)), S_OK);
    EXPECT_EQ(listener_.item, source_.sink.GetInterfacePtr());
    EXPECT_EQ(cancel, VARIANT_TRUE);
}

TEST_F(EventSink, UnwrapsVariantsByReference) {
    VARIANT_BOOL cancel = VARIANT_FALSE;
    VARIANT item = Dispatch(source_.sink);
    VARIANT reference = ByReference(&cancel);
    EXPECT_EQ(RaiseSend(ByReference(&item), ByReference(&reference)), S_OK);
    EXPECT_EQ(listener_.item, source_.sink.GetInterfacePtr());
    EXPECT_EQ(cancel, VARIANT_TRUE);
}

TEST_F(EventSink, RefusesAnotherNumberOfArguments) {
    VARIANT argument = {};
    DISPPARAMS parameters = {&argument, nullptr, 1, 0};
    EXPECT_EQ(source_.Raise(0xF002, parameters), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(source_.Raise(0xF007, parameters), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(source_.sink->Invoke(0xF007, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
              DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(listener_.quits, 0);
}

TEST_F(EventSink, RefusesArgumentsOfAnotherType) {
    VARIANT_BOOL cancel = VARIANT_FALSE;
    VARIANT number = {};
    number.vt = VT_I4;
    EXPECT_EQ(RaiseSend(number, ByReference(&cancel)), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(RaiseSend(Dispatch(nullptr), number), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(cancel, VARIANT_FALSE);
}

TEST_F(EventSink, LetsEventsOfOthersPass) {
    EXPECT_EQ(RaiseQuit(0xF006), S_OK); // in no entry
    EXPECT_EQ(RaiseQuit(0xF003), S_OK); // of another sink
    EXPECT_EQ(RaiseQuit(0xF004), S_OK); // of another interface
    EXPECT_EQ(listener_.quits, 0);
    EXPECT_EQ(RaiseQuit(), S_OK);
    EXPECT_EQ(listener_.quits, 1);
}

TEST_F(EventSink, LetsNoExceptionThrough) {
    listener_.fails = true;
    EXPECT_EQ(RaiseQuit(), E_FAIL);
    EXPECT_EQ(listener_.quits, 1);
}

TEST_F(EventSink, AnswersItsThreeInterfacesOnly) {
    const auto answers = [&](REFIID iid) {
        IUnknown* found = nullptr;
        const HRESULT result = source_.sink->QueryInterface(iid, reinterpret_cast<void**>(&found));
        if (found != nullptr) {
            found->Release();
        }
        return result;
    };
    EXPECT_EQ(answers(IID_IUnknown), S_OK);
    EXPECT_EQ(answers(IID_IDispatch), S_OK);
    EXPECT_EQ(answers(kEvents), S_OK);
    EXPECT_EQ(answers(kOtherEvents), E_NOINTERFACE);
    EXPECT_EQ(source_.sink->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(listener_.references, 2u);
}

} // namespace
