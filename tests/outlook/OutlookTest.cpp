#include "tests/outlook/OutlookTest.h"

#include <stdexcept>

#include <tinyxml.h>

#include "agent/apps/outlook/GlobalConfig.h"
#include "foundation/Log4CxxHelper.h"
#include "foundation/RegistryKey.h"
#include "foundation/StringUtils.h"
#include "foundation/Throw.h"
#include "tests/outlook/RedemptionLibrary.h"

namespace outlook_tests {
namespace {

/// Starts the log session ahead of the first controller, which would read the configuration that an add-in installed
/// here has, and put its destinations in place of what a test captures.
class LogSession_ : public testing::Environment {
    void SetUp() override { vorlek::StartLogSession(L"C:\\no\\such.properties", nullptr, false); }
};
const testing::Environment* const logSession = testing::AddGlobalTestEnvironment(new LogSession_);

} // namespace

std::wstring ErrorText(HRESULT result) {
    return _com_error(result).ErrorMessage();
}

stand_ins::Faults::Action ThrowStandard(const std::string& what) {
    return [what](const stand_ins::Call&) -> std::optional<_variant_t> { throw std::runtime_error(what); };
}

stand_ins::Faults::Action ThrowException() {
    return [](const stand_ins::Call&) -> std::optional<_variant_t> { vorlek::Throw(L"Test", L"failed"); };
}

stand_ins::Faults::Action ThrowNumber() {
    return [](const stand_ins::Call&) -> std::optional<_variant_t> { throw 42; };
}

std::vector<std::wstring> ContextOf(const vorlek::CInspectorMessage& message) {
    TiXmlDocument document;
    document.Parse(vorlek::StringUtils::ToUtf8(message.GetFormattedMessage()).c_str(), nullptr, TIXML_ENCODING_UTF8);
    std::vector<std::wstring> pairs;
    for (const TiXmlElement* item =
             TiXmlHandle(&document).FirstChildElement().FirstChild("context").FirstChild("item").ToElement();
         item != nullptr; item = item->NextSiblingElement("item")) {
        pairs.push_back(
            vorlek::StringUtils::FromUtf8(item->Attribute("name") + std::string("=") + item->Attribute("value")));
    }
    return pairs;
}

OutlookTest::OutlookTest() {
    RegistryKey::GetCurrentUser().DeleteSubKeyTree(kPluginKey);
    RedemptionLibrary::Forget();
    Restart({});
    SetVersion(L"16.0.5.1");
    log.Clear();
}

OutlookTest::~OutlookTest() {
    vorlek::GlobalConfig::SetOutlookApplication({});
    SetVersion(L"-1."); // not known, as at the start of a process
    RegistryKey::GetCurrentUser().DeleteSubKeyTree(kPluginKey);
}

void OutlookTest::Restart(stand_ins::OutlookOptions options) {
    vorlek::GlobalConfig::SetOutlookApplication({});
    outlook.reset();
    options.profile = folder.Path() / L"profile";
    outlook = std::make_unique<stand_ins::Outlook>(options);
    vorlek::GlobalConfig::SetOutlookApplication(Outlook::_ApplicationPtr(outlook->Application().GetInterfacePtr()));
}

void OutlookTest::SetVersion(const std::wstring& version) {
    vorlek::GlobalConfig::SetOutlookMajorVersion(version, nullptr);
}

std::shared_ptr<vorlek::MessageHandler> OutlookTest::HandlerOf(const stand_ins::ItemData& mail) {
    const auto item = outlook->NewMail(mail);
    auto handler = std::make_shared<vorlek::MessageHandler>(Outlook::_MailItemPtr(item.GetInterfacePtr()));
    outlook->Calls().Clear();
    log.Clear();
    return handler;
}

} // namespace outlook_tests
