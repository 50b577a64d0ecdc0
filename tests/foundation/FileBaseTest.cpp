#include "foundation/FileBase.h"

#include <gtest/gtest.h>

#include "foundation/File.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/NetworkShare.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::Exception;
using vorlek::File;
using vorlek::FileAlreadyExist;
using vorlek::FileNotFoundException;

namespace {

/// A file whose handle a test can take away.
class OpenFile_ : public File {
public:
    explicit OpenFile_(const std::wstring& path) : File(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, 0) {}
    void SetHandle(HANDLE handle) { handle_ = handle; }
};

void Open_(const std::wstring& path, DWORD disposition) {
    const File file(path, GENERIC_READ, 0, disposition, FILE_ATTRIBUTE_NORMAL);
}

} // namespace

TEST(FileBase, MissingFileRaises) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"none";
    ExpectFailure<FileNotFoundException>([&] { Open_(path, OPEN_EXISTING); }, L"vorlek::FileBase::FileBase",
                                         L"CreateFile on \"" + path + L"\" failed with: ERROR_FILE_NOT_FOUND");
}

TEST(FileBase, MissingDirectoryRaises) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"none\\file";
    ExpectFailure<FileNotFoundException>([&] { Open_(path, CREATE_ALWAYS); }, L"vorlek::FileBase::FileBase",
                                         L"CreateFile on \"" + path + L"\" failed with: ERROR_PATH_NOT_FOUND");
}

TEST(FileBase, FileThatExistsAlreadyRaises) {
    const FailingImport<"CreateFileW", decltype(CreateFileW)> create(ERROR_ALREADY_EXISTS, INVALID_HANDLE_VALUE);
    ExpectFailure<FileAlreadyExist>([] { Open_(L"C:\\file", CREATE_NEW); }, L"vorlek::FileBase::FileBase",
                                    L"CreateFile on \"C:\\file\" failed with: ERROR_ALREADY_EXISTS");
}

TEST(FileBase, AnyOtherFailureToOpenRaisesWithItsNumber) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    WriteBytes(path, "x");
    ExpectFailure<Exception>([&] { Open_(path, CREATE_NEW); }, L"vorlek::FileBase::FileBase",
                             L"CreateFile on \"" + path + L"\" failed with: 80");
}

TEST(FileBase, OpensAPathLongerThanTheSystemsLimit) {
    const TemporaryFolder folder;
    const std::wstring directory = L"\\\\?\\" + (folder / std::wstring(200, L'd')).wstring();
    ASSERT_TRUE(CreateDirectoryW(directory.c_str(), nullptr));
    const std::wstring path = directory.substr(4) + L'\\' + std::wstring(100, L'f');
    {
        File file(path, GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
        EXPECT_EQ(path, file.GetPath());
        file.SetAttributes(FILE_ATTRIBUTE_HIDDEN);
        EXPECT_EQ(static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN), file.GetAttributes() & FILE_ATTRIBUTE_HIDDEN);
    }
    EXPECT_TRUE(DeleteFileW((L"\\\\?\\" + path).c_str()));
    EXPECT_TRUE(RemoveDirectoryW(directory.c_str()));
}

TEST(FileBase, OpensAFileOfTheNetwork) {
    const test_support::NetworkShare share;
    const std::wstring path = share.Path() + L"\\file";
    {
        File file(path, GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
        file.Write("12345", 5);
    }
    EXPECT_EQ(5, OpenFile_(path).GetSize());
    ExpectFailure<FileNotFoundException>(
        [&] { Open_(share.Path() + L"\\none", OPEN_EXISTING); }, L"vorlek::FileBase::FileBase",
        L"CreateFile on \"" + share.Path() + L"\\none\" failed with: ERROR_FILE_NOT_FOUND");
}

TEST(FileBase, KnowsAttributesAndSize) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    WriteBytes(path, "12345");
    File file(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING, 0);
    EXPECT_EQ(5, file.GetSize());
    file.SetAttributes(FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(static_cast<DWORD>(FILE_ATTRIBUTE_READONLY), file.GetAttributes() & FILE_ATTRIBUTE_READONLY);
    file.SetAttributes(FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(0u, file.GetAttributes() & FILE_ATTRIBUTE_READONLY);
    file.FlushFileBuffers();
}

TEST(FileBase, FileWithoutAHandleRefusesEverything) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    for (const HANDLE none : {INVALID_HANDLE_VALUE, static_cast<HANDLE>(nullptr)}) {
        OpenFile_ file(folder / L"file");
        file.SetHandle(none);
        const auto refuses = [](auto&& body) {
            ExpectFailure<Exception>(body, L"vorlek::FileBase::ValidateHandle", L"Handle is invalid!");
        };
        BYTE buffer[1] = {};
        refuses([&] { file.ValidateHandle(); });
        refuses([&] { file.SetEFSEncryption(true); });
        refuses([&] { file.GetAttributes(); });
        refuses([&] { file.SetAttributes(FILE_ATTRIBUTE_NORMAL); });
        refuses([&] { file.GetSize(); });
        refuses([&] { file.FlushFileBuffers(); });
        refuses([&] { file.Read(buffer, 1); });
        refuses([&] { file.Write(buffer, 1); });
        refuses([&] { file.GetPosition(); });
        refuses([&] { file.Seek(0, FILE_BEGIN); });
        refuses([&] { file.SendIoControl(0, nullptr, 0, nullptr, 0); });
    }
}

TEST(FileBase, HandleOfAnotherKindRaisesWithTheSystemsNumber) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    OpenFile_ file(folder / L"file");
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    LARGE_INTEGER size = {};
    ASSERT_FALSE(GetFileSizeEx(event, &size));
    const DWORD error = GetLastError();
    file.SetHandle(event); // closed with the file
    ExpectFailure<Exception>([&] { file.GetSize(); }, L"vorlek::FileBase::GetSize",
                             L"GetFileSize failed with: " + std::to_wstring(error));
    ExpectFailure<Exception>([&] { file.GetPosition(); }, L"vorlek::File::GetPosition",
                             L"SetFilePointerEx failed with: " + std::to_wstring(error));
}

TEST(FileBase, ReadOnlyHandleCannotBeFlushed) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    OpenFile_ file(folder / L"file");
    ExpectFailure<Exception>([&] { file.FlushFileBuffers(); }, L"vorlek::FileBase::FlushFileBuffers",
                             L"FlushFileBuffers failed with: 5");
}

TEST(FileBase, AttributesOfAFileThatWentRaise) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    WriteBytes(path, "x");
    File file(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, OPEN_EXISTING, 0);
    ASSERT_TRUE(MoveFileW(path.c_str(), (folder / L"elsewhere").c_str()));
    ExpectFailure<Exception>([&] { file.GetAttributes(); }, L"vorlek::FileBase::GetAttributes",
                             L"GetFileAttributes failed with: 2");
    ExpectFailure<Exception>([&] { file.SetAttributes(FILE_ATTRIBUTE_NORMAL); }, L"vorlek::FileBase::SetAttributes",
                             L"SetFileAttributes failed with: 2");
}

TEST(FileBase, EncryptsAsTheSystemDoes) {
    const TemporaryFolder folder;
    const std::wstring path = folder / L"file";
    const std::wstring twin = folder / L"twin";
    WriteBytes(path, "x");
    WriteBytes(twin, "x");
    File file(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING, 0);
    const auto agrees = [&](bool encrypt, BOOL able, const std::wstring& words) {
        if (able) {
            file.SetEFSEncryption(encrypt);
        } else {
            const DWORD error = GetLastError();
            ExpectFailure<Exception>([&] { file.SetEFSEncryption(encrypt); }, L"vorlek::FileBase::SetEFSEncryption",
                                     words + std::to_wstring(error));
        }
        EXPECT_EQ(GetFileAttributesW(twin.c_str()), file.GetAttributes());
    };
    agrees(true, EncryptFileW(twin.c_str()), L"EncryptFile failed with: ");
    agrees(false, DecryptFileW(twin.c_str(), 0), L"DecryptFile failed with: ");
}

TEST(FileBase, EncryptionThatFailsRaises) {
    const TemporaryFolder folder;
    WriteBytes(folder / L"file", "x");
    OpenFile_ file(folder / L"file");
    const FailingImport<"EncryptFileW", decltype(EncryptFileW)> encrypt(ERROR_ENCRYPTION_FAILED);
    ExpectFailure<Exception>([&] { file.SetEFSEncryption(true); }, L"vorlek::FileBase::SetEFSEncryption",
                             L"EncryptFile failed with: 6000");
    const FailingImport<"DecryptFileW", decltype(DecryptFileW)> decrypt(ERROR_DECRYPTION_FAILED);
    ExpectFailure<Exception>([&] { file.SetEFSEncryption(false); }, L"vorlek::FileBase::SetEFSEncryption",
                             L"DecryptFile failed with: 6001");
    EXPECT_EQ(1, encrypt.Calls());
    EXPECT_EQ(1, decrypt.Calls());
}
