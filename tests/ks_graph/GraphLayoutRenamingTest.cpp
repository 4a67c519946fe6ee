#include <ks_graph/GraphLayout.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using Color = Color4<float>;
using Dictionary = std::map<KS_String const, KS_String>;
using Names = Array<KS_String, _Wa>;
using Pair = Tuple2<float, float>;
using Renaming = std::function<void(GraphLayout&)>;

// ---- The three operations

Renaming text(KS_String const& from, KS_String const& to)
{
    return [=](GraphLayout& layout) { layout.replaceTxtInNames(from, to); };
}

Renaming prefix(KS_String const& oldPrefix, KS_String const& newPrefix)
{
    return [=](GraphLayout& layout) { layout.replacePrefixInNames(oldPrefix, newPrefix); };
}

Renaming dictionary(Dictionary const& names)
{
    return [=](GraphLayout& layout) { layout.applyDictionary(names); };
}

// ---- Layouts as texts

/// One of the eight kinds of value, each of which can tell 0 from 1.
struct Kind
{
    char const* name;
    void (*insert)(GraphLayout& layout, KS_String const& name, int value);
    std::optional<int> (*find)(GraphLayout const& layout, KS_String const& name);
};

int numberOf(Pair const& position)
{
    return static_cast<int>(position.first);
}

int numberOf(Color const& color)
{
    return static_cast<int>(color.blue);
}

int numberOf(bool flag)
{
    return flag ? 1 : 0;
}

template <class T>
T valueOf(int number)
{
    if constexpr (std::is_same_v<T, Pair>)
        return Pair(static_cast<float>(number), -1);
    else if constexpr (std::is_same_v<T, Color>)
        return Color(0, 0, static_cast<float>(number), 0.5f);
    else
        return number != 0;
}

template <class T, void (GraphLayout::*insertOperation)(KS_String const&, T const&),
          Optional<T> (GraphLayout::*lookUpOperation)(KS_String const&) const>
constexpr Kind kindOf(char const* kindName)
{
    return {kindName,
            [](GraphLayout& layout, KS_String const& name, int number)
            { (layout.*insertOperation)(name, valueOf<T>(number)); },
            [](GraphLayout const& layout, KS_String const& name)
            {
                Optional<T> const value = (layout.*lookUpOperation)(name);
                return value ? std::optional(numberOf(*value)) : std::nullopt;
            }};
}

using L = GraphLayout;
Kind const kinds[] = {
    kindOf<Pair, &L::insertNodePosition, &L::getPositionByNodeName>("node position"),
    kindOf<Color, &L::insertNodeColor, &L::getColorByNodeName>("node colour"),
    kindOf<bool, &L::insertNodeCollapsed, &L::getCollapsedByNodeName>("node collapsed"),
    kindOf<bool, &L::insertNodeVisible, &L::getVisibleByNodeName>("node visible"),
    kindOf<bool, &L::insertNodeHorizontalInputs, &L::getHorizontalInputsByNodeName>("horizontal inputs"),
    kindOf<bool, &L::insertNodeHorizontalOutputs, &L::getHorizontalOutputsByNodeName>("horizontal outputs"),
    kindOf<bool, &L::insertConnectionVisible, &L::getVisibleByConnectionName>("connection visible"),
    kindOf<bool, &L::insertConnectionBezier, &L::getBezierByConnectionName>("connection bezier"),
};
Kind const& positions = kinds[0];

using Records = std::map<std::string, int>;

GraphLayout layoutOf(Kind const& kind, Records const& records)
{
    GraphLayout layout;
    for (auto const& [name, number] : records) kind.insert(layout, KS_String(std::string_view(name)), number);
    return layout;
}

/// All of that kind in the layout, in ascending order of the names.
Records recordsOf(Kind const& kind, GraphLayout const& layout)
{
    Names names;
    layout.getAllNodeNames(names);
    layout.getAllConnectionNames(names);
    Records records;
    for (KS_String const& name : names)
        if (auto const number = kind.find(layout, name)) records.emplace(name, *number);
    return records;
}

/// On each kind of value by itself, and nothing of another kind or note comes of it.
void expectRenamed(Records const& before, Renaming const& rename, Records const& after)
{
    for (Kind const& kind : kinds)
    {
        SCOPED_TRACE(kind.name);
        GraphLayout layout = layoutOf(kind, before);
        rename(layout);
        EXPECT_EQ(recordsOf(kind, layout), after);
        EXPECT_TRUE(layout == layoutOf(kind, after));
    }
}

void expectUnchanged(Records const& records, Renaming const& rename)
{
    expectRenamed(records, rename, records);
}

using Owners = std::vector<std::string>;

GraphLayout layoutOfNotes(Owners const& owners)
{
    GraphLayout layout;
    for (std::string const& owner : owners)
        layout.addNote(KS_String(std::string_view(owner)), "root.a", Pair(1, 2), Pair(3, 4), Color(),
                       Color());
    return layout;
}

Owners ownersOf(GraphLayout const& layout)
{
    Owners owners;
    for (NoteDesc const& note : layout.getNotes()) owners.emplace_back(note.getOwnerName());
    return owners;
}

/// And nothing of the notes but their owners.
void expectOwners(Owners const& before, Renaming const& rename, Owners const& after)
{
    GraphLayout layout = layoutOfNotes(before);
    rename(layout);
    EXPECT_EQ(ownersOf(layout), after);
    EXPECT_TRUE(layout == layoutOfNotes(after));
}

// ---- replaceTxtInNames

TEST(ReplaceText, RewritesEveryOccurrence)
{
    expectRenamed({{"banana", 1}}, text("a", "o"), {{"bonono", 1}});
    expectRenamed({{"root.a.root", 1}, {"roots", 0}}, text("root", "r"), {{"r.a.r", 1}, {"rs", 0}});
    expectRenamed({{"a.out > a.in", 1}}, text("a.", "b."), {{"b.out > b.in", 1}});
}

TEST(ReplaceText, LeavesNamesWithoutAnOccurrenceAlone)
{
    expectUnchanged({{"", 1}, {"Root", 0}, {"roo", 1}}, text("root", "x"));
    expectRenamed({{"a", 1}, {"b", 0}}, text("b", "c"), {{"a", 1}, {"c", 0}});
}

TEST(ReplaceText, OfNothingChangesNothing)
{
    expectUnchanged({{"", 1}, {"a", 0}}, text("", "x"));
    expectUnchanged({{"", 1}, {"a", 0}}, text("", ""));
}

TEST(ReplaceText, ByNothingShortensNames)
{
    expectRenamed({{"root.a", 1}}, text("root.", ""), {{"a", 1}});
    expectRenamed({{"aa", 1}}, text("a", ""), {{"", 1}});
}

TEST(ReplaceText, LooksIntoNothingThatItHasPutIn)
{
    expectRenamed({{"banana", 1}}, text("a", "aa"), {{"baanaanaa", 1}});
    expectRenamed({{"a.b", 1}}, text(".", ".x."), {{"a.x.b", 1}});
    expectRenamed({{"aaa", 1}}, text("aa", "a"), {{"aa", 1}});
}

TEST(ReplaceText, CarriesAValueAlongNamesThatTheReplacementLengthens)
{
    expectRenamed({{"a", 0}, {"aa", 1}}, text("a", "aa"), {{"aaaa", 0}});
}

TEST(ReplaceText, ThatMakesTwoNamesOneKeepsTheValueThatCameLast)
{
    expectRenamed({{"a.x", 0}, {"b.x", 1}}, text("a", "b"), {{"b.x", 0}});
    expectRenamed({{"axx", 0}, {"xax", 1}, {"xxa", 0}, {"xxx", 1}}, text("a", "x"), {{"xxx", 0}});
    expectRenamed({{"ab", 0}, {"b", 1}, {"ba", 1}}, text("a", ""), {{"b", 1}});
}

TEST(ReplaceText, RewritesTheOwnersOfNotes)
{
    expectOwners({"root.a", "other", "root.root", "", "root.a"}, text("root", "r"),
                 {"r.a", "other", "r.r", "", "r.a"});
    expectOwners({"a"}, text("", "x"), {"a"});
    expectOwners({"a", "aa"}, text("a", "aa"), {"aa", "aaaa"});
}

// ---- replacePrefixInNames

TEST(ReplacePrefix, RewritesTheFrontOfANameOnly)
{
    expectRenamed({{"root.a.node1", 1}, {"root.x", 0}}, prefix("root.a", "root.b"),
                  {{"root.b.node1", 1}, {"root.x", 0}});
    expectRenamed({{"a.a.a", 1}}, prefix("a.", "b."), {{"b.a.a", 1}});
    expectRenamed({{"a.out > a.in", 1}}, prefix("a.", "b."), {{"b.out > a.in", 1}});
    expectUnchanged({{"x.root.a", 1}, {"Root.a", 0}, {"roo", 1}, {"", 0}}, prefix("root", "x"));
}

TEST(ReplacePrefix, NeedNotEndAtADot)
{
    expectRenamed({{"root.a", 1}, {"root.ab", 0}, {"root.a.b", 1}}, prefix("root.a", "root.c"),
                  {{"root.c", 1}, {"root.c.b", 1}, {"root.cb", 0}});
}

TEST(ReplacePrefix, IsReplacedWhereItIsTheWholeName)
{
    expectRenamed({{"a", 1}}, prefix("a", "b"), {{"b", 1}});
    expectRenamed({{"a", 1}}, prefix("a", ""), {{"", 1}});
    expectRenamed({{"", 1}}, prefix("", "b"), {{"b", 1}});
}

TEST(ReplacePrefix, ThatIsEmptyIsInFrontOfEveryName)
{
    expectRenamed({{"", 0}, {"a", 1}, {"root.b", 0}}, prefix("", "x."),
                  {{"x.", 0}, {"x.a", 1}, {"x.root.b", 0}});
}

TEST(ReplacePrefix, ByNothingShortensNames)
{
    expectRenamed({{"root.a", 1}, {"root.root.b", 0}, {"rest", 1}}, prefix("root.", ""),
                  {{"a", 1}, {"rest", 1}, {"root.b", 0}});
}

TEST(ReplacePrefix, ThatTheNewOneBeginsWithIsReplacedOnce)
{
    expectRenamed({{"a", 1}, {"a.b", 0}}, prefix("a", "a.c"), {{"a.c", 1}, {"a.c.b", 0}});
    expectRenamed({{"a", 1}}, prefix("a", "aa"), {{"aa", 1}});
}

TEST(ReplacePrefix, CarriesAValueAlongNamesThatTheNewOneLengthens)
{
    expectRenamed({{"a", 0}, {"aa", 1}, {"aaa", 1}}, prefix("a", "aa"), {{"aaaa", 0}});
    expectRenamed({{"", 0}, {"a", 1}, {"ab", 1}}, prefix("", "a"), {{"aa", 0}, {"aab", 1}});
}

TEST(ReplacePrefix, ThatMakesTwoNamesOneKeepsTheValueThatCameLast)
{
    expectRenamed({{"a.x", 0}, {"b.x", 1}}, prefix("a", "b"), {{"b.x", 0}});
    expectRenamed({{"a.x", 0}, {"b.x", 1}}, prefix("b", "a"), {{"a.x", 1}});
    expectRenamed({{"aa", 0}, {"aaa", 1}}, prefix("a", ""), {{"a", 0}, {"aa", 1}});
}

TEST(ReplacePrefix, RewritesTheOwnersOfNotes)
{
    expectOwners({"root.a", "root.a.b", "root.x", "x.root.a", "", "root.ab"}, prefix("root.a", "root.b"),
                 {"root.b", "root.b.b", "root.x", "x.root.a", "", "root.bb"});
    expectOwners({"", "a"}, prefix("", "x"), {"x", "xa"});
    expectOwners({"a", "aa"}, prefix("a", "aa"), {"aa", "aaa"});
}

// ---- applyDictionary

TEST(ApplyDictionary, RewritesWholeNamesOnly)
{
    expectRenamed({{"root.a", 1}, {"root.a.b", 0}, {"root", 1}, {"root.A", 0}, {"x.root.a", 1}},
                  dictionary({{"root.a", "n"}, {"a", "m"}}),
                  {{"n", 1}, {"root", 1}, {"root.A", 0}, {"root.a.b", 0}, {"x.root.a", 1}});
}

TEST(ApplyDictionary, ThatIsEmptyOrKnowsNoNameChangesNothing)
{
    expectUnchanged({{"a", 1}, {"", 0}}, dictionary({}));
    expectUnchanged({{"a", 1}, {"", 0}}, dictionary({{"b", "c"}, {"A", "a"}}));
}

TEST(ApplyDictionary, MayNameTheEmptyName)
{
    expectRenamed({{"", 1}}, dictionary({{"", "a"}}), {{"a", 1}});
    expectRenamed({{"a", 1}}, dictionary({{"a", ""}}), {{"", 1}});
}

TEST(ApplyDictionary, MovesAValueOverTheOneOfANameInUse)
{
    expectRenamed({{"a", 0}, {"b", 1}}, dictionary({{"a", "b"}}), {{"b", 0}});
    expectRenamed({{"a", 0}, {"b", 1}}, dictionary({{"b", "a"}}), {{"a", 1}});
    expectRenamed({{"a", 0}, {"b", 0}, {"c", 1}}, dictionary({{"a", "x"}, {"b", "x"}, {"c", "x"}}),
                  {{"x", 1}});
}

TEST(ApplyDictionary, CarriesAValueAlongAChainInAscendingOrder)
{
    expectRenamed({{"a", 0}, {"b", 1}}, dictionary({{"a", "b"}, {"b", "c"}}), {{"c", 0}});
    expectRenamed({{"a", 1}, {"b", 0}, {"c", 0}}, dictionary({{"a", "b"}, {"b", "c"}, {"c", "d"}}),
                  {{"d", 1}});
}

TEST(ApplyDictionary, ShiftsValuesAlongAChainInDescendingOrder)
{
    expectRenamed({{"b", 0}, {"c", 1}}, dictionary({{"c", "b"}, {"b", "a"}}), {{"a", 0}, {"b", 1}});
    expectRenamed({{"b", 1}, {"c", 0}, {"d", 1}}, dictionary({{"b", "a"}, {"c", "b"}, {"d", "c"}}),
                  {{"a", 1}, {"b", 0}, {"c", 1}});
}

TEST(ApplyDictionary, CarriesNothingAlongAChainToANameThatWasNotThere)
{
    expectRenamed({{"a", 1}}, dictionary({{"a", "b"}, {"b", "c"}}), {{"b", 1}});
}

TEST(ApplyDictionary, LeavesOneOfTwoNamesThatItSwaps)
{
    expectRenamed({{"a", 0}, {"b", 1}}, dictionary({{"a", "b"}, {"b", "a"}}), {{"a", 0}});
    expectRenamed({{"b", 1}}, dictionary({{"a", "b"}, {"b", "a"}}), {{"a", 1}});
    expectRenamed({{"a", 1}, {"b", 0}, {"c", 0}}, dictionary({{"a", "b"}, {"b", "c"}, {"c", "a"}}),
                  {{"a", 1}});
}

TEST(ApplyDictionary, RewritesTheOwnerOfANoteOnceWhereANameIsCarriedOn)
{
    expectOwners({"a", "b", "c", "d", "a"}, dictionary({{"a", "b"}, {"b", "c"}, {"c", "a"}}),
                 {"b", "c", "a", "d", "b"});
    expectOwners({"a.b", "", "A"}, dictionary({{"a", "x"}, {"b", "x"}}), {"a.b", "", "A"});
    expectOwners({""}, dictionary({{"", "x"}}), {"x"});
}

// ---- What the three have in common

TEST(Renaming, ToAnEqualNameKeepsTheValue)
{
    Records const records = {{"", 1}, {"a", 0}, {"a.b", 1}, {"b", 0}};
    for (Renaming const& rename : {text("a", "a"), text("a.b", "a.b"), prefix("a", "a"), prefix("", ""),
                                   prefix("a.b", "a.b"), dictionary({{"a", "a"}, {"", ""}, {"b", "b"}})})
    {
        expectUnchanged(records, rename);
        expectOwners({"a", "", "a.b", "b"}, rename, {"a", "", "a.b", "b"});
    }
    expectUnchanged({{"aaa", 1}}, text("a", "a"));
}

TEST(Renaming, ToAnEqualNameKeepsAValueThatWasJustMovedThere)
{
    expectRenamed({{"a", 0}, {"b", 1}}, dictionary({{"a", "b"}, {"b", "b"}}), {{"b", 0}});
}

TEST(Renaming, OfAnEmptyLayoutDoesNothing)
{
    for (Renaming const& rename : {text("a", "b"), prefix("", "x"), dictionary({{"", "x"}, {"a", "b"}})})
    {
        GraphLayout layout;
        rename(layout);
        EXPECT_TRUE(layout == GraphLayout());
    }
}

// Each kind has a name that is another kind's new name: were one map's names mixed up with another's, a value
// would be lost or overwritten.
TEST(Renaming, TakesEachKindOfValueForItself)
{
    GraphLayout layout;
    GraphLayout expected;
    Dictionary names;
    for (int i = 0; i < 8; ++i)
    {
        KS_String const name = std::string_view(std::to_string(i));
        KS_String const newName = std::string_view(std::to_string(i == 0 ? 7 : i - 1));
        kinds[i].insert(layout, name, i % 2);
        kinds[i].insert(expected, newName, i % 2);
        names.emplace(name, newName);
    }
    layout.applyDictionary(names);
    EXPECT_TRUE(layout == expected);
}

TEST(Renaming, RewritesValuesAndNotesAlike)
{
    for (Renaming const& rename : {text("old", "new"), prefix("old", "new"), dictionary({{"old", "new"}})})
    {
        GraphLayout layout = layoutOfNotes({"old", "other"});
        GraphLayout expected = layoutOfNotes({"new", "other"});
        for (Kind const& kind : kinds)
        {
            kind.insert(layout, "old", 1);
            kind.insert(layout, "other", 0);
            kind.insert(expected, "new", 1);
            kind.insert(expected, "other", 0);
        }
        rename(layout);
        EXPECT_TRUE(layout == expected);
    }
}

TEST(Renaming, RewritesTheOwnersOfNotesWhoseNodesAreUnknown)
{
    for (Renaming const& rename : {text("a", "b"), prefix("a", "b"), dictionary({{"a", "b"}})})
        expectOwners({"a"}, rename, {"b"});
}

TEST(Renaming, OrdersNamesByUnsignedBytes)
{
    expectRenamed({{"z", 0}, {"\xE9", 1}}, dictionary({{"z", "\xE9"}, {"\xE9", "y"}}), {{"y", 0}});
    expectRenamed({{"z", 0}, {"\xE9", 1}}, dictionary({{"\xE9", "z"}, {"z", "y"}}), {{"y", 0}, {"z", 1}});
}

TEST(Renaming, TakesBytesAbove127AsTheyAre)
{
    expectRenamed({{"n\xC3\xA9.a", 1}, {"ne", 0}}, text("\xC3\xA9", "\xFF"), {{"ne", 0}, {"n\xFF.a", 1}});
    expectRenamed({{"n\xC3\xA9.a", 1}, {"n\xC3\xA8", 0}}, prefix("n\xC3\xA9", "\x80"),
                  {{"n\xC3\xA8", 0}, {"\x80.a", 1}});
    expectOwners({"n\xC3\xA9.a", "\xFF"}, prefix("n\xC3\xA9", "\x80"), {"\x80.a", "\xFF"});
}

TEST(Renaming, TakesNamesAsTextAndNotAsFormats)
{
    expectRenamed({{"50%s", 1}}, text("50", "100%d"), {{"100%d%s", 1}});
    expectRenamed({{"50%s", 1}}, prefix("50%", "%n"), {{"%ns", 1}});
}

TEST(Renaming, MayBeRepeatedToAndFro)
{
    Records const records = {{"a.b", 1}, {"a.c", 0}};
    expectUnchanged(records,
                    [](GraphLayout& layout)
                    {
                        for (int i = 0; i < 3; ++i)
                        {
                            layout.replacePrefixInNames("a.", "x.y.");
                            layout.replacePrefixInNames("x.y.", "a.");
                        }
                    });
}

// ---- Arguments that are part of the layout

GraphLayout layoutWithNotesAndNames(Owners const& owners, Records const& records)
{
    GraphLayout layout = layoutOfNotes(owners);
    for (Kind const& kind : kinds)
        for (auto const& [name, number] : records) kind.insert(layout, std::string_view(name), number);
    return layout;
}

void expectAllRenamed(GraphLayout const& layout, Owners const& owners, Records const& records)
{
    EXPECT_EQ(ownersOf(layout), owners);
    EXPECT_TRUE(layout == layoutWithNotesAndNames(owners, records));
}

using RenamingByTwo = void (GraphLayout::*)(KS_String const& from, KS_String const& to);

class RenamingByOwnNames : public ::testing::TestWithParam<RenamingByTwo>
{
};

INSTANTIATE_TEST_SUITE_P(OfTexts, RenamingByOwnNames, ::testing::Values(&GraphLayout::replaceTxtInNames));
INSTANTIATE_TEST_SUITE_P(OfPrefixes, RenamingByOwnNames,
                         ::testing::Values(&GraphLayout::replacePrefixInNames));

TEST_P(RenamingByOwnNames, MayReplaceTheOwnersNameOfANote)
{
    for (unsigned int i = 0; i < 3; ++i)
    {
        GraphLayout layout = layoutWithNotesAndNames({"a.b", "a.b", "a.b"}, {{"a.b", 1}, {"a.b.c", 0}});
        (layout.*GetParam())(layout.getNotes()[i].getOwnerName(), "x");
        expectAllRenamed(layout, {"x", "x", "x"}, {{"x", 1}, {"x.c", 0}});
    }
}

TEST_P(RenamingByOwnNames, MayReplaceByTheOwnersNameOfANote)
{
    for (unsigned int i = 0; i < 3; ++i)
    {
        GraphLayout layout = layoutWithNotesAndNames({"a.b", "a.b", "a.b"}, {{"a", 1}, {"a.c", 0}});
        (layout.*GetParam())("a", layout.getNotes()[i].getOwnerName());
        expectAllRenamed(layout, {"a.b.b", "a.b.b", "a.b.b"}, {{"a.b", 1}, {"a.b.c", 0}});
    }
}

TEST_P(RenamingByOwnNames, MayReplaceTheOwnersNameOfANoteByAnothers)
{
    GraphLayout layout = layoutWithNotesAndNames({"a", "ab", "a", "ab"}, {{"a", 1}});
    (layout.*GetParam())(layout.getNotes()[0].getOwnerName(), layout.getNotes()[1].getOwnerName());
    expectAllRenamed(layout, {"ab", "abb", "ab", "abb"}, {{"ab", 1}});
}

// ---- Against a model

/// The key rewrite in so many words: for each of the keys there were, in their order, find the new name, set
/// the value there and erase the old record.
template <class Rule>
Records rewritten(Records records, Rule newNameOf)
{
    std::vector<std::string> keys;
    for (auto const& record : records) keys.push_back(record.first);
    for (std::string const& key : keys)
    {
        std::string const newName = newNameOf(key);
        if (newName == key) continue;
        records[newName] = records.at(key);
        records.erase(key);
    }
    return records;
}

std::string withTextReplaced(std::string name, std::string const& from, std::string const& to)
{
    if (from.empty()) return name;
    for (std::size_t at = name.find(from); at != std::string::npos; at = name.find(from, at + to.size()))
        name.replace(at, from.size(), to);
    return name;
}

std::string withPrefixReplaced(std::string const& name, std::string const& from, std::string const& to)
{
    return name.compare(0, from.size(), from) == 0 ? to + name.substr(from.size()) : name;
}

/// Names so short and of so few letters that they meet all the time.
class RandomNames
{
public:
    explicit RandomNames(unsigned int seed) : random_(seed) {}

    unsigned int number(unsigned int below) { return static_cast<unsigned int>(random_() % below); }

    std::string name(unsigned int longest)
    {
        std::string name;
        for (unsigned int length = number(longest + 1); name.size() < length;) name += "ab.\xE9"[number(4)];
        return name;
    }

private:
    std::mt19937 random_;
};

template <class Rule>
void expectAsModel(RandomNames& random, Renaming const& rename, Rule newNameOf)
{
    Records model;
    Owners owners;
    for (int i = 0; i < 12; ++i) model.emplace(random.name(3), i);
    for (int i = 0; i < 4; ++i) owners.push_back(random.name(3));
    GraphLayout layout = layoutOfNotes(owners);
    for (auto const& [name, number] : model) positions.insert(layout, std::string_view(name), number);
    rename(layout);
    std::transform(owners.begin(), owners.end(), owners.begin(), newNameOf);
    EXPECT_EQ(recordsOf(positions, layout), rewritten(model, newNameOf));
    EXPECT_EQ(ownersOf(layout), owners);
}

class RenamingAsModel : public ::testing::TestWithParam<unsigned int>
{
protected:
    static constexpr int rounds = 500;

    RandomNames random{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Seeds, RenamingAsModel, ::testing::Values(1u, 2u, 3u));

TEST_P(RenamingAsModel, OfTexts)
{
    for (int round = 0; round < rounds && !HasFailure(); ++round)
    {
        std::string const from = random.name(2);
        std::string const to = random.name(3);
        SCOPED_TRACE(from + " to " + to);
        expectAsModel(random, text(std::string_view(from), std::string_view(to)),
                      [&](std::string const& name) { return withTextReplaced(name, from, to); });
    }
}

TEST_P(RenamingAsModel, OfPrefixes)
{
    for (int round = 0; round < rounds && !HasFailure(); ++round)
    {
        std::string const from = random.name(2);
        std::string const to = random.name(3);
        SCOPED_TRACE(from + " to " + to);
        expectAsModel(random, prefix(std::string_view(from), std::string_view(to)),
                      [&](std::string const& name) { return withPrefixReplaced(name, from, to); });
    }
}

TEST_P(RenamingAsModel, OfADictionary)
{
    for (int round = 0; round < rounds && !HasFailure(); ++round)
    {
        std::map<std::string, std::string> names;
        for (int i = 0; i < 8; ++i) names.emplace(random.name(3), random.name(3));
        Dictionary const same(names.begin(), names.end());
        expectAsModel(random, dictionary(same),
                      [&](std::string const& name)
                      {
                          auto const found = names.find(name);
                          return found != names.end() ? found->second : name;
                      });
    }
}

// ---- Large layouts

constexpr unsigned int many = 100000;

KS_String numbered(char const* stem, unsigned int number)
{
    KS_String name;
    name.format("%s%06u", stem, number);
    return name;
}

/// The value of each name is its number in 0..many - 1, whatever number the names begin with.
GraphLayout largeLayout(char const* stem, unsigned int firstNumber)
{
    GraphLayout layout;
    for (unsigned int i = 0; i < many; ++i)
        positions.insert(layout, numbered(stem, firstNumber + i), static_cast<int>(i));
    return layout;
}

void expectLarge(GraphLayout const& layout, char const* stem, unsigned int firstNumber)
{
    Names names;
    layout.getAllNodeNames(names);
    ASSERT_EQ(names.size(), many);
    for (unsigned int i = 0; i < many; i += many / 100 - 1)
    {
        EXPECT_EQ(names[i], numbered(stem, firstNumber + i));
        EXPECT_EQ(positions.find(layout, names[i]), static_cast<int>(i));
    }
}

TEST(RenamingOfManyNames, ReplacesATextInAllOfThem)
{
    GraphLayout layout = largeLayout("root.n", 0);
    layout.replaceTxtInNames("root.n", "root.node");
    expectLarge(layout, "root.node", 0);
}

TEST(RenamingOfManyNames, ReplacesAPrefixOfAllOfThem)
{
    GraphLayout layout = largeLayout("root.n", 0);
    layout.replacePrefixInNames("root", "a.b");
    expectLarge(layout, "a.b.n", 0);
}

Dictionary movingEachBy(int distance)
{
    Dictionary names;
    for (unsigned int i = 1; i <= many; ++i)
        names.emplace(numbered("n", i), numbered("n", i + static_cast<unsigned int>(distance)));
    return names;
}

TEST(RenamingOfManyNames, MovesEachValueToTheNameBefore)
{
    GraphLayout layout = largeLayout("n", 1);
    layout.applyDictionary(movingEachBy(-1));
    expectLarge(layout, "n", 0);
}

TEST(RenamingOfManyNames, CarriesTheFirstValueAlongAChainThroughAllOfThem)
{
    GraphLayout layout = largeLayout("n", 1);
    layout.applyDictionary(movingEachBy(+1));
    EXPECT_EQ(recordsOf(positions, layout), (Records{{std::string(numbered("n", many + 1)), 0}}));
}

} // namespace

} // namespace kestrel::graph::test
