#include "FailingAllocator.h"

#include <ks_graph/IdMap.h>
#include <ks_graph/PointerSet.h>

#include <gtest/gtest.h>

#include <array>

namespace kestrel::graph::test
{

namespace
{

TEST(IdMapMemory, OfIdsSideBySideIsOneBlockThatGrowsInSteps)
{
    int object = 0;
    IdMap<int> map;
    long const before = allocationsMade();
    for (unsigned int id = 1000; id < 2000; ++id) map.insert(id, &object);
    EXPECT_LT(allocationsMade() - before, 40);
}

TEST(PointerSetMemory, IsNotTakenForAFewPointers)
{
    std::array<int, 8> values{};
    PointerSet<int> set;
    long const before = allocationsMade();
    for (int const& value : values) set.insert(&value);
    EXPECT_EQ(allocationsMade(), before);
}

TEST(PointerSetMemory, OfManyPointersIsATableThatDoublesFromStepToStep)
{
    std::array<int, 8 + 1000> values{};
    PointerSet<int> set;
    long const before = allocationsMade();
    for (int const& value : values) set.insert(&value);
    EXPECT_EQ(allocationsMade() - before, 9); // the first has 8 places, the last one 2048
}

} // namespace
} // namespace kestrel::graph::test
