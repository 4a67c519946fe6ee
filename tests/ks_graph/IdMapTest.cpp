#include <ks_graph/IdMap.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;

constexpr std::array<unsigned int, 5> ids{0u, 3u, 5u, 1000u, 0xFFFFFFFFu};

/// The pointers of 3, which comes first, and of 5 stand side by side; the others are in front of them or far.
class IdMapOfSome : public ::testing::Test
{
protected:
    IdMapOfSome()
    {
        for (unsigned int const id : {3u, 5u, 0u, 1000u, 0xFFFFFFFFu}) map.insert(id, &object);
    }

    std::vector<unsigned int> walked(std::uint64_t first, std::uint64_t end) const
    {
        std::vector<unsigned int> visited;
        map.walk(first, end,
                 [&visited](unsigned int id, int*)
                 {
                     visited.push_back(id);
                     return visited.size() < 10;
                 });
        return visited;
    }

    int object = 0;
    int other = 0;
    IdMap<int> map;
};

TEST_F(IdMapOfSome, ErasesEachOnceAndTellsWhetherItWasThere)
{
    for (unsigned int const id : ids)
    {
        EXPECT_TRUE(map.erase(id)) << id;
        EXPECT_FALSE(map.erase(id)) << id;
        EXPECT_EQ(map.find(id), nullptr) << id;
    }
    EXPECT_EQ(map.size(), 0u);
}

TEST_F(IdMapOfSome, AssignsAnotherObjectToEach)
{
    for (unsigned int const id : ids)
    {
        map.assign(id, &other);
        EXPECT_EQ(map.find(id), &other) << id;
    }
    EXPECT_EQ(map.size(), ids.size());
}

TEST_F(IdMapOfSome, WalksFromTheFirstUpToTheEndWithoutIt)
{
    EXPECT_THAT(walked(3, 5), ElementsAre(3));
    EXPECT_THAT(walked(3, 6), ElementsAre(3, 5));
    EXPECT_THAT(walked(4, 1000), ElementsAre(5));
    EXPECT_THAT(walked(4, 1001), ElementsAre(5, 1000));
}

TEST_F(IdMapOfSome, WalksOverEachOnceUpToTheHighestId)
{
    std::vector<unsigned int> visited;
    map.forEach([&visited](unsigned int id, int*) { visited.push_back(id); });
    EXPECT_THAT(visited, ::testing::ElementsAreArray(ids));
    EXPECT_THAT(walked(0, IdMap<int>::endOfIds), ::testing::ElementsAreArray(ids));
}

} // namespace
} // namespace kestrel::graph::test
