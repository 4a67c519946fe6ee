#if defined(__linux__) // ptrace, and the calls that it stops at, are Linux's own

#include "MaterialGraphSupport.h"

#include <foundation/KS_String.h>
#include <ks_graph/GraphLayout.h>
#include <material_graph/LayoutFile.h>
#include <material_graph/OutputFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

// A save that is killed in front of any of its calls to the system leaves the old file or the new one, never
// a part of either, and never none.

namespace material_graph::test
{

namespace
{

using testing::AnyOf;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace fs = std::filesystem;

/// Saves to the path; why it could not be done, empty when it was.
using Save = std::function<std::string(std::string const& path)>;

/// A process of its own that saves, and stops in front of each of its calls to the system.
class TracedSave
{
public:
    TracedSave(Save const& save, std::string const& path)
    {
        std::fflush(nullptr); // or what waits in a buffer is written by both processes
        process_ = ::fork();
        if (process_ == 0) saveAndExit(save, path);
        EXPECT_GT(process_, 0);
        waitForStop();
        EXPECT_EQ(::ptrace(PTRACE_SETOPTIONS, process_, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL), 0);
    }

    ~TracedSave()
    {
        if (!hasEnded_) kill();
    }

    TracedSave(TracedSave const&) = delete;
    TracedSave& operator=(TracedSave const&) = delete;

    /// Goes on to the next call, which is not made yet. False when the process has ended instead.
    bool goToNextCall()
    {
        do {
            EXPECT_EQ(::ptrace(PTRACE_SYSCALL, process_, 0, 0), 0);
            waitForStop();
            if (hasEnded_) return false;
        } while (stopInfo().op != PTRACE_SYSCALL_INFO_ENTRY);
        return true;
    }

    /// The number of the call that it stands in front of.
    long call() const { return static_cast<long>(stopInfo().entry.nr); }

    /// Ends it where it stands: the call is not made any more.
    void kill()
    {
        ::kill(process_, SIGKILL);
        waitForStop();
        EXPECT_TRUE(hasEnded_ && WIFSIGNALED(status_));
    }

    bool hasSaved() const { return hasEnded_ && WIFEXITED(status_) && WEXITSTATUS(status_) == 0; }

private:
    [[noreturn]] static void saveAndExit(Save const& save, std::string const& path)
    {
        ::ptrace(PTRACE_TRACEME, 0, 0, 0);
        ::raise(SIGSTOP);
        ::_exit(save(path).empty() ? 0 : 1);
    }

    void waitForStop()
    {
        EXPECT_EQ(::waitpid(process_, &status_, 0), process_);
        hasEnded_ = WIFEXITED(status_) || WIFSIGNALED(status_);
    }

    __ptrace_syscall_info stopInfo() const
    {
        __ptrace_syscall_info info{};
        EXPECT_GT(::ptrace(PTRACE_GET_SYSCALL_INFO, process_, sizeof info, &info), 0);
        return info;
    }

    pid_t process_ = 0;
    int status_ = 0;
    bool hasEnded_ = false;
};

/// The calls of a whole save.
std::vector<long> callsOf(Save const& save, std::string const& path)
{
    std::vector<long> calls;
    TracedSave process(save, path);
    while (process.goToNextCall()) calls.push_back(process.call());
    EXPECT_TRUE(process.hasSaved());
    return calls;
}

struct SavedKind
{
    std::string name;
    Save saveOld;
    Save saveNew;
};

void PrintTo(SavedKind const& kind, std::ostream* out)
{
    *out << kind.name;
}

kestrel::graph::GraphLayout layoutOf(int nodes)
{
    kestrel::graph::GraphLayout layout;
    for (int i = 0; i < nodes; ++i)
        layout.insertNodePosition(kestrel::KS_String("node" + std::to_string(i)), {0.5f, 1.0f});
    return layout;
}

/// So much does not fit the buffer of a file: it is written by several calls.
constexpr int large = 20000;

std::vector<SavedKind> savedKinds()
{
    auto const saveText = [](char letter, int size) -> Save
    {
        return [=](std::string const& path)
        { return writeOutputFile(path, std::string(static_cast<std::size_t>(size), letter)); };
    };
    auto const saveLayoutOf = [](int nodes) -> Save
    { return [=](std::string const& path) { return saveLayout(path, layoutOf(nodes)); }; };
    return {{"SmallText", saveText('o', large), saveText('n', 10)},
            {"LargeText", saveText('o', 10), saveText('n', large)},
            {"Layout", saveLayoutOf(3), saveLayoutOf(large / 25)},
            {"SmallLayout", saveLayoutOf(large / 25), saveLayoutOf(3)}};
}

/// A folder with the old file, and what the file is before and after a save.
class SavingSurvivesKill : public testing::TestWithParam<SavedKind>
{
protected:
    SavingSurvivesKill() : target_(folder_.file("target"))
    {
        EXPECT_EQ(GetParam().saveNew(target_), "");
        newContent_ = contentOf(target_);
        EXPECT_EQ(GetParam().saveOld(target_), "");
        oldContent_ = contentOf(target_);
        EXPECT_NE(oldContent_, newContent_);
    }

    /// Kills saves to the path in front of their first call, their second and so on, until one comes to its
    /// end; asks for what is true after each of them. Returns how many were killed.
    template <class AfterKill>
    int killEverywhere(std::string const& path, AfterKill expectAfterKill)
    {
        for (int number = 1;; ++number)
        {
            SCOPED_TRACE(testing::Message() << "killed at call " << number);
            TracedSave process(GetParam().saveNew, path);
            if (!goToCall(process, number))
            {
                EXPECT_TRUE(process.hasSaved());
                return number - 1;
            }
            process.kill();
            expectAfterKill();
            if (testing::Test::HasFailure()) return number;
        }
    }

    static bool goToCall(TracedSave& process, int number)
    {
        while (number > 0 && process.goToNextCall()) --number;
        return number == 0;
    }

    /// A killed save may leave the file that it was writing, and nothing else.
    void removeStrayFiles()
    {
        std::vector<std::string> names = folder_.names();
        std::erase(names, "target");
        std::erase(names, "link");
        EXPECT_THAT(names, AnyOf(IsEmpty(), SizeIs(1)));
        EXPECT_THAT(names, Each(StartsWith(".material_graph.")));
        for (std::string const& name : names) fs::remove(folder_.file(name));
    }

    Folder folder_;
    std::string target_;
    std::string oldContent_;
    std::string newContent_;
};

INSTANTIATE_TEST_SUITE_P(, SavingSurvivesKill, testing::ValuesIn(savedKinds()),
                         [](auto const& kind) { return kind.param.name; });

TEST_P(SavingSurvivesKill, FileIsTheOldOneOrTheNewOne)
{
    bool becameNew = false;
    int keptOld = 0;
    int const kills = killEverywhere(target_,
                                     [&]
                                     {
                                         std::string const content = contentOf(target_);
                                         EXPECT_TRUE(content == oldContent_ || content == newContent_);
                                         becameNew = becameNew || content == newContent_;
                                         keptOld += content == oldContent_;
                                         removeStrayFiles();
                                         EXPECT_EQ(GetParam().saveOld(target_), "");
                                         EXPECT_TRUE(contentOf(target_) == oldContent_);
                                     });
    EXPECT_TRUE(contentOf(target_) == newContent_);
    EXPECT_TRUE(becameNew); // it was killed behind the renaming, too
    EXPECT_GT(keptOld, 4);  // and in front of opening, writing, synchronising and renaming
    EXPECT_LT(kills, 1000);
    removeStrayFiles();
}

TEST_P(SavingSurvivesKill, FileThatWasNotThereIsMissingOrTheNewOne)
{
    fs::remove(target_);
    killEverywhere(target_,
                   [&]
                   {
                       EXPECT_TRUE(!fs::exists(target_) || contentOf(target_) == newContent_);
                       fs::remove(target_);
                       removeStrayFiles();
                   });
    EXPECT_TRUE(contentOf(target_) == newContent_);
}

TEST_P(SavingSurvivesKill, FileBehindALinkIsTheOldOneOrTheNewOne)
{
    std::string const link = folder_.file("link");
    fs::create_symlink("target", link);
    killEverywhere(link,
                   [&]
                   {
                       std::string const content = contentOf(target_);
                       EXPECT_TRUE(content == oldContent_ || content == newContent_);
                       EXPECT_TRUE(fs::is_symlink(link));
                       EXPECT_EQ(GetParam().saveOld(target_), "");
                       removeStrayFiles();
                   });
    EXPECT_TRUE(contentOf(target_) == newContent_);
    EXPECT_TRUE(fs::is_symlink(link));
}

// Stray files of many killed saves do not stand in the way of the next one.
TEST_P(SavingSurvivesKill, NextSaveSucceedsAmongWhatKilledOnesLeft)
{
    int const kills = killEverywhere(target_, [] {});
    EXPECT_GT(folder_.names().size(), 2u) << "none of " << kills << " killed saves left anything";
    EXPECT_EQ(GetParam().saveOld(target_), "");
    EXPECT_TRUE(contentOf(target_) == oldContent_);
}

// What survives a kill need not survive a power failure: that takes the new bytes to be on the disk first.
TEST_P(SavingSurvivesKill, NewFileIsOnTheDiskBeforeItTakesThePlaceOfTheOldOne)
{
    std::vector<long> const calls = callsOf(GetParam().saveNew, target_);
    auto const isRename = [](long call)
    {
#if defined(SYS_rename)
        if (call == SYS_rename) return true;
#endif
        return call == SYS_renameat || call == SYS_renameat2;
    };
    auto const synchronised = std::find(calls.begin(), calls.end(), long{SYS_fsync});
    auto const renamed = std::find_if(calls.begin(), calls.end(), isRename);
    ASSERT_NE(synchronised, calls.end());
    ASSERT_NE(renamed, calls.end());
    ASSERT_LT(synchronised - calls.begin(), renamed - calls.begin());
    EXPECT_EQ(std::count(synchronised, renamed, long{SYS_write}), 0);
    EXPECT_GT(std::count(calls.begin(), synchronised, long{SYS_write}), 0);
}

} // namespace

} // namespace material_graph::test

#endif
