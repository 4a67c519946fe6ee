/// @file
#pragma once

#include "Difference.h"
#include "HostClasses.h"
#include "LayoutDriver.h"
#include "Model.h"
#include "Operation.h"

#include <ks_graph/ks_graph.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kestrel::graph::test::model
{

/// A scene and its model, which do the same operations one after the other. The model goes first, so that it
/// can be compared with each callback while the scene is at work, and so that every new object of the scene
/// is known by the first place where the model has it, too. At most one may live at a time.
class Driver
{
public:
    explicit Driver(Profile const& profile);
    ~Driver();
    Driver(Driver const&) = delete;
    Driver& operator=(Driver const&) = delete;

    /// False when there is a difference.
    bool apply(Operation const& operation);

    /// In words; empty when there is none.
    std::string const& difference() const { return difference_.text(); }

    /// Whether the last operation could be done: false for one that names what is not there, and for one that
    /// no host may do.
    bool wasDone() const { return done_; }
    /// Whether it changed or found anything.
    bool hadEffect() const { return hadEffect_; }

    /// Also the checker of the other tests: for sequences that keep to its premises.
    void checkInvariants();

    Model const& model() const { return model_; }

private:
    using NodeList = ArrayOfPtr<GraphNodeBase, KS_NO>;
    using PinList = ArrayOfPtr<GraphNodePin, KS_NO>;
    using ConnectionList = ArrayOfPtr<GraphConnection, KS_NO>;
    using ConnectionValues = Array<GraphConnection, _Wa>;

    /// In braces, the model's is made first.
    struct Answers
    {
        char const* what;
        bool expected;
        bool actual;
    };

    /// What the moves report of the library's objects.
    struct LibraryLists
    {
        std::map<KS_String, KS_String> pinRenames;
        std::map<GraphNodeBase*, GraphNodeBase*> inputInterfaces;
        std::map<GraphNodeBase*, GraphNodeBase*> outputInterfaces;
        NodeList newInterfaceNodes;
        PinList newCompoundPins;
        ConnectionValues removed;
        ConnectionValues removedOuter;
        ConnectionList outer;
        ConnectionList inner;
        ConnectionList created;
    };

    // Sequences and objects
    void start(Operation const& operation);
    bool resolve(Operation const& operation);
    bool resolve(Reference const& reference, char kind, Index& index) const;
    void finish();

    // What an operation does with both; split by what it is about
    void perform(Operation const& operation);
    bool performOnNode(Operation const& operation);
    bool performOnPin(Operation const& operation);
    bool performWiring(Operation const& operation);
    bool performMove(Operation const& operation);
    bool ask(Operation const& operation);
    template <class ModelOperation>
    bool isPossible(ModelOperation modelOperation);
    void retire(Index node);
    void retirePin(Index node, Index pin);
    void reorderPins(Index node, bool inputSide, std::vector<std::string> const& names);
    void orderPins(Index node, bool inputSide, unsigned int number);
    void reorderArray(unsigned int first, unsigned int second, bool byCopy);
    void prepareMoveLists(unsigned int number);
    void moveIn(Indices const& listed, NodeList const& libraryListed, Index compound);
    void moveOut(Indices const& listed, NodeList& libraryListed, Index compound, bool createInterfaces);
    void compareMoveLists();
    void askFreeNames(std::string const& name, unsigned int flags);
    void askNode(Index node, unsigned int flags, unsigned int direction);
    void askNodeItself(Index node, bool flag, unsigned int direction);
    void askNodeAboutConnections(Index node, unsigned int flags, unsigned int direction);
    void askNodes(Index a, Index b, unsigned int flags);
    void askPin(Index pin, unsigned int flags);
    void askPins(Index a, Index b, unsigned int flags);
    void askPinAndNode(Index pin, Index node, unsigned int flags);
    void askConnection(Index connection, Index a, Index b, unsigned int flags);
    void askList(Indices const& listed, unsigned int flags);
    void askNames(std::string const& name, unsigned int id);

    // Objects
    unsigned int freeNodeId();
    unsigned int pinId(unsigned int number) const;
    Index makeNode(unsigned int id, std::string const& name);
    void placeNode(Index node, Index owner);
    GraphNodeBase* node(Index index) const { return index == none ? nullptr : nodes_[at(index)]; }
    GraphNodePin* pin(Index index) const { return index == none ? nullptr : pins_[at(index)]; }
    GraphConnection* connection(Index index) const
    {
        return index == none ? nullptr : connections_[at(index)];
    }
    NodeList listOf(Indices const& nodes) const;
    static std::size_t at(Index index) { return static_cast<std::size_t>(index); }

    // Comparing
    template <class Object>
    static bool isSame(std::vector<Object*>& objects, Index expected, Object* actual);
    bool isSame(Index expected, GraphNodeBase* actual) { return isSame(nodes_, expected, actual); }
    bool isSame(Index expected, GraphNodePin* actual) { return isSame(pins_, expected, actual); }
    bool isSame(Index expected, GraphConnection* actual) { return isSame(connections_, expected, actual); }
    template <class Object>
    void expectSame(char const* what, Index expected, Object* actual);
    template <class Object>
    void expectList(char const* what, Indices const& expected, ArrayOfPtr<Object, KS_NO> const& actual);
    template <class Object>
    void expectFound(char const* what, Indices const& expected, ArrayOfPtr<Object, KS_NO> const& actual);
    void expectValues(char const* what, std::vector<Ends> const& expected, ConnectionValues const& actual);
    void expectInterfaces(char const* what, InterfaceOfNode const& expected,
                          std::map<GraphNodeBase*, GraphNodeBase*> const& actual);
    void expectText(char const* what, std::string const& expected, KS_String const& actual);
    void expectFlag(Answers const& answers);
    void compareState();
    void compareArray();
    void compareNodes();
    void comparePins();

    // Callbacks
    template <EventKind kind, class Subject>
    static void onCallback(GraphScene* scene, GraphNodeBase* owner, Subject* subject);
    template <class Subject>
    void onEvent(EventKind kind, GraphNodeBase* owner, Subject* subject);
    static void setCallbacks(bool set);

    static Driver* active_;

    Profile profile_;
    HostNode::Hook hook_;
    unsigned int firstPinId_;
    std::unique_ptr<GraphScene> scene_;
    Model model_;
    std::vector<GraphNodeBase*> nodes_;
    std::vector<GraphNodePin*> pins_;
    std::vector<GraphConnection*> connections_;
    LayoutDriver layouts_;
    MoveLists moveLists_;
    LibraryLists libraryLists_;

    std::vector<std::array<std::size_t, 3>> firstMade_; // by label: how many there were before
    std::array<Index, 3> arguments_{};
    Indices list_;
    std::size_t nextEvent_ = 0;
    bool done_ = false;
    bool found_ = false;
    bool hadEffect_ = false;
    Difference difference_;
};

// What is new is known from now on.
template <class Object>
bool Driver::isSame(std::vector<Object*>& objects, Index expected, Object* actual)
{
    if (expected == none || actual == nullptr) return expected == none && actual == nullptr;
    if (objects.size() <= at(expected)) objects.resize(at(expected) + 1);
    if (objects[at(expected)] == nullptr) objects[at(expected)] = actual;
    return objects[at(expected)] == actual;
}

template <class Object>
void Driver::expectSame(char const* what, Index expected, Object* actual)
{
    if (expected != none) found_ = true;
    if (!isSame(expected, actual)) difference_.note(what, " is another one than in the model");
}

template <class Object>
void Driver::expectList(char const* what, Indices const& expected, ArrayOfPtr<Object, KS_NO> const& actual)
{
    if (expected.size() != actual.size())
        return difference_.note(what, ": ", actual.size(), " of them, but ", expected.size(),
                                " in the model");
    Object* const* each = actual.data();
    for (Index index : expected)
        if (!isSame(index, *each++))
            return difference_.note(what, ": other than in the model at place ", each - actual.data() - 1);
}

// As the result of a question.
template <class Object>
void Driver::expectFound(char const* what, Indices const& expected, ArrayOfPtr<Object, KS_NO> const& actual)
{
    if (!expected.empty()) found_ = true;
    expectList(what, expected, actual);
}

} // namespace kestrel::graph::test::model
