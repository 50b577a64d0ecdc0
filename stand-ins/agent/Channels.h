#pragma once
#include <string>

namespace stand_ins {
class Policy;
}

namespace stand_ins::agent {

/// The answer to "StartAppMgrIdentifyChannels": the channels that are in force for an application, whether its launch
/// is inspected, and the permissions of files, those that are inspected and those that are not.
std::wstring ChannelsText(const Policy& policy);

} // namespace stand_ins::agent
