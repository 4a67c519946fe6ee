#include "support/LayoutFiles.h"
#include "support/SampleLayout.h"

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <ostream>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::graph::test
{

void PrintTo(GoldenFile const& golden, std::ostream* out)
{
    *out << golden.name;
}

namespace
{

using namespace std::string_view_literals;
using testing::ElementsAre;

using Color = Color4<float>;
using Pair = Tuple2<float, float>;

constexpr std::size_t mapCount = 2 + plainFlagCount;

// The value number `k` in the map of that place in the file.
void put(PlainLayout& layout, std::size_t map, std::string const& name, int k)
{
    float const real = static_cast<float>(k);
    if (map == 0)
        layout.positions[name] = plainPair(real, -real);
    else if (map == 1)
        layout.colors[name] = plainColor(real, 0.0f, -real, 1.0f);
    else
        layout.flags[map - 2][name] = k % 2 != 0;
}

// The bytes of that value, without the name in front of it.
void writeValue(ByteWriter& out, std::size_t map, int k)
{
    PlainLayout layout;
    put(layout, map, "", k);
    if (map == 0)
        out.value(layout.positions[""]);
    else if (map == 1)
        out.value(layout.colors[""]);
    else
        out.value(layout.flags[map - 2][""]);
}

// A file of version 2 with nothing but such records, as they stand, in one map.
std::string fileWithRecords(std::size_t map, std::uint32_t count, ByteWriter const& records,
                            std::endian order)
{
    ByteWriter out(order);
    out.number(2);
    for (std::size_t i = 0; i < mapCount; ++i)
    {
        out.count(i == map ? count : 0);
        if (i == map) out.bytes(records.content());
    }
    out.count(0);
    return out.content();
}

// The file of a layout, with the four bytes of its version replaced.
template <class Stream>
std::string withVersion(std::uint32_t version, std::string bytes)
{
    return bytes.replace(0, 4, encodedNumber(version, orderOf<Stream>));
}

template <class Stream>
std::string fileOf(PlainLayout const& layout, std::uint32_t version = 2)
{
    return encoded(layout, version, orderOf<Stream>).content();
}

template <class Stream>
void expectReads(std::string const& bytes, PlainLayout const& expected)
{
    ReadResult const result = readFrom<Stream>(bytes);
    EXPECT_TRUE(result.whole);
    EXPECT_EQ(result.layout, expected);
    EXPECT_EQ(result.end, bytes.size());
}

template <class Stream>
class GraphLayoutFile : public testing::Test
{
};

using Streams = testing::Types<FileStreamRaw, FileStreamEndian>;
TYPED_TEST_SUITE(GraphLayoutFile, Streams, );

// ---- What is written

TYPED_TEST(GraphLayoutFile, OfAnEmptyLayoutIsItsVersionAndNineZeroCounts)
{
    std::string const bytes = writtenBy<TypeParam>(GraphLayout());
    EXPECT_EQ(bytes, encodedNumber(2, orderOf<TypeParam>) + std::string(36, '\0'));
    EXPECT_EQ(bytes.size(), 40u);
    EXPECT_EQ(GraphLayout::VERSION, 2u);
}

TYPED_TEST(GraphLayoutFile, HoldsTheMapsInOrderAndThenTheNotes)
{
    EXPECT_EQ(writtenBy<TypeParam>(layoutOf(smallLayout())), fileOf<TypeParam>(smallLayout()));
    EXPECT_EQ(writtenBy<TypeParam>(layoutOf(everythingLayout())), fileOf<TypeParam>(everythingLayout()));
}

TYPED_TEST(GraphLayoutFile, HoldsATwoLetterNameAsItsLengthThreeTheLettersAndANul)
{
    GraphLayout layout;
    layout.insertNodePosition("ab", Pair(0.0f, 0.0f));
    EXPECT_EQ(writtenBy<TypeParam>(layout).substr(8, 7),
              encodedNumber(3, orderOf<TypeParam>) + std::string("ab\0"sv));
}

TYPED_TEST(GraphLayoutFile, HoldsABareNoteAsItsOwnerAndFiveZeroBytes)
{
    GraphLayout layout;
    NoteDesc note;
    note.setOwnerName("a");
    layout.addNote(note);
    EXPECT_EQ(writtenBy<TypeParam>(layout).substr(36), encodedNumber(1, orderOf<TypeParam>) +
                                                           encodedNumber(2, orderOf<TypeParam>) +
                                                           std::string("a\0\0\0\0\0\0"sv));
}

TYPED_TEST(GraphLayoutFile, HoldsTheRecordsOfEachMapInAscendingOrderOfTheirUnsignedBytes)
{
    char const* const ascending[] = {"", "B", "a", "a b", "a.b", "b", "\x80", "\xE9"};
    for (std::size_t map = 0; map < mapCount; ++map)
    {
        SCOPED_TRACE(map);
        GraphLayout layout;
        ByteWriter records(orderOf<TypeParam>);
        for (int step = 0; step < 8; ++step)
        {
            int const scattered = step * 3 % 8;
            PlainLayout one;
            put(one, map, ascending[scattered], scattered);
            layout.updateWithOther(layoutOf(one));
            records.value(std::string(ascending[step]));
            writeValue(records, map, step);
        }
        EXPECT_EQ(writtenBy<TypeParam>(layout), fileWithRecords(map, 8, records, orderOf<TypeParam>));
    }
}

TYPED_TEST(GraphLayoutFile, HoldsTheNotesInTheOrderInWhichTheyWereAdded)
{
    PlainLayout plain;
    for (char const* owner : {"b", "a", "c", "a", ""}) plain.notes.push_back({owner});
    EXPECT_EQ(writtenBy<TypeParam>(layoutOf(plain)), fileOf<TypeParam>(plain));
}

TYPED_TEST(GraphLayoutFile, IsWrittenWithoutChangingTheLayout)
{
    GraphLayout const layout = layoutOf(everythingLayout());
    std::string const bytes = writtenBy<TypeParam>(layout);
    EXPECT_EQ(plainOf(layout), everythingLayout());
    EXPECT_EQ(writtenBy<TypeParam>(layout), bytes);
}

TYPED_TEST(GraphLayoutFile, IsOnTheDiskWhenWriteReturns)
{
    TemporaryFile const file;
    TypeParam stream(file.get());
    EXPECT_TRUE(layoutOf(smallLayout()).write(stream));
    EXPECT_EQ(contentOf(file.path()), fileOf<TypeParam>(smallLayout()));
}

// ---- What is read

TYPED_TEST(GraphLayoutFile, ComesBackAsTheSameLayout)
{
    GraphLayout const layout = layoutOf(everythingLayout());
    TemporaryFile const file;
    TypeParam stream(file.get());
    EXPECT_TRUE(layout.write(stream));
    std::rewind(file.get());
    GraphLayout read;
    EXPECT_TRUE(read.read(stream));
    EXPECT_TRUE(read == layout);
    EXPECT_EQ(plainOf(read), everythingLayout());
}

TYPED_TEST(GraphLayoutFile, ComesBackWithEveryBitOfItsNumbers)
{
    PlainPair const pair{0x7FC12345u, 0xFFFFFFFFu};
    PlainColor const color{0x80000000u, 0x00000001u, 0x7F800000u, 0xFF800000u};
    PlainLayout plain;
    plain.positions["a"] = pair;
    plain.colors["a"] = color;
    plain.notes = {{"a", {}, pair, pair, color, color}};
    std::string const bytes = fileOf<TypeParam>(plain);
    expectReads<TypeParam>(bytes, plain);
    EXPECT_EQ(writtenBy<TypeParam>(layoutOf(plain)), bytes);
}

TYPED_TEST(GraphLayoutFile, ComesBackWithLongNamesAndTexts)
{
    std::string const name(300000, 'n');
    PlainLayout plain;
    for (std::size_t map = 0; map < mapCount; ++map) put(plain, map, name, 1);
    plain.notes = {{name, std::string(3000000, 't')}};
    std::string const bytes = writtenBy<TypeParam>(layoutOf(plain));
    EXPECT_TRUE(bytes == fileOf<TypeParam>(plain));
    EXPECT_TRUE(readFrom<TypeParam>(bytes).layout == plain);
}

TYPED_TEST(GraphLayoutFile, ComesBackWithTheBytesBehindANulInATextOfANote)
{
    PlainLayout plain;
    plain.notes = {{"a", std::string("b\0c"sv)}};
    EXPECT_EQ(writtenBy<TypeParam>(layoutOf(plain)), fileOf<TypeParam>(plain));
    expectReads<TypeParam>(fileOf<TypeParam>(plain), plain);
}

TYPED_TEST(GraphLayoutFile, ComesBackWithALotOfNames)
{
    constexpr int count = 200000;
    GraphLayout layout;
    for (int i = 0; i < count; ++i)
        layout.insertNodePosition(std::to_string(i).c_str(), Pair(static_cast<float>(i), 0.5f));
    TemporaryFile const file;
    TypeParam stream(file.get());
    EXPECT_TRUE(layout.write(stream));
    std::rewind(file.get());
    GraphLayout read;
    EXPECT_TRUE(read.read(stream));
    EXPECT_TRUE(read == layout);
    EXPECT_EQ(read.getPositionByNodeName("123456").value_or(Pair()), Pair(123456.0f, 0.5f));
}

TYPED_TEST(GraphLayoutFile, OfVersionTwoOrLaterHasEverything)
{
    std::string const bytes = fileOf<TypeParam>(everythingLayout());
    for (std::uint32_t version : {2u, 3u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        SCOPED_TRACE(version);
        expectReads<TypeParam>(withVersion<TypeParam>(version, bytes), everythingLayout());
    }
}

TYPED_TEST(GraphLayoutFile, OfAnEarlierVersionHasNoVisibilityAndNoBezierFlags)
{
    PlainLayout const expected = inVersion(1, everythingLayout());
    ASSERT_NE(expected, everythingLayout());
    std::string const bytes = fileOf<TypeParam>(everythingLayout(), 1);
    for (std::uint32_t version : {0u, 1u})
    {
        SCOPED_TRACE(version);
        expectReads<TypeParam>(withVersion<TypeParam>(version, bytes), expected);
    }
}

TYPED_TEST(GraphLayoutFile, OfAnyVersionIsWrittenAsVersionTwo)
{
    std::string const old = fileOf<TypeParam>(everythingLayout(), 1);
    std::string const later = withVersion<TypeParam>(77, fileOf<TypeParam>(everythingLayout()));
    EXPECT_EQ(writtenBy<TypeParam>(readFrom<TypeParam>(old).asRead),
              fileOf<TypeParam>(inVersion(1, everythingLayout())));
    EXPECT_EQ(writtenBy<TypeParam>(readFrom<TypeParam>(later).asRead), fileOf<TypeParam>(everythingLayout()));
}

TYPED_TEST(GraphLayoutFile, ReplacesWhatTheLayoutHeld)
{
    for (std::string const& bytes : {fileOf<TypeParam>({}), fileOf<TypeParam>({}, 1), std::string()})
    {
        SCOPED_TRACE(bytes.size());
        TemporaryFile const file(bytes);
        TypeParam stream(file.get());
        GraphLayout layout = layoutOf(everythingLayout());
        EXPECT_EQ(layout.read(stream), !bytes.empty());
        EXPECT_EQ(plainOf(layout), PlainLayout());
        EXPECT_TRUE(layout == GraphLayout());
    }
}

TYPED_TEST(GraphLayoutFile, IsReadToItsEndAndNoFurther)
{
    for (std::uint32_t version : {1u, 2u})
        for (PlainLayout const& layout : {PlainLayout(), smallLayout(), everythingLayout()})
        {
            std::string const bytes = fileOf<TypeParam>(layout, version);
            ReadResult const result =
                readFrom<TypeParam>(bytes + "something else, longer than a buffer" + std::string(10000, 'x'));
            EXPECT_TRUE(result.whole);
            EXPECT_EQ(result.layout, inVersion(version, layout));
            EXPECT_EQ(result.end, bytes.size());
        }
}

TYPED_TEST(GraphLayoutFile, MayHoldOneLayoutBehindTheOther)
{
    std::vector<PlainLayout> const layouts{everythingLayout(), {}, smallLayout()};
    TemporaryFile const file;
    TypeParam stream(file.get());
    for (PlainLayout const& layout : layouts) EXPECT_TRUE(layoutOf(layout).write(stream));
    std::rewind(file.get());
    GraphLayout read;
    for (PlainLayout const& layout : layouts)
    {
        EXPECT_TRUE(read.read(stream));
        EXPECT_EQ(plainOf(read), layout);
    }
    EXPECT_FALSE(read.read(stream));
    EXPECT_EQ(plainOf(read), PlainLayout());
}

TYPED_TEST(GraphLayoutFile, MayHaveAnyByteButZeroForTrue)
{
    ByteWriter const written = encoded(everythingLayout(), 2, orderOf<TypeParam>);
    for (char byte : {'\x01', '\x02', '\x7F', '\x80', '\xFF'})
    {
        SCOPED_TRACE(int{byte});
        std::string bytes = written.content();
        for (std::size_t offset : written.bools())
            if (bytes[offset] != 0) bytes[offset] = byte;
        expectReads<TypeParam>(bytes, everythingLayout());
    }
}

// A file with such a name, of `length` bytes, in one of the maps.
template <class Stream>
std::string fileWithName(std::size_t map, std::uint32_t length, std::string_view bytes)
{
    ByteWriter record(orderOf<Stream>);
    record.length(length);
    record.bytes(bytes);
    writeValue(record, map, 1);
    return fileWithRecords(map, 1, record, orderOf<Stream>);
}

// A file with a note whose owner and text are such.
template <class Stream>
std::string fileWithNoteTexts(std::uint32_t length, std::string_view bytes)
{
    std::string const empty = fileOf<Stream>({});
    ByteWriter out(orderOf<Stream>);
    out.bytes(std::string_view(empty).substr(0, empty.size() - 4));
    out.count(1);
    out.length(length);
    out.bytes(bytes);
    out.value(true);
    out.length(length);
    out.bytes(bytes);
    for (int part = 0; part < 4; ++part) out.value(false);
    return out.content();
}

// Reads texts that are stored with such bytes, in every place where a text can stand.
template <class Stream>
void expectStoredTextReads(std::string_view bytes, std::string const& expected)
{
    std::uint32_t const length = static_cast<std::uint32_t>(bytes.size());
    for (std::size_t map = 0; map < mapCount; ++map)
    {
        SCOPED_TRACE(map);
        PlainLayout layout;
        put(layout, map, expected, 1);
        expectReads<Stream>(fileWithName<Stream>(map, length, bytes), layout);
    }
    PlainLayout layout;
    layout.notes = {{expected, expected}};
    expectReads<Stream>(fileWithNoteTexts<Stream>(length, bytes), layout);
}

TYPED_TEST(GraphLayoutFile, MayHaveTextsWithoutTheirNul)
{
    expectStoredTextReads<TypeParam>("ab", "ab");
    expectStoredTextReads<TypeParam>("a", "a");
    expectStoredTextReads<TypeParam>("ab\0"sv, "ab");
}

TYPED_TEST(GraphLayoutFile, MayHaveTextsOfLengthZero)
{
    expectStoredTextReads<TypeParam>("", "");
    expectStoredTextReads<TypeParam>("\0"sv, "");
}

TYPED_TEST(GraphLayoutFile, KeepsTheLastOfTheValuesThatANameHas)
{
    for (std::size_t map = 0; map < mapCount; ++map)
    {
        SCOPED_TRACE(map);
        ByteWriter records(orderOf<TypeParam>);
        PlainLayout expected;
        int k = 0;
        for (char const* name : {"a", "b", "a", "c", "c", "c"})
        {
            records.value(std::string(name));
            writeValue(records, map, ++k);
            put(expected, map, name, k);
        }
        expectReads<TypeParam>(fileWithRecords(map, 6, records, orderOf<TypeParam>), expected);
    }
}

TYPED_TEST(GraphLayoutFile, MayHaveItsNamesInAnyOrder)
{
    for (std::size_t map = 0; map < mapCount; ++map)
    {
        SCOPED_TRACE(map);
        ByteWriter records(orderOf<TypeParam>);
        PlainLayout expected;
        int k = 0;
        for (char const* name : {"\xE9", "b", "c", "", "a"})
        {
            records.value(std::string(name));
            writeValue(records, map, ++k);
            put(expected, map, name, k);
        }
        std::string const bytes = fileWithRecords(map, 5, records, orderOf<TypeParam>);
        expectReads<TypeParam>(bytes, expected);
        EXPECT_NE(bytes, fileOf<TypeParam>(expected));
        EXPECT_EQ(writtenBy<TypeParam>(readFrom<TypeParam>(bytes).asRead), fileOf<TypeParam>(expected));
    }
}

// ---- Files that take or give nothing

TYPED_TEST(GraphLayoutFile, IsNeitherWrittenNorReadWithoutAFile)
{
    TypeParam stream(nullptr);
    GraphLayout layout = layoutOf(smallLayout());
    EXPECT_FALSE(layout.write(stream));
    EXPECT_FALSE(GraphLayout().write(stream));
    EXPECT_EQ(plainOf(layout), smallLayout());
    EXPECT_FALSE(layout.read(stream));
    EXPECT_EQ(plainOf(layout), PlainLayout());
}

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, FileCloser>;

TYPED_TEST(GraphLayoutFile, CannotBeWrittenToAFileThatIsOpenForReading)
{
    TemporaryFile const existing("content");
    OpenFile const file(std::fopen(existing.path().c_str(), "rb"));
    ASSERT_NE(file, nullptr);
    TypeParam stream(file.get());
    EXPECT_FALSE(layoutOf(everythingLayout()).write(stream));
    EXPECT_FALSE(GraphLayout().write(stream));
    EXPECT_EQ(contentOf(existing.path()), "content");
}

TYPED_TEST(GraphLayoutFile, CannotBeReadFromAFileThatIsOpenForWriting)
{
    TemporaryFile const existing;
    OpenFile const file(std::fopen(existing.path().c_str(), "wb"));
    ASSERT_NE(file, nullptr);
    TypeParam stream(file.get());
    GraphLayout layout = leftoverLayout();
    EXPECT_FALSE(layout.read(stream));
    EXPECT_EQ(plainOf(layout), PlainLayout());
}

#if defined(__linux__) // the only system with a disk that is always full
TYPED_TEST(GraphLayoutFile, CannotBeWrittenToAFullDiskEvenIfABufferTakesIt)
{
    PlainLayout large;
    large.notes = {{"a", std::string(100000, 'x')}};
    for (int mode : {_IOFBF, _IONBF})
        for (PlainLayout const& layout : {PlainLayout(), everythingLayout(), large})
        {
            OpenFile const file(std::fopen("/dev/full", "wb"));
            ASSERT_NE(file, nullptr);
            ASSERT_EQ(std::setvbuf(file.get(), nullptr, mode, 4096), 0);
            TypeParam stream(file.get());
            EXPECT_FALSE(layoutOf(layout).write(stream));
        }
}
#endif

// ---- Streams of the host

// Keeps the bytes of its virtual operations itself; `room` is how many it takes.
template <class Stream>
class MemoryStream : public Stream
{
public:
    explicit MemoryStream(std::FILE* file = nullptr) : Stream(file) {}

    std::size_t read(void* bytes, std::size_t count) override
    {
        blocks.push_back(count);
        count = std::min(count, content.size() - position);
        std::memcpy(bytes, content.data() + position, count);
        position += count;
        return count;
    }

    std::size_t write(void const* bytes, std::size_t count) override
    {
        blocks.push_back(count);
        count = std::min(count, room - content.size());
        content.append(static_cast<char const*>(bytes), count);
        return count;
    }

    std::string content;
    std::vector<std::size_t> blocks;
    std::size_t position = 0;
    std::size_t room = std::string::npos;
};

/// Takes every byte, and cannot hand them on.
template <class Stream>
class StuckStream : public Stream
{
public:
    using Stream::Stream;

    bool flush() override
    {
        ++flushes;
        return false;
    }

    int flushes = 0;
};

TYPED_TEST(GraphLayoutFile, IsNotWrittenIfTheStreamCannotHandOnWhatItTook)
{
    OpenFile const file(std::tmpfile());
    StuckStream<TypeParam> stream(file.get());
    EXPECT_FALSE(GraphLayout().write<TypeParam>(stream));
    EXPECT_EQ(stream.flushes, 1);
}

TEST(GraphLayoutHostStream, OfTheRawKindCarriesEveryByteThroughItsVirtualOperations)
{
    std::vector<std::vector<std::size_t>> const parts{
        {4},                               // version
        {4, 4, 2, 8},                      // positions
        {4},                               // colours
        {4, 4, 2, 1, 4, 2, 1},             // collapsed
        {4, 4, 4, 4},                      // visible, inputs, outputs, connection visible
        {4, 4, 10, 1},                     // bezier
        {4, 4, 2, 1, 4, 3, 1, 8, 1, 1, 1}, // notes
    };
    std::vector<std::size_t> blocks;
    for (auto const& part : parts) blocks.insert(blocks.end(), part.begin(), part.end());

    MemoryStream<FileStreamRaw> stream;
    EXPECT_TRUE(layoutOf(smallLayout()).write<FileStreamRaw>(stream));
    EXPECT_EQ(stream.content, fileOf<FileStreamRaw>(smallLayout()));
    EXPECT_EQ(stream.blocks, blocks);

    stream.blocks.clear();
    GraphLayout layout = leftoverLayout();
    EXPECT_TRUE(layout.read<FileStreamRaw>(stream));
    EXPECT_EQ(plainOf(layout), smallLayout());
    EXPECT_EQ(stream.position, stream.content.size());
    EXPECT_EQ(stream.blocks, blocks);
}

TEST(GraphLayoutHostStream, OfTheRawKindCarriesAColourAsOneBlock)
{
    MemoryStream<FileStreamRaw> stream;
    GraphLayout layout;
    layout.insertNodeColor("abc", Color(1.0f, 2.0f, 3.0f, 4.0f));
    EXPECT_TRUE(layout.write<FileStreamRaw>(stream));
    EXPECT_THAT(stream.blocks, ElementsAre(4, 4, 4, 4, 4, 16, 4, 4, 4, 4, 4, 4, 4));
}

TEST(GraphLayoutHostStream, OfTheEndianKindCarriesOnlyTheBytesOfNamesAndTexts)
{
    TemporaryFile const file;
    MemoryStream<FileStreamEndian> stream(file.get());
    EXPECT_TRUE(layoutOf(smallLayout()).write<FileStreamEndian>(stream));
    EXPECT_EQ(stream.content, "a\0a\0b\0a.o > b.i\0a\0Hi\0"sv);
    EXPECT_THAT(stream.blocks, ElementsAre(2, 2, 2, 10, 2, 3));
    EXPECT_EQ(contentOf(file.path()).size(), 109u - stream.content.size());

    std::rewind(file.get());
    stream.blocks.clear();
    GraphLayout layout;
    EXPECT_TRUE(layout.read<FileStreamEndian>(stream));
    EXPECT_EQ(plainOf(layout), smallLayout());
    EXPECT_THAT(stream.blocks, ElementsAre(2, 2, 2, 10, 2, 3));
}

// Writes with every room that is too small, and then with enough.
template <class Stream>
void expectWriteTellsOfLostBytes(std::size_t needed)
{
    for (std::size_t room = 0; room <= needed; ++room)
    {
        SCOPED_TRACE(room);
        TemporaryFile const file;
        MemoryStream<Stream> stream(file.get());
        stream.room = room;
        EXPECT_EQ(layoutOf(smallLayout()).template write<Stream>(stream), room == needed);
    }
}

TEST(GraphLayoutHostStream, MayRefuseAnyByteAndWriteTells)
{
    expectWriteTellsOfLostBytes<FileStreamRaw>(fileOf<FileStreamRaw>(smallLayout()).size());
    expectWriteTellsOfLostBytes<FileStreamEndian>(21); // the bytes of its names and texts
}

TEST(GraphLayoutHostStream, MayEndAnywhereAndReadTells)
{
    std::string const bytes = fileOf<FileStreamRaw>(smallLayout());
    for (std::size_t size = 0; size <= bytes.size(); ++size)
    {
        SCOPED_TRACE(size);
        MemoryStream<FileStreamRaw> stream;
        stream.content = bytes.substr(0, size);
        GraphLayout layout;
        EXPECT_EQ(layout.read<FileStreamRaw>(stream), size == bytes.size());
    }
}

// ---- Layouts of the host

class HostLayout : public GraphLayout
{
public:
    using GraphLayout::addNote;

    void insertNodePosition(KS_String const&, Pair const&) override { calls.push_back("position"); }
    void insertNodeColor(KS_String const&, Color const&) override { calls.push_back("colour"); }
    void insertNodeCollapsed(KS_String const&, bool const&) override { calls.push_back("collapsed"); }
    void insertNodeVisible(KS_String const&, bool const&) override { calls.push_back("visible"); }
    void insertNodeHorizontalInputs(KS_String const&, bool const&) override { calls.push_back("inputs"); }
    void insertNodeHorizontalOutputs(KS_String const&, bool const&) override { calls.push_back("outputs"); }
    void insertConnectionVisible(KS_String const&, bool const&) override { calls.push_back("connection"); }
    void insertConnectionBezier(KS_String const&, bool const&) override { calls.push_back("bezier"); }

    void addNote(NoteDesc const& note) override
    {
        calls.push_back("note of " + std::string(note.getOwnerName()));
        if (note.getText()) GraphLayout::addNote(note);
    }

    std::vector<std::string> calls;
};

TYPED_TEST(GraphLayoutFile, BringsItsNotesInThroughAddNoteAndItsValuesNotThroughTheInserts)
{
    TemporaryFile const file(fileOf<TypeParam>(everythingLayout()));
    TypeParam stream(file.get());
    HostLayout layout;
    EXPECT_TRUE(layout.read(stream));
    EXPECT_THAT(layout.calls,
                ElementsAre("note of root", "note of ", "note of root.text", "note of root.position",
                            "note of root.size", "note of root.first", "note of root.second"));
    PlainLayout expected = everythingLayout();
    std::erase_if(expected.notes, [](PlainNote const& note) { return !note.text; });
    EXPECT_EQ(plainOf(layout), expected);
}

// ---- Golden files

class GoldenLayout : public testing::TestWithParam<GoldenFile>
{
protected:
    static bool isEndian() { return GetParam().order == std::endian::big; }

    static std::string bytes()
    {
        return contentOf(std::string(TEST_DATA_DIR) + "/layout/" + GetParam().name);
    }

    static ReadResult read(std::string const& bytes)
    {
        return isEndian() ? readFrom<FileStreamEndian>(bytes) : readFrom<FileStreamRaw>(bytes);
    }

    static std::string written(GraphLayout const& layout)
    {
        return isEndian() ? writtenBy<FileStreamEndian>(layout) : writtenBy<FileStreamRaw>(layout);
    }
};

TEST_P(GoldenLayout, IsReadAsWhatItHolds)
{
    ReadResult const result = read(bytes());
    EXPECT_TRUE(result.whole);
    EXPECT_EQ(result.layout, GetParam().layout);
    EXPECT_EQ(result.end, bytes().size());
}

TEST_P(GoldenLayout, IsWrittenAgainByteForByteUnlessItIsOld)
{
    std::string const again = written(layoutOf(GetParam().layout));
    if (GetParam().version == 2)
        EXPECT_EQ(again, bytes());
    else
        EXPECT_EQ(again, encoded(GetParam().layout, 2, GetParam().order).content());
}

// "small_v2_endian" of "small.v2.endian.layout".
std::string testNameOf(testing::TestParamInfo<GoldenFile> const& info)
{
    std::string name = info.param.name.substr(0, info.param.name.rfind('.'));
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

/// Those that this machine reads: a raw file is for machines of its byte order.
std::vector<GoldenFile> readableGoldenFiles()
{
    std::vector<GoldenFile> files = goldenFiles();
    std::erase_if(files, [](GoldenFile const& file)
                  { return file.order != std::endian::big && file.order != std::endian::native; });
    return files;
}

INSTANTIATE_TEST_SUITE_P(, GoldenLayout, testing::ValuesIn(readableGoldenFiles()), testNameOf);

// ---- The page about the format

struct DumpRow
{
    std::size_t offset;
    std::string bytes;
};

// The rows of the page's table that begin with an offset and bytes, both in hexadecimal.
std::vector<DumpRow> dumpRows(std::string const& page)
{
    std::regex const row(R"(^\| `([0-9A-F]{4})` \| `([0-9A-F ]+)` \|.*)");
    std::vector<DumpRow> rows;
    std::istringstream lines(page);
    std::smatch parts;
    for (std::string line; std::getline(lines, line);)
    {
        if (!std::regex_match(line, parts, row)) continue;
        rows.push_back({std::stoul(parts[1], nullptr, 16), {}});
        std::istringstream bytes(parts[2]);
        for (std::string byte; bytes >> byte;)
            rows.back().bytes += static_cast<char>(std::stoul(byte, nullptr, 16));
    }
    return rows;
}

TEST(LayoutFormatPage, ShowsTheSmallGoldenFileByteForByte)
{
    std::string shown;
    for (DumpRow const& row : dumpRows(contentOf(std::string(DOCS_DIR) + "/layout-format.md")))
    {
        EXPECT_EQ(row.offset, shown.size());
        shown += row.bytes;
    }
    EXPECT_EQ(shown, contentOf(std::string(TEST_DATA_DIR) + "/layout/small.v2.endian.layout"));
    EXPECT_EQ(shown, writtenBy<FileStreamEndian>(layoutOf(smallLayout())));
}

} // namespace

} // namespace kestrel::graph::test
