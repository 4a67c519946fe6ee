/// @file
#pragma once

#include "Timing.h"

#include <ks_graph/ks_graph.h>

namespace bench
{

/// Ends a move of many nodes between two of its changes once the processor time is spent: a callback throws.
class MoveBudget
{
public:
    struct Spent
    {
    };

    explicit MoveBudget(double seconds)
    {
        end_ = processorSeconds() + seconds;
        kestrel::graph::GraphScene::addConnectionCallback_ = &throwIfSpent;
    }
    ~MoveBudget() { kestrel::graph::GraphScene::addConnectionCallback_ = nullptr; }
    MoveBudget(MoveBudget const&) = delete;
    MoveBudget& operator=(MoveBudget const&) = delete;

private:
    // Reads the clock now and then, so that it is not what is measured.
    static void throwIfSpent(kestrel::graph::GraphScene*, kestrel::graph::GraphNodeBase*,
                             kestrel::graph::GraphConnection*)
    {
        if (++calls_ % 64 == 0 && processorSeconds() > end_) throw Spent();
    }

    static inline double end_ = 0;
    static inline unsigned int calls_ = 0;
};

/// Whether the move came to its end in that time. If not, some connections have been led through the boundary
/// and others still cross it.
template <class Move>
bool movesWithin(double seconds, Move move)
{
    MoveBudget const budget(seconds);
    try
    {
        move();
        return true;
    }
    catch (MoveBudget::Spent const&)
    {
        return false;
    }
}

} // namespace bench
