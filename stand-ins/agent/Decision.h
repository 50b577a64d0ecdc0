#pragma once
#include <string>
#include <vector>

namespace stand_ins {
struct Actions;
}

namespace stand_ins::agent {

struct Inspection;

/// A decision as it goes back.
struct Decision {
    std::wstring xml;
    std::vector<std::wstring> files; ///< those that it names, the receiver's from now on
    std::wstring summary;            ///< for a person: "blocked", "allowed with a new subject"
};

/// Makes the decision for an item, and in the folder the files that it names. Attachments that are not replaced are
/// copied and listed too, since the list takes the place of all of them.
/// Throws std::runtime_error if a file of the item cannot be read or one of the decision not be written; no file is
/// left then.
Decision MakeDecision(const Inspection& inspection, const Actions& actions, const std::wstring& folder);

/// The verdict alone.
std::wstring VerdictText(bool isBlocked);

/// Removes files that nobody has taken over; those that are gone are passed over.
void RemoveFiles(const std::vector<std::wstring>& files);

} // namespace stand_ins::agent
