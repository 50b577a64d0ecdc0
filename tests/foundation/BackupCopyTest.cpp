#include <gtest/gtest.h>

#include "foundation/Exception.h"
#include "foundation/FileUtils.h"
#include "tests/support/ExpectFailure.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ExpectFailure;
using test_support::FailingImport;
using test_support::ReadBytes;
using test_support::ReplacedImport;
using test_support::TemporaryFolder;
using test_support::WriteBytes;
using vorlek::FileUtils;
using vorlek::IOException;

namespace {

using CopyFileFails_ = FailingImport<"CopyFileW", decltype(CopyFileW)>;
using BackupReadStandIn_ = ReplacedImport<"BackupRead", decltype(BackupRead)>;
using BackupWriteStandIn_ = ReplacedImport<"BackupWrite", decltype(BackupWrite)>;

/// The two sides of a backup, which the bench's system does not have: here they carry a file's plain bytes. Notes
/// how they are used.
class Backup_ {
public:
    int readsEnded = 0;
    int writesEnded = 0;
    bool withSecurity = true;

private:
    BOOL Note_(BOOL abort, BOOL security, void** context, int& ended) {
        withSecurity = withSecurity && security;
        EXPECT_TRUE(*context == nullptr || *context == this) << "each side keeps its context";
        *context = this;
        ended += abort;
        return abort;
    }

    BackupReadStandIn_ read_{
        [this](HANDLE file, BYTE* buffer, DWORD size, DWORD* moved, BOOL abort, BOOL security, void** context) {
            return Note_(abort, security, context, readsEnded) || ReadFile(file, buffer, size, moved, nullptr);
        }};
    BackupWriteStandIn_ write_{
        [this](HANDLE file, BYTE* buffer, DWORD size, DWORD* moved, BOOL abort, BOOL security, void** context) {
            return Note_(abort, security, context, writesEnded) || WriteFile(file, buffer, size, moved, nullptr);
        }};
};

class BackupCopy : public testing::Test {
protected:
    BackupCopy() {
        WriteBytes(from_, "new");
        WriteBytes(to_, "older");
    }

    void Raises(const std::wstring& words) const {
        ExpectFailure<IOException>([&] { FileUtils::BackupCopy(from_, to_); }, L"vorlek::FileUtils::BackupCopy", words);
    }

    const TemporaryFolder folder_;
    std::wstring from_ = folder_ / L"from";
    std::wstring to_ = folder_ / L"to";
};

} // namespace

TEST_F(BackupCopy, IsAPlainCopyWhereThatCanBeDone) {
    const FailingImport<"BackupRead", decltype(BackupRead)> read(ERROR_ACCESS_DENIED);
    FileUtils::BackupCopy(from_, to_);
    EXPECT_EQ("new", ReadBytes(to_));
    EXPECT_EQ(0, read.Calls());
}

TEST_F(BackupCopy, PumpsWithSecurityWhereThePlainCopyFails) {
    const std::string large(200'001, 'x');
    WriteBytes(from_, large);
    const Backup_ backup;
    {
        const CopyFileFails_ copy(ERROR_ACCESS_DENIED);
        FileUtils::BackupCopy(from_, to_);
    }
    EXPECT_TRUE(large == ReadBytes(to_));
    EXPECT_TRUE(backup.withSecurity);
    EXPECT_EQ(1, backup.readsEnded);
    EXPECT_EQ(1, backup.writesEnded);
}

TEST_F(BackupCopy, OpensBothForBackup) {
    const CopyFileFails_ copy(ERROR_ACCESS_DENIED);
    const Backup_ backup;
    std::wstring opened;
    ReplacedImport<"CreateFileW", decltype(CreateFileW)> create([&](LPCWSTR path, DWORD access, DWORD share,
                                                                    SECURITY_ATTRIBUTES* security, DWORD disposition,
                                                                    DWORD flags, HANDLE pattern) {
        std::wostringstream line;
        line << std::hex << access << L" " << disposition << L" " << flags << L"|";
        opened += line.str();
        return create.Original(path, access, share, security, disposition, flags, pattern);
    });
    FileUtils::BackupCopy(from_, to_);
    EXPECT_EQ(L"80000000 3 2000000|400c0000 2 2000000|", opened);
}

TEST_F(BackupCopy, SourceThatCannotBeOpenedRaises) {
    from_ = folder_ / L"none";
    Raises(L"Failed to open " + from_ + L". Error: 2");
    EXPECT_EQ("older", ReadBytes(to_));
}

TEST_F(BackupCopy, TargetThatCannotBeOpenedRaises) {
    to_ = folder_ / L"none\\to";
    Raises(L"Failed to open " + to_ + L". Error: 3");
}

TEST_F(BackupCopy, ReadThatFailsRaises) {
    const CopyFileFails_ copy(ERROR_ACCESS_DENIED);
    const FailingImport<"BackupRead", decltype(BackupRead)> read(ERROR_CRC);
    Raises(L"BackupRead failed with 23");
    EXPECT_EQ(2, read.Calls()) << "the system's context is given back all the same";
}

TEST_F(BackupCopy, WriteThatFailsRaises) {
    const CopyFileFails_ copy(ERROR_ACCESS_DENIED);
    const Backup_ backup;
    const FailingImport<"BackupWrite", decltype(BackupWrite)> write(ERROR_DISK_FULL);
    Raises(L"BackupWrite failed with 112");
}

TEST_F(BackupCopy, OfADirectoryEndsWhereTheSystemHasNoBackup) {
    from_ = folder_ / L"directory"; // which only the second road can open
    std::filesystem::create_directory(from_);
    Raises(L"BackupRead failed with 50");
}
