#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stand_ins::agent {

/// A file that leaves with an item.
struct InspectedFile {
    std::wstring path; ///< where the client saved it
    std::wstring name; ///< as the user sees it
};

/// What an inspector document tells of an item.
struct Inspection {
    std::wstring channel;
    std::wstring subject;
    std::wstring sender;
    std::vector<std::wstring> recipients; ///< each address once
    std::wstring body;                    ///< the plain text
    std::wstring bodyFile;                ///< path of the body in the item's own form; may be empty
    std::vector<InspectedFile> attachments;
    std::vector<std::string> blocks; ///< bytes that travel in the document itself

    /// Throws std::runtime_error: what is wrong and at which character.
    static Inspection FromXml(std::wstring_view xml);

    /// The text in each attachment and each block, in their order, read on first use by the one thread that judges the
    /// item. Throws std::runtime_error for a file that cannot be read.
    const std::vector<std::wstring>& Contents() const;

private:
    mutable std::optional<std::vector<std::wstring>> contents_;
};

} // namespace stand_ins::agent
