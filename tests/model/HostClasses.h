/// @file
/// The host's own classes: their overrides are those that a `Model` of the same `Profile` knows of.
#pragma once

#include "Profile.h"

#include <ks_graph/ks_graph.h>

#include <functional>

namespace kestrel::graph::test::model
{

/// A node whose pins go with it.
class HostNode : public GraphNodeBase
{
public:
    using Hook = std::function<void(GraphNodeBase* node, bool adding)>;

    HostNode(Profile const& profile, Hook const& hook) : profile_(profile), hook_(hook) {}
    HostNode(HostNode const&) = delete;
    HostNode& operator=(HostNode const&) = delete;
    ~HostNode() override { destroyNodePins(); }

    KS_String getName() override;
    KS_String getFullName() override;
    void onAddingToScene() override { hook_(this, true); }
    void onRemovingFromScene() override { hook_(this, false); }

private:
    Profile const& profile_;
    Hook const& hook_;
};

/// A pin that counts no implicit connections, takes only some names, and no connection of its own node.
class HostPin : public GraphNodePin
{
public:
    HostPin(Profile const& profile, unsigned int capacity, PinDirection const& direction)
        : GraphNodePin(nullptr, capacity, direction), profile_(profile)
    {}

    KS_String getName() override;
    bool isFull() const override;
    bool allowsConnectionFrom(GraphNodePin const* other) const override;
    bool allowsConnectionTo(GraphNodePin const* other) const override;

private:
    Profile const& profile_;
};

class HostConnection : public GraphConnection
{
public:
    using GraphConnection::GraphConnection;
};

class HostScene : public GraphScene
{
public:
    HostScene(Profile const& profile, HostNode::Hook const& hook, unsigned int firstPinId)
        : profile_(profile), hook_(hook), nextPinId_(firstPinId)
    {}

    unsigned int getFreeNodeId() override;
    GraphConnection* createGraphConnection(GraphNodePin* source, GraphNodePin* target) override;
    GraphNodeBase* createNewCompound() override;
    GraphNodeBase* createNewInterfaceNode() override;
    using GraphScene::createNewPin;
    GraphNodePin* createNewPin(unsigned int const& maxNumConnections, PinDirection const& direction) override;

private:
    Profile const& profile_;
    HostNode::Hook const& hook_;
    unsigned int nextPinId_;
    unsigned int lastNodeId_ = 5000;
};

} // namespace kestrel::graph::test::model
