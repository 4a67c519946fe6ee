#include <ks_graph/GraphLayout.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Color = Color4<float>;
using Pair = Tuple2<float, float>;

/// A host's layout that keeps a line for each operation that reaches it, such as "collapsed a 1", and refuses
/// the operations it is told to.
class HostLayout : public GraphLayout
{
public:
    HostLayout() { ++living; }
    HostLayout(HostLayout const&) = delete;
    HostLayout& operator=(HostLayout const&) = delete;
    ~HostLayout() override { --living; }

    void insertNodePosition(KS_String const& name, Pair const& position) override
    {
        if (accepts("position", name, position.first)) GraphLayout::insertNodePosition(name, position);
    }
    void insertNodeColor(KS_String const& name, Color const& color) override
    {
        if (accepts("color", name, color.alpha)) GraphLayout::insertNodeColor(name, color);
    }
    void insertNodeCollapsed(KS_String const& name, bool const& collapsed) override
    {
        if (accepts("collapsed", name, collapsed)) GraphLayout::insertNodeCollapsed(name, collapsed);
    }
    void insertNodeVisible(KS_String const& name, bool const& visible) override
    {
        if (accepts("visible", name, visible)) GraphLayout::insertNodeVisible(name, visible);
    }
    void insertNodeHorizontalInputs(KS_String const& name, bool const& horizontal) override
    {
        if (accepts("inputs", name, horizontal)) GraphLayout::insertNodeHorizontalInputs(name, horizontal);
    }
    void insertNodeHorizontalOutputs(KS_String const& name, bool const& horizontal) override
    {
        if (accepts("outputs", name, horizontal)) GraphLayout::insertNodeHorizontalOutputs(name, horizontal);
    }
    void insertConnectionVisible(KS_String const& name, bool const& visible) override
    {
        if (accepts("connection visible", name, visible)) GraphLayout::insertConnectionVisible(name, visible);
    }
    void insertConnectionBezier(KS_String const& name, bool const& bezier) override
    {
        if (accepts("connection bezier", name, bezier)) GraphLayout::insertConnectionBezier(name, bezier);
    }
    void addNote(NoteDesc const& note) override
    {
        if (accepts("note", note.getOwnerName(), note.getSize() ? note.getSize()->first : -1))
            GraphLayout::addNote(note);
    }
    void addNote(KS_String const& ownerName, KS_String const& text, Pair const& position, Pair const& size,
                 Color const& firstColor, Color const& secondColor) override
    {
        if (accepts("note of parts", ownerName, size.first))
            GraphLayout::addNote(ownerName, text, position, size, firstColor, secondColor);
    }

    std::vector<std::string> lines;
    std::set<std::string> refused;

    static inline int living = 0;

private:
    template <class Number>
    bool accepts(std::string const& operation, KS_String const& name, Number number)
    {
        lines.push_back(operation + " " + name.c_str() + " " + std::to_string(static_cast<int>(number)));
        return refused.count(operation) == 0;
    }
};

NoteDesc noteOf(char const* owner)
{
    return NoteDesc(owner, "text", Pair(1, 2), Pair(3, 4), Color(), Color());
}

GraphLayout notesOf(std::vector<char const*> const& owners)
{
    GraphLayout layout;
    for (char const* owner : owners) layout.addNote(noteOf(owner));
    return layout;
}

// ---- What reaches the overrides

TEST(LayoutOverrides, SeeTheValuesOfANodeInOrder)
{
    HostLayout layout;
    layout.insertNode("a", Pair(7, 2), Color(0, 0, 0, 5), true, false, true, true);
    EXPECT_THAT(layout.lines, ElementsAre("position a 7", "color a 5", "collapsed a 1", "visible a 0",
                                          "inputs a 1", "outputs a 1"));
}

TEST(LayoutOverrides, SeeTheValuesOfANodeWithoutColorInOrder)
{
    HostLayout layout;
    layout.insertNode("a", Pair(7, 2), false, true, false, false);
    EXPECT_THAT(layout.lines,
                ElementsAre("position a 7", "collapsed a 0", "visible a 1", "inputs a 0", "outputs a 0"));
}

TEST(LayoutOverrides, SeeTheValuesOfAConnectionInOrder)
{
    HostLayout layout;
    layout.insertConnection("a.out > b.in", true, false);
    EXPECT_THAT(layout.lines,
                ElementsAre("connection visible a.out > b.in 1", "connection bezier a.out > b.in 0"));
}

TEST(LayoutOverrides, SeeAValueThatIsThereAlready)
{
    HostLayout layout;
    layout.insertConnection("a", true, true);
    layout.insertConnection("a", false, false);
    EXPECT_THAT(layout.lines, ElementsAre("connection visible a 1", "connection bezier a 1",
                                          "connection visible a 0", "connection bezier a 0"));
}

TEST(LayoutOverrides, AreReachedThroughTheBase)
{
    HostLayout host;
    GraphLayout& layout = host;
    layout.insertNodePosition("a", Pair(1, 0));
    layout.insertNodeColor("b", Color(0, 0, 0, 2));
    layout.insertNodeCollapsed("c", true);
    layout.insertNodeVisible("d", true);
    layout.insertNodeHorizontalInputs("e", true);
    layout.insertNodeHorizontalOutputs("f", true);
    layout.insertConnectionVisible("g", true);
    layout.insertConnectionBezier("h", true);
    layout.addNote(noteOf("i"));
    EXPECT_THAT(host.lines,
                ElementsAre("position a 1", "color b 2", "collapsed c 1", "visible d 1", "inputs e 1",
                            "outputs f 1", "connection visible g 1", "connection bezier h 1", "note i 3"));
}

TEST(LayoutOverrides, SeeANoteOfPartsAsANote)
{
    HostLayout host;
    GraphLayout& layout = host;
    layout.addNote("a", "text", Pair(1, 2), Pair(3, 4), Color(), Color());
    EXPECT_THAT(host.lines, ElementsAre("note of parts a 3", "note a 3"));
    EXPECT_TRUE(layout == notesOf({"a"}));
}

TEST(LayoutOverrides, SeeTheNotesOfAnUpdateInOrder)
{
    HostLayout layout;
    GraphLayout other = notesOf({"b", "a"});
    other.addNote(NoteDesc());
    layout.updateWithOther(other);
    EXPECT_THAT(layout.lines, ElementsAre("note b 3", "note a 3", "note  -1"));
    EXPECT_TRUE(layout == other);
}

TEST(LayoutOverrides, DoNotSeeTheValuesOfAnUpdate)
{
    HostLayout layout;
    GraphLayout other;
    other.insertNode("a", Pair(1, 2), Color(), true, true, true, true);
    other.insertConnection("b", true, true);
    layout.updateWithOther(other);
    EXPECT_THAT(layout.lines, IsEmpty());
    EXPECT_TRUE(layout == other);
}

TEST(LayoutOverrides, OfTheOtherLayoutAreNotReachedByAnUpdate)
{
    HostLayout other;
    other.GraphLayout::addNote(noteOf("a"));
    GraphLayout layout;
    layout.updateWithOther(other);
    EXPECT_THAT(other.lines, IsEmpty());
    EXPECT_TRUE(layout == notesOf({"a"}));
}

TEST(LayoutOverrides, SeeEachNoteOnceInAnUpdateOfTheLayoutWithItself)
{
    HostLayout layout;
    layout.setNotes(notesOf({"a", "b", "c", "d"}).getNotes());
    layout.updateWithOther(layout);
    EXPECT_THAT(layout.lines, ElementsAre("note a 3", "note b 3", "note c 3", "note d 3"));
    EXPECT_TRUE(layout == notesOf({"a", "b", "c", "d", "a", "b", "c", "d"}));
}

TEST(LayoutOverrides, SeeNoneOfTheOtherChanges)
{
    HostLayout layout;
    layout.setNotes(notesOf({"a", "b"}).getNotes());
    layout.moveNotes(notesOf({"b"}).getNotes(), "a");
    layout.replaceTxtInNames("a", "b");
    layout.replacePrefixInNames("b", "c");
    layout.applyDictionary({{"c", "d"}});
    layout.offset(Pair(1, 1));
    layout.removeNode("a");
    layout.GraphLayout::operator=(notesOf({"e"}));
    layout.clear();
    EXPECT_THAT(layout.lines, IsEmpty());
}

// ---- What an override may do

class RefusedOperation : public ::testing::TestWithParam<char const*>
{
};

INSTANTIATE_TEST_SUITE_P(LayoutOverrides, RefusedOperation,
                         ::testing::Values("position", "color", "collapsed", "visible", "inputs", "outputs",
                                           "connection visible", "connection bezier"));

TEST_P(RefusedOperation, LeavesOutItsValueAndNothingElse)
{
    std::string const refused = GetParam();
    HostLayout layout;
    layout.refused = {refused};
    layout.insertNode("a", Pair(1, 2), Color(), true, true, true, true);
    layout.insertConnection("a", true, true);
    EXPECT_EQ(layout.lines.size(), 8u);
    EXPECT_EQ(layout.getPositionByNodeName("a").has_value(), refused != "position");
    EXPECT_EQ(layout.getColorByNodeName("a").has_value(), refused != "color");
    EXPECT_EQ(layout.getCollapsedByNodeName("a").has_value(), refused != "collapsed");
    EXPECT_EQ(layout.getVisibleByNodeName("a").has_value(), refused != "visible");
    EXPECT_EQ(layout.getHorizontalInputsByNodeName("a").has_value(), refused != "inputs");
    EXPECT_EQ(layout.getHorizontalOutputsByNodeName("a").has_value(), refused != "outputs");
    EXPECT_EQ(layout.getVisibleByConnectionName("a").has_value(), refused != "connection visible");
    EXPECT_EQ(layout.getBezierByConnectionName("a").has_value(), refused != "connection bezier");
}

TEST(LayoutOverrides, MayRefuseNotes)
{
    HostLayout layout;
    layout.refused = {"note"};
    layout.addNote(noteOf("a"));
    layout.addNote("b", "text", Pair(1, 2), Pair(3, 4), Color(), Color());
    layout.updateWithOther(notesOf({"c"}));
    EXPECT_THAT(layout.lines, ElementsAre("note a 3", "note of parts b 3", "note b 3", "note c 3"));
    EXPECT_TRUE(layout.getNotes().isEmpty());
}

TEST(LayoutOverrides, MayRefuseNotesOfPartsAlone)
{
    HostLayout layout;
    layout.refused = {"note of parts"};
    layout.addNote("a", "text", Pair(1, 2), Pair(3, 4), Color(), Color());
    layout.updateWithOther(notesOf({"b"}));
    EXPECT_THAT(layout.lines, ElementsAre("note of parts a 3", "note b 3"));
    EXPECT_TRUE(layout == notesOf({"b"}));
}

/// Keeps every name below "host." and each note twice.
class ChangingLayout : public GraphLayout
{
public:
    using GraphLayout::addNote;

    void insertNodePosition(KS_String const& name, Pair const& position) override
    {
        GraphLayout::insertNodePosition(KS_String("host.") + name, position);
    }
    void addNote(NoteDesc const& note) override
    {
        GraphLayout::addNote(note);
        GraphLayout::addNote(note);
    }
};

TEST(LayoutOverrides, MayChangeWhatIsInserted)
{
    ChangingLayout layout;
    layout.insertNode("a", Pair(1, 2), true, true, true, true);
    EXPECT_FALSE(layout.getPositionByNodeName("a").has_value());
    EXPECT_TRUE(layout.getPositionByNodeName("host.a").has_value());
    EXPECT_TRUE(layout.getVisibleByNodeName("a").has_value());
}

TEST(LayoutOverrides, MayAddMoreNotesThanTheyAreGiven)
{
    ChangingLayout layout;
    layout.addNote("a", "text", Pair(1, 2), Pair(3, 4), Color(), Color());
    EXPECT_TRUE(layout == notesOf({"a", "a"}));
    layout.updateWithOther(notesOf({"b"}));
    EXPECT_TRUE(layout == notesOf({"a", "a", "b", "b"}));
}

TEST(LayoutOverrides, MayAddMoreNotesThanTheyAreGivenInAnUpdateOfTheLayoutWithItself)
{
    ChangingLayout layout;
    layout.setNotes(notesOf({"a", "b", "c", "d"}).getNotes()); // a full block: the list moves as it grows
    layout.updateWithOther(layout);
    EXPECT_TRUE(layout == notesOf({"a", "b", "c", "d", "a", "a", "b", "b", "c", "c", "d", "d"}));
}

/// Throws at a colour.
class ThrowingLayout : public GraphLayout
{
public:
    void insertNodeColor(KS_String const&, Color const&) override { throw std::runtime_error("no colours"); }
};

TEST(LayoutOverrides, MayThrowAndLeaveWhatCameBefore)
{
    ThrowingLayout layout;
    EXPECT_THROW(layout.insertNode("a", Pair(1, 2), Color(), true, true, true, true), std::runtime_error);
    EXPECT_TRUE(layout.getPositionByNodeName("a").has_value());
    EXPECT_FALSE(layout.getCollapsedByNodeName("a").has_value());
    layout.insertNode("a", Pair(1, 2), true, true, true, true);
    EXPECT_TRUE(layout.getCollapsedByNodeName("a").has_value());
}

// ---- Lifetime

TEST(LayoutOverrides, TheWholeObjectIsDeletedThroughTheBase)
{
    ASSERT_EQ(HostLayout::living, 0);
    GraphLayout* const layout = new HostLayout;
    EXPECT_EQ(HostLayout::living, 1);
    layout->insertNode("a", Pair(1, 2), true, true, true, true);
    layout->addNote(noteOf("a"));
    delete layout;
    EXPECT_EQ(HostLayout::living, 0);
}

TEST(LayoutOverrides, ACopyAsABaseObjectHasTheValuesButNotTheOverrides)
{
    HostLayout host;
    host.insertNodePosition("a", Pair(1, 2));
    GraphLayout copy(host);
    copy.insertNodePosition("b", Pair(1, 2));
    EXPECT_TRUE(copy.getPositionByNodeName("a").has_value());
    EXPECT_THAT(host.lines, ElementsAre("position a 1"));
}

} // namespace

} // namespace kestrel::graph::test
