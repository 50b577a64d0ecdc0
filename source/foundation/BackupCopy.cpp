#include <vector>

#include "foundation/AutoHandle.h"
#include "foundation/Exception.h"
#include "foundation/FileUtils.h"
#include "foundation/PathUtils.h"
#include "foundation/Throw.h"

namespace vorlek {

namespace {

using BackupRoutine = BOOL(WINAPI*)(HANDLE, LPBYTE, DWORD, LPDWORD, WINBOOL, WINBOOL, LPVOID*);

/// Opens for copying with everything that belongs to a file; a directory can be opened so as well.
HANDLE Open_(const std::wstring& path, DWORD access, DWORD disposition) {
    const HANDLE file = CreateFileW(PathUtils::FixLongPath(path).c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        Throw<IOException>(L"vorlek::FileUtils::BackupCopy", L"Failed to open ", path, L". Error: ", error);
    }
    return file;
}

/// One side of the copy. The system keeps its own state between the calls and must be told of the end.
class BackupStream {
public:
    BackupStream(HANDLE file, BackupRoutine routine) : file_(file), routine_(routine) {}
    BackupStream(const BackupStream&) = delete;
    BackupStream& operator=(const BackupStream&) = delete;
    ~BackupStream() {
        DWORD moved = 0;
        routine_(file_.Get(), nullptr, 0, &moved, TRUE, TRUE, &context_);
    }

    /// Returns the bytes moved.
    DWORD Move(BYTE* buffer, DWORD size, const wchar_t* words) {
        DWORD moved = 0;
        if (!routine_(file_.Get(), buffer, size, &moved, FALSE, TRUE, &context_)) {
            const DWORD error = GetLastError();
            Throw<IOException>(L"vorlek::FileUtils::BackupCopy", words, error);
        }
        return moved;
    }

private:
    FileHandle file_;
    BackupRoutine routine_;
    void* context_ = nullptr;
};

} // namespace

void FileUtils::BackupCopy(const std::wstring& source, const std::wstring& target) {
    try {
        return CopyFileW(source, target, true);
    } catch (const IOException&) {
        // On to the road that carries security and streams as well.
    }
    BackupStream from(Open_(source, GENERIC_READ, OPEN_EXISTING), BackupRead);
    BackupStream to(Open_(target, GENERIC_WRITE | WRITE_DAC | WRITE_OWNER, CREATE_ALWAYS), BackupWrite);
    std::vector<BYTE> buffer(64 * 1024);
    while (const DWORD read = from.Move(buffer.data(), static_cast<DWORD>(buffer.size()), L"BackupRead failed with ")) {
        to.Move(buffer.data(), read, L"BackupWrite failed with ");
    }
}

} // namespace vorlek
