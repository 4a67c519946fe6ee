/// @file
/// Internal: how many connections lead from one node to another.
#pragma once

#include "FlatTable.h"
#include "Hashing.h"

#include <cstdint>
#include <memory>

namespace kestrel::graph
{

/// Counts by the ids of the two nodes: all connections, and those that are not implicit. A pair whose counts
/// are both 0 takes no place. Only a count above 0 says that the nodes are connected.
///
/// How many nodes one node leads to, or is reached from, is counted from the first question on.
class AdjacencyCounts
{
public:
    struct Counts
    {
        int all = 0;
        int notImplicit = 0;

        int chosen(bool includeImplicit) const { return includeImplicit ? all : notImplicit; }
    };

    AdjacencyCounts() = default;
    AdjacencyCounts(AdjacencyCounts const& other) : pairs_(other.pairs_) {}
    AdjacencyCounts(AdjacencyCounts&&) = default;
    AdjacencyCounts& operator=(AdjacencyCounts&&) = default;

    /// REQUIRES: one of the two changes. Fails only when a pair that was not counted yet needs memory;
    /// nothing has changed then.
    void change(unsigned int source, unsigned int target, int all, int notImplicit)
    {
        Pair* pair = find(source, target);
        Counts const before = pair != nullptr ? pair->counts : Counts();
        Counts const after{before.all + all, before.notImplicit + notImplicit};
        if (pair == nullptr)
        {
            pairs_.reserveOneMore();
            pairs_.insert({source, target, after});
        }
        else if (isNothing(after))
            pairs_.erase(pair);
        else
            pair->counts = after;
        if (degrees_ != nullptr) followInDegrees(source, target, before, after);
    }

    int count(unsigned int source, unsigned int target, bool includeImplicit) const
    {
        Pair const* const pair = find(source, target);
        return pair != nullptr ? pair->counts.chosen(includeImplicit) : 0;
    }

    /// Whether the node leads to any node; `ignoreSelf`: to any other one.
    bool isSource(unsigned int id, bool includeImplicit, bool ignoreSelf) const
    {
        return neighbours(id, includeImplicit, ignoreSelf, &Degree::targets) > 0;
    }
    /// Whether any node leads to it.
    bool isTarget(unsigned int id, bool includeImplicit, bool ignoreSelf) const
    {
        return neighbours(id, includeImplicit, ignoreSelf, &Degree::sources) > 0;
    }

    void clear()
    {
        pairs_.clear();
        degrees_.reset();
    }

    /// `visit(source, target, counts)`, in no particular order.
    template <class Visit>
    void forEach(Visit visit) const
    {
        pairs_.forEach([&visit](Pair const& pair) { visit(pair.source, pair.target, pair.counts); });
    }

private:
    struct Pair
    {
        unsigned int source = 0;
        unsigned int target = 0;
        Counts counts;

        bool isFree() const { return isNothing(counts); }
        std::uint64_t hash() const { return hashOfPair(source, target); }
    };

    // How many nodes a node is connected with, in each direction.
    struct Degree
    {
        unsigned int id = 0;
        Counts targets;
        Counts sources;

        bool isFree() const { return isNothing(targets) && isNothing(sources); }
        std::uint64_t hash() const { return spread(id); }
    };

    using Degrees = FlatTable<Degree>;

    static bool isNothing(Counts const& counts) { return counts.all == 0 && counts.notImplicit == 0; }

    static std::uint64_t hashOfPair(unsigned int source, unsigned int target)
    {
        return spread(std::uint64_t{source} << 32 | target);
    }

    Pair* find(unsigned int source, unsigned int target)
    {
        return const_cast<Pair*>(std::as_const(*this).find(source, target));
    }
    Pair const* find(unsigned int source, unsigned int target) const
    {
        return pairs_.find(hashOfPair(source, target), [source, target](Pair const& pair)
                           { return pair.source == source && pair.target == target; });
    }

    int neighbours(unsigned int id, bool includeImplicit, bool ignoreSelf, Counts Degree::*side) const;
    Counts degreeOf(unsigned int id, Counts Degree::*side) const;
    Counts countedDegreeOf(unsigned int id, Counts Degree::*side) const;
    bool prepareDegrees() const;
    void followInDegrees(unsigned int source, unsigned int target, Counts const& before, Counts const& after);
    static void addToDegrees(Degrees& degrees, unsigned int id, Counts Degree::*side, Counts const& change);

    FlatTable<Pair> pairs_;
    mutable std::unique_ptr<Degrees> degrees_;
};

} // namespace kestrel::graph
