/// @file
/// Builds one large scene, asks and changes it, and checks every answer. Prints a line for each step that
/// held, with its time and the most memory that the process has had so far.
///   scale NUMBER-OF-NODES
#include <foundation/FileStream.h>
#include <ks_graph/ks_graph.h>

#include <sys/resource.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using Nodes = ArrayOfPtr<GraphNodeBase, KS_NO>;
using Connections = ArrayOfPtr<GraphConnection, KS_NO>;

constexpr unsigned int unlimited = 0xFFFFFFFFu;
constexpr std::size_t nodesPerCompound = 250;
constexpr std::size_t topCompounds = 20;
constexpr std::size_t compoundsInEach = 5;
constexpr std::size_t memoryLimit = std::size_t{4} << 30;

// Each of them asks every node of the scene for its full name.
constexpr std::size_t lookUpsByFullName = 5;
constexpr std::size_t freeNames = 2;
constexpr std::size_t movedNodes = 3;

void require(bool holds, char const* what)
{
    if (holds) return;
    std::fprintf(stderr, "FAILED: %s\n", what);
    std::exit(1);
}

std::size_t peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

/// From its making to `passed`.
class Step
{
public:
    explicit Step(char const* name) : name_(name), start_(std::chrono::steady_clock::now()) {}

    void passed() const
    {
        std::chrono::duration<double> const time = std::chrono::steady_clock::now() - start_;
        require(peakMemory() < memoryLimit, "the memory stays below 4 GiB");
        std::printf("scale: %s: %.1f s, %zu MiB\n", name_, time.count(), peakMemory() >> 20);
        std::fflush(stdout);
    }

private:
    char const* name_;
    std::chrono::steady_clock::time_point start_;
};

/// Deletes its pins with itself.
class Node : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;
    Node(Node const&) = delete;
    Node& operator=(Node const&) = delete;
    ~Node() override { destroyNodePins(); }
};

std::size_t occurrences(std::string_view text, std::string_view part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

/// Nodes "n0", "n1", ..., each with the inputs "a" and "b" and the output "out", in compounds of several
/// levels. The output of each leads to the input "a" of the next one and to the input "b" of one far away,
/// round and round.
class LargeScene
{
public:
    explicit LargeScene(std::size_t numberOfNodes)
        : size_(numberOfNodes), compounds_(numberOfNodes / nodesPerCompound)
    {
        root_.setName("root");
        scene_.setRootNode(&root_);
        scene_.addNodeToGraph(&root_);
    }

    void build()
    {
        Step const step("build");
        for (std::size_t i = 0; i < compounds_.size(); ++i)
            compounds_[i] =
                &addNode(i < topCompounds ? root_ : *compounds_[(i - topCompounds) / compoundsInEach],
                         "c" + std::to_string(i));
        nodes_.reserve(size_);
        for (std::size_t i = 0; i < size_; ++i)
        {
            nodes_.push_back(&addNode(*compounds_[i % compounds_.size()], nameOf(i)));
            addPin(*nodes_[i], PIN_INPUT, "a");
            addPin(*nodes_[i], PIN_INPUT, "b");
            addPin(*nodes_[i], PIN_OUTPUT, "out");
        }
        for (std::size_t i = 0; i < size_; ++i)
        {
            require(scene_.connect(pin(i, out), pin(next(i), a), false) != nullptr,
                    "a node feeds the next one");
            require(scene_.connect(pin(i, out), pin(far(i), b), i % 10 == 0) != nullptr,
                    "a node feeds a far one");
        }
        require(scene_.getNumberOfNodes() == 1 + compounds_.size() + size_, "all nodes are registered");
        require(scene_.getNumberOfConnections() == 2 * size_, "all connections are made");
        step.passed();
    }

    void askNodes()
    {
        Step const step("ids, names and levels");
        for (std::size_t i = 0; i < size_; ++i)
        {
            require(scene_.getNodePtrById(nodes_[i]->getId()) == nodes_[i], "each node is found by its id");
            std::string const name = fullNameOf(i);
            require(nodes_[i]->getFullName() == name, "each node has its full name");
            require(scene_.getPinPtrByFullName(KS_String(name + ".out")) == pin(i, out),
                    "each pin is found by its full name");
        }
        require(!scene_.hasGraphNodeWithId(unlimited), "an unknown id is not found");
        Nodes found;
        scene_.getAllGraphCompounds(found);
        require(found.size() == 1 + compounds_.size(), "all compounds are found");
        found.clear();
        scene_.getGraphNodesAtLevel(&root_, true, found);
        require(found.size() == compounds_.size() + size_, "all nodes are found below the root");
        for (std::size_t i = 0; i < lookUpsByFullName; ++i)
        {
            std::size_t const wanted = i * (size_ - 1) / (lookUpsByFullName - 1);
            require(scene_.getNodePtrByFullName(KS_String(fullNameOf(wanted))) == nodes_[wanted],
                    "a node is found by its full name");
        }
        step.passed();
    }

    void askConnections()
    {
        Step const step("connections");
        std::size_t ends = 0;
        for (std::size_t i = 0; i < size_; ++i)
        {
            require(scene_.areNodesConnected(nodes_[i], nodes_[next(i)], false, false),
                    "neighbours are connected");
            require(scene_.areNodesConnected(nodes_[i], nodes_[far(i)], false, true),
                    "far nodes are connected");
            require(!scene_.areNodesConnected(nodes_[next(i)], nodes_[i], false, true) || far(next(i)) == i,
                    "no connection leads back");
            Connections found;
            scene_.getConnectionsWithNode(nodes_[i], found, true, true, true, true);
            ends += found.size();
        }
        require(ends == 4 * size_, "each node has two connections on either side");
        step.passed();
    }

    void rename()
    {
        Step const step("renamed compounds");
        for (std::size_t i = 0; i < topCompounds; ++i)
        {
            compounds_[i]->setName(KS_String("renamed" + std::to_string(i)));
            require(scene_.getPinPtrByFullName(KS_String(fullNameOf(i) + ".out")) == pin(i, out),
                    "a pin is found below a renamed compound");
        }
        for (std::size_t i = 0; i < size_; i += 97)
            require(scene_.getPinPtrByFullName(pin(i, b)->getFullName()) == pin(i, b),
                    "each pin is found by its new full name");
        step.passed();
    }

    void makeFreeNames()
    {
        Step const step("free names");
        KS_String const owner = compounds_[0]->getFullName();
        for (std::size_t i = 0; i < freeNames; ++i)
            require(scene_.getFreeNodeName(owner, "n") == "n01", "the first free name is found");
        require(scene_.getFreePinName(nodes_[0]->getFullName(), "a") == "a01",
                "the first free pin name is found");
        step.passed();
    }

    /// Each moved node has four connections, all of which cross the boundary of the new compound.
    void moveIntoCompound()
    {
        Step const step("a move into a new compound");
        Node& compound = addNode(root_, "moved");
        compound.setCompound(true);
        Nodes moved;
        for (std::size_t i = 0; i < movedNodes; ++i) moved.append(nodes_[i * (size_ / movedNodes)]);
        std::map<KS_String, KS_String> renames;
        std::map<GraphNodeBase*, GraphNodeBase*> inputs;
        std::map<GraphNodeBase*, GraphNodeBase*> outputs;
        ArrayOfPtr<GraphNodePin, KS_NO> pins;
        Array<GraphConnection, _Wa> removed;
        Connections outer;
        Connections inner;
        scene_.moveNodesToCompound(moved, &compound, renames, inputs, outputs, interfaceNodes_, pins, removed,
                                   outer, inner);
        require(compound.getNodes().size() == movedNodes + interfaceNodes_.size(),
                "the nodes are in the compound");
        require(interfaceNodes_.size() == 2 * movedNodes, "each moved node has its interfaces");
        require(removed.size() == outer.size() && removed.size() == inner.size(),
                "each connection has two halves");
        require(scene_.getNumberOfConnections() == 2 * size_ + removed.size(), "no connection is lost");
        extraConnections_ = removed.size();
        ++extraNodes_;
        step.passed();
    }

    void exportXml()
    {
        Step const step("XML");
        KS_String const xml = scene_.toXml();
        std::size_t const nodes = 1 + compounds_.size() + size_ + extraNodes_ + interfaceNodes_.size();
        require(occurrences(xml, "<node ") == nodes, "each node is in the XML");
        require(occurrences(xml, "<pin ") == 3 * size_ + 2 * extraConnections_, "each pin is in the XML");
        require(occurrences(xml, "<connection ") == 2 * size_ + extraConnections_,
                "each connection is in the XML");
        step.passed();
    }

    void saveLayout()
    {
        Step const step("a layout written and read");
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::tmpfile(), std::fclose);
        require(file != nullptr, "there is a temporary file");
        FileStreamEndian stream(file.get());
        require(layoutOfAll().write(stream), "the layout is written");
        std::rewind(file.get());
        GraphLayout layout;
        require(layout.read(stream), "the layout is read");
        Array<KS_String, _Wa> names;
        layout.getAllNodeNames(names);
        require(names.size() == size_, "the layout has each node");
        names.clear();
        layout.getAllConnectionNames(names);
        require(names.size() == scene_.getNumberOfConnections(), "the layout has each connection");
        for (std::size_t i = 0; i < size_; ++i)
        {
            Optional<Tuple2<float, float>> const position =
                layout.getPositionByNodeName(nodes_[i]->getFullName());
            require(position && *position == positionOf(i), "each node has its position");
        }
        step.passed();
    }

    /// Every tenth node, with its pins.
    void removePart()
    {
        Step const step("a part removed");
        std::size_t connections = scene_.getNumberOfConnections();
        std::size_t const nodes = scene_.getNumberOfNodes();
        for (std::size_t i = 0; i < size_; i += 10)
        {
            for (Direction const name : {a, b, out}) connections -= pin(i, name)->getNumConnections();
            GraphNodeBase* const node = nodes_[i];
            scene_.removeNodePins(node);
            require(scene_.removeNodeFromGraph(node), "a node is removed");
            delete node;
            nodes_[i] = nullptr;
        }
        require(scene_.getNumberOfNodes() == nodes - (size_ + 9) / 10, "the removed nodes are gone");
        require(scene_.getNumberOfConnections() == connections, "their connections are gone");
        for (std::size_t i = 0; i + 1 < size_; ++i)
            if (nodes_[i] != nullptr && nodes_[i + 1] != nullptr && !isMoved(i) && !isMoved(i + 1))
                require(scene_.areNodesConnected(nodes_[i], nodes_[i + 1], false, false),
                        "the others are connected");
        step.passed();
    }

    void clear()
    {
        Step const step("cleared");
        scene_.clear();
        require(scene_.getNumberOfNodes() == 0 && scene_.getNumberOfConnections() == 0, "the scene is empty");
        require(root_.getNodes().isEmpty(), "the root is empty");
        step.passed();
    }

private:
    enum Direction : unsigned int
    {
        a,
        b,
        out
    };

    Node& addNode(GraphNodeBase& owner, std::string const& name)
    {
        Node& node = *new Node(scene_.getFreeNodeId());
        node.setName(KS_String(name));
        node.setNodeOwner(&owner);
        scene_.addNodeToGraph(&node);
        return node;
    }

    void addPin(Node& node, PinDirection direction, char const* name)
    {
        scene_.createNewPin(&node, unlimited, direction)->setName(name);
    }

    GraphNodePin* pin(std::size_t node, Direction name) const { return nodes_[node]->getNodePins()[name]; }
    std::size_t next(std::size_t node) const { return (node + 1) % size_; }
    std::size_t far(std::size_t node) const { return (node + size_ / 2 + 1) % size_; }
    static std::string nameOf(std::size_t node) { return "n" + std::to_string(node); }

    bool isMoved(std::size_t node) const
    {
        return nodes_[node]->getNodeOwner() != compounds_[node % compounds_.size()];
    }

    std::string fullNameOf(std::size_t node) const
    {
        std::string name = nameOf(node);
        for (GraphNodeBase* owner = nodes_[node]->getNodeOwner(); owner != nullptr;
             owner = owner->getNodeOwner())
            name = owner->getName().c_str() + ("." + name);
        return name;
    }

    static Tuple2<float, float> positionOf(std::size_t node)
    {
        return Tuple2<float, float>(static_cast<float>(node % 1000), static_cast<float>(node / 1000));
    }

    GraphLayout layoutOfAll() const
    {
        GraphLayout layout;
        for (std::size_t i = 0; i < size_; ++i)
        {
            KS_String const name = nodes_[i]->getFullName();
            layout.insertNodePosition(name, positionOf(i));
            layout.insertNodeVisible(name, true);
        }
        for (GraphConnection* const connection : scene_.getGraphConnections())
            layout.insertConnectionBezier(connection->getFullName(), true);
        return layout;
    }

    std::size_t size_;
    Node root_{1};
    GraphScene scene_;
    std::vector<Node*> compounds_;
    std::vector<Node*> nodes_;
    Nodes interfaceNodes_;
    std::size_t extraNodes_ = 0;
    std::size_t extraConnections_ = 0;
};

} // namespace

} // namespace kestrel::graph::test

int main(int argc, char** argv)
{
    std::size_t const numberOfNodes = argc == 2 ? std::strtoull(argv[1], nullptr, 10) : 0;
    if (numberOfNodes < 10000)
    {
        std::fprintf(stderr, "usage: scale NUMBER-OF-NODES, 10000 or more\n");
        return 2;
    }
    kestrel::graph::test::LargeScene scene(numberOfNodes);
    scene.build();
    scene.askNodes();
    scene.askConnections();
    scene.rename();
    scene.makeFreeNames();
    scene.moveIntoCompound();
    scene.exportXml();
    scene.saveLayout();
    scene.removePart();
    scene.clear();
}
