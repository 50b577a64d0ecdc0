#pragma once
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "foundation/LoggerHolder.h"
#include "platform/Windows.h"

namespace ticpp {
class Element;
}

namespace vorlek {

/// The agent's answer to the question which ways of moving data are to be watched for an application, and
/// which permissions its files have. Any thread may read it.
///
/// A block of permissions is one piece of memory, 32-bit numbers little-endian and nothing padded: the size
/// of the records in bytes, then the records, each of them class, 8, operator, size of the path in bytes with
/// its terminator, and the path in UTF-16 with its terminator. Bytes behind the last record mean nothing.
class DataAccessChannelsMessage {
public:
    /// The answer as XML. Throws DataAccessChannelsMessageFormatException for one that cannot be read.
    explicit DataAccessChannelsMessage(const std::wstring& text);

    /// channel: its number, from 0 for "Paste" to 9 for "FTPPaste". Throws ArgumentOutOfRangeException.
    bool IsChannelActivated(std::int32_t channel) const;

    /// Whether the launch of the application goes uninspected.
    bool IsLaunchInspectionOff() const { return launchInspectionOff_; }
    /// The block of permissions for what is not inspected, and for what is; without any it is the number 0.
    const BYTE* GetUninspectedPermissions() const { return uninspectedPermissions_.data(); }
    const BYTE* GetInspectedPermissions() const { return inspectedPermissions_.data(); }

private:
    using Block_ = std::vector<BYTE>;

    void Parse_(const std::wstring& text);
    void ParseChannels_(const ticpp::Element& channels);
    void ParsePermissions_(const ticpp::Element& permissions);
    static Block_ MakeBlock_(const ticpp::Element& list);

    static LoggerHolder logger_;

    std::set<std::int32_t> activeChannels_;
    bool launchInspectionOff_ = false;
    Block_ uninspectedPermissions_ = Block_(sizeof(std::uint32_t));
    Block_ inspectedPermissions_ = Block_(sizeof(std::uint32_t));
};

} // namespace vorlek
