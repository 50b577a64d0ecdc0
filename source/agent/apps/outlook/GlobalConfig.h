#pragma once
#include <cstdint>
#include <string>

#include <log4cxx/logger.h>

#include "platform/outlook/Outlook.h"

namespace vorlek {

/// The two facts about this Outlook that code far from the add-in's connection needs. Both are set while
/// the add-in is being connected, before any worker exists, and read without a lock from then on.
class GlobalConfig {
public:
    GlobalConfig() = delete;

    /// The first major version with the newer object model.
    static constexpr std::int32_t OUTLOOK_2007_MAJOR_VERSION = 12;

    static void SetOutlookApplication(const Outlook::_ApplicationPtr& application);
    /// Null before the first connection.
    static Outlook::_ApplicationPtr GetOutlookApplication();

    /// version: as in "12.0.6665.5003"; without a dot the stored value stays. Returns the stored value.
    static std::int32_t SetOutlookMajorVersion(const std::wstring& version, const log4cxx::LoggerPtr& logger);
    /// -1 while it is not known.
    static std::int32_t GetOutlookMajorVersion();
    /// An unknown version is not before 2007: whoever asks takes the modern road until proven otherwise.
    static bool IsOutlookBefore2007();

private:
    /// Never destroyed: when statics die at the end of the process, Outlook is half gone and a last Release would
    /// run in its ruins. An unload of the DLL alone gives the reference back through the setter.
    union Application_ {
        Application_() : pointer() {}
        ~Application_() {}
        Outlook::_ApplicationPtr pointer;
    };

    static Application_ outlookApplication;
    static std::int32_t outlookMajorVersion;
};

} // namespace vorlek
