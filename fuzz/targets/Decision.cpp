#include "foundation/StringUtils.h"
#include "fuzz/targets/Targets.h"
#include "platform/ticpp/ticpp.h"
#include "plugin-link/InspectionDecision.h"
#include "plugin-link/Number.h"

namespace fuzz {
namespace {

using vorlek::InspectionDecision;
using vorlek::StringUtils;

/// What the answer says, or block where it says nothing.
std::int32_t Verdict_(const std::wstring& text) {
    try {
        ticpp::Document document;
        document.Parse(StringUtils::ToUtf8(text));
        const std::string result = document.FirstChildElement().GetAttribute("result");
        return vorlek::ParseNumber<std::int32_t>(StringUtils::FromUtf8(result));
    } catch (const ticpp::Exception&) {
        return InspectionDecision::kBlock;
    }
}

std::string Run_(UnitsView input) {
    const std::wstring text(input);
    InspectionDecision decision(text);
    decision.SetAutomaticFileDeletion(false); // the paths are anybody's
    Require(decision.GetResult() == Verdict_(text), "the verdict is not the one that was given");
    Require(decision.GetResultText().empty(), "a decision that was read has a text of its own");
    const bool hasSubject = !decision.GetSubjectLabel().empty();
    const bool hasBody = !decision.GetBodyLabelPath().empty();
    const bool hasAttachments = !decision.GetAttachments().empty();
    Require(decision.HasModifications() == (hasSubject || hasBody || hasAttachments), "modifications are miscounted");

    const InspectionDecision own(decision.GetResult());
    Require(InspectionDecision(own.GetResultText()).GetResult() == decision.GetResult(),
            "a decision's text reads back as another verdict");
    return std::string(decision.GetResult() == InspectionDecision::kBlock ? "blocks" : "lets go") +
           (hasSubject ? ", subject" : "") + (hasBody ? ", body" : "") + (hasAttachments ? ", attachments" : "");
}

Material Material_() {
    Material material = XmlMaterial("fuzz/corpus/decision");
    AddTokens(material, L"decision | result | value | <decision result=\"1\"> | </decision> |  result=\"2\" | "
                        L"<DataModifications> | </DataModifications> | <EmailSubject value=\"x\" /> | "
                        L"<EmailBody path=\"C:\\x\" /> | <EmailAttachments> | </EmailAttachments> | "
                        L"<Attachment path=\"C:\\x\" displayName=\"x\" /> |  path=\"\" |  displayName=\"\"");
    return material;
}

} // namespace

Target DecisionTarget() {
    return {.name = "decision", .material = Material_, .run = Run_, .raises = {}};
}

} // namespace fuzz
