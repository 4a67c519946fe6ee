/// @file
/// What the sources with mutants in them ask: which of the mutants runs. Included in front of each.
#pragma once

#include <type_traits>

namespace mutation
{

/// The number of the mutant that runs; 0 is none. It is settled before anything else is initialised.
extern int const& chosen;

/// One byte for each place that has mutants; processes that are forked share them.
extern unsigned char* const& reached;

constexpr int maxSites = 1 << 14;

/// What the compiler works out has no mutants.
constexpr int chosenAt(int site)
{
    if (std::is_constant_evaluated()) return 0;
    reached[site] = 1;
    return chosen;
}

} // namespace mutation
