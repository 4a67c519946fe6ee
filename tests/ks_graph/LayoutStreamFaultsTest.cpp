#include "support/LayoutFiles.h"
#include "support/SampleLayout.h"
#include "support/TemporaryFile.h"

#include <foundation/FileStream.h>
#include <ks_graph/GraphLayout.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// A stream may fail at any transfer, and may go on well afterwards: one failure is enough.

namespace kestrel::graph::test
{

namespace
{

enum class Fault
{
    refused,
    oneByteShort,
    thrown
};

constexpr Fault allFaults[] = {Fault::refused, Fault::oneByteShort, Fault::thrown};

struct StreamFailure
{
};

/// Its transfer of that number, from 1, goes wrong; all others do what the file does. A flush is a transfer,
/// too.
template <class Stream>
class FaultyStream : public Stream
{
public:
    FaultyStream(std::FILE* file, Fault fault, int number) : Stream(file), fault_(fault), number_(number) {}

    std::size_t read(void* bytes, std::size_t count) override
    {
        return Stream::read(bytes, isFaulty() ? whatIsLeftOf(count) : count);
    }

    std::size_t write(void const* bytes, std::size_t count) override
    {
        return Stream::write(bytes, isFaulty() ? whatIsLeftOf(count) : count);
    }

    bool flush() override { return isFaulty() ? whatIsLeftOf(0) != 0 : Stream::flush(); }

    /// Transfers behind the faulty one; below 0 when it was not reached.
    int transfersSinceFault() const { return transfers_ - number_; }

private:
    bool isFaulty() { return ++transfers_ == number_; }

    std::size_t whatIsLeftOf(std::size_t count) const
    {
        if (fault_ == Fault::thrown) throw StreamFailure();
        return fault_ == Fault::oneByteShort && count != 0 ? count - 1 : 0;
    }

    Fault fault_;
    int number_;
    int transfers_ = 0;
};

/// Nothing when the operation threw.
template <class Operation>
std::optional<bool> resultOf(Operation operation)
{
    try
    {
        return operation();
    }
    catch (StreamFailure const&)
    {
        return std::nullopt;
    }
}

std::optional<bool> failureBy(Fault fault)
{
    return fault == Fault::thrown ? std::nullopt : std::optional(false);
}

template <class Stream>
class LayoutStreamFaults : public testing::Test
{
protected:
    static ByteWriter const& encodedFile()
    {
        static ByteWriter const bytes = encoded(everythingLayout(), 2, orderOf<Stream>);
        return bytes;
    }

    static std::string const& everything() { return encodedFile().content(); }

    /// Every text is a transfer of its own in both streams.
    static int fewestTransfers() { return static_cast<int>(encodedFile().lengths().size()); }

    /// In a file without a buffer, so are the numbers.
    static int fewestCalls()
    {
        return static_cast<int>(2 * encodedFile().lengths().size() + encodedFile().counts().size());
    }

    /// What a file that ends there gives: that is what arrived in front of a fault.
    static PlainLayout wholeInFrontOf(std::size_t end)
    {
        return readFrom<Stream>(everything().substr(0, end)).layout;
    }
};

using Streams = testing::Types<FileStreamRaw, FileStreamEndian>;
TYPED_TEST_SUITE(LayoutStreamFaults, Streams, );

// ---- Streams of the host

TYPED_TEST(LayoutStreamFaults, AtAnyReadKeepWhatWasWholeInFrontOfIt)
{
    TemporaryFile const file(TestFixture::everything());
    for (Fault fault : allFaults)
        for (int number = 1;; ++number)
        {
            SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << number);
            std::rewind(file.get());
            FaultyStream<TypeParam> stream(file.get(), fault, number);
            GraphLayout layout = leftoverLayout();
            std::optional<bool> const whole = resultOf([&] { return layout.read<TypeParam>(stream); });
            if (stream.transfersSinceFault() < 0)
            {
                EXPECT_EQ(whole, true);
                EXPECT_EQ(plainOf(layout), everythingLayout());
                EXPECT_GT(number, TestFixture::fewestTransfers());
                break;
            }
            EXPECT_EQ(whole, failureBy(fault));
            EXPECT_EQ(stream.transfersSinceFault(), 0);
            std::size_t const arrived = static_cast<std::size_t>(std::ftell(file.get()));
            EXPECT_EQ(plainOf(layout), TestFixture::wholeInFrontOf(arrived));
        }
}

TYPED_TEST(LayoutStreamFaults, AtAnyReadLeaveALayoutThatReadsAgain)
{
    TemporaryFile const file(TestFixture::everything());
    GraphLayout layout;
    for (int number = 1;; ++number)
    {
        SCOPED_TRACE(number);
        std::rewind(file.get());
        FaultyStream<TypeParam> faulty(file.get(), Fault::thrown, number);
        resultOf([&] { return layout.read<TypeParam>(faulty); });
        if (faulty.transfersSinceFault() < 0) break;
        std::rewind(file.get());
        TypeParam stream(file.get());
        EXPECT_TRUE(layout.read(stream));
        EXPECT_EQ(plainOf(layout), everythingLayout());
    }
}

TYPED_TEST(LayoutStreamFaults, AtAnyWriteAreTold)
{
    GraphLayout const layout = layoutOf(everythingLayout());
    TemporaryFile const file;
    for (Fault fault : allFaults)
        for (int number = 1;; ++number)
        {
            SCOPED_TRACE(testing::Message() << "fault " << static_cast<int>(fault) << " at " << number);
            std::rewind(file.get());
            FaultyStream<TypeParam> stream(file.get(), fault, number);
            std::optional<bool> const written = resultOf([&] { return layout.write<TypeParam>(stream); });
            if (stream.transfersSinceFault() < 0)
            {
                EXPECT_EQ(written, true);
                EXPECT_EQ(file.content(), TestFixture::everything());
                EXPECT_GT(number, TestFixture::fewestTransfers());
                break;
            }
            EXPECT_EQ(written, failureBy(fault));
            EXPECT_EQ(stream.transfersSinceFault(), 0);
            EXPECT_EQ(plainOf(layout), everythingLayout());
        }
}

// ---- Files of the system

#if defined(__GLIBC__) // a file whose calls to the system are the test's own

/// A file in memory, unbuffered, so that each value is a call of its own; the call of that number fails.
class FaultyFile
{
public:
    FaultyFile(std::string content, int number) : content_(std::move(content)), number_(number)
    {
        file_ = fopencookie(this, "r+", {&FaultyFile::read, &FaultyFile::write, nullptr, nullptr});
        EXPECT_NE(file_, nullptr);
        EXPECT_EQ(std::setvbuf(file_, nullptr, _IONBF, 0), 0);
    }

    ~FaultyFile() { std::fclose(file_); }

    FaultyFile(FaultyFile const&) = delete;
    FaultyFile& operator=(FaultyFile const&) = delete;

    std::FILE* get() const { return file_; }
    bool hasFailed() const { return calls_ >= number_; }
    std::size_t position() const { return position_; }
    std::string const& content() const { return content_; }

private:
    static ssize_t read(void* self, char* bytes, std::size_t count)
    {
        FaultyFile& file = *static_cast<FaultyFile*>(self);
        if (++file.calls_ == file.number_) return -1;
        count = std::min(count, file.content_.size() - file.position_);
        file.content_.copy(bytes, count, file.position_);
        file.position_ += count;
        return static_cast<ssize_t>(count);
    }

    static ssize_t write(void* self, char const* bytes, std::size_t count)
    {
        FaultyFile& file = *static_cast<FaultyFile*>(self);
        if (++file.calls_ == file.number_) return 0; // that is how such a file says it
        file.content_.append(bytes, count);
        return static_cast<ssize_t>(count);
    }

    std::string content_;
    std::size_t position_ = 0;
    int number_;
    int calls_ = 0;
    std::FILE* file_ = nullptr;
};

TYPED_TEST(LayoutStreamFaults, OfTheFileAtAnyReadKeepWhatWasWholeInFrontOfIt)
{
    for (int number = 1;; ++number)
    {
        SCOPED_TRACE(number);
        FaultyFile const file(TestFixture::everything(), number);
        TypeParam stream(file.get());
        GraphLayout layout = leftoverLayout();
        bool const whole = layout.read(stream);
        EXPECT_EQ(whole, !file.hasFailed());
        EXPECT_EQ(plainOf(layout), TestFixture::wholeInFrontOf(file.position()));
        if (!file.hasFailed())
        {
            EXPECT_EQ(plainOf(layout), everythingLayout());
            EXPECT_GT(number, TestFixture::fewestCalls());
            break;
        }
    }
}

TYPED_TEST(LayoutStreamFaults, OfTheFileAtAnyWriteAreTold)
{
    GraphLayout const layout = layoutOf(everythingLayout());
    for (int number = 1;; ++number)
    {
        SCOPED_TRACE(number);
        FaultyFile const file("", number);
        TypeParam stream(file.get());
        bool const written = layout.write(stream);
        EXPECT_EQ(written, !file.hasFailed());
        if (!file.hasFailed())
        {
            EXPECT_EQ(file.content(), TestFixture::everything());
            EXPECT_GT(number, TestFixture::fewestCalls());
            break;
        }
    }
}

TYPED_TEST(LayoutStreamFaults, OfABufferedFileShowWhenItIsFlushed)
{
    std::vector<char> buffer(4096); // outlives the file
    FaultyFile const file("", 1);
    ASSERT_EQ(std::setvbuf(file.get(), buffer.data(), _IOFBF, buffer.size()), 0);
    TypeParam stream(file.get());
    EXPECT_FALSE(layoutOf(smallLayout()).write(stream));
}

#endif

} // namespace

} // namespace kestrel::graph::test
