#include "MaterialGraphLayouts.h"

#include <material_graph/LayoutDump.h>

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::FileStreamRaw;
using kestrel::KS_String;
using kestrel::graph::GraphLayout;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

/// @name Saving and loading
/// @{

TEST(MaterialLayoutFile, SaveIsSilentAndWritesNothingBeside)
{
    Program const program;
    Outcome const outcome =
        program.run({program.placing(), {"layout", "save", program.folder().file("saved")}});
    EXPECT_EQ(outcome.status, Status::Done);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(program.folder().names(), UnorderedElementsAre("test.mtlx", "given.layout", "saved"));
}

TEST(MaterialLayoutFile, SaveHasTheSameByteOrderOnEveryMachine)
{
    Program const program;
    program.layoutAfter({program.placing()});
    EXPECT_THAT(contentOf(program.folder().file("result.layout")), StartsWith(std::string("\0\0\0\2", 4)));
}

TEST(MaterialLayoutFile, WhatIsLoadedIsSavedAsItWas)
{
    Program const program;
    GraphLayout const given = richLayout();
    EXPECT_EQ(program.layoutAfter({{"layout", "load", program.write(given)}}), given);
    EXPECT_EQ(contentOf(program.folder().file("given.layout")),
              contentOf(program.folder().file("result.layout")));
}

TEST(MaterialLayoutFile, NameHasAnyLetters)
{
    Program const program;
    std::string const path = program.folder().file("\xE6\xBC\x86.layout");
    EXPECT_EQ(program.run({program.placing(), {"layout", "save", path}}).err, "");
    EXPECT_EQ(program.layoutAfter({{"layout", "load", path}}), richLayout());
}

TEST(MaterialLayoutFile, WhatBelongsToNoNodeOfTheGraphIsToldAndKept)
{
    Program const program;
    GraphLayout given = richLayout();
    given.insertNodePosition("root.elsewhere", {1.0f, 2.0f});
    given.insertConnectionBezier("root.x.out > root.y.in", true);
    std::string const path = program.write(given);
    EXPECT_EQ(program.layoutAfter({{"layout", "load", path}}), given);
    EXPECT_THAT(program.run({{"layout", "load", path}}).out,
                AllOf(HasSubstr("8 nodes of this graph"), HasSubstr("1 other"), HasSubstr("3 notes")));
}

TEST(MaterialLayoutFile, LoadReplacesWhatWasThereBefore)
{
    Program const program;
    GraphLayout const given = richLayout();
    EXPECT_EQ(
        program.layoutAfter(
            {{"layout", "hide", "b"}, {"layout", "collapse", "c"}, {"layout", "load", program.write(given)}}),
        given);
}

TEST(MaterialLayoutFile, LoadTakesTheByteOrderOfThisMachineToo)
{
    Program const program;
    GraphLayout const given = richLayout();
    std::string const path = program.folder().file("raw.layout");
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
    FileStreamRaw stream(file.get());
    ASSERT_TRUE(given.write(stream));
    file.reset();
    EXPECT_EQ(program.layoutAfter({{"layout", "load", path}}), given);
}

TEST(MaterialLayoutFile, NodesStandWhereTheLoadedLayoutPutsThem)
{
    Program const program;
    Outcome const drawn = program.run({{"layout", "load", program.write(richLayout())}, {"svg"}});
    Picture const picture(drawn.out);
    EXPECT_LT(distance(bodyOf(picture.node("root.b")).topLeft, {250.0f, 40.0f}), rounding);
    EXPECT_THAT(picture.names("connection"), ElementsAre("root.g.o > root.c.in1"));
    EXPECT_EQ(picture.ofClass("note").size(), 1u);
}

/// @}

/// @name Files that cannot be used
/// @{

TEST(MaterialLayoutFile, WithoutAFileThereIsAMessageAndStatusTwo)
{
    Program const program;
    for (char const* command : {"load", "show"})
        expectRefused(program.run({{"layout", command, program.folder().file("absent")}}),
                      std::string("layout ") + command + ": error: ");
    expectRefused(
        program.run({program.placing(), {"layout", "save", program.folder().file("no/such/folder")}}),
        "layout save: error: cannot write '");
}

TEST(MaterialLayoutFile, FolderIsRefused)
{
    Program const program;
    for (char const* command : {"load", "show", "save"})
    {
        Outcome const outcome =
            program.run({program.placing(), {"layout", command, program.folder().file("")}});
        expectRefused(outcome, std::string("layout ") + command + ": error: ");
        EXPECT_THAT(outcome.err, HasSubstr("directory"));
    }
    EXPECT_THAT(program.folder().names(), UnorderedElementsAre("test.mtlx", "given.layout"));
}

TEST(MaterialLayoutFile, DocumentItselfIsNeverWritten)
{
    Program const program;
    std::filesystem::create_hard_link(pathOf(program.document()), pathOf(program.folder().file("twin")));
    for (std::string const& path : {program.document(), program.folder().file("twin")})
    {
        expectRefused(program.run({{"layout", "save", path}}), "is the document itself");
        EXPECT_EQ(contentOf(program.document()), materialx(nestedChains));
    }
    expectRefused(program.run({{"layout", "load", program.document()}}), "layout load: error: ");
}

TEST(MaterialLayoutFile, DamagedOneEndsTheRunBeforeAnythingIsWritten)
{
    Program const program;
    std::string const whole = contentOf(program.write(richLayout()));
    for (std::string const& bytes :
         {std::string(), std::string("no layout"), whole.substr(0, whole.size() - 1)})
    {
        std::string const damaged = program.folder().write("damaged", bytes);
        expectRefused(
            program.run({{"layout", "load", damaged}, {"layout", "save", program.folder().file("next")}}),
            "layout load: error: cannot read '" + damaged + "'");
        EXPECT_FALSE(std::filesystem::exists(program.folder().file("next")));
        EXPECT_EQ(contentOf(damaged), bytes);
    }
}

TEST(MaterialLayoutFile, OneThatIsCutAnywhereChangesNothing)
{
    Folder const folder;
    GraphLayout const before = richLayout();
    ASSERT_EQ(saveLayout(folder.file("whole"), richLayout("other")), "");
    std::string const whole = contentOf(folder.file("whole"));
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        GraphLayout layout = before;
        EXPECT_NE(loadLayout(folder.write("cut", whole.substr(0, size)), layout), "") << size;
        EXPECT_EQ(layout, before) << size;
    }
}

TEST(MaterialLayoutFile, OldOneStaysWhenSavingFails)
{
    Program const program;
    std::string const path = program.folder().write("kept", "old");
    expectRefused(program.run({{"rename", "nobody", "x"}, {"layout", "save", path}}), "rename: error: ");
    EXPECT_EQ(contentOf(path), "old");
}

TEST(MaterialLayoutFile, ShowPrintsWhatIsInTheFile)
{
    Program const program;
    std::string const path = program.write(richLayout());
    Outcome const shown = program.run({{"layout", "show", path}});
    EXPECT_EQ(shown.status, Status::Done);
    EXPECT_EQ(shown.out, dumpLayout(contentOf(path)).text);
    EXPECT_THAT(shown.out, HasSubstr("\"root.g.first\""));
}

TEST(MaterialLayoutFile, ShowTellsWhereAFileIsDamaged)
{
    Program const program;
    std::string const bytes = contentOf(program.write(richLayout()));
    std::string const cut = bytes.substr(0, bytes.size() - 1);
    Outcome const shown = program.run({{"layout", "show", program.folder().write("cut", cut)}});
    EXPECT_EQ(shown.status, Status::Defects);
    EXPECT_THAT(shown.err, HasSubstr("layout show: error: "));
    EXPECT_THAT(shown.err, HasSubstr(dumpLayout(cut).defect));
}

/// @}

/// @name Hiding and collapsing
/// @{

TEST(MaterialLayoutHide, OverridesWhatTheLayoutSaid)
{
    Program const program;
    GraphLayout shown = richLayout();
    shown.insertNodeVisible("root.b", true);
    GraphLayout const layout = program.layoutAfter(shown, {"layout", "hide", "b", "root.g.o > root.c.in1"});
    EXPECT_FALSE(*layout.getVisibleByNodeName("root.b"));
    EXPECT_FALSE(*layout.getVisibleByConnectionName("root.g.o > root.c.in1"));
    EXPECT_EQ(*layout.getBezierByConnectionName("root.g.o > root.c.in1"), false);
}

TEST(MaterialLayoutCollapse, ShowsNodesWithoutTheirPins)
{
    Program const program;
    GraphLayout open = richLayout();
    open.insertNodeCollapsed("root.b", false);
    std::string const given = program.write(open);
    Outcome const outcome =
        program.run({{"layout", "load", given}, {"layout", "collapse", "b", "root.g"}, {"svg"}});
    EXPECT_EQ(outcome.status, Status::Done);
    EXPECT_THAT(Picture(outcome.out).names("pin"), Not(Contains(StartsWith("root.b."))));
    EXPECT_THAT(Picture(outcome.out).names("pin"), Not(Contains(StartsWith("root.g."))));
    EXPECT_THAT(Picture(outcome.out).names("pin"), Contains("root.a.out"));
    EXPECT_TRUE(isCollapsed("root.b", program.layoutAfter(open, {"layout", "collapse", "b"})));
}

TEST(MaterialLayoutHide, UnknownNameIsAMessageAndNothingIsHidden)
{
    Program const program;
    std::string const path = program.folder().file("saved");
    for (Words const& command :
         {Words{"layout", "hide", "a", "nobody"}, Words{"layout", "hide", "root.a.out > root.b.nothing"},
          Words{"layout", "collapse", "a", "nobody"}, Words{"layout", "collapse", "root.a.out > root.b.in1"}})
    {
        expectRefused(program.run({command, {"layout", "save", path}}),
                      "layout " + command[1] + ": error: there is no ");
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

/// @}

/// @name Following the graph
/// @{

TEST(MaterialLayoutRename, TakesAlongEverythingOfANode)
{
    EXPECT_EQ(Program().layoutAfter(richLayout(), {"rename", "a", "z"}), richLayout("z"));
}

TEST(MaterialLayoutRename, TakesAlongWhatIsInACompound)
{
    EXPECT_EQ(Program().layoutAfter(richLayout(), {"rename", "root.g", "h"}), richLayout("a", "h"));
}

TEST(MaterialLayoutRename, SwapsTwoNodes)
{
    Program const program;
    GraphLayout const layout = program.layoutAfter({{"layout", "load", program.write(richLayout())},
                                                    {"rename", "a", "kept"},
                                                    {"rename", "b", "a"},
                                                    {"rename", "kept", "b"}});
    GraphLayout const before = richLayout();
    EXPECT_LT(distance(positionOf("root.a", layout), positionOf("root.b", before)), rounding);
    EXPECT_LT(distance(positionOf("root.b", layout), positionOf("root.a", before)), rounding);
    EXPECT_TRUE(isHidden("root.b.out > root.a.in1", layout));
}

TEST(MaterialLayoutHide, AndCollapseRefuseTheDocumentItself)
{
    for (char const* command : {"hide", "collapse"})
    {
        Outcome const run = runOn("<add name='a'/>", {"layout", command, "root"});
        EXPECT_EQ(run.status, Status::Defects);
        EXPECT_EQ(run.err, std::string("layout ") + command + ": error: 'root' is the document itself\n");
    }
}

TEST(MaterialLayoutCommand, IsTwoWords)
{
    EXPECT_EQ(runOn("<add name='a'/>", {"layout hide", "a"}).status, Status::NotRun);
}

TEST(MaterialLayoutRename, MayChangeOnlyTheCaseOfTheLetters)
{
    EXPECT_EQ(runOn("<add name='a'/>", {"rename", "a", "A"}).out, "renamed root.a -> root.A\n");
}

TEST(MaterialLayoutRename, TakesNothingFromWhatOnceHadTheName)
{
    GraphLayout before = richLayout();
    before.insertNode("root.z", {-900.0f, -900.0f}, true, false, true, true);
    before.insertConnection("root.z.out > root.b.in1", true, false);
    GraphLayout const after = Program().layoutAfter(before, {"rename", "a", "z"});
    EXPECT_LT(distance(positionOf("root.z", after), positionOf("root.a", before)), rounding);
    EXPECT_TRUE(isHidden("root.z.out > root.b.in1", after));
    EXPECT_FALSE(isCollapsed("root.z", after));
    EXPECT_TRUE(after.getVisibleByNodeName("root.z").value_or(true));
}

TEST(MaterialLayoutGroup, TakesAlongEverythingOfTheNodes)
{
    GraphLayout const before = richLayout();
    GraphLayout const after = Program().layoutAfter(before, {"group", "h", "a", "b", "g"});
    EXPECT_EQ(*after.getColorByNodeName("root.h.a"), *before.getColorByNodeName("root.a"));
    EXPECT_FALSE(*after.getHorizontalInputsByNodeName("root.h.a"));
    EXPECT_TRUE(isCollapsed("root.h.g.first", after));
    EXPECT_FALSE(*after.getVisibleByNodeName("root.h.g.first"));
    EXPECT_TRUE(isHidden("root.h.a.out > root.h.b.in1", after));
    EXPECT_TRUE(*after.getBezierByConnectionName("root.h.a.out > root.h.b.in1"));
    EXPECT_TRUE(isHidden("root.h.g.first.out > root.h.g.second.in1", after));
    EXPECT_THAT(noteOwners(after), ElementsAre("root", "root.h.g", "root.h.a"));
    for (char const* gone : {"root.a", "root.b", "root.g", "root.g.first", "root.g.second"})
        EXPECT_FALSE(after.getPositionByNodeName(gone)) << gone;
}

TEST(MaterialLayoutGroup, NodesStandAmongEachOtherAsBefore)
{
    GraphLayout const before = richLayout();
    GraphLayout const after = Program().layoutAfter(before, {"group", "h", "a", "b", "g"});
    for (std::string const name : {"b", "g"})
        EXPECT_LT(distance(wayBetween("root.h.a", "root.h." + name, after),
                           wayBetween("root.a", "root." + name, before)),
                  rounding);
    EXPECT_LT(distance(wayBetween("root.h.g.first", "root.h.g.second", after),
                       wayBetween("root.g.first", "root.g.second", before)),
              rounding);
    for (char const* other : {"root.c", "root.ab"})
        EXPECT_LT(distance(positionOf(other, after), positionOf(other, before)), rounding) << other;
}

TEST(MaterialLayoutGroup, CompoundStandsWhereTheNodesStoodBetweenItsInterfaceNodes)
{
    Program const program;
    std::string const given = program.write(richLayout());
    Words const grouping{"group", "h", "b", "g"};
    Picture const outside(program.run({{"layout", "load", given}, grouping, {"svg"}}).out);
    Point const compound = bodyOf(outside.node("root.h")).center();
    EXPECT_TRUE(compound.x > 250.0f && compound.x < 700.0f && compound.y > 40.0f && compound.y < 450.0f)
        << compound.x << ", " << compound.y;
    expectNoOverlap(outside);

    Picture const inside(program.run({{"layout", "load", given}, grouping, {"svg", "h"}}).out);
    Rect const input = bodyOf(inside.node("root.h.input interface01"));
    Rect const output = bodyOf(inside.node("root.h.output interface01"));
    for (char const* node : {"root.h.b", "root.h.g"})
    {
        EXPECT_LT(input.right(), bodyOf(inside.node(node)).left()) << node;
        EXPECT_GT(output.left(), bodyOf(inside.node(node)).right()) << node;
    }
    expectNoOverlap(inside);
}

TEST(MaterialLayoutGroup, TakesNothingFromWhatOnceHadTheNames)
{
    GraphLayout before = richLayout();
    for (char const* name : {"root.h", "root.h.a", "root.h.input interface01"})
        before.insertNode(name, {-5000.0f, -5000.0f}, true, false, true, true);
    GraphLayout const after = Program().layoutAfter(before, {"group", "h", "b", "a"});
    for (std::string const name : {"root.h", "root.h.a"})
    {
        EXPECT_LT(distance(positionOf(name, after), positionOf("root.a", before)), 1000.0f) << name;
        EXPECT_FALSE(isCollapsed(name, after)) << name;
        EXPECT_TRUE(after.getVisibleByNodeName(KS_String(name)).value_or(true)) << name;
    }
}

TEST(MaterialLayoutUngroup, TakesAlongEverythingOfTheNodes)
{
    GraphLayout const after = Program().layoutAfter(richLayout(), {"ungroup", "g"});
    EXPECT_TRUE(isCollapsed("root.first", after));
    EXPECT_FALSE(*after.getVisibleByNodeName("root.first"));
    EXPECT_TRUE(isHidden("root.first.out > root.second.in1", after));
    EXPECT_THAT(noteOwners(after), ElementsAre("root", "root", "root.a"));
    kestrel::Array<KS_String, kestrel::_Wa> names;
    after.getAllNodeNames(names);
    EXPECT_THAT(std::vector<std::string>(names.begin(), names.end()),
                UnorderedElementsAre("root.a", "root.ab", "root.b", "root.c", "root.first", "root.second"));
}

TEST(MaterialLayoutUngroup, AfterGroupLeavesWhatWasThere)
{
    Program const program;
    GraphLayout const before = richLayout();
    GraphLayout const after = program.layoutAfter(
        {{"layout", "load", program.write(before)}, {"group", "h", "a", "b"}, {"ungroup", "h"}});
    EXPECT_LT(distance(wayBetween("root.a", "root.b", after), wayBetween("root.a", "root.b", before)),
              rounding);
    EXPECT_EQ(*after.getColorByNodeName("root.a"), *before.getColorByNodeName("root.a"));
    EXPECT_TRUE(isHidden("root.a.out > root.b.in1", after));
    EXPECT_THAT(noteOwners(after), ElementsAre("root", "root.g", "root.a"));
}

/// @}

/// @name Chains of commands
/// @{

TEST(MaterialCommandChain, ResultIsThatOfTheLastCommandOnWhatTheOthersMade)
{
    Program const program;
    EXPECT_EQ(program.run({{"group", "h", "a", "b"}, {"rename", "h", "k"}, {"connections", "k.b"}}).out,
              "root.k.a.out > root.k.b.in1 (float)\n");
    EXPECT_THAT(program.run({{"connections", "b"}, {"rename", "a", "z"}}).out,
                AllOf(HasSubstr("root.a"), HasSubstr("root.z"), Not(HasSubstr(" > "))));
}

TEST(MaterialCommandChain, EndsAtTheFirstCommandThatCannotBeDone)
{
    Program const program;
    Outcome const outcome = program.run(
        {{"summary"}, {"ungroup", "a"}, {"html", "nobody"}, {"layout", "save", program.folder().file("l")}});
    EXPECT_EQ(outcome.status, Status::Defects);
    EXPECT_EQ(outcome.err, "ungroup: error: 'a' is not a compound\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(program.folder().names(), ElementsAre("test.mtlx"));
}

TEST(MaterialCommandChain, LastResultGoesToTheOutputFile)
{
    Program const program;
    std::string const path = program.folder().file("picture.svg");
    Outcome const outcome = program.run({program.placing(), {"layout", "hide", "a"}, {"svg", "-o", path}});
    EXPECT_EQ(outcome.status, Status::Done);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(contentOf(path), program.run({program.placing(), {"layout", "hide", "a"}, {"svg"}}).out);
}

TEST(MaterialCommandChain, PictureIsOfTheRootOrOfACompoundByName)
{
    Program const program;
    Words const placing = program.placing();
    EXPECT_EQ(program.run({placing, {"svg"}}).out, program.run({placing, {"svg", "root"}}).out);
    EXPECT_EQ(program.run({placing, {"svg", "g"}}).out, program.run({placing, {"svg", "root.g"}}).out);
    EXPECT_THAT(Picture(program.run({placing, {"svg", "g"}}).out).names("node"), Contains("root.g.second"));
    expectRefused(program.run({{"svg", "a"}}), "svg: error: 'a' is not a compound\n");
    expectRefused(program.run({{"svg", "nobody"}}), "svg: error: there is no node 'nobody'\n");
}

TEST(MaterialCommandChain, WrongArgumentsPrintTheUsageBeforeAnyCommandRuns)
{
    Program const program;
    std::string const path = program.folder().file("saved");
    for (Words const& wrong : {Words{"+"},
                               {"summary", "+"},
                               {"+", "summary"},
                               {"layout", "save", path, "+", "+", "summary"},
                               {"layout", "save", path, "+"},
                               {"layout", "save", path, "+", "bogus"},
                               {"layout"},
                               {"layout", "bogus"},
                               {"layout", "bogus", path},
                               {"layout", "save"},
                               {"layout", "save", path, path},
                               {"layout", "load"},
                               {"layout", "show"},
                               {"layout", "hide"},
                               {"layout", "collapse"},
                               {"rename", "a"},
                               {"rename", "a", "b", "c"},
                               {"svg", "g", "g"}})
    {
        Outcome const outcome = program.run({wrong});
        EXPECT_EQ(outcome.status, Status::NotRun) << ::testing::PrintToString(wrong);
        EXPECT_THAT(outcome.err, HasSubstr("usage: material_graph ")) << ::testing::PrintToString(wrong);
        EXPECT_THAT(outcome.out, IsEmpty());
    }
    EXPECT_THAT(program.folder().names(), ElementsAre("test.mtlx"));
}

TEST(MaterialCommandChain, RenameThatCannotBeDoneIsAMessage)
{
    Program const program;
    expectRefused(program.run({{"rename", "nobody", "x"}}), "rename: error: there is no node 'nobody'\n");
    expectRefused(program.run({{"rename", "a", "b"}}), "rename: error: the name 'b' is taken in 'root'\n");
    expectRefused(program.run({{"rename", "a", ""}}), "rename: error: ");
    expectRefused(program.run({{"rename", "root", "x"}}), "rename: error: 'root' is the document itself\n");
}

/// @}

} // namespace

} // namespace material_graph::test
