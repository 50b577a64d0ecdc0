#pragma once
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "agent/apps/outlook/MessageHandler.h"
#include "plugin-link/CInspectorMessage.h"
#include "stand-ins/outlook/Outlook.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

namespace outlook_tests {

inline constexpr HRESULT kAccessDenied = static_cast<HRESULT>(0x80070005);

/// The registry keys of the add-in, as the tests look at them.
inline constexpr wchar_t kPluginKey[] = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin";
inline constexpr wchar_t kUnsentKey[] = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin\\Unsent";
inline constexpr wchar_t kInputKey[] = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin\\Input";

/// The text of an HRESULT as the log shows it; it differs between systems.
std::wstring ErrorText(HRESULT result);

/// Throws a failure of each kind out of a member of Outlook's.
stand_ins::Faults::Action ThrowStandard(const std::string& what);
stand_ins::Faults::Action ThrowException();
stand_ins::Faults::Action ThrowNumber();

/// The context of a message, as "EmailTo=a@b.example" for each pair in order.
std::vector<std::wstring> ContextOf(const vorlek::CInspectorMessage& message);

/// An Outlook of version 16 with an empty profile, its log, and an empty ledger.
class OutlookTest : public testing::Test {
protected:
    OutlookTest();
    ~OutlookTest() override;

    /// Starts Outlook anew, with another explorer or version; the objects of the old one stay usable.
    void Restart(stand_ins::OutlookOptions options);
    void SetVersion(const std::wstring& version);

    std::shared_ptr<vorlek::MessageHandler> HandlerOf(const stand_ins::ItemData& mail);
    std::vector<std::wstring> Errors() const { return log.Texts(L"ERROR"); }
    std::vector<std::wstring> Warnings() const { return log.Texts(L"WARN"); }

    test_support::LogCapture log;
    test_support::TemporaryFolder folder;
    std::unique_ptr<stand_ins::Outlook> outlook;
};

} // namespace outlook_tests
