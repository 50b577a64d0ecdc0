#include "foundation/Exception.h"

#include <exception>
#include <memory>

#include <gtest/gtest.h>

using namespace vorlek;

namespace {

template <class Failure, class Handler>
bool CaughtBy_() {
    try {
        throw Failure(L"File.cpp", 7, L"vorlek::Place", L"words");
    } catch (const Handler&) {
        return true;
    } catch (...) {
        return false;
    }
}

/// A row of the hierarchy: the class, the chain of its bases up to the root, its short name.
template <class Failure, class... Bases>
void ExpectRow_(const std::wstring& name) {
    const Failure failure(L"File.cpp", 7, L"vorlek::Place", L"words");
    const Exception& root = failure;
    EXPECT_EQ(root.GetExceptionName(), name);
    EXPECT_EQ(root.ToString(), L"File.cpp(7): vorlek::Place: " + name + L": words");
    EXPECT_TRUE((CaughtBy_<Failure, Failure>()));
    EXPECT_TRUE((CaughtBy_<Failure, Bases>() && ...));
    EXPECT_FALSE((CaughtBy_<Failure, std::exception>()));
}

} // namespace

TEST(Exception, EveryClassHasItsBasesAndItsShortName) {
    ExpectRow_<Exception>(L"Exception");
    ExpectRow_<RegistryKeyException, Exception>(L"RegistryKeyException");
    ExpectRow_<RegistryInvalidKeyTypeException, Exception>(L"RegistryInvalidKeyTypeException");
    ExpectRow_<IOException, Exception>(L"IOException");
    ExpectRow_<FileCreateException, IOException, Exception>(L"FileCreateException");
    ExpectRow_<FileAlreadyExist, FileCreateException, IOException, Exception>(L"FileAlreadyExist");
    ExpectRow_<FileNotFoundException, IOException, Exception>(L"FileNotFoundException");
    ExpectRow_<UnauthorizedAccessException, IOException, Exception>(L"UnauthorizedAccessException");
    ExpectRow_<ArgumentException, Exception>(L"ArgumentException");
    ExpectRow_<ArgumentNullException, ArgumentException, Exception>(L"ArgumentNullException");
    ExpectRow_<ArgumentOutOfRangeException, ArgumentException, Exception>(L"ArgumentOutOfRangeException");
    ExpectRow_<AllocationFailureException, Exception>(L"AllocationFailureException");
    ExpectRow_<NotImplementedException, Exception>(L"NotImplementedException");
    ExpectRow_<ProcessUtilsException, Exception>(L"ProcessUtilsException");
    ExpectRow_<UserUtils::TrustedRelationshipFailure, Exception>(L"TrustedRelationshipFailure");
}

TEST(Exception, SiblingsAreNotCaughtForEachOther) {
    EXPECT_FALSE((CaughtBy_<FileNotFoundException, FileCreateException>()));
    EXPECT_FALSE((CaughtBy_<RegistryInvalidKeyTypeException, RegistryKeyException>()));
    EXPECT_FALSE((CaughtBy_<ArgumentNullException, ArgumentOutOfRangeException>()));
    EXPECT_FALSE((CaughtBy_<IOException, FileCreateException>()));
}

TEST(Exception, EmptyPartsDropNoSeparator) {
    EXPECT_EQ(Exception(L"", 0, L"", L"").ToString(), L"(0): : Exception: ");
    EXPECT_EQ(IOException(L"File.cpp", 12, L"vorlek::File::Read", L"").ToString(),
              L"File.cpp(12): vorlek::File::Read: IOException: ");
}

TEST(Exception, LineIsRenderedAsSignedDecimal) {
    EXPECT_EQ(Exception(L"f", -1, L"l", L"m").ToString(), L"f(-1): l: Exception: m");
    EXPECT_EQ(Exception(L"f", 2147483647, L"l", L"m").ToString(), L"f(2147483647): l: Exception: m");
}

TEST(Exception, KeepsLocationAndMessage) {
    const ArgumentException failure(L"File.cpp", 7, L"vorlek::Place", L"words");
    EXPECT_EQ(failure.GetLocation(), L"vorlek::Place");
    EXPECT_EQ(failure.GetMessage(), L"words");
}

TEST(Exception, CopiesOwnTheirText) {
    auto original = std::make_unique<IOException>(L"File.cpp", 7, L"vorlek::Place", L"words");
    const IOException copy = *original;
    original.reset();
    EXPECT_EQ(copy.ToString(), L"File.cpp(7): vorlek::Place: IOException: words");
}
