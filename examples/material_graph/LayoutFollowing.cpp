#include "LayoutFollowing.h"

#include "LevelPlacement.h"
#include "LevelShapes.h"

#include <map>
#include <optional>

namespace material_graph
{

using kestrel::_Wa;
using kestrel::Array;
using kestrel::ArrayOfPtr;
using kestrel::KS_NO;
using kestrel::KS_String;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphLayout;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;
using kestrel::graph::GraphSettings;
using kestrel::graph::NoteDesc;

namespace
{

using Dictionary = std::map<KS_String const, KS_String>;

// The old names of everything at and below the moved nodes.
class OldNames
{
public:
    explicit OldNames(std::vector<MovedNode> const& moved)
    {
        for (MovedNode const& top : moved) addTree(top);
        for (auto const& [node, name] : oldNames_) addNode(*node, name);
    }

    // From old to new.
    Dictionary const& dictionary() const { return dictionary_; }

private:
    void addTree(MovedNode const& top)
    {
        std::vector<std::pair<GraphNodeBase*, KS_String>> open{{top.node, top.nameBefore}};
        while (!open.empty())
        {
            auto const [node, oldName] = open.back();
            open.pop_back();
            oldNames_[node] = oldName;
            for (GraphNodeBase* child : node->getNodes())
                open.emplace_back(child, oldName + "." + child->getName());
        }
    }

    void addNode(GraphNodeBase& node, KS_String const& oldName)
    {
        dictionary_[oldName] = node.getFullName();
        ArrayOfPtr<GraphConnection, KS_NO> connections;
        node.getConnections(connections, true, true, true, true);
        for (GraphConnection* connection : connections)
            dictionary_[oldNameOf(connection->getSourcePin()) + " > " +
                        oldNameOf(connection->getTargetPin())] = connection->getFullName();
    }

    KS_String oldNameOf(GraphNodePin* pin) const
    {
        auto const moved = oldNames_.find(pin->getParentGraphNodePtr());
        return moved != oldNames_.end() ? moved->second + "." + pin->getName() : pin->getFullName();
    }

    std::map<GraphNodeBase*, KS_String> oldNames_;
    Dictionary dictionary_;
};

// The outlines of those of the nodes that have a position, together.
std::optional<Rect> blockOf(std::vector<MovedNode> const& nodes, GraphLayout const& layout,
                            GraphSettings const& settings)
{
    std::optional<Rect> block;
    for (MovedNode const& moved : nodes)
        if (std::optional<Rect> const outline = outlineOf(*moved.node, layout, settings))
            block = block ? block->unitedWith(*outline) : *outline;
    return block;
}

void placeNear(GraphLayout& layout, GraphSettings const& settings, GraphNodeBase& node, Point wanted)
{
    Rect const outline = shapeOf(node, layout, settings).outline;
    auto const others = occupiedIn(*node.getNodeOwner(), layout, settings, {&node});
    Point const corner = freePlaceNear(wanted, outline.size, others, settings) - outline.topLeft;
    layout.insertNodePosition(node.getFullName(), {corner.x, corner.y});
}

void placeInterfaceNodes(GraphLayout& layout, GraphSettings const& settings, GraphNodeBase& compound,
                         Rect const& block)
{
    float const gap = settings.getFreeAreaMargin().first;
    for (GraphNodeBase* node : compound.getNodes())
    {
        if (!node->isInterface()) continue;
        float const width = shapeOf(*node, layout, settings).outline.size.width;
        float const left = node->isInputInterface() ? block.left() - gap - width : block.right() + gap;
        placeNear(layout, settings, *node, {left, block.top()});
    }
}

void movePositions(GraphLayout& layout, std::vector<MovedNode> const& nodes, Point distance)
{
    GraphLayout part;
    for (MovedNode const& moved : nodes)
    {
        KS_String const name = moved.node->getFullName();
        if (auto const position = layout.getPositionByNodeName(name))
            part.insertNodePosition(name, *position);
    }
    part.offset({distance.x, distance.y});
    layout.updateWithOther(part);
}

void moveNotes(GraphLayout& layout, KS_String const& from, KS_String const& to, Point distance)
{
    Array<NoteDesc, _Wa> notes;
    for (NoteDesc& note : layout.refNotes())
    {
        if (note.getOwnerName() != from) continue;
        if (auto const position = note.getPosition())
            note.setPosition({position->first + distance.x, position->second + distance.y});
        notes.append(note);
    }
    layout.moveNotes(notes, to);
}

} // namespace

void followRenames(GraphLayout& layout, std::vector<MovedNode> const& moved)
{
    OldNames const names(moved);
    Dictionary const& dictionary = names.dictionary();
    // What the layout still knows of a node that once had the name is not the moved node's.
    for (auto const& [before, now] : dictionary)
        if (dictionary.count(now) == 0) layout.removeNode(now);
    layout.applyDictionary(dictionary);
}

void followGrouping(GraphLayout& layout, GraphSettings const& settings, MaterialNode& compound,
                    std::vector<MovedNode> const& moved)
{
    followRenames(layout, moved);
    layout.removeNode(compound.getFullName());
    for (GraphNodeBase* node : compound.getNodes())
        if (node->isInterface()) layout.removeNode(node->getFullName());
    std::optional<Rect> const block = blockOf(moved, layout, settings);
    if (!block) return;
    placeInterfaceNodes(layout, settings, compound, *block);
    placeNear(layout, settings, compound, block->topLeft);
}

FormerCompound::FormerCompound(MaterialNode& compound)
    : name(compound.getFullName()), owner(*compound.getNodeOwner())
{
    for (GraphNodeBase* node : compound.getNodes())
        if (node->isInterface()) interfaceNames.push_back(node->getFullName());
}

void followUngrouping(GraphLayout& layout, GraphSettings const& settings, FormerCompound const& compound,
                      std::vector<MovedNode> const& moved)
{
    std::optional<Point> place;
    if (auto const position = layout.getPositionByNodeName(compound.name))
        place = Point{position->first, position->second};
    layout.removeNode(compound.name);
    for (KS_String const& name : compound.interfaceNames) layout.removeNode(name);
    followRenames(layout, moved);

    std::vector<GraphNodeBase*> nodes;
    for (MovedNode const& node : moved) nodes.push_back(node.node);
    Point distance;
    std::optional<Rect> block = blockOf(moved, layout, settings);
    if (block)
        for (Rect const& note : noteBoxesOf(compound.name, layout, settings)) block = block->unitedWith(note);
    if (block && place)
        distance = freePlaceNear(*place, block->size, occupiedIn(compound.owner, layout, settings, nodes),
                                 settings) -
                   block->topLeft;
    movePositions(layout, moved, distance);
    moveNotes(layout, compound.name, compound.owner.getFullName(), distance);
}

} // namespace material_graph
