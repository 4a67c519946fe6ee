#include "MaterialConnection.h"

#include "MaterialPin.h"

namespace material_graph
{

using kestrel::KS_String;

KS_String MaterialConnection::getType() const
{
    auto const* const source = dynamic_cast<MaterialPin const*>(getSourcePin());
    return source != nullptr ? source->getType() : KS_String();
}

std::string MaterialConnection::describe()
{
    std::string text(getFullName());
    KS_String const type = getType();
    if (!type.isEmpty()) text.append(" (").append(type).append(")");
    return text;
}

} // namespace material_graph
