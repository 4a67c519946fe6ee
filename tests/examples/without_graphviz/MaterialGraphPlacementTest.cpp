#include "examples/MaterialGraphLayouts.h"

#include <material_graph/BoxArrangement.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace material_graph::test
{

namespace
{

using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr char const* reason =
    "error: nodes without a position cannot be placed by a program that was built without Graphviz\n";

TEST(MaterialPlacement, BoxesHaveNoPlaces)
{
    EXPECT_THROW(arrangeBoxes({{10.0f, 10.0f}}, {}, {20.0f, 30.0f}), NoArrangement);
}

TEST(MaterialPlacement, PictureOfNodesWithoutPlacesIsRefused)
{
    expectRefused(Program().run({{"svg"}}), std::string("svg: ") + reason);
    expectRefused(Program().run({{"svg", "g"}}), std::string("svg: ") + reason);
}

TEST(MaterialPlacement, OneNodeWithoutAPlaceIsEnoughToRefuse)
{
    Program const program;
    GraphLayout layout = richLayout();
    layout.removeNode("root.c");
    std::string const path = program.write(layout);
    expectRefused(program.run({{"layout", "load", path}, {"svg"}}), std::string("svg: ") + reason);
    EXPECT_EQ(program.run({{"layout", "load", path}, {"svg", "g"}}).err, "");
}

TEST(MaterialPlacement, LayoutOfNodesWithoutPlacesIsNotSavedAndTheOldOneStays)
{
    Program const program;
    std::string const path = program.folder().write("kept", "old");
    expectRefused(program.run({{"layout", "save", path}}), std::string("layout save: ") + reason);
    EXPECT_EQ(contentOf(path), "old");
    EXPECT_THAT(program.folder().names(), UnorderedElementsAre("test.mtlx", "kept"));
}

TEST(MaterialPlacement, LoadedPlacesAreEnoughForPicturesAndForSaving)
{
    Program const program;
    for (char const* level : {"root", "g"})
    {
        Outcome const outcome = program.run({program.placing(), {"svg", level}});
        EXPECT_EQ(outcome.status, Status::Done) << outcome.err;
        Picture const picture(outcome.out);
        expectWellFormed(outcome.out);
        expectOnThePage(picture);
        expectNoOverlap(picture);
    }
    EXPECT_EQ(program.layoutAfter({program.placing()}), richLayout());
}

TEST(MaterialPlacement, NewCompoundAndItsInterfaceNodesHavePlacesAmongThoseLoaded)
{
    Program const program;
    Words const grouping{"group", "h", "b", "g"};
    Outcome const outside = program.run({program.placing(), grouping, {"svg"}});
    EXPECT_THAT(Picture(outside.out).names("node"),
                UnorderedElementsAre("root.a", "root.ab", "root.h", "root.c"));
    Outcome const inside = program.run({program.placing(), grouping, {"svg", "h"}});
    EXPECT_EQ(Picture(inside.out).names("node").size(), 4u);
}

TEST(MaterialPlacement, LevelWithoutNodesNeedsNoPlaces)
{
    Outcome const outcome = runOn("<nodegraph name='g'/>", {"svg", "g"});
    EXPECT_EQ(outcome.status, Status::Done);
    EXPECT_THAT(Picture(outcome.out).names("node"), IsEmpty());
}

} // namespace

} // namespace material_graph::test
