#pragma once
#include <cstdint>
#include <map>
#include <string>

#include "foundation/LoggerHolder.h"

namespace ticpp {
class Element;
}

namespace vorlek {

/// The agent's answer to an inspection: the verdict, and the changes that it asks for. It owns the files
/// that it names and deletes them when it dies, so hold it for as long as they are needed. Any thread
/// may read it.
class InspectionDecision {
public:
    /// File path to the name that the user sees.
    using Attachments = std::map<std::wstring, std::wstring>;

    static constexpr std::int32_t kBlock = 2; ///< the one verdict that stops an item

    /// A decision of the add-in's own.
    explicit InspectionDecision(std::int32_t result);
    /// The agent's answer as XML. An answer that cannot be read is logged, and blocks unless its verdict
    /// could be read.
    explicit InspectionDecision(const std::wstring& text);
    InspectionDecision(const InspectionDecision&) = delete;
    InspectionDecision& operator=(const InspectionDecision&) = delete;
    virtual ~InspectionDecision();

    /// Whether the agent asks for any change.
    bool HasModifications() const;

    /// The decision as XML; empty for one read from text.
    const std::wstring& GetResultText() const { return resultText_; }
    std::int32_t GetResult() const { return result_; }
    const std::wstring& GetSubjectLabel() const { return subjectLabel_; }
    /// Path of a file with the body's data label, or empty.
    const std::wstring& GetBodyLabelPath() const { return bodyLabelPath_; }
    const Attachments& GetAttachments() const { return attachments_; }
    /// Whether the files go with the decision; true from the start.
    bool GetAutomaticFileDeletion() const { return automaticFileDeletion_; }
    void SetAutomaticFileDeletion(bool deletion) { automaticFileDeletion_ = deletion; }

private:
    void Parse_(const std::wstring& text);
    void ParseModifications_(const ticpp::Element& modifications);
    void DeleteFiles_() const;
    template <class Body>
    static void Guarded_(Body&& body);

    static LoggerHolder logger_;

    std::wstring resultText_;
    std::int32_t result_ = kBlock;
    std::wstring subjectLabel_;
    std::wstring bodyLabelPath_;
    Attachments attachments_;
    bool automaticFileDeletion_ = true;
};

} // namespace vorlek
