#include <foundation/KS_String.h>

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

namespace kestrel
{

namespace
{

// Texts up to this length are formatted without touching the heap first.
constexpr std::size_t formatOnStack = 256;

unsigned int checkedSize(std::uint64_t size)
{
    if (size > 0xFFFFFFFFu) throw std::bad_array_new_length();
    return static_cast<unsigned int>(size);
}

std::string_view viewOf(char const* text)
{
    return text != nullptr ? std::string_view(text) : std::string_view();
}

// The text that printf makes, in a buffer of its own: the arguments may point into the text that is about
// to be replaced.
class Formatted
{
public:
    // Does not throw, so that the caller reaches its va_end.
    Formatted(char const* format, std::va_list arguments) noexcept
    {
        std::va_list again;
        va_copy(again, arguments);
        int const needed = std::vsnprintf(onStack_, formatOnStack, format, arguments);
        if (needed > 0) length_ = static_cast<unsigned int>(needed);
        if (length_ >= formatOnStack)
        {
            onHeap_.reset(new (std::nothrow) char[std::size_t{length_} + 1]);
            if (onHeap_) std::vsnprintf(onHeap_.get(), std::size_t{length_} + 1, format, again);
        }
        va_end(again);
    }

    std::string_view view() const
    {
        if (length_ < formatOnStack) return {onStack_, length_};
        if (!onHeap_) throw std::bad_alloc();
        return {onHeap_.get(), length_};
    }

private:
    char onStack_[formatOnStack];
    std::unique_ptr<char[]> onHeap_;
    unsigned int length_ = 0;
};

} // namespace

KS_String::KS_String() : KS_String(std::string_view()) {}

KS_String::KS_String(char const* text) : KS_String(viewOf(text)) {}

KS_String::KS_String(std::string_view text) : KS_String(text, checkedSize(std::uint64_t{text.size()} + 1)) {}

// REQUIRES: `capacity` has room for the text and its NUL.
KS_String::KS_String(std::string_view text, unsigned int capacity)
    : data_(new char[capacity]), size_(static_cast<unsigned int>(text.size()) + 1), capacity_(capacity)
{
    std::copy(text.begin(), text.end(), data_);
    data_[size_ - 1] = '\0';
}

KS_String::KS_String(KS_String const& other) : KS_String(std::string_view(other)) {}

KS_String& KS_String::operator=(KS_String const& other)
{
    if (this == &other) return *this;
    if (capacity_ != other.length() + 1)
    {
        KS_String(other).swap(*this);
        return *this;
    }
    size_ = capacity_;
    std::memcpy(data_, other.c_str(), size_);
    return *this;
}

int KS_String::compare(KS_String const& other) const
{
    return compare(other.c_str());
}

int KS_String::compare(char const* other) const
{
    return std::strcmp(c_str(), other != nullptr ? other : "");
}

int KS_String::compare(std::string_view other) const
{
    return std::string_view(c_str()).compare(other.substr(0, other.find('\0')));
}

unsigned int KS_String::find(char wanted) const
{
    char const* const found = std::strchr(c_str(), wanted);
    return found != nullptr ? static_cast<unsigned int>(found - c_str()) : npos;
}

unsigned int KS_String::findLast(char wanted) const
{
    char const* const found = std::strrchr(c_str(), wanted);
    return found != nullptr ? static_cast<unsigned int>(found - c_str()) : npos;
}

bool KS_String::startsWith(KS_String const& prefix) const
{
    return std::strncmp(c_str(), prefix.c_str(), std::strlen(prefix.c_str())) == 0;
}

KS_String KS_String::left(unsigned int count) const
{
    return mid(0, count);
}

KS_String KS_String::mid(unsigned int start, unsigned int count) const
{
    if (start >= length()) return KS_String();
    return KS_String(std::string_view(*this).substr(start, count));
}

KS_String KS_String::toLower() const
{
    KS_String lowered(*this);
    for (unsigned int i = 0; i < lowered.length(); ++i)
        lowered.data_[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(lowered.data_[i])));
    return lowered;
}

KS_String KS_String::concatenated(std::initializer_list<std::string_view> parts)
{
    std::uint64_t size = 1;
    for (std::string_view const part : parts) size += part.size();
    KS_String text(std::string_view{}, checkedSize(size));
    for (std::string_view const part : parts) text.append(part);
    return text;
}

KS_String KS_String::operator+(KS_String const& other) const
{
    return concatenated({*this, other});
}

KS_String KS_String::operator+(char const* other) const
{
    return concatenated({*this, viewOf(other)});
}

KS_String& KS_String::operator+=(KS_String const& other)
{
    append(other);
    return *this;
}

KS_String& KS_String::operator+=(char const* other)
{
    append(viewOf(other));
    return *this;
}

KS_String& KS_String::operator+=(char byte)
{
    if (size_ == capacity_) reserve(checkedSize(std::uint64_t{capacity_} + capacity_ / 8 + 4));
    append({&byte, 1});
    return *this;
}

// `bytes` may point into this text, so the old buffer lives until they are copied.
void KS_String::append(std::string_view bytes)
{
    unsigned int const oldLength = length();
    unsigned int const newSize = checkedSize(std::uint64_t{oldLength} + bytes.size() + 1);
    if (newSize > capacity_)
    {
        KS_String grown(*this, newSize);
        grown.append(bytes);
        swap(grown);
        return;
    }
    std::copy(bytes.begin(), bytes.end(), data_ + oldLength);
    size_ = newSize;
    data_[size_ - 1] = '\0';
}

void KS_String::replaceBy(std::string_view bytes)
{
    if (bytes.size() >= capacity_)
    {
        KS_String(bytes).swap(*this);
        return;
    }
    size_ = 1;
    append(bytes);
}

void KS_String::format(char const* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    Formatted const text(format, arguments);
    va_end(arguments);
    replaceBy(text.view());
}

void KS_String::appendFormat(char const* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    Formatted const text(format, arguments);
    va_end(arguments);
    append(text.view());
}

bool KS_String::replace(char const* from, char const* to)
{
    std::string_view const wanted = viewOf(from);
    std::string_view const replacement = viewOf(to);
    if (wanted.empty()) return false;

    std::string_view const searched(c_str()); // ends at the first NUL; what follows is kept as it is
    std::uint64_t matches = 0;
    for (std::size_t at = searched.find(wanted); at != std::string_view::npos;
         at = searched.find(wanted, at + wanted.size()))
        ++matches;
    if (matches == 0) return false;

    std::uint64_t const newSize =
        std::uint64_t{size_} - matches * wanted.size() + matches * replacement.size();
    KS_String result(std::string_view{}, std::max(checkedSize(newSize), capacity_));
    std::string_view const all(*this);
    std::size_t copied = 0;
    for (std::size_t at = searched.find(wanted); at != std::string_view::npos;
         at = searched.find(wanted, copied))
    {
        result.append(all.substr(copied, at - copied));
        result.append(replacement);
        copied = at + wanted.size();
    }
    result.append(all.substr(copied));
    swap(result);
    return true;
}

void KS_String::reserve(unsigned int newCapacity, bool keep)
{
    if (newCapacity == 0)
    {
        KS_String released(std::move(*this));
        return;
    }
    unsigned int const kept = keep ? std::min(length(), newCapacity - 1) : 0;
    KS_String(std::string_view(*this).substr(0, kept), newCapacity).swap(*this);
}

void KS_String::becomeEmpty()
{
    if (data_ == nullptr) return;
    size_ = 1;
    data_[0] = '\0';
}

// A text that arrived without its NUL gets one behind its last byte.
bool KS_String::endWithNul()
{
    if (data_[size_ - 1] == '\0') return true;
    if (size_ == 0xFFFFFFFFu) return false; // coverage: a text of 4 GiB
    if (size_ == capacity_)
    {
        char* const block = new char[capacity_ + 1u];
        std::copy_n(data_, size_, block);
        delete[] data_;
        data_ = block;
        ++capacity_;
    }
    data_[size_++] = '\0';
    return true;
}

// Replaces the buffer by one of exactly that many bytes, taken from the pieces in order.
bool KS_String::join(std::vector<std::unique_ptr<char[]>> const& pieces, unsigned int count)
{
    char* const block = new char[count];
    unsigned int copied = 0;
    for (std::unique_ptr<char[]> const& piece : pieces)
    {
        unsigned int const size = std::min(count - copied, readPieceSize);
        std::copy_n(piece.get(), size, block + copied);
        copied += size;
    }
    delete[] data_;
    data_ = block;
    size_ = capacity_ = count;
    return endWithNul();
}

} // namespace kestrel
