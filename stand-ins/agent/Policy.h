#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "stand-ins/agent/Misbehaviour.h"

namespace stand_ins {

namespace agent {
struct Inspection;
class Condition;
} // namespace agent

/// What replaces an attachment: the content of a file, or a text.
struct Replacement {
    std::wstring name;        ///< only attachments whose name holds this, in either case; empty: every one
    std::wstring file;        ///< full path of the new content; empty: `text` is the content
    std::wstring text;        ///< written as UTF-8; {name} stands for the attachment's name
    std::wstring displayName; ///< the name that the receiver sees; {name} as above; empty: the old one
};

/// What is to be done with an item.
struct Actions {
    bool block = false;
    std::wstring subject;    ///< the new subject; {subject} stands for the old one; empty: no change
    std::wstring bodyBefore; ///< text put before the body
    std::wstring bodyAfter;  ///< text put behind the body
    std::optional<Replacement> replacement;
    std::uint32_t delay = 0;              ///< milliseconds before the answer
    std::optional<std::wstring> decision; ///< the decision's literal text, instead of the changes above
    Misbehaviour misbehaviour;            ///< of this one answer
};

/// A rule: the first one whose conditions all hold decides.
struct Rule {
    std::wstring name;
    std::vector<std::shared_ptr<const agent::Condition>> conditions; ///< none: the rule always holds
    Actions actions;
};

/// What an application may do with a file, as it is told with the channels. The numbers are the applications' own.
struct FilePermission {
    std::wstring path;
    std::int32_t operation = 0; ///< "operator"
    std::int32_t fileClass = 0; ///< "class"
    bool isInspected = false;
};

/// A verdict with its reason.
struct Verdict {
    Actions actions;
    std::wstring why;
};

/// What the agent does with what it is asked. The form of a policy file is told in stand-ins/agent/README.md.
class Policy {
public:
    /// Every channel is watched, every item allowed, and a mail's own wishes are honoured.
    Policy() = default;

    /// Reads JSON (UTF-8, comments allowed). Relative paths in it start at the folder.
    /// Throws std::runtime_error with one line: the name, where in the text, and what is wrong.
    static Policy FromText(std::string_view json, const std::wstring& folder = {},
                           const std::wstring& name = L"policy");
    static Policy FromFile(const std::wstring& path);

    /// Short policies: one rule without conditions.
    static Policy Always(Actions actions);
    static Policy Block();
    static Policy Decision(std::wstring text);

    /// The execution mode of a channel; 0 is off.
    std::int32_t ExecutionMode(const std::wstring& channel) const;

    /// What is to happen to an item.
    Verdict Judge(const agent::Inspection& inspection) const;

    std::map<std::wstring, std::int32_t> executionModes; ///< by channel; "*" is any other; neither: 1
    std::vector<std::wstring> channels;                  ///< those in force for an application
    bool inspectsLaunch = false;                         ///< whether the launch of an application is inspected
    std::vector<FilePermission> filePermissions;
    bool directives = true; ///< whether a mail's own wishes are honoured
    std::vector<Rule> rules;
    std::vector<MisbehaviourRule> misbehaviour; ///< in force with the policy
};

} // namespace stand_ins
