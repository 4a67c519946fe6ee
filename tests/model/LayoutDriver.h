/// @file
#pragma once

#include "Difference.h"
#include "Operation.h"
#include "support/PlainLayout.h"

#include <ks_graph/GraphLayout.h>

#include <array>

namespace kestrel::graph::test::model
{

/// Two layouts and what they should hold.
class LayoutDriver
{
public:
    /// False, and nothing done, for an operation that is not about layouts.
    bool apply(Operation const& operation, bool& hadEffect, Difference& difference);

private:
    void perform(Operation const& operation);
    void insert(Operation const& operation);
    void addNote(Operation const& operation);
    void passThroughFile(std::size_t from, std::size_t to, bool endian, Difference& difference);
    void compare(std::size_t which, Difference& difference) const;

    std::array<PlainLayout, 2> plain_;
    std::array<GraphLayout, 2> layouts_;
};

} // namespace kestrel::graph::test::model
