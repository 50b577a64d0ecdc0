#pragma once
#include "platform/Windows.h"

namespace stand_ins {

/// Outlook's identifiers all read {000630xx-0000-0000-C000-000000000046}.
constexpr GUID OutlookId(unsigned long first) {
    return {first, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
}

inline constexpr GUID kApplicationId = OutlookId(0x00063001);
inline constexpr GUID kNameSpaceId = OutlookId(0x00063002);
inline constexpr GUID kExplorerId = OutlookId(0x00063003);
inline constexpr GUID kInspectorId = OutlookId(0x00063005);
inline constexpr GUID kFolderId = OutlookId(0x00063006);
inline constexpr GUID kAttachmentId = OutlookId(0x00063007);
inline constexpr GUID kPostItemId = OutlookId(0x00063024);
inline constexpr GUID kPropertyAccessorId = OutlookId(0x0006302D);
inline constexpr GUID kAppointmentItemId = OutlookId(0x00063033);
inline constexpr GUID kMailItemId = OutlookId(0x00063034);
inline constexpr GUID kTaskItemId = OutlookId(0x00063035);
inline constexpr GUID kTaskRequestItemId = OutlookId(0x00063036);
inline constexpr GUID kRecipientsId = OutlookId(0x0006303B);
inline constexpr GUID kAttachmentsId = OutlookId(0x0006303C);
inline constexpr GUID kFoldersId = OutlookId(0x00063040);
inline constexpr GUID kItemsId = OutlookId(0x00063041);
inline constexpr GUID kRecipientId = OutlookId(0x00063045);
inline constexpr GUID kAddressEntryId = OutlookId(0x0006304B);
inline constexpr GUID kMeetingItemId = OutlookId(0x00063062);
inline constexpr GUID kApplicationEventsId = OutlookId(0x0006304E);
inline constexpr GUID kAccountsId = OutlookId(0x000630C4);
inline constexpr GUID kAccountId = OutlookId(0x000630C5);

/// "_MailItem" for its identifier, "IDispatch"; empty for one that is not known.
const wchar_t* KnownInterfaceName(const GUID& id);

} // namespace stand_ins
