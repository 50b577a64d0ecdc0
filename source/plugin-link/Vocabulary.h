#pragma once

/// The words that the add-in and the agent's plug-ins must agree on, letter for letter.
namespace vorlek::vocabulary {

/// The words of the inspector document. "history" is known to the agent; no element of that name is written.
namespace document {
inline constexpr wchar_t kText[] = L"text";
inline constexpr wchar_t kBase64[] = L"base64";
inline constexpr wchar_t kFilePath[] = L"filePath";
inline constexpr wchar_t kFolderPath[] = L"folderPath";
inline constexpr wchar_t kInspectorMessage[] = L"inspectorMessage";
inline constexpr wchar_t kVersion[] = L"version";
inline constexpr wchar_t kChannel[] = L"channel";
inline constexpr wchar_t kContext[] = L"context";
inline constexpr wchar_t kContextItem[] = L"contextItem";
inline constexpr wchar_t kItem[] = L"item";
inline constexpr wchar_t kName[] = L"name";
inline constexpr wchar_t kValue[] = L"value";
inline constexpr wchar_t kDataItem[] = L"dataItem";
inline constexpr wchar_t kDataEncoding[] = L"dataEncoding";
inline constexpr wchar_t kData[] = L"data";
inline constexpr wchar_t kHistory[] = L"history";
inline constexpr wchar_t kTextFormat[] = L"textFormat";
inline constexpr wchar_t kDocumentVersion[] = L"1";
} // namespace document

/// Values of the context key "ItemType".
namespace itemType {
inline constexpr wchar_t kEmailSubject[] = L"EmailSubject";
inline constexpr wchar_t kEmailBody[] = L"EmailBody";
inline constexpr wchar_t kWebmailSubject[] = L"WebmailSubject";
inline constexpr wchar_t kWebmailBody[] = L"WebmailBody";
inline constexpr wchar_t kWebmailAttachment[] = L"WebmailAttachment";
inline constexpr wchar_t kWebPostUpload[] = L"WebPostUpload";
inline constexpr wchar_t kWebPost[] = L"WebPost";
inline constexpr wchar_t kPastedData[] = L"PastedData";
inline constexpr wchar_t kPrintedData[] = L"PrintedData";
inline constexpr wchar_t kLocation[] = L"Location";
} // namespace itemType

/// The agent's plug-ins.
namespace plugin {
inline constexpr wchar_t kDataControlPlugin[] = L"DataControlPlugin";
inline constexpr wchar_t kApplicationControlPlugin[] = L"ApplicationControlPlugin";
inline constexpr wchar_t kMobileDataControlPlugin[] = L"MobileDataControlPlugin";
} // namespace plugin

/// Their methods; the last three are words of the agent's that no call here uses.
namespace method {
inline constexpr wchar_t kInspect[] = L"Inspect";
inline constexpr wchar_t kBeginInspect[] = L"BeginInspect";
inline constexpr wchar_t kGetInspectionStatus[] = L"GetInspectionStatus";
inline constexpr wchar_t kGetExecutionMode[] = L"GetExecutionMode";
inline constexpr wchar_t kStartAppMgrIdentifyChannels[] = L"StartAppMgrIdentifyChannels";
inline constexpr wchar_t kHandleAppLaunchFileAccess[] = L"HandleAppLaunchFileAccess";
inline constexpr wchar_t kProcessExit[] = L"ProcessExit";
inline constexpr wchar_t kAuthenticate[] = L"Authenticate";
inline constexpr wchar_t kRestrict[] = L"Restrict";
inline constexpr wchar_t kMonitor[] = L"Monitor";
} // namespace method

/// Keys of an incident's context. A key that ends in "Int32" holds a 32-bit number in decimal, every other
/// one plain text.
namespace key {
inline constexpr wchar_t kIncidentSource[] = L"IncidentSource";
inline constexpr wchar_t kIncidentDestination[] = L"IncidentDestination";
inline constexpr wchar_t kDataLocation[] = L"DataLocation";
inline constexpr wchar_t kCodePage[] = L"CodePage";
inline constexpr wchar_t kFileTitle[] = L"FileTitle";
inline constexpr wchar_t kFileCompany[] = L"FileCompany";
inline constexpr wchar_t kFileTemplate[] = L"FileTemplate";
inline constexpr wchar_t kFileSubject[] = L"FileSubject";
inline constexpr wchar_t kFileCreationTime[] = L"FileCreationTime";
inline constexpr wchar_t kFileModificationTime[] = L"FileModificationTime";
inline constexpr wchar_t kFileAccessTime[] = L"FileAccessTime";
inline constexpr wchar_t kEmailFrom[] = L"EmailFrom";
inline constexpr wchar_t kEmailTo[] = L"EmailTo";
inline constexpr wchar_t kEmailCc[] = L"EmailCc";
inline constexpr wchar_t kEmailBcc[] = L"EmailBcc";
inline constexpr wchar_t kEmailBody[] = L"EmailBody";
inline constexpr wchar_t kEmailSubject[] = L"EmailSubject";
inline constexpr wchar_t kEmailNormalizedSubject[] = L"EmailNormalizedSubject";
inline constexpr wchar_t kDataFormat[] = L"DataFormat";
inline constexpr wchar_t kItemType[] = L"ItemType";
inline constexpr wchar_t kDataEncoding[] = L"DataEncoding";
inline constexpr wchar_t kUrl[] = L"URL";
inline constexpr wchar_t kAuthorUserName[] = L"AuthorUserName";
inline constexpr wchar_t kApplication[] = L"Application";
inline constexpr wchar_t kCommandLineArguments[] = L"CommandLineArguments";
inline constexpr wchar_t kCreatingApplication[] = L"CreatingApplication";
inline constexpr wchar_t kChannel[] = L"Channel";
inline constexpr wchar_t kPrinterName[] = L"PrinterName";
inline constexpr wchar_t kLoggedOnUser[] = L"LoggedOnUser";
inline constexpr wchar_t kActiveUser[] = L"ActiveUser";
inline constexpr wchar_t kProcessIdInt32[] = L"ProcessIdInt32";
inline constexpr wchar_t kWindowHandleInt32[] = L"WindowHandleInt32";
inline constexpr wchar_t kWebPageTitle[] = L"WebPageTitle";
inline constexpr wchar_t kWindowsSessionIdInt32[] = L"WindowsSessionIdInt32";
inline constexpr wchar_t kDataSize[] = L"DataSize";
inline constexpr wchar_t kEmailPriority[] = L"EmailPriority";
inline constexpr wchar_t kServer[] = L"Server";
inline constexpr wchar_t kShare[] = L"Share";
inline constexpr wchar_t kPort[] = L"Port";
inline constexpr wchar_t kDriver[] = L"Driver";
inline constexpr wchar_t kMachine[] = L"Machine";
inline constexpr wchar_t kUser[] = L"User";
inline constexpr wchar_t kDocument[] = L"Document";
inline constexpr wchar_t kSpooling[] = L"Spooling";
inline constexpr wchar_t kProcessor[] = L"Processor";
inline constexpr wchar_t kGroupName[] = L"GroupName";
inline constexpr wchar_t kDestinationStorageEncrypted[] = L"DestinationStorageEncrypted";
inline constexpr wchar_t kDeviceDescription[] = L"DeviceDescription";
inline constexpr wchar_t kDeviceInfo[] = L"DeviceInfo";
inline constexpr wchar_t kDevicePortName[] = L"DevicePortName";
inline constexpr wchar_t kDeviceType[] = L"DeviceType";
inline constexpr wchar_t kDeviceId[] = L"DeviceId";
inline constexpr wchar_t kDeviceParentHwId[] = L"DeviceParentHwId";
inline constexpr wchar_t kDeviceParentCompId[] = L"DeviceParentCompId";
inline constexpr wchar_t kDeviceParentInstanceId[] = L"DeviceParentInstanceId";
inline constexpr wchar_t kDeviceFileType[] = L"DeviceFileType";
inline constexpr wchar_t kFileAccessTimeLocal[] = L"FileAccessTimeLocal";
inline constexpr wchar_t kSsid[] = L"SSID";
inline constexpr wchar_t kMacAddress[] = L"MACAddress";
inline constexpr wchar_t kAuthentication[] = L"Authentication";
inline constexpr wchar_t kAuthenticationMethod[] = L"AuthenticationMethod";
inline constexpr wchar_t kEncryption[] = L"Encryption";
inline constexpr wchar_t kLinkType[] = L"LinkType";
inline constexpr wchar_t kDestinationDisplayName[] = L"DestinationDisplayName";
inline constexpr wchar_t kLastInspectionResult[] = L"LastInspectionResult";
inline constexpr wchar_t kDomain[] = L"Domain";
inline constexpr wchar_t kScope[] = L"Scope";
inline constexpr wchar_t kUserAgent[] = L"UserAgent";
} // namespace key

/// The ways by which data may leave.
namespace channel {
inline constexpr wchar_t kUnrecognized[] = L"Unrecognized";
inline constexpr wchar_t kEmail[] = L"Email";
inline constexpr wchar_t kWeb[] = L"Web";
inline constexpr wchar_t kWebmail[] = L"Webmail";
inline constexpr wchar_t kExternalStorage[] = L"ExternalStorage";
inline constexpr wchar_t kApplicationGroup[] = L"ApplicationGroup";
inline constexpr wchar_t kLocalPrinter[] = L"LocalPrinter";
inline constexpr wchar_t kNetworkShare[] = L"NetworkShare";
inline constexpr wchar_t kNetworkPrinter[] = L"NetworkPrinter";
inline constexpr wchar_t kCdDvd[] = L"CdDvd";
inline constexpr wchar_t kWifi[] = L"Wifi";
inline constexpr wchar_t kWpd[] = L"WPD";
inline constexpr wchar_t kFtp[] = L"FTP";
inline constexpr wchar_t kCloudStorage[] = L"CloudStorage";
} // namespace channel

/// Formats of a text item.
namespace textFormat {
inline constexpr wchar_t kClearText[] = L"clearText";
} // namespace textFormat

} // namespace vorlek::vocabulary
