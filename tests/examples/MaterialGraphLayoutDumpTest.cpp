#include "support/ByteWriter.h"

#include <material_graph/LayoutDump.h>

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace material_graph::test
{

namespace
{

using kestrel::FileStreamEndian;
using kestrel::FileStreamRaw;
using kestrel::graph::GraphLayout;
using kestrel::graph::test::encodedNumber;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using namespace std::string_literals;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

constexpr std::uint32_t largestNumber = 0xFFFFFFFF;

File temporaryFile()
{
    return {std::tmpfile(), std::fclose};
}

std::size_t offsetIn(std::FILE* file)
{
    return static_cast<std::size_t>(std::ftell(file));
}

template <class Stream, class... Layouts>
std::string fileOf(Layouts const&... layouts)
{
    File const file = temporaryFile();
    Stream stream(file.get());
    EXPECT_TRUE((layouts.template write<Stream>(stream) && ...));
    std::string bytes(offsetIn(file.get()), '\0');
    std::rewind(file.get());
    EXPECT_EQ(std::fread(bytes.data(), 1, bytes.size(), file.get()), bytes.size());
    return bytes;
}

/// From a block of exactly their size, so that reading beyond it is seen.
LayoutDump dumpOf(std::string_view bytes)
{
    std::vector<char> const exact(bytes.begin(), bytes.end());
    return dumpLayout(std::string_view(exact.data(), exact.size()));
}

std::vector<std::string> linesOf(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

using Offsets = std::vector<std::size_t>;

Offsets offsetsOf(std::string const& text)
{
    Offsets offsets;
    for (std::string const& line : linesOf(text)) offsets.push_back(std::stoul(line, nullptr, 16));
    return offsets;
}

Offsets upTo(std::size_t last, Offsets offsets)
{
    offsets.erase(std::upper_bound(offsets.begin(), offsets.end(), last), offsets.end());
    return offsets;
}

std::string lineAt(std::string const& offset, LayoutDump const& dump)
{
    for (std::string const& line : linesOf(dump.text))
        if (line.starts_with(offset)) return line;
    return "no line at " + offset;
}

std::string littleEndian(std::uint32_t number)
{
    return encodedNumber(number, std::endian::little);
}

std::string bigEndian(std::uint32_t number)
{
    return encodedNumber(number, std::endian::big);
}

std::string zeros(std::size_t count)
{
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) bytes += littleEndian(0);
    return bytes;
}

std::string textBytes(std::string const& text)
{
    return littleEndian(static_cast<std::uint32_t>(text.size())) + text;
}

/// A file that holds one flag, "node collapsed", and nothing else.
std::string fileWithFlag(std::string const& nameAndFlag)
{
    return littleEndian(2) + zeros(2) + littleEndian(1) + nameAndFlag + zeros(6);
}

/// The line of the first entry in it.
std::string flagLineOf(std::string const& nameAndFlag)
{
    LayoutDump const dump = dumpOf(fileWithFlag(nameAndFlag));
    EXPECT_EQ(dump.defect, "");
    return lineAt("00000010", dump);
}

GraphLayout richLayout()
{
    GraphLayout layout;
    layout.insertNode("root.a", {1.5f, -2.0f}, {1.0f, 0.5f, 0.0f, 1.0f}, true, false, true, false);
    layout.insertNodePosition("root.b", {0.1f, 300.0f});
    layout.insertConnection("root.a.out > root.b.in", true, false);
    layout.addNote("root", "both\nlines", {10.0f, 20.0f}, {3.0f, 4.0f}, {0.25f, 0.5f, 0.75f, 1.0f},
                   {0.0f, 0.0f, 0.0f, 1.0f});
    layout.refNotes().setSize(2);
    layout.refNotes()[1].setOwnerName("root.a");
    return layout;
}

std::string const nativeOrder = std::endian::native == std::endian::little ? "little-endian" : "big-endian";

constexpr char const* richLines = R"(00000004    node positions: 2
00000008      "root.a" (1.5, -2)
0000001b      "root.b" (0.1, 300)
0000002e    node colours: 1
00000032      "root.a" (1, 0.5, 0, 1)
0000004d    node collapsed: 1
00000051      "root.a" true
0000005d    node visible: 1
00000061      "root.a" false
0000006d    node horizontal inputs: 1
00000071      "root.a" true
0000007d    node horizontal outputs: 1
00000081      "root.a" false
0000008d    connection visible: 1
00000091      "root.a.out > root.b.in" true
000000ad    connection bezier: 1
000000b1      "root.a.out > root.b.in" false
000000cd    notes: 2
000000d1      "root"
000000da        text "both\x0alines"
000000ea        position (10, 20)
000000f3        size (3, 4)
000000fc        first colour (0.25, 0.5, 0.75, 1)
0000010d        second colour (0, 0, 0, 1)
0000011e      "root.a"
00000129        text absent
0000012a        position absent
0000012b        size absent
0000012c        first colour absent
0000012d        second colour absent
)";

// ---- What a whole file shows

TEST(LayoutDump, ShowsEveryValueWithItsOffsetInTheMachinesOrder)
{
    LayoutDump const dump = dumpOf(fileOf<FileStreamRaw>(richLayout()));
    EXPECT_EQ(dump.text, "00000000  " + nativeOrder + " layout, version 2\n" + richLines);
    EXPECT_EQ(dump.defect, "");
}

TEST(LayoutDump, ShowsEveryValueWithItsOffsetInBigEndianOrder)
{
    LayoutDump const dump = dumpOf(fileOf<FileStreamEndian>(richLayout()));
    EXPECT_EQ(dump.text, "00000000  big-endian layout, version 2\n"s + richLines);
    EXPECT_EQ(dump.defect, "");
}

TEST(LayoutDump, EmptyLayoutShowsItsCounts)
{
    LayoutDump const dump = dumpOf(littleEndian(2) + zeros(9));
    EXPECT_EQ(dump.text, R"(00000000  little-endian layout, version 2
00000004    node positions: 0
00000008    node colours: 0
0000000c    node collapsed: 0
00000010    node visible: 0
00000014    node horizontal inputs: 0
00000018    node horizontal outputs: 0
0000001c    connection visible: 0
00000020    connection bezier: 0
00000024    notes: 0
)");
    EXPECT_EQ(dump.defect, "");
}

TEST(LayoutDump, VersionOneLacksThreeSections)
{
    LayoutDump const dump = dumpOf(littleEndian(1) + zeros(6));
    EXPECT_EQ(dump.text, R"(00000000  little-endian layout, version 1
00000004    node positions: 0
00000008    node colours: 0
0000000c    node collapsed: 0
00000010    node horizontal inputs: 0
00000014    node horizontal outputs: 0
00000018    notes: 0
)");
    EXPECT_EQ(dump.defect, "");
}

TEST(LayoutDump, ANumberIsAsShortAsItCanBeReadBackFrom)
{
    GraphLayout layout;
    float const infinity = std::numeric_limits<float>::infinity();
    layout.insertNodeColor("a", {0.1f, 16777216.0f, -0.0f, 1e-20f});
    layout.insertNodeColor("b", {std::numeric_limits<float>::quiet_NaN(), infinity, -infinity, 1.0f / 3.0f});
    LayoutDump const dump = dumpOf(fileOf<FileStreamRaw>(layout));
    EXPECT_EQ(lineAt("0000000c", dump), "0000000c      \"a\" (0.1, 16777216, -0, 1e-20)");
    EXPECT_EQ(lineAt("00000022", dump), "00000022      \"b\" (nan, inf, -inf, 0.33333334)");
}

struct QuotedText
{
    char const* what;
    std::string text;
    std::string quoted;
};

class LayoutDumpText : public ::testing::TestWithParam<QuotedText>
{
};

TEST_P(LayoutDumpText, IsShownOnOneLine)
{
    EXPECT_EQ(flagLineOf(textBytes(GetParam().text + '\0') + '\1'),
              "00000010      \"" + GetParam().quoted + "\" true");
}

INSTANTIATE_TEST_SUITE_P(
    LayoutDump, LayoutDumpText,
    ::testing::Values(QuotedText{"Empty", "", ""}, QuotedText{"Printable", "a z~", "a z~"},
                      QuotedText{"Quote", "say \"a\"", "say \\x22a\\x22"},
                      QuotedText{"Backslash", "a\\x0a", "a\\x5cx0a"},
                      QuotedText{"Control", "\1\t\n\x1b[31m\x1f\x7f", "\\x01\\x09\\x0a\\x1b[31m\\x1f\\x7f"},
                      QuotedText{"InnerNul", "a\0b\0"s, "a\\x00b\\x00"},
                      QuotedText{"TwoBytes", "\xC2\x80\xC3\xA9\xDF\xBF", "\xC2\x80\xC3\xA9\xDF\xBF"},
                      QuotedText{"ThreeBytes", "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF",
                                 "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"},
                      QuotedText{"FourBytes", "\xF0\x90\x80\x80\xF1\x80\x80\x80\xF4\x8F\xBF\xBF",
                                 "\xF0\x90\x80\x80\xF1\x80\x80\x80\xF4\x8F\xBF\xBF"},
                      QuotedText{"LoneContinuation", "a\x80z", "a\\x80z"},
                      QuotedText{"NoLead", "\xFE\xFF", "\\xfe\\xff"},
                      QuotedText{"TwoBytesOverlong", "\xC1\xBF", "\\xc1\\xbf"},
                      QuotedText{"ThreeBytesOverlong", "\xE0\x9F\xBF", "\\xe0\\x9f\\xbf"},
                      QuotedText{"FourBytesOverlong", "\xF0\x8F\xBF\xBF", "\\xf0\\x8f\\xbf\\xbf"},
                      QuotedText{"Surrogate", "\xED\xA0\x80", "\\xed\\xa0\\x80"},
                      QuotedText{"BeyondUnicode", "\xF4\x90\x80\x80\xF5\x80\x80\x80",
                                 "\\xf4\\x90\\x80\\x80\\xf5\\x80\\x80\\x80"},
                      QuotedText{"CutShort", "\xE2\x82", "\\xe2\\x82"},
                      QuotedText{"LastByteWrong", "\xF0\x9F\x98z", "\\xf0\\x9f\\x98z"},
                      QuotedText{"SequenceBehindABrokenOne", "\xE2\xC3\xA9", "\\xe2\xC3\xA9"}),
    [](auto const& test) { return std::string(test.param.what); });

TEST(LayoutDump, ATextWithoutNulIsWholeAndMarked)
{
    EXPECT_EQ(flagLineOf(textBytes("ab") + '\0'), "00000010      \"ab\" without NUL false");
    EXPECT_EQ(flagLineOf(textBytes("") + '\0'), "00000010      \"\" without NUL false");
    EXPECT_EQ(flagLineOf(textBytes("a\0b"s) + '\0'), "00000010      \"a\\x00b\" without NUL false");
}

TEST(LayoutDump, AnyFlagButZeroIsTrueAndAnUncommonOneMarked)
{
    EXPECT_EQ(flagLineOf(textBytes("a\0"s) + '\2'), "00000010      \"a\" [0x02] true");
    EXPECT_EQ(flagLineOf(textBytes("a\0"s) + '\xFF'), "00000010      \"a\" [0xff] true");
    LayoutDump const dump = dumpOf(littleEndian(1) + zeros(5) + littleEndian(1) + textBytes("a\0"s) + '\0' +
                                   '\x80' + zeros(2) + "\0\0\0"s);
    EXPECT_EQ(dump.defect, "");
    EXPECT_EQ(lineAt("00000023", dump), "00000023        position [0x80] (0, 0)");
}

// ---- Version and byte order

struct Versions
{
    std::uint32_t version;
    std::string shown;
};

class LayoutDumpVersion : public ::testing::TestWithParam<Versions>
{
};

TEST_P(LayoutDumpVersion, TellsTheByteOrder)
{
    auto const [version, shown] = GetParam();
    LayoutDump const little = dumpOf(littleEndian(version) + zeros(9));
    EXPECT_THAT(little.text, StartsWith("00000000  little-endian layout, version " + shown + "\n"));
    EXPECT_THAT(little.text, HasSubstr("\n00000024    notes: 0\n"));
    EXPECT_EQ(little.defect, "");
    LayoutDump const big = dumpOf(bigEndian(version) + zeros(9));
    EXPECT_THAT(big.text, StartsWith("00000000  big-endian layout, version " + shown + "\n"));
    EXPECT_THAT(big.text, HasSubstr("\n00000024    notes: 0\n"));
    EXPECT_EQ(big.defect, "");
}

INSTANTIATE_TEST_SUITE_P(LayoutDump, LayoutDumpVersion,
                         ::testing::Values(Versions{2, "2"}, Versions{3, "3, read as 2"},
                                           Versions{0x100, "256, read as 2"},
                                           Versions{0xFF00, "65280, read as 2"},
                                           Versions{0xFFFF, "65535, read as 2"}),
                         [](auto const& test) { return std::to_string(test.param.version); });

TEST(LayoutDump, ThereIsNothingToShowWithoutAVersion)
{
    for (std::uint32_t const version : {0u, 0x00010100u, largestNumber})
    {
        LayoutDump const dump = dumpOf(littleEndian(version) + zeros(9));
        EXPECT_EQ(dump.text, "");
        EXPECT_EQ(dump.defect, "there is no version of 1 to 65535 in either byte order at 0x00000000");
    }
}

TEST(LayoutDump, AnEmptyFileIsADefect)
{
    LayoutDump const dump = dumpLayout({});
    EXPECT_EQ(dump.text, "");
    EXPECT_EQ(dump.defect,
              "the file ends at 0x00000000, but there should be a version of 4 bytes at 0x00000000");
}

// ---- Several layouts in one file

TEST(LayoutDump, LayoutsThatFollowEachOtherHaveHeadingsOfTheirOwn)
{
    std::string const empty = fileOf<FileStreamEndian>(GraphLayout());
    std::string const file = fileOf<FileStreamEndian>(GraphLayout(), richLayout(), GraphLayout());
    LayoutDump const dump = dumpOf(file);
    EXPECT_EQ(dump.defect, "");
    EXPECT_EQ(linesOf(dump.text).size(),
              2 * linesOf(dumpOf(empty).text).size() + linesOf(richLines).size() + 1);
    EXPECT_EQ(lineAt("00000028", dump), "00000028  big-endian layout, version 2");
    EXPECT_EQ(lineAt("00000030", dump), "00000030      \"root.a\" (1.5, -2)");
    EXPECT_EQ(lineAt("00000156", dump), "00000156  big-endian layout, version 2");
    EXPECT_THAT(dump.text, EndsWith("\n0000017a    notes: 0\n"));
}

TEST(LayoutDump, LayoutsOfOneFileMayBeOfSeveralVersions)
{
    LayoutDump const dump = dumpOf(littleEndian(1) + zeros(6) + littleEndian(7) + zeros(9));
    EXPECT_EQ(dump.defect, "");
    EXPECT_EQ(lineAt("0000001c", dump), "0000001c  little-endian layout, version 7, read as 2");
}

struct LeftOver
{
    char const* what;
    std::string bytes;
    std::string defect;
};

class LayoutDumpLeftOver : public ::testing::TestWithParam<LeftOver>
{
};

TEST_P(LayoutDumpLeftOver, BytesAreADefect)
{
    std::string const layout = littleEndian(2) + zeros(9);
    LayoutDump const dump = dumpOf(layout + GetParam().bytes);
    EXPECT_EQ(dump.text, dumpOf(layout).text);
    EXPECT_EQ(dump.defect, GetParam().defect);
}

INSTANTIATE_TEST_SUITE_P(
    LayoutDump, LayoutDumpLeftOver,
    ::testing::Values(LeftOver{"One", "\2", "1 byte behind the layout at 0x00000028"},
                      LeftOver{"LessThanAVersion", "\2\0\0"s, "3 bytes behind the layout at 0x00000028"},
                      LeftOver{"Zeros", zeros(10), "40 bytes behind the layout at 0x00000028"},
                      LeftOver{"OtherByteOrder", bigEndian(2) + zeros(9),
                               "40 bytes behind the layout at 0x00000028"},
                      LeftOver{"TooLargeAVersion", littleEndian(0x10000) + zeros(9),
                               "40 bytes behind the layout at 0x00000028"}),
    [](auto const& test) { return std::string(test.param.what); });

// ---- Damaged files

TEST(LayoutDump, ANegativeCountEndsTheDump)
{
    std::string const names[] = {"node positions",     "node colours",           "node collapsed",
                                 "node visible",       "node horizontal inputs", "node horizontal outputs",
                                 "connection visible", "connection bezier"};
    for (std::size_t section = 0; section < std::size(names); ++section)
    {
        LayoutDump const dump =
            dumpOf(littleEndian(2) + zeros(section) + littleEndian(largestNumber) + zeros(8 - section));
        std::size_t const offset = 4 + 4 * section;
        EXPECT_THAT(dump.text, EndsWith("    " + names[section] + ": -1\n"));
        EXPECT_EQ(linesOf(dump.text).size(), section + 2);
        char digits[9];
        std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned int>(offset));
        EXPECT_EQ(dump.defect, "the count of " + names[section] + " at 0x" + digits + " is negative");
    }
}

TEST(LayoutDump, TheLargestNumberOfNotesEndsWithTheFile)
{
    LayoutDump const dump = dumpOf(littleEndian(2) + zeros(8) + littleEndian(largestNumber));
    EXPECT_THAT(dump.text, EndsWith("\n00000024    notes: 4294967295\n00000028      ...\n"));
    EXPECT_EQ(dump.defect,
              "the file ends at 0x00000028, but there should be a length of 4 bytes at 0x00000028");
}

TEST(LayoutDump, ALengthBeyondTheFileIsTold)
{
    LayoutDump const dump = dumpOf(fileWithFlag(littleEndian(largestNumber) + "ab\0\1"s));
    EXPECT_THAT(dump.text, EndsWith("\n0000000c    node collapsed: 1\n00000010      ...\n"));
    EXPECT_EQ(dump.defect,
              "the file ends at 0x00000030, but there should be a text of 4294967295 bytes at 0x00000014");
}

struct Cut
{
    std::size_t size;
    std::string lastLine;
    std::string missing;
};

class LayoutDumpCut : public ::testing::TestWithParam<Cut>
{
};

TEST_P(LayoutDumpCut, ShowsWhatIsThereAndWhatIsMissing)
{
    auto const& [size, lastLine, missing] = GetParam();
    std::string const file = fileOf<FileStreamEndian>(richLayout());
    LayoutDump const dump = dumpOf(std::string_view(file).substr(0, size));
    EXPECT_THAT(dump.text, EndsWith("\n" + lastLine + "\n"));
    EXPECT_THAT(dump.defect, EndsWith(", but there should be " + missing));
}

INSTANTIATE_TEST_SUITE_P(
    LayoutDump, LayoutDumpCut,
    ::testing::Values(Cut{0x04, "00000004    node positions: ...", "a count of 4 bytes at 0x00000004"},
                      Cut{0x0B, "00000008      ...", "a length of 4 bytes at 0x00000008"},
                      Cut{0x12, "00000008      ...", "a text of 7 bytes at 0x0000000c"},
                      Cut{0x13, "00000008      \"root.a\" (...", "a number of 4 bytes at 0x00000013"},
                      Cut{0x1A, "00000008      \"root.a\" (1.5, ...", "a number of 4 bytes at 0x00000017"},
                      Cut{0x5C, "00000051      \"root.a\" ...", "a flag of 1 byte at 0x0000005c"},
                      Cut{0xCD, "000000cd    notes: ...", "a count of 4 bytes at 0x000000cd"},
                      Cut{0xEA, "000000ea        position ...", "a flag of 1 byte at 0x000000ea"},
                      Cut{0x12D, "0000012d        second colour ...", "a flag of 1 byte at 0x0000012d"}),
    [](auto const& test) { return "At" + std::to_string(test.param.size); });

TEST(LayoutDump, EveryTruncationIsADefectBehindWhatIsThere)
{
    for (std::string const& file :
         {fileOf<FileStreamRaw>(richLayout()), fileOf<FileStreamEndian>(richLayout())})
    {
        std::string const whole = dumpOf(file).text;
        for (std::size_t size = 0; size < file.size(); ++size)
        {
            SCOPED_TRACE(size);
            LayoutDump const dump = dumpOf(std::string_view(file).substr(0, size));
            EXPECT_THAT(dump.defect, HasSubstr(" there should be "));
            std::string_view shown = dump.text;
            if (shown.ends_with("...\n")) shown.remove_suffix(4);
            EXPECT_EQ(shown, whole.substr(0, shown.size()));
            EXPECT_EQ(offsetsOf(dump.text), size < 4 ? Offsets{} : upTo(size, offsetsOf(whole)));
        }
    }
}

/// Whether the library reads the big-endian file to its end, layout by layout.
bool libraryReadsWhole(std::string const& bytes)
{
    File const file = temporaryFile();
    EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file.get()), bytes.size());
    std::rewind(file.get());
    FileStreamEndian stream(file.get());
    GraphLayout layout;
    bool whole = true;
    while (whole && offsetIn(file.get()) < bytes.size())
    {
        std::string const start = bytes.substr(offsetIn(file.get()), 4);
        bool const isVersion = start > bigEndian(0) && start <= bigEndian(0xFFFF);
        whole = isVersion && layout.read(stream);
    }
    return whole;
}

TEST(LayoutDump, FindsADefectWhereTheLibraryDoesWhateverByteIsWrong)
{
    std::string const file = fileOf<FileStreamEndian>(richLayout());
    std::size_t defects = 0;
    std::size_t wholeFiles = 0;
    for (std::size_t at = bigEndian(GraphLayout::VERSION).size(); at < file.size(); ++at)
        for (char const wrong : {'\0', '\1', '\7', '\x7F', '\x80', '\xFF'})
        {
            SCOPED_TRACE(at);
            std::string damaged = file;
            damaged[at] = wrong;
            LayoutDump const dump = dumpOf(damaged);
            EXPECT_EQ(dump.defect.empty(), libraryReadsWhole(damaged));
            Offsets const offsets = offsetsOf(dump.text);
            EXPECT_EQ(std::adjacent_find(offsets.begin(), offsets.end(), std::greater_equal<>()),
                      offsets.end());
            ++(dump.defect.empty() ? wholeFiles : defects);
        }
    EXPECT_GT(defects, 400u);
    EXPECT_GT(wholeFiles, 400u);
}

// ---- Large files

TEST(LayoutDump, ManyEntriesAreCheap)
{
    constexpr std::uint32_t count = 200000;
    std::string file = littleEndian(1) + zeros(2) + littleEndian(count);
    for (std::uint32_t i = 0; i < count; ++i) file += textBytes("a\0"s) + '\1';
    LayoutDump const dump = dumpOf(file + zeros(3));
    EXPECT_EQ(dump.defect, "");
    EXPECT_EQ(std::count(dump.text.begin(), dump.text.end(), '\n'), static_cast<int>(count) + 7);
    EXPECT_THAT(dump.text.substr(dump.text.size() - 200), HasSubstr("      \"a\" true\n"));
}

TEST(LayoutDump, ALongTextIsCheap)
{
    std::string const text(1u << 20, '\n');
    LayoutDump const dump = dumpOf(fileWithFlag(textBytes(text + '\0') + '\0'));
    EXPECT_EQ(dump.defect, "");
    EXPECT_EQ(linesOf(dump.text).size(), 11u);
    EXPECT_GT(dump.text.size(), 4 * text.size());
}

} // namespace

} // namespace material_graph::test
