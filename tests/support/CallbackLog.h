/// @file
#pragma once

#include <ks_graph/ks_graph.h>

#include <functional>
#include <string>
#include <vector>

namespace kestrel::graph::test
{

/// Sets all nine callbacks for as long as it lives and keeps a line for each call, such as
/// "addNode root a", "removeConnection root a.out > b.in", "addNodePin - in": the callback, the owner's name
/// ("-" for null), and the node's name, the pin's name or the connection's nodes and pins by short name. At
/// most one may live at a time.
class CallbackLog
{
public:
    CallbackLog();
    ~CallbackLog();
    CallbackLog(CallbackLog const&) = delete;
    CallbackLog& operator=(CallbackLog const&) = delete;

    std::vector<std::string> lines;

    /// Run inside each callback, after its line was added: looks at what is visible at that moment.
    std::function<void(GraphScene* scene, GraphNodeBase* owner, GraphNodeBase* node)> onNode;
    std::function<void(GraphScene* scene, GraphNodeBase* owner, GraphNodePin* pin)> onPin;
    std::function<void(GraphScene* scene, GraphNodeBase* owner, GraphConnection* connection)> onConnection;
};

} // namespace kestrel::graph::test
