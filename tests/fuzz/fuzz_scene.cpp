#include "Expect.h"
#include "SceneXml.h"

#include "support/MoveRecords.h"
#include "support/SceneInvariants.h"
#include "support/TestGraph.h"

#include <ks_graph/ks_graph.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::fuzz
{

namespace
{

using graph::GraphConnection;
using graph::GraphNodeBase;
using graph::GraphNodePin;
using graph::PinDirection;
using graph::test::MoveRecords;
using graph::test::TestNode;

using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Connections = ArrayOfPtr<GraphConnection, KS_NO>;

/// More would only be slow.
constexpr unsigned int mostNodes = 60;

/// The full stop is looked for at the end of all bytes, what is written ends at the first NUL.
std::string htmlOf(std::string description)
{
    constexpr std::string_view lineBreak = "</p><p>";
    for (std::size_t at = description.find('\n'); at != std::string::npos;
         at = description.find('\n', at + lineBreak.size()))
        description.replace(at, 1, lineBreak);
    if (description.ends_with('.')) description.pop_back();
    description.resize(std::min(description.size(), description.find('\0')));
    return "<html><head/><body><p/><h3>Description</h3><p>" + description + ".</p><p/></body></html>";
}

/// A scene that changes as the input wants it. Whatever the changes, its views of the graph agree, and its
/// texts tell what is in it. Every name is given once: two pins of one full name share an entry, which is not
/// to be tested here.
class Editing
{
public:
    explicit Editing(FuzzedDataProvider& input) : input_(input)
    {
        graph_.root.setCompound(true);
        scene().setUseAdjacencyMap(input.ConsumeBool());
        scene().setAllowDuplicatedConnections(input.ConsumeBool());
    }

    void run()
    {
        while (input_.remaining_bytes() != 0)
        {
            (this->*input_.PickValueInArray(operations))();
            expectAgreement();
        }
    }

private:
    graph::GraphScene& scene() { return graph_.scene; }

    void expectAgreement()
    {
        std::vector<std::string> const broken = graph::test::brokenInvariants(scene());
        for (std::string const& line : broken) std::fprintf(stderr, "%s\n", line.c_str());
        FUZZ_EXPECT(broken.empty());
        KS_String const xml = scene().toXml();
        FUZZ_EXPECT(SceneXmlReader(xml).read() == elementOf(scene()));
    }

    // ---- What the input chooses

    template <class List>
    auto pick(List const& list)
    {
        using Element = std::remove_cvref_t<decltype(*list.begin())>;
        auto const size = list.end() - list.begin();
        if (size == 0) return Element(nullptr);
        return list.begin()[input_.ConsumeIntegralInRange<std::ptrdiff_t>(0, size - 1)];
    }

    Nodes allNodes()
    {
        Nodes nodes;
        scene().getGraphNodesAsList(nodes);
        return nodes;
    }

    GraphNodeBase& someNode() { return *pick(allNodes()); }

    GraphNodePin* somePin() { return pick(someNode().getNodePins()); }

    /// The root is one of them.
    GraphNodeBase& someCompound()
    {
        Nodes compounds = allNodes();
        compounds.removeIf([](GraphNodeBase* node) { return !node->isCompound(); });
        return *pick(compounds);
    }

    /// Nodes that leave the root end without owner, which leaves the keys of their pins as they were.
    GraphNodeBase* someInnerCompound()
    {
        GraphNodeBase& compound = someCompound();
        return &compound != &graph_.root ? &compound : nullptr;
    }

    Nodes someOf(Nodes const& nodes)
    {
        Nodes chosen;
        for (unsigned int left = input_.ConsumeIntegralInRange(0u, 5u); left != 0; --left)
            if (GraphNodeBase* const node = pick(nodes)) chosen.append(node);
        return chosen;
    }

    PinDirection someDirection() { return PinDirection(input_.ConsumeIntegralInRange(0u, 3u)); }

    unsigned int someLimit()
    {
        return input_.PickValueInArray({0u, 1u, 2u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu});
    }

    /// None that a move makes of another one: those end in digits.
    KS_String newName() { return KS_String(std::to_string(++names_).append("n")); }

    // ---- Nodes and pins

    void addNode()
    {
        if (scene().getNumberOfNodes() >= mostNodes) return;
        GraphNodeBase& owner = someCompound();
        graph_.addNode(newName(), &owner);
    }

    void addPin()
    {
        GraphNodeBase& node = someNode();
        if (node.isInterface()) return;
        PinDirection const direction = someDirection();
        graph_.addPin(node, newName(), direction, someLimit());
    }

    void removePin()
    {
        if (GraphNodePin* const pin = somePin()) scene().removeNodePinFromSceneAndNode(pin);
    }

    void rename()
    {
        someNode().setName(newName());
        if (GraphNodePin* const pin = somePin()) pin->setName(newName());
    }

    /// The adjacency counts would stay under the old id.
    void changeId()
    {
        if (scene().getUseAdjacencyMap()) return;
        GraphNodeBase& node = someNode();
        unsigned int const id = input_.ConsumeBool() ? input_.ConsumeIntegral<unsigned int>()
                                                     : 0x7FFFFFFFu + input_.ConsumeIntegralInRange(0u, 9u);
        if (id != 0xFFFFFFFFu && !scene().hasGraphNodeWithId(id)) node.setId(id);
    }

    void changeOwner()
    {
        GraphNodeBase& node = someNode();
        if (node.isInterface() || &node == &graph_.root) return;
        node.setNodeOwner(&someCompound());
    }

    /// With all below it, and all their pins.
    void removeNode()
    {
        GraphNodeBase& node = someNode();
        if (node.isInterface() || &node == &graph_.root) return;
        Nodes nodes;
        nodes.append(&node);
        node.getNodesRecursively(nodes);
        for (GraphNodeBase* each : nodes) removePins(*each);
        FUZZ_EXPECT(scene().removeNodeFromGraph(&node));
        for (GraphNodeBase* each : nodes)
        {
            each->destroyNodePins();
            delete each;
        }
    }

    /// Compound pins that are paired with no interface pin are spared by the scene.
    void removePins(GraphNodeBase& node)
    {
        scene().removeNodePins(&node);
        for (GraphNodePin* pin : node.getNodePins())
        {
            FUZZ_EXPECT(node.isCompound());
            scene().removeConnectionsWithPin(pin);
            scene().removeNodePin(pin);
        }
    }

    void describe()
    {
        std::string const description = input_.ConsumeRandomLengthString(60);
        GraphNodeBase& node = someNode();
        node.setDescription(KS_String(description));
        FUZZ_EXPECT(std::string(node.asHTML()) == htmlOf(description));
    }

    // ---- Connections

    void connectPins()
    {
        GraphNodePin* const source = somePin();
        GraphNodePin* const target = somePin();
        unsigned int const before = scene().getGraphConnections().size();
        GraphConnection* const made = scene().connect(source, target, input_.ConsumeBool());
        FUZZ_EXPECT(scene().getGraphConnections().size() == before + (made != nullptr ? 1u : 0u));
    }

    void connectNodes()
    {
        GraphNodeBase& source = someNode();
        GraphNodeBase& target = someNode();
        scene().connect(&source, &target, input_.ConsumeBool());
    }

    void removeConnection() { scene().removeConnection(pick(scene().getGraphConnections())); }

    // ---- Compounds

    void addCompound()
    {
        if (scene().getNumberOfNodes() >= mostNodes) return;
        GraphNodeBase& owner = someCompound();
        GraphNodeBase* const compound = scene().createNewCompound();
        compound->setName(newName());
        scene().addNodeToGraph(compound);
        compound->setNodeOwner(&owner);
    }

    void addInterface()
    {
        if (scene().getNumberOfNodes() >= mostNodes) return;
        GraphNodeBase* interfaceNode = nullptr;
        GraphNodePin* compoundPin = nullptr;
        GraphNodePin* interfacePin = nullptr;
        GraphNodeBase& compound = someCompound();
        scene().addCompoundInterfaceNode(someDirection(), &compound, interfaceNode, compoundPin,
                                         interfacePin);
    }

    void moveIn()
    {
        if (scene().getNumberOfNodes() >= mostNodes) return;
        Nodes const nodes = someOf(allNodes());
        MoveRecords records;
        scene().moveNodesToCompound(nodes, &someCompound(), records.pinRenames, records.inputInterfaces,
                                    records.outputInterfaces, records.newInterfaceNodes,
                                    records.newCompoundPins, records.removed, records.outer, records.inner);
    }

    void moveOut()
    {
        GraphNodeBase* const compound = someInnerCompound();
        if (compound == nullptr) return;
        Nodes nodes = someOf(compound->getNodes());
        MoveRecords records;
        scene().removeNodesFromCompound(compound, nodes, records.pinRenames, records.removedOuter,
                                        records.removed, records.outer, records.inner);
    }

    void moveOutCreatingInterfaces()
    {
        if (scene().getNumberOfNodes() >= mostNodes) return;
        GraphNodeBase* const compound = someInnerCompound();
        if (compound == nullptr) return;
        Nodes nodes = someOf(compound->getNodes());
        MoveRecords records;
        scene().removeNodesFromCompoundCreatingInterfaces(
            compound, nodes, records.pinRenames, records.removedOuter, records.removed, records.outer,
            records.inner, records.inputInterfaces, records.outputInterfaces, records.newInterfaceNodes,
            records.newCompoundPins);
    }

    static constexpr void (Editing::*operations[])() = {
        &Editing::addNode,          &Editing::addNode,
        &Editing::addPin,           &Editing::addPin,
        &Editing::addPin,           &Editing::removePin,
        &Editing::rename,           &Editing::changeId,
        &Editing::changeOwner,      &Editing::removeNode,
        &Editing::describe,         &Editing::connectPins,
        &Editing::connectPins,      &Editing::connectNodes,
        &Editing::removeConnection, &Editing::addCompound,
        &Editing::addInterface,     &Editing::moveIn,
        &Editing::moveOut,          &Editing::moveOutCreatingInterfaces};

    FuzzedDataProvider& input_;
    graph::test::TestGraph<> graph_;
    unsigned int names_ = 0;
};

} // namespace

} // namespace kestrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    kestrel::fuzz::Editing(input).run();
    return 0;
}
