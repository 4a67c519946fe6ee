/// @file
/// Runs tests with one mutant, or tells what each test reaches. Set by the environment:
/// MUTANT, the number of the mutant;
/// MUTATION_SECONDS and MUTATION_MEMORY, what the process may use of the processor's time and of memory;
/// MUTATION_TESTS, a file that names the tests to run, one a line;
/// MUTATION_RECORD, a file to write: for each test a line of its name, its seconds and the sites it reached.

#include "mutation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>

namespace
{

double numberFrom(char const* variable)
{
    char const* const value = std::getenv(variable);
    return value != nullptr ? std::strtod(value, nullptr) : 0.0;
}

/// The first object that is initialised: the static objects of the library may have mutants, too.
struct Choice
{
    Choice() : mutant(static_cast<int>(numberFrom("MUTANT")))
    {
        void* const memory =
            ::mmap(nullptr, mutation::maxSites, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) std::abort();
        reached = static_cast<unsigned char*>(memory);
        limitSeconds(numberFrom("MUTATION_SECONDS"));
        ::prctl(PR_SET_PDEATHSIG, SIGKILL); // nobody waits for it any more when whoever started it has gone
        limitMemory(static_cast<rlim_t>(numberFrom("MUTATION_MEMORY")));
    }

    static void limitSeconds(double seconds)
    {
        ::itimerval timer{};
        timer.it_value.tv_sec = static_cast<time_t>(seconds);
        timer.it_value.tv_usec =
            static_cast<suseconds_t>((seconds - static_cast<double>(timer.it_value.tv_sec)) * 1e6);
        ::setitimer(ITIMER_PROF, &timer, nullptr);
    }

    static void limitMemory(rlim_t bytes)
    {
        ::rlimit const limit{bytes, bytes};
        if (bytes > 0) ::setrlimit(RLIMIT_AS, &limit);
    }

    int mutant;
    unsigned char* reached = nullptr;
};

__attribute__((init_priority(101))) Choice choice;

class Recorder : public ::testing::EmptyTestEventListener
{
public:
    explicit Recorder(char const* file) : file_(file) { endLine("startup 0"); }

private:
    void OnTestStart(::testing::TestInfo const&) override { start_ = std::clock(); }

    void OnTestEnd(::testing::TestInfo const& test) override
    {
        double const seconds = static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC;
        endLine(std::string(test.test_suite_name()) + "." + test.name() + " " + std::to_string(seconds));
    }

    void endLine(std::string const& start)
    {
        file_ << start;
        for (int site = 0; site < mutation::maxSites; ++site)
        {
            if (choice.reached[site] != 0) file_ << ' ' << site;
        }
        file_ << '\n' << std::flush;
        std::fill_n(choice.reached, mutation::maxSites, static_cast<unsigned char>(0));
    }

    std::ofstream file_;
    std::clock_t start_ = 0;
};

std::string filterFrom(char const* file)
{
    std::ifstream names(file);
    std::string filter(std::istreambuf_iterator<char>(names), {});
    std::replace(filter.begin(), filter.end(), '\n', ':');
    return filter;
}

} // namespace

namespace mutation
{

int const& chosen = choice.mutant;
unsigned char* const& reached = choice.reached;

} // namespace mutation

int main(int argc, char** argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    if (char const* const tests = std::getenv("MUTATION_TESTS")) GTEST_FLAG_SET(filter, filterFrom(tests));
    if (char const* const file = std::getenv("MUTATION_RECORD"))
        ::testing::UnitTest::GetInstance()->listeners().Append(new Recorder(file));
    return RUN_ALL_TESTS();
}
