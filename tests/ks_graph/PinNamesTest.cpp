#include <ks_graph/PinNames.h>

#include <ks_graph/GraphNodePin.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <map>
#include <random>
#include <string>
#include <string_view>

namespace kestrel::graph::test
{

namespace
{

using Entries = std::map<std::string, GraphNodePin*>;

Entries entriesOf(PinNames const& names)
{
    Entries entries;
    names.forEach([&entries](std::string_view name, GraphNodePin* pin)
                  { EXPECT_TRUE(entries.emplace(name, pin).second) << name << " is there twice"; });
    return entries;
}

class PinNamesBesideAMap : public ::testing::Test
{
protected:
    void insert(std::string const& name, GraphNodePin* pin)
    {
        EXPECT_EQ(names.insert(std::string_view(name), pin), model.emplace(name, pin).second);
    }

    void erase(std::string const& name)
    {
        EXPECT_EQ(names.erase(std::string_view(name)), model.erase(name) != 0);
    }

    void rekey(std::string const& oldName, std::string const& newName)
    {
        auto const entry = model.find(oldName);
        bool const isKnown = entry != model.end();
        EXPECT_EQ(names.rekey(HashedText(oldName), PinNames::Key(std::string_view(newName))), isKnown);
        if (!isKnown) return;
        GraphNodePin* const pin = entry->second;
        model.erase(entry);
        model.emplace(newName, pin);
    }

    PinNames names;
    Entries model;
    std::array<GraphNodePin, 4> pins;
};

TEST_F(PinNamesBesideAMap, HoldWhatTheMapHoldsAfterEachOfManyChanges)
{
    std::mt19937 random(7);
    auto const anyName = [&random] { return std::string(1, static_cast<char>('a' + random() % 12)); };
    for (int step = 0; step < 4000; ++step)
    {
        std::string const name = anyName();
        unsigned int const kind = random() % 4;
        if (kind == 0) insert(name, &pins[random() % pins.size()]);
        if (kind == 1) erase(name);
        if (kind > 1) rekey(name, anyName());
        std::string const asked = anyName();
        auto const entry = model.find(asked);
        ASSERT_EQ(names.find(std::string_view(asked)), entry != model.end() ? entry->second : nullptr)
            << step;
        ASSERT_EQ(entriesOf(names), model) << step;
    }
}

TEST_F(PinNamesBesideAMap, APinThatIsNamedAtOnceLeavesNothingUnderItsFirstName)
{
    insert("first", &pins[0]);
    rekey("first", "second");
    rekey("second", "third");
    EXPECT_EQ(entriesOf(names), model);
    EXPECT_EQ(names.find(std::string_view("first")), nullptr);
    EXPECT_EQ(names.find(std::string_view("third")), &pins[0]);
    insert("first", &pins[1]);
    EXPECT_EQ(entriesOf(names), model);
}

TEST_F(PinNamesBesideAMap, ATakenNameKeepsItsPinWhicheverOfTheTwoIsNew)
{
    insert("old", &pins[0]);
    insert("new", &pins[1]);
    rekey("new", "old");
    EXPECT_EQ(names.find(std::string_view("old")), &pins[0]);
    rekey("old", "moved"); // of the one that has the name
    EXPECT_EQ(names.find(std::string_view("moved")), &pins[0]);
    EXPECT_EQ(entriesOf(names), model);
}

TEST_F(PinNamesBesideAMap, ANewNameThatWasTakenStaysForgottenWhenItBecomesFree)
{
    insert("old", &pins[0]);
    insert("new", &pins[1]);
    rekey("new", "old");
    erase("old");
    EXPECT_EQ(names.find(std::string_view("old")), nullptr);
    EXPECT_EQ(entriesOf(names), model);
}

TEST_F(PinNamesBesideAMap, ACopyHoldsTheSame)
{
    insert("a", &pins[0]);
    insert("b", &pins[1]);
    PinNames const copy(names);
    EXPECT_EQ(entriesOf(copy), model);
}

} // namespace

} // namespace kestrel::graph::test
