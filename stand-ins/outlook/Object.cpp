#include "stand-ins/outlook/Object.h"

#include "stand-ins/outlook/Failure.h"
#include "stand-ins/outlook/Session.h"
#include "stand-ins/outlook/Text.h"

namespace stand_ins {
namespace {

std::atomic<std::size_t> living = 0;

// How one call reaches a member: the body that answers, and the ending of its recorded name.
struct Road {
    const Member::Body* body = nullptr;
    const wchar_t* ending = L"";
};

Road Choose(const Member& member, WORD flags) {
    if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
        return {member.put ? &member.put : nullptr, L" put"};
    }
    if (member.call && ((flags & DISPATCH_METHOD) != 0 || (member.indexed && (flags & DISPATCH_PROPERTYGET) != 0))) {
        return {&member.call, L""};
    }
    return {member.get && (flags & DISPATCH_PROPERTYGET) != 0 ? &member.get : nullptr, L" get"};
}

void CheckCount(const Member& member, const Road& road, const DISPPARAMS& parameters) {
    const bool put = road.body == &member.put;
    if (parameters.cNamedArgs != (put ? 1U : 0U) || (put && parameters.rgdispidNamedArgs[0] != DISPID_PROPERTYPUT)) {
        throw BadCall{DISP_E_NONAMEDARGS};
    }
    const size_t required = put ? 1 : road.body == &member.call ? member.required : 0;
    const size_t most = put ? 1 : road.body == &member.call ? member.most : 0;
    if (parameters.cArgs > most) {
        throw BadCall{DISP_E_BADPARAMCOUNT};
    }
    if (parameters.cArgs < required) {
        throw BadCall{static_cast<HRESULT>(DISP_E_PARAMNOTOPTIONAL)};
    }
}

// A fault of the machine below (a full disk, a torn file) is a failure of the member.
_variant_t RunBody(const Member::Body& body, Object& self, const Arguments& arguments) {
    try {
        return body(self, arguments);
    } catch (const std::exception& fault) {
        throw Failure{E_FAIL, FromUtf8(fault.what())};
    }
}

HRESULT Report(const Failure& failure, EXCEPINFO* exception) {
    if (exception != nullptr) {
        *exception = {};
        // As seen of Outlook: a code of its own beside the scode that counts.
        exception->wCode = 0x1000;
        exception->scode = failure.result;
        exception->bstrSource = SysAllocString(L"Microsoft Outlook");
        exception->bstrDescription = SysAllocString(failure.words.c_str());
    }
    return DISP_E_EXCEPTION;
}

} // namespace

Object::Object(std::shared_ptr<Session> session, const Class& model) : session_(std::move(session)), model_(model) {
    ++living;
}

Object::~Object() {
    --living;
}

std::size_t Object::Living() {
    return living;
}

HRESULT Object::QueryInterface(REFIID interfaceId, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (const auto fault = session_->failures.ApplyToQuery(model_.Name(), interfaceId)) {
        if (FAILED(*fault)) {
            return *fault;
        }
        *object = static_cast<IDispatch*>(this);
    } else if (interfaceId == IID_IUnknown || interfaceId == IID_IDispatch || interfaceId == model_.InterfaceId()) {
        *object = static_cast<IDispatch*>(this);
    } else {
        *object = OwnInterface(interfaceId);
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG Object::AddRef() {
    return ++references_;
}

ULONG Object::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT Object::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) {
        return E_POINTER;
    }
    *count = 0;
    return S_OK;
}

HRESULT Object::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
    if (info != nullptr) {
        *info = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT Object::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    if (names == nullptr || ids == nullptr || count == 0) {
        return E_INVALIDARG;
    }
    if (!session_->MayCall()) {
        return RPC_E_WRONG_THREAD;
    }
    ids[0] = model_.Find(names[0]);
    // Names of arguments are not offered.
    for (UINT i = 1; i < count; ++i) {
        ids[i] = DISPID_UNKNOWN;
    }
    return ids[0] == DISPID_UNKNOWN || count > 1 ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT Object::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                       EXCEPINFO* exception, UINT* badArgument) {
    if (!session_->MayCall()) {
        return RPC_E_WRONG_THREAD;
    }
    const Member* member = model_.At(id);
    if (member == nullptr || parameters == nullptr) {
        return member == nullptr ? DISP_E_MEMBERNOTFOUND : E_INVALIDARG;
    }
    const Road road = Choose(*member, flags);
    if (road.body == nullptr) {
        return DISP_E_MEMBERNOTFOUND;
    }
    // The object must live through a call in which its last holder lets go of it.
    const DispatchPtr self(this);
    const std::scoped_lock lock(session_->lock);
    try {
        CheckCount(*member, road, *parameters);
        const Arguments arguments(*parameters);
        const Call call{model_.Name() + L"." + member->name + road.ending, arguments.All(), GetCurrentThreadId()};
        session_->calls.Add(call);
        auto fault = session_->failures.Apply(call);
        _variant_t answer = fault ? *fault : RunBody(*road.body, *this, arguments);
        session_->failures.ApplyAfter(call);
        if (result != nullptr) {
            *result = answer.Detach();
        }
        return S_OK;
    } catch (const BadCall& bad) {
        if (badArgument != nullptr) {
            *badArgument = bad.argument;
        }
        return bad.result;
    } catch (const Failure& failure) {
        return Report(failure, exception);
    }
}

void* Object::OwnInterface(REFIID) {
    return nullptr;
}

} // namespace stand_ins
