/// @file
#pragma once

#include <set>
#include <string>

namespace kestrel::graph::test
{

/// The operations that the library exports and a host can call, public and protected ones, as the checked-in
/// list of symbols names them, but without namespaces and without the comparisons and allocators of maps.
/// What the headers declare private is left out: it is reached through the others.
std::set<std::string> exportedOperations();

} // namespace kestrel::graph::test
