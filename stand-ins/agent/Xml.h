#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace stand_ins::agent {

/// A reader of as much XML as the protocol knows: elements, attributes, text, references, CDATA, comments, and no type
/// definition. It holds its client to the rules (every element is closed in its turn, no character that XML forbids),
/// and its depth is that of the document alone: no text, however deep, costs it stack.
class XmlReader {
public:
    struct Tag {
        std::wstring name;
        std::vector<std::pair<std::wstring, std::wstring>> attributes; ///< name and value, in their order
        bool isEnd = false;
        bool isEmpty = false; ///< no end follows
    };

    /// `what` names the text in failures: "message". The text must outlive the reader.
    XmlReader(std::wstring_view text, const char* what);

    /// The next tag; the character data before it is appended to `data`. Nothing at the end of the document.
    /// Throws std::runtime_error: what is wrong and at which character.
    std::optional<Tag> Next(std::wstring& data);

    /// The value of an attribute that must be there; throws as Next.
    const std::wstring& Attribute(const Tag& tag, const wchar_t* name) const;

    [[noreturn]] void Fail(const std::string& why) const;

private:
    bool Starts_(std::wstring_view with) const;
    std::wstring_view SkipBehind_(std::wstring_view end);
    void SkipSpace_();
    bool Take_(std::wstring_view expected);
    std::wstring ReadName_();
    Tag ReadTag_();
    void ReadAttribute_(Tag& tag);
    void Nest_(const Tag& tag);
    void ReadData_(std::wstring& data);
    void AppendDecoded_(std::wstring& to, std::wstring_view text) const;
    void AppendReference_(std::wstring& to, std::wstring_view name) const;

    std::wstring_view text_;
    const char* what_;
    std::size_t at_ = 0;
    std::vector<std::wstring> open_; ///< the elements round the place, outermost first
    bool hasRoot_ = false;
};

/// The same document for a person to read: indented, UTF-8. `what` and failures as those of XmlReader.
std::string Indented(std::wstring_view xml, const char* what);

} // namespace stand_ins::agent
