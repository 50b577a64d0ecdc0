#include "stand-ins/outlook/Interfaces.h"

#include <algorithm>
#include <array>
#include <utility>

namespace stand_ins {

const wchar_t* KnownInterfaceName(const GUID& id) {
    static const std::array<std::pair<GUID, const wchar_t*>, 23> names = {{
        {IID_IUnknown, L"IUnknown"},
        {IID_IDispatch, L"IDispatch"},
        {kApplicationId, L"_Application"},
        {kNameSpaceId, L"_NameSpace"},
        {kExplorerId, L"_Explorer"},
        {kInspectorId, L"_Inspector"},
        {kFolderId, L"MAPIFolder"},
        {kAttachmentId, L"Attachment"},
        {kPostItemId, L"_PostItem"},
        {kPropertyAccessorId, L"_PropertyAccessor"},
        {OutlookId(0x00063033), L"_AppointmentItem"},
        {kMailItemId, L"_MailItem"},
        {kTaskItemId, L"_TaskItem"},
        {kTaskRequestItemId, L"_TaskRequestItem"},
        {kMeetingItemId, L"_MeetingItem"},
        {kRecipientsId, L"Recipients"},
        {kAttachmentsId, L"Attachments"},
        {kFoldersId, L"_Folders"},
        {kItemsId, L"_Items"},
        {kRecipientId, L"Recipient"},
        {kAddressEntryId, L"AddressEntry"},
        {kAccountsId, L"_Accounts"},
        {kAccountId, L"_Account"},
    }};
    const auto found = std::ranges::find_if(names, [&](const auto& name) { return name.first == id; });
    return found != names.end() ? found->second : L"";
}

} // namespace stand_ins
