#include "stand-ins/agent/Service.h"

#include <exception>
#include <stdexcept>
#include <utility>

#include "stand-ins/agent/Channels.h"
#include "stand-ins/agent/Decision.h"
#include "stand-ins/agent/Inspection.h"
#include "stand-ins/agent/Text.h"
#include "stand-ins/agent/Xml.h"

namespace stand_ins::agent {
namespace {

std::wstring Summary_(const Inspection& inspection, const std::wstring& what, const Verdict& verdict) {
    const Misbehaviour& misbehaviour = verdict.actions.misbehaviour;
    return OneLine(inspection.channel) + L" \"" + OneLine(inspection.subject) + L"\": " + what + L" (" + verdict.why +
           (misbehaviour.IsNone() ? L"" : L"; misbehaving: " + misbehaviour.kinds) + L")";
}

} // namespace

Service::Service(std::wstring workFolder, std::wstring recordFolder, std::function<void(const std::wstring&)> log)
    : workFolder_(std::move(workFolder)), recordFolder_(std::move(recordFolder)), log_(std::move(log)) {}

Answer Service::Handle(const Request& request, const Policy& policy) {
    try {
        if (request.plugin == L"DataControlPlugin") {
            if (request.method == L"GetExecutionMode") {
                return Answer::Number(policy.ExecutionMode(request.param));
            }
            if (request.method == L"Inspect") {
                return Inspect_(request, policy);
            }
            if (request.method == L"BeginInspect") {
                return BeginInspect_(request, policy);
            }
        } else if (request.plugin == L"ApplicationControlPlugin") {
            if (request.method == L"HandleAppLaunchFileAccess" || request.method == L"ProcessExit") {
                return Answer::Number(0);
            }
            if (request.method == L"StartAppMgrIdentifyChannels") {
                return Answer::Text(ChannelsText(policy));
            }
        } else {
            return Answer::Error(L"There is no plug-in \"" + request.plugin + L"\".");
        }
        return Answer::Error(L"The plug-in \"" + request.plugin + L"\" has no method \"" + request.method + L"\".");
    } catch (const std::exception& failure) {
        Log_(request.method + L" failed: " + FromUtf8(failure.what()));
        return Answer::Error(FromUtf8(failure.what()));
    }
}

Answer Service::Inspect_(const Request& request, const Policy& policy) {
    const Inspection inspection = Inspection::FromXml(request.param);
    const Verdict verdict = policy.Judge(inspection);
    Decision decision = MakeDecision(inspection, verdict.actions, workFolder_);
    Answer answer = Answer::Text(decision.xml);
    answer.files = std::move(decision.files);
    answer.delay = verdict.actions.delay;
    answer.misbehaviour = verdict.actions.misbehaviour;
    Record_(request.param, decision.xml);
    Log_(Summary_(inspection, decision.summary, verdict));
    return answer;
}

/// Nobody awaits this answer: it carries the verdict, and no files that nobody would remove.
Answer Service::BeginInspect_(const Request& request, const Policy& policy) {
    const Inspection inspection = Inspection::FromXml(request.param);
    const Verdict verdict = policy.Judge(inspection);
    Answer answer = Answer::Text(VerdictText(verdict.actions.block));
    answer.misbehaviour = verdict.actions.misbehaviour;
    Record_(request.param, answer.text);
    Log_(Summary_(inspection, verdict.actions.block ? L"would be blocked" : L"would be allowed", verdict));
    return answer;
}

/// A record that cannot be written is told of, and the answer goes out all the same.
void Service::Record_(const std::wstring& document, const std::wstring& decision) {
    if (recordFolder_.empty()) {
        return;
    }
    std::wstring number = std::to_wstring(++recorded_);
    number.insert(0, 4 - std::min<std::size_t>(number.size(), 4), L'0');
    const std::wstring stem = recordFolder_ + L"\\" + number;
    try {
        WriteWholeFile(stem + L"-inspector.xml", Indented(document, "inspector document"));
        WriteWholeFile(stem + L"-decision.xml", ToUtf8(decision) + "\n");
    } catch (const std::runtime_error& failure) {
        Log_(FromUtf8(failure.what()));
    }
}

void Service::Log_(const std::wstring& line) const {
    if (log_) {
        log_(line);
    }
}

} // namespace stand_ins::agent
