#include "agent/apps/outlook/CommonUtils.h"

#include <cwchar>

#include "foundation/Border.h"
#include "foundation/CriticalSection.h"
#include "foundation/DirUtils.h"
#include "foundation/EnvUtils.h"
#include "foundation/Lock.h"
#include "foundation/Log.h"
#include "foundation/PathUtils.h"
#include "foundation/RegistryKey.h"
#include "foundation/SecUtils.h"
#include "foundation/Throw.h"
#include "platform/Windows.h"

namespace vorlek {
namespace {

const std::wstring kUnsentKey = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin\\Unsent";
const std::wstring kInputKey = L"SOFTWARE\\Vorlek\\OutlookQLTPlugin\\Input";
const std::wstring kOnSpotValue = L"onspotenabled";

/// Guards the key of unsent items; no other lock is taken while it is held.
CriticalSection inspectedItemsLock_;

std::shared_ptr<RegistryKey> OpenKey_(const std::wstring& name) {
    return RegistryKey::GetCurrentUser().CreateSubKey(name, true);
}

/// The failures of an operation: both kinds with a text of their own share their words.
BorderPhrases Phrases_(const wchar_t* words, const wchar_t* unknown) {
    return {.exception = {words}, .comError = {}, .stdException = {words}, .other = {unknown}};
}

std::wstring MakeTemporaryFolder_() {
    std::wstring folder = PathUtils::Combine(EnvUtils::GetVariable(L"temp"), L"CITemp");
    if (!CommonUtils::DirectoryExists(folder)) {
        CommonUtils::MakeDirectory(folder);
    }
    return folder;
}

} // namespace

void CommonUtils::AddToInspectedItems(const std::wstring& itemId, const std::wstring& sentItemId,
                                      const log4cxx::LoggerPtr& logger) {
    LOG_DEBUG(logger, L"AddToInspectedItems for itemID = " << itemId << L" with sentItemId = " << sentItemId);
    if (itemId.empty()) {
        LOG_WARN(logger, L"Passed item unique ID is empty.");
        return;
    }
    Guard(logger, LOG_SITE,
          Phrases_(L"Failed to add item ID to the registry key for unsent items: ",
                   L"Unknown error occured while trying to add item ID to the registry key for unsent items."),
          [&] {
              LOG_DEBUG(logger, L"Taking lock to access the IDs in the Registry");
              const Lock guard(inspectedItemsLock_);
              LOG_DEBUG(logger, L"Accessing the IDs in the Registry - open/create subkey");
              const auto key = OpenKey_(kUnsentKey);
              LOG_DEBUG(logger, L"Accessing the IDs in the Registry - opened subkey - adding value");
              key->SetValue(itemId, sentItemId, false);
              LOG_DEBUG(logger, L"Successfully added " << itemId << L" to the registry.");
          });
}

void CommonUtils::RemoveFromInspectedItems(const std::wstring& itemId, const log4cxx::LoggerPtr& logger) {
    LOG_DEBUG(logger, L"RemoveFromInspectedItems for itemID = " << itemId);
    if (itemId.empty()) {
        LOG_WARN(logger, L"Passed item unique ID is empty.");
        return;
    }
    Guard(logger, LOG_SITE,
          Phrases_(L"Failed to remove item ID from the registry key for unsent items: ",
                   L"Unknown error occurred while trying to remove item ID from the registry key for unsent items."),
          [&] {
              LOG_DEBUG(logger, L"Taking lock to access the IDs in the Registry");
              const Lock guard(inspectedItemsLock_);
              LOG_DEBUG(logger, L"Accessing the IDs in the Registry - open subkey");
              const auto key = OpenKey_(kUnsentKey);
              LOG_DEBUG(logger, L"Accessing the IDs in the Registry - opened subkey - removing value");
              key->DeleteValue(itemId);
              LOG_DEBUG(logger, L"Successfully removed " << itemId << L" from the registry.");
          });
}

void CommonUtils::GetInspectedItemIds(std::vector<std::wstring>& itemIds, const log4cxx::LoggerPtr& logger) {
    LOG_INFO(logger, L"Checking to see if there are items that should be sent - "
                     L"following Outlook closing during inspection");
    Guard(logger, LOG_SITE,
          Phrases_(L"Failed to get the registry key for unsent items: ",
                   L"Unknown error occurred while trying to get the registry key for unsent items."),
          [&] {
              LOG_DEBUG(logger, L"Taking lock to access the IDs in the Registry");
              const Lock guard(inspectedItemsLock_);
              LOG_DEBUG(logger, L"Accessing the IDs in the Registry - open subkey");
              const auto key = OpenKey_(kUnsentKey);
              LOG_DEBUG(logger, L"Accessing the IDs in the Registry - opened subkey - reading values");
              key->GetValueNames(itemIds);
              LOG_DEBUG(logger, L"Successfully retrieved " << itemIds.size() << L" IDs.");
          });
}

std::wstring CommonUtils::GetSentItemId(const std::wstring& itemId, const log4cxx::LoggerPtr& logger) {
    LOG_INFO(logger, L"looking for item with id - " << itemId << L" in the registry");
    std::wstring sentItemId;
    const bool found =
        Guard(logger, LOG_SITE,
              Phrases_(L"Failed to get the value for the requested id: ",
                       L"Unknown error occurred while trying to get the registry value for the id."),
              [&] {
                  LOG_DEBUG(logger, L"Taking lock to access the IDs in the Registry");
                  const Lock guard(inspectedItemsLock_);
                  LOG_DEBUG(logger, L"Accessing the IDs in the Registry - open subkey");
                  const auto key = OpenKey_(kUnsentKey);
                  LOG_DEBUG(logger, L"Accessing the IDs in the Registry - opened subkey - reading values");
                  key->GetValue(itemId, sentItemId);
                  LOG_DEBUG(logger, L"Successfully retrieved " << sentItemId);
              });
    return found ? sentItemId : std::wstring();
}

bool CommonUtils::IsOnSpotOverrideEnabled(const log4cxx::LoggerPtr& logger) {
    ULONGLONG enabled = 0;
    Guard(logger, LOG_SITE,
          Phrases_(L"Failed to get the value for the onspot override: ",
                   L"Unknown error occurred while trying to get the registry value for onspot override."),
          [&] {
              LOG_DEBUG(logger, L"Checking for OnSpot override");
              const auto key = OpenKey_(kInputKey);
              LOG_DEBUG(logger, L"Accessing the on-spot value in the Registry - opened subkey");
              if (key->ValueExists(kOnSpotValue)) {
                  key->GetValue(kOnSpotValue, enabled);
                  LOG_DEBUG(logger, L"Successfully retrieved " << enabled);
              }
          });
    return enabled != 0;
}

void CommonUtils::ShowUnsentItemsWarning(const log4cxx::LoggerPtr&) {
    MessageBoxW(nullptr, L"One message or more could not be sent.\nPlease check your Drafts folder",
                L"Microsoft Outlook", MB_OK | MB_ICONEXCLAMATION);
}

std::wstring CommonUtils::MakeTemporaryPath(const std::wstring& extension) {
    static const std::wstring folder = MakeTemporaryFolder_();
    GUID id;
    wchar_t text[39]; // with braces and the terminator
    if (FAILED(CoCreateGuid(&id)) || StringFromGUID2(id, text, static_cast<int>(std::size(text))) == 0) {
        Throw(L"vorlek::CommonUtils::MakeTemporaryPath", L"Failed to create a name for a temporary file");
    }
    return PathUtils::Combine(folder, std::wstring(text) + L"." + extension);
}

std::wstring CommonUtils::GetDirectory(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L'\\'));
}

bool CommonUtils::DirectoryExists(const std::wstring& directory) {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(directory.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    FindClose(search);
    return true;
}

void CommonUtils::MakeDirectory(const std::wstring& directory) {
    DirUtils::CreateDir(directory, SecUtils::GenSA(0)->GetSecurityAttributes());
}

} // namespace vorlek
