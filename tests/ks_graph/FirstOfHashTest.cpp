#include <ks_graph/FirstOfHash.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <random>
#include <set>
#include <utility>

namespace kestrel::graph::test
{

namespace
{

TEST(FirstOfHash, FindsTheLowestRankOfAHashThatIsWanted)
{
    std::array<int, 60> objects{};
    auto const hashOfObject = [](std::size_t object) { return static_cast<std::uint32_t>(object % 7); };
    auto const rankOf = [](std::size_t object) { return static_cast<unsigned int>(object * 37 % 60); };
    for (std::size_t i = 0; i < objects.size(); ++i) objects[i] = static_cast<int>(i % 3);
    FirstOfHash<int> table;
    std::set<std::size_t> model;
    auto const firstIn = [&](std::uint32_t hash, int wanted) -> int*
    {
        std::size_t first = objects.size();
        for (std::size_t const object : model)
            if (hashOfObject(object) == hash && (wanted < 0 || objects[object] == wanted) &&
                (first == objects.size() || rankOf(object) < rankOf(first)))
                first = object;
        return first < objects.size() ? &objects[first] : nullptr;
    };
    std::mt19937 random(1);
    for (int step = 0; step < 600; ++step)
    {
        std::size_t const object = random() % objects.size();
        if (model.insert(object).second)
            table.insert(hashOfObject(object), rankOf(object), &objects[object]);
        else
        {
            model.erase(object);
            table.erase(hashOfObject(object), rankOf(object));
        }
        for (std::uint32_t hash = 0; hash < 8; ++hash)
            for (int const wanted : {-1, 0, 1, 2})
            {
                auto const isWanted = [wanted](int value) { return wanted < 0 || value == wanted; };
                ASSERT_EQ(table.findFirst(hash, isWanted), firstIn(hash, wanted)) << step;
            }
        if (step % 50 != 0) continue;
        std::multiset<int*> visited;
        table.forEach([&visited](int& value) { visited.insert(&value); });
        std::multiset<int*> expected;
        for (std::size_t const each : model) expected.insert(&objects[each]);
        ASSERT_EQ(visited, expected);
    }
    table.erase(99, 0); // of no object
    table.clear();
    table.forEach([](int&) { ADD_FAILURE(); });
    EXPECT_EQ(table.findFirst(0, [](int) { return true; }), nullptr);
}

} // namespace
} // namespace kestrel::graph::test
