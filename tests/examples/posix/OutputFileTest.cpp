#include "examples/MaterialGraphLayouts.h"

#include <material_graph/OutputFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

namespace material_graph::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

namespace fs = std::filesystem;

TEST(OutputFile, ReplacesTheOldFileAndKeepsItsPermissions)
{
    Folder const folder;
    std::string const target = folder.write("target", "a long old text");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(writeOutputFile(target, "new"), "");
    EXPECT_EQ(contentOf(target), "new");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(OutputFile, FullDiskLeavesTheOldFile)
{
    Folder const folder;
    std::string const target = folder.write("target", "old");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 1000;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string const error = writeOutputFile(target, std::string(100000, 'x'));
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_THAT(error, Not(IsEmpty()));
    EXPECT_EQ(contentOf(target), "old");
    EXPECT_THAT(folder.names(), ElementsAre("target"));
}

// A pipe stands for every file that is not a regular one: a device that went astray would not come back.
TEST(OutputFile, PipeIsWrittenToAndStaysAPipe)
{
    Folder const folder;
    std::string const path = folder.file("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    int const reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(writeOutputFile(path, "text"), "");
    std::string arrived(10, '\0');
    EXPECT_EQ(::read(reader, arrived.data(), arrived.size()), 4);
    EXPECT_THAT(arrived, StartsWith("text"));
    ::close(reader);
    EXPECT_TRUE(fs::is_fifo(path));
    EXPECT_THAT(folder.names(), ElementsAre("pipe"));
}

TEST(OutputFile, LinkStaysALink)
{
    Folder const folder;
    fs::create_symlink(folder.write("target", "old"), folder.file("link"));
    EXPECT_EQ(writeOutputFile(folder.file("link"), "new"), "");
    EXPECT_TRUE(fs::is_symlink(folder.file("link")));
    EXPECT_EQ(contentOf(folder.file("target")), "new");
}

TEST(MaterialProgram, LinkToTheDocumentIsNeverTheOutputFile)
{
    Program const program;
    std::string const link = program.folder().file("link");
    fs::create_symlink(program.document(), link);
    Outcome const run({program.document(), "xml", "-o", link});
    EXPECT_EQ(run.status, Status::NotRun);
    EXPECT_THAT(run.err, HasSubstr("is the document itself"));
    expectRefused(program.run({{"layout", "save", link}}), "is the document itself");
    EXPECT_EQ(contentOf(program.document()), materialx(nestedChains));
}

} // namespace

TEST(OutputFile, StrayFilesOfAKilledSaveOfTheSameProcessNumberAreNoHindrance)
{
    Folder const folder;
    std::string const stem = ".material_graph." + std::to_string(::getpid());
    folder.write(stem + ".1.part", "stray");
    folder.write(stem + ".2.part", "another");
    EXPECT_EQ(writeOutputFile(folder.file("target"), "new"), "");
    EXPECT_EQ(contentOf(folder.file("target")), "new");
    EXPECT_EQ(contentOf(folder.file(stem + ".1.part")), "stray");
    EXPECT_EQ(contentOf(folder.file(stem + ".2.part")), "another");
}

} // namespace material_graph::test
