#pragma once
#include "platform/Windows.h"

#include <comdef.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

_COM_SMARTPTR_TYPEDEF(IDispatch, __uuidof(IDispatch));

namespace platform {

/// Calls a member of an object by its name, with GetIDsOfNames and Invoke.
/// kind: DISPATCH_ constants. arguments: in the order of the member's declaration.
/// Returns what the member returned, by-reference results unwrapped. Raises _com_error with the HRESULT
/// of the call; of an exception of the object (DISP_E_EXCEPTION) with its scode and error information.
_variant_t InvokeByName(IDispatch& object, const wchar_t* member, WORD kind, const std::vector<_variant_t>& arguments);

/// What stands for an optional argument that is left out.
_variant_t Missing();

/// The characters of a string, embedded nulls among them; empty for a null one.
std::wstring ToWide(const _bstr_t& text);

/// Moves the string out of a variant; other types are converted. Raises _com_error where they cannot be.
_bstr_t ToText(_variant_t&& value);

/// A variant as the type that a member promises. Raises _com_error where it cannot be converted; an
/// object that lacks the interface of a smart pointer gives a null one.
template <class T>
T FromVariant(_variant_t value) {
    if constexpr (std::is_same_v<T, _variant_t>) {
        return value;
    } else if constexpr (std::is_same_v<T, _bstr_t>) {
        return ToText(std::move(value));
    } else if constexpr (std::is_class_v<T>) { // a smart pointer
        return value.vt == VT_EMPTY ? T() : T(static_cast<IDispatch*>(IDispatchPtr(value)));
    } else {
        return static_cast<T>(value);
    }
}

/// Base of the interfaces of an object model that is reached by name only: the pointer is the object's
/// own IDispatch, and each member is a line over Get_, Put_, Call_ or Do_. The derived structs must
/// have a name with linkage: from one in an anonymous namespace the compiler, which sees no class that
/// implements it, removes the calls.
struct LateBound : IDispatch {
protected:
    template <class T>
    T Get_(const wchar_t* member) {
        return FromVariant<T>(InvokeByName(*this, member, DISPATCH_PROPERTYGET, {}));
    }
    void Put_(const wchar_t* member, const _variant_t& value) {
        InvokeByName(*this, member, DISPATCH_PROPERTYPUT, {value});
    }
    /// Names alone do not tell a method from an indexed property: whatever returns something is asked for as both.
    template <class T, class... Arguments>
    T Call_(const wchar_t* member, const Arguments&... arguments) {
        return FromVariant<T>(
            InvokeByName(*this, member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {_variant_t(arguments)...}));
    }
    template <class... Arguments>
    void Do_(const wchar_t* member, const Arguments&... arguments) {
        InvokeByName(*this, member, DISPATCH_METHOD, {_variant_t(arguments)...});
    }
};

} // namespace platform

/// Names a late-bound interface of a namespace with its identifier, and its counted pointer (the name
/// with Ptr behind it). To be written at global scope, before the struct itself.
#define LATE_BOUND_INTERFACE(space, name, ...)                                                                         \
    namespace space {                                                                                                  \
    struct name;                                                                                                       \
    }                                                                                                                  \
    __CRT_UUID_DECL(space::name, __VA_ARGS__)                                                                          \
    namespace space {                                                                                                  \
    _COM_SMARTPTR_TYPEDEF(name, __uuidof(name));                                                                       \
    }
