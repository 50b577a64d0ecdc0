#include "plugin-link/Vocabulary.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace vocabulary = vorlek::vocabulary;

using Words = std::vector<std::wstring>;

TEST(Vocabulary, HoldsInspectorDocument) {
    namespace word = vocabulary::document;
    const Words words = {
        word::kText,    word::kBase64,     word::kFilePath,       word::kFolderPath,   word::kInspectorMessage,
        word::kVersion, word::kChannel,    word::kContext,        word::kContextItem,  word::kItem,
        word::kName,    word::kValue,      word::kDataItem,       word::kDataEncoding, word::kData,
        word::kHistory, word::kTextFormat, word::kDocumentVersion};
    EXPECT_EQ(words, (Words{L"text", L"base64", L"filePath", L"folderPath", L"inspectorMessage", L"version", L"channel",
                            L"context", L"contextItem", L"item", L"name", L"value", L"dataItem", L"dataEncoding",
                            L"data", L"history", L"textFormat", L"1"}));
}

TEST(Vocabulary, HoldsItemTypes) {
    namespace word = vocabulary::itemType;
    const Words words = {word::kEmailSubject,      word::kEmailBody,     word::kWebmailSubject, word::kWebmailBody,
                         word::kWebmailAttachment, word::kWebPostUpload, word::kWebPost,        word::kPastedData,
                         word::kPrintedData,       word::kLocation};
    EXPECT_EQ(words, (Words{L"EmailSubject", L"EmailBody", L"WebmailSubject", L"WebmailBody", L"WebmailAttachment",
                            L"WebPostUpload", L"WebPost", L"PastedData", L"PrintedData", L"Location"}));
}

TEST(Vocabulary, HoldsPlugIns) {
    namespace word = vocabulary::plugin;
    const Words words = {word::kDataControlPlugin, word::kApplicationControlPlugin, word::kMobileDataControlPlugin};
    EXPECT_EQ(words, (Words{L"DataControlPlugin", L"ApplicationControlPlugin", L"MobileDataControlPlugin"}));
}

TEST(Vocabulary, HoldsMethods) {
    namespace word = vocabulary::method;
    const Words words = {word::kInspect,
                         word::kBeginInspect,
                         word::kGetInspectionStatus,
                         word::kGetExecutionMode,
                         word::kStartAppMgrIdentifyChannels,
                         word::kHandleAppLaunchFileAccess,
                         word::kProcessExit,
                         word::kAuthenticate,
                         word::kRestrict,
                         word::kMonitor};
    EXPECT_EQ(words, (Words{L"Inspect", L"BeginInspect", L"GetInspectionStatus", L"GetExecutionMode",
                            L"StartAppMgrIdentifyChannels", L"HandleAppLaunchFileAccess", L"ProcessExit",
                            L"Authenticate", L"Restrict", L"Monitor"}));
}

TEST(Vocabulary, HoldsIncidentContextKeys) {
    namespace word = vocabulary::key;
    const Words words = {word::kIncidentSource,
                         word::kIncidentDestination,
                         word::kDataLocation,
                         word::kCodePage,
                         word::kFileTitle,
                         word::kFileCompany,
                         word::kFileTemplate,
                         word::kFileSubject,
                         word::kFileCreationTime,
                         word::kFileModificationTime,
                         word::kFileAccessTime,
                         word::kEmailFrom,
                         word::kEmailTo,
                         word::kEmailCc,
                         word::kEmailBcc,
                         word::kEmailBody,
                         word::kEmailSubject,
                         word::kEmailNormalizedSubject,
                         word::kDataFormat,
                         word::kItemType,
                         word::kDataEncoding,
                         word::kUrl,
                         word::kAuthorUserName,
                         word::kApplication,
                         word::kCommandLineArguments,
                         word::kCreatingApplication,
                         word::kChannel,
                         word::kPrinterName,
                         word::kLoggedOnUser,
                         word::kActiveUser,
                         word::kProcessIdInt32,
                         word::kWindowHandleInt32,
                         word::kWebPageTitle,
                         word::kWindowsSessionIdInt32,
                         word::kDataSize,
                         word::kEmailPriority,
                         word::kServer,
                         word::kShare,
                         word::kPort,
                         word::kDriver,
                         word::kMachine,
                         word::kUser,
                         word::kDocument,
                         word::kSpooling,
                         word::kProcessor,
                         word::kGroupName,
                         word::kDestinationStorageEncrypted,
                         word::kDeviceDescription,
                         word::kDeviceInfo,
                         word::kDevicePortName,
                         word::kDeviceType,
                         word::kDeviceId,
                         word::kDeviceParentHwId,
                         word::kDeviceParentCompId,
                         word::kDeviceParentInstanceId,
                         word::kDeviceFileType,
                         word::kFileAccessTimeLocal,
                         word::kSsid,
                         word::kMacAddress,
                         word::kAuthentication,
                         word::kAuthenticationMethod,
                         word::kEncryption,
                         word::kLinkType,
                         word::kDestinationDisplayName,
                         word::kLastInspectionResult,
                         word::kDomain,
                         word::kScope,
                         word::kUserAgent};
    EXPECT_EQ(words, (Words{L"IncidentSource",
                            L"IncidentDestination",
                            L"DataLocation",
                            L"CodePage",
                            L"FileTitle",
                            L"FileCompany",
                            L"FileTemplate",
                            L"FileSubject",
                            L"FileCreationTime",
                            L"FileModificationTime",
                            L"FileAccessTime",
                            L"EmailFrom",
                            L"EmailTo",
                            L"EmailCc",
                            L"EmailBcc",
                            L"EmailBody",
                            L"EmailSubject",
                            L"EmailNormalizedSubject",
                            L"DataFormat",
                            L"ItemType",
                            L"DataEncoding",
                            L"URL",
                            L"AuthorUserName",
                            L"Application",
                            L"CommandLineArguments",
                            L"CreatingApplication",
                            L"Channel",
                            L"PrinterName",
                            L"LoggedOnUser",
                            L"ActiveUser",
                            L"ProcessIdInt32",
                            L"WindowHandleInt32",
                            L"WebPageTitle",
                            L"WindowsSessionIdInt32",
                            L"DataSize",
                            L"EmailPriority",
                            L"Server",
                            L"Share",
                            L"Port",
                            L"Driver",
                            L"Machine",
                            L"User",
                            L"Document",
                            L"Spooling",
                            L"Processor",
                            L"GroupName",
                            L"DestinationStorageEncrypted",
                            L"DeviceDescription",
                            L"DeviceInfo",
                            L"DevicePortName",
                            L"DeviceType",
                            L"DeviceId",
                            L"DeviceParentHwId",
                            L"DeviceParentCompId",
                            L"DeviceParentInstanceId",
                            L"DeviceFileType",
                            L"FileAccessTimeLocal",
                            L"SSID",
                            L"MACAddress",
                            L"Authentication",
                            L"AuthenticationMethod",
                            L"Encryption",
                            L"LinkType",
                            L"DestinationDisplayName",
                            L"LastInspectionResult",
                            L"Domain",
                            L"Scope",
                            L"UserAgent"}));
}

TEST(Vocabulary, HoldsChannels) {
    namespace word = vocabulary::channel;
    const Words words = {word::kUnrecognized,
                         word::kEmail,
                         word::kWeb,
                         word::kWebmail,
                         word::kExternalStorage,
                         word::kApplicationGroup,
                         word::kLocalPrinter,
                         word::kNetworkShare,
                         word::kNetworkPrinter,
                         word::kCdDvd,
                         word::kWifi,
                         word::kWpd,
                         word::kFtp,
                         word::kCloudStorage};
    EXPECT_EQ(words, (Words{L"Unrecognized", L"Email", L"Web", L"Webmail", L"ExternalStorage", L"ApplicationGroup",
                            L"LocalPrinter", L"NetworkShare", L"NetworkPrinter", L"CdDvd", L"Wifi", L"WPD", L"FTP",
                            L"CloudStorage"}));
}

TEST(Vocabulary, HoldsTextFormats) {
    namespace word = vocabulary::textFormat;
    const Words words = {word::kClearText};
    EXPECT_EQ(words, (Words{L"clearText"}));
}
