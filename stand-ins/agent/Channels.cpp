#include "stand-ins/agent/Channels.h"

#include <algorithm>

#include "stand-ins/agent/Policy.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

const wchar_t* Bool_(bool value) {
    return value ? L"True" : L"False";
}

/// The permissions stand in the second of an element's two children, whatever those are called.
std::wstring FilePermissions_(const Policy& policy, bool inspected) {
    std::wstring text;
    for (const FilePermission& permission : policy.filePermissions) {
        if (permission.isInspected == inspected) {
            text += L"<FilePermission path=\"" + Escape(permission.path) + L"\" operator=\"" +
                    std::to_wstring(permission.operation) + L"\" class=\"" + std::to_wstring(permission.fileClass) +
                    L"\" />";
        }
    }
    return text.empty() ? text
                        : std::wstring(L"<FilePermissions inspect=\"") + Bool_(inspected) +
                              L"\"><Application /><Files>" + text + L"</Files></FilePermissions>";
}

} // namespace

std::wstring ChannelsText(const Policy& policy) {
    std::wstring text = L"<DataAccessChannelsMessage><channels>";
    for (const std::wstring& channel : policy.channels) {
        text += L"<channel>" + Escape(channel) + L"</channel>";
    }
    text += std::wstring(L"</channels><ApplicationLaunch inspect=\"") + Bool_(policy.inspectsLaunch) + L"\" />";
    return text + FilePermissions_(policy, false) + FilePermissions_(policy, true) + L"</DataAccessChannelsMessage>";
}

} // namespace stand_ins::agent
