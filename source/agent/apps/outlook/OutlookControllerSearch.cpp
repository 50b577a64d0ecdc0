// Finding an item again by the ID that is all that is kept of it.
#include "agent/apps/outlook/AsyncProcessingParams.h"
#include "agent/apps/outlook/ItemHandlerFactory.h"
#include "agent/apps/outlook/OutlookController.h"
#include "foundation/Border.h"
#include "foundation/Log.h"
#include "foundation/Throw.h"

namespace vorlek {

ItemHandler* OutlookController::FindItem_(const std::wstring& itemId) {
    LOG_INFO(logger_, L"Searching for itemID = " << itemId);
    if (itemId.empty()) {
        LOG_WARN(logger_, L"Passed item unique ID is empty.");
        return nullptr;
    }
    if (!outlookApp_) {
        LOG_WARN(logger_, L"Outlook application pointer is NULL. Cannot locate item " << itemId);
        return nullptr;
    }
    const Outlook::_NameSpacePtr session = outlookApp_->GetSession();
    if (!session) {
        LOG_WARN(logger_, L"Could not retrieve Outlook's session pointer for item " << itemId);
        return nullptr;
    }
    IDispatchPtr item;
    const auto lookIn = [&](const _bstr_t& storeId, const wchar_t* failure) {
        GuardAt(log4cxx::Level::getWarn(), logger_, LOG_SITE,
                {.exception = {}, .comError = {failure}, .stdException = {}, .other = {}},
                [&] { item = session->GetItemFromID(itemId.c_str(), _variant_t(storeId)); });
    };
    lookIn(draftsStoreId_, L"Caught a com exception when searching in Drafts: ");
    if (!item) {
        LOG_WARN(logger_, L"Could not locate the requested item in the Drafts folder - searching in OUTBOX");
    }
    // In every case, and with the last word: the two look-ups are no alternatives.
    lookIn(outboxStoreId_, L"Caught a com exception when searching in Outbox: ");
    if (!item) {
        LOG_WARN(logger_, L"Could not Locate the requested item in the Outbox folder - search all");
        item = FindItemInAllFolders_(itemId);
    }
    if (!item) {
        Throw(L"vorlek::OutlookController::FindItem_", L"Failed to find item ", itemId, L" in any folder.");
    }
    LOG_DEBUG(logger_, L"Item was located successfully");
    return ItemHandlerFactory().CreateItemHandler(item);
}

IDispatchPtr OutlookController::FindItemInAllFolders_(const std::wstring& itemId) {
    try {
        const Outlook::_NameSpacePtr session = outlookApp_->GetSession();
        const Outlook::_FoldersPtr stores = session->GetFolders();
        for (Outlook::MAPIFolderPtr store = stores->GetFirst(); store; store = stores->GetNext()) {
            const Outlook::_FoldersPtr folders = store->GetFolders();
            for (Outlook::MAPIFolderPtr folder = folders->GetFirst(); folder; folder = folders->GetNext()) {
                if (const IDispatchPtr item = TryStoreOf_(*session, *folder, itemId)) {
                    LOG_INFO(logger_, L"Item " << itemId << L" found in " << platform::ToWide(folder->GetFolderPath()));
                    return item;
                }
            }
        }
        LOG_INFO(logger_, L"Item  was not found in all folders");
    } catch (const _com_error& failure) {
        LOG_ERROR(logger_, L"Caught a com exception when searching in Some Other Folder: " << failure.ErrorMessage());
    } catch (...) {
        LOG_INFO(logger_, L"general exception while caused exception.itemUniqueID.c_str()=." << itemId << L".");
    }
    return {};
}

IDispatchPtr OutlookController::TryStoreOf_(Outlook::_NameSpace& session, Outlook::MAPIFolder& folder,
                                            const std::wstring& itemId) {
    const _bstr_t storeId = folder.GetStoreID();
    const std::wstring tried =
        L".itemUniqueID.c_str()=." + itemId + L". storeID.c_str()=." + platform::ToWide(storeId) + L".";
    LOG_INFO(logger_, L"looking" << tried);
    const std::wstring words = L" item look caused exception" + tried;
    IDispatchPtr item;
    Guard(logger_, LOG_SITE, {.exception = {}, .comError = {}, .stdException = {}, .other = {words.c_str()}},
          [&] { item = session.GetItemFromID(itemId.c_str(), _variant_t(storeId)); });
    return item;
}

std::shared_ptr<ItemHandler> OutlookController::RequireItem_(const std::wstring& itemId) {
    std::shared_ptr<ItemHandler> handler(FindItem_(itemId));
    if (!handler) {
        _com_issue_error(E_POINTER);
    }
    return handler;
}

DATE OutlookController::GetLastModification_(const AsyncProcessingParams& params) {
    LOG_INFO(logger_, L"Finding the email item in order to read the modification time");
    DATE modified = 0.0;
    Guard(logger_, LOG_SITE,
          {.exception = {},
           .comError = {},
           .stdException = {},
           .other = {L"Could not get item and last modification - returning old date"}},
          [&] { modified = RequireItem_(params.GetItemId())->GetLastModificationTime(); });
    return modified;
}

} // namespace vorlek
