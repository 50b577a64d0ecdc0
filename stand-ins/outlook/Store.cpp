#include "stand-ins/outlook/Store.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "stand-ins/outlook/Com.h"
#include "stand-ins/outlook/Text.h"

namespace stand_ins {
namespace {

namespace fs = std::filesystem;

constexpr const wchar_t* kStoreIdPrefix = L"0000000038A1BB1005E5101AA1BB08002B2A56C2";

constexpr const wchar_t* kCalendar = L"Calendar";
constexpr const wchar_t* kSharedMark = L"shared"; // a file in the folder of a store

[[noreturn]] void Fail(const char* what, const fs::path& path, const std::string& why) {
    throw std::runtime_error(std::string(what) + " " + ToUtf8(path.wstring()) + ": " + why);
}

std::string LastError() {
    return "error " + std::to_string(GetLastError());
}

void CreateFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error || !fs::is_directory(folder)) {
        Fail("cannot create the folder", folder, error ? error.message() : "a file of this name stands in the way");
    }
}

// Written through to the disk before it takes the name.
void WriteWhole(const fs::path& file, const std::string& bytes) {
    const fs::path draft = file.wstring() + L".new";
    const HANDLE handle =
        CreateFileW(draft.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        Fail("cannot write", draft, LastError());
    }
    DWORD written = 0;
    const bool whole = WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
                       written == bytes.size() && FlushFileBuffers(handle);
    const std::string why = whole ? "" : LastError();
    CloseHandle(handle);
    if (!whole) {
        DeleteFileW(draft.c_str());
        Fail("cannot write", draft, why);
    }
    if (!MoveFileExW(draft.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        Fail("cannot replace", file, LastError());
    }
}

std::vector<fs::path> Entries(const fs::path& folder, bool folders) {
    std::vector<fs::path> found;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (entry.is_directory() == folders && (folders || entry.path().extension() == L".json")) {
            found.push_back(entry.path());
        }
    }
    if (error) {
        Fail("cannot read the folder", folder, error.message());
    }
    std::ranges::sort(found);
    return found;
}

std::string Serialized(const ItemData& item) {
    return ToJson(item).dump(1);
}

} // namespace

ItemData ReadItemFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream || fs::is_directory(file)) {
        Fail("cannot read", file, "no such file, or no right to read it");
    }
    try {
        return FromJson(nlohmann::json::parse(stream));
    } catch (const std::exception& fault) {
        Fail("cannot read", file, fault.what());
    }
}

std::wstring NewEntryId() {
    GUID id{};
    if (FAILED(CoCreateGuid(&id))) {
        throw std::runtime_error("no new identifier to be had");
    }
    return L"00000000" + HexOf({reinterpret_cast<const char*>(&id), sizeof id});
}

Store::Store(fs::path profile) : profile_(std::move(profile)) {
    for (const long number : {Deleted, Outbox, SentItems, Inbox, Calendar, Tasks, Drafts}) {
        CreateFolder(Place_(DefaultFolderPath(number)));
    }
    CreateFolder(DeliveredFolder());
    if (const auto before = Entries(DeliveredFolder(), false); !before.empty()) {
        delivered_ = std::wcstol(before.back().filename().c_str(), nullptr, 10);
    }
}

FolderPath Store::DefaultFolderPath(long number) {
    static const std::array<std::pair<long, const wchar_t*>, 7> folders = {{{Deleted, L"Deleted Items"},
                                                                            {Outbox, L"Outbox"},
                                                                            {SentItems, L"Sent Items"},
                                                                            {Inbox, L"Inbox"},
                                                                            {Calendar, kCalendar},
                                                                            {Tasks, L"Tasks"},
                                                                            {Drafts, L"Drafts"}}};
    const auto found = std::ranges::find_if(folders, [&](const auto& folder) { return folder.first == number; });
    return found != folders.end() ? FolderPath(kDefaultStore) / found->second : FolderPath();
}

FolderPath Store::HomeOf(ItemKind kind) {
    switch (kind) {
    case ItemKind::Appointment:
        return DefaultFolderPath(Calendar);
    case ItemKind::Task:
        return DefaultFolderPath(Tasks);
    default:
        return DefaultFolderPath(Drafts);
    }
}

void Store::AddStore(const std::wstring& name, const std::vector<std::wstring>& folders) const {
    CreateFolder(Place_(name));
    for (const std::wstring& folder : folders) {
        CreateFolder(Place_(FolderPath(name) / folder));
    }
}

void Store::AddSharedCalendar(const std::wstring& person) const {
    AddStore(person, {kCalendar});
    WriteWhole(Place_(person) / kSharedMark, "");
}

std::optional<FolderPath> Store::SharedCalendarOf(const std::wstring& person) const {
    const bool isName = !person.empty() && person.find_first_of(L"\\/:") == std::wstring::npos;
    return isName && fs::exists(Place_(person) / kSharedMark) ? std::optional(FolderPath(person) / kCalendar)
                                                              : std::nullopt;
}

std::vector<FolderPath> Store::FoldersIn(const FolderPath& folder) const {
    std::vector<FolderPath> folders;
    for (const fs::path& entry : Entries(Place_(folder), true)) {
        if (!fs::exists(entry / kSharedMark)) {
            folders.push_back(folder / entry.filename());
        }
    }
    std::ranges::stable_partition(folders, [](const FolderPath& path) { return path == kDefaultStore; });
    return folders;
}

bool Store::HasFolder(const FolderPath& folder) const {
    return fs::is_directory(Place_(folder));
}

std::vector<std::wstring> Store::EntryIdsIn(const FolderPath& folder) const {
    std::vector<std::wstring> ids;
    for (const fs::path& file : Entries(Place_(folder), false)) {
        ids.push_back(file.stem().wstring());
    }
    return ids;
}

std::optional<FolderPath> Store::Find(const std::wstring& store, const std::wstring& entryId) const {
    // What becomes a file name must be an ID and no way through the folders.
    if (entryId.empty() || !std::ranges::all_of(entryId, [](wchar_t c) { return std::iswxdigit(c) != 0; })) {
        return std::nullopt;
    }
    std::vector<FolderPath> left = {store};
    while (!left.empty()) {
        const FolderPath folder = left.back();
        left.pop_back();
        if (fs::exists(File_(folder, entryId))) {
            return folder;
        }
        std::ranges::copy(FoldersIn(folder), std::back_inserter(left));
    }
    return std::nullopt;
}

ItemData Store::Read(const FolderPath& folder, const std::wstring& entryId) const {
    ItemData item = ReadItemFile(File_(folder, entryId));
    item.entryId = entryId;
    return item;
}

void Store::Write(const FolderPath& folder, const ItemData& item) const {
    WriteWhole(File_(folder, item.entryId), Serialized(item));
}

void Store::Remove(const FolderPath& folder, const std::wstring& entryId) const {
    const fs::path file = File_(folder, entryId);
    if (!DeleteFileW(file.c_str())) {
        Fail("cannot remove", file, LastError());
    }
}

void Store::Deliver(const ItemData& item) {
    wchar_t number[16];
    _snwprintf(number, std::size(number), L"%06ld-", delivered_ + 1);
    WriteWhole(DeliveredFolder() / (number + item.entryId + L".json"), Serialized(item));
    ++delivered_;
}

std::vector<ItemData> Store::Delivered() const {
    std::vector<ItemData> items;
    for (const fs::path& file : Entries(DeliveredFolder(), false)) {
        items.push_back(ReadItemFile(file));
    }
    return items;
}

fs::path Store::DeliveredFolder() const {
    return profile_ / L"Delivered";
}

std::wstring Store::StoreId(const FolderPath& folder) {
    return kStoreIdPrefix + HexOf(ToUtf8(folder.begin()->wstring()));
}

std::optional<std::wstring> Store::StoreName(const std::wstring& storeId) const {
    for (const fs::path& entry : Entries(Place_({}), true)) {
        if (StoreId(entry.filename()) == storeId) {
            return entry.filename().wstring();
        }
    }
    return std::nullopt;
}

fs::path Store::Place_(const FolderPath& folder) const {
    return profile_ / L"Stores" / folder;
}

fs::path Store::File_(const FolderPath& folder, const std::wstring& entryId) const {
    return Place_(folder) / (entryId + L".json");
}

} // namespace stand_ins
