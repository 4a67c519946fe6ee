#include "MaterialPin.h"

#include "TypeColors.h"

#include <ks_graph/GraphConnection.h>

namespace material_graph
{

using kestrel::KS_String;
using kestrel::graph::GraphConnection;
using kestrel::graph::PinDirection;

MaterialPin::MaterialPin(unsigned int const& maxNumConnections, PinDirection const& direction)
    : GraphNodePin(nullptr, maxNumConnections, direction)
{
    setColor(colorOfType(type_));
    setBorderColor(borderOf(getColor()));
}

void MaterialPin::setType(KS_String const& type)
{
    if (type == type_) return;
    type_ = type;
    setColor(colorOfType(type_));
    setBorderColor(borderOf(getColor()));
    for (GraphNodePin* paired : {getParentGraphNodePinPtr(), getChildGraphNodePinPtr()})
        if (auto* const pin = dynamic_cast<MaterialPin*>(paired)) pin->setType(type_);
}

bool MaterialPin::allowsConnectionFrom(GraphNodePin const* other) const
{
    if (!GraphNodePin::allowsConnectionFrom(other)) return false;
    auto const* const pin = dynamic_cast<MaterialPin const*>(other);
    return pin == nullptr || converts_ || type_.isEmpty() || pin->type_.isEmpty() || pin->type_ == type_;
}

void MaterialPin::setParentGraphNodePinPtr(GraphNodePin* pin)
{
    GraphNodePin::setParentGraphNodePinPtr(pin);
    learnTypeFrom(pin);
}

void MaterialPin::setChildGraphNodePinPtr(GraphNodePin* pin)
{
    GraphNodePin::setChildGraphNodePinPtr(pin);
    learnTypeFrom(pin);
}

void MaterialPin::addInputConnection(GraphConnection* connection)
{
    GraphNodePin::addInputConnection(connection);
    if (connection != nullptr) learnTypeFrom(connection->getSourcePin());
}

void MaterialPin::addOutputConnection(GraphConnection* connection)
{
    GraphNodePin::addOutputConnection(connection);
    if (connection != nullptr) learnTypeFrom(connection->getTargetPin());
}

KS_String MaterialPin::getInfo()
{
    return type_.isEmpty() ? KS_String("any type") : type_;
}

void MaterialPin::learnTypeFrom(GraphNodePin const* other)
{
    auto const* const pin = dynamic_cast<MaterialPin const*>(other);
    if (pin != nullptr && type_.isEmpty() && !pin->converts_) setType(KS_String(pin->type_));
}

} // namespace material_graph
