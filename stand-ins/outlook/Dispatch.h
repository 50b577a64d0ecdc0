#pragma once
#include <string>
#include <vector>

#include "stand-ins/outlook/Com.h"

namespace stand_ins {

using UnknownPtr = _com_ptr_t<_com_IIID<IUnknown, &__uuidof(IUnknown)>>;
using DispatchPtr = _com_ptr_t<_com_IIID<IDispatch, &__uuidof(IDispatch)>>;

/// Calls by name, as a script makes them. Failure: _com_error, with the scode of an exception of the object.
_variant_t Get(IDispatch* object, const wchar_t* member, const std::vector<_variant_t>& arguments = {});
void Put(IDispatch* object, const wchar_t* member, const _variant_t& value);
_variant_t Invoke(IDispatch* object, const wchar_t* method, const std::vector<_variant_t>& arguments = {});

/// The same, read as a text, a number, a truth or an object (null when it is none).
std::wstring GetText(IDispatch* object, const wchar_t* member);
long GetNumber(IDispatch* object, const wchar_t* member);
bool GetBool(IDispatch* object, const wchar_t* member);
DispatchPtr GetObject(IDispatch* object, const wchar_t* member, const std::vector<_variant_t>& arguments = {});

} // namespace stand_ins
