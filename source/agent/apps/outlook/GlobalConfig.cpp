#include "agent/apps/outlook/GlobalConfig.h"

#include <cstdlib>

#include "foundation/Log.h"

namespace vorlek {

GlobalConfig::Application_ GlobalConfig::outlookApplication;
std::int32_t GlobalConfig::outlookMajorVersion = -1;

void GlobalConfig::SetOutlookApplication(const Outlook::_ApplicationPtr& application) {
    outlookApplication.pointer = application;
}

Outlook::_ApplicationPtr GlobalConfig::GetOutlookApplication() {
    return outlookApplication.pointer;
}

std::int32_t GlobalConfig::SetOutlookMajorVersion(const std::wstring& version, const log4cxx::LoggerPtr& logger) {
    const std::size_t dot = version.find(L'.');
    if (dot == std::wstring::npos) {
        LOG_DEBUG(logger, L"OutlookMajorVersion failed to be set");
    } else {
        outlookMajorVersion = _wtoi(version.substr(0, dot).c_str());
        LOG_DEBUG(logger, L"OutlookMajorVersion was set to = " << outlookMajorVersion);
    }
    return outlookMajorVersion;
}

std::int32_t GlobalConfig::GetOutlookMajorVersion() {
    return outlookMajorVersion;
}

bool GlobalConfig::IsOutlookBefore2007() {
    return outlookMajorVersion >= 1 && outlookMajorVersion < OUTLOOK_2007_MAJOR_VERSION;
}

} // namespace vorlek
