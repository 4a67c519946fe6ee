#include <foundation/FileStream.h>
#include <foundation/KS_String.h>
#include <foundation/ks_fileio.h>

#include "support/TemporaryFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel::test
{

namespace
{

using namespace std::string_view_literals;

using Color = Color4<float>;
using graph::test::TemporaryFile;
using Pair = Tuple2<float, float>;

static_assert(std::has_virtual_destructor_v<FileStreamRaw>);
static_assert(std::has_virtual_destructor_v<FileStreamEndian>);
static_assert(!std::is_copy_constructible_v<FileStreamRaw>);
static_assert(!std::is_copy_assignable_v<FileStreamEndian>);
static_assert(!std::is_convertible_v<std::FILE*, FileStreamRaw>);
static_assert(!std::is_convertible_v<std::FILE*, FileStreamEndian>);

constexpr unsigned int megabyte = 1u << 20;

/// A file that takes no byte: it is opened for reading only and has no buffer.
class ReadOnlyFile
{
public:
    ReadOnlyFile() : file_(std::fopen(existing_.path().c_str(), "rb"))
    {
        std::setvbuf(file_, nullptr, _IONBF, 0);
    }
    ~ReadOnlyFile() { std::fclose(file_); }
    ReadOnlyFile(ReadOnlyFile const&) = delete;
    ReadOnlyFile& operator=(ReadOnlyFile const&) = delete;

    std::FILE* get() const { return file_; }

private:
    TemporaryFile existing_;
    std::FILE* file_;
};

std::string memoryOf(void const* value, std::size_t size)
{
    return std::string(static_cast<char const*>(value), size);
}

std::string bigEndian(std::uint32_t number)
{
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift & 0xFFu);
    return bytes;
}

// ---- ks_fileio

TEST(FileIo, WritesTheMostSignificantByteFirst)
{
    TemporaryFile const file;
    unsigned int const numbers[] = {0x01020304u, 0u, 0xFFFFFFFFu, 0x80000001u};
    int const integers[] = {-2, 0x01020304, -2147483647 - 1};
    float const floats[] = {1.0f, -2.5f, 0.0f, -0.0f};
    bool const bools[] = {true, false, true};
    EXPECT_EQ(WriteUInt(numbers, 4, file.get()), 4u);
    EXPECT_EQ(WriteInt(integers, 3, file.get()), 3u);
    EXPECT_EQ(WriteFloat(floats, 4, file.get()), 4u);
    EXPECT_EQ(WriteBool(bools, 3, file.get()), 3u);
    EXPECT_EQ(file.content(), "\x01\x02\x03\x04\0\0\0\0\xFF\xFF\xFF\xFF\x80\0\0\x01"
                              "\xFF\xFF\xFF\xFE\x01\x02\x03\x04\x80\0\0\0"
                              "\x3F\x80\0\0\xC0\x20\0\0\0\0\0\0\x80\0\0\0"
                              "\x01\0\x01"sv);
}

TEST(FileIo, ReadsTheMostSignificantByteFirst)
{
    TemporaryFile const file("\x01\x02\x03\x04\xFF\xFF\xFF\xFE"
                             "\xFF\xFF\xFF\xFE\x7F\xFF\xFF\xFF"
                             "\xC0\x20\0\0\x3F\x80\0\0"
                             "\x01\0"sv);
    unsigned int numbers[2] = {};
    int integers[2] = {};
    float floats[2] = {};
    bool bools[2] = {false, true};
    EXPECT_EQ(ReadUInt(numbers, 2, file.get()), 2u);
    EXPECT_EQ(ReadInt(integers, 2, file.get()), 2u);
    EXPECT_EQ(ReadFloat(floats, 2, file.get()), 2u);
    EXPECT_EQ(ReadBool(bools, 2, file.get()), 2u);
    EXPECT_EQ(numbers[0], 0x01020304u);
    EXPECT_EQ(numbers[1], 0xFFFFFFFEu);
    EXPECT_EQ(integers[0], -2);
    EXPECT_EQ(integers[1], 2147483647);
    EXPECT_EQ(floats[0], -2.5f);
    EXPECT_EQ(floats[1], 1.0f);
    EXPECT_TRUE(bools[0]);
    EXPECT_FALSE(bools[1]);
}

TEST(FileIo, LeavesTheValuesThatItWritesAlone)
{
    TemporaryFile const file;
    unsigned int number = 0x01020304u;
    int integer = 0x01020304;
    float real = 1.0f;
    bool yes = true;
    EXPECT_EQ(WriteUInt(&number, 1, file.get()), 1u);
    EXPECT_EQ(WriteInt(&integer, 1, file.get()), 1u);
    EXPECT_EQ(WriteFloat(&real, 1, file.get()), 1u);
    EXPECT_EQ(WriteBool(&yes, 1, file.get()), 1u);
    EXPECT_EQ(number, 0x01020304u);
    EXPECT_EQ(integer, 0x01020304);
    EXPECT_EQ(real, 1.0f);
    EXPECT_TRUE(yes);
}

TEST(FileIo, AnyByteButZeroIsTrue)
{
    for (int byte = 0; byte < 256; ++byte)
    {
        SCOPED_TRACE(byte);
        char const content = static_cast<char>(byte);
        TemporaryFile const file(std::string_view(&content, 1));
        bool value = byte == 0;
        EXPECT_EQ(ReadBool(&value, 1, file.get()), 1u);
        EXPECT_EQ(value, byte != 0);
    }
}

TEST(FileIo, KeepsTheBitsOfEveryFloat)
{
    for (std::uint32_t bits : {0x7FC12345u, 0xFFC00001u, 0x7F800000u, 0xFF800000u, 0x00000001u, 0x80000000u})
    {
        SCOPED_TRACE(bits);
        TemporaryFile const file;
        float const written = std::bit_cast<float>(bits);
        EXPECT_EQ(WriteFloat(&written, 1, file.get()), 1u);
        EXPECT_EQ(file.content(), bigEndian(bits));
        std::rewind(file.get());
        float read = 1.0f;
        EXPECT_EQ(ReadFloat(&read, 1, file.get()), 1u);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(read), bits);
    }
}

/// One of the four kinds of value with its two operations.
template <class Value>
struct Kind;

template <>
struct Kind<int>
{
    static constexpr auto read = &ReadInt;
    static constexpr auto write = &WriteInt;
    static int value(unsigned int i) { return 7 - static_cast<int>(i * 1000003); }
};

template <>
struct Kind<unsigned int>
{
    static constexpr auto read = &ReadUInt;
    static constexpr auto write = &WriteUInt;
    static unsigned int value(unsigned int i) { return 0xFFFFFFFFu - i * 1000003u; }
};

template <>
struct Kind<float>
{
    static constexpr auto read = &ReadFloat;
    static constexpr auto write = &WriteFloat;
    static float value(unsigned int i) { return static_cast<float>(i) + 0.5f; }
};

template <>
struct Kind<bool>
{
    static constexpr auto read = &ReadBool;
    static constexpr auto write = &WriteBool;
    static bool value(unsigned int i) { return i % 3 != 1; }
};

template <class Value>
class FileIoOf : public ::testing::Test
{
protected:
    static constexpr std::size_t width = std::is_same_v<Value, bool> ? 1 : 4;
};

using Kinds = ::testing::Types<int, unsigned int, float, bool>;
TYPED_TEST_SUITE(FileIoOf, Kinds, );

TYPED_TEST(FileIoOf, ManyValuesComeBackInOrder)
{
    for (unsigned int count : {1u, 2u, 63u, 64u, 65u, 1000u, 1024u, 1025u, 20000u})
    {
        SCOPED_TRACE(count);
        std::unique_ptr<TypeParam[]> const written(new TypeParam[count]);
        std::unique_ptr<TypeParam[]> const read(new TypeParam[count]());
        for (unsigned int i = 0; i < count; ++i) written[i] = Kind<TypeParam>::value(i);
        TemporaryFile const file;
        EXPECT_EQ(Kind<TypeParam>::write(written.get(), count, file.get()), count);
        EXPECT_EQ(file.content().size(), count * TestFixture::width);
        std::rewind(file.get());
        EXPECT_EQ(Kind<TypeParam>::read(read.get(), count, file.get()), count);
        EXPECT_TRUE(std::equal(read.get(), read.get() + count, written.get()));
    }
}

TYPED_TEST(FileIoOf, AShortFileGivesItsWholeValuesAndLeavesTheOthers)
{
    using Io = Kind<TypeParam>;
    TypeParam const written[3] = {Io::value(0), Io::value(2), Io::value(3)};
    TypeParam const old = Io::value(1);
    for (std::size_t size = 0; size <= 3 * TestFixture::width; ++size)
    {
        SCOPED_TRACE(size);
        TemporaryFile const whole;
        ASSERT_EQ(Kind<TypeParam>::write(written, 3, whole.get()), 3u);
        TemporaryFile const file(whole.content().substr(0, size));
        TypeParam read[3] = {old, old, old};
        std::size_t const arrived = size / TestFixture::width;
        EXPECT_EQ(Kind<TypeParam>::read(read, 3, file.get()), arrived);
        for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(read[i], i < arrived ? written[i] : old) << i;
    }
}

TYPED_TEST(FileIoOf, ALongShortFileGivesItsWholeValues)
{
    constexpr std::size_t count = 5000;
    std::unique_ptr<TypeParam[]> const values(new TypeParam[count]());
    TemporaryFile const file(std::string(4321 * TestFixture::width + TestFixture::width - 1, '\x01'));
    EXPECT_EQ(Kind<TypeParam>::read(values.get(), count, file.get()), 4321u);
    EXPECT_NE(values[4320], TypeParam());
    EXPECT_EQ(values[4321], TypeParam());
}

TYPED_TEST(FileIoOf, NothingIsTransferredForACountOfZeroOrANullPointer)
{
    TypeParam value = Kind<TypeParam>::value(0);
    TemporaryFile const file("12345678"sv);
    EXPECT_EQ(Kind<TypeParam>::read(&value, 0, file.get()), 0u);
    EXPECT_EQ(Kind<TypeParam>::read(nullptr, 1, file.get()), 0u);
    EXPECT_EQ(Kind<TypeParam>::read(&value, 1, nullptr), 0u);
    EXPECT_EQ(Kind<TypeParam>::write(&value, 1, nullptr), 0u);
    EXPECT_EQ(value, Kind<TypeParam>::value(0));
    EXPECT_EQ(std::ftell(file.get()), 0);
    EXPECT_EQ(Kind<TypeParam>::write(&value, 0, file.get()), 0u);
    EXPECT_EQ(Kind<TypeParam>::write(nullptr, 1, file.get()), 0u);
    EXPECT_EQ(file.content(), "12345678");
}

TYPED_TEST(FileIoOf, AFileThatTakesNothingGivesZero)
{
    ReadOnlyFile const file;
    TypeParam const value = Kind<TypeParam>::value(0);
    EXPECT_EQ(Kind<TypeParam>::write(&value, 1, file.get()), 0u);
}

// ---- Both streams

/// What each stream makes of a number.
template <class Stream>
std::string encoded(std::uint32_t number)
{
    if constexpr (std::is_same_v<Stream, FileStreamEndian>) return bigEndian(number);
    return memoryOf(&number, sizeof number);
}

template <class Stream>
std::string encoded(float number)
{
    return encoded<Stream>(std::bit_cast<std::uint32_t>(number));
}

/// Counts the blocks that pass, and may take or give no more than so many bytes.
template <class Stream>
class Watched : public Stream
{
public:
    using Stream::Stream;

    std::size_t read(void* bytes, std::size_t count) override
    {
        readCounts.push_back(count);
        return Stream::read(bytes, std::min(count, most));
    }
    std::size_t write(void const* bytes, std::size_t count) override
    {
        writeCounts.push_back(count);
        return Stream::write(bytes, std::min(count, most));
    }

    std::vector<std::size_t> readCounts;
    std::vector<std::size_t> writeCounts;
    std::size_t most = static_cast<std::size_t>(-1);
};

template <class Stream>
class FileStreams : public ::testing::Test
{
protected:
    static std::string stored(std::string_view bytes)
    {
        return encoded<Stream>(static_cast<std::uint32_t>(bytes.size())) + std::string(bytes);
    }
};

using Streams = ::testing::Types<FileStreamRaw, FileStreamEndian>;
TYPED_TEST_SUITE(FileStreams, Streams, );

TYPED_TEST(FileStreams, WriteEachKindOfValueInItsBytes)
{
    TemporaryFile const file;
    TypeParam stream(file.get());
    EXPECT_TRUE(stream.writeValue(0x01020304u));
    EXPECT_TRUE(stream.writeValue(-2));
    EXPECT_TRUE(stream.writeValue(-2.5f));
    EXPECT_TRUE(stream.writeValue(true));
    EXPECT_TRUE(stream.writeValue(false));
    EXPECT_TRUE(stream.writeValue(Pair(1.0f, 2.0f)));
    EXPECT_TRUE(stream.writeValue(Color(0.1f, 0.2f, 0.3f, 0.4f)));
    std::string const expected = encoded<TypeParam>(0x01020304u) + encoded<TypeParam>(0xFFFFFFFEu) +
                                 encoded<TypeParam>(-2.5f) + std::string("\x01\0", 2) +
                                 encoded<TypeParam>(1.0f) + encoded<TypeParam>(2.0f) +
                                 encoded<TypeParam>(0.1f) + encoded<TypeParam>(0.2f) +
                                 encoded<TypeParam>(0.3f) + encoded<TypeParam>(0.4f);
    EXPECT_EQ(file.content(), expected);
}

TYPED_TEST(FileStreams, ReadEachKindOfValueFromItsBytes)
{
    TemporaryFile const file(encoded<TypeParam>(0x01020304u) + encoded<TypeParam>(0xFFFFFFFEu) +
                             encoded<TypeParam>(-2.5f) + std::string("\x01\0", 2) + encoded<TypeParam>(1.0f) +
                             encoded<TypeParam>(2.0f) + encoded<TypeParam>(0.1f) + encoded<TypeParam>(0.2f) +
                             encoded<TypeParam>(0.3f) + encoded<TypeParam>(0.4f));
    TypeParam stream(file.get());
    unsigned int number = 0;
    int integer = 0;
    float real = 0.0f;
    bool yes = false;
    bool no = true;
    Pair pair;
    Color color;
    EXPECT_TRUE(stream.readValue(number));
    EXPECT_TRUE(stream.readValue(integer));
    EXPECT_TRUE(stream.readValue(real));
    EXPECT_TRUE(stream.readValue(yes));
    EXPECT_TRUE(stream.readValue(no));
    EXPECT_TRUE(stream.readValue(pair));
    EXPECT_TRUE(stream.readValue(color));
    EXPECT_EQ(number, 0x01020304u);
    EXPECT_EQ(integer, -2);
    EXPECT_EQ(real, -2.5f);
    EXPECT_TRUE(yes);
    EXPECT_FALSE(no);
    EXPECT_TRUE(pair == Pair(1.0f, 2.0f));
    EXPECT_TRUE(color == Color(0.1f, 0.2f, 0.3f, 0.4f));
}

TYPED_TEST(FileStreams, AnyByteButZeroReadsAsTrue)
{
    std::string content;
    for (int byte = 0; byte < 256; ++byte) content += static_cast<char>(byte);
    TemporaryFile const file(content);
    TypeParam stream(file.get());
    for (int byte = 0; byte < 256; ++byte)
    {
        SCOPED_TRACE(byte);
        bool value = byte == 0;
        EXPECT_TRUE(stream.readValue(value));
        EXPECT_EQ(value, byte != 0);
    }
    bool value = true;
    EXPECT_FALSE(stream.readValue(value));
    EXPECT_TRUE(value);
}

/// Reads the value from each beginning of its bytes that is too short.
template <class Stream, class Value>
void expectUntouchedByShortReads(Value const& old, std::size_t size)
{
    for (std::size_t there = 0; there < size; ++there)
    {
        SCOPED_TRACE(std::to_string(there) + " of " + std::to_string(size));
        TemporaryFile const file(std::string(there, '\x11'));
        Stream stream(file.get());
        Value value = old;
        EXPECT_FALSE(stream.readValue(value));
        EXPECT_TRUE(value == old);
    }
    TemporaryFile const file(std::string(size, '\x11'));
    Stream stream(file.get());
    Value value = old;
    EXPECT_TRUE(stream.readValue(value));
    EXPECT_FALSE(value == old);
}

TYPED_TEST(FileStreams, AValueThatDoesNotArriveWholeIsLeftAsItWas)
{
    expectUntouchedByShortReads<TypeParam>(5, 4);
    expectUntouchedByShortReads<TypeParam>(5u, 4);
    expectUntouchedByShortReads<TypeParam>(5.0f, 4);
    expectUntouchedByShortReads<TypeParam>(false, 1);
    expectUntouchedByShortReads<TypeParam>(Pair(5.0f, 6.0f), 8);
    expectUntouchedByShortReads<TypeParam>(Color(5.0f, 6.0f, 7.0f, 8.0f), 16);
}

TYPED_TEST(FileStreams, BlocksTellHowManyBytesWereTransferred)
{
    TemporaryFile const file;
    TypeParam stream(file.get());
    EXPECT_EQ(stream.write("abc\0de", 6), 6u);
    EXPECT_EQ(stream.write("x", 0), 0u);
    std::rewind(file.get());
    char bytes[8] = "-------";
    EXPECT_EQ(stream.read(bytes, 4), 4u);
    EXPECT_EQ(memoryOf(bytes, 5), "abc\0-"sv);
    EXPECT_EQ(stream.read(bytes, 0), 0u);
    EXPECT_EQ(stream.read(bytes, 7), 2u);
    EXPECT_EQ(memoryOf(bytes, 3), "dec");
    EXPECT_EQ(stream.read(bytes, 7), 0u);
    EXPECT_EQ(file.content(), "abc\0de"sv);
}

TYPED_TEST(FileStreams, NothingIsTransferredWithANullPointer)
{
    TemporaryFile const file("abc"sv);
    TypeParam stream(file.get());
    EXPECT_EQ(stream.read(nullptr, 2), 0u);
    EXPECT_EQ(std::ftell(file.get()), 0);
    EXPECT_EQ(stream.write(nullptr, 2), 0u);
    EXPECT_EQ(file.content(), "abc");
}

TYPED_TEST(FileStreams, NothingIsTransferredWithoutAFile)
{
    TypeParam stream(nullptr);
    char byte = 'x';
    int integer = 5;
    unsigned int number = 5;
    float real = 5.0f;
    bool yes = true;
    Pair pair(5.0f, 6.0f);
    Color color(5.0f, 6.0f, 7.0f, 8.0f);
    EXPECT_EQ(stream.getFile(), nullptr);
    EXPECT_EQ(stream.read(&byte, 1), 0u);
    EXPECT_EQ(stream.write(&byte, 1), 0u);
    EXPECT_FALSE(stream.readValue(integer));
    EXPECT_FALSE(stream.readValue(number));
    EXPECT_FALSE(stream.readValue(real));
    EXPECT_FALSE(stream.readValue(yes));
    EXPECT_FALSE(stream.readValue(pair));
    EXPECT_FALSE(stream.readValue(color));
    EXPECT_FALSE(stream.writeValue(integer));
    EXPECT_FALSE(stream.writeValue(number));
    EXPECT_FALSE(stream.writeValue(real));
    EXPECT_FALSE(stream.writeValue(yes));
    EXPECT_FALSE(stream.writeValue(pair));
    EXPECT_FALSE(stream.writeValue(color));
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(integer, 5);
    EXPECT_EQ(number, 5u);
    EXPECT_EQ(real, 5.0f);
    EXPECT_TRUE(yes);
    EXPECT_TRUE(pair == Pair(5.0f, 6.0f));
    EXPECT_TRUE(color == Color(5.0f, 6.0f, 7.0f, 8.0f));
}

TYPED_TEST(FileStreams, DoNotOwnTheFile)
{
    TemporaryFile const file;
    {
        TypeParam stream(file.get());
        EXPECT_EQ(stream.getFile(), file.get());
        EXPECT_TRUE(stream.writeValue(1u));
    }
    EXPECT_GE(std::fputs("more", file.get()), 0);
    EXPECT_EQ(file.content(), encoded<TypeParam>(1u) + "more");
}

template <class Stream>
void expectEveryWriteRefused(Stream& stream)
{
    EXPECT_EQ(stream.write("abc", 3), 0u);
    EXPECT_FALSE(stream.writeValue(1));
    EXPECT_FALSE(stream.writeValue(1u));
    EXPECT_FALSE(stream.writeValue(1.0f));
    EXPECT_FALSE(stream.writeValue(true));
    EXPECT_FALSE(stream.writeValue(Pair(1.0f, 2.0f)));
    EXPECT_FALSE(stream.writeValue(Color(1.0f, 2.0f, 3.0f, 4.0f)));
    EXPECT_FALSE(KS_String("abc").write(stream));
    EXPECT_FALSE(KS_String().write(stream));
}

TYPED_TEST(FileStreams, TellThatAReadOnlyFileTakesNothing)
{
    ReadOnlyFile const file;
    TypeParam stream(file.get());
    expectEveryWriteRefused(stream);
}

#if defined(__linux__)
class FullDisk
{
public:
    FullDisk() : file_(std::fopen("/dev/full", "wb")) { std::setvbuf(file_, nullptr, _IONBF, 0); }
    ~FullDisk() { std::fclose(file_); }
    FullDisk(FullDisk const&) = delete;
    FullDisk& operator=(FullDisk const&) = delete;

    std::FILE* get() const { return file_; }

private:
    std::FILE* file_;
};

TYPED_TEST(FileStreams, TellThatAFullDiskTakesNothing)
{
    FullDisk const disk;
    TypeParam stream(disk.get());
    expectEveryWriteRefused(stream);
}

/// Takes the first bytes and then no more.
class NearlyFullDisk
{
public:
    explicit NearlyFullDisk(std::size_t room) : bytes_(room), file_(fmemopen(bytes_.data(), room, "wb"))
    {
        std::setvbuf(file_, nullptr, _IONBF, 0);
    }
    ~NearlyFullDisk() { std::fclose(file_); }
    NearlyFullDisk(NearlyFullDisk const&) = delete;
    NearlyFullDisk& operator=(NearlyFullDisk const&) = delete;

    std::FILE* get() const { return file_; }

private:
    std::vector<char> bytes_;
    std::FILE* file_;
};

TYPED_TEST(FileStreams, TellThatADiskIsFullBehindTheFirstComponents)
{
    std::size_t const spare = 1; // for the NUL that the system puts behind what is in memory
    auto const takes = [](std::size_t room, auto const& value)
    {
        NearlyFullDisk const disk(room + spare);
        TypeParam stream(disk.get());
        return stream.writeValue(value);
    };
    Color const color(1.0f, 2.0f, 3.0f, 4.0f);
    Pair const pair(1.0f, 2.0f);
    for (std::size_t room = 0; room < 8; room += 4) EXPECT_FALSE(takes(room, pair)) << room;
    for (std::size_t room = 0; room < 16; room += 4) EXPECT_FALSE(takes(room, color)) << room;
    EXPECT_TRUE(takes(8, pair));
    EXPECT_TRUE(takes(16, color));
}

TYPED_TEST(FileIoOf, AFullDiskTakesNothing)
{
    FullDisk const disk;
    TypeParam const value = Kind<TypeParam>::value(0);
    EXPECT_EQ(Kind<TypeParam>::write(&value, 1, disk.get()), 0u);
}
#endif

// ---- What passes through the virtual block operations

TEST(FileStreamRaw, WritesAndReadsEachValueAsOneBlock)
{
    TemporaryFile const file;
    Watched<FileStreamRaw> stream(file.get());
    EXPECT_TRUE(stream.writeValue(1));
    EXPECT_TRUE(stream.writeValue(1u));
    EXPECT_TRUE(stream.writeValue(1.0f));
    EXPECT_TRUE(stream.writeValue(true));
    EXPECT_TRUE(stream.writeValue(Pair(1.0f, 2.0f)));
    EXPECT_TRUE(stream.writeValue(Color(1.0f, 2.0f, 3.0f, 4.0f)));
    std::vector<std::size_t> const widths{4, 4, 4, 1, 8, 16};
    EXPECT_EQ(stream.writeCounts, widths);

    std::rewind(file.get());
    int integer;
    unsigned int number;
    float real;
    bool yes;
    Pair pair;
    Color color;
    EXPECT_TRUE(stream.readValue(integer));
    EXPECT_TRUE(stream.readValue(number));
    EXPECT_TRUE(stream.readValue(real));
    EXPECT_TRUE(stream.readValue(yes));
    EXPECT_TRUE(stream.readValue(pair));
    EXPECT_TRUE(stream.readValue(color));
    EXPECT_EQ(stream.readCounts, widths);
    EXPECT_TRUE(color == Color(1.0f, 2.0f, 3.0f, 4.0f));
}

TEST(FileStreamRaw, ReadsByWhatItsBlocksSay)
{
    TemporaryFile const file(std::string(64, '\x11'));
    Watched<FileStreamRaw> stream(file.get());
    unsigned int number = 5;
    Pair pair(5.0f, 6.0f);
    Color color(5.0f, 6.0f, 7.0f, 8.0f);
    stream.most = 3;
    EXPECT_FALSE(stream.readValue(number));
    EXPECT_EQ(number, 5u);
    stream.most = 7;
    EXPECT_FALSE(stream.readValue(pair));
    EXPECT_TRUE(pair == Pair(5.0f, 6.0f));
    stream.most = 15;
    EXPECT_FALSE(stream.readValue(color));
    EXPECT_TRUE(color == Color(5.0f, 6.0f, 7.0f, 8.0f));
}

TEST(FileStreamRaw, WritesByWhatItsBlocksSay)
{
    TemporaryFile const file;
    Watched<FileStreamRaw> stream(file.get());
    stream.most = 3;
    EXPECT_FALSE(stream.writeValue(1u));
    EXPECT_FALSE(stream.writeValue(1));
    EXPECT_FALSE(stream.writeValue(1.0f));
    stream.most = 7;
    EXPECT_FALSE(stream.writeValue(Pair(1.0f, 2.0f)));
    stream.most = 15;
    EXPECT_FALSE(stream.writeValue(Color()));
    stream.most = 0;
    EXPECT_FALSE(stream.writeValue(true));
}

TEST(FileStreamEndian, PassesOnlyBlocksThroughTheVirtualOperations)
{
    TemporaryFile const file;
    Watched<FileStreamEndian> stream(file.get());
    EXPECT_TRUE(stream.writeValue(1));
    EXPECT_TRUE(stream.writeValue(1u));
    EXPECT_TRUE(stream.writeValue(1.0f));
    EXPECT_TRUE(stream.writeValue(true));
    EXPECT_TRUE(stream.writeValue(Pair(1.0f, 2.0f)));
    EXPECT_TRUE(stream.writeValue(Color(1.0f, 2.0f, 3.0f, 4.0f)));
    EXPECT_TRUE(stream.writeCounts.empty());
    EXPECT_TRUE(KS_String("ab").write(stream));
    EXPECT_EQ(stream.writeCounts, (std::vector<std::size_t>{3}));

    std::rewind(file.get());
    int integer;
    unsigned int number;
    float real;
    bool yes;
    Pair pair;
    Color color;
    KS_String text;
    EXPECT_TRUE(stream.readValue(integer));
    EXPECT_TRUE(stream.readValue(number));
    EXPECT_TRUE(stream.readValue(real));
    EXPECT_TRUE(stream.readValue(yes));
    EXPECT_TRUE(stream.readValue(pair));
    EXPECT_TRUE(stream.readValue(color));
    EXPECT_TRUE(stream.readCounts.empty());
    EXPECT_TRUE(text.read(stream));
    EXPECT_FALSE(stream.readCounts.empty());
    EXPECT_EQ(text, KS_String("ab"));
}

// ---- Texts through both streams

void expectText(KS_String const& text, std::string_view expected)
{
    EXPECT_EQ(std::string(text), std::string(expected));
    ASSERT_GE(text.size(), 1u);
    EXPECT_LE(text.size(), text.capacity());
    EXPECT_EQ(text.c_str()[text.length()], '\0');
}

TYPED_TEST(FileStreams, WriteATextAsItsCountWithTheNulAndItsBytes)
{
    for (std::string_view bytes : {"ab"sv, ""sv, "a\0b"sv, "\x80\xE9\xFF"sv})
    {
        SCOPED_TRACE(bytes);
        KS_String text(bytes);
        text.reserve(100, true);
        TemporaryFile const file;
        TypeParam stream(file.get());
        EXPECT_TRUE(text.write(stream));
        EXPECT_EQ(file.content(), TestFixture::stored(std::string(bytes) + '\0'));
    }
}

TYPED_TEST(FileStreams, WriteAMovedFromTextAsTheEmptyOne)
{
    KS_String text("abc");
    KS_String const taker(std::move(text));
    TemporaryFile const file;
    TypeParam stream(file.get());
    EXPECT_TRUE(text.write(stream));
    EXPECT_EQ(file.content(), TestFixture::stored("\0"sv));
}

TYPED_TEST(FileStreams, TextsComeBackOneAfterTheOther)
{
    std::vector<std::string> const texts = {
        "ab", "", std::string("a\0b", 3), "\x80\xE9\xFF", std::string(megabyte, 'x'), "last"};
    TemporaryFile const file;
    TypeParam stream(file.get());
    for (std::string const& text : texts) EXPECT_TRUE(KS_String(std::string_view(text)).write(stream));
    EXPECT_TRUE(stream.writeValue(0x01020304u));
    std::rewind(file.get());
    for (std::string const& text : texts)
    {
        KS_String read("old");
        EXPECT_TRUE(read.read(stream));
        expectText(read, text);
    }
    unsigned int number = 0;
    EXPECT_TRUE(stream.readValue(number));
    EXPECT_EQ(number, 0x01020304u);
}

TYPED_TEST(FileStreams, ReadingATextGrowsItToExactlyTheCount)
{
    for (std::size_t length : {std::size_t{3}, std::size_t{100}, std::size_t{5000}, std::size_t{megabyte}})
    {
        SCOPED_TRACE(length);
        TemporaryFile const file(TestFixture::stored(std::string(length, 'x') + '\0'));
        TypeParam stream(file.get());
        KS_String text("ab");
        EXPECT_TRUE(text.read(stream));
        expectText(text, std::string(length, 'x'));
        EXPECT_EQ(text.capacity(), length + 1);
    }
}

TYPED_TEST(FileStreams, ReadingATextThatFitsKeepsTheBuffer)
{
    for (unsigned int capacity : {4u, 5u, 50u})
    {
        SCOPED_TRACE(capacity);
        TemporaryFile const file(TestFixture::stored("abc\0"sv));
        TypeParam stream(file.get());
        KS_String text("z");
        text.reserve(capacity, true);
        char const* const buffer = text.c_str();
        EXPECT_TRUE(text.read(stream));
        expectText(text, "abc");
        EXPECT_EQ(text.c_str(), buffer);
        EXPECT_EQ(text.capacity(), capacity);
    }
}

TYPED_TEST(FileStreams, ATextCanBeReadIntoAMovedFromOne)
{
    TemporaryFile const file(TestFixture::stored("abc\0"sv));
    TypeParam stream(file.get());
    KS_String text("old");
    KS_String const taker(std::move(text));
    EXPECT_TRUE(text.read(stream));
    expectText(text, "abc");
}

TYPED_TEST(FileStreams, ACountOfZeroIsTheEmptyText)
{
    for (unsigned int capacity : {0u, 4u, 50u})
    {
        SCOPED_TRACE(capacity);
        TemporaryFile const file(TestFixture::stored("") + "rest");
        TypeParam stream(file.get());
        KS_String text("old");
        text.reserve(capacity, true);
        EXPECT_TRUE(text.read(stream));
        EXPECT_EQ(text.length(), 0u);
        EXPECT_STREQ(text.c_str(), "");
        EXPECT_EQ(std::ftell(file.get()), 4);
    }
}

TYPED_TEST(FileStreams, ATextWithoutItsNulGetsOne)
{
    for (std::string_view bytes : {"a"sv, "abc"sv, "a\0b"sv, "\0b"sv})
    {
        for (unsigned int capacity : {0u, 1u, 2u, 3u, 4u, 50u})
        {
            SCOPED_TRACE(std::string(bytes) + ", " + std::to_string(capacity));
            TemporaryFile const file(TestFixture::stored(bytes) + "rest");
            TypeParam stream(file.get());
            KS_String text("old");
            text.reserve(capacity, true);
            EXPECT_TRUE(text.read(stream));
            expectText(text, bytes);
            EXPECT_EQ(std::ftell(file.get()), static_cast<long>(4 + bytes.size()));
        }
    }
}

TYPED_TEST(FileStreams, ALongTextWithoutItsNulGetsOne)
{
    std::string const bytes(megabyte, 'x');
    TemporaryFile const file(TestFixture::stored(bytes));
    TypeParam stream(file.get());
    KS_String text;
    EXPECT_TRUE(text.read(stream));
    expectText(text, bytes);
}

TYPED_TEST(FileStreams, ATruncatedTextIsRefusedAndEmpty)
{
    std::string const whole = TestFixture::stored("abcdef\0"sv);
    for (std::size_t there = 0; there < whole.size(); ++there)
    {
        for (unsigned int capacity : {0u, 4u, 7u, 50u})
        {
            SCOPED_TRACE(std::to_string(there) + ", " + std::to_string(capacity));
            TemporaryFile const file(whole.substr(0, there));
            TypeParam stream(file.get());
            KS_String text("old");
            text.reserve(capacity, true);
            EXPECT_FALSE(text.read(stream));
            EXPECT_EQ(text.length(), 0u);
            EXPECT_STREQ(text.c_str(), "");
            text += "new";
            expectText(text, "new");
        }
    }
}

TYPED_TEST(FileStreams, AHostileCountAsksForNoMoreThanASmallBlockBeyondWhatArrived)
{
    for (unsigned int count : {0xFFFFFFFFu, 0xFFFFFFFEu, 0x80000000u, 0x7FFFFFFFu, 100u * megabyte})
    {
        for (std::size_t there : {std::size_t{0}, std::size_t{3}, std::size_t{3 * megabyte}})
        {
            SCOPED_TRACE(std::to_string(count) + ", " + std::to_string(there));
            TemporaryFile const file(encoded<TypeParam>(count) + std::string(there, 'x'));
            Watched<TypeParam> stream(file.get());
            KS_String text("old");
            EXPECT_FALSE(text.read(stream));
            EXPECT_EQ(text.length(), 0u);
            EXPECT_STREQ(text.c_str(), "");
            EXPECT_LE(text.capacity(), megabyte);
            ASSERT_FALSE(stream.readCounts.empty());
            EXPECT_LE(*std::max_element(stream.readCounts.begin(), stream.readCounts.end()), megabyte);
        }
    }
}

TYPED_TEST(FileStreams, ATextIsReadByWhatTheBlocksSay)
{
    TemporaryFile const file(TestFixture::stored("abcdefghi\0"sv));
    Watched<TypeParam> stream(file.get());
    stream.most = 4;
    KS_String text("old");
    EXPECT_FALSE(text.read(stream));
    EXPECT_EQ(text.length(), 0u);
    EXPECT_STREQ(text.c_str(), "");
}

/// Throws as a host's stream may that runs out of memory, but for numbers: after it has filled the block.
template <class Base>
struct ThrowingStream : Base
{
    using Base::Base;

    std::size_t read(void* bytes, std::size_t count) override
    {
        std::size_t const arrived = Base::read(bytes, count);
        if (count > sizeof(unsigned int)) throw std::bad_alloc();
        return arrived;
    }
};

TYPED_TEST(FileStreams, ATextIsEmptyWhenItsStreamThrows)
{
    for (unsigned int capacity : {4u, 9u, 50u})
    {
        SCOPED_TRACE(capacity);
        TemporaryFile const file(TestFixture::stored("abcdefghi"sv));
        ThrowingStream<TypeParam> stream(file.get());
        KS_String text("old");
        text.reserve(capacity, true);
        EXPECT_THROW(text.read(stream), std::bad_alloc);
        expectText(text, "");
    }
}

TYPED_TEST(FileStreams, ATextThatIsNotTakenWholeIsToldSo)
{
    KS_String const text("abcdefgh");
    for (std::size_t most : {std::size_t{0}, std::size_t{4}, std::size_t{8}})
    {
        SCOPED_TRACE(most);
        TemporaryFile const file;
        Watched<TypeParam> stream(file.get());
        stream.most = most;
        EXPECT_FALSE(text.write(stream));
    }
    TemporaryFile const file;
    Watched<TypeParam> stream(file.get());
    stream.most = 9;
    EXPECT_TRUE(text.write(stream));
}

TYPED_TEST(FileStreams, WithoutAFileATextIsRefusedAndEmpty)
{
    TypeParam stream(nullptr);
    KS_String text("old");
    EXPECT_FALSE(text.write(stream));
    expectText(text, "old");
    EXPECT_FALSE(text.read(stream));
    EXPECT_EQ(text.length(), 0u);
    EXPECT_STREQ(text.c_str(), "");
}

} // namespace

} // namespace kestrel::test
