// Diagnostics: a handler keeps the messages that pass its verbosity, and a host decides where they go. The
// library itself pushes none.

#include <ks_graph/ks_graph.h>

#include <cstdio>

using namespace kestrel;
using namespace kestrel::graph;

namespace
{

char const* levelName(Message const& message)
{
    if (message.isCritical()) return "critical";
    if (message.isError()) return "error";
    if (message.isWarning()) return "warning";
    if (message.isInfo()) return "info";
    return message.isDebug() ? "debug" : "unknown";
}

// `Message::asString` would do, with the time in front; an editor lays the parts out itself.
void print(Message const& message)
{
    std::printf("%-8s %s: %s\n", levelName(message), message.getTitle().c_str(),
                message.getContent().c_str());
}

// A node with a handler of its own. Without the override of `getMessages` it would report the base's sample
// messages.
class CheckedNode : public GraphNodeBase
{
public:
    using GraphNodeBase::GraphNodeBase;

    bool getMessages(Array<Message, _Wa>& out) const override
    {
        out.appendRange(messages_.getMessages().begin(), messages_.getMessages().size());
        return !out.isEmpty();
    }
    MessageHandler const& getMessages() const override { return messages_; }
    MessageHandler& refMessages() override { return messages_; }
    void clearMessages() override { messages_.clear(); }

private:
    MessageHandler messages_;
};

} // namespace

int main()
{
    GraphScene scene;
    CheckedNode root(scene.getFreeNodeId());
    root.setName("root");
    scene.setRootNode(&root);
    scene.addNodeToGraph(&root);

    // A handler keeps warnings and what is more severe, until it is told otherwise.
    scene.refMessages().pushError("import", "two nodes are called blur");
    scene.refMessages().pushWarning("import", "an unknown node type");
    scene.refMessages().pushInfo("import", "dropped: the verbosity is 3");
    scene.refMessages().setVerbosityLevel(4);
    scene.refMessages().pushInfo("import", "12 nodes");
    for (Message const& message : scene.getMessages().getMessages()) print(message);
    std::printf("%d messages, %d of them errors, %d warnings\n", scene.getMessages().getNumberOfMessages(),
                scene.getMessages().getNumberOfErrorsOrCriticals(),
                scene.getMessages().getNumberOfWarnings());

    // A verbosity of 0 means "as my parent": the handler says what that is, and filters by it when it is
    // told.
    MessageHandler importer;
    importer.setParent(&scene.refMessages());
    importer.setVerbosityLevel(0);
    importer.pushError("import", "dropped: the own verbosity is 0");
    importer.setVerbosityLevel(importer.getActualVerbosityLevel());
    importer.pushInfo("import", "kept: the own verbosity is now 4");
    for (Message const& message : importer.getMessages()) print(message);

    root.refMessages().pushError(root.getFullName(), "has no output");
    std::printf("the root has errors: %s\n", root.hasErrors() ? "yes" : "no");
    scene.clearMessages(); // those of the scene, and of every node that it knows
    std::printf("the root has errors: %s\n", root.hasErrors() ? "yes" : "no");
    scene.removeNodeFromGraph(&root);
}
