#include "DerivedHost.h"

namespace bench
{

using kestrel::KS_String;
using kestrel::graph::GraphConnection;
using kestrel::graph::GraphNodeBase;
using kestrel::graph::GraphNodePin;

KS_String DerivedHost::Node::getInfo()
{
    return isSelected ? "selected" : GraphNodeBase::getInfo();
}

KS_String DerivedHost::Pin::getInfo()
{
    return isHighlighted ? "highlighted" : GraphNodePin::getInfo();
}

KS_String DerivedHost::Connection::toXml()
{
    return GraphConnection::toXml();
}

} // namespace bench
