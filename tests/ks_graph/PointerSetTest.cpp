#include <ks_graph/PointerSet.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <set>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;

using Set = PointerSet<int>;

// The first few are kept apart from the others.
TEST(PointerSet, IsNotEmptyWhenOnlyLaterOnesAreLeft)
{
    std::array<int, 12> values{};
    Set set;
    for (int const& value : values) set.insert(&value);
    for (std::size_t i = 0; i < 11; ++i) set.erase(&values[i]);
    EXPECT_FALSE(set.isEmpty());
    set.erase(&values[11]);
    EXPECT_TRUE(set.isEmpty());
}

TEST(PointerSet, HoldsEachPointerOnceAndNullAsAnyOther)
{
    std::array<int, 40> values{};
    std::vector<int const*> pointers{nullptr};
    for (int const& value : values) pointers.push_back(&value);
    std::mt19937 random(1);
    for (std::size_t const some : {4u, 8u, 9u, 41u})
    {
        Set set;
        std::set<int const*> model;
        for (int step = 0; step < 2000; ++step)
        {
            int const* const pointer = pointers[random() % some];
            if (random() % 2 == 0)
                ASSERT_EQ(set.insert(pointer), model.insert(pointer).second);
            else
                ASSERT_EQ(set.erase(pointer), model.erase(pointer) == 1);
            for (int const* const each : pointers) ASSERT_EQ(set.contains(each), model.count(each) == 1);
            ASSERT_EQ(set.isEmpty(), model.empty());
        }
    }
}

TEST(PointerSet, IsEmptyOnceAllAreGoneInTheOrderInWhichTheyCame)
{
    std::array<int, 20> values{};
    Set set;
    for (int const& value : values) set.insert(&value);
    EXPECT_TRUE(set.insert(nullptr));
    EXPECT_FALSE(set.insert(nullptr));
    EXPECT_TRUE(set.contains(nullptr));
    for (int const& value : values)
    {
        EXPECT_FALSE(set.isEmpty());
        EXPECT_TRUE(set.erase(&value));
    }
    EXPECT_FALSE(set.isEmpty());
    EXPECT_TRUE(set.erase(nullptr));
    EXPECT_TRUE(set.isEmpty());
    EXPECT_FALSE(set.erase(nullptr));
}

TEST(PointerSet, IsMadeOfAListThatMayRepeatItself)
{
    int a = 0;
    int b = 0;
    ArrayOfPtr<int, KS_NO> list;
    for (int* const pointer : {&a, static_cast<int*>(nullptr), &a}) list.append(pointer);
    Set const set(list);
    EXPECT_TRUE(set.contains(&a));
    EXPECT_TRUE(set.contains(nullptr));
    EXPECT_FALSE(set.contains(&b));
    removeRepeats(list);
    EXPECT_THAT(std::vector<int*>(list.begin(), list.end()), ElementsAre(&a, nullptr));
}

TEST(PointerSet, AppendsAListToItself)
{
    int a = 0;
    int b = 0;
    ArrayOfPtr<int, KS_NO> list;
    list.append(&a);
    list.append(&b);
    appendAll(list, list);
    EXPECT_THAT(std::vector<int*>(list.begin(), list.end()), ElementsAre(&a, &b, &a, &b));
}

} // namespace
} // namespace kestrel::graph::test
