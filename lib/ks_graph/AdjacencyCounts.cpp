#include "AdjacencyCounts.h"

#include <new>

namespace kestrel::graph
{

namespace
{

// 1 for each of the two counts that is above 0.
AdjacencyCounts::Counts connected(AdjacencyCounts::Counts const& counts)
{
    return {counts.all > 0 ? 1 : 0, counts.notImplicit > 0 ? 1 : 0};
}

} // namespace

int AdjacencyCounts::neighbours(unsigned int id, bool includeImplicit, bool ignoreSelf,
                                Counts Degree::*side) const
{
    int const self = ignoreSelf && count(id, id, includeImplicit) > 0 ? 1 : 0;
    return degreeOf(id, side).chosen(includeImplicit) - self;
}

AdjacencyCounts::Counts AdjacencyCounts::degreeOf(unsigned int id, Counts Degree::*side) const
{
    if (!prepareDegrees()) return countedDegreeOf(id, side);
    Degree const* const degree =
        degrees_->find(spread(id), [id](Degree const& candidate) { return candidate.id == id; });
    return degree != nullptr ? degree->*side : Counts();
}

// False without memory for them.
bool AdjacencyCounts::prepareDegrees() const
{
    if (degrees_ != nullptr) return true;
    try
    {
        auto degrees = std::make_unique<Degrees>();
        pairs_.forEach(
            [&degrees](Pair const& pair)
            {
                addToDegrees(*degrees, pair.source, &Degree::targets, connected(pair.counts));
                addToDegrees(*degrees, pair.target, &Degree::sources, connected(pair.counts));
            });
        degrees_ = std::move(degrees);
        return true;
    }
    catch (std::bad_alloc const&)
    {
        return false;
    }
}

AdjacencyCounts::Counts AdjacencyCounts::countedDegreeOf(unsigned int id, Counts Degree::*side) const
{
    Counts degree;
    pairs_.forEach(
        [&](Pair const& pair)
        {
            if ((side == &Degree::targets ? pair.source : pair.target) != id) return;
            degree.all += connected(pair.counts).all;
            degree.notImplicit += connected(pair.counts).notImplicit;
        });
    return degree;
}

void AdjacencyCounts::followInDegrees(unsigned int source, unsigned int target, Counts const& before,
                                      Counts const& after)
{
    Counts const was = connected(before);
    Counts const is = connected(after);
    Counts const change{is.all - was.all, is.notImplicit - was.notImplicit};
    if (isNothing(change)) return;
    try
    {
        addToDegrees(*degrees_, source, &Degree::targets, change);
        addToDegrees(*degrees_, target, &Degree::sources, change);
    }
    catch (std::bad_alloc const&)
    {
        degrees_.reset(); // the counts are right; the next question counts the neighbours anew
    }
}

void AdjacencyCounts::addToDegrees(Degrees& degrees, unsigned int id, Counts Degree::*side,
                                   Counts const& change)
{
    if (isNothing(change)) return;
    auto const isWanted = [id](Degree const& candidate) { return candidate.id == id; };
    Degree* degree = degrees.find(spread(id), isWanted);
    if (degree == nullptr)
    {
        Degree added;
        added.id = id;
        added.*side = change;
        degrees.reserveOneMore();
        degrees.insert(std::move(added));
        return;
    }
    (degree->*side).all += change.all;
    (degree->*side).notImplicit += change.notImplicit;
    if (degree->isFree()) degrees.erase(degree);
}

} // namespace kestrel::graph
