// Memory handles of the host: sizes, contents across reallocation, movement, locking, faults.
#include "BM.hpp"
#include "achost/Faults.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

namespace {

class BMTest : public ::testing::Test {
protected:
    achost::ScopedFaults faults;
    long liveBefore = achost::LiveHandleCount();
    void TearDown() override { EXPECT_EQ(achost::LiveHandleCount(), liveBefore) << "a handle leaked"; }

    static GSHandle Filled(const char* bytes) {
        const GSSize n = static_cast<GSSize>(std::strlen(bytes));
        GSHandle h = BMAllocateHandle(n, 0, 0);
        std::memcpy(*h, bytes, n);
        return h;
    }
    static std::string Bytes(GSHandle h) { return std::string(*h, BMGetHandleSize(h)); }
};

TEST_F(BMTest, AllocationGivesTheRequestedSizeAndRefusesNegativeOnes) {
    for (GSSize size : {0, 1, 4096}) {
        SCOPED_TRACE(size);
        GSHandle h = BMAllocateHandle(size, ALLOCATE_CLEAR, 0);
        ASSERT_NE(h, nullptr);
        ASSERT_NE(*h, nullptr);
        EXPECT_EQ(Bytes(h), std::string(size, '\0'));
        BMKillHandle(&h);
        EXPECT_EQ(h, nullptr);
    }
    EXPECT_EQ(BMAllocateHandle(-1, 0, 0), nullptr);
    EXPECT_EQ(BMError(), ErrParam);
    GSHandle h = Filled("abc");
    EXPECT_EQ(BMReallocHandle(h, -1, 0, 0), nullptr);
    EXPECT_EQ(BMError(), ErrParam);
    EXPECT_EQ(Bytes(h), "abc");
    BMKillHandle(&h);
}

TEST_F(BMTest, ReallocationKeepsTheLeadingBytes) {
    const std::tuple<const char*, GSSize, GSFlags, std::string> cases[] = {
        {"shrink", 2, 0, "ab"},
        {"to zero", 0, 0, ""},
        {"same size", 4, 0, "abcd"},
        {"grow and clear the new bytes", 6, REALLOC_CLEAR, std::string("abcd\0\0", 6)},
        {"full clear", 3, REALLOC_FULLCLEAR, std::string(3, '\0')}};
    for (bool moveAlways : {false, true}) {
        achost::MoveBlocksOnEveryReallocation(moveAlways);
        for (const auto& [name, size, flags, expected] : cases) {
            SCOPED_TRACE(std::string(name) + (moveAlways ? ", moving" : ""));
            GSHandle h = Filled("abcd");
            EXPECT_EQ(BMReallocHandle(h, size, flags, 0), h);
            EXPECT_EQ(BMError(), NoError);
            EXPECT_EQ(Bytes(h), expected);
            BMKillHandle(&h);
        }
    }
}

// State changes return the previous state, so that a nested lock can be undone by restoring it.
TEST_F(BMTest, UnlockedBlocksMoveAndLockedOnesStay) {
    achost::MoveBlocksOnEveryReallocation(true);
    GSHandle h = Filled("abcd");
    char* before = *h;
    ASSERT_EQ(BMReallocHandle(h, 8, 0, 0), h);
    EXPECT_NE(*h, before);

    EXPECT_EQ(BMModifyHandleState(h, HANDLE_STATE_LOCK, 0), 0u);
    const GSFlags old = BMModifyHandleState(h, HANDLE_STATE_LOCK, 0);
    EXPECT_EQ(old, GSFlags(HANDLE_STATE_LOCK)) << "nested lock sees the outer one";
    BMModifyHandleState(h, old, ~old);
    char* locked = *h;
    EXPECT_EQ(BMReallocHandle(h, 2, 0, 0), h);
    EXPECT_EQ(BMReallocHandle(h, 8, 0, 0), h) << "growing back within the block's room";
    EXPECT_EQ(*h, locked);
    EXPECT_EQ(BMReallocHandle(h, 9, 0, 0), nullptr) << "a locked block cannot grow out of its room";
    EXPECT_EQ(BMError(), ErrMemoryFull);
    EXPECT_EQ(BMGetHandleSize(h), 8);
    EXPECT_EQ(std::string(*h, 4), "abcd");
    EXPECT_EQ(BMModifyHandleState(h, 0, HANDLE_STATE_LOCK), GSFlags(HANDLE_STATE_LOCK)) << "still locked";
    EXPECT_EQ(BMModifyHandleState(h, 0, 0), 0u);
    BMKillHandle(&h);
}

TEST_F(BMTest, InjectedFailuresHitTheNthCallOnlyAndADoubleReleaseIsReported) {
    achost::FailAllocation(2);
    GSHandle first = BMAllocateHandle(1, 0, 0);
    EXPECT_EQ(BMAllocateHandle(1, 0, 0), nullptr);
    GSHandle third = BMAllocateHandle(1, 0, 0);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(third, nullptr);
    BMKillHandle(&first);
    BMKillHandle(&third);

    GSHandle kept = Filled("abc");
    achost::FailReallocation(1);
    EXPECT_EQ(BMReallocHandle(kept, 10, 0, 0), nullptr);
    EXPECT_EQ(BMError(), ErrMemoryFull);
    EXPECT_EQ(Bytes(kept), "abc");
    BMKillHandle(&kept);
    GSHandle disposed = Filled("abc");
    const long live = achost::LiveHandleCount();
    achost::FailReallocation(1);
    EXPECT_EQ(BMReallocHandle(disposed, 10, REALLOC_DISPOSE, 0), nullptr);
    EXPECT_EQ(achost::LiveHandleCount(), live - 1) << "REALLOC_DISPOSE releases the handle on failure";
    GSHandle h = Filled("abc");
    GSHandle copy = h;
    BMKillHandle(&h);
    const long misuses = achost::HandleMisuseCount();
    BMKillHandle(&copy);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(achost::HandleMisuseCount(), misuses + 1);
    EXPECT_EQ(BMGetHandleSize(copy), 0);
}

} // namespace
