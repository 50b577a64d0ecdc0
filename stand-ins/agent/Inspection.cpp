#include "stand-ins/agent/Inspection.h"

#include <algorithm>
#include <map>
#include <utility>

#include "stand-ins/agent/Text.h"
#include "stand-ins/agent/Xml.h"

namespace stand_ins::agent {
namespace {

/// A "dataItem" while it is read: its context, and the texts of its other elements by their names.
struct DataItem_ {
    std::map<std::wstring, std::wstring> context;
    std::map<std::wstring, std::wstring> texts;
};

void AddContext_(Inspection& inspection, const std::wstring& name, const std::wstring& value) {
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
}

void AddDataItem_(Inspection& inspection, DataItem_ item, const XmlReader& reader) {
    const std::wstring encoding = item.texts[L"dataEncoding"];
    const std::wstring data = item.texts[L"data"];
    if (encoding == L"filePath") {
        inspection.attachments.push_back({data, item.context[L"DataLocation"]});
    } else if (encoding == L"base64") {
        const auto bytes = DecodeBase64(data);
        if (!bytes) {
            reader.Fail("a \"data\" that is not the base64 that it should be");
        }
        inspection.blocks.push_back(*bytes);
    } else if (encoding == L"text") {
        inspection.body += item.context[L"ItemType"] == L"EmailSubject" ? L"" : data;
    } else if (encoding != L"folderPath") {
        reader.Fail("\"" + ToUtf8(encoding) + "\" is no \"dataEncoding\"");
    }
}

} // namespace

Inspection Inspection::FromXml(std::wstring_view xml) {
    XmlReader reader(xml, "inspector document");
    std::wstring data;
    const auto root = reader.Next(data);
    if (!root || root->isEnd || root->name != L"inspectorMessage") {
        reader.Fail("it does not begin with <inspectorMessage>");
    }
    if (reader.Attribute(*root, L"version") != L"1") {
        reader.Fail("only version 1 is known");
    }
    Inspection inspection;
    inspection.channel = reader.Attribute(*root, L"channel");
    DataItem_ item;
    while (const auto tag = reader.Next(data)) {
        if (tag->isEnd && tag->name == L"dataItem") {
            AddDataItem_(inspection, std::exchange(item, {}), reader);
        } else if (tag->isEnd) {
            item.texts[tag->name] = data;
        } else if (tag->name == L"item") {
            AddContext_(inspection, reader.Attribute(*tag, L"name"), reader.Attribute(*tag, L"value"));
        } else if (tag->name == L"contextItem") {
            item.context[reader.Attribute(*tag, L"name")] = reader.Attribute(*tag, L"value");
        }
        data.clear();
    }
    return inspection;
}

const std::vector<std::wstring>& Inspection::Contents() const {
    if (!contents_) {
        std::vector<std::wstring> contents;
        for (const InspectedFile& file : attachments) {
            contents.push_back(DecodeText(ReadWholeFile(file.path)));
        }
        std::ranges::transform(blocks, std::back_inserter(contents), DecodeText);
        contents_ = std::move(contents);
    }
    return *contents_;
}

} // namespace stand_ins::agent
