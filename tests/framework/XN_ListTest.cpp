// XN_List: element order under insertion and deletion, resizing, search, element lifetimes (an
// instrumented element type), lock state, and the inert list left by a failed reallocation.
#include "XN_List.hpp"
#include "XN_Location.hpp"
#include "XN_String.hpp"
#include "achost/Faults.hpp"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

namespace {

template <typename T>
std::vector<long> Values(const XN_List<T>& list) {
    std::vector<long> values;
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
XN_List<T> ListOf(std::initializer_list<long> values) {
    XN_List<T> list;
    for (long v : values)
        list.AddData(static_cast<T>(v), -1);
    return list;
}

// An element that owns heap memory and counts its lives: a leak, a double destruction or a use of a
// stale copy shows in the counters or under the address sanitizer.
struct Counted {
    static inline long live = 0;
    static inline long copies = 0;
    static inline long badDestructions = 0;
    static inline long failCopyIn = 0; // the n-th copy from now throws bad_alloc

    int* payload;
    unsigned alive = kAlive;
    static constexpr unsigned kAlive = 0xA11CEu;

    explicit Counted(int v) : payload(new int(v)) { ++live; }
    Counted(const Counted& other) : payload(nullptr) {
        if (failCopyIn > 0 && --failCopyIn == 0)
            throw std::bad_alloc();
        payload = new int(*other.payload);
        ++live;
        ++copies;
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
        Counted::live = 0;
        Counted::failCopyIn = 0;
        Counted::badDestructions = 0;
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

TYPED_TEST(XN_ListNumbersTest, InsertionPutsTheElementAtItsIndex) {
    struct Case {
        long index;
        std::vector<long> expected;
    };
    const Case cases[] = {{-1, {1, 2, 3, 9}}, {0, {9, 1, 2, 3}}, {1, {1, 9, 2, 3}}, {3, {1, 2, 3, 9}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.index);
        XN_List<TypeParam> list = ListOf<TypeParam>({1, 2, 3});
        list.AddData(9, c.index);
        EXPECT_EQ(Values(list), c.expected);
        ExpectBlockMatchesCount(list);
    }
}

TEST_F(XN_ListTest, DeletionIgnoresIndicesOutsideTheList) {
    struct Case {
        long index;
        std::vector<long> expected;
    };
    const Case cases[] = {{-1, {1, 2, 3}}, {3, {1, 2, 3}}, {0, {2, 3}}, {1, {1, 3}}, {2, {1, 2}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.index);
        XN_List<Counted> list = ListOf<Counted>({1, 2, 3});
        list.DeleteData(c.index);
        EXPECT_EQ(Values(list), c.expected);
        ExpectBlockMatchesCount(list);
    }
}

TEST_F(XN_ListTest, SetSizeZeroesWhatItDoesNotKeep) {
    struct Case {
        const char* name;
        std::initializer_list<long> start;
        long newCount;
        bool keep;
        std::vector<long> expected;
    };
    const Case cases[] = {{"negative", {7}, -5, true, {}},
                          {"grow keeping", {7}, 3, true, {7, 0, 0}},
                          {"grow clearing", {7}, 3, false, {0, 0, 0}},
                          {"shrink keeping", {7, 8, 9}, 2, true, {7, 8}},
                          {"shrink clearing", {7, 8, 9}, 2, false, {0, 0}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_List<long> list = ListOf<long>(c.start);
        list.SetSize(c.newCount, c.keep);
        EXPECT_EQ(Values(list), c.expected);
        ExpectBlockMatchesCount(list);
    }
}

bool EqualsTarget(char* element, void* target) {
    return *reinterpret_cast<int*>(element) == *static_cast<int*>(target);
}

TEST_F(XN_ListTest, SearchFindsTheLowestMatchingIndex) {
    struct Case {
        std::initializer_list<long> values;
        int target;
        bool found;
        long index;
    };
    const Case cases[] = {
        {{}, 5, false, -1}, {{5, 3, 5}, 5, true, 0}, {{3, 5, 5}, 5, true, 1}, {{3, 4}, 5, false, -1}};
    for (const Case& c : cases) {
        XN_List<int> list = ListOf<int>(c.values);
        long index = 77;
        int target = c.target;
        EXPECT_EQ(list.Search(EqualsTarget, index, &target), c.found);
        EXPECT_EQ(index, c.index);
    }
}

TEST_F(XN_ListTest, ElementLivesAreBalancedAcrossEveryOperation) {
    {
        XN_List<Counted> list = ListOf<Counted>({1, 2, 3, 4});
        list.AddData(Counted(0), 0);
        list.DeleteData(2);
        XN_List<Counted> copy(list);
        list.DeleteData(0);
        EXPECT_EQ(Values(copy), (std::vector<long>{0, 1, 3, 4}));
        EXPECT_EQ(Values(list), (std::vector<long>{1, 3, 4}));
        EXPECT_EQ(Counted::live, 7);
        copy = list;
        list.Reset();
        ExpectBlockMatchesCount(list);
        EXPECT_EQ(Values(copy), (std::vector<long>{1, 3, 4}));
        EXPECT_EQ(Counted::live, 3);
    }
    EXPECT_EQ(Counted::live, 0);
}

TEST_F(XN_ListTest, AFailedReallocationLeavesAnInertListWithoutLeaks) {
    struct Case {
        const char* name;
        void (*operation)(XN_List<Counted>&);
    };
    const Case cases[] = {{"growing", [](XN_List<Counted>& list) { list.AddData(Counted(9), 1); }},
                          {"shrinking", [](XN_List<Counted>& list) { list.DeleteData(1); }},
                          {"resetting", [](XN_List<Counted>& list) { list.Reset(); }}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_List<Counted> list = ListOf<Counted>({1, 2, 3});
        achost::FailReallocation(1);
        c.operation(list);
        EXPECT_EQ(list.count, 0);
        EXPECT_EQ(list.data, nullptr);
        EXPECT_EQ(Counted::live, 0);
        list.AddData(Counted(4), -1);
        EXPECT_EQ(list.count, 0) << "an inert list stays empty";
        XN_List<Counted> copy(list);
        EXPECT_EQ(copy.data, nullptr);
    }
}

TEST_F(XN_ListTest, AFailedAllocationMakesTheNewListInert) {
    XN_List<Counted> source = ListOf<Counted>({1, 2});
    achost::FailAllocation(1);
    XN_List<Counted> copy(source);
    EXPECT_EQ(copy.count, 0);
    EXPECT_EQ(copy.data, nullptr);
    achost::FailAllocation(1);
    XN_List<long> fresh;
    fresh.AddData(1, -1);
    EXPECT_EQ(fresh.count, 0);
    fresh.SetSize(2, true);
    EXPECT_EQ(Values(fresh), (std::vector<long>{0, 0})) << "SetSize gives an inert list a new block";
}

TEST_F(XN_ListTest, AFailedElementCopyLeavesTheListAsItWas) {
    XN_List<Counted> list = ListOf<Counted>({1, 2, 3});
    Counted extra(9);
    Counted::failCopyIn = 2; // the by-value argument is copied, the copy into the block throws
    EXPECT_THROW(list.AddData(extra, 1), std::bad_alloc);
    EXPECT_EQ(Values(list), (std::vector<long>{1, 2, 3}));
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
    int target = 3;
    list.Search(EqualsTarget, index, &target);
    list.DeleteData(0);
    int value = 0;
    EXPECT_TRUE(list.GetData(1, value));
    EXPECT_EQ(value, 2);
    EXPECT_EQ(BMModifyHandleState(list.data, 0, HANDLE_STATE_LOCK), GSFlags(HANDLE_STATE_LOCK));
    EXPECT_EQ(Values(list), (std::vector<long>{1, 2, 3}));
}

// Lists of strings and locations, the element types that own memory in the system.
TEST_F(XN_ListTest, CopiedStringListsAreIndependent) {
    XN_List<XN_String> original;
    for (const char* text : {"alpha", "", "gamma"})
        original.AddData(XN_String(text), -1);
    original.AddData(XN_String(), 1);
    XN_List<XN_String> copy(original);
    original[0].SetCharAt(0, 'A');
    original.DeleteData(2);
    original.AddData(XN_String("delta"), 0);

    const char* expected[] = {"alpha", nullptr, "", "gamma"};
    ASSERT_EQ(copy.count, 4);
    for (long i = 0; i < copy.count; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(copy[i].IsNull(), expected[i] == nullptr);
        EXPECT_STREQ(copy[i].IsNull() ? nullptr : copy[i].ToCStr().Get(), expected[i]);
    }
}

TEST_F(XN_ListTest, LocationListsSurviveMovesAndFailures) {
    XN_List<XN_Location> list;
    for (const char* path : {"/a/", "/b", "/c/d"})
        list.AddData(XN_Location(XN_String(path)), 0);
    EXPECT_STREQ(list[0].ToCStr().Get(), "/c/d");
    EXPECT_STREQ(list[2].ToCStr().Get(), "/a");
    achost::FailReallocation(1);
    list.AddData(XN_Location(XN_String("/e")), -1);
    EXPECT_EQ(list.count, 0) << "the strings of the lost block are released, not leaked";
}

} // namespace
