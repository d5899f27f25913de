// XN_List: element order under insertion and deletion, resizing, search, element lifetimes (an
// instrumented element type), lock state, and the inert list left by a failed reallocation.
#include "XN_List.hpp"
#include "XN_String.hpp"
#include "achost/Faults.hpp"

#include <gtest/gtest.h>

#include <new>
#include <tuple>
#include <vector>

namespace {

using Longs = std::vector<long>;

template <typename T>
Longs Values(const XN_List<T>& list) {
    Longs values;
    for (long i = 0; i < list.count; ++i)
        values.push_back(static_cast<long>(list[i]));
    return values;
}

template <typename T>
void ExpectBlockMatchesCount(const XN_List<T>& list) {
    ASSERT_NE(list.data, nullptr);
    EXPECT_EQ(BMGetHandleSize(list.data), static_cast<GSSize>(list.count * sizeof(T)));
}

template <typename T>
XN_List<T> ListOf(const Longs& values) {
    XN_List<T> list;
    for (long v : values)
        list.AddData(static_cast<T>(v), -1);
    return list;
}

// An element that owns heap memory and counts its lives: a leak, a double destruction or a use of a
// stale copy shows in the counters or under the address sanitizer.
struct Counted {
    static inline long live = 0;
    static inline long badDestructions = 0;
    static inline long failCopyIn = 0; // the n-th copy from now throws bad_alloc
    static constexpr unsigned kAlive = 0xA11CEu;

    int* payload;
    unsigned alive = kAlive;

    explicit Counted(int v) : payload(new int(v)) { ++live; }
    Counted(const Counted& other) : payload(nullptr) {
        if (failCopyIn > 0 && --failCopyIn == 0)
            throw std::bad_alloc();
        payload = new int(*other.payload);
        ++live;
    }
    Counted& operator=(const Counted& other) {
        *payload = *other.payload;
        return *this;
    }
    ~Counted() {
        if (alive != kAlive) {
            ++badDestructions;
            return;
        }
        alive = 0;
        delete payload;
        --live;
    }
    explicit operator long() const { return *payload; }
};

class XN_ListTest : public ::testing::Test {
protected:
    achost::ScopedFaults faults;
    long handlesBefore = achost::LiveHandleCount();
    void SetUp() override {
        achost::MoveBlocksOnEveryReallocation(true);
        Counted::live = Counted::failCopyIn = Counted::badDestructions = 0;
    }
    void TearDown() override {
        EXPECT_EQ(Counted::live, 0) << "elements leaked";
        EXPECT_EQ(Counted::badDestructions, 0) << "an element was destroyed twice";
        EXPECT_EQ(achost::LiveHandleCount(), handlesBefore) << "a block leaked";
    }
};

template <typename T>
class XN_ListNumbersTest : public XN_ListTest {};
using NumberTypes = ::testing::Types<short, int, long>;
TYPED_TEST_SUITE(XN_ListNumbersTest, NumberTypes);

// Elements are moved by their size in bytes: each operation runs over elements of three sizes.
TYPED_TEST(XN_ListNumbersTest, InsertionDeletionAndResizingKeepTheOrder) {
    using List = XN_List<TypeParam>;
    const std::tuple<const char*, void (*)(List&), Longs> cases[] = {
        {"append", [](List& l) { l.AddData(9, -1); }, {1, 2, 3, 9}},
        {"insert first", [](List& l) { l.AddData(9, 0); }, {9, 1, 2, 3}},
        {"insert inside", [](List& l) { l.AddData(9, 1); }, {1, 9, 2, 3}},
        {"insert at the count", [](List& l) { l.AddData(9, 3); }, {1, 2, 3, 9}},
        {"delete -1 is ignored", [](List& l) { l.DeleteData(-1); }, {1, 2, 3}},
        {"delete at the count is ignored", [](List& l) { l.DeleteData(3); }, {1, 2, 3}},
        {"delete first", [](List& l) { l.DeleteData(0); }, {2, 3}},
        {"delete last", [](List& l) { l.DeleteData(2); }, {1, 2}},
        {"negative size empties", [](List& l) { l.SetSize(-5, true); }, {}},
        {"growing keeps and zeroes the new elements", [](List& l) { l.SetSize(5, true); }, {1, 2, 3, 0, 0}},
        {"growing without keeping zeroes all", [](List& l) { l.SetSize(4, false); }, {0, 0, 0, 0}},
        {"shrinking keeps the first", [](List& l) { l.SetSize(2, true); }, {1, 2}},
    };
    for (const auto& [name, operation, expected] : cases) {
        SCOPED_TRACE(name);
        List list = ListOf<TypeParam>({1, 2, 3});
        operation(list);
        EXPECT_EQ(Values(list), expected);
        ExpectBlockMatchesCount(list);
    }
}

bool EqualsTarget(char* element, void* target) {
    return *reinterpret_cast<int*>(element) == *static_cast<int*>(target);
}

TEST_F(XN_ListTest, SearchFindsTheLowestMatchingIndex) {
    const std::pair<Longs, long> cases[] = {{{5, 3, 5}, 0}, {{3, 5, 5}, 1}, {{3, 4}, -1}};
    for (const auto& [values, expected] : cases) {
        XN_List<int> list = ListOf<int>(values);
        long index = 77;
        int target = 5;
        EXPECT_EQ(list.Search(EqualsTarget, index, &target), expected >= 0);
        EXPECT_EQ(index, expected);
    }
}

TEST_F(XN_ListTest, ElementLivesAreBalancedAcrossEveryOperation) {
    XN_List<Counted> list = ListOf<Counted>({1, 2, 3, 4});
    list.AddData(Counted(0), 0);
    list.DeleteData(2);
    XN_List<Counted> copy(list);
    list.DeleteData(0);
    EXPECT_EQ(Values(copy), (Longs{0, 1, 3, 4}));
    EXPECT_EQ(Values(list), (Longs{1, 3, 4}));
    EXPECT_EQ(Counted::live, 7);
    copy = list;
    list.Reset();
    ExpectBlockMatchesCount(list);
    EXPECT_EQ(Values(copy), (Longs{1, 3, 4}));
    EXPECT_EQ(Counted::live, 3);
}

TEST_F(XN_ListTest, AppendMadeBuildsElementsInPlaceAndKeepsTheListOnFailure) {
    XN_List<Counted> list = ListOf<Counted>({1, 2});
    list.AppendMade(3, [](long i) { return Counted(static_cast<int>(10 + i)); });
    EXPECT_EQ(Values(list), (Longs{1, 2, 10, 11, 12}));
    ExpectBlockMatchesCount(list);
    list.AppendMade(
        1, [](long) { return Counted(7); }, true);
    EXPECT_EQ(Values(list), (Longs{7}));
    auto failAtThird = [](long i) -> Counted {
        if (i == 2)
            throw std::bad_alloc();
        return Counted(static_cast<int>(i));
    };
    EXPECT_THROW(list.AppendMade(3, failAtThird), std::bad_alloc);
    EXPECT_EQ(Values(list), (Longs{7}));
    ExpectBlockMatchesCount(list);
    achost::FailReallocation(1);
    list.AppendMade(2, [](long i) { return Counted(static_cast<int>(i)); });
    EXPECT_EQ(list.data, nullptr) << "a refused resize makes the list inert";
}

TEST_F(XN_ListTest, AFailedAllocationOrReallocationLeavesAnInertListWithoutLeaks) {
    const std::pair<const char*, void (*)(XN_List<Counted>&)> cases[] = {
        {"growing", [](XN_List<Counted>& list) { list.AddData(Counted(9), 1); }},
        {"shrinking", [](XN_List<Counted>& list) { list.DeleteData(1); }},
        {"resetting", [](XN_List<Counted>& list) { list.Reset(); }}};
    for (const auto& [name, operation] : cases) {
        SCOPED_TRACE(name);
        XN_List<Counted> list = ListOf<Counted>({1, 2, 3});
        achost::FailReallocation(1);
        operation(list);
        EXPECT_EQ(list.count, 0);
        EXPECT_EQ(list.data, nullptr);
        EXPECT_EQ(Counted::live, 0);
        list.AddData(Counted(4), -1);
        EXPECT_EQ(list.count, 0) << "an inert list stays empty";
        EXPECT_EQ(XN_List<Counted>(list).data, nullptr);
    }
    XN_List<Counted> source = ListOf<Counted>({1, 2});
    achost::FailAllocation(1);
    XN_List<Counted> copy(source);
    EXPECT_EQ(copy.data, nullptr);
    achost::FailAllocation(1);
    XN_List<long> fresh;
    fresh.AddData(1, -1);
    EXPECT_EQ(fresh.count, 0);
    fresh.SetSize(2, true);
    EXPECT_EQ(Values(fresh), (Longs{0, 0})) << "SetSize gives an inert list a new block";
}

TEST_F(XN_ListTest, AFailedElementCopyLeavesTheListAsItWas) {
    XN_List<Counted> list = ListOf<Counted>({1, 2, 3});
    Counted extra(9);
    Counted::failCopyIn = 2; // the by-value argument is copied, the copy into the block throws
    EXPECT_THROW(list.AddData(extra, 1), std::bad_alloc);
    EXPECT_EQ(Values(list), (Longs{1, 2, 3}));
    ExpectBlockMatchesCount(list);
    Counted::failCopyIn = 3;
    EXPECT_THROW(XN_List<Counted>{list}, std::bad_alloc);
    EXPECT_EQ(Counted::live, 4);
}

TEST_F(XN_ListTest, OperationsRestoreTheCallersLockState) {
    XN_List<int> list = ListOf<int>({1, 2, 3});
    list.AddData(0, 0);
    EXPECT_EQ(BMModifyHandleState(list.data, 0, 0), 0u) << "unlocked after shifting";
    BMModifyHandleState(list.data, HANDLE_STATE_LOCK, 0);
    long index = 0;
    int value = 3;
    list.Search(EqualsTarget, index, &value);
    list.DeleteData(0);
    EXPECT_TRUE(list.GetData(1, value));
    EXPECT_EQ(value, 2);
    EXPECT_EQ(BMModifyHandleState(list.data, 0, HANDLE_STATE_LOCK), GSFlags(HANDLE_STATE_LOCK));
    EXPECT_EQ(Values(list), (Longs{1, 2, 3}));
}

// Strings own memory: copies are deep and keep null apart from empty.
TEST_F(XN_ListTest, StringListsOwnTheirElements) {
    XN_List<XN_String> original;
    for (const char* text : {"alpha", "", "gamma"})
        original.AddData(XN_String(text), -1);
    original.AddData(XN_String(), 1);
    XN_List<XN_String> copy(original);
    original[0].SetCharAt(0, 'A');
    original.DeleteData(2);
    ASSERT_EQ(copy.count, 4);
    EXPECT_EQ(copy[0], XN_String("alpha"));
    EXPECT_TRUE(copy[1].IsNull());
    EXPECT_EQ(copy[2], XN_String(""));
}

} // namespace
