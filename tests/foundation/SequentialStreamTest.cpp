#include "foundation/SequentialStream.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/NoMemory.h"
#include "tests/support/Threads.h"

using vorlek::SequentialStream;

namespace {

/// A stream object and the wide stream behind it, released at the end.
class SequentialStreamTest : public testing::Test {
protected:
    SequentialStreamTest() { EXPECT_EQ(S_OK, SequentialStream::CreateStream(text_, &stream_)); }
    ~SequentialStreamTest() override { stream_->Release(); }

    std::wstringstream text_;
    ISequentialStream* stream_ = nullptr;
};

} // namespace

TEST_F(SequentialStreamTest, BeginsWithOneReference) {
    EXPECT_EQ(2u, stream_->AddRef());
    EXPECT_EQ(1u, stream_->Release());
}

TEST_F(SequentialStreamTest, AnswersForItsTwoInterfaces) {
    void* unknown = nullptr;
    EXPECT_EQ(S_OK, stream_->QueryInterface(__uuidof(IUnknown), &unknown));
    EXPECT_EQ(stream_, unknown);
    EXPECT_EQ(1u, stream_->Release());
    void* sequential = nullptr;
    EXPECT_EQ(S_OK, stream_->QueryInterface(__uuidof(ISequentialStream), &sequential));
    EXPECT_EQ(stream_, sequential);
    EXPECT_EQ(1u, stream_->Release());
}

TEST_F(SequentialStreamTest, AnswersForNoOtherInterface) {
    void* object = this;
    EXPECT_EQ(E_NOINTERFACE, stream_->QueryInterface(__uuidof(IStream), &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(SequentialStreamTest, RefusesANullPlaceForTheAnswer) {
    EXPECT_EQ(E_INVALIDARG, stream_->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST_F(SequentialStreamTest, ReadsHalfAsManyCharactersAsBytesAreAskedFor) {
    text_ << L"abcdef";
    wchar_t buffer[8] = {};
    ULONG read = 0;
    EXPECT_EQ(S_OK, stream_->Read(buffer, 7, &read));
    EXPECT_EQ(6u, read);
    EXPECT_STREQ(L"abc", buffer);
}

TEST_F(SequentialStreamTest, ReportsWhatIsLeftAndThenNothingAtTheEnd) {
    text_ << L"abc";
    wchar_t buffer[8] = {};
    ULONG read = 0;
    EXPECT_EQ(S_OK, stream_->Read(buffer, sizeof buffer, &read));
    EXPECT_EQ(6u, read);
    EXPECT_EQ(S_OK, stream_->Read(buffer, sizeof buffer, &read));
    EXPECT_EQ(0u, read);
}

TEST_F(SequentialStreamTest, ReadsWithoutAPlaceForTheCount) {
    text_ << L"abc";
    wchar_t buffer[4] = {};
    EXPECT_EQ(S_OK, stream_->Read(buffer, 6, nullptr));
    EXPECT_STREQ(L"abc", buffer);
}

TEST_F(SequentialStreamTest, WritesHalfAsManyCharactersAndReportsTheBytes) {
    ULONG written = 0;
    EXPECT_EQ(S_OK, stream_->Write(L"abcd", 7, &written));
    EXPECT_EQ(7u, written);
    EXPECT_EQ(L"abc", text_.str());
}

TEST_F(SequentialStreamTest, WritesWithoutAPlaceForTheCount) {
    EXPECT_EQ(S_OK, stream_->Write(L"ab", 4, nullptr));
    EXPECT_EQ(L"ab", text_.str());
}

TEST_F(SequentialStreamTest, DoesNotReportAFailureOfTheStream) {
    text_.setstate(std::ios::badbit);
    ULONG count = 0;
    EXPECT_EQ(S_OK, stream_->Write(L"ab", 4, &count));
    EXPECT_EQ(4u, count);
    wchar_t buffer[2] = {};
    EXPECT_EQ(S_OK, stream_->Read(buffer, 4, &count));
    EXPECT_EQ(0u, count);
}

TEST_F(SequentialStreamTest, CountsTheReferencesOfManyThreads) {
    constexpr int kTurns = 50000;
    test_support::RunThreads(4, [&](int) {
        for (int turn = 0; turn < kTurns; ++turn) {
            stream_->AddRef();
        }
    });
    EXPECT_EQ(4u * kTurns + 2, stream_->AddRef());
    test_support::RunThreads(4, [&](int) {
        for (int turn = 0; turn < kTurns; ++turn) {
            stream_->Release();
        }
    });
    EXPECT_EQ(1u, stream_->Release());
}

TEST_F(SequentialStreamTest, StreamThatFindsNoMemoryIsNotMade) {
    const test_support::NoMemory noMemory(sizeof(SequentialStream));
    ISequentialStream* created = stream_;
    EXPECT_EQ(E_FAIL, SequentialStream::CreateStream(text_, &created));
    EXPECT_EQ(nullptr, created);
}
