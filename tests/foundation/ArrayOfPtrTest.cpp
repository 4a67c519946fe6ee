#include <foundation/ArrayOfPtr.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel::test
{

namespace
{

/// Equal to every other thing, so that only its address tells it apart.
struct Thing
{
    bool operator==(Thing const&) const { return true; }
};

class Incomplete;

struct OtherTag
{
};

static_assert(std::is_same_v<ArrayOfPtr<Thing>, ArrayOfPtr<Thing, KS_NO>>);
static_assert(!std::is_same_v<ArrayOfPtr<Thing>, ArrayOfPtr<Thing, OtherTag>>);
static_assert(ArrayOfPtr<Thing>::npos == 0xFFFFFFFFu);
static_assert(sizeof(ArrayOfPtr<Incomplete>) == sizeof(void*) + 2 * sizeof(unsigned int));
static_assert(std::is_same_v<decltype(std::declval<ArrayOfPtr<Thing>&>()[0]), Thing*&>);
static_assert(std::is_same_v<decltype(std::declval<ArrayOfPtr<Thing> const&>()[0]), Thing* const&>);

using Things = std::vector<Thing*>;

class PointerList : public ::testing::Test
{
protected:
    static ArrayOfPtr<Thing> listOf(Things const& things, unsigned int capacity)
    {
        ArrayOfPtr<Thing> list;
        list.reserve(capacity, true);
        for (Thing* thing : things) list.append(thing);
        return list;
    }

    static Things thingsOf(ArrayOfPtr<Thing> const& list) { return Things(list.begin(), list.end()); }

    static void expectFreeSlotsAreNull(ArrayOfPtr<Thing> const& list)
    {
        for (unsigned int i = list.size(); i < list.capacity(); ++i) EXPECT_EQ(list.data()[i], nullptr) << i;
    }

    Thing things_[70];
    Thing* const a_ = &things_[0];
    Thing* const b_ = &things_[1];
    Thing* const c_ = &things_[2];
    Thing* const d_ = &things_[3];
};

TEST_F(PointerList, HoldsBlockThenSizeThenCapacity)
{
    struct Fields
    {
        Thing* const* data;
        unsigned int size;
        unsigned int capacity;
    };
    static_assert(sizeof(ArrayOfPtr<Thing>) == sizeof(Fields));
    ArrayOfPtr<Thing> const list = listOf({a_, b_}, 7);
    Fields fields;
    std::memcpy(&fields, static_cast<void const*>(&list), sizeof fields);
    EXPECT_EQ(fields.data, list.data());
    EXPECT_EQ(fields.size, 2u);
    EXPECT_EQ(fields.capacity, 7u);
}

TEST_F(PointerList, StartsWithoutABlock)
{
    ArrayOfPtr<Thing> const list;
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(list.capacity(), 0u);
    EXPECT_TRUE(list.isEmpty());
}

TEST_F(PointerList, GrowsByAnEighthAndFourAndNullsTheNewSlots)
{
    ArrayOfPtr<Thing> list;
    std::vector<unsigned int> capacities{0};
    for (unsigned int i = 0; i < 32; ++i)
    {
        list.append(&things_[i]);
        if (list.capacity() != capacities.back()) capacities.push_back(list.capacity());
        expectFreeSlotsAreNull(list);
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{0, 4, 8, 13, 18, 24, 31, 38}));
    for (unsigned int i = 0; i < 32; ++i) EXPECT_EQ(list[i], &things_[i]);
}

TEST_F(PointerList, AppendsAnElementOfItself)
{
    ArrayOfPtr<Thing> list = listOf({a_, b_}, 2);
    list.append(list[0]);
    EXPECT_EQ(thingsOf(list), (Things{a_, b_, a_}));
}

TEST_F(PointerList, AppendsARangeGrowingByTheShortfallOrByAnEighthAndFour)
{
    ArrayOfPtr<Thing> list = listOf({a_, b_}, 3);
    Thing* const more[] = {c_, d_, a_, b_, c_, d_};
    list.appendRange(more, 1);
    EXPECT_EQ(list.capacity(), 3u);
    list.appendRange(more, 1);
    EXPECT_EQ(list.capacity(), 7u);
    list.appendRange(more, 6);
    EXPECT_EQ(list.capacity(), 11u);
    EXPECT_EQ(thingsOf(list), (Things{a_, b_, c_, c_, c_, d_, a_, b_, c_, d_}));
    list.appendRange(list.data(), list.size());
    EXPECT_EQ(list.capacity(), 20u);
    EXPECT_EQ(thingsOf(list),
              (Things{a_, b_, c_, c_, c_, d_, a_, b_, c_, d_, a_, b_, c_, c_, c_, d_, a_, b_, c_, d_}));
    list.appendRange(nullptr, 0);
    EXPECT_EQ(list.size(), 20u);
}

TEST_F(PointerList, CopiesExactlyAndSharesWhatItPointsAt)
{
    ArrayOfPtr<Thing> const source = listOf({a_, b_}, 8);
    ArrayOfPtr<Thing> copy(source);
    EXPECT_EQ(copy.capacity(), 2u);
    EXPECT_NE(copy.data(), source.data());
    EXPECT_EQ(thingsOf(copy), (Things{a_, b_}));
    copy[0] = c_;
    EXPECT_EQ(source[0], a_);
}

TEST_F(PointerList, AssignmentReplacesEveryBlockButOneOfTheExactSize)
{
    ArrayOfPtr<Thing> const source = listOf({a_, b_}, 5);
    for (unsigned int capacity : {1u, 2u, 3u, 8u})
    {
        SCOPED_TRACE(capacity);
        ArrayOfPtr<Thing> list = listOf({c_}, capacity);
        Thing* const* const block = list.data();
        list = source;
        EXPECT_EQ(thingsOf(list), (Things{a_, b_}));
        EXPECT_EQ(list.capacity(), 2u);
        if (capacity == 2)
        {
            EXPECT_EQ(list.data(), block);
        }
    }
}

TEST_F(PointerList, AssignmentOfItselfChangesNothing)
{
    ArrayOfPtr<Thing> list = listOf({a_, b_}, 8);
    ArrayOfPtr<Thing> const& same = list;
    list = same;
    EXPECT_EQ(thingsOf(list), (Things{a_, b_}));
}

TEST_F(PointerList, MoveTakesTheBlock)
{
    ArrayOfPtr<Thing> source = listOf({a_, b_}, 8);
    Thing* const* const block = source.data();
    ArrayOfPtr<Thing> taker(std::move(source));
    EXPECT_EQ(taker.data(), block);
    EXPECT_EQ(source.data(), nullptr);
    EXPECT_EQ(source.size(), 0u);
    EXPECT_EQ(source.capacity(), 0u);
    ArrayOfPtr<Thing> target = listOf({c_}, 1);
    target = std::move(taker);
    EXPECT_EQ(target.data(), block);
    EXPECT_EQ(thingsOf(target), (Things{a_, b_}));
    EXPECT_TRUE(taker.isEmpty());
}

TEST_F(PointerList, FindsByIdentityTheFirstMatch)
{
    ArrayOfPtr<Thing> const list = listOf({a_, b_, c_, b_, nullptr}, 8);
    EXPECT_EQ(list.find(a_), 0u);
    EXPECT_EQ(list.find(b_), 1u);
    EXPECT_EQ(list.find(nullptr), 4u);
    EXPECT_EQ(list.find(d_), ArrayOfPtr<Thing>::npos);
    Thing const* const constant = c_;
    EXPECT_EQ(list.find(constant), 2u);
    EXPECT_TRUE(list.contains(constant));
    EXPECT_FALSE(list.contains(d_));
}

TEST_F(PointerList, DoesNotFindNullInItsFreeSlots)
{
    ArrayOfPtr<Thing> const list = listOf({a_}, 8);
    EXPECT_EQ(list.find(nullptr), ArrayOfPtr<Thing>::npos);
    EXPECT_FALSE(ArrayOfPtr<Thing>().contains(nullptr));
}

TEST_F(PointerList, FastRemovalMovesTheLastIntoTheGapAndNullsTheSlot)
{
    struct Row
    {
        Things before;
        Thing* value;
        Things after;
    };
    Row const rows[] = {
        {{a_, b_, c_}, a_, {c_, b_}},
        {{a_, b_, c_}, b_, {a_, c_}},
        {{a_, b_, c_}, c_, {a_, b_}},
        {{a_, b_, c_}, d_, {a_, b_, c_}},
        {{a_}, a_, {}},
        {{}, a_, {}},
        {{a_, b_, a_, c_}, a_, {c_, b_, a_}},
        {{a_, nullptr, b_}, nullptr, {a_, b_}},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(::testing::PrintToString(row.before));
        ArrayOfPtr<Thing> list = listOf(row.before, 4);
        list.removeFast(row.value);
        EXPECT_EQ(thingsOf(list), row.after);
        EXPECT_EQ(list.capacity(), 4u);
        expectFreeSlotsAreNull(list);
    }
}

TEST_F(PointerList, RemovalOfAllKeepsTheOrderAndNullsTheSlots)
{
    struct Row
    {
        Things before;
        Thing* value;
        Things after;
        unsigned int removed;
    };
    Row const rows[] = {
        {{a_, b_, c_, b_}, b_, {a_, c_}, 2},
        {{a_, b_, c_}, a_, {b_, c_}, 1},
        {{a_, b_, c_}, c_, {a_, b_}, 1},
        {{a_, b_, c_}, d_, {a_, b_, c_}, 0},
        {{b_, b_, b_, b_}, b_, {}, 4},
        {{}, b_, {}, 0},
        {{nullptr, a_, nullptr}, nullptr, {a_}, 2},
    };
    for (Row const& row : rows)
    {
        SCOPED_TRACE(::testing::PrintToString(row.before));
        ArrayOfPtr<Thing> list = listOf(row.before, 5);
        EXPECT_EQ(list.removeAll(row.value), row.removed);
        EXPECT_EQ(thingsOf(list), row.after);
        EXPECT_EQ(list.capacity(), 5u);
        expectFreeSlotsAreNull(list);
    }
}

TEST_F(PointerList, RemovalTakesAnElementOfTheListItself)
{
    ArrayOfPtr<Thing> list = listOf({a_, b_, a_, c_}, 4);
    EXPECT_EQ(list.removeAll(list[0]), 2u);
    EXPECT_EQ(thingsOf(list), (Things{b_, c_}));
    list.removeFast(list[0]);
    EXPECT_EQ(thingsOf(list), (Things{c_}));
}

TEST_F(PointerList, RemovalByPredicateKeepsTheOrderAndNullsTheSlots)
{
    for (unsigned int count : {0u, 1u, 31u, 32u, 33u, 64u, 65u})
    {
        SCOPED_TRACE(count);
        Things all;
        for (unsigned int i = 0; i < count; ++i) all.push_back(&things_[i]);
        for (std::ptrdiff_t divisor : {1, 2, 3, 32, 100})
        {
            SCOPED_TRACE(divisor);
            auto const gone = [this, divisor](Thing const* thing)
            { return (thing - things_) % divisor == 0; };
            Things expected;
            for (Thing* thing : all)
                if (!gone(thing)) expected.push_back(thing);
            ArrayOfPtr<Thing> list = listOf(all, count + 2);
            list.removeIf(gone);
            EXPECT_EQ(thingsOf(list), expected);
            EXPECT_EQ(list.capacity(), count + 2);
            expectFreeSlotsAreNull(list);
        }
    }
}

TEST_F(PointerList, ReserveKeepsCutsDropsOrReleases)
{
    ArrayOfPtr<Thing> list = listOf({a_, b_, c_}, 3);
    list.reserve(6, true);
    EXPECT_EQ(thingsOf(list), (Things{a_, b_, c_}));
    EXPECT_EQ(list.capacity(), 6u);
    expectFreeSlotsAreNull(list);
    list.reserve(2, true);
    EXPECT_EQ(thingsOf(list), (Things{a_, b_}));
    EXPECT_EQ(list.capacity(), 2u);
    list.reserve(4, false);
    EXPECT_EQ(thingsOf(list), (Things{nullptr, nullptr}));
    EXPECT_EQ(list.capacity(), 4u);
    list.reserve(0, true);
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(list.capacity(), 0u);
}

TEST_F(PointerList, SetSizeEmptiesWithoutGivingTheBlockBackAndFillsWithNull)
{
    ArrayOfPtr<Thing> list = listOf({a_, b_, c_}, 3);
    Thing* const* const block = list.data();
    list.setSize(0);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.data(), block);
    EXPECT_EQ(list.capacity(), 3u);
    list.setSize(2);
    EXPECT_EQ(thingsOf(list), (Things{nullptr, nullptr}));
    EXPECT_EQ(list.data(), block);
    list.setSize(9);
    EXPECT_EQ(list.capacity(), 9u);
    EXPECT_EQ(thingsOf(list), Things(9, nullptr));
}

TEST_F(PointerList, ClearReleasesTheBlock)
{
    ArrayOfPtr<Thing> list = listOf({a_, b_}, 5);
    list.clear();
    EXPECT_EQ(list.data(), nullptr);
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(list.capacity(), 0u);
}

#if GTEST_HAS_DEATH_TEST && !defined(NDEBUG) && !defined(_WIN32)
TEST_F(PointerList, IndexAssertsItsBound)
{
    ArrayOfPtr<Thing> list = listOf({a_}, 4);
    ArrayOfPtr<Thing> const& constant = list;
    EXPECT_DEATH(list[1] = a_, "");
    EXPECT_DEATH((void)constant[1], "");
}
#endif

struct Mourned
{
    ~Mourned() { ++deaths; }
    static inline int deaths = 0;
};

TEST(PointerListOwnership, NeverDeletesWhatItPointsAt)
{
    int const before = Mourned::deaths;
    Mourned* const mourned = new Mourned;
    {
        ArrayOfPtr<Mourned> list;
        for (int i = 0; i < 6; ++i) list.append(mourned);
        list.removeFast(mourned);
        list.reserve(2, true);
        list.removeIf([](Mourned const*) { return true; });
        list.append(mourned);
        list.removeAll(mourned);
        list.append(mourned);
        list.setSize(0);
        list.append(mourned);
        list.clear();
        list.append(mourned);
        list = ArrayOfPtr<Mourned>();
        list.append(mourned);
    }
    EXPECT_EQ(Mourned::deaths, before);
    delete mourned;
    EXPECT_EQ(Mourned::deaths, before + 1);
}

} // namespace

} // namespace kestrel::test
