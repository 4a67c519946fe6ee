#include "MaterialGraphSupport.h"

#include <material_graph/Command.h>
#include <material_graph/OutputFile.h>
#include <material_graph/Platform.h>
#include <material_graph/Summary.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::KS_String;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

namespace fs = std::filesystem;

constexpr char const* twoNodes = R"(<add name="a" type="float" doc="A &lt; B"/>
<add name="b" type="float"><input name="in1" type="float" nodename="a"/></add>)";

TEST(MaterialProgram, SummaryCountsAndIsTheDefault)
{
    Outcome const run({exampleFile("brick_wall.mtlx"), "summary"});
    EXPECT_EQ(run.status, Status::Done);
    EXPECT_EQ(run.out, "nodes               14\n"
                       "compounds           1\n"
                       "interface nodes     2\n"
                       "pins                51\n"
                       "connections         21\n"
                       "depth               2\n"
                       "longest full name   root.NG_bricks.input interface01.mortar_color\n"
                       "messages            0\n");
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_EQ(Outcome({exampleFile("brick_wall.mtlx")}).out, run.out);
}

TEST(MaterialProgram, LargeExampleIsNestedAndWithoutDefects)
{
    Progress quiet(nullptr);
    MaterialScene scene;
    ASSERT_EQ(DocumentReader(scene, quiet).readFile(exampleFile("weathered_bronze.mtlx")), "");
    Summary const summary = summarize(scene);
    EXPECT_GE(summary.nodes, 60u);
    EXPECT_GE(summary.depth, 4u);
    EXPECT_THAT(messagesOf(scene), IsEmpty());
}

TEST(MaterialProgram, XmlIsThatOfTheScene)
{
    Outcome const run = runOn(twoNodes, {"xml"});
    EXPECT_EQ(run.status, Status::Done);
    EXPECT_EQ(KS_String(run.out), Document(twoNodes).scene.toXml());
    EXPECT_THAT(run.out, HasSubstr("<connection source-node=\"2\" target-node=\"3\"/>\n"));
}

TEST(MaterialProgram, HtmlIsTheNodesDescriptionEscaped)
{
    for (char const* name : {"a", "root.a"})
        EXPECT_THAT(
            runOn(twoNodes, {"html", name}).out,
            AllOf(StartsWith("<!DOCTYPE html>\n<html><head>"), HasSubstr("<title>root.a</title>"),
                  EndsWith("</head><body><p/><h3>Description</h3><p>A &lt; B.</p><p/></body></html>\n")))
            << name;
}

TEST(MaterialProgram, ConnectionsListsBothSidesOfANode)
{
    EXPECT_EQ(runOn(twoNodes, {"connections", "a"}).out, "root.a.out > root.b.in1 (float)\n");
    EXPECT_EQ(runOn(twoNodes, {"connections", "b"}).out, "root.a.out > root.b.in1 (float)\n");
    EXPECT_EQ(runOn("<add name='alone'/>", {"connections", "alone"}).out, "");
}

TEST(MaterialProgram, FindTakesAnyCaseOfLetters)
{
    std::string const expected = "root.b.in1, input (float)\n  root.a.out > root.b.in1 (float)\n";
    for (char const* name : {"root.b.in1", "ROOT.B.IN1", "B.In1"})
        EXPECT_EQ(runOn(twoNodes, {"find", name}).out, expected) << name;
    EXPECT_THAT(runOn(twoNodes, {"find", "A.OUT"}).out, StartsWith("root.a.out, output (float)\n"));
}

TEST(MaterialProgram, GroupPrintsItsChangesAndTheSummary)
{
    Outcome const run = runOn(twoNodes, {"group", "g", "a", "b", "a"});
    EXPECT_EQ(run.status, Status::Done);
    EXPECT_THAT(run.out, StartsWith("created compound root.g\n"
                                    "renamed root.a.out -> root.g.a.out\n"
                                    "renamed root.b.in1 -> root.g.b.in1\n"
                                    "renamed root.b.out -> root.g.b.out\n"
                                    "\n"
                                    "nodes               2\n"
                                    "compounds           1\n"));
}

TEST(MaterialProgram, UngroupPrintsItsChangesAndTheSummary)
{
    Outcome const run = runOn("<nodegraph name='g'><add name='a'/></nodegraph>", {"ungroup", "g"});
    EXPECT_EQ(run.status, Status::Done);
    EXPECT_THAT(run.out, StartsWith("removed compound root.g\n"
                                    "renamed root.g.a.out -> root.a.out\n"
                                    "\n"
                                    "nodes               1\n"
                                    "compounds           0\n"));
}

TEST(MaterialProgram, WhatCannotBeDoneIsAMessage)
{
    std::string const content =
        std::string(twoNodes) + "<nodegraph name='g'><add name='inside'/><output name='o'/></nodegraph>";
    struct Case
    {
        std::vector<std::string> arguments;
        char const* message;
    };
    for (Case const& refused : {
             Case{{"html", "x"}, "html: error: there is no node 'x'\n"},
             Case{{"connections", "x"}, "connections: error: there is no node 'x'\n"},
             Case{{"find", "a"}, "find: error: there is no pin 'a'\n"},
             Case{{"group", "h", "a", "x"}, "group: error: there is no node 'x'\n"},
             Case{{"group", "g", "a"}, "group: error: the name 'g' is taken in 'root'\n"},
             Case{{"group", "G", "a"}, "group: error: the name 'G' is taken in 'root'\n"},
             Case{{"group", "", "a"}, "group: error: the name is empty\n"},
             Case{{"group", "h", "root"}, "group: error: 'root' is the document itself\n"},
             Case{{"group", "h", "a", "g.inside"},
                  "group: error: 'root.g.inside' is not beside the first node\n"},
             Case{{"group", "h", "g.output interface01"},
                  "group: error: 'root.g.output interface01' is an interface node and belongs to its "
                  "compound\n"},
             Case{{"ungroup", "a"}, "ungroup: error: 'a' is not a compound\n"},
             Case{{"ungroup", "root"}, "ungroup: error: 'root' is not a compound\n"},
             Case{{"ungroup", "x"}, "ungroup: error: there is no node 'x'\n"},
         })
    {
        Outcome const run = runOn(content, refused.arguments);
        EXPECT_EQ(run.err, refused.message);
        EXPECT_EQ(run.status, Status::Defects) << refused.message;
        EXPECT_THAT(run.out, IsEmpty()) << refused.message;
    }
}

TEST(MaterialProgram, DefectsArePrintedWithStatusTwoAndTheResult)
{
    Outcome const run = runOn("<add name='a'><input name='i' nodename='x'/></add>", {"summary"});
    EXPECT_EQ(run.status, Status::Defects);
    EXPECT_EQ(run.err, "test.mtlx:2: error: input 'i' of 'root.a' refers to 'x', which is not in 'root'\n");
    EXPECT_THAT(run.out, EndsWith("messages            1\n"));
}

TEST(MaterialProgram, BrokenDocumentHasStatusTwo)
{
    Folder const folder;
    Outcome const run({folder.write("cut.mtlx", "<materialx>\n<add name='a'")});
    EXPECT_EQ(run.status, Status::Defects);
    EXPECT_THAT(run.err, StartsWith("cut.mtlx:2: error: broken XML: "));
    EXPECT_EQ(Outcome({folder.write("empty.mtlx", "")}).status, Status::Defects);
}

TEST(MaterialProgram, UnreadableFileAndWrongArgumentsPrintTheUsageWithStatusOne)
{
    Folder const folder;
    std::string const document = folder.write("test.mtlx", materialx(twoNodes));
    std::vector<std::vector<std::string>> const wrong{
        {},
        {folder.file("absent.mtlx")},
        {folder.file("")},
        {""},
        {document, "bogus"},
        {document, "html"},
        {document, "html", "a", "b"},
        {document, "group", "g"},
        {document, "summary", "a"},
        {document, "-o"},
        {document, "-o", folder.file("x"), "-o", folder.file("y")},
        {"-o", folder.file("x")},
    };
    for (std::vector<std::string> const& arguments : wrong)
    {
        Outcome const run(arguments);
        EXPECT_EQ(run.status, Status::NotRun) << ::testing::PrintToString(arguments);
        EXPECT_THAT(run.err,
                    HasSubstr("usage: material_graph FILE.mtlx [COMMAND [+ COMMAND]...] [-o FILE]\n"));
        EXPECT_THAT(run.out, IsEmpty());
    }
    EXPECT_THAT(folder.names(), ElementsAre("test.mtlx"));
}

TEST(MaterialProgram, UsageNamesEveryCommand)
{
    std::string const usage = Outcome({}).err;
    for (auto const* commands : {&queryCommands(), &editCommands(), &layoutCommands()})
        for (auto const& [name, command] : *commands)
            EXPECT_THAT(usage, HasSubstr("\n  " + name + " ")) << name;
}

TEST(MaterialProgram, NamesOfFilesHaveAnyLetters)
{
    Folder const folder;
    std::string const letters = "\xC3\x9F \xE6\xBC\x86 \xF0\x9F\x8E\xA8";
    std::string const document = folder.write(letters + ".mtlx", materialx("<add/>"));
    std::string const result = folder.file(letters + ".xml");
    Outcome const run({document, "xml", "-o", result});
    EXPECT_THAT(run.err, StartsWith(letters + ".mtlx:2: error: "));
    EXPECT_EQ(contentOf(result), Outcome({document, "xml"}).out);
    EXPECT_THAT(folder.names(), ::testing::UnorderedElementsAre(letters + ".mtlx", letters + ".xml"));
}

TEST(MaterialProgram, OptionOWritesTheResultToAFileAndNothingBeside)
{
    Folder const folder;
    std::string const document = folder.write("test.mtlx", materialx(twoNodes));
    Outcome const run({document, "-o", folder.file("result"), "html", "a"});
    EXPECT_EQ(run.status, Status::Done);
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_EQ(contentOf(folder.file("result")), Outcome({document, "html", "a"}).out);
    EXPECT_THAT(folder.names(), ::testing::UnorderedElementsAre("test.mtlx", "result"));
}

TEST(MaterialProgram, DocumentIsNeverTheOutputFile)
{
    Folder const folder;
    std::string const document = folder.write("test.mtlx", materialx(twoNodes));
    fs::create_hard_link(pathOf(document), pathOf(folder.file("twin")));
    for (std::string const& output : {document, folder.file("twin")})
    {
        Outcome const run({document, "xml", "-o", output});
        EXPECT_EQ(run.status, Status::NotRun);
        EXPECT_THAT(run.err, HasSubstr("is the document itself"));
        EXPECT_EQ(contentOf(document), materialx(twoNodes));
    }
}

TEST(MaterialProgram, FailedCommandLeavesTheOutputFileAlone)
{
    Folder const folder;
    std::string const document = folder.write("test.mtlx", materialx(twoNodes));
    Outcome const run({document, "html", "x", "-o", folder.write("result", "old")});
    EXPECT_EQ(run.status, Status::Defects);
    EXPECT_EQ(contentOf(folder.file("result")), "old");
}

TEST(MaterialProgram, UnwritableResultHasStatusOneEvenWithDefects)
{
    Folder const folder;
    std::string const document = folder.write("test.mtlx", materialx("<add/>"));
    Outcome const run({document, "-o", folder.file("no/such/folder")});
    EXPECT_EQ(run.status, Status::NotRun);
    EXPECT_THAT(run.err, AllOf(HasSubstr("has no name"), HasSubstr("cannot write '")));
}

TEST(OutputFile, ReplacesTheOldFileAndLeavesNothingBeside)
{
    Folder const folder;
    std::string const target = folder.write("target", "a long old text");
    EXPECT_EQ(writeOutputFile(target, "new\n"), "");
    EXPECT_EQ(contentOf(target), "new\n");
    EXPECT_THAT(folder.names(), ElementsAre("target"));
}

TEST(OutputFile, FolderIsRefused)
{
    Folder const folder;
    EXPECT_THAT(writeOutputFile(folder.file(""), "text"), Not(IsEmpty()));
    EXPECT_THAT(writeOutputFile("", "text"), Not(IsEmpty()));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(Platform, NewFileIsNeverAnOldOne)
{
    Folder const folder;
    std::string const old = folder.write("old", "text");
    EXPECT_EQ(createFile(pathOf(old)), nullptr);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(contentOf(old), "text");
}

TEST(ProgressLine, ShowsLongWorkAndLeavesNothingBehind)
{
    std::ostringstream terminal;
    Progress progress(&terminal, Progress::Clock::duration::zero());
    progress.start("reading", 3);
    progress.step();
    EXPECT_THAT(terminal.str(), EndsWith("reading 1 of 3"));
    progress.finish();
    EXPECT_THAT(terminal.str(), EndsWith("\r\033[K"));
}

TEST(ProgressLine, ShowsNothingOfShortWorkOrWithoutATerminal)
{
    std::ostringstream terminal;
    Progress patient(&terminal, std::chrono::hours(1));
    Progress silent(nullptr, Progress::Clock::duration::zero());
    for (Progress* progress : {&patient, &silent})
    {
        progress->start("reading");
        progress->step();
        progress->finish();
    }
    EXPECT_THAT(terminal.str(), IsEmpty());
}

} // namespace

} // namespace material_graph::test
