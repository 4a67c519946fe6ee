/// @file
/// Internal: undoing the first half of a change when its second half fails, and ending a state in any case.
#pragma once

#include <utility>

namespace kestrel::graph
{

/// Runs `action` at the end of the scope, unless it was dismissed. `action` does not throw.
template <class Action>
class ScopeExit
{
public:
    explicit ScopeExit(Action action) : action_(std::move(action)) {}
    ~ScopeExit()
    {
        if (armed_) action_();
    }
    ScopeExit(ScopeExit const&) = delete;
    ScopeExit& operator=(ScopeExit const&) = delete;

    void dismiss() { armed_ = false; }

private:
    Action action_;
    bool armed_ = true;
};

} // namespace kestrel::graph
