#include <cstring>

#include "fuzz/targets/Targets.h"
#include "plugin-link/DataAccessChannelsMessage.h"

namespace fuzz {
namespace {

using vorlek::DataAccessChannelsMessage;

constexpr std::size_t kHead = 16;
/// What a permission without a path adds to a block: a head's room and a
/// terminator's.
constexpr std::size_t kUnused = kHead + sizeof(wchar_t);

std::size_t Number_(const BYTE* bytes) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, sizeof(number));
    return number;
}

/// Walks from record to record, and returns their number. What follows the last
/// one is zero.
std::size_t CountRecords_(const BYTE* block) {
    const BYTE* const end = block + sizeof(std::uint32_t) + Number_(block);
    std::size_t count = 0;
    const BYTE* record = block + sizeof(std::uint32_t);
    for (; record != end && Number_(record + 4) != 0; ++count) {
        Require(end - record >= static_cast<std::ptrdiff_t>(kHead), "a record's head crosses the end of its block");
        Require(Number_(record + 4) == 8, "a record is of an unknown kind");
        const std::size_t size = Number_(record + 12);
        Require(size > sizeof(wchar_t) && size % sizeof(wchar_t) == 0, "a record's path has no length");
        record += kHead + size;
        Require(record <= end, "a record's path crosses the end of its block");
        Require(record[-1] == 0 && record[-2] == 0, "a record's path has no end");
    }
    Require(static_cast<std::size_t>(end - record) % kUnused == 0, "a block's size is not that of its permissions");
    return count;
}

std::string Run_(UnitsView input) {
    const DataAccessChannelsMessage message{std::wstring(input)};
    bool isAnyActive = false;
    for (std::int32_t channel = 0; channel < 10; ++channel) {
        isAnyActive = message.IsChannelActivated(channel) || isAnyActive;
    }
    return std::string(isAnyActive ? "channels" : "no channels") +
           (message.IsLaunchInspectionOff() ? ", launch off" : "") +
           (CountRecords_(message.GetUninspectedPermissions()) != 0 ? ", uninspected" : "") +
           (CountRecords_(message.GetInspectedPermissions()) != 0 ? ", inspected" : "");
}

Material Material_() {
    Material material = XmlMaterial("fuzz/corpus/channels");
    AddTokens(material, L"<DataAccessChannelsMessage> | </DataAccessChannelsMessage> | "
                        L"<channels> | </channels> | "
                        L"<channel>Paste</channel> | <channel>FTPPaste</channel> | <channel/> | "
                        L"<ApplicationLaunch inspect=\"False\"/> |  inspect=\"false\"");
    AddTokens(material, L"<FilePermissions inspect=\"False\"> | <FilePermissions "
                        L"inspect=\"True\"><a/><b> | "
                        L"</b></FilePermissions> | </FilePermissions> | "
                        L"<FilePermission path=\"C:\\x\" operator=\"1\" "
                        L"class=\"2\"/> |  path=\"\" | "
                        L" operator=\"-1\" |  class=\"2147483648\"");
    return material;
}

} // namespace

Target ChannelsTarget() {
    return {.name = "channels",
            .material = Material_,
            .run = Run_,
            .raises = {L"DataAccessChannelsMessageFormatException"}};
}

} // namespace fuzz
