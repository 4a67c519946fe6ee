/// @file
/// Runs of the example host that leave layouts behind.
#pragma once

#include "MaterialGraphPictures.h"

#include <material_graph/LayoutFile.h>

#include <ks_graph/GraphLayout.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace material_graph::test
{

using kestrel::KS_String;
using kestrel::graph::GraphLayout;

using Words = std::vector<std::string>;

/// A chain of two, a node whose name begins with that of another, and a compound with a chain of its own.
constexpr char const* nestedChains = R"(<add name="a" type="float"/>
    <add name="ab" type="float"/>
    <add name="b" type="float"><input name="in1" type="float" nodename="a"/></add>
    <nodegraph name="g">
      <add name="first" type="float"/>
      <add name="second" type="float"><input name="in1" type="float" nodename="first"/></add>
      <output name="o" type="float" nodename="second"/>
    </nodegraph>
    <add name="c" type="float"><input name="in1" type="float" nodegraph="g" output="o"/></add>)";

/// Something of everything about that document, with other names for two of its nodes.
inline GraphLayout richLayout(std::string const& a = "a", std::string const& g = "g")
{
    GraphLayout layout;
    auto const node = [&](std::string const& name, float x, float y) {
        layout.insertNodePosition(KS_String("root." + name), {x, y});
    };
    node(a, 0.0f, 0.0f);
    node("ab", 0.0f, 300.0f);
    node("b", 250.0f, 40.0f);
    node(g, 500.0f, 300.0f);
    node("c", 800.0f, 320.0f);
    node(g + ".first", -100.0f, 50.0f);
    node(g + ".second", 150.0f, 90.0f);
    node(g + ".output interface01", 400.0f, 20.0f);
    KS_String const renamed("root." + a);
    KS_String const inside("root." + g + ".first");
    layout.insertNodeColor(renamed, {1.0f, 0.0f, 0.0f, 1.0f});
    layout.insertNodeHorizontalInputs(renamed, false);
    layout.insertNodeHorizontalOutputs("root.ab", false);
    layout.insertNodeCollapsed(inside, true);
    layout.insertNodeVisible(inside, false);
    layout.insertConnection(KS_String("root." + a + ".out > root.b.in1"), false, true);
    layout.insertConnection(KS_String("root." + g + ".o > root.c.in1"), true, false);
    layout.insertConnection(KS_String("root." + g + ".first.out > root." + g + ".second.in1"), false, false);
    for (std::string const& owner : {std::string("root"), "root." + g, "root." + a})
        layout.addNote(KS_String(owner), KS_String("of " + owner.substr(0, 4)), {0.0f, -200.0f},
                       {80.0f, 40.0f}, {}, {});
    return layout;
}

/// Runs of the program on one document, with a folder for their files.
class Program
{
public:
    explicit Program(std::string const& document = materialx(nestedChains))
        : path_(folder_.write("test.mtlx", document))
    {}

    Folder const& folder() const { return folder_; }
    std::string const& document() const { return path_; }

    /// The commands in one run.
    Outcome run(std::vector<Words> const& commands) const
    {
        Words arguments{path_};
        for (Words const& command : commands)
        {
            if (arguments.size() > 1) arguments.emplace_back("+");
            arguments.insert(arguments.end(), command.begin(), command.end());
        }
        return Outcome(arguments);
    }

    std::string write(GraphLayout const& layout) const
    {
        std::string const path = folder_.file("given.layout");
        EXPECT_EQ(saveLayout(path, layout), "");
        return path;
    }

    /// The command that gives every node of the document a place.
    Words placing() const { return {"layout", "load", write(richLayout())}; }

    /// The layout that the commands leave behind.
    GraphLayout layoutAfter(std::vector<Words> commands) const
    {
        std::string const path = folder_.file("result.layout");
        commands.push_back({"layout", "save", path});
        Outcome const outcome = run(commands);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.status, Status::Done);
        GraphLayout layout;
        EXPECT_EQ(loadLayout(path, layout), "");
        return layout;
    }

    GraphLayout layoutAfter(GraphLayout const& before, Words const& command) const
    {
        return layoutAfter({{"layout", "load", write(before)}, command});
    }

private:
    Folder folder_;
    std::string path_;
};

inline Point positionOf(std::string const& name, GraphLayout const& layout)
{
    auto const position = layout.getPositionByNodeName(KS_String(name));
    if (!position) throw std::runtime_error(name + " has no position");
    return {position->first, position->second};
}

inline Point wayBetween(std::string const& from, std::string const& to, GraphLayout const& layout)
{
    return positionOf(to, layout) - positionOf(from, layout);
}

inline bool isCollapsed(std::string const& name, GraphLayout const& layout)
{
    return layout.getCollapsedByNodeName(KS_String(name)).value_or(false);
}

inline bool isHidden(std::string const& connection, GraphLayout const& layout)
{
    return !layout.getVisibleByConnectionName(KS_String(connection)).value_or(true);
}

inline std::vector<std::string> noteOwners(GraphLayout const& layout)
{
    std::vector<std::string> owners;
    for (auto const& note : layout.getNotes()) owners.emplace_back(note.getOwnerName());
    return owners;
}

inline void expectRefused(Outcome const& outcome, std::string const& message)
{
    EXPECT_EQ(outcome.status, Status::Defects) << message;
    EXPECT_THAT(outcome.err, ::testing::HasSubstr(message));
    EXPECT_THAT(outcome.err, ::testing::Not(::testing::HasSubstr("usage:")));
    EXPECT_EQ(outcome.out, "");
}

} // namespace material_graph::test
