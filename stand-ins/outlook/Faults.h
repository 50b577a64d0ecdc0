#pragma once
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "stand-ins/outlook/Com.h"
#include "stand-ins/outlook/Recorder.h"

namespace stand_ins {

/// Makes members of the object model fail, or answer something else. A member is named as it is recorded:
/// "MailItem.Send", "MailItem.Subject" (every kind), "MailItem.Subject put". Besides the members themselves there are
/// "Application.FindConnectionPoint", "Application.Advise", "Application.Unadvise" and, for every class,
/// "MailItem.QueryInterface" (every interface of Outlook) and "MailItem.QueryInterface IDispatch" (that one; Outlook's
/// by their names, such as "_MailItem").
class Faults {
public:
    /// Stands in for the member: a value answers in its place, nullopt goes on to the member itself, and whatever it
    /// throws leaves through Invoke as it is.
    using Action = std::function<std::optional<_variant_t>(const Call&)>;

    /// The member fails with the HRESULT, the caller seeing it as the scode. nth: only that call from now on, counted
    /// from 1; 0 every call.
    void Fail(std::wstring_view member, HRESULT result, size_t nth = 0);
    /// The member answers the value and does nothing. A null object: `NoObject()`.
    void Answer(std::wstring_view member, const _variant_t& value, size_t nth = 0);
    void On(std::wstring_view member, Action action, size_t nth = 0);
    /// Runs once the member has done its work, which it has not when it fails.
    void After(std::wstring_view member, std::function<void()> action, size_t nth = 0);
    /// Objects of the class answer one more interface.
    void AnswerInterface(std::wstring_view className, const IID& interfaceId);
    void Clear();

    /// Asked by the object model at each call: what stands in, if anything.
    std::optional<_variant_t> Apply(const Call& call);
    /// Told by the object model when a member has done its work.
    void ApplyAfter(const Call& call);
    /// Asked at each QueryInterface: the result that stands in, if any.
    std::optional<HRESULT> ApplyToQuery(std::wstring_view className, const IID& interfaceId);

private:
    struct Fault_ {
        std::wstring member;
        Action action;
        size_t nth = 0;
        size_t calls = 0;
    };

    std::vector<Action> Due_(std::vector<Fault_>& faults, const Call& call);

    std::mutex lock_;
    std::vector<Fault_> faults_;
    std::vector<Fault_> after_;
    std::multimap<std::wstring, IID, std::less<>> interfaces_;
};

/// A value that is an object, and null.
_variant_t NoObject();

} // namespace stand_ins
