#include <foundation/KS_Class.h>
#include <ks_graph/GraphLayout.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using namespace std::string_view_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Color = Color4<float>;
using Pair = Tuple2<float, float>;
using Notes = Array<NoteDesc, _Wa>;
using Names = Array<KS_String, _Wa>;

static_assert(std::is_same_v<decltype(GraphLayout::VERSION), unsigned int const>);
static_assert(std::is_polymorphic_v<GraphLayout>);
static_assert(std::has_virtual_destructor_v<GraphLayout>);
static_assert(!std::is_base_of_v<KS_Class, GraphLayout>);

using Read = GraphLayout const&;
static_assert(std::is_same_v<decltype(std::declval<Read>().getPositionByNodeName("")), Optional<Pair>>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getColorByNodeName("")), Optional<Color>>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getVisibleByNodeName("")), Optional<bool>>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getBezierByConnectionName("")), Optional<bool>>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getTopLeftCorner()), Pair>);
static_assert(std::is_same_v<decltype(std::declval<Read>() == std::declval<Read>()), bool>);
static_assert(std::is_same_v<decltype(std::declval<Read>().getNotes()), Notes const&>);
static_assert(std::is_same_v<decltype(std::declval<GraphLayout&>().refNotes()), Notes&>);

constexpr float largest = std::numeric_limits<float>::max();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

template <class T>
std::optional<T> valueOf(Optional<T> const& view)
{
    return view ? std::optional<T>(*view) : std::nullopt;
}

std::vector<std::string> texts(Names const& names)
{
    return std::vector<std::string>(names.begin(), names.end());
}

using Gather = bool (GraphLayout::*)(Names&) const;

std::vector<std::string> gathered(GraphLayout const& layout, Gather gather)
{
    Names names;
    bool const any = (layout.*gather)(names);
    EXPECT_EQ(any, !names.isEmpty());
    return texts(names);
}

std::vector<std::string> nodeNames(GraphLayout const& layout)
{
    return gathered(layout, &GraphLayout::getAllNodeNames);
}

std::vector<std::string> connectionNames(GraphLayout const& layout)
{
    return gathered(layout, &GraphLayout::getAllConnectionNames);
}

std::vector<std::string> involvedNodeNames(GraphLayout const& layout)
{
    return gathered(layout, &GraphLayout::getInvolvedNodeNames);
}

NoteDesc noteOf(char const* owner, char const* text = "text")
{
    NoteDesc note;
    note.setOwnerName(owner);
    note.setText(text);
    return note;
}

/// The notes as "owner: text".
std::vector<std::string> notesOf(GraphLayout const& layout)
{
    std::vector<std::string> lines;
    for (NoteDesc const& note : layout.getNotes())
        lines.push_back(std::string(note.getOwnerName()) + ": " + note.getText().value_or("-").c_str());
    return lines;
}

Notes listOf(std::vector<NoteDesc> const& notes)
{
    Notes list;
    for (NoteDesc const& note : notes) list.append(note);
    return list;
}

GraphLayout positions(std::vector<std::pair<char const*, Pair>> const& entries)
{
    GraphLayout layout;
    for (auto const& [name, position] : entries) layout.insertNodePosition(name, position);
    return layout;
}

// -----------------------------------------------------------------------------------------------------------
// What holds for each of the eight kinds of value

/// Two values that a kind of value may have.
template <class T>
struct Sample;

template <>
struct Sample<bool>
{
    static constexpr bool one = true;
    static constexpr bool two = false;
};

template <>
struct Sample<Pair>
{
    static constexpr Pair one{1.5f, -2.0f};
    static constexpr Pair two{1.5f, 2.0f};
};

template <>
struct Sample<Color>
{
    static constexpr Color one{0.1f, 0.2f, 0.3f, 0.4f};
    static constexpr Color two{0.1f, 0.2f, 0.3f, 1.0f};
};

template <class T, void (GraphLayout::*insertOperation)(KS_String const&, T const&),
          Optional<T> (GraphLayout::*lookUpOperation)(KS_String const&) const>
struct Kind
{
    using Value = T;

    static void insert(GraphLayout& layout, KS_String const& name, Value const& value)
    {
        (layout.*insertOperation)(name, value);
    }

    static Optional<Value> view(GraphLayout const& layout, KS_String const& name)
    {
        return (layout.*lookUpOperation)(name);
    }

    static std::optional<Value> find(GraphLayout const& layout, KS_String const& name)
    {
        return valueOf(view(layout, name));
    }
};

using L = GraphLayout;
using NodePosition = Kind<Pair, &L::insertNodePosition, &L::getPositionByNodeName>;
using NodeColor = Kind<Color, &L::insertNodeColor, &L::getColorByNodeName>;
using NodeCollapsed = Kind<bool, &L::insertNodeCollapsed, &L::getCollapsedByNodeName>;
using NodeVisible = Kind<bool, &L::insertNodeVisible, &L::getVisibleByNodeName>;
using NodeHorizontalInputs = Kind<bool, &L::insertNodeHorizontalInputs, &L::getHorizontalInputsByNodeName>;
using NodeHorizontalOutputs = Kind<bool, &L::insertNodeHorizontalOutputs, &L::getHorizontalOutputsByNodeName>;
using ConnectionVisible = Kind<bool, &L::insertConnectionVisible, &L::getVisibleByConnectionName>;
using ConnectionBezier = Kind<bool, &L::insertConnectionBezier, &L::getBezierByConnectionName>;

template <class K>
constexpr bool isOfConnections = std::is_same_v<K, ConnectionVisible> || std::is_same_v<K, ConnectionBezier>;

template <class... K>
int countOf(GraphLayout const& layout, KS_String const& name, ::testing::Types<K...>)
{
    return (0 + ... + (K::view(layout, name) ? 1 : 0));
}

template <class K>
class ValuesOf : public ::testing::Test
{
protected:
    using Value = typename K::Value;

    static GraphLayout layoutWith(KS_String const& name, Value const& value)
    {
        GraphLayout layout;
        K::insert(layout, name, value);
        return layout;
    }

    Value const one = Sample<Value>::one;
    Value const two = Sample<Value>::two;
};

using Kinds = ::testing::Types<NodePosition, NodeColor, NodeCollapsed, NodeVisible, NodeHorizontalInputs,
                               NodeHorizontalOutputs, ConnectionVisible, ConnectionBezier>;

struct KindNames
{
    template <class K>
    static std::string GetName(int)
    {
        if (std::is_same_v<K, NodePosition>) return "NodePosition";
        if (std::is_same_v<K, NodeColor>) return "NodeColor";
        if (std::is_same_v<K, NodeCollapsed>) return "NodeCollapsed";
        if (std::is_same_v<K, NodeVisible>) return "NodeVisible";
        if (std::is_same_v<K, NodeHorizontalInputs>) return "NodeHorizontalInputs";
        if (std::is_same_v<K, NodeHorizontalOutputs>) return "NodeHorizontalOutputs";
        if (std::is_same_v<K, ConnectionVisible>) return "ConnectionVisible";
        return "ConnectionBezier";
    }
};

TYPED_TEST_SUITE(ValuesOf, Kinds, KindNames);

TYPED_TEST(ValuesOf, AreFoundUnderTheirName)
{
    for (auto const& value : {this->one, this->two})
        EXPECT_EQ(TypeParam::find(this->layoutWith("root.a", value), "root.a"), value);
}

TYPED_TEST(ValuesOf, AreAbsentUnderAnyOtherName)
{
    GraphLayout const layout = this->layoutWith("root.a", this->one);
    for (char const* name : {"", "root", "root.", "root.A", "root.aa", "root.a ", "a"})
        EXPECT_FALSE(TypeParam::view(layout, name).has_value()) << name;
    EXPECT_FALSE(TypeParam::view(GraphLayout(), "root.a").has_value());
}

TYPED_TEST(ValuesOf, ThatCameFirstStay)
{
    GraphLayout layout = this->layoutWith("a", this->two);
    TypeParam::insert(layout, "a", this->one);
    EXPECT_EQ(TypeParam::find(layout, "a"), this->two);
    EXPECT_TRUE(layout == this->layoutWith("a", this->two));
}

TYPED_TEST(ValuesOf, OfEachNameAreTheirOwn)
{
    GraphLayout layout = this->layoutWith("a", this->one);
    TypeParam::insert(layout, "b", this->two);
    TypeParam::insert(layout, "", this->two);
    EXPECT_EQ(TypeParam::find(layout, "a"), this->one);
    EXPECT_EQ(TypeParam::find(layout, "b"), this->two);
    EXPECT_EQ(TypeParam::find(layout, ""), this->two);
}

TYPED_TEST(ValuesOf, AreOfOneKindOnly)
{
    GraphLayout const layout = this->layoutWith("a", this->one);
    EXPECT_EQ(countOf(layout, "a", Kinds()), 1);
    EXPECT_TRUE(layout.getNotes().isEmpty());
}

TYPED_TEST(ValuesOf, EndTheirNameAtItsFirstNul)
{
    GraphLayout layout = this->layoutWith("a\0b"sv, this->one);
    TypeParam::insert(layout, "a\0c"sv, this->two);
    EXPECT_EQ(TypeParam::find(layout, "a"), this->one);
    EXPECT_EQ(TypeParam::find(layout, "a\0d"sv), this->one);
}

TYPED_TEST(ValuesOf, AreViewedWhereTheLayoutHoldsThem)
{
    GraphLayout const layout = this->layoutWith("a", this->one);
    GraphLayout const copy(layout);
    EXPECT_EQ(&*TypeParam::view(layout, "a"), &*TypeParam::view(layout, "a"));
    EXPECT_NE(&*TypeParam::view(layout, "a"), &*TypeParam::view(copy, "a"));
}

TYPED_TEST(ValuesOf, MayBeInsertedFromTheLayoutItself)
{
    GraphLayout layout = this->layoutWith("a", this->one);
    TypeParam::insert(layout, "b", *TypeParam::view(layout, "a"));
    EXPECT_EQ(TypeParam::find(layout, "b"), this->one);
}

TYPED_TEST(ValuesOf, AreGatheredByNameOfNodeOrConnection)
{
    GraphLayout const layout = this->layoutWith("a", this->one);
    if (isOfConnections<TypeParam>)
    {
        EXPECT_THAT(connectionNames(layout), ElementsAre("a"));
        EXPECT_THAT(nodeNames(layout), IsEmpty());
    }
    else
    {
        EXPECT_THAT(nodeNames(layout), ElementsAre("a"));
        EXPECT_THAT(connectionNames(layout), IsEmpty());
    }
}

TYPED_TEST(ValuesOf, AreInvolvedOnlyByAPosition)
{
    GraphLayout const layout = this->layoutWith("a", this->one);
    EXPECT_EQ(involvedNodeNames(layout).size(), (std::is_same_v<TypeParam, NodePosition>) ? 1u : 0u);
}

TYPED_TEST(ValuesOf, AreRemovedWithTheirNode)
{
    GraphLayout layout = this->layoutWith("a", this->one);
    TypeParam::insert(layout, "a.b", this->one);
    layout.removeNode("a");
    EXPECT_EQ(TypeParam::view(layout, "a").has_value(), isOfConnections<TypeParam>);
    EXPECT_EQ(TypeParam::find(layout, "a.b"), this->one);
}

TYPED_TEST(ValuesOf, MayBeInsertedAnewOnceTheirNodeIsRemoved)
{
    GraphLayout layout = this->layoutWith("a", this->one);
    layout.removeNode("a");
    TypeParam::insert(layout, "a", this->two);
    EXPECT_EQ(TypeParam::find(layout, "a"), isOfConnections<TypeParam> ? this->one : this->two);
}

TYPED_TEST(ValuesOf, AreCleared)
{
    GraphLayout layout = this->layoutWith("a", this->one);
    layout.clear();
    EXPECT_FALSE(TypeParam::view(layout, "a").has_value());
    EXPECT_TRUE(layout == GraphLayout());
    TypeParam::insert(layout, "a", this->two);
    EXPECT_EQ(TypeParam::find(layout, "a"), this->two);
}

TYPED_TEST(ValuesOf, MakeLayoutsDifferent)
{
    GraphLayout const layout = this->layoutWith("a", this->one);
    GraphLayout more = layout;
    TypeParam::insert(more, "b", this->one);
    for (GraphLayout const& different :
         {GraphLayout(), this->layoutWith("b", this->one), this->layoutWith("a", this->two), more})
    {
        EXPECT_FALSE(layout == different);
        EXPECT_FALSE(different == layout);
        EXPECT_TRUE(layout != different);
    }
    EXPECT_TRUE(layout == layout);
    EXPECT_TRUE(layout == this->layoutWith("a", this->one));
}

TYPED_TEST(ValuesOf, AreEqualInWhateverOrderTheyCame)
{
    GraphLayout ascending = this->layoutWith("a", this->one);
    TypeParam::insert(ascending, "b", this->two);
    GraphLayout descending = this->layoutWith("b", this->two);
    TypeParam::insert(descending, "a", this->one);
    EXPECT_TRUE(ascending == descending);
}

TYPED_TEST(ValuesOf, AreTakenOverFromAnotherLayout)
{
    GraphLayout layout = this->layoutWith("shared", this->one);
    TypeParam::insert(layout, "own", this->one);
    GraphLayout other = this->layoutWith("shared", this->two);
    TypeParam::insert(other, "new", this->two);
    GraphLayout const unchanged = other;
    layout.updateWithOther(other);
    EXPECT_EQ(TypeParam::find(layout, "shared"), this->two);
    EXPECT_EQ(TypeParam::find(layout, "own"), this->one);
    EXPECT_EQ(TypeParam::find(layout, "new"), this->two);
    EXPECT_TRUE(other == unchanged);
}

TYPED_TEST(ValuesOf, StayInAnUpdateWithThemselves)
{
    GraphLayout layout = this->layoutWith("a", this->one);
    TypeParam::insert(layout, "b", this->two);
    GraphLayout const before = layout;
    layout.updateWithOther(layout);
    EXPECT_TRUE(layout == before);
}

TYPED_TEST(ValuesOf, OfACopyAreItsOwn)
{
    auto source = std::make_unique<GraphLayout>(this->layoutWith("a", this->one));
    GraphLayout const copy(*source);
    GraphLayout assigned = this->layoutWith("old", this->two);
    assigned = *source;
    TypeParam::insert(*source, "b", this->one);
    source.reset();
    for (GraphLayout const& layout : {copy, assigned})
    {
        EXPECT_TRUE(layout == this->layoutWith("a", this->one));
        EXPECT_FALSE(TypeParam::view(layout, "old").has_value());
    }
}

TYPED_TEST(ValuesOf, MoveAndLeaveALayoutThatMayBeUsedAgain)
{
    GraphLayout source = this->layoutWith("a", this->one);
    GraphLayout taker(std::move(source));
    EXPECT_TRUE(taker == this->layoutWith("a", this->one));
    source.clear();
    TypeParam::insert(source, "b", this->two);
    EXPECT_TRUE(source == this->layoutWith("b", this->two));
    source = std::move(taker);
    EXPECT_TRUE(source == this->layoutWith("a", this->one));
}

// -----------------------------------------------------------------------------------------------------------
// All values of a name at once

TEST(GraphLayout, IsEmptyAtFirst)
{
    GraphLayout const layout;
    EXPECT_THAT(nodeNames(layout), IsEmpty());
    EXPECT_THAT(connectionNames(layout), IsEmpty());
    EXPECT_THAT(involvedNodeNames(layout), IsEmpty());
    EXPECT_TRUE(layout.getNotes().isEmpty());
}

TEST(GraphLayout, VersionIsTwo)
{
    EXPECT_EQ(GraphLayout::VERSION, 2u);
}

TEST(GraphLayout, FirstInsertedPositionStays)
{
    GraphLayout layout;
    layout.insertNodePosition("a", Pair(1, 2));
    layout.insertNodePosition("a", Pair(3, 4));
    EXPECT_EQ(valueOf(layout.getPositionByNodeName("a")), Pair(1, 2));
}

TEST(GraphLayout, VisibilityOfAnUnknownConnectionIsAbsentAndNotFalse)
{
    GraphLayout layout;
    layout.insertConnectionVisible("a.out > b.in", false);
    EXPECT_FALSE(layout.getVisibleByConnectionName("a.out > c.in").has_value());
    EXPECT_EQ(valueOf(layout.getVisibleByConnectionName("a.out > b.in")), false);
}

TEST(GraphLayout, NodesAndConnectionsOfOneNameAreApart)
{
    GraphLayout layout;
    layout.insertNodeVisible("a", true);
    layout.insertConnectionVisible("a", false);
    EXPECT_EQ(valueOf(layout.getVisibleByNodeName("a")), true);
    EXPECT_EQ(valueOf(layout.getVisibleByConnectionName("a")), false);
}

// Each flag in turn is the only one that is set, so that none may stand in another one's place.
TEST(GraphLayout, InsertNodeStoresEachOfItsValues)
{
    for (int set = 0; set < 4; ++set)
    {
        SCOPED_TRACE(set);
        GraphLayout colored;
        colored.insertNode("a", Pair(1, 2), Color(0.1f, 0.2f, 0.3f, 0.4f), set == 0, set == 1, set == 2,
                           set == 3);
        GraphLayout plain;
        plain.insertNode("a", Pair(1, 2), set == 0, set == 1, set == 2, set == 3);
        EXPECT_EQ(valueOf(colored.getColorByNodeName("a")), Color(0.1f, 0.2f, 0.3f, 0.4f));
        EXPECT_FALSE(plain.getColorByNodeName("a").has_value());
        for (GraphLayout const& layout : {colored, plain})
        {
            EXPECT_EQ(valueOf(layout.getPositionByNodeName("a")), Pair(1, 2));
            EXPECT_EQ(valueOf(layout.getCollapsedByNodeName("a")), set == 0);
            EXPECT_EQ(valueOf(layout.getVisibleByNodeName("a")), set == 1);
            EXPECT_EQ(valueOf(layout.getHorizontalInputsByNodeName("a")), set == 2);
            EXPECT_EQ(valueOf(layout.getHorizontalOutputsByNodeName("a")), set == 3);
            EXPECT_THAT(connectionNames(layout), IsEmpty());
        }
    }
}

TEST(GraphLayout, InsertConnectionStoresBothOfItsValues)
{
    GraphLayout layout;
    layout.insertConnection("a", true, false);
    layout.insertConnection("b", false, true);
    EXPECT_EQ(valueOf(layout.getVisibleByConnectionName("a")), true);
    EXPECT_EQ(valueOf(layout.getBezierByConnectionName("a")), false);
    EXPECT_EQ(valueOf(layout.getVisibleByConnectionName("b")), false);
    EXPECT_EQ(valueOf(layout.getBezierByConnectionName("b")), true);
    EXPECT_THAT(nodeNames(layout), IsEmpty());
}

TEST(GraphLayout, InsertNodeKeepsWhatIsThereAndAddsWhatIsMissing)
{
    GraphLayout layout;
    layout.insertNodePosition("a", Pair(1, 2));
    layout.insertNodeVisible("a", false);
    layout.insertNode("a", Pair(3, 4), Color(1, 1, 1, 1), true, true, true, true);
    GraphLayout expected;
    expected.insertNode("a", Pair(1, 2), Color(1, 1, 1, 1), true, false, true, true);
    EXPECT_TRUE(layout == expected);
}

TEST(GraphLayout, InsertConnectionKeepsWhatIsThereAndAddsWhatIsMissing)
{
    GraphLayout layout;
    layout.insertConnectionBezier("a", false);
    layout.insertConnection("a", true, true);
    GraphLayout expected;
    expected.insertConnection("a", true, false);
    EXPECT_TRUE(layout == expected);
}

// ---- Notes

TEST(LayoutNotes, StandInTheOrderInWhichTheyWereAdded)
{
    GraphLayout layout;
    for (char const* owner : {"b", "a", "c", "a"}) layout.addNote(noteOf(owner));
    EXPECT_THAT(notesOf(layout), ElementsAre("b: text", "a: text", "c: text", "a: text"));
}

TEST(LayoutNotes, AddedByTheirPartsHaveAllOfThem)
{
    GraphLayout layout;
    layout.addNote("a", "text", Pair(1, 2), Pair(3, 4), Color(1, 0, 0, 1), Color(0, 1, 0, 1));
    ASSERT_EQ(layout.getNotes().size(), 1u);
    EXPECT_TRUE(layout.getNotes()[0] ==
                NoteDesc("a", "text", Pair(1, 2), Pair(3, 4), Color(1, 0, 0, 1), Color(0, 1, 0, 1)));
}

TEST(LayoutNotes, AddedAsTheyAreKeepTheirAbsences)
{
    GraphLayout layout;
    layout.addNote(NoteDesc());
    ASSERT_EQ(layout.getNotes().size(), 1u);
    EXPECT_TRUE(layout.getNotes()[0] == NoteDesc());
}

TEST(LayoutNotes, AreCopies)
{
    GraphLayout layout;
    NoteDesc note = noteOf("a");
    layout.addNote(note);
    note.setText("changed");
    EXPECT_THAT(notesOf(layout), ElementsAre("a: text"));
}

TEST(LayoutNotes, MayBeAddedFromTheLayoutItselfWhileItGrows)
{
    GraphLayout layout;
    layout.addNote("a", "text", Pair(1, 2), Pair(3, 4), Color(1, 0, 0, 1), Color(0, 1, 0, 1));
    for (int i = 0; i < 20; ++i)
    {
        layout.addNote(layout.getNotes()[0]);
        NoteDesc const& note = layout.getNotes()[0];
        layout.addNote(note.getOwnerName(), *note.getText(), *note.getPosition(), *note.getSize(),
                       *note.getFirstColor(), *note.getSecondColor());
    }
    EXPECT_EQ(layout.getNotes().size(), 41u);
    NoteDesc const expected("a", "text", Pair(1, 2), Pair(3, 4), Color(1, 0, 0, 1), Color(0, 1, 0, 1));
    for (NoteDesc const& note : layout.getNotes()) EXPECT_TRUE(note == expected);
}

TEST(LayoutNotes, AreOneListForAllThreeAccessors)
{
    GraphLayout layout;
    layout.setNotes(listOf({noteOf("a"), noteOf("b")}));
    EXPECT_THAT(notesOf(layout), ElementsAre("a: text", "b: text"));
    EXPECT_EQ(&layout.getNotes(), &layout.refNotes());
    layout.refNotes()[0].setText("changed");
    layout.refNotes().append(noteOf("c"));
    EXPECT_THAT(notesOf(layout), ElementsAre("a: changed", "b: text", "c: text"));
    layout.setNotes(layout.getNotes());
    EXPECT_THAT(notesOf(layout), ElementsAre("a: changed", "b: text", "c: text"));
    layout.setNotes(Notes());
    EXPECT_THAT(notesOf(layout), IsEmpty());
}

TEST(LayoutNotes, AreClearedAndStayWhenTheirNodeIsRemoved)
{
    GraphLayout layout;
    layout.addNote(noteOf("a"));
    layout.removeNode("a");
    EXPECT_THAT(notesOf(layout), ElementsAre("a: text"));
    layout.clear();
    EXPECT_THAT(notesOf(layout), IsEmpty());
}

TEST(LayoutNotes, MakeLayoutsDifferentByNumberOrderAndContent)
{
    GraphLayout layout;
    layout.setNotes(listOf({noteOf("a"), noteOf("b")}));
    EXPECT_TRUE(layout == GraphLayout(layout));
    for (Notes const& different :
         {Notes(), listOf({noteOf("a")}), listOf({noteOf("b"), noteOf("a")}),
          listOf({noteOf("a"), noteOf("b"), noteOf("b")}), listOf({noteOf("a"), noteOf("b", "other")})})
    {
        GraphLayout other;
        other.setNotes(different);
        EXPECT_FALSE(layout == other);
        EXPECT_FALSE(other == layout);
    }
}

TEST(LayoutNotes, OfAnotherLayoutAreAppendedEvenIfTheyAreThere)
{
    GraphLayout layout;
    layout.setNotes(listOf({noteOf("a"), noteOf("b")}));
    GraphLayout other;
    other.setNotes(listOf({noteOf("c"), noteOf("a")}));
    layout.updateWithOther(other);
    EXPECT_THAT(notesOf(layout), ElementsAre("a: text", "b: text", "c: text", "a: text"));
    EXPECT_THAT(notesOf(other), ElementsAre("c: text", "a: text"));
}

TEST(LayoutNotes, StandTwiceAfterAnUpdateOfTheLayoutWithItself)
{
    GraphLayout layout;
    for (char const* owner : {"a", "b", "c", "d"}) layout.addNote(noteOf(owner));
    layout.updateWithOther(layout);
    EXPECT_THAT(notesOf(layout), ElementsAre("a: text", "b: text", "c: text", "d: text", "a: text", "b: text",
                                             "c: text", "d: text"));
}

TEST(LayoutNotes, OfACopyAreItsOwn)
{
    auto source = std::make_unique<GraphLayout>();
    source->addNote(noteOf("a"));
    GraphLayout const copy(*source);
    GraphLayout assigned;
    assigned.addNote(noteOf("old"));
    assigned = *source;
    source->refNotes()[0].setText("changed");
    source.reset();
    EXPECT_THAT(notesOf(copy), ElementsAre("a: text"));
    EXPECT_THAT(notesOf(assigned), ElementsAre("a: text"));
}

TEST(MoveNotes, GivesTheOwnerToTheNotesThatAreEqual)
{
    GraphLayout layout;
    layout.setNotes(listOf({noteOf("a", "1"), noteOf("a", "2"), noteOf("b", "3")}));
    layout.moveNotes(listOf({noteOf("b", "3"), noteOf("a", "2")}), "new");
    EXPECT_THAT(notesOf(layout), ElementsAre("a: 1", "new: 2", "new: 3"));
}

TEST(MoveNotes, SkipsWhatIsNotFound)
{
    GraphLayout layout;
    layout.setNotes(listOf({noteOf("a", "1")}));
    GraphLayout const before = layout;
    layout.moveNotes(listOf({noteOf("b", "1"), noteOf("a", "2"), NoteDesc()}), "new");
    EXPECT_TRUE(layout == before);
    layout.moveNotes(listOf({noteOf("b", "1"), noteOf("a", "1")}), "new");
    EXPECT_THAT(notesOf(layout), ElementsAre("new: 1"));
}

TEST(MoveNotes, TakesTheFirstOfEqualNotesForEachThatIsGiven)
{
    GraphLayout layout;
    layout.setNotes(listOf({noteOf("a"), noteOf("a"), noteOf("a")}));
    layout.moveNotes(listOf({noteOf("a")}), "new");
    EXPECT_THAT(notesOf(layout), ElementsAre("new: text", "a: text", "a: text"));
    layout.moveNotes(listOf({noteOf("a"), noteOf("a"), noteOf("a")}), "newer");
    EXPECT_THAT(notesOf(layout), ElementsAre("new: text", "newer: text", "newer: text"));
}

TEST(MoveNotes, FindsANoteThatTheSameCallHasMovedByItsNewOwner)
{
    GraphLayout layout;
    layout.setNotes(listOf({noteOf("a"), noteOf("b")}));
    layout.moveNotes(listOf({noteOf("a"), noteOf("b")}), "b");
    EXPECT_THAT(notesOf(layout), ElementsAre("b: text", "b: text"));
    layout.setNotes(listOf({noteOf("a"), noteOf("b")}));
    layout.moveNotes(listOf({noteOf("b"), noteOf("a")}), "a");
    EXPECT_THAT(notesOf(layout), ElementsAre("a: text", "a: text"));
}

TEST(MoveNotes, MayBeGivenTheLayoutsOwnNotesAndOneOfTheirOwners)
{
    GraphLayout layout;
    layout.setNotes(listOf({noteOf("a", "1"), noteOf("b", "2"), noteOf("c", "3")}));
    layout.moveNotes(layout.getNotes(), layout.getNotes()[1].getOwnerName());
    EXPECT_THAT(notesOf(layout), ElementsAre("b: 1", "b: 2", "b: 3"));
}

TEST(MoveNotes, LeavesTheRestOfALayoutAlone)
{
    GraphLayout layout;
    layout.insertNode("a", Pair(1, 2), true, false, true, false);
    GraphLayout expected = layout;
    NoteDesc note("a", "text", Pair(1, 2), Pair(3, 4), Color(), Color());
    layout.addNote(note);
    layout.moveNotes(listOf({note}), "new");
    note.setOwnerName("new");
    expected.addNote(note);
    EXPECT_TRUE(layout == expected);
}

TEST(MoveNotes, FindsNoNoteThatIsNotANumber)
{
    NoteDesc note = noteOf("a");
    note.setSize(Pair(notANumber, 1));
    GraphLayout layout;
    layout.addNote(note);
    layout.moveNotes(listOf({note}), "new");
    EXPECT_THAT(notesOf(layout), ElementsAre("a: text"));
}

// ---- Gathering

GraphLayout layoutOfManyNames()
{
    GraphLayout layout;
    layout.insertNodePosition("f", Pair());
    layout.insertNodePosition("b", Pair());
    layout.insertNodeColor("e", Color());
    layout.insertNodeColor("b", Color());
    layout.insertNodeCollapsed("a", true);
    layout.insertNodeVisible("d", true);
    layout.insertNodeVisible("b", true);
    layout.insertNodeHorizontalInputs("c", true);
    layout.insertNodeHorizontalOutputs("g", true);
    layout.insertNodeHorizontalOutputs("a", true);
    layout.insertConnectionVisible("z", true);
    layout.insertConnectionVisible("x", true);
    layout.insertConnectionBezier("y", true);
    layout.insertConnectionBezier("x", true);
    layout.addNote(noteOf("owner"));
    return layout;
}

TEST(LayoutNames, OfNodesAreGatheredOnceEachInAscendingOrder)
{
    EXPECT_THAT(nodeNames(layoutOfManyNames()), ElementsAre("a", "b", "c", "d", "e", "f", "g"));
}

TEST(LayoutNames, OfConnectionsAreGatheredOnceEachInAscendingOrder)
{
    EXPECT_THAT(connectionNames(layoutOfManyNames()), ElementsAre("x", "y", "z"));
}

TEST(LayoutNames, OfInvolvedNodesAreThoseWithAPosition)
{
    EXPECT_THAT(involvedNodeNames(layoutOfManyNames()), ElementsAre("b", "f"));
}

TEST(LayoutNames, OrderByTheirBytes)
{
    std::vector<char const*> const names = {"\xE9", "\x80", "a.b", "a", "Z", "z", "", "a b"};
    GraphLayout layout;
    for (char const* name : names)
    {
        layout.insertNodePosition(name, Pair());
        layout.insertConnectionBezier(name, true);
    }
    auto const ascending = ElementsAre("", "Z", "a", "a b", "a.b", "z", "\x80", "\xE9");
    EXPECT_THAT(nodeNames(layout), ascending);
    EXPECT_THAT(connectionNames(layout), ascending);
    EXPECT_THAT(involvedNodeNames(layout), ascending);
}

TEST(LayoutNames, AreAppendedBehindWhatTheListHolds)
{
    GraphLayout layout;
    layout.insertNodePosition("b", Pair());
    layout.insertNodePosition("a", Pair());
    layout.insertConnectionBezier("b", true);
    layout.insertConnectionBezier("a", true);
    for (Gather gather : {Gather{&GraphLayout::getAllNodeNames}, Gather{&GraphLayout::getAllConnectionNames},
                          Gather{&GraphLayout::getInvolvedNodeNames}})
    {
        Names names;
        EXPECT_FALSE((GraphLayout().*gather)(names));
        names.append("z");
        EXPECT_TRUE((GraphLayout().*gather)(names));
        EXPECT_TRUE((layout.*gather)(names));
        EXPECT_THAT(texts(names), ElementsAre("z", "a", "b"));
    }
}

TEST(LayoutNames, OfALargeLayoutAreAllThere)
{
    constexpr unsigned int count = 20000;
    GraphLayout layout;
    KS_String name;
    for (unsigned int i = 0; i < count; ++i)
    {
        name.format("root.n%06u", i);
        if (i % 2 == 0) layout.insertNodePosition(name, Pair());
        if (i % 3 != 1) layout.insertNodeVisible(name, true);
        if (i % 2 != 0) layout.insertNodeCollapsed(name, true);
    }
    Names names;
    EXPECT_TRUE(layout.getAllNodeNames(names));
    EXPECT_EQ(names.size(), count);
    EXPECT_STREQ(names[count - 1].c_str(), "root.n019999");
}

// ---- Corner and offset

TEST(TopLeftCorner, OfALayoutWithoutPositionsIsZero)
{
    GraphLayout layout;
    layout.insertNodeColor("a", Color());
    layout.addNote("a", "", Pair(-5, -5), Pair(), Color(), Color());
    EXPECT_EQ(layout.getTopLeftCorner(), Pair(0, 0));
}

TEST(TopLeftCorner, IsTheSmallestOfEachCoordinate)
{
    EXPECT_EQ(positions({{"a", Pair(5, -1)}, {"b", Pair(-2, 7)}}).getTopLeftCorner(), Pair(-2, -1));
    EXPECT_EQ(positions({{"a", Pair(-2, 7)}, {"b", Pair(5, -1)}}).getTopLeftCorner(), Pair(-2, -1));
    EXPECT_EQ(positions({{"a", Pair(3, 4)}}).getTopLeftCorner(), Pair(3, 4));
    EXPECT_EQ(positions({{"a", Pair(3, 4)}, {"b", Pair(1, 2)}, {"c", Pair(2, 3)}}).getTopLeftCorner(),
              Pair(1, 2));
}

TEST(TopLeftCorner, LeavesNotesOut)
{
    GraphLayout layout = positions({{"a", Pair(5, 6)}});
    layout.addNote("a", "", Pair(1, 1), Pair(-9, -9), Color(), Color());
    EXPECT_EQ(layout.getTopLeftCorner(), Pair(5, 6));
}

TEST(TopLeftCorner, IsNoLargerThanTheLargestFiniteNumber)
{
    EXPECT_EQ(positions({{"a", Pair(infinity, -infinity)}}).getTopLeftCorner(), Pair(largest, -infinity));
    EXPECT_EQ(positions({{"a", Pair(largest, largest)}}).getTopLeftCorner(), Pair(largest, largest));
}

TEST(TopLeftCorner, LeavesOutWhatIsNotANumber)
{
    EXPECT_EQ(positions({{"a", Pair(notANumber, 1)}, {"b", Pair(2, notANumber)}}).getTopLeftCorner(),
              Pair(2, 1));
    EXPECT_EQ(positions({{"a", Pair(2, notANumber)}, {"b", Pair(notANumber, 1)}}).getTopLeftCorner(),
              Pair(2, 1));
}

TEST(LayoutOffset, MovesEveryNode)
{
    GraphLayout layout = positions({{"a", Pair(5, -1)}, {"b", Pair(-2, 7)}, {"", Pair(0, 0)}});
    layout.offset(Pair(10, -0.5f));
    EXPECT_TRUE(layout == positions({{"a", Pair(15, -1.5f)}, {"b", Pair(8, 6.5f)}, {"", Pair(10, -0.5f)}}));
}

TEST(LayoutOffset, MovesTheNotesThatHaveAPositionAndResizesNone)
{
    GraphLayout layout;
    layout.addNote("a", "text", Pair(1, 2), Pair(3, 4), Color(), Color());
    NoteDesc sized = noteOf("b");
    sized.setSize(Pair(3, 4));
    layout.addNote(sized);
    layout.addNote(NoteDesc());
    layout.offset(Pair(10, 20));
    GraphLayout expected;
    expected.addNote("a", "text", Pair(11, 22), Pair(3, 4), Color(), Color());
    expected.addNote(sized);
    expected.addNote(NoteDesc());
    EXPECT_TRUE(layout == expected);
}

TEST(LayoutOffset, TouchesNothingElse)
{
    GraphLayout layout = layoutOfManyNames();
    GraphLayout expected = layout;
    layout.offset(Pair(1, 2));
    expected.updateWithOther(positions({{"b", Pair(1, 2)}, {"f", Pair(1, 2)}}));
    EXPECT_TRUE(layout == expected);
}

TEST(LayoutOffset, MayBeTheNegativeOfTheCorner)
{
    GraphLayout layout = positions({{"a", Pair(5, -1)}, {"b", Pair(-2, 7)}});
    Pair const corner = layout.getTopLeftCorner();
    layout.offset(Pair(-corner.first, -corner.second));
    EXPECT_EQ(layout.getTopLeftCorner(), Pair(0, 0));
    EXPECT_TRUE(layout == positions({{"a", Pair(7, 0)}, {"b", Pair(0, 8)}}));
}

TEST(LayoutOffset, MayBeAPositionOfTheLayoutItself)
{
    GraphLayout layout = positions({{"a", Pair(1, 2)}, {"b", Pair(10, 20)}});
    layout.offset(*layout.getPositionByNodeName("a"));
    EXPECT_TRUE(layout == positions({{"a", Pair(2, 4)}, {"b", Pair(11, 22)}}));

    GraphLayout noted;
    for (int i = 0; i < 2; ++i) noted.addNote("a", "", Pair(1, 2), Pair(), Color(), Color());
    noted.offset(*noted.getNotes()[0].getPosition());
    for (NoteDesc const& note : noted.getNotes()) EXPECT_EQ(*note.getPosition(), Pair(2, 4));
}

// ---- The whole layout

TEST(GraphLayout, UpdateOverwritesAPositionThatAnInsertWouldKeep)
{
    GraphLayout layout = positions({{"a", Pair(1, 2)}});
    layout.insertNodePosition("a", Pair(3, 4));
    layout.updateWithOther(positions({{"a", Pair(3, 4)}}));
    EXPECT_EQ(valueOf(layout.getPositionByNodeName("a")), Pair(3, 4));
}

TEST(GraphLayout, UpdateWithAnEmptyOneChangesNothing)
{
    GraphLayout layout = layoutOfManyNames();
    layout.updateWithOther(GraphLayout());
    EXPECT_TRUE(layout == layoutOfManyNames());
    GraphLayout empty;
    empty.updateWithOther(layout);
    EXPECT_TRUE(empty == layout);
}

TEST(GraphLayout, RemovingAnUnknownNodeChangesNothing)
{
    GraphLayout layout = layoutOfManyNames();
    for (char const* name : {"", "x", "owner", "A", "b.c"}) layout.removeNode(name);
    EXPECT_TRUE(layout == layoutOfManyNames());
}

TEST(GraphLayout, RemovesANodeByTheNameOfANotesOwner)
{
    GraphLayout layout = positions({{"a", Pair(1, 2)}});
    layout.addNote(noteOf("a"));
    layout.removeNode(layout.getNotes()[0].getOwnerName());
    EXPECT_THAT(nodeNames(layout), IsEmpty());
}

TEST(GraphLayout, AssignedToItselfStaysAsItIs)
{
    GraphLayout layout = layoutOfManyNames();
    GraphLayout const& same = layout;
    layout = same;
    EXPECT_TRUE(layout == layoutOfManyNames());
}

TEST(GraphLayout, ACopyIsEqual)
{
    GraphLayout const layout = layoutOfManyNames();
    GraphLayout const copy(layout);
    GraphLayout assigned = positions({{"old", Pair(1, 2)}});
    assigned = layout;
    EXPECT_TRUE(copy == layout);
    EXPECT_TRUE(assigned == layout);
    assigned = GraphLayout();
    EXPECT_TRUE(assigned == GraphLayout());
}

TEST(GraphLayout, WithAPositionThatIsNotANumberEqualsNone)
{
    GraphLayout const layout = positions({{"a", Pair(notANumber, 1)}});
    EXPECT_FALSE(layout == GraphLayout(layout));
}

TEST(GraphLayout, PrintsNothing)
{
    GraphLayout const layout = layoutOfManyNames();
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    layout.printValues();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(layout == layoutOfManyNames());
}

} // namespace

} // namespace kestrel::graph::test
