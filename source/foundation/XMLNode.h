#pragma once
#include <cstdint>
#include <string>
#include <utility>

namespace vorlek {

/// One event of an XML document: what the reader returns and the writer takes.
class XMLNode {
public:
    enum Type : std::int32_t { StartElement = 0, EndElement = 1, Text = 2 };

    /// value: the element's local name, or the text.
    XMLNode(Type type, std::wstring value) : type_(type), value_(std::move(value)) {}
    virtual ~XMLNode() = default;

    Type GetType() const { return type_; }
    const std::wstring& GetValue() const { return value_; }
    /// The value without a copy; the node has none afterwards.
    std::wstring TakeValue() { return std::move(value_); }

private:
    Type type_;
    std::wstring value_;
};

} // namespace vorlek
