#include "stand-ins/agent/Policy.h"

#include <algorithm>
#include <utility>

#include "stand-ins/agent/Condition.h"
#include "stand-ins/agent/Directives.h"
#include "stand-ins/agent/Inspection.h"

namespace stand_ins {

using namespace agent;

Policy Policy::Always(Actions actions) {
    Policy policy;
    policy.rules.push_back({L"always", {}, std::move(actions)});
    return policy;
}

Policy Policy::Block() {
    Actions actions;
    actions.block = true;
    return Always(std::move(actions));
}

Policy Policy::Decision(std::wstring text) {
    Actions actions;
    actions.decision = std::move(text);
    return Always(std::move(actions));
}

std::int32_t Policy::ExecutionMode(const std::wstring& channel) const {
    for (const std::wstring& name : {channel, std::wstring(L"*")}) {
        if (const auto found = executionModes.find(name); found != executionModes.end()) {
            return found->second;
        }
    }
    return 1;
}

Verdict Policy::Judge(const Inspection& inspection) const {
    if (directives) {
        if (auto wished = ReadDirectives(inspection)) {
            return {std::move(*wished), L"the mail asks for it"};
        }
    }
    const auto holds = [&](const auto& condition) { return condition->Holds(inspection); };
    for (const Rule& rule : rules) {
        if (std::ranges::all_of(rule.conditions, holds)) {
            return {rule.actions, L"rule \"" + rule.name + L"\""};
        }
    }
    return {{}, L"no rule applies"};
}

} // namespace stand_ins
