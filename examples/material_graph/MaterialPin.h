/// @file
#pragma once

#include <ks_graph/GraphNodePin.h>

namespace material_graph
{

/// A pin with a data type. It takes a connection only from a pin of the same type, and is coloured by it.
///
/// A pin without a type takes anything, and takes over the type of the first typed pin that it is wired to.
/// The two pins of a pair always have the same type: setting one sets the other.
class MaterialPin : public kestrel::graph::GraphNodePin
{
public:
    MaterialPin(unsigned int const& maxNumConnections, kestrel::graph::PinDirection const& direction);

    /// Empty while the pin has no type.
    kestrel::KS_String const& getType() const { return type_; }
    void setType(kestrel::KS_String const& type);

    /// Whether the pin picks channels out of whatever it is given: it then takes every type, and an untyped
    /// pin that is wired to it learns nothing from it.
    bool converts() const { return converts_; }
    void setConverts(bool converts) { converts_ = converts; }

    /// The base's directions, and the same type on both sides.
    bool allowsConnectionFrom(GraphNodePin const* other) const override;

    /// A pair is linked in this direction first or last, so either call may be the one that finds the type.
    void setParentGraphNodePinPtr(GraphNodePin* pin) override;
    void setChildGraphNodePinPtr(GraphNodePin* pin) override;

    void addInputConnection(kestrel::graph::GraphConnection* connection) override;
    void addOutputConnection(kestrel::graph::GraphConnection* connection) override;

    /// The type, "any type" without one.
    kestrel::KS_String getInfo() override;

private:
    void learnTypeFrom(GraphNodePin const* other);

    kestrel::KS_String type_;
    bool converts_ = false;
};

} // namespace material_graph
