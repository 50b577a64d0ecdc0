#include "foundation/Throw.h"

#include "platform/Windows.h"

#include <gtest/gtest.h>

using namespace vorlek;

namespace {

template <class Action>
std::wstring Rendered_(const Action& action) {
    try {
        action();
        return L"nothing raised";
    } catch (const Exception& failure) {
        return failure.ToString();
    }
}

} // namespace

TEST(Throw, NamesTheFileWithoutFoldersAndTheLineOfTheCall) {
    const int line = __LINE__ + 1;
    const auto fail = [] { Throw(L"vorlek::Place::Function", L"words"); };
    EXPECT_EQ(Rendered_(fail),
              L"ThrowTest.cpp(" + std::to_wstring(line) + L"): vorlek::Place::Function: Exception: words");
}

TEST(Throw, StreamsThePartsOneAfterTheOther) {
    const std::wstring path = L"C:\\\x017C\x00F3\x0142w.txt";
    const DWORD error = 4294967295;
    try {
        Throw<IOException>(L"vorlek::FileUtils::RemoveFile", L"Failed to remove file <", path, L"> error: ", error,
                           L' ', -5);
        FAIL();
    } catch (const IOException& failure) {
        EXPECT_EQ(failure.GetMessage(), L"Failed to remove file <C:\\\x017C\x00F3\x0142w.txt> error: 4294967295 -5");
        EXPECT_EQ(failure.GetLocation(), L"vorlek::FileUtils::RemoveFile");
        EXPECT_EQ(failure.GetExceptionName(), L"IOException");
    }
}

TEST(Throw, SaysNothingForNoParts) {
    EXPECT_TRUE(Rendered_([] { Throw<ArgumentException>(L"Place"); }).ends_with(L"): Place: ArgumentException: "));
}
