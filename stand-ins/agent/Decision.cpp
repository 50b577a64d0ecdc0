#include "stand-ins/agent/Decision.h"

#include <algorithm>
#include <utility>

#include "platform/Windows.h"
#include "stand-ins/agent/Inspection.h"
#include "stand-ins/agent/Label.h"
#include "stand-ins/agent/Policy.h"
#include "stand-ins/agent/Text.h"

namespace stand_ins::agent {
namespace {

/// The files of one decision; those that nobody has taken are removed at the end.
class Files_ {
public:
    explicit Files_(std::wstring folder) : folder_(std::move(folder)) {}
    ~Files_() { RemoveFiles(files_); }
    Files_(const Files_&) = delete;
    Files_& operator=(const Files_&) = delete;

    /// The receiver keeps its attachments ordered by path: the names count up.
    std::wstring Write(const std::wstring& extension, std::string_view bytes) {
        MakeFolder(folder_);
        std::wstring number = std::to_wstring(files_.size() + 1);
        number.insert(0, 4 - std::min<std::size_t>(number.size(), 4), L'0');
        files_.push_back(folder_ + L"\\" + stem_ + L"-" + number + (extension.empty() ? L"" : L".") + extension);
        WriteWholeFile(files_.back(), bytes);
        return files_.back();
    }

    std::vector<std::wstring> Take() { return std::exchange(files_, {}); }

private:
    std::wstring folder_;
    std::wstring stem_ = NewGuid();
    std::vector<std::wstring> files_;
};

std::wstring AttachmentElement_(const std::wstring& path, const std::wstring& displayName) {
    return L"<Attachment path=\"" + Escape(path) + L"\" displayName=\"" + Escape(displayName) + L"\" />";
}

bool IsReplaced_(const Replacement& replacement, const InspectedFile& file) {
    return Lower(file.name).find(Lower(replacement.name)) != std::wstring::npos;
}

std::wstring Replace_(const Replacement& replacement, const InspectedFile& file, Files_& files) {
    const std::wstring name =
        replacement.displayName.empty() ? file.name : ReplaceAll(replacement.displayName, L"{name}", file.name);
    const std::string content = replacement.file.empty() ? ToUtf8(ReplaceAll(replacement.text, L"{name}", file.name))
                                                         : ReadWholeFile(replacement.file);
    return AttachmentElement_(files.Write(Extension(name), content), name);
}

/// The "EmailAttachments" element; empty if no attachment is replaced. Says in `count` how many are.
std::wstring AttachmentsElement_(const Inspection& inspection, const Replacement& replacement, Files_& files,
                                 std::ptrdiff_t& count) {
    const auto isReplaced = [&](const InspectedFile& file) { return IsReplaced_(replacement, file); };
    count = std::ranges::count_if(inspection.attachments, isReplaced);
    if (count == 0) {
        return {};
    }
    std::wstring element = L"<EmailAttachments>";
    for (const InspectedFile& file : inspection.attachments) {
        element += isReplaced(file)
                       ? Replace_(replacement, file, files)
                       : AttachmentElement_(files.Write(Extension(file.name), ReadWholeFile(file.path)), file.name);
    }
    return element + L"</EmailAttachments>";
}

} // namespace

Decision MakeDecision(const Inspection& inspection, const Actions& actions, const std::wstring& folder) {
    if (actions.decision) {
        return {*actions.decision, {}, L"answered with a decision of the policy's own"};
    }
    if (actions.block) {
        return {VerdictText(true), {}, L"blocked"};
    }
    Files_ files(folder);
    std::wstring changes;
    std::wstring summary;
    const auto tell = [&](const std::wstring& what) { summary += (summary.empty() ? L" with " : L", ") + what; };
    if (!actions.subject.empty()) {
        const std::wstring subject = ReplaceAll(actions.subject, L"{subject}", inspection.subject);
        changes += L"<EmailSubject value=\"" + Escape(subject) + L"\" />";
        tell(L"a new subject");
    }
    if (!actions.bodyBefore.empty() || !actions.bodyAfter.empty()) {
        if (inspection.bodyFile.empty()) {
            tell(L"its body unlabelled for want of a body file");
        } else {
            const BodyForm form = BodyFormOf(inspection.bodyFile);
            const std::wstring path =
                files.Write(Extension(inspection.bodyFile),
                            LabelBody(ReadWholeFile(inspection.bodyFile), form, actions.bodyBefore, actions.bodyAfter));
            changes += L"<EmailBody path=\"" + Escape(path) + L"\" />";
            tell(L"a new body");
        }
    }
    if (actions.replacement) {
        std::ptrdiff_t count = 0;
        changes += AttachmentsElement_(inspection, *actions.replacement, files, count);
        tell(std::to_wstring(count) + (count == 1 ? L" attachment replaced" : L" attachments replaced"));
    }
    std::wstring xml =
        changes.empty() ? VerdictText(false)
                        : L"<decision result=\"1\"><DataModifications>" + changes + L"</DataModifications></decision>";
    return {std::move(xml), files.Take(), L"allowed" + summary};
}

std::wstring VerdictText(bool isBlocked) {
    return isBlocked ? L"<decision result=\"2\" />" : L"<decision result=\"1\" />";
}

void RemoveFiles(const std::vector<std::wstring>& files) {
    for (const std::wstring& file : files) {
        DeleteFileW(file.c_str());
    }
}

} // namespace stand_ins::agent
