#include "CallbackLog.h"

#include <cassert>

namespace kestrel::graph::test
{

namespace
{

CallbackLog* active = nullptr;

std::string nameOf(GraphNodeBase* node)
{
    return node != nullptr ? node->getName().c_str() : "-";
}

std::string nameOf(GraphNodePin* pin)
{
    return nameOf(pin->getParentGraphNodePtr()) + "." + pin->getName().c_str();
}

void addLine(char const* callback, GraphNodeBase* owner, std::string const& subject)
{
    active->lines.push_back(callback + (" " + nameOf(owner)) + " " + subject);
}

template <char const* callback>
void onNode(GraphScene* scene, GraphNodeBase* owner, GraphNodeBase* node)
{
    addLine(callback, owner, nameOf(node));
    if (active->onNode) active->onNode(scene, owner, node);
}

template <char const* callback>
void onPin(GraphScene* scene, GraphNodeBase* owner, GraphNodePin* pin)
{
    addLine(callback, owner, pin->getName().c_str());
    if (active->onPin) active->onPin(scene, owner, pin);
}

template <char const* callback>
void onConnection(GraphScene* scene, GraphNodeBase* owner, GraphConnection* connection)
{
    addLine(callback, owner, nameOf(connection->getSourcePin()) + " > " + nameOf(connection->getTargetPin()));
    if (active->onConnection) active->onConnection(scene, owner, connection);
}

constexpr char addNode[] = "addNode";
constexpr char removeNode[] = "removeNode";
constexpr char addNodePin[] = "addNodePin";
constexpr char removeNodePin[] = "removeNodePin";
constexpr char updateNodePin[] = "updateNodePin";
constexpr char addConnection[] = "addConnection";
constexpr char removeConnection[] = "removeConnection";
constexpr char groupNode[] = "groupNode";
constexpr char ungroupNode[] = "ungroupNode";

} // namespace

CallbackLog::CallbackLog()
{
    assert(active == nullptr);
    active = this;
    GraphScene::addNodeCallback_ = &test::onNode<addNode>;
    GraphScene::removeNodeCallback_ = &test::onNode<removeNode>;
    GraphScene::addNodePinCallback_ = &test::onPin<addNodePin>;
    GraphScene::removeNodePinCallback_ = &test::onPin<removeNodePin>;
    GraphScene::updateNodePinCallback_ = &test::onPin<updateNodePin>;
    GraphScene::addConnectionCallback_ = &test::onConnection<addConnection>;
    GraphScene::removeConnectionCallback_ = &test::onConnection<removeConnection>;
    GraphScene::groupNodeCallback_ = &test::onNode<groupNode>;
    GraphScene::ungroupNodeCallback_ = &test::onNode<ungroupNode>;
}

CallbackLog::~CallbackLog()
{
    active = nullptr;
    GraphScene::addNodeCallback_ = nullptr;
    GraphScene::removeNodeCallback_ = nullptr;
    GraphScene::addNodePinCallback_ = nullptr;
    GraphScene::removeNodePinCallback_ = nullptr;
    GraphScene::updateNodePinCallback_ = nullptr;
    GraphScene::addConnectionCallback_ = nullptr;
    GraphScene::removeConnectionCallback_ = nullptr;
    GraphScene::groupNodeCallback_ = nullptr;
    GraphScene::ungroupNodeCallback_ = nullptr;
}

} // namespace kestrel::graph::test
