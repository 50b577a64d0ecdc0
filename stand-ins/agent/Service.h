#pragma once
#include <atomic>
#include <functional>
#include <string>

#include "stand-ins/agent/Agent.h"

namespace stand_ins::agent {

/// The plug-ins and their methods: what is answered to a request.
class Service {
public:
    Service(std::wstring workFolder, std::wstring recordFolder, std::function<void(const std::wstring&)> log);

    /// Never throws: what fails becomes an `Error` answer that says so.
    Answer Handle(const Request& request, const Policy& policy);

private:
    Answer Inspect_(const Request& request, const Policy& policy);
    Answer BeginInspect_(const Request& request, const Policy& policy);
    void Record_(const std::wstring& document, const std::wstring& decision);
    void Log_(const std::wstring& line) const;

    std::wstring workFolder_;
    std::wstring recordFolder_;
    std::function<void(const std::wstring&)> log_;
    std::atomic<unsigned> recorded_ = 0;
};

} // namespace stand_ins::agent
