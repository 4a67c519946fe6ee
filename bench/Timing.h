/// @file
#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>

namespace bench
{

/// Makes the compiler compute the value.
template <class T>
inline void keep(T const& value)
{
    asm volatile("" : : "r,m"(value) : "memory");
}

/// Ends the program on a wrong answer.
void require(bool holds);

/// Of this program, not of the day: other programs on the machine then disturb less.
inline double processorSeconds()
{
    std::timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

struct Timing
{
    std::size_t operations;
    double seconds;
};

/// Calls operation(i) for every i below the total, or until the budget is spent. Reads the clock about once a
/// millisecond, so that it is not what is measured.
template <class Operation>
Timing timedLoop(std::size_t total, double budgetInSeconds, Operation& operation)
{
    std::size_t done = 0;
    std::size_t batch = 1;
    double const begin = processorSeconds();
    double last = begin;
    while (done < total && last - begin <= budgetInSeconds)
    {
        for (std::size_t const end = std::min(total, done + batch); done < end; ++done) operation(done);
        double const now = processorSeconds();
        if (now - last < 1e-3) batch *= 2;
        last = now;
    }
    return {done, last - begin};
}

template <class Operation>
double secondsOf(Operation& operation)
{
    double const begin = processorSeconds();
    operation();
    return processorSeconds() - begin;
}

} // namespace bench
