/// @file
/// Several threads enter connections into pins and take them out at the same time, through the four locked
/// operations; the lists are read only when the threads are done. Meant for the thread sanitizer as well.
#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/GraphScene.h>

#include "support/TestGraph.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <map>
#include <random>
#include <set>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using Connections = ArrayOfPtr<GraphConnection, KS_NO>;

constexpr unsigned int threadCount = 4;
constexpr unsigned int perThread = 4000;

constexpr PinDirection bothDirections = PIN_INPUT | PIN_OUTPUT;

/// The connections of one thread, all between the same two pins.
using Bundle = std::deque<GraphConnection>;

Bundle bundle(GraphNodePin& source, GraphNodePin& target, unsigned int count = perThread)
{
    return Bundle(count, GraphConnection(&source, &target));
}

void addAll(Bundle& connections)
{
    for (GraphConnection& connection : connections) connection.addToConnectedPins();
}

void removeAll(Bundle& connections)
{
    for (GraphConnection& connection : connections) connection.removeFromConnectedPins();
}

std::vector<GraphConnection*> pointers(Bundle& connections)
{
    std::vector<GraphConnection*> result;
    for (GraphConnection& connection : connections) result.push_back(&connection);
    return result;
}

std::vector<GraphConnection*> sorted(std::vector<GraphConnection*> connections)
{
    std::sort(connections.begin(), connections.end());
    return connections;
}

/// Whether the list holds exactly the connections of these bundles, in any order.
void expectExactly(Connections const& list, std::vector<Bundle*> const& bundles)
{
    std::vector<GraphConnection*> expected;
    for (Bundle* each : bundles)
    {
        std::vector<GraphConnection*> const more = pointers(*each);
        expected.insert(expected.end(), more.begin(), more.end());
    }
    EXPECT_EQ(list.size(), expected.size());
    EXPECT_TRUE(sorted(listed(list)) == sorted(expected)) << "the list holds other connections";
}

/// Whether the connections of the bundle stand in the list in the order in which their thread added them.
void expectInOrder(Connections const& list, Bundle& connections)
{
    std::vector<GraphConnection*> const wanted = pointers(connections);
    std::set<GraphConnection*> const known(wanted.begin(), wanted.end());
    std::vector<GraphConnection*> found;
    for (GraphConnection* connection : list)
        if (known.count(connection) != 0) found.push_back(connection);
    EXPECT_TRUE(found == wanted) << "additions of one thread have lost their order";
}

std::vector<Bundle*> all(std::vector<Bundle>& bundles)
{
    std::vector<Bundle*> result;
    for (Bundle& each : bundles) result.push_back(&each);
    return result;
}

/// Two pins, wired from the one to the other by the even threads and the other way round by the odd ones.
class OpposedThreads : public ::testing::TestWithParam<unsigned int>
{
protected:
    OpposedThreads()
    {
        for (unsigned int i = 0; i < count; ++i)
        {
            bundles.push_back(forward(i));
            (i % 2 == 0 ? toTheRight : toTheLeft).push_back(i);
        }
    }

    GraphNodePin& sourceOf(unsigned int thread) { return thread % 2 == 0 ? left : right; }
    GraphNodePin& targetOf(unsigned int thread) { return thread % 2 == 0 ? right : left; }
    Bundle forward(unsigned int thread) { return bundle(sourceOf(thread), targetOf(thread), each); }
    Bundle backward(unsigned int thread) { return bundle(targetOf(thread), sourceOf(thread), each); }

    std::vector<Bundle*> of(std::vector<unsigned int> const& threads)
    {
        std::vector<Bundle*> result;
        for (unsigned int i : threads) result.push_back(&bundles[i]);
        return result;
    }

    void expectAllThere()
    {
        expectExactly(left.getOutputConnections(), of(toTheRight));
        expectExactly(right.getInputConnections(), of(toTheRight));
        expectExactly(right.getOutputConnections(), of(toTheLeft));
        expectExactly(left.getInputConnections(), of(toTheLeft));
    }

    unsigned int const count = GetParam();
    unsigned int const each = 16000 / count;
    GraphNodePin left{nullptr, unlimited, bothDirections};
    GraphNodePin right{nullptr, unlimited, bothDirections};
    std::vector<Bundle> bundles;
    std::vector<unsigned int> toTheRight;
    std::vector<unsigned int> toTheLeft;
};

INSTANTIATE_TEST_SUITE_P(Of, OpposedThreads, ::testing::Values(2u, 3u, 8u, 32u));

TEST_P(OpposedThreads, WiringLosesAndRepeatsNothing)
{
    onThreads(count, [this](unsigned int i) { addAll(bundles[i]); });
    expectAllThere();
    for (unsigned int i : toTheRight) expectInOrder(left.getOutputConnections(), bundles[i]);
    for (unsigned int i : toTheLeft) expectInOrder(left.getInputConnections(), bundles[i]);
}

TEST_P(OpposedThreads, WiringPinByPinLosesAndRepeatsNothing)
{
    onThreads(count,
              [this](unsigned int i)
              {
                  for (GraphConnection& connection : bundles[i])
                  {
                      sourceOf(i).addOutputConnection(&connection);
                      targetOf(i).addInputConnection(&connection);
                  }
              });
    expectAllThere();
}

TEST_P(OpposedThreads, UnwiringEmptiesEveryList)
{
    for (Bundle& connections : bundles) addAll(connections);
    onThreads(count, [this](unsigned int i) { removeAll(bundles[i]); });
    EXPECT_EQ(left.getNumConnections(), 0u);
    EXPECT_EQ(right.getNumConnections(), 0u);
}

TEST_P(OpposedThreads, UnwiringPinByPinEmptiesEveryList)
{
    for (Bundle& connections : bundles) addAll(connections);
    onThreads(count,
              [this](unsigned int i)
              {
                  for (GraphConnection& connection : bundles[i])
                  {
                      targetOf(i).removeInputConnection(&connection);
                      sourceOf(i).removeOutputConnection(&connection);
                  }
              });
    EXPECT_EQ(left.getNumConnections(), 0u);
    EXPECT_EQ(right.getNumConnections(), 0u);
}

TEST_P(OpposedThreads, WiringAndUnwiringAtOnceLeaveWhatWasWired)
{
    std::vector<Bundle> others;
    for (unsigned int i = 0; i < count; ++i) others.push_back(backward(i));
    for (Bundle& connections : others) addAll(connections);
    onThreads(count,
              [this, &others](unsigned int i)
              {
                  for (unsigned int k = 0; k < each; ++k)
                  {
                      bundles[i][k].addToConnectedPins();
                      others[i][k].removeFromConnectedPins();
                  }
              });
    expectAllThere();
}

TEST_P(OpposedThreads, RemovingWhatIsNotThereRemovesNothing)
{
    Bundle strangers = bundle(left, right, each);
    onThreads(count,
              [this, &strangers](unsigned int i)
              {
                  for (unsigned int k = 0; k < each; ++k)
                  {
                      bundles[i][k].addToConnectedPins();
                      strangers[k].removeFromConnectedPins();
                  }
              });
    expectAllThere();
}

TEST_P(OpposedThreads, OneConnectionIsEnteredAsOftenAsItIsAdded)
{
    GraphConnection shared(&left, &right);
    onThreads(count,
              [this, &shared](unsigned int)
              {
                  for (unsigned int k = 0; k < each; ++k) shared.addToConnectedPins();
                  for (unsigned int k = 0; k < each / 4; ++k) shared.removeFromConnectedPins();
              });
    std::vector<GraphConnection*> const expected(count * (each - each / 4), &shared);
    EXPECT_TRUE(listed(left.getOutputConnections()) == expected);
    EXPECT_TRUE(listed(right.getInputConnections()) == expected);
    EXPECT_EQ(left.getInputConnections().size(), 0u);
}

/// What one thread has entered, as plain counts.
using Model = std::map<GraphConnection*, unsigned int>;

/// Adds and removes connections of the bundle, in an order of its own, through the connection or pin by pin.
Model wireAtRandom(Bundle& connections, GraphNodePin& source, GraphNodePin& target, unsigned int seed)
{
    Model model;
    std::mt19937 random(seed);
    for (std::size_t step = 0; step < 2 * connections.size(); ++step)
    {
        GraphConnection* const connection = &connections[random() % connections.size()];
        bool const adds = random() % 3 != 0;
        if (random() % 2 == 0)
        {
            adds ? connection->addToConnectedPins() : connection->removeFromConnectedPins();
        }
        else if (adds)
        {
            target.addInputConnection(connection);
            source.addOutputConnection(connection);
        }
        else
        {
            source.removeOutputConnection(connection);
            target.removeInputConnection(connection);
        }
        unsigned int& entries = model[connection];
        entries = adds ? entries + 1 : entries - std::min(entries, 1u);
    }
    return model;
}

TEST_P(OpposedThreads, AnyMixOfWiringAndUnwiringLeavesWhatTheModelsHold)
{
    std::vector<Model> models(count);
    onThreads(count, [&](unsigned int i)
              { models[i] = wireAtRandom(bundles[i], sourceOf(i), targetOf(i), 1000 * count + i); });
    std::vector<GraphConnection*> expected[2];
    for (unsigned int i = 0; i < count; ++i)
        for (auto const& [connection, entries] : models[i])
            expected[i % 2].insert(expected[i % 2].end(), entries, connection);
    EXPECT_GT(expected[0].size(), 1000u);
    EXPECT_TRUE(sorted(listed(left.getOutputConnections())) == sorted(expected[0]));
    EXPECT_TRUE(sorted(listed(right.getInputConnections())) == sorted(expected[0]));
    EXPECT_TRUE(sorted(listed(right.getOutputConnections())) == sorted(expected[1]));
    EXPECT_TRUE(sorted(listed(left.getInputConnections())) == sorted(expected[1]));
}

TEST(PinThreads, ARingWiredBothWaysRoundHoldsEverything)
{
    std::vector<GraphNodePin> ring(threadCount, GraphNodePin(nullptr, unlimited, bothDirections));
    std::vector<Bundle> onwards;
    std::vector<Bundle> backwards;
    for (unsigned int i = 0; i < threadCount; ++i)
    {
        GraphNodePin& next = ring[(i + 1) % threadCount];
        onwards.push_back(bundle(ring[i], next));
        backwards.push_back(bundle(next, ring[i]));
    }
    onThreads(threadCount,
              [&](unsigned int i)
              {
                  for (unsigned int k = 0; k < perThread; ++k)
                  {
                      onwards[i][k].addToConnectedPins();
                      backwards[i][k].addToConnectedPins();
                  }
              });
    for (unsigned int i = 0; i < threadCount; ++i)
    {
        unsigned int const previous = (i + threadCount - 1) % threadCount;
        expectExactly(ring[i].getOutputConnections(), {&onwards[i], &backwards[previous]});
        expectExactly(ring[i].getInputConnections(), {&onwards[previous], &backwards[i]});
    }
}

TEST(PinThreads, AHubIsSharedByThreadsWithPartnersOfTheirOwn)
{
    GraphNodePin hub(nullptr, unlimited, bothDirections);
    std::vector<GraphNodePin> partners(threadCount, GraphNodePin(nullptr, unlimited, bothDirections));
    std::vector<Bundle> into;
    std::vector<Bundle> outOf;
    for (GraphNodePin& partner : partners)
    {
        into.push_back(bundle(partner, hub));
        outOf.push_back(bundle(hub, partner));
    }
    onThreads(threadCount,
              [&](unsigned int i)
              {
                  addAll(into[i]);
                  addAll(outOf[i]);
              });
    expectExactly(hub.getInputConnections(), all(into));
    expectExactly(hub.getOutputConnections(), all(outOf));
    for (unsigned int i = 0; i < threadCount; ++i)
    {
        EXPECT_TRUE(listed(partners[i].getOutputConnections()) == pointers(into[i]));
        EXPECT_TRUE(listed(partners[i].getInputConnections()) == pointers(outOf[i]));
        expectInOrder(hub.getInputConnections(), into[i]);
        expectInOrder(hub.getOutputConnections(), outOf[i]);
    }
}

TEST(PinThreads, EachThreadTakesItsOwnFromAHubAndLeavesThoseOfTheOthers)
{
    GraphNodePin hub(nullptr, unlimited, bothDirections);
    std::vector<GraphNodePin> partners(threadCount, GraphNodePin(nullptr, unlimited, bothDirections));
    std::vector<Bundle> into;
    for (GraphNodePin& partner : partners) into.push_back(bundle(partner, hub));
    for (Bundle& each : into) addAll(each);
    onThreads(threadCount,
              [&](unsigned int i)
              {
                  if (i % 2 == 0) removeAll(into[i]);
              });
    std::vector<Bundle*> left;
    for (unsigned int i = 1; i < threadCount; i += 2) left.push_back(&into[i]);
    expectExactly(hub.getInputConnections(), left);
    for (unsigned int i = 0; i < threadCount; ++i)
        EXPECT_EQ(partners[i].getOutputConnections().size(), i % 2 == 0 ? 0u : perThread);
}

TEST(PinThreads, TheTwoListsOfOnePinGrowAndShrinkAtOnce)
{
    GraphNodePin pin;
    Bundle in(perThread, GraphConnection());
    Bundle out(perThread, GraphConnection());
    Bundle inToGo(perThread, GraphConnection());
    Bundle outToGo(perThread, GraphConnection());
    for (GraphConnection& connection : inToGo) pin.addInputConnection(&connection);
    for (GraphConnection& connection : outToGo) pin.addOutputConnection(&connection);
    onThreads(4,
              [&](unsigned int i)
              {
                  for (unsigned int k = 0; k < perThread; ++k)
                  {
                      if (i == 0) pin.addInputConnection(&in[k]);
                      if (i == 1) pin.addOutputConnection(&out[k]);
                      if (i == 2) pin.removeInputConnection(&inToGo[k]);
                      if (i == 3) pin.removeOutputConnection(&outToGo[k]);
                  }
              });
    expectExactly(pin.getInputConnections(), {&in});
    expectExactly(pin.getOutputConnections(), {&out});
}

TEST(PinThreads, ACopyOfAPinIsWiredApartFromTheOriginal)
{
    GraphNodePin original;
    Bundle before(10, GraphConnection());
    for (GraphConnection& connection : before) original.addInputConnection(&connection);
    GraphNodePin copy(original);
    GraphNodePin assigned;
    assigned = original;
    std::vector<GraphNodePin*> const pins{&original, &copy, &assigned};
    std::vector<Bundle> added(3, Bundle(perThread, GraphConnection()));
    onThreads(6,
              [&](unsigned int i)
              {
                  // Two threads for each pin, with half of its connections each.
                  for (unsigned int k = i % 2; k < perThread; k += 2)
                      pins[i / 2]->addInputConnection(&added[i / 2][k]);
              });
    for (unsigned int i = 0; i < 3; ++i) expectExactly(pins[i]->getInputConnections(), {&before, &added[i]});
}

TEST(PinThreads, PinsComeAndGoOnEveryThread)
{
    std::vector<unsigned int> counts(threadCount);
    onThreads(threadCount,
              [&counts](unsigned int i)
              {
                  for (unsigned int k = 0; k < perThread; ++k)
                  {
                      GraphNodePin pin;
                      GraphConnection connection;
                      pin.addInputConnection(&connection);
                      GraphNodePin copy(pin);
                      copy.addOutputConnection(&connection);
                      counts[i] += copy.getNumConnections();
                  }
              });
    EXPECT_EQ(counts, std::vector<unsigned int>(threadCount, 2 * perThread));
}

// -----------------------------------------------------------------------------------------------------------
// Overrides that call the locked operations again

/// Enters every input connection twice.
class DoublingPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;
    void addInputConnection(GraphConnection* connection) override
    {
        GraphNodePin::addInputConnection(connection);
        GraphNodePin::addInputConnection(connection);
    }
};

TEST(PinReentrance, AnOverrideMayCallTheBaseTwice)
{
    DoublingPin pin;
    Bundle connections(perThread, GraphConnection(nullptr, &pin));
    for (GraphConnection& connection : connections) connection.addToTargetPin();
    ASSERT_EQ(pin.getInputConnections().size(), 2 * perThread);
    for (unsigned int k = 0; k < perThread; ++k)
    {
        EXPECT_EQ(pin.getInputConnections()[2 * k], &connections[k]);
        EXPECT_EQ(pin.getInputConnections()[2 * k + 1], &connections[k]);
    }
}

TEST(PinReentrance, AnOverrideMayCallTheBaseTwiceOnManyThreads)
{
    DoublingPin pin;
    std::vector<Bundle> bundles(threadCount, Bundle(perThread, GraphConnection(nullptr, &pin)));
    onThreads(threadCount,
              [&bundles](unsigned int i)
              {
                  for (GraphConnection& connection : bundles[i]) connection.addToTargetPin();
              });
    std::vector<Bundle*> twice = all(bundles);
    twice.insert(twice.end(), twice.begin(), twice.begin() + threadCount);
    expectExactly(pin.getInputConnections(), twice);
}

/// Enters every input connection as an output connection too, and takes it out of both.
class MirroringPin : public GraphNodePin
{
public:
    using GraphNodePin::GraphNodePin;
    void addInputConnection(GraphConnection* connection) override
    {
        addOutputConnection(connection);
        GraphNodePin::addInputConnection(connection);
        removeOutputConnection(connection);
        addOutputConnection(connection);
    }

    void removeInputConnection(GraphConnection* connection) override
    {
        removeOutputConnection(connection);
        GraphNodePin::removeInputConnection(connection);
    }
};

TEST(PinReentrance, AnOverrideMayCallTheOtherLockedOperationsOfItsPin)
{
    MirroringPin pin;
    std::vector<Bundle> bundles(threadCount, Bundle(perThread, GraphConnection(nullptr, &pin)));
    onThreads(threadCount,
              [&](unsigned int i)
              {
                  for (unsigned int k = 0; k < perThread; ++k)
                  {
                      bundles[i][k].addToTargetPin();
                      if (i % 2 == 0) bundles[i][k].removeFromTargetPin();
                  }
              });
    std::vector<Bundle*> left;
    for (unsigned int i = 1; i < threadCount; i += 2) left.push_back(&bundles[i]);
    expectExactly(pin.getInputConnections(), left);
    expectExactly(pin.getOutputConnections(), left);
}

/// Passes every input connection on to another pin's output list.
class PassingPin : public GraphNodePin
{
public:
    void addInputConnection(GraphConnection* connection) override
    {
        GraphNodePin::addInputConnection(connection);
        to->addOutputConnection(connection);
        GraphNodePin::addOutputConnection(connection);
        to->removeOutputConnection(connection);
        to->addOutputConnection(connection);
    }

    GraphNodePin* to = nullptr;
};

TEST(PinReentrance, TwoPinsThatCallEachOtherNeverWaitForEachOther)
{
    PassingPin left;
    PassingPin right;
    left.to = &right;
    right.to = &left;
    Bundle intoLeft(perThread, GraphConnection(nullptr, &left));
    Bundle intoRight(perThread, GraphConnection(nullptr, &right));
    onThreads(2,
              [&](unsigned int i)
              {
                  for (GraphConnection& connection : i == 0 ? intoLeft : intoRight)
                      connection.addToTargetPin();
              });
    expectExactly(left.getInputConnections(), {&intoLeft});
    expectExactly(right.getInputConnections(), {&intoRight});
    expectExactly(left.getOutputConnections(), {&intoLeft, &intoRight});
    expectExactly(right.getOutputConnections(), {&intoLeft, &intoRight});
}

} // namespace

} // namespace kestrel::graph::test
