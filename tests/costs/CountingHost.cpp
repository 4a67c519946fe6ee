#include "CountingHost.h"

namespace kestrel::graph::test
{

namespace
{

std::uint64_t count = 0;

} // namespace

std::uint64_t namesAskedFor()
{
    return count;
}

KS_String CountingHost::Node::getName()
{
    ++count;
    return GraphNodeBase::getName();
}

KS_String CountingHost::Node::getFullName()
{
    ++count;
    return GraphNodeBase::getFullName();
}

KS_String CountingHost::Pin::getName()
{
    ++count;
    return GraphNodePin::getName();
}

KS_String CountingHost::Pin::getFullName()
{
    ++count;
    return GraphNodePin::getFullName();
}

} // namespace kestrel::graph::test
