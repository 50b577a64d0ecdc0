#include "foundation/AutoHandle.h"

#include <vector>

#include <gtest/gtest.h>

using namespace vorlek;

namespace {

std::vector<HANDLE> closed_;

void RecordClose_(HANDLE handle) {
    closed_.push_back(handle);
}

std::vector<SOCKET> closedSockets_;

void RecordSocketClose_(SOCKET socket) {
    closedSockets_.push_back(socket);
}

using Recorded = AutoHandle<HANDLE, -1, RecordClose_>;
using RecordedSocket = AutoHandle<SOCKET, -1, RecordSocketClose_>;

HANDLE Handle_(INT_PTR number) {
    return reinterpret_cast<HANDLE>(number);
}

class AutoHandleOwner : public testing::Test {
protected:
    AutoHandleOwner() {
        closed_.clear();
        closedSockets_.clear();
    }
};

} // namespace

TEST_F(AutoHandleOwner, BeginsInvalidAndClosesNothing) {
    {
        const Recorded handle;
        EXPECT_FALSE(handle.IsValid());
        EXPECT_EQ(handle.Get(), INVALID_HANDLE_VALUE);
    }
    EXPECT_TRUE(closed_.empty());
}

TEST_F(AutoHandleOwner, ClosesWhatItHolds) {
    { const Recorded handle(Handle_(8)); }
    EXPECT_EQ(closed_, std::vector{Handle_(8)});
}

TEST_F(AutoHandleOwner, AssignmentClosesThePresentHandle) {
    Recorded handle(Handle_(8));
    handle = Handle_(12);
    EXPECT_EQ(closed_, std::vector{Handle_(8)});
    EXPECT_EQ(handle.Get(), Handle_(12));
}

TEST_F(AutoHandleOwner, AssignmentOfTheHandleItHoldsClosesNothing) {
    Recorded handle(Handle_(8));
    handle = Handle_(8);
    EXPECT_TRUE(closed_.empty());
    EXPECT_EQ(handle.Get(), Handle_(8));
}

TEST_F(AutoHandleOwner, NeitherNullNorInvalidIsEverClosed) {
    {
        Recorded null(nullptr);
        EXPECT_FALSE(null.IsValid());
        null = INVALID_HANDLE_VALUE;
        EXPECT_FALSE(null.IsValid());
        null = nullptr;
    }
    EXPECT_TRUE(closed_.empty());
}

TEST_F(AutoHandleOwner, SocketIsClosedUnlessItIsInvalidOrZero) {
    {
        RecordedSocket socket;
        EXPECT_FALSE(socket.IsValid());
        EXPECT_EQ(socket.Get(), INVALID_SOCKET);
        socket = SOCKET{0};
        EXPECT_FALSE(socket.IsValid());
        socket = SOCKET{16};
        EXPECT_TRUE(socket.IsValid());
    }
    EXPECT_EQ(closedSockets_, std::vector{SOCKET{16}});
}

TEST_F(AutoHandleOwner, FileHandleClosesASystemHandle) {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    {
        FileHandle handle;
        handle = event;
        EXPECT_TRUE(SetEvent(handle.Get()));
    }
    EXPECT_FALSE(SetEvent(event));
}

TEST_F(AutoHandleOwner, ViewHandleUnmaps) {
    const FileHandle section(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 16, nullptr));
    BYTE* const view = static_cast<BYTE*>(MapViewOfFile(section.Get(), FILE_MAP_ALL_ACCESS, 0, 0, 0));
    { const ViewHandle owner(view); }
    MEMORY_BASIC_INFORMATION memory{};
    VirtualQuery(view, &memory, sizeof(memory));
    EXPECT_EQ(memory.State, DWORD{MEM_FREE});
}
