#include <ks_graph/ConnectionIndex.h>

#include <ks_graph/GraphConnection.h>

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace kestrel::graph::test
{

namespace
{

using List = ConnectionIndex::List;

void removeAt(List& list, ConnectionIndex& index, unsigned int position)
{
    GraphConnection const* const gone = list[position];
    list.removeFastAt(position);
    index.removed(list, gone, position);
}

TEST(ConnectionIndex, FindsTheFirstEntryOfEachConnectionThroughAdditionsAndRemovals)
{
    std::array<GraphConnection, 20> connections;
    List list;
    for (GraphConnection& connection : connections) list.append(&connection);
    list.append(&connections[3]);
    list.append(nullptr);
    list.append(nullptr);
    ConnectionIndex index(list);
    std::mt19937 random(1);
    for (int step = 0; step < 3000; ++step)
    {
        std::size_t const dice = random() % (connections.size() + 1);
        GraphConnection* const connection = dice < connections.size() ? &connections[dice] : nullptr;
        bool const mayRepeat = random() % 8 == 0;
        unsigned int const place = list.find(connection);
        if (place == List::npos || mayRepeat)
        {
            list.append(connection);
            index.added(list, list.size() - 1);
        }
        else
            removeAt(list, index, place);
        for (GraphConnection const& each : connections) ASSERT_EQ(index.find(list, &each), list.find(&each));
        ASSERT_EQ(index.find(list, nullptr), list.find(nullptr));
    }
}

TEST(ConnectionIndex, TakesAConnectionThatWentWithoutItsKnowledge)
{
    std::array<GraphConnection, 4> connections;
    for (unsigned int const gone : {0u, 3u})
    {
        SCOPED_TRACE(gone);
        List list;
        for (GraphConnection& connection : connections) list.append(&connection);
        ConnectionIndex index(list);
        list.removeFastAt(gone); // the index still has it there
        list.append(&connections[gone]);
        index.added(list, 3);
        EXPECT_EQ(index.find(list, &connections[gone]), 3u);
        removeAt(list, index, 3);
        EXPECT_EQ(index.find(list, &connections[gone]), List::npos);
    }
    List list;
    for (GraphConnection& connection : connections) list.append(&connection);
    ConnectionIndex index(list);
    list.setSize(2);
    list.append(&connections[3]); // was noted behind the end that the list has now
    index.added(list, 2);
    EXPECT_EQ(index.find(list, &connections[3]), 2u);
}

} // namespace
} // namespace kestrel::graph::test
