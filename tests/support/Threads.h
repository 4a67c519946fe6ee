/// @file
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
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

/// Lets threads go when as many as are expected have come. Not std::latch: that of GCC 12 may lose the
/// wake-up where the system has no futex, as on Windows.
class StartingLine
{
public:
    explicit StartingLine(unsigned int expected) : missing_(expected) {}

    void arriveAndWait()
    {
        std::unique_lock lock(mutex_);
        if (--missing_ == 0) allThere_.notify_all();
        allThere_.wait(lock, [this] { return missing_ == 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable allThere_;
    unsigned int missing_;
};

/// Runs `work(0)`, `work(1)`, ... each on a thread of its own; none starts before all are there.
template <class Work>
void onThreads(unsigned int count, Work const& work)
{
    Watchdog const watchdog;
    StartingLine start(count);
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < count; ++i)
    {
        threads.emplace_back(
            [i, &start, &work]
            {
                start.arriveAndWait();
                work(i);
            });
    }
    for (std::thread& thread : threads) thread.join();
}

} // namespace kestrel::graph::test
