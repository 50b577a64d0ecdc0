#include "foundation/FileRemoval.h"

#include <gtest/gtest.h>

#include "tests/support/ExpectFailure.h"

using test_support::ExpectFailure;
using vorlek::IOException;
using vorlek::RaiseRemovalFailure;
using vorlek::UnauthorizedAccessException;

// FileUtils and EnviornmentUtils show the removals themselves; some errors no file system gives on demand.
TEST(FileRemoval, FailureSaysWhatTheSystemSaid) {
    ExpectFailure<UnauthorizedAccessException>([] { RaiseRemovalFailure(L"where", L"C:\\file", ERROR_ACCESS_DENIED); },
                                               L"where", L"Failed to remove file <C:\\file>");
    ExpectFailure<IOException>([] { RaiseRemovalFailure(L"where", L"C:\\file", ERROR_WRITE_PROTECT); }, L"where",
                               L"Failed to remove file <C:\\file> error: 19");
}
