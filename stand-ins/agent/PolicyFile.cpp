// Reading a policy from its file: every fault is told with its place.
#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <limits>
#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>

#include "stand-ins/agent/Condition.h"
#include "stand-ins/agent/Policy.h"
#include "stand-ins/agent/Quantity.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins {

using namespace agent;

namespace {

/// A value of the file and the way to it.
class Node_ {
public:
    Node_(const nlohmann::json& value, std::string path) : value_(value), path_(std::move(path)) {}

    [[noreturn]] void Fail(const std::string& what) const {
        throw std::runtime_error((path_.empty() ? "" : path_ + ": ") + what);
    }

    bool IsString() const { return value_.is_string(); }
    bool IsObject() const { return value_.is_object(); }

    std::wstring String() const {
        Expect_(value_.is_string(), "a text");
        return FromUtf8(value_.get_ref<const std::string&>());
    }

    bool Bool() const {
        Expect_(value_.is_boolean(), "true or false");
        return value_.get<bool>();
    }

    std::int32_t Integer() const {
        Expect_(value_.is_number_integer() && value_ >= std::numeric_limits<std::int32_t>::min() &&
                    value_ <= std::numeric_limits<std::int32_t>::max(),
                "a whole number of 32 bits");
        return value_.get<std::int32_t>();
    }

    std::uint32_t Duration() const {
        const auto duration = ReadDuration(value_.is_number_unsigned() ? FromUtf8(value_.dump())
                                           : IsString()                ? String()
                                                                       : std::wstring());
        Expect_(duration.has_value(), "a time such as \"2s\" or \"500ms\", 10 minutes at most");
        return *duration;
    }

    /// Calls body(item) for each item of a list.
    template <class Body>
    void EachItem(Body&& body) const {
        Expect_(value_.is_array(), "a list");
        for (std::size_t i = 0; i < value_.size(); ++i) {
            body(Node_(value_[i], path_ + "[" + std::to_string(i) + "]"));
        }
    }

    /// Calls body(name, member) for each member of an object.
    template <class Body>
    void EachMember(Body&& body) const {
        Expect_(value_.is_object(), "an object in braces");
        for (const auto& [name, member] : value_.items()) {
            body(name, Node_(member, path_.empty() ? name : path_ + "." + name));
        }
    }

    /// Calls the reader of each member by its name; a name without a reader is a fault.
    template <class Reader>
    void Members(std::initializer_list<std::pair<const char*, Reader>> readers) const {
        EachMember([&](const std::string& name, const Node_& member) {
            const auto found = std::ranges::find(readers, name, &std::pair<const char*, Reader>::first);
            if (found == readers.end()) {
                std::string known;
                for (const auto& reader : readers) {
                    known += std::string(known.empty() ? "" : ", ") + reader.first;
                }
                member.Fail("unknown; known here are " + known);
            }
            found->second(member);
        });
    }

private:
    void Expect_(bool isSo, const char* what) const {
        if (!isSo) {
            Fail(std::string("must be ") + what);
        }
    }

    const nlohmann::json& value_;
    std::string path_;
};

using Reader_ = std::function<void(const Node_&)>;

Reader_ Into_(std::wstring& text) {
    return [&text](const Node_& node) { text = node.String(); };
}

std::vector<Probe> ReadProbes_(const Node_& node) {
    std::vector<Probe> probes;
    if (node.IsString()) {
        probes.push_back(Probe::Contains(node.String()));
    } else if (node.IsObject()) {
        node.Members<Reader_>(
            {{"contains", [&](const Node_& text) { probes.push_back(Probe::Contains(text.String())); }},
             {"pattern",
              [&](const Node_& pattern) {
                  try {
                      probes.push_back(Probe::Pattern(pattern.String()));
                  } catch (const std::regex_error& failure) {
                      pattern.Fail(std::string("no regular expression: ") + failure.what());
                  }
              }},
             {"cardNumber", [&](const Node_& wanted) {
                  if (wanted.Bool()) {
                      probes.push_back(Probe::CardNumber());
                  }
              }}});
    } else {
        node.EachItem([&](const Node_& item) { std::ranges::copy(ReadProbes_(item), std::back_inserter(probes)); });
    }
    if (probes.empty()) {
        node.Fail("nothing to look for");
    }
    return probes;
}

void ReadMatch_(const Node_& node, Rule& rule) {
    const auto into = [&rule](Field field) {
        return [&rule, field](const Node_& probes) {
            rule.conditions.push_back(std::make_shared<Condition>(field, ReadProbes_(probes)));
        };
    };
    node.Members<Reader_>({{"channel", into(Field::Channel)},
                           {"subject", into(Field::Subject)},
                           {"body", into(Field::Body)},
                           {"text", into(Field::Text)},
                           {"sender", into(Field::Sender)},
                           {"recipient", into(Field::Recipient)},
                           {"attachmentName", into(Field::AttachmentName)},
                           {"attachmentContent", into(Field::AttachmentContent)},
                           {"anywhere", into(Field::Anywhere)}});
}

Replacement ReadReplacement_(const Node_& node, const std::filesystem::path& folder) {
    Replacement replacement;
    node.Members<Reader_>({{"name", Into_(replacement.name)},
                           {"file",
                            [&](const Node_& file) {
                                const std::filesystem::path path = folder / file.String();
                                std::error_code ignored;
                                if (!std::filesystem::is_regular_file(path, ignored)) {
                                    file.Fail("no such file: " + ToUtf8(path.wstring()));
                                }
                                replacement.file = path.wstring();
                            }},
                           {"text", Into_(replacement.text)},
                           {"displayName", Into_(replacement.displayName)}});
    if (replacement.file.empty() == replacement.text.empty()) {
        node.Fail("needs one of \"file\" and \"text\"");
    }
    return replacement;
}

/// What a reader of misbehaviour says is wrong, at its place.
template <class Read>
auto Misbehaviour_(const Node_& node, Read&& read) {
    try {
        return read(node.String());
    } catch (const std::runtime_error& failure) {
        node.Fail(failure.what());
    }
}

void ReadActions_(const Node_& node, Actions& actions, const std::filesystem::path& folder) {
    bool isAllowed = false;
    node.Members<Reader_>(
        {{"block", [&](const Node_& value) { actions.block = value.Bool(); }},
         {"allow", [&](const Node_& value) { isAllowed = value.Bool(); }},
         {"subject", Into_(actions.subject)},
         {"body",
          [&](const Node_& body) {
              body.Members<Reader_>({{"before", Into_(actions.bodyBefore)}, {"after", Into_(actions.bodyAfter)}});
          }},
         {"replaceAttachments", [&](const Node_& value) { actions.replacement = ReadReplacement_(value, folder); }},
         {"delay", [&](const Node_& value) { actions.delay = value.Duration(); }},
         {"decision", [&](const Node_& value) { actions.decision = value.String(); }},
         {"misbehave",
          [&](const Node_& value) { actions.misbehaviour = Misbehaviour_(value, &Misbehaviour::OfItem); }}});
    if (actions.block && isAllowed) {
        node.Fail("cannot block and allow");
    }
}

Rule ReadRule_(const Node_& node, const std::filesystem::path& folder) {
    Rule rule;
    bool hasActions = false;
    node.Members<Reader_>({{"name", Into_(rule.name)},
                           {"match", [&](const Node_& match) { ReadMatch_(match, rule); }},
                           {"then", [&](const Node_& actions) {
                                ReadActions_(actions, rule.actions, folder);
                                hasActions = true;
                            }}});
    if (rule.name.empty() || !hasActions) {
        node.Fail("needs \"name\" and \"then\"");
    }
    return rule;
}

FilePermission ReadFilePermission_(const Node_& node) {
    FilePermission permission;
    node.Members<Reader_>({{"path", Into_(permission.path)},
                           {"operator", [&](const Node_& value) { permission.operation = value.Integer(); }},
                           {"class", [&](const Node_& value) { permission.fileClass = value.Integer(); }},
                           {"inspect", [&](const Node_& value) { permission.isInspected = value.Bool(); }}});
    return permission;
}

Policy ReadPolicy_(const Node_& node, const std::filesystem::path& folder) {
    Policy policy;
    node.Members<Reader_>(
        {{"executionMode",
          [&](const Node_& modes) {
              modes.EachMember([&](const std::string& channel, const Node_& mode) {
                  policy.executionModes[FromUtf8(channel)] = mode.Integer();
              });
          }},
         {"channels",
          [&](const Node_& list) {
              list.EachItem([&](const Node_& name) { policy.channels.push_back(name.String()); });
          }},
         {"inspectLaunch", [&](const Node_& value) { policy.inspectsLaunch = value.Bool(); }},
         {"filePermissions",
          [&](const Node_& list) {
              list.EachItem([&](const Node_& item) { policy.filePermissions.push_back(ReadFilePermission_(item)); });
          }},
         {"directives", [&](const Node_& value) { policy.directives = value.Bool(); }},
         {"misbehave",
          [&](const Node_& list) {
              list.EachItem([&](const Node_& item) {
                  policy.misbehaviour.push_back(Misbehaviour_(item, &MisbehaviourRule::FromText));
              });
          }},
         {"rules", [&](const Node_& list) {
              list.EachItem([&](const Node_& rule) { policy.rules.push_back(ReadRule_(rule, folder)); });
          }}});
    return policy;
}

/// "line 3, column 7: what is wrong" of the parser's words, which begin with its own name and number.
std::string Place_(const nlohmann::json::parse_error& failure) {
    const std::string words = failure.what();
    const std::size_t place = words.find("line ");
    return place == std::string::npos ? words : words.substr(place);
}

} // namespace

Policy Policy::FromText(std::string_view json, const std::wstring& folder, const std::wstring& name) {
    try {
        const auto root = nlohmann::json::parse(json, nullptr, true, true);
        return ReadPolicy_(Node_(root, ""), folder);
    } catch (const nlohmann::json::parse_error& failure) {
        throw std::runtime_error(ToUtf8(name) + ": " + Place_(failure));
    } catch (const std::runtime_error& failure) {
        throw std::runtime_error(ToUtf8(name) + ": " + failure.what());
    }
}

Policy Policy::FromFile(const std::wstring& path) {
    const std::filesystem::path whole = std::filesystem::absolute(path);
    return FromText(ReadWholeFile(path), whole.parent_path().wstring(), path);
}

} // namespace stand_ins
