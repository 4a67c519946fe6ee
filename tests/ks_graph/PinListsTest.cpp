/// @file
/// The two connection lists of a pin: what stands in them, and in which order, after additions and removals.
#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphNodePin.h>

#include "support/TestGraph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using Connections = ArrayOfPtr<GraphConnection, KS_NO>;

/// The operations of one of the two lists.
struct Side
{
    char const* name;
    void (GraphNodePin::*add)(GraphConnection*);
    void (GraphNodePin::*remove)(GraphConnection*);
    Connections const& (GraphNodePin::*get)() const;
    Connections& (GraphNodePin::*ref)();
    void (GraphNodePin::*set)(Connections const&);

    // Each call stands in a function of its own: under its address and undefined behaviour
    // sanitizers GCC 12 miscompiles two calls through pointers read from a member of `this` in one function.
    void addTo(GraphNodePin& pin, GraphConnection* connection) const { (pin.*add)(connection); }
    void removeFrom(GraphNodePin& pin, GraphConnection* connection) const { (pin.*remove)(connection); }
    Connections const& listOf(GraphNodePin const& pin) const { return (pin.*get)(); }
    Connections& refOf(GraphNodePin& pin) const { return (pin.*ref)(); }
    void setOf(GraphNodePin& pin, Connections const& list) const { (pin.*set)(list); }
};

constexpr Side sides[] = {
    {"Input", &GraphNodePin::addInputConnection, &GraphNodePin::removeInputConnection,
     &GraphNodePin::getInputConnections, &GraphNodePin::refInputConnections,
     &GraphNodePin::setInputConnections},
    {"Output", &GraphNodePin::addOutputConnection, &GraphNodePin::removeOutputConnection,
     &GraphNodePin::getOutputConnections, &GraphNodePin::refOutputConnections,
     &GraphNodePin::setOutputConnections},
};

template <class Named>
std::string nameOf(::testing::TestParamInfo<Named> const& info)
{
    return info.param.name;
}

/// One list of a pin, seen as a text of letters: connection 'a' is the first of the pool.
class PinList : public ::testing::TestWithParam<Side>
{
protected:
    GraphConnection* at(char letter) { return &pool[static_cast<unsigned int>(letter - 'a')]; }

    Connections listOf(std::string const& letters)
    {
        Connections list;
        for (char letter : letters) list.append(at(letter));
        return list;
    }

    void add(GraphNodePin& to, std::string const& letters)
    {
        for (char letter : letters) side.addTo(to, at(letter));
    }

    void remove(GraphNodePin& from, std::string const& letters)
    {
        for (char letter : letters) side.removeFrom(from, at(letter));
    }

    void set(GraphNodePin& to, std::string const& letters) { side.setOf(to, listOf(letters)); }

    Connections const& list(GraphNodePin const& of) const { return side.listOf(of); }
    Connections& ref(GraphNodePin& of) const { return side.refOf(of); }

    std::string letters(Connections const& connections) const
    {
        std::string text;
        for (GraphConnection* connection : connections)
            text += connection == nullptr ? '0' : static_cast<char>('a' + (connection - pool.data()));
        return text;
    }

    std::string letters(GraphNodePin const& of) const { return letters(list(of)); }

    std::string lettersOfTheOtherList(GraphNodePin const& of) const { return letters(otherSide.listOf(of)); }

    Side const& side = GetParam();
    Side const& otherSide = side.add == sides[0].add ? sides[1] : sides[0];
    std::array<GraphConnection, 26> pool;
    GraphNodePin pin;
};

INSTANTIATE_TEST_SUITE_P(Sides, PinList, ::testing::ValuesIn(sides), nameOf<Side>);

TEST_P(PinList, IsEmptyAtFirst)
{
    EXPECT_EQ(letters(pin), "");
    EXPECT_EQ(lettersOfTheOtherList(pin), "");
}

TEST_P(PinList, KeepsAdditionsInTheirOrder)
{
    add(pin, "dacb");
    EXPECT_EQ(letters(pin), "dacb");
}

TEST_P(PinList, HoldsWhatIsAddedTwiceTwice)
{
    add(pin, "aba");
    EXPECT_EQ(letters(pin), "aba");
}

TEST_P(PinList, ChangesAloneWithItsOwnOperations)
{
    add(pin, "abc");
    EXPECT_EQ(lettersOfTheOtherList(pin), "");
    otherSide.addTo(pin, at('a'));
    remove(pin, "ab");
    EXPECT_EQ(letters(pin), "c");
    EXPECT_EQ(lettersOfTheOtherList(pin), "a");
}

TEST_P(PinList, TakesConnectionsThatBelongToOtherPins)
{
    GraphNodePin source;
    GraphNodePin target;
    at('a')->setSourcePin(&source);
    at('a')->setTargetPin(&target);
    add(pin, "a");
    EXPECT_EQ(letters(pin), "a");
    EXPECT_EQ(at('a')->getSourcePin(), &source);
    EXPECT_EQ(at('a')->getTargetPin(), &target);
    EXPECT_FALSE(source.isConnected());
    EXPECT_FALSE(target.isConnected());
}

TEST_P(PinList, TakesMoreThanTheCapacityOfThePin)
{
    pin.setMaxNumConnections(1);
    add(pin, "abc");
    EXPECT_EQ(letters(pin), "abc");
}

TEST_P(PinList, IgnoresNull)
{
    add(pin, "ab");
    side.addTo(pin, nullptr);
    EXPECT_EQ(letters(pin), "ab");
    side.removeFrom(pin, nullptr);
    EXPECT_EQ(letters(pin), "ab");
}

TEST_P(PinList, RemovesTheFirstEntryAndMovesTheLastIntoItsPlace)
{
    struct Row
    {
        char const* before;
        char const* removed;
        char const* after;
    };
    for (Row const& row :
         {Row{"", "a", ""},          Row{"a", "a", ""},           Row{"a", "b", "a"},
          Row{"ab", "a", "b"},       Row{"ab", "b", "a"},         Row{"abc", "a", "cb"},
          Row{"abc", "b", "ac"},     Row{"abc", "c", "ab"},       Row{"abc", "d", "abc"},
          Row{"abcde", "b", "aecd"}, Row{"aa", "a", "a"},         Row{"aaa", "a", "aa"},
          Row{"aab", "a", "ba"},     Row{"aba", "a", "ab"},       Row{"baa", "a", "ba"},
          Row{"abac", "a", "cba"},   Row{"abab", "b", "aba"},     Row{"abca", "a", "abc"},
          Row{"abcab", "c", "abba"}, Row{"abc", "aa", "cb"},      Row{"abc", "aba", "c"},
          Row{"abcd", "ab", "dc"},   Row{"abcd", "da", "cb"},     Row{"abac", "aa", "cb"},
          Row{"aabb", "ab", "ba"},   Row{"abcabc", "cba", "abc"}, Row{"abcdef", "fedcba", ""},
          Row{"abc", "abc", ""}})
    {
        SCOPED_TRACE(std::string(row.before) + " without " + row.removed);
        GraphNodePin each;
        add(each, row.before);
        remove(each, row.removed);
        EXPECT_EQ(letters(each), row.after);
    }
}

TEST_P(PinList, TakesAgainWhatWasRemoved)
{
    add(pin, "abc");
    remove(pin, "a");
    add(pin, "a");
    EXPECT_EQ(letters(pin), "cba");
    remove(pin, "abc");
    add(pin, "b");
    EXPECT_EQ(letters(pin), "b");
}

TEST_P(PinList, RemovesNothingThatOnlyTheOtherListHolds)
{
    otherSide.addTo(pin, at('a'));
    add(pin, "b");
    remove(pin, "a");
    EXPECT_EQ(letters(pin), "b");
    EXPECT_EQ(lettersOfTheOtherList(pin), "a");
}

TEST_P(PinList, GrowsByAnEighthAndFour)
{
    std::vector<unsigned int> capacities;
    for (unsigned int i = 0; i < 32; ++i)
    {
        unsigned int const before = list(pin).capacity();
        add(pin, "a");
        if (list(pin).capacity() != before) capacities.push_back(list(pin).capacity());
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{4, 8, 13, 18, 24, 31, 38}));
}

TEST_P(PinList, ARemovalKeepsTheBlockAndNullsTheFreedSlot)
{
    add(pin, "abcde");
    remove(pin, "a");
    EXPECT_EQ(list(pin).capacity(), 8u);
    EXPECT_EQ(list(pin).data()[4], nullptr);
    remove(pin, "bcde");
    EXPECT_EQ(list(pin).capacity(), 8u);
    EXPECT_EQ(list(pin).data()[0], nullptr);
}

TEST_P(PinList, RemovalLeavesTheConnectionAlone)
{
    GraphNodePin other;
    at('a')->setSourcePin(&other);
    at('a')->setTargetPin(&pin);
    at('a')->setImplicit(true);
    add(pin, "a");
    remove(pin, "a");
    EXPECT_EQ(at('a')->getSourcePin(), &other);
    EXPECT_EQ(at('a')->getTargetPin(), &pin);
    EXPECT_TRUE(at('a')->isImplicit());
}

// -----------------------------------------------------------------------------------------------------------
// Whole lists

TEST_P(PinList, IsReplacedAsAWholeToAnExactFit)
{
    add(pin, "abcde");
    ASSERT_EQ(list(pin).capacity(), 8u);
    set(pin, "fg");
    EXPECT_EQ(letters(pin), "fg");
    EXPECT_EQ(list(pin).capacity(), 2u);
    EXPECT_EQ(lettersOfTheOtherList(pin), "");
    set(pin, "");
    EXPECT_EQ(letters(pin), "");
    EXPECT_EQ(list(pin).capacity(), 0u);
}

TEST_P(PinList, IsReplacedByItselfUnchanged)
{
    add(pin, "abab");
    side.setOf(pin, list(pin));
    EXPECT_EQ(letters(pin), "abab");
    remove(pin, "a");
    EXPECT_EQ(letters(pin), "bba");
}

TEST_P(PinList, IsACopyOfWhatItWasSetTo)
{
    Connections given = listOf("abc");
    side.setOf(pin, given);
    given.append(at('d'));
    given.removeFast(at('a'));
    EXPECT_EQ(letters(pin), "abc");
    remove(pin, "b");
    EXPECT_EQ(letters(given), "dbc");
}

TEST_P(PinList, IsReplacedByTheOtherList)
{
    add(pin, "abc");
    otherSide.addTo(pin, at('d'));
    otherSide.addTo(pin, at('e'));
    side.setOf(pin, otherSide.listOf(pin));
    EXPECT_EQ(letters(pin), "de");
    remove(pin, "d");
    EXPECT_EQ(letters(pin), "e");
    EXPECT_EQ(lettersOfTheOtherList(pin), "de");
}

TEST_P(PinList, RemovalFollowsAReplacedList)
{
    add(pin, "abcd");
    remove(pin, "b");
    set(pin, "dcbaab");
    remove(pin, "b");
    EXPECT_EQ(letters(pin), "dcbaa");
    remove(pin, "a");
    EXPECT_EQ(letters(pin), "dcba");
    remove(pin, "d");
    EXPECT_EQ(letters(pin), "acb");
}

TEST_P(PinList, RemovalFollowsAReplacementInWhichNothingButTheOrderChanged)
{
    add(pin, "abcd");
    remove(pin, "d");
    set(pin, "cab");
    remove(pin, "c");
    EXPECT_EQ(letters(pin), "ba");
}

// -----------------------------------------------------------------------------------------------------------
// The list in the host's hands

TEST_P(PinList, IsTheSameListByReadingAndByReference)
{
    EXPECT_EQ(&ref(pin), &list(pin));
    ref(pin).append(at('a'));
    EXPECT_EQ(letters(pin), "a");
    EXPECT_TRUE(pin.isConnected());
}

TEST_P(PinList, RemovalFollowsAReorderedList)
{
    add(pin, "abcde");
    remove(pin, "e");
    std::reverse(ref(pin).begin(), ref(pin).end());
    remove(pin, "d");
    EXPECT_EQ(letters(pin), "acb");
    remove(pin, "d");
    EXPECT_EQ(letters(pin), "acb");
}

TEST_P(PinList, RemovalFollowsAListThatIsReorderedThroughAReferenceTakenLongBefore)
{
    Connections& held = ref(pin);
    add(pin, "abcdef");
    remove(pin, "b");
    ASSERT_EQ(letters(pin), "afcde");
    std::swap(held[0], held[4]);
    remove(pin, "e");
    EXPECT_EQ(letters(pin), "afcd");
}

TEST_P(PinList, AHeldReferenceOutlivesAReplacement)
{
    Connections& held = ref(pin);
    set(pin, "abcde");
    remove(pin, "c");
    ASSERT_EQ(letters(pin), "abed");
    std::swap(held[0], held[3]);
    remove(pin, "d");
    EXPECT_EQ(letters(pin), "abe");
    remove(pin, "a");
    EXPECT_EQ(letters(pin), "eb");
}

TEST_P(PinList, AHeldReferenceOutlivesAnAssignment)
{
    Connections& held = ref(pin);
    GraphNodePin source;
    add(source, "abcde");
    remove(source, "c");
    pin = source;
    remove(pin, "b");
    ASSERT_EQ(letters(pin), "ade");
    std::swap(held[0], held[2]);
    remove(pin, "e");
    EXPECT_EQ(letters(pin), "ad");
    EXPECT_EQ(&held, &list(pin));
}

TEST_P(PinList, AHeldReferenceToOneListLeavesTheOtherInOrder)
{
    Connections& held = ref(pin);
    for (char letter : std::string("abcd"))
    {
        pin.addInputConnection(at(letter));
        pin.addOutputConnection(at(letter));
    }
    std::reverse(held.begin(), held.end());
    pin.removeInputConnection(at('b'));
    pin.removeOutputConnection(at('b'));
    EXPECT_EQ(letters(pin), "dca");
    EXPECT_EQ(lettersOfTheOtherList(pin), "adc");
}

TEST_P(PinList, IsEmptiedAndFilledByReference)
{
    add(pin, "abc");
    remove(pin, "a");
    ref(pin).setSize(0);
    remove(pin, "b");
    EXPECT_EQ(letters(pin), "");
    add(pin, "cab");
    remove(pin, "c");
    EXPECT_EQ(letters(pin), "ba");
    ref(pin).clear();
    EXPECT_EQ(letters(pin), "");
    EXPECT_FALSE(pin.isConnected());
    add(pin, "a");
    EXPECT_EQ(letters(pin), "a");
}

TEST_P(PinList, RemovalFindsWhatTheHostPutIn)
{
    add(pin, "ab");
    Connections& held = ref(pin);
    held.append(at('c'));
    held.append(at('a'));
    remove(pin, "c");
    EXPECT_EQ(letters(pin), "aba");
    held[1] = at('d');
    remove(pin, "b");
    EXPECT_EQ(letters(pin), "ada");
    remove(pin, "d");
    EXPECT_EQ(letters(pin), "aa");
}

// -----------------------------------------------------------------------------------------------------------
// Copies

TEST_P(PinList, OfACopyFitsExactly)
{
    add(pin, "abcde");
    GraphNodePin const copy(pin);
    EXPECT_EQ(letters(copy), "abcde");
    EXPECT_EQ(list(copy).capacity(), 5u);
    EXPECT_NE(list(copy).data(), list(pin).data());
}

TEST_P(PinList, OfACopyGoesItsOwnWay)
{
    add(pin, "abcd");
    remove(pin, "b");
    GraphNodePin copy(pin);
    remove(copy, "a");
    add(copy, "e");
    remove(pin, "d");
    EXPECT_EQ(letters(copy), "cde");
    EXPECT_EQ(letters(pin), "ac");
    remove(copy, "c");
    EXPECT_EQ(letters(copy), "ed");
}

TEST_P(PinList, OfAnAssignedPinGoesItsOwnWay)
{
    GraphNodePin target;
    add(target, "fgha");
    remove(target, "g");
    add(pin, "abcd");
    target = pin;
    remove(target, "fa");
    remove(pin, "b");
    EXPECT_EQ(letters(target), "dbc");
    EXPECT_EQ(letters(pin), "adc");
}

TEST_P(PinList, SurvivesAnAssignmentOfThePinToItself)
{
    add(pin, "abcb");
    remove(pin, "a");
    GraphNodePin& same = pin;
    pin = same;
    EXPECT_EQ(letters(pin), "bbc");
    remove(pin, "b");
    EXPECT_EQ(letters(pin), "cb");
}

TEST_P(PinList, OfACopyDoesNotFollowAReferenceIntoTheOriginal)
{
    Connections& held = ref(pin);
    add(pin, "abc");
    GraphNodePin copy(pin);
    std::reverse(held.begin(), held.end());
    remove(copy, "a");
    EXPECT_EQ(letters(copy), "cb");
    remove(pin, "c");
    EXPECT_EQ(letters(pin), "ab");
}

TEST_P(PinList, OfACopyOutlivesTheOriginal)
{
    auto original = std::make_unique<GraphNodePin>();
    add(*original, "abc");
    remove(*original, "a");
    GraphNodePin copy(*original);
    GraphNodePin assigned;
    assigned = *original;
    original.reset();
    for (GraphNodePin* each : {&copy, &assigned})
    {
        add(*each, "d");
        remove(*each, "c");
        EXPECT_EQ(letters(*each), "db");
    }
}

// -----------------------------------------------------------------------------------------------------------
// Against a model

/// What `removeFast` does, naively.
void removeFast(std::vector<GraphConnection*>& list, GraphConnection* connection)
{
    auto const found = std::find(list.begin(), list.end(), connection);
    if (found == list.end()) return;
    *found = list.back();
    list.pop_back();
}

TEST_P(PinList, OfAHubIsEmptiedFromEitherEndAndFromTheMiddle)
{
    struct Order
    {
        char const* name;
        std::size_t (*next)(std::size_t size);
    };
    for (Order const& order : {Order{"front", [](std::size_t) { return std::size_t{0}; }},
                               Order{"back", [](std::size_t size) { return size - 1; }},
                               Order{"middle", [](std::size_t size) { return size / 2; }}})
    {
        SCOPED_TRACE(order.name);
        std::vector<GraphConnection> many(500);
        std::vector<GraphConnection*> model;
        GraphNodePin hub;
        for (GraphConnection& connection : many)
        {
            side.addTo(hub, &connection);
            model.push_back(&connection);
        }
        while (!model.empty())
        {
            GraphConnection* const gone = model[order.next(model.size())];
            side.removeFrom(hub, gone);
            removeFast(model, gone);
            ASSERT_EQ(listed(list(hub)), model);
        }
    }
}

TEST_P(PinList, OfAHubIsReorderedByTheHostAfterARemoval)
{
    std::vector<GraphConnection> many(100);
    GraphNodePin hub;
    for (GraphConnection& connection : many) side.addTo(hub, &connection);
    side.removeFrom(hub, &many[99]);
    std::vector<GraphConnection*> model = listed(list(hub));
    std::reverse(model.begin(), model.end());
    std::reverse(ref(hub).begin(), ref(hub).end());
    for (std::size_t const gone : {10u, 20u})
    {
        side.removeFrom(hub, &many[gone]);
        removeFast(model, &many[gone]);
        EXPECT_EQ(listed(list(hub)), model);
    }
}

TEST_P(PinList, OfAHubIsReorderedByTheHostBetweenTwoRemovals)
{
    std::vector<GraphConnection> many(100);
    GraphNodePin hub;
    for (GraphConnection& connection : many) side.addTo(hub, &connection);
    Connections& held = ref(hub);
    side.removeFrom(hub, &many[99]);
    std::vector<GraphConnection*> model = listed(list(hub));
    std::reverse(model.begin(), model.end());
    std::reverse(held.begin(), held.end());
    side.removeFrom(hub, &many[10]);
    removeFast(model, &many[10]);
    EXPECT_EQ(listed(list(hub)), model);
}

struct Course
{
    char const* name;
    unsigned int seed;
    unsigned int steps;
    unsigned int connections; ///< few of them give many repeats
    bool handsOut;            ///< whether the host works on the lists by reference
    bool replaces;            ///< whether lists are set and pins copied
};

/// A pin and, for each of its lists, what should stand in it.
class ModelledPin
{
public:
    explicit ModelledPin(Course const& course)
        : course_(course),
          random_(course.seed),
          pool_(course.connections),
          pin_(std::make_unique<GraphNodePin>())
    {}

    void step()
    {
        unsigned int const side = below(2);
        if (stepNumber_++ % 250 == 0) pickTargets();
        unsigned int const kind = below(100);
        if (course_.handsOut && kind < 4)
            changeByReference(side);
        else if (course_.replaces && kind < 6)
            replace(side);
        else
            addOrRemove(side);
    }

    ::testing::AssertionResult holds() const
    {
        for (unsigned int side = 0; side < 2; ++side)
        {
            Connections const& list = sides[side].listOf(*pin_);
            std::vector<GraphConnection*> const& model = model_[side];
            if (list.size() != model.size() || !std::equal(model.begin(), model.end(), list.begin()))
                return ::testing::AssertionFailure() << sides[side].name << " list is not as it should be";
        }
        if (pin_->getNumConnections() != model_[0].size() + model_[1].size())
            return ::testing::AssertionFailure() << "the count is not that of the lists";
        return ::testing::AssertionSuccess();
    }

    std::size_t largest() const { return largest_; }

private:
    // Not a distribution of the standard library: those differ between platforms.
    unsigned int below(unsigned int bound) { return static_cast<unsigned int>(random_() % bound); }

    GraphConnection* anyConnection() { return &pool_[below(course_.connections)]; }

    void pickTargets()
    {
        static constexpr std::size_t targets[] = {0, 1, 2, 3, 8, 40, 150, 500};
        for (std::size_t& target : target_) target = targets[below(8)];
    }

    void addOrRemove(unsigned int side)
    {
        std::vector<GraphConnection*>& model = model_[side];
        bool const grow = model.size() < target_[side] ? below(8) != 0 : below(8) == 0;
        // Long lists would never be reached by single steps.
        unsigned int const times = model.size() < 40 && target_[side] < 40 ? 1 : 1 + below(8);
        for (unsigned int i = 0; i < times; ++i)
        {
            GraphConnection* connection = anyConnection();
            if (grow)
            {
                if (model.size() >= 500) return;
                sides[side].addTo(*pin_, connection);
                model.push_back(connection);
                largest_ = std::max(largest_, model.size());
            }
            else
            {
                bool const present = !model.empty() && below(8) != 0;
                if (present) connection = model[below(static_cast<unsigned int>(model.size()))];
                sides[side].removeFrom(*pin_, connection);
                removeFast(model, connection);
            }
        }
    }

    // Sometimes through a reference that was taken before, maybe in an earlier step.
    void changeByReference(unsigned int side)
    {
        if (held_[side] == nullptr || below(2) == 0) held_[side] = &sides[side].refOf(*pin_);
        Connections& list = *held_[side];
        std::vector<GraphConnection*>& model = model_[side];
        switch (below(4))
        {
        case 0:
            std::reverse(list.begin(), list.end());
            std::reverse(model.begin(), model.end());
            break;
        case 1:
            for (unsigned int i = 1; i < list.size(); ++i)
            {
                unsigned int const other = below(i + 1);
                std::swap(list[i], list[other]);
                std::swap(model[i], model[other]);
            }
            break;
        case 2:
            if (!model.empty())
            {
                unsigned int const index = below(list.size());
                list[index] = model[index] = anyConnection();
            }
            break;
        default:
            GraphConnection* const connection = anyConnection();
            EXPECT_EQ(list.removeAll(connection), std::erase(model, connection));
        }
    }

    void replace(unsigned int side)
    {
        switch (below(4))
        {
        case 0:
        {
            Connections given;
            std::vector<GraphConnection*>& model = model_[side];
            if (!model.empty()) std::rotate(model.begin(), model.begin() + 1, model.end());
            for (GraphConnection* connection : model) given.append(connection);
            sides[side].setOf(*pin_, given);
            break;
        }
        case 1:
            sides[side].setOf(*pin_, sides[1 - side].listOf(*pin_));
            model_[side] = model_[1 - side];
            break;
        case 2:
            pin_ = std::make_unique<GraphNodePin>(*pin_);
            held_ = {};
            break;
        default:
            auto target = std::make_unique<GraphNodePin>();
            for (unsigned int i = below(20); i > 0; --i) sides[side].addTo(*target, anyConnection());
            sides[side].removeFrom(*target, anyConnection());
            *target = *pin_;
            // The original goes on changing for a moment: the copy must not notice.
            sides[side].addTo(*pin_, anyConnection());
            sides[side].removeFrom(*pin_, anyConnection());
            pin_ = std::move(target);
            held_ = {};
        }
    }

    Course course_;
    std::mt19937 random_;
    std::vector<GraphConnection> pool_;
    std::unique_ptr<GraphNodePin> pin_;
    std::array<std::vector<GraphConnection*>, 2> model_;
    std::array<Connections*, 2> held_{};
    std::array<std::size_t, 2> target_{};
    std::size_t largest_ = 0;
    unsigned int stepNumber_ = 0;
};

class PinListsModel : public ::testing::TestWithParam<Course>
{
};

TEST_P(PinListsModel, EveryStepLeavesTheOrderOfTheNaiveLists)
{
    Course const& course = GetParam();
    ModelledPin pin(course);
    for (unsigned int i = 0; i < course.steps; ++i)
    {
        pin.step();
        ASSERT_TRUE(pin.holds()) << "after step " << i;
    }
    EXPECT_GT(pin.largest(), 400u);
}

INSTANTIATE_TEST_SUITE_P(Courses, PinListsModel,
                         ::testing::Values(Course{"FewRepeats", 1, 8000, 2000, false, false},
                                           Course{"SomeRepeats", 2, 8000, 300, false, false},
                                           Course{"ManyRepeats", 3, 8000, 12, false, false},
                                           Course{"TwoConnections", 4, 8000, 2, false, false},
                                           Course{"FewRepeatsReplaced", 5, 8000, 2000, false, true},
                                           Course{"ManyRepeatsReplaced", 6, 8000, 12, false, true},
                                           Course{"FewRepeatsHandedOut", 7, 8000, 2000, true, false},
                                           Course{"ManyRepeatsHandedOut", 8, 8000, 12, true, false},
                                           Course{"FewRepeatsAllKinds", 9, 8000, 2000, true, true},
                                           Course{"SomeRepeatsAllKinds", 10, 8000, 100, true, true},
                                           Course{"ManyRepeatsAllKinds", 11, 8000, 12, true, true}),
                         nameOf<Course>);

} // namespace

} // namespace kestrel::graph::test
