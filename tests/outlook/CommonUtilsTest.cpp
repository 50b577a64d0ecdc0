#include "agent/apps/outlook/CommonUtils.h"

#include <atomic>
#include <functional>
#include <future>
#include <regex>
#include <stdexcept>

#include "foundation/EnvUtils.h"
#include "foundation/Exception.h"
#include "foundation/RegistryKey.h"
#include "foundation/SecUtils.h"
#include "tests/outlook/OutlookTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/HeldSections.h"
#include "tests/support/MessageBox.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/SecurityBytes.h"
#include "tests/support/TemporaryFolder.h"

namespace vorlek {
namespace {

using outlook_tests::kInputKey;
using outlook_tests::kPluginKey;
using outlook_tests::kUnsentKey;
using testing::ElementsAre;
using testing::IsEmpty;

class CommonUtilsTest : public testing::Test {
protected:
    CommonUtilsTest() { RegistryKey::GetCurrentUser().DeleteSubKeyTree(kPluginKey); }
    ~CommonUtilsTest() override { RegistryKey::GetCurrentUser().DeleteSubKeyTree(kPluginKey); }

    static std::shared_ptr<RegistryKey> Unsent() { return RegistryKey::GetCurrentUser().OpenSubKey(kUnsentKey); }

    /// Makes every access of the ledger and of the switch fail: no lasting key can lie in a passing one.
    static void MakeKeysFail() { RegistryKey::GetCurrentUser().CreateSubKey(kPluginKey, false); }

    static std::wstring FailureOf(const wchar_t* key) {
        try {
            RegistryKey::GetCurrentUser().CreateSubKey(key, true);
        } catch (const Exception& failure) {
            return failure.ToString();
        }
        return L"no failure";
    }

    /// Calls every operation while the registry raises what the body throws; each must return as after any failure.
    void CallAllWhileTheRegistryRaises(const std::function<void()>& body) {
        const test_support::HeldSections sections;
        const test_support::ReplacedImport<"RegCreateKeyExW", decltype(RegCreateKeyExW)> create(
            [&](auto...) -> LSTATUS {
                body();
                return ERROR_SUCCESS;
            });
        std::vector<std::wstring> ids;
        CommonUtils::AddToInspectedItems(L"ID", L"SENT", logger);
        CommonUtils::RemoveFromInspectedItems(L"ID", logger);
        CommonUtils::GetInspectedItemIds(ids, logger);
        EXPECT_EQ(CommonUtils::GetSentItemId(L"ID", logger), L"");
        EXPECT_FALSE(CommonUtils::IsOnSpotOverrideEnabled(logger));
        EXPECT_THAT(ids, IsEmpty());
        EXPECT_EQ(create.Calls(), 5);
        EXPECT_EQ(sections.Count(), 0);
    }

    test_support::LogCapture log;
    log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger(L"caller");
};

TEST_F(CommonUtilsTest, AnItemIsNotedWithItsSentItemIdAndEachStepIsLogged) {
    CommonUtils::AddToInspectedItems(L"ID-1", L"SENT-1", logger);
    std::wstring value;
    Unsent()->GetValue(L"ID-1", value);
    EXPECT_EQ(value, L"SENT-1");
    EXPECT_EQ(Unsent()->GetValueType(L"ID-1"), DWORD{REG_SZ});
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"AddToInspectedItems for itemID = ID-1 with sentItemId = SENT-1",
                                                 L"Taking lock to access the IDs in the Registry",
                                                 L"Accessing the IDs in the Registry - open/create subkey",
                                                 L"Accessing the IDs in the Registry - opened subkey - adding value",
                                                 L"Successfully added ID-1 to the registry."));
}

TEST_F(CommonUtilsTest, LinesComeOutUnderTheCallersLogger) {
    CommonUtils::AddToInspectedItems(L"ID-1", L"SENT-1", logger);
    for (const auto& line : log.Lines()) {
        EXPECT_EQ(line.logger, L"caller");
    }
}

TEST_F(CommonUtilsTest, AnItemNotedTwiceStandsOnceWithTheLaterData) {
    CommonUtils::AddToInspectedItems(L"ID-1", L"SENT-1", logger);
    CommonUtils::AddToInspectedItems(L"ID-1", L"SENT-2", logger);
    std::vector<std::wstring> ids;
    CommonUtils::GetInspectedItemIds(ids, logger);
    EXPECT_THAT(ids, ElementsAre(L"ID-1"));
    EXPECT_EQ(CommonUtils::GetSentItemId(L"ID-1", logger), L"SENT-2");
}

TEST_F(CommonUtilsTest, AnEmptyItemIdReachesNeitherLockNorRegistry) {
    CommonUtils::AddToInspectedItems(L"", L"SENT", logger);
    CommonUtils::RemoveFromInspectedItems(L"", logger);
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"AddToInspectedItems for itemID =  with sentItemId = SENT",
                                                 L"RemoveFromInspectedItems for itemID = "));
    EXPECT_THAT(log.Texts(L"WARN"),
                ElementsAre(L"Passed item unique ID is empty.", L"Passed item unique ID is empty."));
    EXPECT_THROW(Unsent(), RegistryKeyException);
}

TEST_F(CommonUtilsTest, ARemovedItemIsGoneAndTheOthersStay) {
    CommonUtils::AddToInspectedItems(L"ID-1", L"SENT-1", logger);
    CommonUtils::AddToInspectedItems(L"ID-2", L"SENT-2", logger);
    log.Clear();
    CommonUtils::RemoveFromInspectedItems(L"ID-1", logger);
    EXPECT_FALSE(Unsent()->ValueExists(L"ID-1"));
    EXPECT_TRUE(Unsent()->ValueExists(L"ID-2"));
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"RemoveFromInspectedItems for itemID = ID-1",
                                                 L"Taking lock to access the IDs in the Registry",
                                                 L"Accessing the IDs in the Registry - open subkey",
                                                 L"Accessing the IDs in the Registry - opened subkey - removing value",
                                                 L"Successfully removed ID-1 from the registry."));
}

TEST_F(CommonUtilsTest, RemovingAnItemThatIsNotNotedIsASuccess) {
    CommonUtils::RemoveFromInspectedItems(L"ID-1", logger);
    EXPECT_TRUE(log.Has(L"DEBUG", L"Successfully removed ID-1 from the registry."));
    EXPECT_THAT(log.Texts(L"ERROR"), IsEmpty());
}

TEST_F(CommonUtilsTest, AnAbsentLedgerIsMadeByTheFirstReadAndIsEmpty) {
    std::vector<std::wstring> ids;
    CommonUtils::GetInspectedItemIds(ids, logger);
    EXPECT_THAT(ids, IsEmpty());
    EXPECT_NO_THROW(Unsent());
    EXPECT_THAT(log.Texts(L"INFO"), ElementsAre(L"Checking to see if there are items that should be sent - following "
                                                L"Outlook closing during inspection"));
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Taking lock to access the IDs in the Registry",
                                                 L"Accessing the IDs in the Registry - open subkey",
                                                 L"Accessing the IDs in the Registry - opened subkey - reading values",
                                                 L"Successfully retrieved 0 IDs."));
}

TEST_F(CommonUtilsTest, TheSentItemIdIsReadBack) {
    CommonUtils::AddToInspectedItems(L"ID-1", L"SENT-1", logger);
    log.Clear();
    EXPECT_EQ(CommonUtils::GetSentItemId(L"ID-1", logger), L"SENT-1");
    EXPECT_TRUE(log.Has(L"INFO", L"looking for item with id - ID-1 in the registry"));
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Taking lock to access the IDs in the Registry",
                                                 L"Accessing the IDs in the Registry - open subkey",
                                                 L"Accessing the IDs in the Registry - opened subkey - reading values",
                                                 L"Successfully retrieved SENT-1"));
}

TEST_F(CommonUtilsTest, AnAbsentSentItemIdIsAFailureAndEmpty) {
    EXPECT_EQ(CommonUtils::GetSentItemId(L"ID-1", logger), L"");
    std::wstring failure;
    try {
        std::wstring value;
        Unsent()->GetValue(L"ID-1", value);
    } catch (const Exception& caught) {
        failure = caught.ToString();
    }
    EXPECT_THAT(log.Texts(L"ERROR"), ElementsAre(L"Failed to get the value for the requested id: " + failure));
}

TEST_F(CommonUtilsTest, WithoutTheSwitchNothingIsOnTheSpotAndTheKeyIsMade) {
    EXPECT_FALSE(CommonUtils::IsOnSpotOverrideEnabled(logger));
    EXPECT_NO_THROW(RegistryKey::GetCurrentUser().OpenSubKey(kInputKey));
    EXPECT_THAT(log.Texts(L"DEBUG"), ElementsAre(L"Checking for OnSpot override",
                                                 L"Accessing the on-spot value in the Registry - opened subkey"));
}

TEST_F(CommonUtilsTest, EveryNumberButZeroTurnsTheSwitchOnAtOnce) {
    const auto key = RegistryKey::GetCurrentUser().CreateSubKey(kInputKey, true);
    const auto set = [&](ULONGLONG value) {
        const auto* bytes = reinterpret_cast<const BYTE*>(&value);
        key->SetValue(L"onspotenabled", std::vector<BYTE>(bytes, bytes + sizeof(value)), REG_QWORD);
    };
    set(1);
    EXPECT_TRUE(CommonUtils::IsOnSpotOverrideEnabled(logger));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Successfully retrieved 1"));
    set(0x8000000000000000);
    EXPECT_TRUE(CommonUtils::IsOnSpotOverrideEnabled(logger));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Successfully retrieved 9223372036854775808"));
    set(0);
    EXPECT_FALSE(CommonUtils::IsOnSpotOverrideEnabled(logger));
    EXPECT_TRUE(log.Has(L"DEBUG", L"Successfully retrieved 0"));
}

TEST_F(CommonUtilsTest, AShortNumberIsNotTheSwitchAndIsReported) {
    const auto key = RegistryKey::GetCurrentUser().CreateSubKey(kInputKey, true);
    key->SetValue(L"onspotenabled", DWORD{1});
    EXPECT_FALSE(CommonUtils::IsOnSpotOverrideEnabled(logger));
    std::wstring failure;
    try {
        ULONGLONG value = 0;
        key->GetValue(L"onspotenabled", value);
    } catch (const RegistryInvalidKeyTypeException& caught) {
        failure = caught.ToString();
    }
    EXPECT_THAT(log.Texts(L"ERROR"), ElementsAre(L"Failed to get the value for the onspot override: " + failure));
}

TEST_F(CommonUtilsTest, NoFailureOfTheRegistryReachesTheCaller) {
    MakeKeysFail();
    const std::wstring unsent = FailureOf(kUnsentKey);
    const std::wstring input = FailureOf(kInputKey);
    ASSERT_NE(unsent, L"no failure");
    CommonUtils::AddToInspectedItems(L"ID", L"SENT", logger);
    CommonUtils::RemoveFromInspectedItems(L"ID", logger);
    std::vector<std::wstring> ids;
    CommonUtils::GetInspectedItemIds(ids, logger);
    EXPECT_EQ(CommonUtils::GetSentItemId(L"ID", logger), L"");
    EXPECT_FALSE(CommonUtils::IsOnSpotOverrideEnabled(logger));
    EXPECT_THAT(ids, IsEmpty());
    EXPECT_THAT(log.Texts(L"ERROR"),
                ElementsAre(L"Failed to add item ID to the registry key for unsent items: " + unsent,
                            L"Failed to remove item ID from the registry key for unsent items: " + unsent,
                            L"Failed to get the registry key for unsent items: " + unsent,
                            L"Failed to get the value for the requested id: " + unsent,
                            L"Failed to get the value for the onspot override: " + input));
}

TEST_F(CommonUtilsTest, AStandardExceptionIsReportedInTheSameWords) {
    CallAllWhileTheRegistryRaises([] { throw std::runtime_error("out of order"); });
    EXPECT_THAT(log.Texts(L"ERROR"),
                ElementsAre(L"Failed to add item ID to the registry key for unsent items: out of order",
                            L"Failed to remove item ID from the registry key for unsent items: out of order",
                            L"Failed to get the registry key for unsent items: out of order",
                            L"Failed to get the value for the requested id: out of order",
                            L"Failed to get the value for the onspot override: out of order"));
}

TEST_F(CommonUtilsTest, AnyOtherFailureIsReportedAsUnknown) {
    CallAllWhileTheRegistryRaises([] { throw 5; });
    EXPECT_THAT(
        log.Texts(L"ERROR"),
        ElementsAre(L"Unknown error occured while trying to add item ID to the registry key for unsent items.",
                    L"Unknown error occurred while trying to remove item ID from the registry key for unsent items.",
                    L"Unknown error occurred while trying to get the registry key for unsent items.",
                    L"Unknown error occurred while trying to get the registry value for the id.",
                    L"Unknown error occurred while trying to get the registry value for onspot override."));
}

TEST_F(CommonUtilsTest, TheLockIsHeldFromTheOpeningOfTheLedgerToItsClosing) {
    const test_support::HeldSections sections;
    int releasesAtOpening = 0;
    test_support::ReplacedImport<"RegCreateKeyExW", decltype(RegCreateKeyExW)> create([&](auto... arguments) {
        EXPECT_EQ(sections.Count(), 1);
        releasesAtOpening = sections.Releases();
        return create.Original(arguments...);
    });
    test_support::ReplacedImport<"RegCloseKey", decltype(RegCloseKey)> close([&](HKEY key) {
        EXPECT_EQ(sections.Count(), 1);
        EXPECT_EQ(sections.Releases(), releasesAtOpening);
        return close.Original(key);
    });
    std::vector<std::wstring> ids;
    CommonUtils::AddToInspectedItems(L"ID", L"SENT", logger);
    CommonUtils::GetInspectedItemIds(ids, logger);
    CommonUtils::GetSentItemId(L"ID", logger);
    CommonUtils::RemoveFromInspectedItems(L"ID", logger);
    EXPECT_EQ(create.Calls(), 4);
    EXPECT_EQ(close.Calls(), 4);
    EXPECT_EQ(sections.Count(), 0);
}

TEST_F(CommonUtilsTest, TheSwitchIsReadWithoutTheLock) {
    const test_support::HeldSections sections;
    test_support::ReplacedImport<"RegCreateKeyExW", decltype(RegCreateKeyExW)> create([&](auto... arguments) {
        EXPECT_EQ(sections.Count(), 0);
        return create.Original(arguments...);
    });
    CommonUtils::IsOnSpotOverrideEnabled(logger);
    EXPECT_EQ(create.Calls(), 1);
}

TEST_F(CommonUtilsTest, AFailureGivesTheLockBackToOtherThreads) {
    MakeKeysFail();
    CommonUtils::AddToInspectedItems(L"ID", L"SENT", logger);
    RegistryKey::GetCurrentUser().DeleteSubKeyTree(kPluginKey);
    std::async(std::launch::async, [&] { CommonUtils::AddToInspectedItems(L"ID", L"SENT", logger); }).get();
    EXPECT_TRUE(Unsent()->ValueExists(L"ID"));
}

TEST_F(CommonUtilsTest, TheUserIsToldOnceThatMailStayedBehind) {
    std::atomic<bool> closed = false;
    auto boxes = std::async(std::launch::async, [&] {
        std::vector<test_support::ShownBox> seen;
        while (const auto box = test_support::AnswerMessageBox(L"Microsoft Outlook", [&] { return closed.load(); })) {
            seen.push_back(*box);
        }
        return seen;
    });
    CommonUtils::ShowUnsentItemsWarning(logger);
    closed = true;
    const auto seen = boxes.get();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen.front().text, L"One message or more could not be sent.\nPlease check your Drafts folder");
}

TEST_F(CommonUtilsTest, TheWarningBelongsToNoWindowAndHasOneButton) {
    HWND asked = GetDesktopWindow();
    UINT look = 0;
    const test_support::ReplacedImport<"MessageBoxW", decltype(MessageBoxW)> box(
        [&](HWND owner, const wchar_t*, const wchar_t*, UINT style) {
            asked = owner;
            look = style;
            return IDOK;
        });
    CommonUtils::ShowUnsentItemsWarning(logger);
    EXPECT_EQ(box.Calls(), 1);
    EXPECT_EQ(asked, nullptr);
    EXPECT_EQ(look, 48u);
}

TEST_F(CommonUtilsTest, TemporaryPathsAreNewNamesInTheAddInsFolderWhichExists) {
    const std::wstring first = CommonUtils::MakeTemporaryPath(L"cip");
    const std::wstring second = CommonUtils::MakeTemporaryPath(L"cip");
    EXPECT_NE(first, second);
    const std::wstring directory = CommonUtils::GetDirectory(first);
    EXPECT_EQ(directory, EnvUtils::GetVariable(L"temp") + L"\\CITemp");
    EXPECT_TRUE(CommonUtils::DirectoryExists(directory));
    EXPECT_TRUE(std::regex_match(first.substr(directory.size()),
                                 std::wregex(L"\\\\\\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\}\\.cip")))
        << std::string(first.begin(), first.end());
}

/// In a process that has named no file yet, with a temporary folder of its own: the folder of the first name.
std::wstring NameFile_(const std::wstring& temp) {
    SetEnvironmentVariableW(L"temp", temp.c_str());
    const std::wstring directory = CommonUtils::GetDirectory(CommonUtils::MakeTemporaryPath(L"cip"));
    return directory + (CommonUtils::DirectoryExists(directory) ? L" exists" : L" is missing");
}
const test_support::ChildRoleName nameFile(L"NameFile", NameFile_);

TEST_F(CommonUtilsTest, TheFirstTemporaryPathOfAProcessMakesItsFolder) {
    const test_support::TemporaryFolder temp;
    test_support::ChildProcess process(L"NameFile", temp.Path().wstring());
    EXPECT_EQ(process.Result(), temp.Path().wstring() + L"\\CITemp exists");
}

TEST_F(CommonUtilsTest, ATemporaryPathWithoutANewNameIsAFailure) {
    const test_support::ReplacedImport<"CoCreateGuid", decltype(CoCreateGuid)> create(
        [](GUID*) { return HRESULT_FROM_WIN32(RPC_S_UUID_NO_ADDRESS); });
    test_support::ExpectFailure<Exception>([] { CommonUtils::MakeTemporaryPath(L"cip"); },
                                           L"vorlek::CommonUtils::MakeTemporaryPath",
                                           L"Failed to create a name for a temporary file");
}

TEST_F(CommonUtilsTest, TheSearchForADirectoryEndsWhenItIsFound) {
    const test_support::TemporaryFolder temp;
    test_support::ReplacedImport<"FindClose", decltype(FindClose)> close(
        [&](HANDLE search) { return close.Original(search); });
    EXPECT_TRUE(CommonUtils::DirectoryExists(temp.Path().wstring()));
    EXPECT_EQ(close.Calls(), 1u);
    EXPECT_FALSE(CommonUtils::DirectoryExists(temp.Path().wstring() + L"\\none"));
    EXPECT_EQ(close.Calls(), 1u);
}

TEST_F(CommonUtilsTest, ADirectoryIsMadeWithAnEmptyList) {
    const test_support::TemporaryFolder temp;
    std::vector<BYTE> security;
    test_support::ReplacedImport<"CreateDirectoryW", decltype(CreateDirectoryW)> create(
        [&](const wchar_t* path, SECURITY_ATTRIBUTES* attributes) {
            security = test_support::SecurityBytes(attributes->lpSecurityDescriptor);
            return create.Original(path, attributes);
        });
    CommonUtils::MakeDirectory(temp.Path().wstring() + L"\\new");
    EXPECT_EQ(security, test_support::SecurityBytes(SecUtils::GenSA(0)->GetSecurityAttributes()->lpSecurityDescriptor));
}

TEST_F(CommonUtilsTest, TheDirectoryOfAPathEndsBeforeTheLastBackslash) {
    EXPECT_EQ(CommonUtils::GetDirectory(L"C:\\a\\b.txt"), L"C:\\a");
    EXPECT_EQ(CommonUtils::GetDirectory(L"b.txt"), L"b.txt");
}

} // namespace
} // namespace vorlek
