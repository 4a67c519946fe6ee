/// @file
/// What holds for whatever bytes a layout is read from, through either stream.
#pragma once

#include "Expect.h"
#include "PeakMemory.h"

#include "support/LayoutFiles.h"
#include "support/ReferenceReader.h"

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace kestrel::fuzz
{

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, FileCloser>;

struct ReadLayout
{
    bool whole = false;
    graph::GraphLayout layout = {};
    std::size_t end = 0;  // where the file stands afterwards
    std::size_t peak = 0; // the memory that reading took
};

template <class Stream>
ReadLayout readFrom(std::string_view bytes)
{
    OpenFile const file(fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb"));
    FUZZ_EXPECT(file != nullptr);
    Stream stream(file.get());
    ReadLayout result;
    PeakMemory const memory;
    result.whole = result.layout.read(stream);
    result.peak = memory.bytes();
    FUZZ_EXPECT(memory.works());
    result.end = static_cast<std::size_t>(std::ftell(file.get()));
    return result;
}

template <class Stream>
std::string writtenBy(graph::GraphLayout const& layout)
{
    char* bytes = nullptr;
    std::size_t size = 0;
    {
        OpenFile const file(open_memstream(&bytes, &size));
        FUZZ_EXPECT(file != nullptr);
        Stream stream(file.get());
        FUZZ_EXPECT(layout.write(stream));
    }
    std::unique_ptr<char, decltype(&std::free)> const owner(bytes, &std::free);
    return std::string(bytes, size);
}

/// A text is read in pieces, and one is taken in advance, as is the buffer of the file.
inline constexpr std::size_t memoryInAdvance = std::size_t{128} * 1024;

/// The dearest bytes are those of a note that has nothing: 9 in the file, more than 100 in a list, of which
/// two stand side by side while it grows.
inline constexpr std::size_t memoryPerByte = 32;

template <class Stream>
void expectReadsAsTheReference(std::string_view bytes, ReadLayout const& read)
{
    graph::test::ReferenceReader const expected(bytes, graph::test::orderOf<Stream>);
    FUZZ_EXPECT(read.whole == expected.whole);
    FUZZ_EXPECT(!read.whole || read.end == expected.end);
    FUZZ_EXPECT(graph::test::plainOf(read.layout) == expected.layout);
}

/// Equal bytes say more than equal layouts: a number that is not a number equals nothing, and two names are
/// equal that differ behind a NUL.
template <class Stream>
void expectComesBack(graph::GraphLayout const& layout, std::string const& written)
{
    ReadLayout const again = readFrom<Stream>(written);
    FUZZ_EXPECT(again.whole);
    FUZZ_EXPECT(again.end == written.size());
    FUZZ_EXPECT(writtenBy<Stream>(again.layout) == written);
    FUZZ_EXPECT(again.layout == layout || !(layout == layout));
}

/// The bytes in front of the place where a whole read ended are all that it needs, and it needs them all.
template <class Stream>
void expectEndsThere(std::string_view bytes, ReadLayout const& read, std::string const& written)
{
    FUZZ_EXPECT(read.end <= bytes.size());
    ReadLayout const exact = readFrom<Stream>(bytes.substr(0, read.end));
    FUZZ_EXPECT(exact.whole);
    FUZZ_EXPECT(exact.end == read.end);
    FUZZ_EXPECT(writtenBy<Stream>(exact.layout) == written);
    FUZZ_EXPECT(!readFrom<Stream>(bytes.substr(0, read.end - 1)).whole);
}

/// What was read, whole or not, is a layout like any other: both streams write it and read it back.
template <class Stream>
void testLayout(std::string_view bytes)
{
    using OtherStream =
        std::conditional_t<std::is_same_v<Stream, FileStreamRaw>, FileStreamEndian, FileStreamRaw>;

    ReadLayout const read = readFrom<Stream>(bytes);
    FUZZ_EXPECT(read.peak <= memoryInAdvance + memoryPerByte * bytes.size());
    expectReadsAsTheReference<Stream>(bytes, read);
    std::string const written = writtenBy<Stream>(read.layout);
    expectComesBack<Stream>(read.layout, written);
    expectComesBack<OtherStream>(read.layout, writtenBy<OtherStream>(read.layout));
    if (read.whole) expectEndsThere<Stream>(bytes, read, written);
}

} // namespace kestrel::fuzz
