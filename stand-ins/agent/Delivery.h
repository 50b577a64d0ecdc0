#pragma once
#include <string>

#include "stand-ins/agent/Agent.h"
#include "stand-ins/agent/Connection.h"

namespace stand_ins::agent {

/// The bytes of an answer, the delimiter included.
std::string BytesOf(const Answer& answer);

/// Sends the answer in the way of the misbehaviour, and ends the connection. Returns whether the client was given the
/// whole of a good answer, so that its files are the client's now.
bool Deliver(Connection& connection, const Answer& answer, const MisbehaviourRule& misbehaviour);

} // namespace stand_ins::agent
