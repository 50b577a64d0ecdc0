#pragma once
#include <functional>
#include <string>
#include <vector>

#include "stand-ins/outlook/Arguments.h"

namespace stand_ins {

class Object;

/// One member of a class of the object model, in up to three kinds.
struct Member {
    using Body = std::function<_variant_t(Object&, const Arguments&)>;

    std::wstring name = {};
    Body get = {};
    Body put = {};
    Body call = {};
    bool indexed = false; ///< the call also answers to a property get, as Item(i) does
    size_t required = 0;  ///< arguments of the call
    size_t most = 0;
};

/// The members of one class of objects by name: what GetIDsOfNames and Invoke look at. `ClassOf` fills it.
class Class {
public:
    Class(const wchar_t* name, const IID& interfaceId, const Class* base = nullptr);

    const std::wstring& Name() const { return name_; }
    const IID& InterfaceId() const { return interfaceId_; }
    /// Names are compared without regard to case; DISPID_UNKNOWN for one that the class lacks.
    DISPID Find(const wchar_t* name) const;
    /// Null for a number that no member has.
    const Member* At(DISPID id) const;

protected:
    Member& Named_(const wchar_t* name);

private:
    std::wstring name_;
    IID interfaceId_;
    std::vector<Member> members_;
};

/// Builds the class of objects of type T: `.Get(L"Count", [](Recipients& self) { return ...; })`.
template <class T>
class ClassOf : public Class {
public:
    using Class::Class;

    template <class Body>
    ClassOf& Get(const wchar_t* name, Body body) {
        Named_(name).get = [body](Object& self, const Arguments&) -> _variant_t { return body(static_cast<T&>(self)); };
        return *this;
    }

    template <class Body>
    ClassOf& Put(const wchar_t* name, Body body) {
        Named_(name).put = [body](Object& self, const Arguments& arguments) -> _variant_t {
            body(static_cast<T&>(self), arguments);
            return {};
        };
        return *this;
    }

    /// required, most: how many arguments the call takes.
    template <class Body>
    ClassOf& Call(const wchar_t* name, size_t required, size_t most, Body body) {
        Member& member = Named_(name);
        member.required = required;
        member.most = most;
        member.call = [body](Object& self, const Arguments& arguments) -> _variant_t {
            if constexpr (std::is_void_v<decltype(body(static_cast<T&>(self), arguments))>) {
                body(static_cast<T&>(self), arguments);
                return {};
            } else {
                return body(static_cast<T&>(self), arguments);
            }
        };
        return *this;
    }

    template <class Body>
    ClassOf& Indexed(const wchar_t* name, Body body) {
        Call(name, 1, 1, body);
        Named_(name).indexed = true;
        return *this;
    }
};

} // namespace stand_ins
