#include "platform/com/LateBound.h"

#include <gtest/gtest.h>

#include "platform/outlook/Outlook.h"
#include "tests/support/ScriptedObject.h"

namespace platform {
namespace {

using test_support::ScriptedCall;
using test_support::ScriptedObject;
using test_support::ScriptedObjectPtr;

/// An object whose member "M" is the body.
ScriptedObjectPtr With(ScriptedObject::Body body) {
    const auto object = ScriptedObject::Create();
    object->Member(L"M", std::move(body));
    return object;
}

/// The call that the object received.
ScriptedCall Received(WORD kind, const std::vector<_variant_t>& arguments) {
    ScriptedCall received{};
    const auto object = With([&](const ScriptedCall& call, VARIANT*, EXCEPINFO*) {
        received = call;
        return S_OK;
    });
    InvokeByName(*object, L"M", kind, arguments);
    return received;
}

/// The failure of a call.
_com_error Failure(const ScriptedObjectPtr& object, const wchar_t* member = L"M") {
    try {
        InvokeByName(*object, member, DISPATCH_METHOD, {});
    } catch (const _com_error& failure) {
        return failure;
    }
    return _com_error(S_OK);
}

TEST(LateBound, ArgumentsArriveInTheirOrder) {
    const ScriptedCall call = Received(DISPATCH_METHOD, {_variant_t(1L), _variant_t(L"two"), Missing()});
    ASSERT_EQ(call.arguments.size(), 3u);
    EXPECT_EQ(call.arguments[0].lVal, 1);
    EXPECT_STREQ(call.arguments[1].bstrVal, L"two");
    EXPECT_EQ(call.arguments[2].vt, VT_ERROR);
    EXPECT_EQ(call.arguments[2].scode, DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(call.kind, DISPATCH_METHOD);
    EXPECT_FALSE(call.named);
}

TEST(LateBound, AValueThatIsPutIsNamedSo) {
    EXPECT_TRUE(Received(DISPATCH_PROPERTYPUT, {_variant_t(true)}).named);
    EXPECT_FALSE(Received(DISPATCH_PROPERTYGET, {}).named);
}

TEST(LateBound, AMemberThatTheObjectLacksRaises) {
    EXPECT_EQ(Failure(ScriptedObject::Create()).Error(), DISP_E_UNKNOWNNAME);
}

TEST(LateBound, AFailureRaisesWithItsCode) {
    EXPECT_EQ(Failure(With([](const ScriptedCall&, VARIANT*, EXCEPINFO*) { return E_ACCESSDENIED; })).Error(),
              E_ACCESSDENIED);
}

TEST(LateBound, AnExceptionOfTheObjectRaisesWithItsScodeAndDescription) {
    const _com_error failure = Failure(With([](const ScriptedCall&, VARIANT*, EXCEPINFO* exception) {
        exception->scode = static_cast<SCODE>(0x80040119);
        exception->bstrSource = SysAllocString(L"Microsoft Outlook");
        exception->bstrDescription = SysAllocString(L"The message could not be sent.");
        return DISP_E_EXCEPTION;
    }));
    EXPECT_EQ(failure.Error(), static_cast<HRESULT>(0x80040119));
    EXPECT_EQ(ToWide(failure.Description()), L"The message could not be sent.");
    EXPECT_EQ(ToWide(failure.Source()), L"Microsoft Outlook");
}

TEST(LateBound, AnExceptionWithANumberOfItsOwnRaisesTheHresultOfIt) {
    const _com_error failure = Failure(With([](const ScriptedCall&, VARIANT*, EXCEPINFO* exception) {
        exception->wCode = 0x1000;
        return DISP_E_EXCEPTION;
    }));
    EXPECT_EQ(failure.Error(), _com_error::WCodeToHRESULT(0x1000));
}

TEST(LateBound, AnExceptionWithoutAnyCodeRaisesAsOne) {
    EXPECT_EQ(Failure(With([](const ScriptedCall&, VARIANT*, EXCEPINFO*) { return DISP_E_EXCEPTION; })).Error(),
              DISP_E_EXCEPTION);
}

TEST(LateBound, ADeferredExceptionIsFilledInFirst) {
    const _com_error failure = Failure(With([](const ScriptedCall&, VARIANT*, EXCEPINFO* exception) {
        exception->pfnDeferredFillIn = [](EXCEPINFO* later) -> HRESULT {
            later->scode = E_ABORT;
            return S_OK;
        };
        return DISP_E_EXCEPTION;
    }));
    EXPECT_EQ(failure.Error(), E_ABORT);
}

TEST(LateBound, AResultByReferenceIsUnwrapped) {
    const auto target = ScriptedObject::Create();
    IDispatch* pointer = target.GetInterfacePtr();
    const auto object = With([&](const ScriptedCall&, VARIANT* result, EXCEPINFO*) {
        result->vt = VT_DISPATCH | VT_BYREF;
        result->ppdispVal = &pointer;
        return S_OK;
    });
    const _variant_t value = InvokeByName(*object, L"M", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(value.vt, VT_DISPATCH);
    EXPECT_EQ(FromVariant<IDispatchPtr>(value).GetInterfacePtr(), pointer);
}

TEST(LateBound, TextKeepsEmbeddedNulls) {
    VARIANT text;
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocStringLen(L"a\0b", 3);
    EXPECT_EQ(ToWide(ToText(_variant_t(text, false))), std::wstring(L"a\0b", 3));
}

TEST(LateBound, ValuesAreConvertedToWhatTheMemberPromises) {
    EXPECT_EQ(ToWide(FromVariant<_bstr_t>(_variant_t(7L))), L"7");
    EXPECT_EQ(ToWide(FromVariant<_bstr_t>(_variant_t())), L"");
    EXPECT_EQ(FromVariant<long>(_variant_t(L"7")), 7);
    EXPECT_TRUE(FromVariant<bool>(_variant_t(VARIANT_TRUE, VT_BOOL)));
    EXPECT_THROW(FromVariant<long>(_variant_t(L"seven")), _com_error);
}

TEST(LateBound, AnObjectIsThePointerOfItsInterfaceOrNull) {
    const auto mail = ScriptedObject::Create();
    mail->Answers(__uuidof(Outlook::_MailItem)).Value(L"Subject", L"Plans");
    const _variant_t value(static_cast<IDispatch*>(mail.GetInterfacePtr()));
    EXPECT_EQ(ToWide(FromVariant<Outlook::_MailItemPtr>(value)->GetSubject()), L"Plans");
    EXPECT_FALSE(FromVariant<Outlook::_MeetingItemPtr>(value));
    EXPECT_FALSE(FromVariant<Outlook::_MailItemPtr>(_variant_t()));
    EXPECT_FALSE(FromVariant<Outlook::_MailItemPtr>(_variant_t(static_cast<IDispatch*>(nullptr))));
}

TEST(LateBound, AMemberOfANullPointerRaises) {
    const Outlook::_MailItemPtr none;
    try {
        none->GetSubject();
        FAIL() << "Nothing was raised";
    } catch (const _com_error& failure) {
        EXPECT_EQ(failure.Error(), E_POINTER);
    }
}

TEST(LateBound, NoReferenceIsLost) {
    auto* const target = ScriptedObject::Create().Detach();
    {
        const auto object = With([&](const ScriptedCall&, VARIANT* result, EXCEPINFO*) {
            result->vt = VT_DISPATCH;
            result->pdispVal = target;
            target->AddRef();
            return S_OK;
        });
        FromVariant<IDispatchPtr>(
            InvokeByName(*object, L"M", DISPATCH_METHOD, {_variant_t(static_cast<IDispatch*>(target))}));
    }
    EXPECT_EQ(target->Release(), 0u);
}

} // namespace
} // namespace platform
