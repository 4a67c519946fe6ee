#include "Sequences.h"

#include "Driver.h"
#include "Generator.h"

#include <algorithm>
#include <csignal>
#include <sstream>
#include <stdexcept>

#if defined(__unix__)
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace kestrel::graph::test::model
{

namespace
{

constexpr std::size_t stepsBetweenChecks = 32;

// The checker of the invariants is thorough and slow.
bool isTimeToCheck(std::size_t step)
{
    return step % stepsBetweenChecks == 0;
}

bool step(Driver& driver, Operation const& operation, bool orderly, std::size_t number)
{
    if (!driver.apply(operation)) return false;
    if (orderly && isTimeToCheck(number)) driver.checkInvariants();
    return driver.difference().empty();
}

template <class Told>
std::string textOf(Told const& told)
{
    std::ostringstream out;
    out << told;
    return out.str();
}

std::string told(Operation const& operation, std::string const& difference)
{
    return "after " + textOf(operation) + ": " + difference;
}

void count(Counts& counts, Driver const& driver)
{
    ++counts.tried;
    if (driver.wasDone()) ++counts.done;
    if (driver.hadEffect()) ++counts.effective;
}

// Without operations [first, first + length).
Sequence without(Sequence const& sequence, std::size_t first, std::size_t length)
{
    Sequence less = sequence;
    auto const begin = less.operations.begin() + static_cast<std::ptrdiff_t>(first);
    less.operations.erase(begin, begin + static_cast<std::ptrdiff_t>(length));
    return less;
}

// From the back, where what depends on others stands; half of them first, then less and less at a time.
void leaveOutOperations(Sequence& sequence, Fails const& fails)
{
    for (std::size_t most = sequence.operations.size() / 2 + 1; most > 0; most /= 2)
        for (std::size_t first = sequence.operations.size(); first > 0;)
        {
            std::size_t const length = std::min(most, first);
            first -= length;
            Sequence const less = without(sequence, first, length);
            if (fails(less)) sequence = less;
        }
}

template <class Element>
void leaveOutElements(Sequence& sequence, std::vector<Element> Operation::*list, Fails const& fails)
{
    for (std::size_t operation = 0; operation < sequence.operations.size(); ++operation)
        for (std::size_t i = (sequence.operations[operation].*list).size(); i-- > 0;)
        {
            Sequence less = sequence;
            auto& elements = less.operations[operation].*list;
            elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(i));
            if (fails(less)) sequence = less;
        }
}

void leaveOutFlags(Sequence& sequence, Fails const& fails)
{
    for (auto const& [word, flag] : profileWords)
    {
        Sequence less = sequence;
        less.profile.*flag = false;
        if (sequence.profile.*flag && fails(less)) sequence = less;
    }
}

std::size_t sizeOf(Sequence const& sequence)
{
    std::size_t size = 0;
    for (Operation const& operation : sequence.operations)
        size += 1 + operation.list.size() + operation.names.size();
    return size;
}

} // namespace

std::string differenceOf(Sequence const& sequence)
{
    Driver driver(sequence.profile);
    for (Operation const& operation : sequence.operations)
    {
        // Here time does not matter: every step is checked.
        if (!step(driver, operation, sequence.profile.orderly, 0))
            return told(operation, driver.difference());
    }
    return driver.difference();
}

std::string runSeed(std::uint64_t seed, std::size_t operations, Sequence& sequence, Statistics& statistics,
                    Watcher const& watcher)
{
    Generator generator(seed);
    sequence = {generator.profile(), {}};
    if (watcher) watcher(textOf(sequence));
    Driver driver(sequence.profile);
    sequence.operations.reserve(operations);
    for (std::size_t number = 1; number <= operations; ++number)
    {
        sequence.operations.push_back(generator.next(driver.model()));
        Operation const& operation = sequence.operations.back();
        if (watcher) watcher(textOf(operation) + "\n");
        bool const agrees = step(driver, operation, sequence.profile.orderly, number);
        count(statistics[static_cast<std::size_t>(operation.kind)], driver);
        if (!agrees) return told(operation, driver.difference());
    }
    return driver.difference();
}

Sequence shrunk(Sequence sequence, Fails const& fails)
{
    leaveOutFlags(sequence, fails);
    for (std::size_t before = 0; before != sizeOf(sequence);)
    {
        before = sizeOf(sequence);
        leaveOutOperations(sequence, fails);
        leaveOutElements(sequence, &Operation::list, fails);
        leaveOutElements(sequence, &Operation::names, fails);
    }
    return sequence;
}

#if defined(__unix__)

namespace
{

struct ChildsWords
{
    std::string text;
    bool endedWell = false;
};

// What the work writes in a process of its own, until it ends or is taken for one that never will.
ChildsWords inChild(std::function<void(Watcher const&)> const& work)
{
    constexpr unsigned int patience = 10; // seconds
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe can be made");
    pid_t const child = fork();
    if (child == 0)
    {
        for (int const signal : {SIGSEGV, SIGABRT, SIGFPE, SIGILL, SIGALRM}) std::signal(signal, SIG_DFL);
        int const nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        alarm(patience);
        work(
            [&](std::string const& text)
            {
                if (write(ends[1], text.data(), text.size()) < 0) _exit(1);
            });
        _exit(0);
    }
    close(ends[1]);
    ChildsWords words;
    char block[4096];
    for (ssize_t got = read(ends[0], block, sizeof block); got > 0; got = read(ends[0], block, sizeof block))
        words.text.append(block, static_cast<std::size_t>(got));
    close(ends[0]);
    int status = 0;
    words.endedWell = waitpid(child, &status, 0) == child && status == 0;
    return words;
}

} // namespace

std::string differenceInChild(Sequence const& sequence)
{
    ChildsWords const words = inChild([&](Watcher const& write) { write(differenceOf(sequence)); });
    return words.endedWell ? words.text : "a crash, or no end";
}

Sequence sequenceInChild(std::uint64_t seed, std::size_t operations)
{
    auto const run = [&](Watcher const& write)
    {
        Sequence sequence;
        Statistics statistics{};
        runSeed(seed, operations, sequence, statistics, write);
    };
    std::istringstream text(inChild(run).text);
    return parsedSequence(text);
}

#else

std::string differenceInChild(Sequence const& sequence)
{
    return differenceOf(sequence);
}

Sequence sequenceInChild(std::uint64_t seed, std::size_t operations)
{
    Sequence sequence;
    Statistics statistics{};
    runSeed(seed, operations, sequence, statistics);
    return sequence;
}

#endif

} // namespace kestrel::graph::test::model
