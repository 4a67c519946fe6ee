#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/GraphScene.h>

#include <gtest/gtest.h>

#include <cstring>

namespace kestrel::graph::test
{

namespace
{

using Color = Color4<float>;

Color const standard(0.6f, 0.7f, 0.8f, 1.0f);
Color const red(1.0f, 0.25f, 0.5f, 0.75f);

/// Fills its table as a host does.
class ColorScene : public GraphScene
{
public:
    void setupNodeColor() override
    {
        GraphScene::setupNodeColor();
        nodeColorMap_["material"] = red;
        nodeColorMap_["Upper"] = red;
        nodeColorMap_["az@[`{09_ 50%s"] = red;
        nodeColorMap_["\xC9"] = red;
    }

    void emptyTable() { GraphScene::setupNodeColor(); }

    auto& table() { return nodeColorMap_; }
};

/// Names its type itself.
class TypedNode : public GraphNodeBase
{
public:
    KS_String getType() override { return "MATERIAL"; }
};

ColorScene filledScene()
{
    ColorScene scene;
    scene.setupNodeColor();
    return scene;
}

unsigned int bits(float value)
{
    unsigned int result = 0;
    static_assert(sizeof result == sizeof value);
    std::memcpy(&result, &value, sizeof value);
    return result;
}

} // namespace

TEST(SceneColors, DefaultColorHasExactlyTheseBits)
{
    GraphScene const scene;
    Color const color = scene.getColorFromNodeType("anything");
    EXPECT_EQ(bits(color.red), 0x3F19999Au);
    EXPECT_EQ(bits(color.green), 0x3F333333u);
    EXPECT_EQ(bits(color.blue), 0x3F4CCCCDu);
    EXPECT_EQ(bits(color.alpha), 0x3F800000u);
}

TEST(SceneColors, FreshSceneHasNoColors)
{
    ColorScene scene;
    EXPECT_TRUE(scene.table().empty());
    EXPECT_FALSE(scene.hasColorForNodeType("material"));
    EXPECT_EQ(scene.getColorFromNodeType("material"), standard);
}

TEST(SceneColors, TypeIsFoundWhateverTheCaseOfItsLetters)
{
    ColorScene const scene = filledScene();
    for (char const* type : {"material", "Material", "MATERIAL", "mATERIAl", "AZ@[`{09_ 50%S"})
    {
        SCOPED_TRACE(type);
        EXPECT_EQ(scene.getColorFromNodeType(type), red);
        EXPECT_TRUE(scene.hasColorForNodeType(type));
    }
}

TEST(SceneColors, OnlyTheWholeNameIsFoundAndOnlyLettersAreLowered)
{
    ColorScene const scene = filledScene();
    for (char const* type :
         {"", "materia", "materials", " material", "az`[`{09_ 50%s", "az@{`{09_ 50%s", "\xE9"})
    {
        SCOPED_TRACE(type);
        EXPECT_EQ(scene.getColorFromNodeType(type), standard);
        EXPECT_FALSE(scene.hasColorForNodeType(type));
    }
}

TEST(SceneColors, BytesOutsideAsciiAreComparedAsTheyAre)
{
    ColorScene const scene = filledScene();
    EXPECT_EQ(scene.getColorFromNodeType("\xC9"), red);
    EXPECT_TRUE(scene.hasColorForNodeType("\xC9"));
}

TEST(SceneColors, KeyWithAnUpperCaseLetterIsNeverFound)
{
    ColorScene const scene = filledScene();
    EXPECT_EQ(scene.getColorFromNodeType("Upper"), standard);
    EXPECT_EQ(scene.getColorFromNodeType("upper"), standard);
    EXPECT_FALSE(scene.hasColorForNodeType("Upper"));
    EXPECT_FALSE(scene.hasColorForNodeType("upper"));
}

TEST(SceneColors, EmptyTypeIsATypeLikeAnyOther)
{
    ColorScene scene;
    scene.table()[""] = red;
    EXPECT_EQ(scene.getColorFromNodeType(""), red);
    EXPECT_TRUE(scene.hasColorForNodeType(""));
}

TEST(SceneColors, AllFourComponentsAreTheStoredOnes)
{
    ColorScene const scene = filledScene();
    Color const color = scene.getColorFromNodeType("material");
    EXPECT_FLOAT_EQ(color.red, 1.0f);
    EXPECT_FLOAT_EQ(color.green, 0.25f);
    EXPECT_FLOAT_EQ(color.blue, 0.5f);
    EXPECT_FLOAT_EQ(color.alpha, 0.75f);
}

TEST(SceneColors, NodeIsLookedUpByItsType)
{
    ColorScene const scene = filledScene();
    GraphNodeBase node;
    EXPECT_EQ(scene.getColorFromNodeType(&node), standard);
    node.setName("material");
    EXPECT_EQ(scene.getColorFromNodeType(&node), standard);
    node.setType("Material");
    EXPECT_EQ(scene.getColorFromNodeType(&node), red);
    EXPECT_STREQ(node.getType().c_str(), "Material");
}

TEST(SceneColors, NodeIsAskedForItsTypeThroughTheVirtualOperation)
{
    ColorScene const scene = filledScene();
    TypedNode node;
    node.setType("something else");
    EXPECT_EQ(scene.getColorFromNodeType(&node), red);
}

TEST(SceneColors, NoNodeHasTheDefaultColor)
{
    ColorScene scene;
    scene.table()[""] = red;
    GraphNodeBase* const none = nullptr;
    EXPECT_EQ(scene.getColorFromNodeType(none), standard);
}

TEST(SceneColors, BaseSetupEmptiesTheTable)
{
    ColorScene scene = filledScene();
    scene.emptyTable();
    EXPECT_TRUE(scene.table().empty());
    EXPECT_EQ(scene.getColorFromNodeType("material"), standard);
    EXPECT_FALSE(scene.hasColorForNodeType("material"));
}

TEST(SceneColors, LookUpsChangeNeitherTableNorScene)
{
    ColorScene scene = filledScene();
    std::size_t const entries = scene.table().size();
    scene.getColorFromNodeType("unknown");
    scene.hasColorForNodeType("unknown");
    EXPECT_EQ(scene.table().size(), entries);
    EXPECT_FALSE(scene.getIsDirty());
}

TEST(SceneColors, ClearKeepsTheTableAndACopyTakesIt)
{
    TestGraph<ColorScene> graph;
    graph.scene.setupNodeColor();
    graph.scene.clear();
    EXPECT_TRUE(graph.scene.hasColorForNodeType("material"));
    ColorScene const copy(graph.scene);
    EXPECT_TRUE(copy.hasColorForNodeType("material"));
    EXPECT_SCENE_INVARIANTS(graph.scene);
}

} // namespace kestrel::graph::test
