#include "platform/ticpp/ticpp.h"

#include "platform/ticpp/Limits.h"

namespace ticpp {

namespace {

// TinyXML folds white space unless told once, for the whole process, not to: a text would come back changed.
[[maybe_unused]] const bool whiteSpaceIsKept_ = (TiXmlBase::SetCondenseWhiteSpace(false), true);

} // namespace

TiXmlNode& Node::Get_() const {
    if (node_ == nullptr) {
        throw Exception("There is no node");
    }
    return *node_;
}

std::string Node::Value() const {
    return Get_().ValueStr();
}

void Node::LinkEndChild(Node& child) {
    TiXmlNode& parent = Get_();
    TiXmlNode& linked = child.Get_();
    if (!child.made_) {
        throw Exception("The node <" + child.Value() + "> is linked already");
    }
    if (linked.ToDocument() != nullptr || (parent.ToDocument() == nullptr && parent.ToElement() == nullptr)) {
        throw Exception("The node <" + child.Value() + "> cannot be linked to the node <" + Value() + ">");
    }
    for (const TiXmlNode* ancestor = &parent; ancestor != nullptr; ancestor = ancestor->Parent()) {
        if (ancestor == &linked) {
            throw Exception("The node <" + child.Value() + "> cannot be linked below itself");
        }
    }
    parent.LinkEndChild(child.made_.release());
}

TiXmlElement* Node::FirstChildElement_(const std::string& name) const {
    TiXmlNode& parent = Get_();
    return name.empty() ? parent.FirstChildElement() : parent.FirstChildElement(name);
}

Element Node::FirstChildElement(const std::string& name, bool throwIfNotFound) const {
    Element found(FirstChildElement_(name));
    if (!found && throwIfNotFound) {
        throw Exception("The node <" + Value() + "> has no child element <" + name + ">");
    }
    return found;
}

Element Node::NextSiblingElement(const std::string& name, bool throwIfNotFound) const {
    TiXmlNode& node = Get_();
    Element found(name.empty() ? node.NextSiblingElement() : node.NextSiblingElement(name));
    if (!found && throwIfNotFound) {
        throw Exception("The node <" + Value() + "> is followed by no element <" + name + ">");
    }
    return found;
}

bool Node::Accept(TiXmlVisitor* visitor) const {
    return Get_().Accept(visitor);
}

Element::Element(const std::string& name) : Node(std::make_unique<TiXmlElement>(name)) {}

void Element::SetAttribute(const std::string& name, const std::string& value) {
    Element_().SetAttribute(name, value);
}

bool Element::GetAttribute(const std::string& name, std::string& value, bool throwIfNotFound) const {
    const std::string* found = Element_().Attribute(name);
    if (found == nullptr) {
        if (throwIfNotFound) {
            throw Exception("The element <" + Value() + "> has no attribute \"" + name + "\"");
        }
        return false;
    }
    value = *found;
    return true;
}

std::string Element::GetAttribute(const std::string& name) const {
    std::string value;
    GetAttribute(name, value);
    return value;
}

std::string Element::GetText(bool throwIfNotFound) const {
    const TiXmlNode* child = Element_().FirstChild();
    if (child != nullptr && child->ToText() != nullptr) {
        return child->ValueStr();
    }
    if (throwIfNotFound) {
        throw Exception("The element <" + Value() + "> has no text");
    }
    return {};
}

void Element::SetText(const std::string& text) {
    TiXmlElement& element = Element_();
    for (TiXmlNode* child = element.FirstChild(); child != nullptr;) {
        TiXmlNode* const next = child->NextSibling();
        if (child->ToText() != nullptr) {
            element.RemoveChild(child);
        }
        child = next;
    }
    auto content = std::make_unique<TiXmlText>(text);
    if (element.NoChildren()) {
        element.LinkEndChild(content.release());
    } else {
        element.InsertBeforeChild(element.FirstChild(), *content); // which copies
    }
}

Declaration::Declaration(const std::string& version, const std::string& encoding, const std::string& standalone)
    : Node(std::make_unique<TiXmlDeclaration>(version, encoding, standalone)) {}

Document::Document() : Node(std::make_unique<TiXmlDocument>()) {}

void Document::Parse(const std::string& xml) {
    TiXmlDocument& document = *Get_().ToDocument();
    document.Clear();
    CheckLimits(xml.c_str());
    document.Parse(xml.c_str(), nullptr, TIXML_ENCODING_UTF8);
    if (document.Error()) {
        std::string details = document.ErrorDesc();
        details += " (line " + std::to_string(document.ErrorRow());
        details += ", column " + std::to_string(document.ErrorCol()) + ")";
        document.Clear();
        throw Exception(std::move(details));
    }
}

Iterator::Iterator(const Node& parent, std::string name)
    : current_(parent.FirstChildElement_(name)), name_(std::move(name)) {}

Iterator& Iterator::operator++() {
    current_ = name_.empty() ? current_->NextSiblingElement() : current_->NextSiblingElement(name_);
    return *this;
}

} // namespace ticpp
