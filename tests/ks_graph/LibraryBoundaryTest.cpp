// What crosses the border between the library and the program that uses it. On Windows, each of the two has
// its own copy of whatever is not exported, and its own runtime.

#include "support/TestGraph.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <typeinfo>

namespace kestrel::graph::test
{
namespace
{

struct HostError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

class HostScene : public GraphScene
{
public:
    GraphConnection* createGraphConnection(GraphNodePin*, GraphNodePin*) override
    {
        throw HostError("no connections today");
    }
};

unsigned int addedNodes = 0;

void countNode(GraphScene*, GraphNodeBase*, GraphNodeBase*)
{
    ++addedNodes;
}

TEST(LibraryBoundary, HasOneCountOfSceneIds)
{
    unsigned int const before = GraphScene::lastUsedId_;
    GraphScene::lastUsedId_ = before + 40;
    EXPECT_EQ(GraphScene().getId(), before + 41);
    EXPECT_EQ(GraphScene::lastUsedId_, before + 41);
}

TEST(LibraryBoundary, HasOneSetOfCallbacks)
{
    addedNodes = 0;
    GraphScene::addNodeCallback_ = countNode;
    TestGraph graph;
    graph.addNode("a");
    GraphScene::addNodeCallback_ = nullptr;
    EXPECT_EQ(addedNodes, 2u);
}

TEST(LibraryBoundary, HasOneNodeThatIsNotValid)
{
    GraphNodeBase const& node = GRAPH_NODE_NOT_VALID;
    EXPECT_EQ(node.getId(), 0xFFFFFFFFu);
    EXPECT_EQ(typeid(node), typeid(GraphNodeBase));
}

TEST(LibraryBoundary, HasTheVersionOfTheLayoutFile)
{
    unsigned int const& version = GraphLayout::VERSION;
    EXPECT_EQ(version, 2u);
}

TEST(LibraryBoundary, LetsEachSideDeleteWhatTheOtherMade)
{
    TestGraph graph;
    std::unique_ptr<KS_Class> const object(graph.root.createInstance());
    std::unique_ptr<GraphNodeBase> const compound(graph.scene.createNewCompound());
    EXPECT_TRUE(compound->isCompound());

    std::set<GraphNodeBase*> living;
    auto* const node = new TestNode(graph.scene.getFreeNodeId());
    node->living = &living;
    living.insert(node);
    graph.scene.addNodeToGraph(node);
    graph.scene.clear();
    EXPECT_TRUE(living.empty());
}

TEST(LibraryBoundary, GivesAHostItsOwnClassesBack)
{
    TestGraph graph;
    GraphNodeBase* const node = &graph.addNode("a");
    EXPECT_EQ(dynamic_cast<TestNode*>(graph.scene.getNodePtrByFullName("root.a")), node);
    EXPECT_EQ(dynamic_cast<GraphNodePin*>(static_cast<KS_Class*>(node)), nullptr);
}

TEST(LibraryBoundary, LetsAHostsExceptionThrough)
{
    TestGraph<HostScene> graph;
    GraphNodePin& from = graph.addPin(graph.addNode("a"), "out", PIN_OUTPUT);
    GraphNodePin& to = graph.addPin(graph.addNode("b"), "in", PIN_INPUT);
    EXPECT_THROW(graph.scene.connect(&from, &to, false), HostError);
    EXPECT_FALSE(from.isConnected());
}

template <class Stream>
class LibraryBoundaryStreams : public ::testing::Test
{
};

using Streams = ::testing::Types<FileStreamRaw, FileStreamEndian>;
TYPED_TEST_SUITE(LibraryBoundaryStreams, Streams, );

/// A stream class of the host's own.
template <class Base>
struct CountingStream : Base
{
    using Base::Base;

    std::size_t write(void const* bytes, std::size_t count) override
    {
        written += count;
        return Base::write(bytes, count);
    }

    std::size_t written = 0;
};

TYPED_TEST(LibraryBoundaryStreams, CarryALayoutBothWays)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::tmpfile(), &std::fclose);
    ASSERT_NE(file, nullptr);
    CountingStream<TypeParam> stream(file.get());
    GraphLayout written;
    written.insertNodePosition("a", {1.0f, 2.0f});
    EXPECT_TRUE(written.template write<TypeParam>(stream));
    EXPECT_GT(stream.written, 0u);
    std::rewind(file.get());
    GraphLayout read;
    EXPECT_TRUE(read.template read<TypeParam>(stream));
    EXPECT_TRUE(read == written);
}

} // namespace
} // namespace kestrel::graph::test
