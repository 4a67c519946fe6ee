#include <foundation/Array.h>
#include <foundation/KS_String.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel::test
{

namespace
{

struct OtherTag
{
};

static_assert(std::is_same_v<Array<int>, Array<int, _Wa>>);
static_assert(!std::is_same_v<Array<int>, Array<int, OtherTag>>);
static_assert(Array<int>::npos == 0xFFFFFFFFu);
static_assert(std::is_same_v<decltype(std::declval<Array<int> const&>().size()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<Array<int> const&>().capacity()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<Array<int> const&>().find(1)), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<Array<int>&>()[0]), int&>);
static_assert(std::is_same_v<decltype(std::declval<Array<int> const&>()[0]), int const&>);
static_assert(std::is_nothrow_move_constructible_v<Array<int>>);
static_assert(!std::is_polymorphic_v<Array<int>>);

using Values = std::vector<int>;

template <class T = int>
Array<T> arrayOf(Values const& values)
{
    Array<T> list;
    list.reserve(static_cast<unsigned int>(values.size()), true);
    for (int value : values) list.append(T(value));
    return list;
}

template <class T = int>
Array<T> arrayOf(Values const& values, unsigned int capacity)
{
    Array<T> list = arrayOf<T>(values);
    if (list.capacity() != capacity) list.reserve(capacity, true);
    return list;
}

/// 0, 1, 2, ...
Array<int> counting(unsigned int count)
{
    Array<int> list;
    list.reserve(count, true);
    for (unsigned int i = 0; i < count; ++i) list.append(static_cast<int>(i));
    return list;
}

Values valuesOf(Array<int> const& list)
{
    return Values(list.begin(), list.end());
}

// ---- Layout and construction

TEST(ArrayLayout, HoldsBlockThenSizeThenCapacity)
{
    struct Fields
    {
        int const* data;
        unsigned int size;
        unsigned int capacity;
    };
    static_assert(sizeof(Array<int>) == sizeof(Fields));
    Array<int> const list = arrayOf({1, 2}, 7);
    Fields fields;
    std::memcpy(&fields, static_cast<void const*>(&list), sizeof fields);
    EXPECT_EQ(fields.data, list.data());
    EXPECT_EQ(fields.size, 2u);
    EXPECT_EQ(fields.capacity, 7u);
}

TEST(ArrayConstruction, DefaultHasNoBlock)
{
    Array<int> const list;
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(list.capacity(), 0u);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.begin(), list.end());
}

TEST(ArrayConstruction, CopyHasItsOwnExactBlock)
{
    Array<int> const source = arrayOf({1, 2, 3}, 10);
    Array<int> copy(source);
    EXPECT_EQ(valuesOf(copy), (Values{1, 2, 3}));
    EXPECT_EQ(copy.capacity(), 3u);
    EXPECT_NE(copy.data(), source.data());
    copy[0] = 9;
    EXPECT_EQ(source[0], 1);
}

TEST(ArrayConstruction, CopyOfAnEmptyListHasNoBlock)
{
    Array<int> source = arrayOf({1, 2, 3});
    source.setSize(0);
    Array<int> const copy(source);
    EXPECT_EQ(copy.data(), nullptr);
    EXPECT_EQ(copy.size(), 0u);
    EXPECT_EQ(copy.capacity(), 0u);
}

TEST(ArrayConstruction, MoveTakesTheBlockAndLeavesAnEmptyList)
{
    Array<int> source = arrayOf({1, 2, 3}, 10);
    int const* const block = source.data();
    Array<int> taker(std::move(source));
    EXPECT_EQ(taker.data(), block);
    EXPECT_EQ(taker.capacity(), 10u);
    EXPECT_EQ(valuesOf(taker), (Values{1, 2, 3}));
    EXPECT_EQ(source.data(), nullptr);
    EXPECT_EQ(source.size(), 0u);
    EXPECT_EQ(source.capacity(), 0u);
    source.append(7);
    EXPECT_EQ(valuesOf(source), (Values{7}));
    EXPECT_EQ(source.capacity(), 4u);
}

// ---- Assignment

TEST(ArrayAssignment, ReplacesALargerBlockByAnExactOne)
{
    Array<int> const source = arrayOf({1, 2});
    Array<int> list = arrayOf({7, 8, 9}, 8);
    list = source;
    EXPECT_EQ(valuesOf(list), (Values{1, 2}));
    EXPECT_EQ(list.capacity(), 2u);
}

TEST(ArrayAssignment, ReplacesASmallerBlockByAnExactOne)
{
    Array<int> const source = arrayOf({1, 2, 3, 4, 5}, 20);
    Array<int> list = arrayOf({7});
    list = source;
    EXPECT_EQ(valuesOf(list), (Values{1, 2, 3, 4, 5}));
    EXPECT_EQ(list.capacity(), 5u);
}

TEST(ArrayAssignment, ReplacesABlockThatDiffersByOneSlot)
{
    Array<int> const source = arrayOf({1, 2, 3});
    for (unsigned int capacity : {2u, 4u})
    {
        SCOPED_TRACE(capacity);
        Array<int> list = arrayOf({7, 8}, capacity);
        list = source;
        EXPECT_EQ(valuesOf(list), (Values{1, 2, 3}));
        EXPECT_EQ(list.capacity(), 3u);
    }
}

TEST(ArrayAssignment, KeepsABlockOfExactlyTheSourcesSize)
{
    Array<int> const source = arrayOf({1, 2, 3, 4}, 9);
    for (Values const& old : {Values{7}, Values{}, Values{6, 7, 8, 9}})
    {
        SCOPED_TRACE(old.size());
        Array<int> list = arrayOf(old, 4);
        int const* const block = list.data();
        list = source;
        EXPECT_EQ(list.data(), block);
        EXPECT_EQ(valuesOf(list), (Values{1, 2, 3, 4}));
        EXPECT_EQ(list.capacity(), 4u);
    }
}

TEST(ArrayAssignment, OfAnEmptyListReleasesTheBlock)
{
    Array<int> empty = arrayOf({1, 2});
    empty.setSize(0);
    Array<int> list = arrayOf({7, 8});
    list = empty;
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(list.capacity(), 0u);
}

TEST(ArrayAssignment, OfItselfChangesNothing)
{
    for (unsigned int capacity : {2u, 6u})
    {
        SCOPED_TRACE(capacity);
        Array<int> list = arrayOf({1, 2}, capacity);
        Array<int> const& same = list;
        list = same;
        EXPECT_EQ(valuesOf(list), (Values{1, 2}));
    }
}

TEST(ArrayAssignment, ByMoveTakesTheBlock)
{
    Array<int> source = arrayOf({1, 2}, 5);
    int const* const block = source.data();
    Array<int> list = arrayOf({7, 8, 9});
    list = std::move(source);
    EXPECT_EQ(list.data(), block);
    EXPECT_EQ(list.capacity(), 5u);
    EXPECT_EQ(valuesOf(list), (Values{1, 2}));
    EXPECT_EQ(source.data(), nullptr);
    EXPECT_EQ(source.size(), 0u);
    EXPECT_EQ(source.capacity(), 0u);
}

/// Notes the values that were assigned to it or to its like.
struct Noted
{
    Noted() = default;
    explicit Noted(int number) : value(number) {}
    Noted(Noted const&) = default;
    Noted& operator=(Noted const& other)
    {
        value = other.value;
        assigned.push_back(value);
        return *this;
    }

    int value = 0;
    static inline Values assigned;
};

TEST(ArrayAssignment, CopiesTheElementsByAssignmentInIndexOrder)
{
    Array<Noted> const source = arrayOf<Noted>({5, 3, 9, 1});
    Noted::assigned.clear();
    Array<Noted> const copy(source);
    EXPECT_EQ(Noted::assigned, (Values{5, 3, 9, 1}));
    Array<Noted> list = arrayOf<Noted>({1}, 12);
    Noted::assigned.clear();
    list = source;
    EXPECT_EQ(Noted::assigned, (Values{5, 3, 9, 1}));
}

// ---- Appending

TEST(ArrayAppend, GrowsByAnEighthAndFour)
{
    Array<int> list;
    Values capacities{0};
    for (int i = 0; i < 90; ++i)
    {
        list.append(i);
        ASSERT_EQ(list.size(), static_cast<unsigned int>(i) + 1);
        int const capacity = static_cast<int>(list.capacity());
        if (capacity != capacities.back()) capacities.push_back(capacity);
    }
    EXPECT_EQ(capacities, (Values{0, 4, 8, 13, 18, 24, 31, 38, 46, 55, 65, 77, 90}));
    for (int i = 0; i < 90; ++i) EXPECT_EQ(list[static_cast<unsigned int>(i)], i);
}

TEST(ArrayAppend, GrowsOnlyAFullBlock)
{
    Array<int> list = arrayOf({1, 2, 3}, 4);
    int const* const block = list.data();
    list.append(4);
    EXPECT_EQ(list.data(), block);
    EXPECT_EQ(list.capacity(), 4u);
    list.append(5);
    EXPECT_EQ(list.capacity(), 8u);
    EXPECT_EQ(valuesOf(list), (Values{1, 2, 3, 4, 5}));
}

TEST(ArrayAppend, GrowsFromAnyCapacity)
{
    struct Row
    {
        unsigned int capacity;
        unsigned int expected;
    };
    Row const rows[] = {{1, 5}, {3, 7}, {7, 11}, {8, 13}, {15, 20}, {16, 22}, {100, 116}};
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.capacity);
        Array<int> list = counting(row.capacity);
        ASSERT_EQ(list.capacity(), row.capacity);
        list.append(-1);
        EXPECT_EQ(list.capacity(), row.expected);
        EXPECT_EQ(list[row.capacity], -1);
    }
}

TEST(ArrayAppend, TakesAnElementOfTheListItself)
{
    for (unsigned int capacity : {2u, 3u})
    {
        SCOPED_TRACE(capacity);
        Array<KS_String> list;
        list.reserve(capacity, true);
        list.append("a long enough text");
        list.append("b");
        list.append(list[0]);
        ASSERT_EQ(list.size(), 3u);
        EXPECT_EQ(list[0], KS_String("a long enough text"));
        EXPECT_EQ(list[1], KS_String("b"));
        EXPECT_EQ(list[2], KS_String("a long enough text"));
    }
}

TEST(ArrayAppendRange, GrowsByTheShortfallOrByAnEighthAndFour)
{
    struct Row
    {
        unsigned int capacity;
        unsigned int size;
        unsigned int count;
        unsigned int expected;
    };
    Row const rows[] = {
        {0, 0, 0, 0},     {0, 0, 1, 4},     {0, 0, 4, 4},    {0, 0, 5, 5},    {0, 0, 100, 100},
        {4, 4, 0, 4},     {4, 4, 1, 8},     {4, 4, 4, 8},    {4, 4, 5, 9},    {4, 2, 2, 4},
        {4, 2, 1, 4},     {4, 2, 3, 8},     {4, 2, 6, 8},    {4, 2, 7, 9},    {40, 40, 1, 49},
        {40, 40, 9, 49},  {40, 40, 10, 50}, {40, 35, 5, 40}, {40, 35, 6, 49}, {40, 35, 14, 49},
        {40, 35, 15, 50},
    };
    Array<int> const source = counting(100);
    for (Row const& row : rows)
    {
        SCOPED_TRACE(std::to_string(row.capacity) + "/" + std::to_string(row.size) + "+" +
                     std::to_string(row.count));
        Array<int> list = counting(row.size);
        if (list.capacity() != row.capacity) list.reserve(row.capacity, true);
        int const* const block = list.data();
        Values expected = valuesOf(list);
        expected.insert(expected.end(), source.begin(), source.begin() + row.count);

        list.appendRange(source.data(), row.count);
        EXPECT_EQ(valuesOf(list), expected);
        EXPECT_EQ(list.capacity(), row.expected);
        EXPECT_EQ(list.data() == block, row.capacity == row.expected);
    }
}

TEST(ArrayAppendRange, OfNothingTakesANullPointer)
{
    Array<int> list = arrayOf({1});
    list.appendRange(nullptr, 0);
    EXPECT_EQ(valuesOf(list), (Values{1}));
    EXPECT_EQ(list.capacity(), 1u);
}

TEST(ArrayAppendRange, TakesElementsOfTheListItself)
{
    for (unsigned int capacity : {3u, 5u, 6u, 20u})
    {
        SCOPED_TRACE(capacity);
        Array<KS_String> list;
        list.reserve(capacity, true);
        for (char const* text : {"first", "second", "third"}) list.append(text);
        list.appendRange(list.data(), list.size());
        std::string joined;
        for (KS_String const& text : list) joined += std::string(text) + " ";
        EXPECT_EQ(joined, "first second third first second third ");
    }
}

TEST(ArrayAppendRange, OfMoreThanAListCanHoldIsRefused)
{
    Array<int> list = arrayOf({1, 2});
    int const value = 3;
    unsigned int volatile const count = 0xFFFFFFFFu;
    EXPECT_THROW(list.appendRange(&value, count), std::bad_alloc);
    EXPECT_EQ(valuesOf(list), (Values{1, 2}));
    EXPECT_EQ(list.capacity(), 2u);
}

// ---- Access

TEST(ArrayAccess, IndexDataAndIterationSeeTheSameElements)
{
    Array<int> list = arrayOf({1, 2, 3}, 5);
    Array<int> const& constant = list;
    EXPECT_EQ(&list[0], list.data());
    EXPECT_EQ(&constant[2], constant.data() + 2);
    EXPECT_EQ(list.end() - list.begin(), 3);
    EXPECT_EQ(constant.end() - constant.begin(), 3);
    for (int& value : list) value *= 2;
    list[1] = 9;
    EXPECT_EQ(valuesOf(list), (Values{2, 9, 6}));
    EXPECT_FALSE(list.isEmpty());
}

#if GTEST_HAS_DEATH_TEST && !defined(NDEBUG) && !defined(_WIN32)
TEST(ArrayAccessDeathTest, IndexAssertsItsBound)
{
    Array<int> list = arrayOf({1, 2}, 5);
    Array<int> const& constant = list;
    EXPECT_DEATH(list[2] = 1, "");
    EXPECT_DEATH((void)constant[2], "");
    EXPECT_DEATH((void)Array<int>()[0], "");
}
#endif

// ---- Searching

TEST(ArrayFind, GivesTheFirstEqualElement)
{
    Array<int> const list = arrayOf({3, 1, 4, 1, 5});
    EXPECT_EQ(list.find(3), 0u);
    EXPECT_EQ(list.find(1), 1u);
    EXPECT_EQ(list.find(5), 4u);
    EXPECT_EQ(list.find(2), Array<int>::npos);
    EXPECT_TRUE(list.contains(5));
    EXPECT_FALSE(list.contains(2));
    EXPECT_EQ(Array<int>().find(0), 0xFFFFFFFFu);
    EXPECT_FALSE(Array<int>().contains(0));
}

TEST(ArrayFind, DoesNotSeeTheSlotsBehindTheSize)
{
    Array<int> list = arrayOf({1, 2, 3}, 8);
    EXPECT_FALSE(list.contains(0));
    list.removeFast(3);
    EXPECT_FALSE(list.contains(3));
    list.setSize(0);
    EXPECT_FALSE(list.contains(1));
}

TEST(ArrayFind, ComparesTextsByTheirBytes)
{
    Array<KS_String> list;
    list.append("Node");
    list.append("node");
    EXPECT_EQ(list.find("node"), 1u);
    EXPECT_EQ(list.find("nod"), Array<KS_String>::npos);
}

// ---- Removing

TEST(ArrayRemoveFast, MovesTheLastElementIntoTheGap)
{
    struct Row
    {
        Values before;
        int value;
        Values after;
    };
    Row const rows[] = {
        {{1, 2, 3}, 1, {3, 2}},
        {{1, 2, 3}, 2, {1, 3}},
        {{1, 2, 3}, 3, {1, 2}},
        {{1, 2, 3}, 4, {1, 2, 3}},
        {{1}, 1, {}},
        {{}, 1, {}},
        {{1, 2, 1, 3}, 1, {3, 2, 1}},
        {{1, 2, 3, 2}, 2, {1, 2, 3}},
        {{1, 1}, 1, {1}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.value);
        Array<int> list = arrayOf(row.before, 6);
        int const* const block = list.data();
        list.removeFast(row.value);
        EXPECT_EQ(valuesOf(list), row.after);
        EXPECT_EQ(list.capacity(), 6u);
        EXPECT_EQ(list.data(), block);
    }
}

TEST(ArrayRemoveFast, TakesAnElementOfTheListItself)
{
    Array<KS_String> list;
    for (char const* text : {"a", "b", "a"}) list.append(text);
    list.removeFast(list[2]);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0], KS_String("a"));
    EXPECT_EQ(list[1], KS_String("b"));
    list.removeFast(list[0]);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0], KS_String("b"));
}

TEST(ArrayRemoveAll, KeepsTheOrderOfTheOthersAndTellsHowManyWent)
{
    struct Row
    {
        Values before;
        int value;
        Values after;
        unsigned int removed;
    };
    Row const rows[] = {
        {{1, 2, 3, 2}, 2, {1, 3}, 2},
        {{1, 2, 3}, 1, {2, 3}, 1},
        {{1, 2, 3}, 3, {1, 2}, 1},
        {{1, 2, 3}, 4, {1, 2, 3}, 0},
        {{2, 2, 2}, 2, {}, 3},
        {{}, 2, {}, 0},
        {{2}, 2, {}, 1},
        {{2, 2, 1, 2, 2, 3}, 2, {1, 3}, 4},
        {{4, 1, 3, 1, 2}, 1, {4, 3, 2}, 2},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(::testing::PrintToString(row.after));
        Array<int> list = arrayOf(row.before, 8);
        int const* const block = list.data();
        EXPECT_EQ(list.removeAll(row.value), row.removed);
        EXPECT_EQ(valuesOf(list), row.after);
        EXPECT_EQ(list.capacity(), 8u);
        EXPECT_EQ(list.data(), block);
    }
}

TEST(ArrayRemoveAll, TakesAnElementOfTheListItself)
{
    for (unsigned int index : {0u, 2u, 4u})
    {
        SCOPED_TRACE(index);
        Array<KS_String> list;
        for (char const* text : {"a", "b", "a", "c", "a", "d"}) list.append(text);
        EXPECT_EQ(list.removeAll(list[index]), 3u);
        ASSERT_EQ(list.size(), 3u);
        EXPECT_EQ(list[0], KS_String("b"));
        EXPECT_EQ(list[1], KS_String("c"));
        EXPECT_EQ(list[2], KS_String("d"));
    }
}

TEST(ArrayRemoveIf, KeepsTheOrderOfTheOthersAcrossTheWordsOfItsMarks)
{
    for (unsigned int count : {0u, 1u, 2u, 31u, 32u, 33u, 63u, 64u, 65u, 200u})
    {
        struct Row
        {
            char const* name;
            std::function<bool(int)> gone;
        };
        int const last = static_cast<int>(count) - 1;
        Row const rows[] = {
            {"odd", [](int value) { return value % 2 != 0; }},
            {"even", [](int value) { return value % 2 == 0; }},
            {"all", [](int) { return true; }},
            {"none", [](int) { return false; }},
            {"first", [](int value) { return value == 0; }},
            {"last", [last](int value) { return value == last; }},
            {"31", [](int value) { return value == 31; }},
            {"32", [](int value) { return value == 32; }},
        };
        for (Row const& row : rows)
        {
            SCOPED_TRACE(std::to_string(count) + " " + row.name);
            Array<int> list = counting(count);
            int const* const block = list.data();
            Values expected;
            for (int value : list)
                if (!row.gone(value)) expected.push_back(value);
            list.removeIf(row.gone);
            EXPECT_EQ(valuesOf(list), expected);
            EXPECT_EQ(list.capacity(), count);
            EXPECT_EQ(list.data(), block);
        }
    }
}

TEST(ArrayRemoveIf, AsksOnceForEachElementInOrderBeforeAnythingMoves)
{
    Array<int> list = arrayOf({5, 1, 4, 2});
    Values asked;
    list.removeIf(
        [&](int const& value)
        {
            EXPECT_EQ(valuesOf(list), (Values{5, 1, 4, 2}));
            asked.push_back(value);
            return value < 3;
        });
    EXPECT_EQ(asked, (Values{5, 1, 4, 2}));
    EXPECT_EQ(valuesOf(list), (Values{5, 4}));
}

TEST(ArrayRemoveIf, WithAPredicateThatThrowsLeavesTheListAsItWas)
{
    Array<int> list = arrayOf({1, 2, 3, 4});
    auto const failing = [](int value) -> bool
    {
        if (value == 3) throw std::runtime_error("predicate");
        return true;
    };
    EXPECT_THROW(list.removeIf(failing), std::runtime_error);
    EXPECT_EQ(valuesOf(list), (Values{1, 2, 3, 4}));
}

TEST(ArrayClear, ReleasesTheBlock)
{
    Array<int> list = arrayOf({1, 2, 3});
    list.clear();
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(list.capacity(), 0u);
    list.clear();
    list.append(1);
    EXPECT_EQ(list.capacity(), 4u);
}

// ---- Capacity and size

TEST(ArrayReserve, MakesABlockOfExactlyThatCapacityAndKeepsTheElements)
{
    for (unsigned int capacity : {3u, 4u, 50u})
    {
        SCOPED_TRACE(capacity);
        Array<int> list = arrayOf({1, 2, 3}, 6);
        list.reserve(capacity, true);
        EXPECT_EQ(valuesOf(list), (Values{1, 2, 3}));
        EXPECT_EQ(list.capacity(), capacity);
    }
}

TEST(ArrayReserve, CutsTheListToASmallerCapacity)
{
    Array<int> list = arrayOf({1, 2, 3});
    list.reserve(2, true);
    EXPECT_EQ(valuesOf(list), (Values{1, 2}));
    EXPECT_EQ(list.capacity(), 2u);
}

TEST(ArrayReserve, WithoutKeepLeavesTheCountAndDefaultValues)
{
    Array<int> larger = arrayOf({1, 2, 3});
    larger.reserve(5, false);
    EXPECT_EQ(valuesOf(larger), (Values{0, 0, 0}));
    EXPECT_EQ(larger.capacity(), 5u);

    Array<int> smaller = arrayOf({1, 2, 3});
    smaller.reserve(2, false);
    EXPECT_EQ(valuesOf(smaller), (Values{0, 0}));
    EXPECT_EQ(smaller.capacity(), 2u);

    Array<KS_String> texts;
    texts.append("a");
    texts.reserve(3, false);
    ASSERT_EQ(texts.size(), 1u);
    EXPECT_EQ(texts[0], KS_String());
}

TEST(ArrayReserve, OfNothingReleasesTheBlock)
{
    for (bool keep : {true, false})
    {
        SCOPED_TRACE(keep);
        Array<int> list = arrayOf({1, 2, 3});
        list.reserve(0, keep);
        EXPECT_EQ(list.data(), nullptr);
        EXPECT_EQ(list.size(), 0u);
        EXPECT_EQ(list.capacity(), 0u);
    }
}

TEST(ArraySetSize, OfZeroKeepsTheBlock)
{
    Array<int> list = arrayOf({1, 2, 3});
    int const* const block = list.data();
    list.setSize(0);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.data(), block);
    EXPECT_EQ(list.capacity(), 3u);
}

TEST(ArraySetSize, GivesNewElementsTheirDefaultValue)
{
    Array<KS_String> list;
    for (char const* text : {"a", "b", "c"}) list.append(text);
    list.setSize(1);
    list.setSize(4);
    EXPECT_EQ(list.capacity(), 4u);
    list.setSize(5);
    ASSERT_EQ(list.size(), 5u);
    EXPECT_EQ(list[0], KS_String("a"));
    for (unsigned int i = 1; i < 5; ++i) EXPECT_EQ(list[i], KS_String());
}

TEST(ArraySwap, ExchangesBlocks)
{
    Array<int> a = arrayOf({1, 2});
    Array<int> b = arrayOf({3}, 4);
    int const* const blockOfA = a.data();
    a.swap(b);
    EXPECT_EQ(valuesOf(a), (Values{3}));
    EXPECT_EQ(a.capacity(), 4u);
    EXPECT_EQ(valuesOf(b), (Values{1, 2}));
    EXPECT_EQ(b.data(), blockOfA);
}

// ---- The block: live objects up to the capacity, made with array new

/// Counts its living objects and its blocks, and refuses blocks when told to.
struct Scarce
{
    Scarce() { ++living; }
    explicit Scarce(int number) : value(number) { ++living; }
    Scarce(Scarce const& other) : value(other.value) { ++living; }
    Scarce& operator=(Scarce const& other) = default;
    ~Scarce() { --living; }

    bool operator==(Scarce const& other) const { return value == other.value; }

    static void* operator new[](std::size_t size)
    {
        if (refused) throw std::bad_alloc();
        ++blocks;
        return ::operator new[](size);
    }
    static void operator delete[](void* block)
    {
        --blocks;
        ::operator delete[](block);
    }

    int value = 0;
    static inline int living = 0;
    static inline int blocks = 0;
    static inline bool refused = false;
};

TEST(ArrayBlock, HoldsALiveObjectInEverySlot)
{
    int const before = Scarce::living;
    {
        Array<Scarce> list;
        list.append(Scarce(1));
        EXPECT_EQ(Scarce::living - before, 4);
        EXPECT_EQ(list.data()[3].value, 0);
        for (int i = 0; i < 4; ++i) list.append(Scarce(i));
        EXPECT_EQ(Scarce::living - before, 8);
        list.removeAll(Scarce(1));
        list.removeFast(Scarce(2));
        EXPECT_EQ(Scarce::living - before, 8);
        list.setSize(0);
        EXPECT_EQ(Scarce::living - before, 8);
        list.reserve(3, true);
        EXPECT_EQ(Scarce::living - before, 3);
        list.clear();
        EXPECT_EQ(Scarce::living - before, 0);
        list.append(Scarce(1));
    }
    EXPECT_EQ(Scarce::living, before);
}

TEST(ArrayBlock, IsTheOnlyOneAndMadeWithArrayNew)
{
    int const before = Scarce::blocks;
    {
        Array<Scarce> list;
        EXPECT_EQ(Scarce::blocks - before, 0);
        for (int i = 0; i < 40; ++i)
        {
            list.append(Scarce(i));
            ASSERT_EQ(Scarce::blocks - before, 1);
        }
        Array<Scarce> const copy(list);
        EXPECT_EQ(Scarce::blocks - before, 2);
        list = copy;
        EXPECT_EQ(Scarce::blocks - before, 2);
        list.clear();
        EXPECT_EQ(Scarce::blocks - before, 1);
    }
    EXPECT_EQ(Scarce::blocks, before);
}

TEST(ArrayBlock, ThatIsRefusedLeavesTheListAsItWas)
{
    struct Row
    {
        char const* name;
        std::function<void(Array<Scarce>&)> change;
    };
    Array<Scarce> const other = arrayOf<Scarce>({4, 5, 6});
    Scarce const value(9);
    Row const rows[] = {
        {"append", [&](Array<Scarce>& list) { list.append(value); }},
        {"appendRange", [&](Array<Scarce>& list) { list.appendRange(other.data(), 3); }},
        {"reserve more", [](Array<Scarce>& list) { list.reserve(10, true); }},
        {"reserve less", [](Array<Scarce>& list) { list.reserve(1, true); }},
        {"reserve without keep", [](Array<Scarce>& list) { list.reserve(10, false); }},
        {"setSize", [](Array<Scarce>& list) { list.setSize(5); }},
        {"assign", [&](Array<Scarce>& list) { list = other; }},
        {"copy", [](Array<Scarce>& list) { Array<Scarce> const copy(list); }},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(row.name);
        Array<Scarce> list = arrayOf<Scarce>({1, 2});
        Scarce const* const block = list.data();
        int const living = Scarce::living;
        Scarce::refused = true;
        EXPECT_THROW(row.change(list), std::bad_alloc);
        Scarce::refused = false;
        EXPECT_EQ(list.data(), block);
        EXPECT_EQ(list.capacity(), 2u);
        ASSERT_EQ(list.size(), 2u);
        EXPECT_EQ(list[0].value, 1);
        EXPECT_EQ(list[1].value, 2);
        EXPECT_EQ(Scarce::living, living);
    }
}

TEST(ArrayBlock, IsNotNeededToRemoveOrToFillFreeSlots)
{
    Array<Scarce> const other = arrayOf<Scarce>({4, 5, 6, 7});
    Array<Scarce> list = arrayOf<Scarce>({1, 2, 2}, 4);
    Scarce const one(1);
    Scarce const two(2);
    Scarce::refused = true;
    EXPECT_NO_THROW(list.append(one));
    EXPECT_NO_THROW(list.removeFast(one));
    EXPECT_NO_THROW(list.removeAll(two));
    EXPECT_NO_THROW(list.appendRange(other.data(), 3));
    EXPECT_NO_THROW(list.removeIf([](Scarce const& element) { return element.value == 4; }));
    EXPECT_NO_THROW(list.setSize(4));
    EXPECT_NO_THROW(list = other);
    EXPECT_NO_THROW(list.reserve(0, true));
    EXPECT_NO_THROW(list.clear());
    Scarce::refused = false;
    EXPECT_EQ(list.capacity(), 0u);
}

// ---- Elements whose assignment throws

/// Throws from its copy assignment once its fuse has burnt down; from its move assignment too, unless that is
/// declared not to throw. A failed assignment changes nothing.
template <bool nothrowMove>
struct Fragile
{
    Fragile() { ++living; }
    explicit Fragile(int number) : value(number) { ++living; }
    Fragile(Fragile const& other) : value(other.value) { ++living; }
    ~Fragile() { --living; }

    Fragile& operator=(Fragile const& other)
    {
        burn();
        value = other.value;
        return *this;
    }
    Fragile& operator=(Fragile&& other) noexcept(nothrowMove)
    {
        if constexpr (!nothrowMove) burn();
        if (this != &other) value = std::exchange(other.value, -1);
        return *this;
    }

    bool operator==(Fragile const& other) const { return value == other.value; }

    int value = 0;
    static inline int living = 0;
    static constexpr int never = -1;
    static inline int fuse = never;

private:
    static void burn()
    {
        if (fuse == 0) throw std::runtime_error("assignment");
        if (fuse > 0) --fuse;
    }
};

template <class Element>
Values valuesOf(Array<Element> const& list)
{
    Values values;
    for (Element const& element : list) values.push_back(element.value);
    return values;
}

/// Lets the 1st, 2nd, 3rd, ... assignment of the operation fail until it succeeds, each time on a new list
/// of 1, 2, 3 in a block of the given capacity, and gives the list to `check` after each failure. Returns how
/// many there were.
template <class Element, class Operation, class Check>
int failEachAssignment(unsigned int capacity, Operation operation, Check check)
{
    int const living = Element::living;
    for (int failures = 0; failures < 100; ++failures)
    {
        bool failed = false;
        {
            Array<Element> list = arrayOf<Element>({1, 2, 3}, capacity);
            Element const* const block = list.data();
            Element::fuse = failures;
            try
            {
                operation(list);
            }
            catch (std::runtime_error const&)
            {
                failed = true;
            }
            Element::fuse = Element::never;
            SCOPED_TRACE("assignment " + std::to_string(failures));
            if (failed) check(list, block);
        }
        EXPECT_EQ(Element::living, living);
        if (!failed) return failures;
    }
    ADD_FAILURE() << "the operation never succeeded";
    return 0;
}

template <class Element, class Operation>
void expectAsItWasAfterEachFailure(unsigned int capacity, Operation operation)
{
    int const failures =
        failEachAssignment<Element>(capacity, operation,
                                    [capacity](Array<Element> const& list, Element const* block)
                                    {
                                        EXPECT_EQ(valuesOf(list), (Values{1, 2, 3}));
                                        EXPECT_EQ(list.capacity(), capacity);
                                        EXPECT_EQ(list.data(), block);
                                    });
    EXPECT_GT(failures, 0);
}

template <class Element>
class FragileElements : public ::testing::Test
{
};

using FragileTypes = ::testing::Types<Fragile<true>, Fragile<false>>;
TYPED_TEST_SUITE(FragileElements, FragileTypes, );

TYPED_TEST(FragileElements, AFailedAppendLeavesTheListAsItWas)
{
    TypeParam const value(9);
    for (unsigned int capacity : {3u, 4u})
    {
        SCOPED_TRACE(capacity);
        expectAsItWasAfterEachFailure<TypeParam>(capacity,
                                                 [&](Array<TypeParam>& list) { list.append(value); });
        expectAsItWasAfterEachFailure<TypeParam>(capacity,
                                                 [&](Array<TypeParam>& list) { list.append(list[1]); });
    }
}

TYPED_TEST(FragileElements, AFailedAppendRangeLeavesTheListAsItWas)
{
    Array<TypeParam> const source = arrayOf<TypeParam>({7, 8, 9});
    for (unsigned int capacity : {3u, 5u, 6u, 10u})
    {
        SCOPED_TRACE(capacity);
        expectAsItWasAfterEachFailure<TypeParam>(capacity, [&](Array<TypeParam>& list)
                                                 { list.appendRange(source.data(), source.size()); });
        expectAsItWasAfterEachFailure<TypeParam>(capacity, [&](Array<TypeParam>& list)
                                                 { list.appendRange(list.data(), list.size()); });
    }
}

TYPED_TEST(FragileElements, AFailedCopyLeavesNothingBehind)
{
    auto const copy = [](Array<TypeParam>& list) { Array<TypeParam> const copied(list); };
    expectAsItWasAfterEachFailure<TypeParam>(3, copy);
}

TYPED_TEST(FragileElements, AFailedAssignmentToABlockOfAnotherSizeLeavesTheListAsItWas)
{
    Array<TypeParam> const source = arrayOf<TypeParam>({7, 8, 9, 10});
    for (unsigned int capacity : {3u, 5u})
    {
        SCOPED_TRACE(capacity);
        expectAsItWasAfterEachFailure<TypeParam>(capacity, [&](Array<TypeParam>& list) { list = source; });
    }
}

TEST(FragileElement, AFailedAssignmentToABlockThatIsKeptLeavesTheListAsItWas)
{
    Array<Fragile<true>> const source = arrayOf<Fragile<true>>({7, 8, 9, 10});
    expectAsItWasAfterEachFailure<Fragile<true>>(4, [&](Array<Fragile<true>>& list) { list = source; });
}

TEST(FragileElement, ThatCannotMoveSafelyMakesAFailedAssignmentLeaveTheCountAndTheBlock)
{
    Array<Fragile<false>> const source = arrayOf<Fragile<false>>({7, 8, 9, 10});
    int const failures = failEachAssignment<Fragile<false>>(
        4, [&](Array<Fragile<false>>& list) { list = source; },
        [](Array<Fragile<false>> const& list, Fragile<false> const*)
        {
            EXPECT_EQ(list.size(), 3u);
            EXPECT_EQ(list.capacity(), 4u);
        });
    EXPECT_GE(failures, 4);
}

TEST(FragileElement, ThatCannotMoveSafelyMakesAFailedReserveLeaveTheListAsItWas)
{
    for (unsigned int capacity : {2u, 3u, 10u})
    {
        SCOPED_TRACE(capacity);
        expectAsItWasAfterEachFailure<Fragile<false>>(3, [capacity](Array<Fragile<false>>& list)
                                                      { list.reserve(capacity, true); });
    }
}

TEST(FragileElement, ThatCannotMoveSafelyMakesAFailedSetSizeLeaveTheListAsItWas)
{
    for (unsigned int capacity : {3u, 5u})
    {
        SCOPED_TRACE(capacity);
        expectAsItWasAfterEachFailure<Fragile<false>>(capacity,
                                                      [](Array<Fragile<false>>& list) { list.setSize(5); });
    }
}

TEST(FragileElement, ThatCannotMoveSafelyMakesAFailedFastRemovalLeaveTheListAsItWas)
{
    Fragile<false> const first(1);
    expectAsItWasAfterEachFailure<Fragile<false>>(3, [&](Array<Fragile<false>>& list)
                                                  { list.removeFast(first); });
}

TEST(FragileElement, ThatCannotMoveSafelyLosesNoOtherElementInAFailedRemoval)
{
    using Element = Fragile<false>;
    Element const first(1);
    auto const expectOthersThere = [](Array<Element> const& list, Element const*)
    {
        EXPECT_EQ(list.size(), 3u);
        EXPECT_TRUE(list.contains(Element(2)));
        EXPECT_TRUE(list.contains(Element(3)));
    };
    auto const removeAll = [&](Array<Element>& list) { list.removeAll(first); };
    auto const removeIf = [](Array<Element>& list)
    { list.removeIf([](Element const& element) { return element.value == 1; }); };
    EXPECT_EQ(failEachAssignment<Element>(3, removeAll, expectOthersThere), 2);
    EXPECT_EQ(failEachAssignment<Element>(3, removeIf, expectOthersThere), 2);
}

TEST(FragileElement, ThatMovesSafelyNeverFailsWhereNothingIsCopied)
{
    using Element = Fragile<true>;
    Array<Element> list = arrayOf<Element>({1, 2, 3, 4});
    Element const value(1);
    Element::fuse = 0;
    EXPECT_NO_THROW(list.removeFast(value));
    EXPECT_NO_THROW(list.removeIf([](Element const& element) { return element.value == 2; }));
    Element::fuse = Element::never;
    EXPECT_EQ(valuesOf(list), (Values{4, 3}));
}

} // namespace

} // namespace kestrel::test
