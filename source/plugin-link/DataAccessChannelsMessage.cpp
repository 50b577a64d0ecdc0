#include "plugin-link/DataAccessChannelsMessage.h"

#include <algorithm>
#include <iterator>

#include "foundation/Log4CxxHelper.h"
#include "foundation/StringUtils.h"
#include "foundation/Throw.h"
#include "platform/ticpp/ticpp.h"
#include "plugin-link/Exceptions.h"

namespace vorlek {
namespace {

/// A channel's number is its place here.
constexpr const char* kChannels[] = {"Paste",
                                     "FileSystemRead",
                                     "Print",
                                     "Http",
                                     "WPDDragAndDrop",
                                     "WPDPaste",
                                     "NetworkShareDragAndDrop",
                                     "NetworkSharePaste",
                                     "FTPDragAndDrop",
                                     "FTPPaste"};

constexpr char kInspect[] = "inspect";
constexpr char kFilePermission[] = "FilePermission";
constexpr std::uint32_t kRecordKind = 8;
constexpr std::uint32_t kRecordHead = 16; ///< the four numbers in front of the path, in bytes

std::wstring Attribute_(const ticpp::Element& element, const char* name) {
    return StringUtils::FromUtf8(element.GetAttribute(name));
}

/// Exactly "False": whatever else stands there, in any other case, says that there is an inspection.
bool IsInspectionOff_(const ticpp::Element& element) {
    return element.GetAttribute(kInspect) == "False";
}

std::uint32_t PathSize_(const std::wstring& path) {
    return static_cast<std::uint32_t>((path.size() + 1) * sizeof(wchar_t));
}

void Append_(std::vector<BYTE>& block, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const BYTE*>(data);
    block.insert(block.end(), bytes, bytes + size);
}

void Append_(std::vector<BYTE>& block, std::uint32_t number) {
    Append_(block, &number, sizeof number);
}

} // namespace

LoggerHolder DataAccessChannelsMessage::logger_;

DataAccessChannelsMessage::DataAccessChannelsMessage(const std::wstring& text) {
    InitLogger(logger_, "vorlek::DataAccessChannelsMessage::DataAccessChannelsMessage", false);
    try {
        Parse_(text);
    } catch (const ticpp::Exception& failure) {
        Throw<DataAccessChannelsMessageFormatException>(L"vorlek::DataAccessChannelsMessage::DataAccessChannelsMessage",
                                                        StringUtils::FromUtf8(failure.what()));
    }
}

bool DataAccessChannelsMessage::IsChannelActivated(std::int32_t channel) const {
    if (channel < 0 || channel >= std::ssize(kChannels)) {
        // The "%d" is part of the words: logs are searched for them.
        Throw<ArgumentOutOfRangeException>(L"vorlek::DataAccessChannelsMessage::IsChannelActivated",
                                           L"Invalid channel specified. Value is %d", channel);
    }
    return activeChannels_.contains(channel);
}

void DataAccessChannelsMessage::Parse_(const std::wstring& text) {
    ticpp::Document document;
    document.Parse(StringUtils::ToUtf8(text));
    const ticpp::Element root = document.FirstChildElement("DataAccessChannelsMessage");
    ParseChannels_(root.FirstChildElement("channels"));
    launchInspectionOff_ = IsInspectionOff_(root.FirstChildElement("ApplicationLaunch"));
    for (const ticpp::Element& permissions : ticpp::Iterator(root, "FilePermissions")) {
        ParsePermissions_(permissions);
    }
}

void DataAccessChannelsMessage::ParseChannels_(const ticpp::Element& channels) {
    for (const ticpp::Element& channel : ticpp::Iterator(channels, "channel")) {
        const auto* found = std::find(std::begin(kChannels), std::end(kChannels), channel.GetText());
        if (found != std::end(kChannels)) {
            activeChannels_.insert(static_cast<std::int32_t>(found - std::begin(kChannels)));
        }
    }
}

/// The list stands in the second child element, whatever the two are called; without it there is nothing to read.
void DataAccessChannelsMessage::ParsePermissions_(const ticpp::Element& permissions) {
    const bool off = IsInspectionOff_(permissions);
    const ticpp::Element first = permissions.FirstChildElement({}, false);
    if (!first) {
        return;
    }
    const ticpp::Element list = first.NextSiblingElement({}, false);
    if (!list) {
        return;
    }
    if (Block_ block = MakeBlock_(list); !block.empty()) {
        (off ? uninspectedPermissions_ : inspectedPermissions_) = std::move(block);
    }
}

/// Empty for a list without permissions. One without a path has room in the block, but no record.
DataAccessChannelsMessage::Block_ DataAccessChannelsMessage::MakeBlock_(const ticpp::Element& list) {
    std::uint32_t total = 0;
    for (const ticpp::Element& permission : ticpp::Iterator(list, kFilePermission)) {
        total += kRecordHead + PathSize_(Attribute_(permission, "path"));
    }
    Block_ block;
    if (total == 0) {
        return block;
    }
    block.reserve(sizeof total + total);
    Append_(block, total);
    for (const ticpp::Element& permission : ticpp::Iterator(list, kFilePermission)) {
        const std::wstring path = Attribute_(permission, "path");
        const int operation = _wtoi(Attribute_(permission, "operator").c_str());
        const int kind = _wtoi(Attribute_(permission, "class").c_str());
        if (!path.empty()) {
            Append_(block, static_cast<std::uint32_t>(kind));
            Append_(block, kRecordKind);
            Append_(block, static_cast<std::uint32_t>(operation));
            Append_(block, PathSize_(path));
            Append_(block, path.c_str(), PathSize_(path));
        }
    }
    block.resize(sizeof total + total);
    return block;
}

} // namespace vorlek
