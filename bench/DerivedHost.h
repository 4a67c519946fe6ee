/// @file
#pragma once

#include <ks_graph/ks_graph.h>

#include <memory>
#include <type_traits>

namespace bench
{

/// A scene that makes nothing but a host's own types.
template <class Node, class Pin, class Connection>
class DerivedScene final : public kestrel::graph::GraphScene
{
public:
    DerivedScene()
    {
        if constexpr (std::is_final_v<Node> && std::is_final_v<Pin>)
            kestrel::graph::declarePlainNames<DerivedScene, Node, Pin>();
    }

    kestrel::graph::GraphConnection* createGraphConnection(kestrel::graph::GraphNodePin* source,
                                                           kestrel::graph::GraphNodePin* target) override
    {
        return new Connection(source, target);
    }

    kestrel::graph::GraphNodeBase* createNewCompound() override
    {
        auto compound = std::make_unique<Node>(getFreeNodeId());
        compound->setCompound(true);
        return compound.release();
    }

    kestrel::graph::GraphNodeBase* createNewInterfaceNode() override
    {
        auto node = std::make_unique<Node>(getFreeNodeId());
        node->setInterface(true);
        return node.release();
    }

    using GraphScene::createNewPin;
    kestrel::graph::GraphNodePin* createNewPin(unsigned int const& maxNumConnections,
                                               kestrel::graph::PinDirection const& direction) override
    {
        auto pin = std::make_unique<Pin>(nullptr, maxNumConnections, direction);
        pin->setId(++lastPinId_);
        addNodePin(pin.get());
        return pin.release();
    }

private:
    unsigned int lastPinId_ = 0;
};

/// A host that derives every class, as editors do. What it overrides and adds is harmless, and it tells the
/// library that it leaves the names alone.
struct DerivedHost
{
    class Node final : public kestrel::graph::GraphNodeBase
    {
    public:
        using GraphNodeBase::GraphNodeBase;

        kestrel::KS_String getInfo() override;

        bool isSelected = false;
    };

    class Pin final : public kestrel::graph::GraphNodePin
    {
    public:
        using GraphNodePin::GraphNodePin;

        kestrel::KS_String getInfo() override;

        bool isHighlighted = false;
    };

    class Connection final : public kestrel::graph::GraphConnection
    {
    public:
        using GraphConnection::GraphConnection;

        kestrel::KS_String toXml() override;

        bool isSelected = false;
    };

    using Scene = DerivedScene<Node, Pin, Connection>;
};

} // namespace bench
