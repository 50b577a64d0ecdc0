#pragma once
// The layer over TinyXML: UTF-8 std::string in and out, exceptions instead of error flags, and no node
// without an owner.
//
// A Node is a handle. One that its constructor made owns its node until it is linked somewhere; from
// then on, as from every look-up, it is a plain view that lives no longer than the document.
#include <tinyxml.h>

#include <cstddef>
#include <exception>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

namespace ticpp {

class Exception : public std::exception {
public:
    explicit Exception(std::string details) : details_(std::move(details)) {}
    const char* what() const noexcept override { return details_.c_str(); }

private:
    std::string details_;
};

class Element;

/// What all nodes share. Every operation on a null view raises Exception.
class Node {
public:
    Node(Node&&) noexcept = default;
    Node& operator=(Node&&) noexcept = default;
    virtual ~Node() = default;

    /// False for the answer of a look-up that found nothing and was allowed to.
    explicit operator bool() const { return node_ != nullptr; }

    /// The name of an element, the text of a text node.
    std::string Value() const;

    /// Gives the child to this node, behind its other children. Raises Exception if the child is
    /// linked already, or is of a kind that this node cannot hold; it stays the caller's then.
    void LinkEndChild(Node& child);
    void LinkEndChild(Node&& child) { LinkEndChild(child); }

    /// The first child element, of the name if one is given. Without one: raises Exception, or returns
    /// a null view.
    Element FirstChildElement(const std::string& name = {}, bool throwIfNotFound = true) const;
    /// The next element beside this node, likewise.
    Element NextSiblingElement(const std::string& name = {}, bool throwIfNotFound = true) const;

    /// For TiXmlPrinter and other visitors.
    bool Accept(TiXmlVisitor* visitor) const;

protected:
    explicit Node(TiXmlNode* view) : node_(view) {}
    explicit Node(std::unique_ptr<TiXmlNode> made) : made_(std::move(made)), node_(made_.get()) {}

    TiXmlNode& Get_() const;

private:
    friend class Iterator;
    TiXmlElement* FirstChildElement_(const std::string& name) const;

    std::unique_ptr<TiXmlNode> made_; // while it is linked nowhere
    TiXmlNode* node_;
};

class Element : public Node {
public:
    /// A new element, linked nowhere.
    explicit Element(const std::string& name);
    /// A view; null is allowed.
    explicit Element(TiXmlElement* view) : Node(view) {}

    /// Adds the attribute, or changes it.
    void SetAttribute(const std::string& name, const std::string& value);
    /// Sets value and returns true, or, without such an attribute, raises Exception or returns false
    /// with value as it was.
    bool GetAttribute(const std::string& name, std::string& value, bool throwIfNotFound = true) const;
    /// The attribute; raises Exception without one.
    std::string GetAttribute(const std::string& name) const;

    /// The text that is the first child; without one: raises Exception, or returns an empty text.
    std::string GetText(bool throwIfNotFound = true) const;
    /// Puts the text in the place of all text that the element has; other children stay behind it.
    void SetText(const std::string& text);

private:
    TiXmlElement& Element_() const { return static_cast<TiXmlElement&>(Get_()); }
};

class Declaration : public Node {
public:
    Declaration(const std::string& version, const std::string& encoding, const std::string& standalone);
};

class Document : public Node {
public:
    Document();

    /// Replaces the content by what the UTF-8 text says, whatever encoding it declares. White space
    /// inside a text is kept as it stands. Raises Exception with the parser's words and the place, or for
    /// elements or attributes beyond the limits of Limits.h; the document is empty then.
    void Parse(const std::string& xml);
};

/// Walks over the child elements of a node, all or those of one name, and is its own range:
/// `for (const ticpp::Element& item : ticpp::Iterator(parent, "item"))`.
class Iterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Element;

    Iterator() = default;
    explicit Iterator(const Node& parent, std::string name = {});

    Element operator*() const { return Element(current_); }
    Iterator& operator++();
    void operator++(int) { ++*this; }
    bool operator==(const Iterator& other) const { return current_ == other.current_; }

private:
    TiXmlElement* current_ = nullptr;
    std::string name_;
};

inline Iterator begin(Iterator first) {
    return first;
}
inline Iterator end(const Iterator&) {
    return {};
}

} // namespace ticpp
