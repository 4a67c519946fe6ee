/// @file
/// Layouts through the two file streams, and in standard types.
#pragma once

#include "PlainLayout.h"
#include "TemporaryFile.h"

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <bit>
#include <cstddef>
#include <cstdio>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kestrel::graph::test
{

/// What the layout holds; names end at their first NUL.
PlainLayout plainOf(GraphLayout const& layout);

GraphLayout layoutOf(PlainLayout const& plain);

/// For GoogleTest.
void PrintTo(PlainLayout const& layout, std::ostream* out);

/// A layout with a name in every map and a note, none of which is in any file.
GraphLayout leftoverLayout();

/// How the stream writes numbers.
template <class Stream>
constexpr std::endian orderOf =
    std::is_base_of_v<FileStreamEndian, Stream> ? std::endian::big : std::endian::native;

struct ReadResult
{
    bool whole;
    PlainLayout layout;
    std::size_t end; // where the file stands afterwards
    GraphLayout asRead;
};

/// One file on the disk that thousands of layouts are written to and read from in turn. It never shrinks:
/// cutting a file makes some file systems write it out at once.
class ScratchFile
{
public:
    static ScratchFile& instance();

    std::FILE* get() const { return file_.get(); }

    /// The file ends with these bytes and stands in front of them.
    void endWith(std::string_view bytes);

    /// How many of them are behind it since.
    std::size_t position() const;

    /// Stands at its beginning, to be written.
    void startOver();

    /// What was written since.
    std::string written();

private:
    void seek(std::size_t offset);

    TemporaryFile file_;
    std::size_t size_ = 0;
    std::size_t start_ = 0;
};

/// What a layout that held something else reads from such a file.
template <class Stream>
ReadResult readFrom(std::string_view bytes)
{
    ScratchFile& file = ScratchFile::instance();
    file.endWith(bytes);
    Stream stream(file.get());
    GraphLayout layout = leftoverLayout();
    bool const whole = layout.read(stream);
    return {whole, plainOf(layout), file.position(), std::move(layout)};
}

/// The file that it writes.
template <class Stream>
std::string writtenBy(GraphLayout const& layout)
{
    ScratchFile& file = ScratchFile::instance();
    file.startOver();
    Stream stream(file.get());
    EXPECT_TRUE(layout.write(stream));
    return file.written();
}

} // namespace kestrel::graph::test
