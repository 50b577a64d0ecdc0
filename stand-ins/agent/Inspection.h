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

    /// Throws std::runtime_error with the parser's words and the place.
    static Inspection FromXml(std::wstring_view xml);

    /// The text in each attachment, in their order, read on first use by the one thread that judges the item.
    /// Throws std::runtime_error for a file that cannot be read.
    const std::vector<std::wstring>& Contents() const;

private:
    mutable std::optional<std::vector<std::wstring>> contents_;
};

/// The same document, indented for a reader. Throws as Inspection::FromXml.
std::string Indented(std::wstring_view xml);

} // namespace stand_ins::agent
