/// @file
#pragma once

#include <functional>

namespace kestrel::graph::test
{

/// Runs the work on a thread with a stack of 1 MiB, as a host's threads may have it. Sanitizers, whose frames
/// are several times as large, get 16 MiB: what they make of the frames is not what a host runs.
void onSmallStack(std::function<void()> work);

} // namespace kestrel::graph::test
