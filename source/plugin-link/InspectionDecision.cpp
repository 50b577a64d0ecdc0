#include "plugin-link/InspectionDecision.h"

#include "foundation/Border.h"
#include "foundation/FileUtils.h"
#include "foundation/Log.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/StringUtils.h"
#include "platform/ticpp/ticpp.h"
#include "plugin-link/Number.h"

namespace vorlek {
namespace {

constexpr wchar_t kDecision[] = L"decision";
constexpr wchar_t kResult[] = L"result";

std::wstring Attribute_(const ticpp::Element& element, const char* name) {
    return StringUtils::FromUtf8(element.GetAttribute(name));
}

} // namespace

LoggerHolder InspectionDecision::logger_;

InspectionDecision::InspectionDecision(std::int32_t result) : result_(result) {
    InitLogger(logger_, "vorlek::InspectionDecision::InspectionDecision", false);
    LOG_INFO(logger_, L"Inspection decision A: " << result);
    resultText_.append(L"<").append(kDecision).append(L" ").append(kResult).append(L"=\"");
    resultText_.append(std::to_wstring(result)).append(L"\" />");
}

InspectionDecision::InspectionDecision(const std::wstring& text) {
    try {
        InitLogger(logger_, "vorlek::InspectionDecision::InspectionDecision", false);
        LOG_INFO(logger_, L"Inspection decision B: " << text);
        Parse_(text);
    } catch (const std::exception& failure) {
        border::Report(logger_, log4cxx::Level::getError(), {.words = L"Error parsing inspection message result: "},
                       LOG_SITE, failure.what());
    } catch (...) {
        LogCurrentException(logger_, L"Error parsing inspection message result.", LOG_SITE);
    }
}

/// Nothing may leave a destructor: whatever fails is logged, and the next file has its turn.
template <class Body>
void InspectionDecision::Guarded_(Body&& body) {
    Guard(logger_, LOG_SITE, {.exception = {L""}, .other = {L"Failed to delete a file of the decision."}}, body);
}

InspectionDecision::~InspectionDecision() {
    if (automaticFileDeletion_) {
        DeleteFiles_();
    } else {
        Guarded_([] { LOG_DEBUG(logger_, L"Automatic file deletion is disabled."); });
    }
}

bool InspectionDecision::HasModifications() const {
    return !subjectLabel_.empty() || !bodyLabelPath_.empty() || !attachments_.empty();
}

void InspectionDecision::Parse_(const std::wstring& text) {
    ticpp::Document document;
    document.Parse(StringUtils::ToUtf8(text));
    const ticpp::Element root = document.FirstChildElement();
    result_ = ParseNumber<std::int32_t>(Attribute_(root, "result"));
    if (const ticpp::Element modifications = root.FirstChildElement("DataModifications", false)) {
        ParseModifications_(modifications);
    }
}

void InspectionDecision::ParseModifications_(const ticpp::Element& modifications) {
    if (const ticpp::Element subject = modifications.FirstChildElement("EmailSubject", false)) {
        subjectLabel_ = Attribute_(subject, "value");
    }
    if (const ticpp::Element body = modifications.FirstChildElement("EmailBody", false)) {
        bodyLabelPath_ = Attribute_(body, "path");
    }
    if (const ticpp::Element attachments = modifications.FirstChildElement("EmailAttachments", false)) {
        for (const ticpp::Element& attachment : ticpp::Iterator(attachments, "Attachment")) {
            const std::wstring path = Attribute_(attachment, "path");
            attachments_[path] = Attribute_(attachment, "displayName");
        }
    }
}

void InspectionDecision::DeleteFiles_() const {
    if (!bodyLabelPath_.empty()) {
        Guarded_([&] {
            LOG_INFO(logger_, L"Deleting email body file: " << bodyLabelPath_);
            FileUtils::RemoveFile(bodyLabelPath_);
        });
    }
    if (!attachments_.empty()) {
        Guarded_([&] { LOG_DEBUG(logger_, L"Deleting " << attachments_.size() << L" email attachment files..."); });
    }
    for (const auto& [path, displayName] : attachments_) {
        Guarded_([&] {
            if (FileUtils::Exists(path)) {
                LOG_INFO(logger_, L"Deleting email attachment file (" << displayName << L"): " << path);
                FileUtils::RemoveFile(path);
            } else {
                LOG_DEBUG(logger_, L"Email attachment file not found (" << displayName << L"): " << path);
            }
        });
    }
}

} // namespace vorlek
