#include "SceneInvariants.h"

#include "SceneInspector.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

namespace kestrel::graph::test
{

namespace
{

using Counts = std::map<std::pair<unsigned int, unsigned int>, int>;

// Names of deep trees are longer than anybody reads.
std::string quoted(KS_String const& name)
{
    std::string const text(name);
    return "'" + (text.size() <= 200 ? text : text.substr(0, 100) + "..." + text.substr(text.size() - 100)) +
           "'";
}

std::string describe(GraphConnection* connection)
{
    return "connection " + quoted(connection->getFullName());
}

std::string describe(GraphNodeBase* node)
{
    return "node " + quoted(node->getFullName());
}

std::string describe(GraphNodePin* pin)
{
    return "pin " + quoted(pin->getFullName());
}

std::ptrdiff_t occurrences(ArrayOfPtr<GraphConnection, KS_NO> const& list, GraphConnection const* connection)
{
    return std::count(list.begin(), list.end(), connection);
}

class Checker
{
public:
    explicit Checker(GraphScene& scene) : scene_(scene) { collect(); }

    std::vector<std::string> run()
    {
        checkConnections();
        checkPinLists();
        checkTree();
        checkNodeMap();
        checkPinMaps();
        checkPairs();
        if (scene_.getUseAdjacencyMap()) checkAdjacency();
        return std::move(broken_);
    }

private:
    // The line is only made when it is needed: full names of deep trees are long.
    template <class Line>
    void expect(bool holds, Line line)
    {
        if (!holds) broken_.push_back(line());
    }

    // Every registered node, everything in the tree, and the pins of all of them and of the maps.
    void collect()
    {
        for (auto const& [id, node] : SceneInspector::nodesById(scene_)) addTree(node);
        if (scene_.getRootNode() != nullptr) addTree(scene_.getRootNode());
        for (GraphNodeBase* node : nodes_)
            pins_.insert(node->getNodePins().begin(), node->getNodePins().end());
        for (auto const& [id, pin] : SceneInspector::pinsById(scene_)) pins_.insert(pin);
    }

    void addTree(GraphNodeBase* top)
    {
        std::vector<GraphNodeBase*> open{top};
        while (!open.empty())
        {
            GraphNodeBase* const node = open.back();
            open.pop_back();
            if (!nodes_.insert(node).second) continue;
            open.insert(open.end(), node->getNodes().begin(), node->getNodes().end());
        }
    }

    void checkConnections()
    {
        auto const& connections = scene_.getGraphConnections();
        registered_.insert(connections.begin(), connections.end());
        expect(registered_.size() == connections.size(),
               [&] { return std::string("a connection stands in the array twice"); });
        for (GraphConnection* connection : registered_)
        {
            GraphNodePin* const source = connection->getSourcePin();
            GraphNodePin* const target = connection->getTargetPin();
            expect(source != nullptr && occurrences(source->getOutputConnections(), connection) == 1,
                   [&] { return describe(connection) + " is not once in its source pin's output list"; });
            expect(target != nullptr && occurrences(target->getInputConnections(), connection) == 1,
                   [&] { return describe(connection) + " is not once in its target pin's input list"; });
        }
    }

    void checkPinLists()
    {
        for (GraphNodePin* pin : pins_)
        {
            for (GraphConnection* connection : pin->getInputConnections())
                expect(registered_.count(connection) != 0 && connection->getTargetPin() == pin,
                       [&] {
                           return describe(pin) +
                                  " lists an input connection that is not the scene's, or not its own";
                       });
            for (GraphConnection* connection : pin->getOutputConnections())
                expect(registered_.count(connection) != 0 && connection->getSourcePin() == pin,
                       [&] {
                           return describe(pin) +
                                  " lists an output connection that is not the scene's, or not its own";
                       });
        }
    }

    void checkTree()
    {
        for (GraphNodeBase* node : nodes_)
        {
            for (GraphNodeBase* child : node->getNodes())
                expect(child->getNodeOwner() == node,
                       [&] { return describe(child) + " does not name the node that lists it"; });
            GraphNodeBase* const owner = node->getNodeOwner();
            if (owner != nullptr)
                expect(std::count(owner->getNodes().begin(), owner->getNodes().end(), node) == 1,
                       [&] { return describe(node) + " is not once in its owner's list"; });
            for (GraphNodePin* pin : node->getNodePins())
                expect(pin->getParentGraphNodePtr() == node,
                       [&] { return describe(pin) + " does not name the node that lists it"; });
        }
    }

    void checkNodeMap()
    {
        for (auto const& entry : SceneInspector::nodesById(scene_))
            expect(entry.second->getId() == entry.first,
                   [&] { return describe(entry.second) + " is registered under another id"; });
    }

    void checkPinMaps()
    {
        for (auto const& entry : SceneInspector::pinsById(scene_))
            expect(entry.second->getId() == entry.first,
                   [&] { return describe(entry.second) + " is registered under another id"; });
        for (auto const& entry : SceneInspector::pinsByFullName(scene_))
        {
            expect(pins_.count(entry.second) != 0 && entry.second->getFullName() == entry.first,
                   [&] { return "the key " + quoted(entry.first) + " leads to a pin of another name"; });
            expect(scene_.getPinPtrByFullName(entry.first) == entry.second,
                   [&] { return "the key " + quoted(entry.first) + " is not found"; });
        }
    }

    void checkPairs()
    {
        for (GraphNodePin* pin : pins_)
        {
            if (GraphNodePin* const child = pin->getChildGraphNodePinPtr())
                expect(child->getParentGraphNodePinPtr() == pin,
                       [&] { return describe(pin) + " has a child of another parent"; });
            if (GraphNodePin* const parent = pin->getParentGraphNodePinPtr())
                expect(parent->getChildGraphNodePinPtr() == pin,
                       [&] { return describe(pin) + " has a parent of another child"; });
        }
    }

    void checkAdjacency()
    {
        Counts all;
        Counts explicitOnes;
        for (GraphConnection* connection : registered_)
        {
            GraphNodeBase* const source = connection->getSourceNode();
            GraphNodeBase* const target = connection->getTargetNode();
            if (source == nullptr || target == nullptr) continue;
            std::pair const nodes(source->getId(), target->getId());
            ++all[nodes];
            if (!connection->isImplicit()) ++explicitOnes[nodes];
        }
        expect(countsOf([](auto const& counts) { return counts.all; }) == all,
               [&] { return std::string("the adjacency counts are not those of a recount"); });
        expect(countsOf([](auto const& counts) { return counts.notImplicit; }) == explicitOnes,
               [&] { return std::string("the explicit adjacency counts are not those of a recount"); });
    }

    template <class Choose>
    Counts countsOf(Choose choose) const
    {
        Counts result;
        for (auto const& [source, targets] : SceneInspector::adjacency(scene_))
            for (auto const& [target, counts] : targets)
                if (choose(counts) != 0) result[{source, target}] = choose(counts);
        return result;
    }

    GraphScene& scene_;
    std::set<GraphNodeBase*> nodes_;
    std::set<GraphNodePin*> pins_;
    std::set<GraphConnection*> registered_;
    std::vector<std::string> broken_;
};

} // namespace

std::vector<std::string> brokenInvariants(GraphScene& scene)
{
    return Checker(scene).run();
}

} // namespace kestrel::graph::test
