#pragma once
#include "fuzz/driver/Target.h"

namespace fuzz {

/// Message::FromString, and what is read of the message.
Target MessageTarget();
/// MessageCommon::Receive over a stream that comes in pieces.
Target ReceiveTarget();
/// MessageCommon::Send of any text, and Receive of what went out.
Target ExchangeTarget();
/// The agent's answer to an inspection.
Target DecisionTarget();
/// The agent's account of the channels in force.
Target ChannelsTarget();
Target Base64Target();
Target HexadecimalTarget();
/// A log configuration, and a line logged with it.
Target LogConfigurationTarget();

} // namespace fuzz
