/// @file
#pragma once

#include <foundation/foundation_api.h>

#include <cassert>
#include <compare>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrel
{

/// The constant of `KS_String`, in a class that is not exported: as a member of one that is, a Windows
/// program that takes its address would look for it in the library, where no compiler puts it.
struct KS_StringConstants
{
    /// What a search returns when nothing was found.
    static constexpr unsigned int npos = 0xFFFFFFFFu;
};

/// The text of the whole library: an owning array of bytes that ends with a NUL.
///
/// Text is plain bytes; there is no encoding and no locale. `size()` counts the NUL, `length()` does not.
/// Comparing and searching stop at the first NUL, as the C runtime's string functions do; copying and
/// appending take every byte.
///
/// Capacity is exact: copies hold just what they need and `+=` grows just as far as it must, so a text built
/// by many appends reallocates at every one. `reserve` first, or build long texts elsewhere.
///
/// It converts to and from `std::string_view`; `KS_String(text)` takes a `std::string`, `std::string(text)`
/// gives one, and streams print `c_str()`.
///
/// A null `const char*` reads as the empty text. Arguments may point into the text itself. A moved-from text
/// reads as the empty text and may be used again. When an allocation fails, the text is as it was before, or
/// empty if it was being read.
class KS_FOUNDATION_API KS_String : public KS_StringConstants
{
public:
    /// The empty text: one byte, the NUL.
    KS_String();
    /// Takes the bytes up to the NUL; null is the empty text.
    KS_String(char const* text);
    /// Takes every byte of the view, NULs included.
    KS_String(std::string_view text);
    /// Exact fit: the copy's capacity is the other's size.
    KS_String(KS_String const& other);
    /// Takes the buffer; the other text reads as empty.
    KS_String(KS_String&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)),
          size_(std::exchange(other.size_, 0u)),
          capacity_(std::exchange(other.capacity_, 0u))
    {}
    ~KS_String() { delete[] data_; }

    /// Keeps the buffer only if its capacity is exactly the other's size.
    KS_String& operator=(KS_String const& other);
    KS_String& operator=(KS_String&& other) noexcept
    {
        KS_String(std::move(other)).swap(*this);
        return *this;
    }

    /// @name Reading
    /// @{

    /// The bytes, ended by a NUL; never null. Valid until the text changes or goes.
    char const* c_str() const { return data_ != nullptr ? data_ : ""; }

    /// Number of bytes in front of the final NUL.
    unsigned int length() const { return size_ != 0 ? size_ - 1 : 0; }

    /// Number of bytes with the final NUL; 0 only in a moved-from text.
    unsigned int size() const { return size_; }
    /// Number of bytes that the buffer holds.
    unsigned int capacity() const { return capacity_; }
    /// Whether `length()` is 0.
    bool isEmpty() const { return length() == 0; }

    /// REQUIRES: `index < size()`. Asserted in debug builds only.
    char& operator[](unsigned int index)
    {
        assert(index < size_);
        return data_[index];
    }
    char const& operator[](unsigned int index) const
    {
        assert(index < size_);
        return data_[index];
    }

    /// All `length()` bytes. Valid until the text changes or goes.
    operator std::string_view() const { return {c_str(), length()}; }

    /// @}
    /// @name Comparing: unsigned bytes, up to the first NUL; a proper prefix orders first
    /// @{

    bool operator==(KS_String const& other) const { return compare(other) == 0; }
    bool operator!=(KS_String const& other) const { return compare(other) != 0; }
    bool operator<(KS_String const& other) const { return compare(other) < 0; }
    bool operator>(KS_String const& other) const { return compare(other) > 0; }
    bool operator<=(KS_String const& other) const { return compare(other) <= 0; }
    bool operator>=(KS_String const& other) const { return compare(other) >= 0; }

    bool operator==(std::string_view other) const { return compare(other) == 0; }
    bool operator==(char const* other) const { return compare(other) == 0; }
    std::strong_ordering operator<=>(std::string_view other) const { return compare(other) <=> 0; }
    std::strong_ordering operator<=>(char const* other) const { return compare(other) <=> 0; }

    /// Index of the first, or last, such byte in front of the first NUL; `npos` if there is none. Searching
    /// for NUL finds the first one.
    unsigned int find(char wanted) const;
    unsigned int findLast(char wanted) const;

    /// Whether `prefix` begins this text; an equal and an empty one do.
    bool startsWith(KS_String const& prefix) const;

    /// @}
    /// @name Parts and copies
    /// @{

    /// The first `count` bytes, or all there are.
    KS_String left(unsigned int count) const;

    /// `count` bytes from `start`, or all there are; a `start` behind the end gives the empty text.
    KS_String mid(unsigned int start, unsigned int count = npos) const;

    /// A copy with every byte put through the runtime's `tolower`.
    KS_String toLower() const;

    /// The parts one behind the other, in one allocation of exactly the needed size.
    static KS_String concatenated(std::initializer_list<std::string_view> parts);

    /// This text followed by the other one, exact fit.
    KS_String operator+(KS_String const& other) const;
    KS_String operator+(char const* other) const;

    /// @}
    /// @name Changing
    /// @{

    /// Grows, if it must, to exactly the new size.
    KS_String& operator+=(KS_String const& other);
    KS_String& operator+=(char const* other);

    /// Appends one byte; amortised constant.
    KS_String& operator+=(char byte);

    /// Replaces the text by what `printf` would write. The buffer grows only if it must, to exactly the new
    /// size. A format that the runtime refuses gives the empty text.
    void format(char const* format, ...) KS_PRINTF_LIKE(2, 3);

    /// Appends what `printf` would write.
    void appendFormat(char const* format, ...) KS_PRINTF_LIKE(2, 3);

    /// Replaces every `from`, left to right, never looking into what it has just put in. Returns whether
    /// there was one; an empty `from` is never found. Linear in the two texts.
    bool replace(char const* from, char const* to);

    /// Replaces the buffer by one of exactly `newCapacity` bytes and cuts the text to it. A capacity of 0
    /// gives the buffer back and leaves the moved-from state. Without `keep` the text is empty afterwards.
    void reserve(unsigned int newCapacity, bool keep = true);

    /// Exchanges the buffers. Constant.
    void swap(KS_String& other) noexcept
    {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    /// @}
    /// @name Stream form: a 32-bit count that includes the NUL, then that many bytes
    /// @{

    /// False when the stream ended early; the text is empty then. A count of 0 is the empty text, and bytes
    /// without a final NUL get one. The count alone never makes it allocate more than 64 KiB: memory grows
    /// with the bytes that arrive. `Stream` is `FileStreamRaw`, `FileStreamEndian` or any class that has
    /// their `readValue`, `writeValue`, `read` and `write`.
    template <class Stream>
    bool read(Stream& stream);

    /// False when any byte could not be written.
    template <class Stream>
    bool write(Stream& stream) const;

    /// @}

private:
    int compare(KS_String const& other) const;
    int compare(std::string_view other) const;
    int compare(char const* other) const;
    KS_String(std::string_view text, unsigned int capacity);
    void append(std::string_view bytes);
    void replaceBy(std::string_view bytes);
    void becomeEmpty();
    bool endWithNul();

    static constexpr unsigned int readPieceSize = 64u * 1024u;

    /// Leaves the text empty, whatever bytes are in its buffer, unless the reading comes to its end.
    class Reading
    {
    public:
        explicit Reading(KS_String& text) : text_(text) {}
        Reading(Reading const&) = delete;
        Reading& operator=(Reading const&) = delete;
        ~Reading()
        {
            if (!finished_) text_.becomeEmpty();
        }
        void finish() { finished_ = true; }

    private:
        KS_String& text_;
        bool finished_ = false;
    };

    template <class Stream>
    bool readIntoBuffer(Stream& stream, unsigned int count);
    template <class Stream>
    bool readIntoPieces(Stream& stream, unsigned int count);
    bool join(std::vector<std::unique_ptr<char[]>> const& pieces, unsigned int count);

    char* data_ = nullptr;
    unsigned int size_ = 0;
    unsigned int capacity_ = 0;
};

static_assert(sizeof(KS_String) == sizeof(char*) + 2 * sizeof(unsigned int));

template <class Stream>
bool KS_String::read(Stream& stream)
{
    Reading reading(*this);
    unsigned int count = 0;
    if (!stream.readValue(count)) return false;
    if (count == 0) return true;
    if (!(count <= capacity_ ? readIntoBuffer(stream, count) : readIntoPieces(stream, count))) return false;
    reading.finish();
    return true;
}

template <class Stream>
bool KS_String::readIntoBuffer(Stream& stream, unsigned int count)
{
    if (stream.read(data_, count) != count) return false;
    size_ = count;
    return endWithNul();
}

// Each piece is made when all before it have arrived: a count that is only claimed costs one piece.
template <class Stream>
bool KS_String::readIntoPieces(Stream& stream, unsigned int count)
{
    std::vector<std::unique_ptr<char[]>> pieces;
    for (unsigned int left = count; left != 0;)
    {
        unsigned int const size = left < readPieceSize ? left : readPieceSize;
        pieces.push_back(std::make_unique_for_overwrite<char[]>(size));
        if (stream.read(pieces.back().get(), size) != size) return false;
        left -= size;
    }
    return join(pieces, count);
}

template <class Stream>
bool KS_String::write(Stream& stream) const
{
    std::string_view const bytes(c_str(), length() + 1u);
    unsigned int const count = static_cast<unsigned int>(bytes.size());
    return stream.writeValue(count) && stream.write(bytes.data(), bytes.size()) == bytes.size();
}

} // namespace kestrel
