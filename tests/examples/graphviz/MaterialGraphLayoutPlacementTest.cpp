#include "examples/MaterialGraphLayouts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

TEST(MaterialLayoutFile, SaveWritesAPlaceForEveryNodeOfEveryLevel)
{
    Program const program;
    kestrel::Array<KS_String, kestrel::_Wa> found;
    GraphLayout const layout = program.layoutAfter({});
    layout.getInvolvedNodeNames(found);
    EXPECT_THAT(std::vector<std::string>(found.begin(), found.end()),
                UnorderedElementsAre("root.a", "root.ab", "root.b", "root.g", "root.c", "root.g.first",
                                     "root.g.second", "root.g.output interface01"));
}

class LayoutOfExample : public ::testing::TestWithParam<std::string>
{
protected:
    Document document_{ExampleFile{GetParam() + ".mtlx"}};
    Program const program_{contentOf(exampleFile(GetParam() + ".mtlx"))};
};

INSTANTIATE_TEST_SUITE_P(MaterialLayoutFile, LayoutOfExample, ::testing::ValuesIn(exampleNames()),
                         [](auto const& example) { return example.param; });

TEST_P(LayoutOfExample, IsDrawnByteForByteAsBeforeWhenItWasSavedAndLoaded)
{
    std::string const path = program_.folder().file("saved");
    program_.run({{"layout", "save", path}});
    for (auto* level : levelsOf(document_.scene))
    {
        std::string const name(level->getFullName());
        Outcome const before = program_.run({{"svg", name}});
        EXPECT_THAT(before.out, StartsWith("<svg ")) << name;
        EXPECT_EQ(program_.run({{"layout", "load", path}, {"svg", name}}).out, before.out) << name;
    }
}

TEST_P(LayoutOfExample, HasNoOverlapWhenAnyCompoundIsUngrouped)
{
    for (auto* level : levelsOf(document_.scene))
    {
        if (level->isRoot()) continue;
        std::string const compound(level->getFullName());
        std::string const owner(level->getNodeOwner()->getFullName());
        SCOPED_TRACE(compound);
        expectNoOverlap(Picture(program_.run({{"ungroup", compound}, {"svg", owner}}).out));
    }
}

TEST_P(LayoutOfExample, HasNoOverlapWhenNeighboursAreGrouped)
{
    for (auto* level : levelsOf(document_.scene))
    {
        std::string const owner(level->getFullName());
        Words command{"group", "of_some"};
        for (auto* node : level->getNodes())
            if (!node->isInterface() && command.size() < 5) command.emplace_back(node->getFullName());
        if (command.size() < 3) continue;
        SCOPED_TRACE(owner);
        expectNoOverlap(Picture(program_.run({command, {"svg", owner}}).out));
        expectNoOverlap(Picture(program_.run({command, {"svg", owner + ".of_some"}}).out));
    }
}

TEST(MaterialLayoutHide, LeavesNodesAndConnectionsOutOfThePicture)
{
    Program const program;
    Outcome const outcome =
        program.run({{"layout", "hide", "ab", "root.g", "root.a.out > root.b.in1"}, {"svg"}});
    EXPECT_EQ(outcome.status, Status::Done);
    Picture const picture(outcome.out);
    EXPECT_THAT(picture.names("node"), UnorderedElementsAre("root.a", "root.b", "root.c"));
    EXPECT_THAT(picture.ofClass("connection"), IsEmpty());
}

TEST(MaterialLayoutHide, IsSaved)
{
    Program const program;
    GraphLayout const layout = program.layoutAfter({{"layout", "hide", "g.first", "root.g.o > root.c.in1"}});
    EXPECT_FALSE(*layout.getVisibleByNodeName("root.g.first"));
    EXPECT_FALSE(*layout.getVisibleByConnectionName("root.g.o > root.c.in1"));
}

TEST(MaterialLayoutUngroup, NodesStandNearTheCompoundAndAmongEachOtherAsBefore)
{
    Program const program;
    GraphLayout const before = richLayout();
    GraphLayout const after = program.layoutAfter(before, {"ungroup", "g"});
    EXPECT_LT(distance(wayBetween("root.first", "root.second", after),
                       wayBetween("root.g.first", "root.g.second", before)),
              rounding);
    EXPECT_LT(distance(positionOf("root.first", after), positionOf("root.g", before)), 300.0f);
    for (char const* other : {"root.a", "root.b", "root.c", "root.ab"})
        EXPECT_LT(distance(positionOf(other, after), positionOf(other, before)), rounding) << other;
    expectNoOverlap(Picture(
        program.run({{"layout", "load", program.folder().file("result.layout")}, {"ungroup", "g"}, {"svg"}})
            .out));
}

TEST(MaterialLayoutUngroup, NodesStandClearOfTheNotesTheyComeWith)
{
    std::string const document =
        "<nodegraph name='g' doc='What is inside.'><add name='x' type='float'/><add name='y' "
        "type='float'/></nodegraph><add name='z' type='float'/>";
    Program const program(materialx(document));
    Picture const picture(
        program.run({{"layout", "save", program.folder().file("l")}, {"ungroup", "g"}, {"svg"}}).out);
    ASSERT_EQ(picture.ofClass("note").size(), 1u);
    for (pugi::xml_node node : picture.ofClass("node"))
        EXPECT_FALSE(drawnOutline(node).overlaps(drawnOutline(picture.ofClass("note")[0])))
            << node.attribute("data-name").value();
}

} // namespace

} // namespace material_graph::test
