#include "SceneText.h"

#include "SceneInspector.h"

#include <set>
#include <sstream>

namespace kestrel::graph::test
{

namespace
{

std::string fullName(GraphNodeBase* node)
{
    return node != nullptr ? std::string(node->getFullName()) : "-";
}

std::string fullName(GraphNodePin* pin)
{
    return pin != nullptr ? std::string(pin->getFullName()) : "-";
}

std::string fullName(GraphConnection* connection)
{
    return std::string(connection->getFullName()) + (connection->isImplicit() ? " (implicit)" : "");
}

template <class List>
void writeNames(std::ostream& out, char const* title, List const& list)
{
    out << " " << title << "[";
    for (auto* const element : list) out << fullName(element) << "; ";
    out << "]";
}

class Writer
{
public:
    explicit Writer(GraphScene& scene) : scene_(scene) {}

    std::string run(std::initializer_list<GraphNodeBase*> others)
    {
        for (auto const& [id, node] : SceneInspector::nodesById(scene_))
        {
            out_ << "id " << id << " is " << fullName(node) << "\n";
            writeTree(node);
        }
        writeTree(scene_.getRootNode());
        for (GraphNodeBase* const node : others) writeTree(node);
        for (auto const& [name, pin] : SceneInspector::pinsByFullName(scene_))
            out_ << "name " << std::string(name) << " is " << fullName(pin) << "\n";
        for (auto const& [id, pin] : SceneInspector::pinsById(scene_))
            out_ << "registered " << fullName(pin) << "\n";
        writeNames(out_, "connections", scene_.getGraphConnections());
        writeAdjacency();
        out_ << scene_.getNumberOfNodes() << scene_.getNumberOfConnections() << scene_.getAllowLoops()
             << scene_.getAllowDuplicatedConnections() << scene_.getKeepRootNode() << "\n";
        return out_.str();
    }

private:
    void writeTree(GraphNodeBase* node)
    {
        if (node == nullptr || !written_.insert(node).second) return;
        out_ << "node " << node->getId() << " " << fullName(node) << " type " << std::string(node->getType())
             << " category " << std::string(node->getCategory()) << " description "
             << std::string(node->getDescription()) << (node->isCompound() ? " compound" : "")
             << (node->isInterface() ? " interface" : "") << " owner " << fullName(node->getNodeOwner())
             << (node->getGraphScene() == &scene_ ? " here" : "");
        writeNames(out_, "children", node->getNodes());
        out_ << "\n";
        for (GraphNodePin* const pin : node->getNodePins()) writePin(pin);
        for (GraphNodeBase* const child : node->getNodes()) writeTree(child);
    }

    void writePin(GraphNodePin* pin)
    {
        out_ << "  pin " << fullName(pin) << " " << pin->getDirection().value() << " "
             << pin->getMaxNumConnections() << " node " << fullName(pin->getParentGraphNodePtr())
             << " parent " << fullName(pin->getParentGraphNodePinPtr()) << " child "
             << fullName(pin->getChildGraphNodePinPtr())
             << (scene_.getPinPtrById(pin->getId()) == pin ? " found by id" : "")
             << (scene_.getPinPtrByFullName(pin->getFullName()) == pin ? " found by name" : "");
        writeNames(out_, "in", pin->getInputConnections());
        writeNames(out_, "out", pin->getOutputConnections());
        out_ << "\n";
    }

    void writeAdjacency()
    {
        out_ << "\n";
        for (auto const& [source, targets] : SceneInspector::adjacency(scene_))
            for (auto const& [target, counts] : targets)
                if (counts.all != 0 || counts.notImplicit != 0)
                    out_ << source << " to " << target << ": " << counts.all << " " << counts.notImplicit
                         << "\n";
    }

    GraphScene& scene_;
    std::set<GraphNodeBase*> written_;
    std::ostringstream out_;
};

} // namespace

std::string sceneText(GraphScene& scene, std::initializer_list<GraphNodeBase*> others)
{
    return Writer(scene).run(others);
}

} // namespace kestrel::graph::test
