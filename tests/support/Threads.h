/// @file
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

namespace kestrel::graph::test
{

/// Ends the program with a message when it lives longer than any test takes: threads that wait for each other
/// would wait for ever.
class Watchdog
{
public:
    Watchdog() : thread_([this] { watch(); }) {}

    ~Watchdog()
    {
        {
            std::lock_guard const guard(mutex_);
            done_ = true;
        }
        changed_.notify_one();
        thread_.join();
    }

    Watchdog(Watchdog const&) = delete;
    Watchdog& operator=(Watchdog const&) = delete;

private:
    static constexpr std::chrono::seconds limit{300};

    void watch()
    {
        std::unique_lock lock(mutex_);
        if (changed_.wait_for(lock, limit, [this] { return done_; })) return;
        std::cerr << "The threads of a test have not ended after " << limit.count()
                  << " seconds: they wait for each other" << std::endl;
        std::abort();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool done_ = false;
    std::thread thread_; // the last one: it uses the others
};

/// Runs `work(0)`, `work(1)`, ... each on a thread of its own; none starts before all are there.
template <class Work>
void onThreads(unsigned int count, Work const& work)
{
    Watchdog const watchdog;
    std::latch allThere(count);
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < count; ++i)
    {
        threads.emplace_back(
            [i, &allThere, &work]
            {
                allThere.arrive_and_wait();
                work(i);
            });
    }
    for (std::thread& thread : threads) thread.join();
}

} // namespace kestrel::graph::test
