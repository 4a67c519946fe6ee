#include "Inputs.h"

#include <algorithm>
#include <numeric>
#include <random>

namespace bench
{

namespace
{

class Draw
{
public:
    std::uint32_t operator()(std::uint32_t below)
    {
        return static_cast<std::uint32_t>((std::uint64_t{generator_()} * below) >> 32);
    }

    Inputs::Places places(std::size_t count, std::uint32_t below)
    {
        Inputs::Places drawn(count);
        for (std::uint32_t& place : drawn) place = (*this)(below);
        return drawn;
    }

    Edge pair(std::uint32_t n)
    {
        std::uint32_t const source = (*this)(n);
        return {source, (*this)(n), 0};
    }

    Inputs::Places shuffled(std::uint32_t n)
    {
        Inputs::Places places(n);
        std::iota(places.begin(), places.end(), 0u);
        std::shuffle(places.begin(), places.end(), generator_);
        return places;
    }

private:
    std::mt19937 generator_{12345};
};

std::string numbered(char const* stem, std::uint32_t number)
{
    return stem + std::to_string(number);
}

} // namespace

Inputs::Inputs(std::uint32_t nodeCount) : n(nodeCount)
{
    Draw draw;
    names.reserve(n);
    for (std::uint32_t i = 0; i < n; ++i) names.push_back(numbered("node", i));
    edges.reserve(2 * std::size_t{n});
    for (std::size_t i = 0; i < 2 * std::size_t{n}; ++i)
    {
        Edge edge = draw.pair(n);
        edge.port = draw(2);
        edges.push_back(edge);
    }
    for (int i = 0; i < 100000; ++i) pairs.push_back(draw.pair(n));
    for (int i = 0; i < 100000; ++i) connectedPairs.push_back(edges[draw(2 * n)]);
    namesAskedFor = draw.places(100000, n);
    idsAskedFor = draw.places(1000000, n);
    neighboursAskedFor = draw.places(100000, n);

    Places const order = draw.shuffled(n);
    renamed.assign(order.begin(), order.begin() + std::min(n, 10000u));
    for (std::uint32_t const place : renamed) newNames.push_back(numbered("renamed", place));
    auto const middle = order.begin() + n / 2;
    grouped.assign(middle, middle + n / 100);
    groupedWithRewiring.assign(middle + n / 100, middle + n / 100 * 2);
    removed.assign(order.end() - n / 10, order.end());
}

std::vector<std::string> Inputs::namesOf(Places const& places) const
{
    std::vector<std::string> found;
    found.reserve(places.size());
    for (std::uint32_t const place : places) found.push_back(names[place]);
    return found;
}

} // namespace bench
