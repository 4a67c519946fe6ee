/// @file
/// Sequences of random operations on a scene, two layouts and a naive model of them. The environment
/// variables MODEL_SEEDS, MODEL_OPERATIONS (of each seed), MODEL_FIRST_SEED and MODEL_STATISTICS (a file to
/// write) make more of them; check.sh beside this file sets them.

#include "Sequences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#if defined(__unix__)
#include <unistd.h>
#endif

namespace kestrel::graph::test::model
{

namespace
{

std::uint64_t fromEnvironment(char const* name, std::uint64_t otherwise)
{
    char const* const value = std::getenv(name);
    return value != nullptr ? std::strtoull(value, nullptr, 10) : otherwise;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__OPTIMIZE__)
constexpr std::uint64_t usualSeeds = 300;
#else
constexpr std::uint64_t usualSeeds = 1000;
#endif
constexpr std::uint64_t usualOperations = 1000;

std::uint64_t seedAtWork = 0;

// The sequence is lost with the process: the seed is enough to run it again.
void tellSeed()
{
    std::fprintf(
        stderr,
        "model_tests: to shrink the sequence, set MODEL_FIRST_SEED=%llu MODEL_SEEDS=1 MODEL_IN_CHILD=1\n",
        static_cast<unsigned long long>(seedAtWork));
}

void tellSeedAndDie(int signal)
{
    tellSeed();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void setSignals(void (*handler)(int))
{
    for (int const signal : {SIGSEGV, SIGABRT, SIGFPE, SIGILL}) std::signal(signal, handler);
#if defined(__unix__)
    std::signal(SIGALRM, handler);
#endif
}

// For one seed: what takes longer has no end. 0 is without limit, as is any number where there are no alarms.
void allowSeconds([[maybe_unused]] unsigned int seconds)
{
#if defined(__unix__)
    alarm(seconds);
#endif
}

std::string differenceOfSeedInChild(std::uint64_t seed, std::uint64_t operations, Sequence& sequence)
{
    sequence = sequenceInChild(seed, operations);
    return differenceInChild(sequence);
}

std::string report(std::uint64_t seed, Sequence const& sequence, std::string const& difference)
{
    std::ostringstream text;
    text << "seed " << seed << ", " << sequence.operations.size() << " operations, " << difference;
    Sequence const least =
        shrunk(sequence, [](Sequence const& less) { return !differenceInChild(less).empty(); });
    text << "\nThis is enough for a file in tests/model/kept:\n// Seed " << seed << ": "
         << differenceInChild(least) << '\n'
         << least;
    return text.str();
}

std::filesystem::path const keptDirectory(KEPT_SEQUENCES_DIR);

std::vector<std::string> keptSequences()
{
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(keptDirectory))
        if (entry.path().extension() == ".txt") names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

void write(Statistics const& statistics, std::uint64_t seeds, double seconds)
{
    char const* const path = std::getenv("MODEL_STATISTICS");
    if (path == nullptr) return;
    std::ofstream file(path);
    file << "seeds " << seeds << "\nseconds " << seconds << '\n';
    for (std::size_t kind = 0; kind < kinds.size(); ++kind)
        file << kinds[kind].name << ' ' << statistics[kind].tried << ' ' << statistics[kind].done << ' '
             << statistics[kind].effective << '\n';
    EXPECT_TRUE(file.flush().good()) << path;
}

} // namespace

#if defined(__SANITIZE_ADDRESS__)
// AddressSanitizer calls it when it has found something.
extern "C" void __asan_on_error()
{
    tellSeed();
}
#endif

TEST(Model, RandomSequencesLeaveSceneAndModelEqual)
{
    std::uint64_t const first = fromEnvironment("MODEL_FIRST_SEED", 1);
    std::uint64_t const seeds = fromEnvironment("MODEL_SEEDS", usualSeeds);
    std::uint64_t const operations = fromEnvironment("MODEL_OPERATIONS", usualOperations);
    bool const inChild = fromEnvironment("MODEL_IN_CHILD", 0) != 0;
    auto const begin = std::chrono::steady_clock::now();
    setSignals(&tellSeedAndDie);
    Statistics statistics{};
    for (seedAtWork = first; seedAtWork < first + seeds; ++seedAtWork)
    {
        allowSeconds(120);
        Sequence sequence;
        std::string const difference = inChild ? differenceOfSeedInChild(seedAtWork, operations, sequence)
                                               : runSeed(seedAtWork, operations, sequence, statistics);
        allowSeconds(0);
        if (!difference.empty()) FAIL() << report(seedAtWork, sequence, difference);
    }
    setSignals(SIG_DFL);
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - begin;
    write(statistics, seeds, seconds.count());
}

class KeptSequence : public testing::TestWithParam<std::string>
{
};

INSTANTIATE_TEST_SUITE_P(Model, KeptSequence, testing::ValuesIn(keptSequences()),
                         [](auto const& kept) { return kept.param; });

TEST_P(KeptSequence, LeavesSceneAndModelEqual)
{
    std::ifstream file(keptDirectory / (GetParam() + ".txt"));
    Sequence const sequence = parsedSequence(file);
    ASSERT_FALSE(sequence.operations.empty());
    EXPECT_EQ(differenceOf(sequence), "");
}

TEST(ModelSequence, IsReadAsItIsWritten)
{
    for (std::uint64_t seed = 1; seed <= 20; ++seed)
    {
        Sequence sequence;
        Statistics statistics{};
        runSeed(seed, 300, sequence, statistics);
        std::stringstream text;
        std::stringstream copy;
        text << sequence;
        copy << parsedSequence(text);
        EXPECT_EQ(copy.str(), text.str());
        EXPECT_EQ(sequence.operations.size(), 300u);
    }
}

TEST(ModelSequence, IsTheSameForTheSameSeed)
{
    std::ostringstream texts[2];
    for (std::ostringstream& text : texts)
    {
        Sequence sequence;
        Statistics statistics{};
        runSeed(7, 500, sequence, statistics);
        text << sequence;
    }
    EXPECT_EQ(texts[0].str(), texts[1].str());
}

TEST(ModelSequence, ThatIsNoneIsRefused)
{
    for (char const* const text : {"profil\n", "profile sloppy\n", "profile\n1\n", "profile\n1 fly 0.0\n",
                                   "profile\n1 renameNode 0.0 a\n", "profile\n1 renameNode 0.0 \"a\n",
                                   "profile\n1 renameNode 0.0 \"\\x0g\"\n", "profile\n1 renameNode 00 \"\"\n",
                                   "profile\n1 clear 1\n", "profile\n1 setCompound 0.0\n"})
    {
        std::istringstream in(text);
        EXPECT_THROW(parsedSequence(in), std::runtime_error) << text;
    }
}

TEST(ModelSequence, ShrinksToWhatItFailsBy)
{
    Sequence sequence;
    Statistics statistics{};
    runSeed(3, 400, sequence, statistics);
    auto const fails = [](Sequence const& tried)
    {
        std::string kindsInOrder;
        for (Operation const& operation : tried.operations)
        {
            if (operation.kind == Kind::addNode) kindsInOrder += 'a';
            if (operation.kind == Kind::connectPins) kindsInOrder += 'c';
        }
        return kindsInOrder.find("ac") != std::string::npos;
    };
    ASSERT_TRUE(fails(sequence));
    Sequence const least = shrunk(sequence, fails);
    ASSERT_EQ(least.operations.size(), 2u);
    EXPECT_EQ(least.operations[0].kind, Kind::addNode);
    EXPECT_EQ(least.operations[1].kind, Kind::connectPins);
}

} // namespace kestrel::graph::test::model
