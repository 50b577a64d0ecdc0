// What an earlier run of Outlook left in the ledger.
#include "agent/apps/outlook/CommonUtils.h"
#include "agent/apps/outlook/GlobalConfig.h"
#include "agent/apps/outlook/OutlookController.h"
#include "foundation/Border.h"
#include "foundation/Log.h"

namespace vorlek {

void OutlookController::HandleIncompleteInspections() {
    LOG_INFO(logger_, L"Sending items that were in the middle of inspection when Outlook was closed.");
    if (embeddedProcess_) {
        LOG_INFO(logger_, L"Outlook is embedded - skipping resending of inspected items");
        return;
    }
    std::vector<std::wstring> itemIds;
    CommonUtils::GetInspectedItemIds(itemIds, logger_);
    for (const std::wstring& itemId : itemIds) {
        Guard(logger_, LOG_SITE,
              {.exception = {L"Failed to find and resend an item: "},
               .comError = {L"COM error while trying to find and resend an item: "},
               .stdException = {L"Failed to find and resend an item: "},
               .other = {L"Unknown error occured while trying to find and resend an item."}},
              [&] { Resume_(itemId); });
    }
}

void OutlookController::Resume_(const std::wstring& itemId) {
    LOG_INFO(logger_, L"Processing resend of item with Id: " << itemId);
    const std::shared_ptr<ItemHandler> handler = RequireItem_(itemId);
    if (GlobalConfig::IsOutlookBefore2007()) {
        LOG_INFO(logger_, L"Outlook 2003 - we display the item that wasn't sent");
        handler->Display();
        CommonUtils::RemoveFromInspectedItems(itemId, logger_);
    } else {
        LOG_INFO(logger_, L"Triggering send for the item to be re-inspected");
        handler->Send();
    }
}

} // namespace vorlek
