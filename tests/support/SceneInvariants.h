/// @file
#pragma once

#include <ks_graph/ks_graph.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace kestrel::graph::test
{

/// Every way in which the scene's views of the graph disagree, one line each; empty when they agree:
/// the connection array with the pins' lists, both ways; child lists with owners; each key of the id map with
/// its node's id; each key of the two pin maps with its pin; the adjacency counts, when they are in use, with
/// a recount; and the two pins of each pair with each other.
std::vector<std::string> brokenInvariants(GraphScene& scene);

} // namespace kestrel::graph::test

/// Every test of a scene ends with it, but for those that show a deliberate oddity.
#define EXPECT_SCENE_INVARIANTS(scene)                                                                       \
    EXPECT_THAT(::kestrel::graph::test::brokenInvariants(scene), ::testing::IsEmpty())
