#include "examples/MaterialGraphLayouts.h"

#include <material_graph/OutputFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

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

namespace fs = std::filesystem;

TEST(OutputFile, ReadOnlyFileIsRefusedAndStays)
{
    Folder const folder;
    std::string const target = folder.write("target", "old");
    ASSERT_NE(::SetFileAttributesW(pathOf(target).c_str(), FILE_ATTRIBUTE_READONLY), 0);
    EXPECT_THAT(writeOutputFile(target, "new"), Not(IsEmpty()));
    ::SetFileAttributesW(pathOf(target).c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(contentOf(target), "old");
    EXPECT_THAT(folder.names(), ElementsAre("target"));
}

TEST(OutputFile, FileThatIsHeldOpenStaysAndNothingIsLeftBeside)
{
    Folder const folder;
    std::string const target = folder.write("target", "old");
    HANDLE const holder = ::CreateFileW(pathOf(target).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    std::string const error = writeOutputFile(target, "new");
    ::CloseHandle(holder);
    EXPECT_THAT(error, Not(IsEmpty()));
    EXPECT_EQ(contentOf(target), "old");
    EXPECT_THAT(folder.names(), ElementsAre("target"));
}

TEST(OutputFile, DeviceIsWrittenTo)
{
    EXPECT_EQ(writeOutputFile("NUL", "text"), "");
}

TEST(MaterialProgram, DocumentInOtherLettersIsNeverTheOutputFile)
{
    Program const program;
    std::string const shouted = program.folder().file("TEST.MTLX");
    Outcome const run({program.document(), "xml", "-o", shouted});
    EXPECT_EQ(run.status, Status::NotRun);
    EXPECT_THAT(run.err, HasSubstr("is the document itself"));
    expectRefused(program.run({{"layout", "save", shouted}}), "is the document itself");
    EXPECT_EQ(contentOf(program.document()), materialx(nestedChains));
}

} // namespace

} // namespace material_graph::test
