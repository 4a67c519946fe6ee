#include "FailingAllocator.h"

#include "support/LayoutFiles.h"
#include "support/SampleLayout.h"

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

// What a reader may take, however small the file is: texts are read in pieces, and a piece is taken in
// advance.
constexpr std::size_t smallConstant = 128 * 1024;

std::uint32_t const absurdNumbers[] = {1000000u, 0x10000000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu};

template <class Stream>
class LayoutMemory : public testing::Test
{
protected:
    LayoutMemory()
    {
        peakOfReading(""); // opens the file
    }

    // The most memory that the library takes while it reads such a file.
    static std::size_t peakOfReading(std::string_view bytes)
    {
        ScratchFile& file = ScratchFile::instance();
        file.endWith(bytes);
        Stream stream(file.get());
        GraphLayout layout;
        PeakMemory const peak;
        layout.read(stream);
        return peak.bytes();
    }

    static ByteWriter fileOf(PlainLayout const& layout) { return encoded(layout, 2, orderOf<Stream>); }

    static std::string number(std::uint32_t number) { return encodedNumber(number, orderOf<Stream>); }

    static std::string replaced(std::string bytes, std::size_t offset, std::uint32_t value)
    {
        return bytes.replace(offset, 4, number(value));
    }
};

using Streams = testing::Types<FileStreamRaw, FileStreamEndian>;
TYPED_TEST_SUITE(LayoutMemory, Streams, );

TYPED_TEST(LayoutMemory, IsSmallForASmallFileWhateverItsCountsAndLengthsAre)
{
    ByteWriter const file = TestFixture::fileOf(everythingLayout());
    for (auto const& offsets : {file.counts(), file.lengths()})
        for (std::size_t offset : offsets)
            for (std::uint32_t absurd : absurdNumbers)
            {
                SCOPED_TRACE(testing::Message() << absurd << " at " << offset);
                std::string const bytes = TestFixture::replaced(file.content(), offset, absurd);
                std::string_view const cut = std::string_view(bytes).substr(0, offset + 14);
                EXPECT_LE(TestFixture::peakOfReading(bytes), smallConstant);
                EXPECT_LE(TestFixture::peakOfReading(cut), smallConstant);
            }
}

TYPED_TEST(LayoutMemory, GrowsWithTheBytesOfATextThatArriveNotWithItsLength)
{
    std::string const front = TestFixture::number(2) + TestFixture::number(1);
    for (std::uint32_t absurd : {0x10000000u, 0x80000000u, 0xFFFFFFFFu})
        for (std::size_t arriving : {0u, 1000u, 100000u, 1000000u, 4000000u})
        {
            SCOPED_TRACE(testing::Message() << arriving << " of " << absurd);
            std::string const bytes = front + TestFixture::number(absurd) + std::string(arriving, 'x');
            EXPECT_LE(TestFixture::peakOfReading(bytes), smallConstant + arriving);
        }
}

TYPED_TEST(LayoutMemory, GrowsWithTheRecordsThatArriveNotWithTheirCount)
{
    constexpr int recordCount = 1000;
    PlainLayout layout;
    for (int i = 0; i < recordCount; ++i)
    {
        std::string const name = std::to_string(i);
        layout.positions[name] = plainPair(1.0f, 2.0f);
        layout.colors[name] = plainColor(1.0f, 2.0f, 3.0f, 4.0f);
        for (auto& map : layout.flags) map[name] = true;
        layout.notes.push_back({name, "text"});
    }
    ByteWriter const file = TestFixture::fileOf(layout);
    ASSERT_EQ(file.counts().size(), 9u);
    std::vector<std::size_t> ends(file.counts().begin() + 1, file.counts().end());
    ends.push_back(file.content().size());
    for (std::size_t map = 0; map < ends.size(); ++map)
    {
        // The file ends behind these records: whatever the count says, no more of them arrive.
        std::string const honest = file.content().substr(0, ends[map]);
        std::size_t const honestPeak = TestFixture::peakOfReading(honest);
        for (std::uint32_t absurd : absurdNumbers)
        {
            SCOPED_TRACE(testing::Message() << absurd << " in map " << map);
            std::string const bytes = TestFixture::replaced(honest, file.counts()[map], absurd);
            EXPECT_LE(TestFixture::peakOfReading(bytes), honestPeak + smallConstant);
        }
    }
}

TYPED_TEST(LayoutMemory, IsGivenBackWithTheLayout)
{
    ByteWriter const file = TestFixture::fileOf(everythingLayout());
    for (std::size_t size = 0; size <= file.content().size(); ++size)
    {
        SCOPED_TRACE(size);
        std::string const bytes = file.content().substr(0, size);
        long const living = livingAllocations();
        TestFixture::peakOfReading(bytes);
        EXPECT_EQ(livingAllocations(), living);
    }
}

TEST(PeakMemory, IsTheMostThatWasAllocatedAtOneMoment)
{
    char* volatile block = nullptr; // volatile, or an optimiser leaves the allocations out
    PeakMemory const peak;
    EXPECT_EQ(peak.bytes(), 0u);
    for (std::size_t size : {3000u, 5000u, 2000u})
    {
        block = new char[size];
        delete[] block;
    }
    EXPECT_EQ(peak.bytes(), 5000u);
    char* volatile const kept = new char[4000];
    block = new char[2000];
    delete[] block;
    EXPECT_EQ(peak.bytes(), 6000u);
    delete[] kept;
}

} // namespace

} // namespace kestrel::graph::test
