#include "stand-ins/agent/Inspection.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include <tinyxml.h>

#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

void Parse_(TiXmlDocument& document, std::wstring_view xml) {
    // White space in a body is the user's.
    TiXmlBase::SetCondenseWhiteSpace(false);
    document.Parse(ToUtf8(xml).c_str(), nullptr, TIXML_ENCODING_UTF8);
    if (document.Error()) {
        throw std::runtime_error("malformed inspector document, line " + std::to_string(document.ErrorRow()) +
                                 ", column " + std::to_string(document.ErrorCol()) + ": " + document.ErrorDesc());
    }
}

std::wstring Attribute_(const TiXmlElement& element, const char* name) {
    const char* value = element.Attribute(name);
    return value == nullptr ? std::wstring() : FromUtf8(value);
}

std::wstring ChildText_(const TiXmlElement& element, const char* name) {
    const TiXmlElement* child = element.FirstChildElement(name);
    const char* text = child == nullptr ? nullptr : child->GetText();
    return text == nullptr ? std::wstring() : FromUtf8(text);
}

/// Calls body(name, value) for each child of this kind.
template <class Body>
void EachPair_(const TiXmlElement& parent, const char* kind, Body&& body) {
    for (auto child = parent.FirstChildElement(kind); child != nullptr; child = child->NextSiblingElement(kind)) {
        body(Attribute_(*child, "name"), Attribute_(*child, "value"));
    }
}

void ReadContext_(Inspection& inspection, const TiXmlElement& context) {
    EachPair_(context, "item", [&](const std::wstring& name, const std::wstring& value) {
        if (name == L"EmailSubject") {
            inspection.subject = value;
        } else if (name == L"EmailFrom") {
            inspection.sender = value;
        } else if (name == L"EmailBody") {
            inspection.bodyFile = value;
        } else if (name == L"EmailTo" || name == L"EmailCc" || name == L"EmailBcc" || name == L"IncidentDestination") {
            if (std::ranges::find(inspection.recipients, value) == inspection.recipients.end()) {
                inspection.recipients.push_back(value);
            }
        }
    });
}

void ReadDataItem_(Inspection& inspection, const TiXmlElement& item) {
    std::map<std::wstring, std::wstring> context;
    EachPair_(item, "contextItem", [&](const std::wstring& name, const std::wstring& value) { context[name] = value; });
    const std::wstring encoding = ChildText_(item, "dataEncoding");
    const std::wstring data = ChildText_(item, "data");
    if (encoding == L"filePath") {
        inspection.attachments.push_back({data, context[L"DataLocation"]});
    } else if (encoding == L"text" && context[L"ItemType"] != L"EmailSubject") {
        inspection.body += data;
    }
}

} // namespace

Inspection Inspection::FromXml(std::wstring_view xml) {
    TiXmlDocument document;
    Parse_(document, xml);
    const TiXmlElement* root = document.FirstChildElement("inspectorMessage");
    if (root == nullptr) {
        throw std::runtime_error("malformed inspector document: it has no \"inspectorMessage\"");
    }
    Inspection inspection;
    inspection.channel = Attribute_(*root, "channel");
    if (const TiXmlElement* context = root->FirstChildElement("context")) {
        ReadContext_(inspection, *context);
    }
    for (auto item = root->FirstChildElement("dataItem"); item != nullptr;
         item = item->NextSiblingElement("dataItem")) {
        ReadDataItem_(inspection, *item);
    }
    return inspection;
}

const std::vector<std::wstring>& Inspection::Contents() const {
    if (!contents_) {
        std::vector<std::wstring> contents;
        for (const InspectedFile& file : attachments) {
            contents.push_back(DecodeText(ReadWholeFile(file.path)));
        }
        contents_ = std::move(contents);
    }
    return *contents_;
}

std::string Indented(std::wstring_view xml) {
    TiXmlDocument document;
    Parse_(document, xml);
    TiXmlPrinter printer;
    printer.SetIndent("  ");
    document.Accept(&printer);
    return printer.Str();
}

} // namespace stand_ins::agent
