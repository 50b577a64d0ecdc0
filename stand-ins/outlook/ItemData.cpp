#include "stand-ins/outlook/ItemData.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "stand-ins/outlook/Text.h"

namespace stand_ins {
namespace {

using Json = nlohmann::json;

struct KindNames {
    ItemKind kind;
    const char* name;
    const wchar_t* messageClass; ///< unless the item says another
};

constexpr KindNames kKinds[] = {
    {ItemKind::Mail, "mail", L"IPM.Note"},
    {ItemKind::Post, "post", L"IPM.Post"},
    {ItemKind::Meeting, "meeting", L"IPM.Schedule.Meeting.Request"},
    {ItemKind::Appointment, "appointment", L"IPM.Appointment"},
    {ItemKind::Task, "task", L"IPM.Task"},
    {ItemKind::TaskRequest, "taskRequest", L"IPM.TaskRequest"},
};

const KindNames& NamesOf(ItemKind kind) {
    return *std::ranges::find(kKinds, kind, &KindNames::kind);
}

// Reads the fields of one JSON object; failures name the way to the field, such as "attachments[2].content".
class Reader {
public:
    Reader(const Json& json, std::string path) : json_(json), path_(std::move(path)) {
        if (!json_.is_object()) {
            throw std::runtime_error((path_.empty() ? "the item" : path_) + " is not an object");
        }
    }

    void Read(const char* field, std::wstring& text) const {
        if (const Json* value = Find_(field, &Json::is_string, "a text")) {
            text = FromUtf8(value->get_ref<const std::string&>());
        }
    }

    void Read(const char* field, long& number) const {
        if (const Json* value = Find_(field, &Json::is_number_integer, "a whole number")) {
            number = value->get<long>();
        }
    }

    void Read(const char* field, double& number) const {
        if (const Json* value = Find_(field, &Json::is_number, "a number")) {
            number = value->get<double>();
        }
    }

    void Read(const char* field, bool& truth) const {
        if (const Json* value = Find_(field, &Json::is_boolean, "true or false")) {
            truth = value->get<bool>();
        }
    }

    void ReadBytes(const char* field, std::string& bytes) const {
        if (const Json* value = Find_(field, &Json::is_string, "a base64 text")) {
            try {
                bytes = Base64Decode(value->get_ref<const std::string&>());
            } catch (const std::runtime_error& fault) {
                throw std::runtime_error(Path_(field) + " is " + fault.what());
            }
        }
    }

    void Read(const char* field, Properties& properties) const {
        if (const Json* value = Find_(field, &Json::is_object, "an object")) {
            for (const auto& [tag, text] : value->items()) {
                char* end = nullptr;
                const unsigned long number = std::strtoul(tag.c_str(), &end, 16);
                if (tag.size() != 10 || !tag.starts_with("0x") || *end != '\0' || !text.is_string()) {
                    throw std::runtime_error(Path_(field) + "." + tag + " is not a tag such as 0x39FE001F with a text");
                }
                properties[number] = FromUtf8(text.get_ref<const std::string&>());
            }
        }
    }

    template <class Body>
    void ReadEach(const char* field, Body body) const {
        if (const Json* value = Find_(field, &Json::is_array, "a list")) {
            for (size_t i = 0; i < value->size(); ++i) {
                body((*value)[i], Path_(field) + "[" + std::to_string(i) + "]");
            }
        }
    }

    [[noreturn]] void Refuse(const char* field, const std::string& what) const {
        throw std::runtime_error(Path_(field) + " is " + what);
    }

    bool Has(const char* field) const { return json_.contains(field) && !json_[field].is_null(); }

private:
    std::string Path_(const char* field) const { return path_.empty() ? field : path_ + "." + field; }

    const Json* Find_(const char* field, bool (Json::*test)() const noexcept, const char* wanted) const {
        const auto found = json_.find(field);
        if (found == json_.end() || found->is_null()) {
            return nullptr;
        }
        if (!(*found.*test)()) {
            Refuse(field, std::string("not ") + wanted);
        }
        return &*found;
    }

    const Json& json_;
    std::string path_;
};

Json ToJson(const Properties& properties) {
    Json json = Json::object();
    for (const auto& [tag, text] : properties) {
        json[ToUtf8(Hex(static_cast<long>(tag)))] = ToUtf8(text);
    }
    return json;
}

Json ToJson(const RecipientData& recipient) {
    Json json = {{"name", ToUtf8(recipient.name)},
                 {"address", ToUtf8(recipient.address)},
                 {"type", recipient.type},
                 {"resolved", recipient.resolved},
                 {"addressType", ToUtf8(recipient.addressType)},
                 {"group", ToUtf8(recipient.group)}};
    if (!recipient.properties.empty()) {
        json["properties"] = ToJson(recipient.properties);
    }
    return json;
}

Json ToJson(const AttachmentData& attachment) {
    return {{"fileName", ToUtf8(attachment.fileName)},
            {"displayName", ToUtf8(attachment.displayName)},
            {"type", attachment.type},
            {"position", attachment.position},
            {"mimeType", ToUtf8(attachment.mimeType)},
            {"contentId", ToUtf8(attachment.contentId)},
            {"content", Base64Encode(attachment.content)},
            {"saved", attachment.saved}};
}

RecipientData ReadRecipient(const Reader& reader) {
    RecipientData recipient;
    reader.Read("name", recipient.name);
    reader.Read("address", recipient.address);
    reader.Read("type", recipient.type);
    reader.Read("resolved", recipient.resolved);
    reader.Read("addressType", recipient.addressType);
    reader.Read("group", recipient.group);
    reader.Read("properties", recipient.properties);
    return recipient;
}

AttachmentData ReadAttachment(const Reader& reader) {
    AttachmentData attachment;
    reader.Read("fileName", attachment.fileName);
    reader.Read("displayName", attachment.displayName);
    reader.Read("type", attachment.type);
    reader.Read("position", attachment.position);
    reader.Read("mimeType", attachment.mimeType);
    reader.Read("contentId", attachment.contentId);
    reader.Read("saved", attachment.saved);
    reader.ReadBytes("content", attachment.content);
    return attachment;
}

void ReadKind(const Reader& reader, ItemData& item) {
    std::wstring kind = L"mail";
    reader.Read("kind", kind);
    const auto* const known = std::ranges::find(kKinds, ToUtf8(kind), &KindNames::name);
    if (known == std::end(kKinds)) {
        std::string names;
        for (const KindNames& each : kKinds) {
            names += (names.empty() ? "\"" : ", \"") + std::string(each.name) + '"';
        }
        reader.Refuse("kind", "none of " + names);
    }
    item.kind = known->kind;
}

void ReadMeeting(const Reader& reader, ItemData& item) {
    reader.Read("start", item.start);
    reader.Read("end", item.end);
    reader.Read("location", item.location);
    reader.Read("recurrenceState", item.recurrenceState);
    if (item.recurrenceState < NotRecurring || item.recurrenceState > Exception) {
        reader.Refuse("recurrenceState", "not 0 (none), 1 (series), 2 (occurrence) or 3 (exception)");
    }
    reader.Read("linkBroken", item.linkBroken);
}

void WriteMeeting(const ItemData& item, Json& json) {
    json["start"] = ToUtf8(item.start);
    json["end"] = ToUtf8(item.end);
    json["location"] = ToUtf8(item.location);
    json["recurrenceState"] = item.recurrenceState;
    json["linkBroken"] = item.linkBroken;
}

void ReadBodies(const Reader& reader, ItemData& item) {
    reader.Read("bodyFormat", item.bodyFormat);
    if (item.bodyFormat < 0 || item.bodyFormat > 3) {
        reader.Refuse("bodyFormat", "not 1 (plain), 2 (HTML) or 3 (rich text)");
    }
    reader.Read("body", item.body);
    reader.Read("htmlBody", item.htmlBody);
    reader.ReadBytes("rtfBody", item.rtfBody);
}

} // namespace

void Complete(ItemData& item) {
    if (item.bodyFormat == 0) {
        item.bodyFormat = !item.rtfBody.empty() ? RichText : !item.htmlBody.empty() ? Html : Plain;
    }
    if (item.body.empty() && !item.htmlBody.empty()) {
        item.body = PlainTextOf(item.htmlBody);
    }
    if (item.messageClass.empty()) {
        item.messageClass = NamesOf(item.kind).messageClass;
    }
    item.hasAccount = item.hasAccount || !item.account.empty();
    for (AttachmentData& attachment : item.attachments) {
        if (attachment.displayName.empty()) {
            attachment.displayName = attachment.fileName;
        }
    }
}

nlohmann::json ToJson(const ItemData& item) {
    Json json = {{"kind", NamesOf(item.kind).name},
                 {"messageClass", ToUtf8(item.messageClass)},
                 {"subject", ToUtf8(item.subject)},
                 {"bodyFormat", item.bodyFormat},
                 {"body", ToUtf8(item.body)},
                 {"htmlBody", ToUtf8(item.htmlBody)},
                 {"rtfBody", Base64Encode(item.rtfBody)},
                 {"fromName", ToUtf8(item.fromName)},
                 {"account", item.hasAccount ? Json(ToUtf8(item.account)) : Json()},
                 {"autoForwarded", item.autoForwarded},
                 {"votingResponse", ToUtf8(item.votingResponse)},
                 {"properties", ToJson(item.properties)},
                 {"entryId", ToUtf8(item.entryId)},
                 {"lastModificationTime", item.lastModificationTime},
                 {"sent", item.sent},
                 {"recipients", Json::array()},
                 {"attachments", Json::array()},
                 {"headers", Json::array()}};
    for (const RecipientData& recipient : item.recipients) {
        json["recipients"].push_back(ToJson(recipient));
    }
    for (const AttachmentData& attachment : item.attachments) {
        json["attachments"].push_back(ToJson(attachment));
    }
    for (const auto& [name, value] : item.headers) {
        json["headers"].push_back({ToUtf8(name), ToUtf8(value)});
    }
    if (item.kind == ItemKind::Meeting || item.kind == ItemKind::Appointment) {
        WriteMeeting(item, json);
    }
    if (!item.relatedId.empty()) {
        json["relatedId"] = ToUtf8(item.relatedId);
    }
    for (const ItemData& related : item.related) {
        json["related"].push_back(ToJson(related));
    }
    return json;
}

ItemData FromJson(const nlohmann::json& json) {
    const Reader reader(json, {});
    ItemData item;
    ReadKind(reader, item);
    ReadBodies(reader, item);
    ReadMeeting(reader, item);
    reader.Read("messageClass", item.messageClass);
    reader.Read("subject", item.subject);
    reader.Read("fromName", item.fromName);
    reader.Read("account", item.account);
    item.hasAccount = reader.Has("account");
    reader.Read("autoForwarded", item.autoForwarded);
    reader.Read("votingResponse", item.votingResponse);
    reader.Read("properties", item.properties);
    reader.Read("relatedId", item.relatedId);
    reader.Read("entryId", item.entryId);
    reader.Read("lastModificationTime", item.lastModificationTime);
    reader.Read("sent", item.sent);
    reader.ReadEach("recipients", [&](const Json& entry, const std::string& path) {
        item.recipients.push_back(ReadRecipient(Reader(entry, path)));
    });
    reader.ReadEach("attachments", [&](const Json& entry, const std::string& path) {
        item.attachments.push_back(ReadAttachment(Reader(entry, path)));
    });
    reader.ReadEach("headers", [&](const Json& entry, const std::string& path) {
        if (!entry.is_array() || entry.size() != 2 || !entry[0].is_string() || !entry[1].is_string()) {
            throw std::runtime_error(path + " is not a pair of a name and a value");
        }
        item.headers.emplace_back(FromUtf8(entry[0].get<std::string>()), FromUtf8(entry[1].get<std::string>()));
    });
    reader.ReadEach("related", [&](const Json& entry, const std::string&) { item.related.push_back(FromJson(entry)); });
    Complete(item);
    return item;
}

} // namespace stand_ins
