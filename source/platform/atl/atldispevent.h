#pragma once
// Event sinks: handlers of a class, called by the dispids of an event interface.
#include <cstddef>
#include <utility>

#include "platform/atl/atlbase.h"

namespace ATL {

inline constexpr SHORT _ATL_MAX_VARTYPES = 8;

/// What an event hands over. The arguments stand in the order of the declaration.
struct _ATL_FUNC_INFO {
    CALLCONV cc;
    VARTYPE vtReturn;
    SHORT nParams;
    VARTYPE pVarTypes[_ATL_MAX_VARTYPES];
};

/// The variant type of a handler's parameter, and its value in a variant.
template <class Parameter>
struct CEventArgument;

template <>
struct CEventArgument<IDispatch*> {
    static constexpr VARTYPE type = VT_DISPATCH;
    static IDispatch* ValueOf(const VARIANT& argument) { return argument.pdispVal; }
};

template <>
struct CEventArgument<VARIANT_BOOL*> {
    static constexpr VARTYPE type = VT_BYREF | VT_BOOL;
    static VARIANT_BOOL* ValueOf(const VARIANT& argument) { return argument.pboolVal; }
};

/// The arguments of a call in the order of the declaration, variants by reference unwrapped.
/// DISP_E_BADPARAMCOUNT and DISP_E_TYPEMISMATCH when they are not what info says.
HRESULT AtlGetEventArguments(const DISPPARAMS& parameters, const _ATL_FUNC_INFO& info,
                             const VARIANT* (&arguments)[_ATL_MAX_VARTYPES]) noexcept;

template <class Handler>
struct CEventHandler;

template <class T, class... Parameters>
struct CEventHandler<void (T::*)(Parameters...)> {
    static constexpr bool Matches(const _ATL_FUNC_INFO& info) {
        const VARTYPE types[] = {CEventArgument<Parameters>::type..., VT_EMPTY};
        bool same = info.vtReturn == VT_EMPTY && info.nParams == sizeof...(Parameters);
        for (std::size_t index = 0; same && index < sizeof...(Parameters); ++index) {
            same = info.pVarTypes[index] == types[index];
        }
        return same;
    }

    static void Call(T& target, void (T::*handler)(Parameters...), const VARIANT* const* arguments) {
        Call_(target, handler, arguments, std::index_sequence_for<Parameters...>());
    }

private:
    template <std::size_t... Index>
    static void Call_(T& target, void (T::*handler)(Parameters...), const VARIANT* const* arguments,
                      std::index_sequence<Index...>) {
        (target.*handler)(CEventArgument<Parameters>::ValueOf(*arguments[Index])...);
    }
};

/// One event of the class T.
template <class T>
struct _ATL_EVENT_ENTRY {
    UINT nControlID;
    const IID* piid;
    DISPID dispid;
    const _ATL_FUNC_INFO* pInfo;
    void (*call)(T& target, const VARIANT* const* arguments);
};

/// The call of a handler behind an entry: a handler that does not take what info says does not compile.
template <class T, auto handler, const _ATL_FUNC_INFO* info>
void CallEventHandler(T& target, const VARIANT* const* arguments) {
    using Handler = CEventHandler<decltype(handler)>;
    static_assert(Handler::Matches(*info), "the handler's parameters differ from the event's");
    Handler::Call(target, handler, arguments);
}

// clang-format off
#define BEGIN_SINK_MAP(class)                                             \
public:                                                                   \
    static const ATL::_ATL_EVENT_ENTRY<class>* _GetSinkMap() {            \
        using SinkMapClass = class;                                       \
        static constexpr ATL::_ATL_EVENT_ENTRY<class> entries[] = {
/// info must have static storage and be constexpr.
#define SINK_ENTRY_INFO(id, iid, dispid, handler, info) \
    {id, &iid, dispid, info, &ATL::CallEventHandler<SinkMapClass, handler, info>},
#define END_SINK_MAP()                          \
            {0, nullptr, 0, nullptr, nullptr}}; \
        return entries;                         \
    }
// clang-format on

/// The sink with the number sinkId for the event interface iid, whose events the sink map of T names.
/// What the event source sees is an object of its own that lives and dies with T.
template <UINT sinkId, class T, const IID* iid>
class IDispEventSimpleImpl {
public:
    IDispEventSimpleImpl() : sink_(*this) {}
    IDispEventSimpleImpl(const IDispEventSimpleImpl&) = delete;
    IDispEventSimpleImpl& operator=(const IDispEventSimpleImpl&) = delete;

    /// Failures of the connection are the result. Throws CAtlException of E_FAIL when already advised.
    HRESULT DispEventAdvise(IUnknown* source) {
        if (m_dwEventCookie != kNotAdvised) {
            AtlThrow(E_FAIL);
        }
        DWORD cookie = 0;
        const HRESULT result = AtlAdvise(source, &sink_, *iid, &cookie);
        if (SUCCEEDED(result)) {
            m_dwEventCookie = cookie;
        }
        return result;
    }

    /// Whatever the result, the sink can be advised again.
    HRESULT DispEventUnadvise(IUnknown* source) {
        const HRESULT result = AtlUnadvise(source, *iid, m_dwEventCookie);
        m_dwEventCookie = kNotAdvised;
        return result;
    }

    static constexpr DWORD kNotAdvised = 0xFEFEFEFE;

    DWORD m_dwEventCookie = kNotAdvised;

protected:
    ~IDispEventSimpleImpl() = default;

private:
    class Sink_ final : public IDispatch {
    public:
        explicit Sink_(IDispEventSimpleImpl& owner) : owner_(owner) {}

        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** result) override {
            if (result == nullptr) {
                return E_POINTER;
            }
            const bool known =
                IsEqualIID(wanted, IID_IUnknown) || IsEqualIID(wanted, IID_IDispatch) || IsEqualIID(wanted, *iid);
            *result = known ? static_cast<IDispatch*>(this) : nullptr;
            if (!known) {
                return E_NOINTERFACE;
            }
            AddRef();
            return S_OK;
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return Target_().AddRef(); }
        ULONG STDMETHODCALLTYPE Release() override { return Target_().Release(); }
        HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
        /// An event without an entry is none of the sink's business: S_OK.
        HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                                         UINT*) override {
            for (auto* entry = T::_GetSinkMap(); entry->piid != nullptr; ++entry) {
                if (entry->nControlID == sinkId && entry->dispid == id && IsEqualIID(*entry->piid, *iid)) {
                    return parameters == nullptr ? DISP_E_BADPARAMCOUNT : Call_(*entry, *parameters);
                }
            }
            return S_OK;
        }

    private:
        T& Target_() { return static_cast<T&>(owner_); }

        HRESULT Call_(const _ATL_EVENT_ENTRY<T>& entry, const DISPPARAMS& parameters) noexcept {
            const VARIANT* arguments[_ATL_MAX_VARTYPES];
            if (const HRESULT result = AtlGetEventArguments(parameters, *entry.pInfo, arguments); FAILED(result)) {
                return result;
            }
            try {
                entry.call(Target_(), arguments);
                return S_OK;
            } catch (...) {
                return E_FAIL;
            }
        }

        IDispEventSimpleImpl& owner_;
    };

    Sink_ sink_;
};

} // namespace ATL
