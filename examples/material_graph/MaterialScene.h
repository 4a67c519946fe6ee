/// @file
#pragma once

#include "MaterialConnection.h"
#include "MaterialNode.h"
#include "MaterialPin.h"

#include <ks_graph/GraphScene.h>

#include <string_view>

namespace material_graph
{

/// The graph of one document: every node, pin and connection in it is of this program's classes, also those
/// that the library makes while it moves nodes into and out of compounds.
///
/// The root node, "root", stands for the document. The scene owns all nodes: those that are still registered
/// at its end are deleted with it, and `deleteNode` deletes one before.
class MaterialScene : public kestrel::graph::GraphScene
{
public:
    MaterialScene();
    MaterialScene(MaterialScene const&) = delete;
    MaterialScene& operator=(MaterialScene const&) = delete;
    ~MaterialScene() override;

    MaterialNode& root() { return root_; }

    /// @name Making what a document describes; the scene has it, registered, at once
    /// A pin gets another name when its full name is taken, so that each is found by its own.
    /// @{
    MaterialNode& addMaterialNode(kestrel::KS_String const& category, kestrel::KS_String const& name,
                                  kestrel::graph::GraphNodeBase& owner);
    MaterialNode& addCompound(kestrel::KS_String const& name, kestrel::graph::GraphNodeBase& owner);
    /// Takes one connection.
    MaterialPin& addInput(kestrel::graph::GraphNodeBase& node, kestrel::KS_String const& name,
                          kestrel::KS_String const& type);
    /// Takes any number of connections.
    MaterialPin& addOutput(kestrel::graph::GraphNodeBase& node, kestrel::KS_String const& name,
                           kestrel::KS_String const& type);
    /// @}

    /// An input or output of a compound: the pin outside and the one on the interface node inside.
    struct PinPair
    {
        MaterialPin& outer;
        MaterialPin& inner;
    };
    /// Adds one; `interfaceNode` is made if it is null. Of the two, the input pin takes one connection.
    PinPair addInterfacePair(kestrel::graph::PinDirection const& direction,
                             kestrel::graph::GraphNodeBase& compound,
                             kestrel::graph::GraphNodeBase*& interfaceNode, kestrel::KS_String const& name,
                             kestrel::KS_String const& type);

    /// Ends the life of a node: its connections, its pins with their entries in the scene, and the pins
    /// paired with them, then the node itself. REQUIRES: it has no children and is not the root.
    void deleteNode(kestrel::graph::GraphNodeBase& node);

    /// The node of that full name, with or without the root's name in front; null if there is none.
    MaterialNode* findNode(std::string_view name);
    /// The pin of that full name, likewise, whatever the case of the letters.
    kestrel::graph::GraphNodePin* findPin(std::string_view name);

    /// The node that the base would find, but by going down the tree by name instead of asking all nodes. The
    /// library's free names come through here, twice for every compound, which would be quadratic in the size
    /// of the document.
    kestrel::graph::GraphNodeBase* getNodePtrByFullName(kestrel::KS_String const& name) const override;

    void setupNodeColor() override;

    MaterialNode* createNewCompound() override;
    MaterialNode* createNewInterfaceNode() override;
    MaterialPin* createNewPin(kestrel::graph::GraphNodeBase* node, unsigned int const& maxNumConnections,
                              kestrel::graph::PinDirection const& direction) override;
    /// The pin's id comes from this scene's own count. It starts under a name that no document uses: pins of
    /// one full name would share an entry.
    MaterialPin* createNewPin(unsigned int const& maxNumConnections,
                              kestrel::graph::PinDirection const& direction) override;
    MaterialConnection* createGraphConnection(kestrel::graph::GraphNodePin* source,
                                              kestrel::graph::GraphNodePin* target) override;

private:
    MaterialPin& addPin(kestrel::graph::GraphNodeBase& node, kestrel::KS_String const& name,
                        kestrel::KS_String const& type, unsigned int capacity,
                        kestrel::graph::PinDirection const& direction);

    MaterialNode root_;
    unsigned int lastPinId_ = 0;
};

} // namespace material_graph
