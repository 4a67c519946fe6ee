#include "support/LayoutFiles.h"
#include "support/ReferenceReader.h"
#include "support/SampleLayout.h"

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel::graph::test
{

namespace
{

using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/// Reads the bytes with the library and with the reference, which must agree; and what was read, whole or
/// not, must be a layout that can be written and read again. Returns it.
template <class Stream>
ReadResult expectReadsAsTheReference(std::string const& bytes)
{
    ReadResult const result = readFrom<Stream>(bytes);
    ReferenceReader const expected(bytes, orderOf<Stream>);
    EXPECT_EQ(result.whole, expected.whole);
    EXPECT_EQ(result.layout, expected.layout);
    EXPECT_TRUE(!expected.whole || result.end == expected.end) << result.end;

    ReadResult const again = readFrom<Stream>(writtenBy<Stream>(result.asRead));
    EXPECT_TRUE(again.whole);
    EXPECT_EQ(again.layout, result.layout);
    return result;
}

/// Whether every record of the one map is in the other, too.
template <class Map>
bool isPartOf(Map const& part, Map const& all)
{
    return std::ranges::all_of(part,
                               [&](auto const& record)
                               {
                                   auto const found = all.find(record.first);
                                   return found != all.end() && found->second == record.second;
                               });
}

/// Whether it could be read from the beginning of a file of that layout.
bool isPartOf(PlainLayout const& part, PlainLayout const& all)
{
    for (std::size_t flag = 0; flag < plainFlagCount; ++flag)
        if (!isPartOf(part.flags[flag], all.flags[flag])) return false;
    return isPartOf(part.positions, all.positions) && isPartOf(part.colors, all.colors) &&
           part.notes.size() <= all.notes.size() &&
           std::equal(part.notes.begin(), part.notes.end(), all.notes.begin());
}

std::size_t recordCount(PlainLayout const& layout)
{
    std::size_t count = layout.positions.size() + layout.colors.size() + layout.notes.size();
    for (auto const& map : layout.flags) count += map.size();
    return count;
}

/// Every layout of the golden files, in both versions; they are tried through both streams.
struct Sample
{
    PlainLayout layout;
    std::uint32_t version;
};

std::vector<Sample> samples()
{
    std::vector<Sample> all;
    for (PlainLayout const& layout : {everythingLayout(), smallLayout(), PlainLayout()})
        for (std::uint32_t version : {1u, 2u}) all.push_back({inVersion(version, layout), version});
    return all;
}

template <class Stream>
class DamagedLayoutFile : public testing::Test
{
protected:
    static ByteWriter fileOf(Sample const& sample)
    {
        return encoded(sample.layout, sample.version, orderOf<Stream>);
    }

    static std::string number(std::uint32_t number) { return encodedNumber(number, orderOf<Stream>); }

    static std::string everything() { return fileOf({everythingLayout(), 2}).content(); }
};

using Streams = testing::Types<FileStreamRaw, FileStreamEndian>;
TYPED_TEST_SUITE(DamagedLayoutFile, Streams, );

// ---- The reference

TYPED_TEST(DamagedLayoutFile, IsMeasuredByAReferenceThatKnowsTheGoodOnes)
{
    for (Sample const& sample : samples())
    {
        std::string const bytes = TestFixture::fileOf(sample).content();
        ReferenceReader const reference(bytes, orderOf<TypeParam>);
        EXPECT_TRUE(reference.whole);
        EXPECT_EQ(reference.layout, sample.layout);
        EXPECT_EQ(reference.end, bytes.size());
    }
}

// ---- Files that end early

TYPED_TEST(DamagedLayoutFile, ThatIsCutAnywhereKeepsWhatIsWhole)
{
    for (Sample const& sample : samples())
    {
        std::string const bytes = TestFixture::fileOf(sample).content();
        std::size_t recordsSoFar = 0;
        for (std::size_t size = 0; size <= bytes.size(); ++size)
        {
            SCOPED_TRACE(size);
            ReadResult const result = expectReadsAsTheReference<TypeParam>(bytes.substr(0, size));
            EXPECT_EQ(result.whole, size == bytes.size());
            EXPECT_TRUE(isPartOf(result.layout, sample.layout));
            EXPECT_GE(recordCount(result.layout), recordsSoFar);
            recordsSoFar = recordCount(result.layout);
        }
        EXPECT_EQ(recordsSoFar, recordCount(sample.layout));
    }
}

TYPED_TEST(DamagedLayoutFile, ThatIsCutInARecordDoesNotHaveThatRecord)
{
    PlainLayout layout;
    layout.positions = {{"a", plainPair(1.0f, 2.0f)}, {"b", plainPair(3.0f, 4.0f)}};
    std::string const bytes = TestFixture::fileOf({layout, 2}).content();
    layout.positions.erase("b");
    std::size_t const record = 14;
    for (std::size_t size = 8 + record; size < 8 + 2 * record; ++size)
    {
        SCOPED_TRACE(size);
        ReadResult const result = readFrom<TypeParam>(bytes.substr(0, size));
        EXPECT_FALSE(result.whole);
        EXPECT_EQ(result.layout, layout);
    }
}

TYPED_TEST(DamagedLayoutFile, ThatIsCutInANoteDoesNotHaveThatNote)
{
    PlainLayout layout;
    layout.notes = {{"a", "text"}, everythingLayout().notes[0]};
    std::string const bytes = TestFixture::fileOf({layout, 2}).content();
    layout.notes.pop_back();
    for (std::size_t size = TestFixture::fileOf({layout, 2}).content().size(); size < bytes.size(); ++size)
    {
        SCOPED_TRACE(size);
        ReadResult const result = readFrom<TypeParam>(bytes.substr(0, size));
        EXPECT_FALSE(result.whole);
        EXPECT_EQ(result.layout, layout);
    }
}

// ---- Counts and lengths

std::uint32_t const hostileNumbers[] = {0u,          1u,          255u,        65536u,      0x7FFFFFFEu,
                                        0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFEu, 0xFFFFFFFFu};

TYPED_TEST(DamagedLayoutFile, MayHaveAnyCountAndAnyLength)
{
    for (Sample const& sample : samples())
    {
        ByteWriter const file = TestFixture::fileOf(sample);
        std::vector<std::size_t> offsets = file.counts();
        offsets.insert(offsets.end(), file.lengths().begin(), file.lengths().end());
        for (std::size_t offset : offsets)
            for (std::uint32_t hostile : hostileNumbers)
            {
                SCOPED_TRACE(testing::Message() << hostile << " at " << offset);
                std::string bytes = file.content();
                bytes.replace(offset, 4, TestFixture::number(hostile));
                expectReadsAsTheReference<TypeParam>(bytes);
            }
    }
}

TYPED_TEST(DamagedLayoutFile, WithAnAbsurdNumberInPlaceOfAnyCountOrLengthIsNotWhole)
{
    ByteWriter const file = TestFixture::fileOf({everythingLayout(), 2});
    for (auto const& offsets : {file.counts(), file.lengths()})
        for (std::size_t offset : offsets)
            for (std::uint32_t absurd : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
            {
                SCOPED_TRACE(testing::Message() << absurd << " at " << offset);
                std::string bytes = file.content();
                bytes.replace(offset, 4, TestFixture::number(absurd));
                EXPECT_FALSE(readFrom<TypeParam>(bytes).whole);
            }
}

TYPED_TEST(DamagedLayoutFile, WithANegativeCountKeepsTheMapsInFrontOfIt)
{
    ByteWriter const file = TestFixture::fileOf({everythingLayout(), 2});
    ASSERT_THAT(file.counts(), SizeIs(9));
    PlainLayout expected;
    expected.positions = everythingLayout().positions;
    for (std::uint32_t negative : {0xFFFFFFFFu, 0x80000000u})
    {
        std::string bytes = file.content();
        bytes.replace(file.counts()[1], 4, TestFixture::number(negative));
        ReadResult const result = readFrom<TypeParam>(bytes);
        EXPECT_FALSE(result.whole);
        EXPECT_EQ(result.layout, expected);
    }
}

TYPED_TEST(DamagedLayoutFile, WithACountThatIsOneTooHighReadsOnAsIfThereWereARecord)
{
    PlainLayout expected;
    expected.positions = {{"", plainPair(0.0f, 0.0f)}};
    ReadResult const result =
        readFrom<TypeParam>(TestFixture::number(2) + TestFixture::number(1) + std::string(32, '\0'));
    EXPECT_FALSE(result.whole);
    EXPECT_EQ(result.layout, expected);
}

TYPED_TEST(DamagedLayoutFile, WithALengthOfTwoGibibytesAndTenBytesIsCut)
{
    ByteWriter const file = TestFixture::fileOf({everythingLayout(), 2});
    ASSERT_THAT(file.lengths(), Not(IsEmpty()));
    for (std::size_t offset : file.lengths())
    {
        SCOPED_TRACE(offset);
        std::string const front = file.content().substr(0, offset);
        ReadResult const result =
            expectReadsAsTheReference<TypeParam>(front + TestFixture::number(0x80000000u) + "ten bytes.");
        EXPECT_FALSE(result.whole);
        EXPECT_EQ(result.layout, ReferenceReader(front, orderOf<TypeParam>).layout);
    }
}

// ---- Any damage at all

TYPED_TEST(DamagedLayoutFile, MayHaveAnyBitFlipped)
{
    for (Sample const& sample : samples())
    {
        std::string bytes = TestFixture::fileOf(sample).content();
        for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit)
        {
            SCOPED_TRACE(testing::Message() << "bit " << bit % 8 << " of byte " << bit / 8);
            char const mask = static_cast<char>(1 << bit % 8);
            bytes[bit / 8] ^= mask;
            expectReadsAsTheReference<TypeParam>(bytes);
            bytes[bit / 8] ^= mask;
        }
    }
}

TYPED_TEST(DamagedLayoutFile, MayHaveManyBytesReplaced)
{
    std::minstd_rand random(1);
    std::string const good = TestFixture::everything();
    for (int run = 0; run < 1000; ++run)
    {
        SCOPED_TRACE(run);
        std::string bytes = good;
        for (unsigned int changes = 1 + random() % 8; changes > 0; --changes)
            bytes[random() % bytes.size()] = static_cast<char>(random() % 4 != 0 ? random() % 4 : random());
        expectReadsAsTheReference<TypeParam>(bytes);
    }
}

TYPED_TEST(DamagedLayoutFile, MayBeAnyBytes)
{
    std::minstd_rand random(2);
    int wholeOnes = 0;
    for (int run = 0; run < 2000; ++run)
    {
        SCOPED_TRACE(run);
        // Small numbers, so that some files come to a good end.
        std::string bytes = TestFixture::number(static_cast<std::uint32_t>(random() % 3));
        while (bytes.size() < 150)
            bytes += random() % 3 != 0 ? TestFixture::number(random() % 8 == 0) : std::string(1, '\1');
        wholeOnes += expectReadsAsTheReference<TypeParam>(bytes).whole;
    }
    EXPECT_GT(wholeOnes, 0);
    EXPECT_LT(wholeOnes, 2000);
}

} // namespace

} // namespace kestrel::graph::test
