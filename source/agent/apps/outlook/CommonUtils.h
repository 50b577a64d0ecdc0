#pragma once
#include <string>
#include <vector>

#include <log4cxx/logger.h>

namespace vorlek {

/// The ledger of items stopped for an inspection, the switch for inspecting on the spot, the one message
/// box about unsent mail, and the names of temporary files. The ledger lies in the user's registry and
/// outlives a crash. Each line is logged by the caller's logger; no operation with a logger raises.
class CommonUtils {
public:
    CommonUtils() = delete;

    /// Notes an item; one that is noted already gets the new sent-item ID.
    static void AddToInspectedItems(const std::wstring& itemId, const std::wstring& sentItemId,
                                    const log4cxx::LoggerPtr& logger);
    /// An item that is not noted is no failure.
    static void RemoveFromInspectedItems(const std::wstring& itemId, const log4cxx::LoggerPtr& logger);
    /// itemIds: receives the IDs of all noted items.
    static void GetInspectedItemIds(std::vector<std::wstring>& itemIds, const log4cxx::LoggerPtr& logger);
    /// The sent-item ID noted with an item; empty if there is none or it cannot be read.
    static std::wstring GetSentItemId(const std::wstring& itemId, const log4cxx::LoggerPtr& logger);
    /// Whether every item is to be inspected on the spot; read afresh each time.
    static bool IsOnSpotOverrideEnabled(const log4cxx::LoggerPtr& logger);
    /// Tells the user that mail stayed behind, and waits for the answer.
    static void ShowUnsentItemsWarning(const log4cxx::LoggerPtr& logger);

    /// A new full path in the add-in's temporary folder, which is made if it is missing. extension: without
    /// a dot. Raises Exception.
    static std::wstring MakeTemporaryPath(const std::wstring& extension);
    /// What stands before the last backslash; a path without one is returned whole.
    static std::wstring GetDirectory(const std::wstring& path);
    static bool DirectoryExists(const std::wstring& directory);
    /// Makes the folder, readable for who may read its parent. Raises Exception.
    static void MakeDirectory(const std::wstring& directory);
};

} // namespace vorlek
