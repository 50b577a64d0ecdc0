#include "fuzz/targets/Targets.h"

namespace fuzz {

const std::vector<Target>& Targets() {
    static const std::vector<Target> targets = {MessageTarget(),     ReceiveTarget(),         ExchangeTarget(),
                                                DecisionTarget(),    ChannelsTarget(),        Base64Target(),
                                                HexadecimalTarget(), LogConfigurationTarget()};
    return targets;
}

} // namespace fuzz
