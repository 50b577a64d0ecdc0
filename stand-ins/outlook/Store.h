#pragma once
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "stand-ins/outlook/ItemData.h"

namespace stand_ins {

/// A folder by its place: the store's name first. "Outlook Data File\\Drafts"
using FolderPath = std::filesystem::path;

inline constexpr const wchar_t* kDefaultStore = L"Outlook Data File";

/// Outlook's numbers of the default folders.
enum DefaultFolder : long { Deleted = 3, Outbox = 4, SentItems = 5, Inbox = 6, Calendar = 9, Tasks = 13, Drafts = 16 };

/// The items on disk: PROFILE/Stores/<store>/<folder>/<EntryID>.json, and PROFILE/Delivered for those that left.
/// A file is written beside its place and renamed into it, so that a killed process leaves the old or the new one.
/// Failures: std::runtime_error that names the file.
class Store {
public:
    explicit Store(std::filesystem::path profile);

    /// Empty for a number that is no default folder.
    static FolderPath DefaultFolderPath(long number);
    /// Where new items of a kind stand.
    static FolderPath HomeOf(ItemKind kind);
    void AddStore(const std::wstring& name, const std::vector<std::wstring>& folders) const;
    /// The calendar of another person who shares it with this user: a store of its own that is not one of the profile,
    /// known by the person's name.
    void AddSharedCalendar(const std::wstring& person) const;
    /// The calendar that the person shares, if there is one.
    std::optional<FolderPath> SharedCalendarOf(const std::wstring& person) const;

    /// The stores of the profile, or the sub-folders of a folder, by name; the default store first.
    std::vector<FolderPath> FoldersIn(const FolderPath& folder) const;
    bool HasFolder(const FolderPath& folder) const;
    std::vector<std::wstring> EntryIdsIn(const FolderPath& folder) const;

    /// The folder of a store (by name) that holds the item.
    std::optional<FolderPath> Find(const std::wstring& store, const std::wstring& entryId) const;
    ItemData Read(const FolderPath& folder, const std::wstring& entryId) const;
    void Write(const FolderPath& folder, const ItemData& item) const;
    void Remove(const FolderPath& folder, const std::wstring& entryId) const;

    void Deliver(const ItemData& item);
    std::vector<ItemData> Delivered() const;
    std::filesystem::path DeliveredFolder() const;

    static std::wstring StoreId(const FolderPath& folder);
    /// The name of the store with that ID, if it is one of this profile or holds a shared calendar.
    std::optional<std::wstring> StoreName(const std::wstring& storeId) const;

private:
    std::filesystem::path Place_(const FolderPath& folder) const;
    std::filesystem::path File_(const FolderPath& folder, const std::wstring& entryId) const;

    std::filesystem::path profile_;
    long delivered_ = 0; ///< number of the last one
};

/// Reads one item file. Failure: std::runtime_error with one line: the file, the place in it and what is wrong.
ItemData ReadItemFile(const std::filesystem::path& file);

/// A new EntryID.
std::wstring NewEntryId();

} // namespace stand_ins
