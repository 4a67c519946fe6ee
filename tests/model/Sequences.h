/// @file
/// Running, making up and shrinking sequences.
#pragma once

#include "Operation.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace kestrel::graph::test::model
{

/// How often each kind of operation was made up, could be done, and changed or found anything.
struct Counts
{
    std::uint64_t tried = 0;
    std::uint64_t done = 0;
    std::uint64_t effective = 0;
};

using Statistics = std::array<Counts, kinds.size()>;

/// The first difference between the scene and its model, with the operation that shows it; empty for none.
std::string differenceOf(Sequence const& sequence);

/// Sees each line of a sequence's text before it is done.
using Watcher = std::function<void(std::string const& line)>;

/// Makes up a sequence and runs it, to the first difference. The sequence is what was run, the result as
/// above.
std::string runSeed(std::uint64_t seed, std::size_t operations, Sequence& sequence, Statistics& statistics,
                    Watcher const& watcher = {});

/// Whether a sequence is what is looked for.
using Fails = std::function<bool(Sequence const&)>;

/// Leaves out what can be left out of a failing sequence, until it fails with nothing less.
Sequence shrunk(Sequence sequence, Fails const& fails);

/// The same as `differenceOf`, but, where processes can be forked, in one of its own: a crash, or no end, is
/// a difference like others.
std::string differenceInChild(Sequence const& sequence);

/// What a seed makes up, from a process of its own: also when that crashes.
Sequence sequenceInChild(std::uint64_t seed, std::size_t operations);

} // namespace kestrel::graph::test::model
