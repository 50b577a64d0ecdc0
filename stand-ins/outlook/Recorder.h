#pragma once
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "stand-ins/outlook/Com.h"

namespace stand_ins {

/// One call of a member of the object model.
struct Call {
    std::wstring member;               ///< "MailItem.Subject get", "MailItem.Subject put", "MailItem.Send"
    std::vector<_variant_t> arguments; ///< in the order in which they are written, missing ones as VT_ERROR; what is
                                       ///< kept of an object is the text <object> or <nothing>, to hold none alive
    DWORD thread = 0;

    /// The member with its arguments, one line: `MailItem.Close(0)`. Long texts are cut.
    std::wstring ToString() const;
};

/// Keeps every call of the object model in the order in which it came. Safe from any thread.
class Recorder {
public:
    void Add(Call call);
    void Clear();
    /// Off: nothing is kept, so that ten thousand sends leave no trace.
    void Enable(bool enabled);

    std::vector<Call> All() const;
    /// The members alone: what a test of an order compares.
    std::vector<std::wstring> Members() const;
    /// How often a member was called: "MailItem.Subject" counts every kind, "MailItem.Subject put" that one.
    size_t Count(std::wstring_view member) const;
    /// Whether the first call of one member came before the first of another; false when either never came.
    bool Before(std::wstring_view first, std::wstring_view second) const;

private:
    mutable std::mutex lock_;
    std::vector<Call> calls_;
    bool enabled_ = true;
};

/// Whether a recorded member answers to a name with or without its kind.
bool IsMember(std::wstring_view recorded, std::wstring_view name);

} // namespace stand_ins
