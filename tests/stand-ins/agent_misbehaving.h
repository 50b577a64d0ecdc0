#pragma once
#include <string>

#include "tests/stand-ins/agent_serving.h"

namespace agent_tests {

/// The answers of one agent that lets its clients down in inspections.
class AgentMisbehaving : public AgentServing {
protected:
    /// The answer to an inspection in this kind of misbehaviour.
    Reply Misbehaved_(const stand_ins::Misbehaviour& misbehaviour);

    /// Its text, the delimiter included.
    std::wstring Text_(const stand_ins::Misbehaviour& misbehaviour);

    /// The text of a good answer with all of one piece in it replaced.
    std::wstring With_(const wchar_t* from, const std::wstring& to);

    /// How many bytes a good answer has.
    std::size_t Size_();

    stand_ins::Agent agent_{Options_()};
};

} // namespace agent_tests
