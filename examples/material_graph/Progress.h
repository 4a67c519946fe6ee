/// @file
#pragma once

#include <chrono>
#include <cstddef>
#include <ostream>
#include <string>

namespace material_graph
{

/// One line on a terminal that tells how far a long piece of work is. Nothing is shown of work that is done
/// within a moment, and nothing is left of the line afterwards.
class Progress
{
public:
    using Clock = std::chrono::steady_clock;

    /// Shows nothing at all without a terminal. The first line appears after `patience`.
    explicit Progress(std::ostream* terminal, Clock::duration patience = std::chrono::milliseconds(400));

    /// A new piece of work; a `total` of 0 is unknown.
    void start(std::string const& label, std::size_t total = 0);
    void step();
    void finish();

private:
    void show();

    std::ostream* terminal_;
    Clock::duration patience_;
    Clock::time_point nextShow_;
    std::string label_;
    std::size_t total_ = 0;
    std::size_t done_ = 0;
    bool shown_ = false;
};

} // namespace material_graph
