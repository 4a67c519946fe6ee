/// @file
/// What the two list templates have in common. Hosts use `Array` and `ArrayOfPtr`.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel
{

/// A growable contiguous list with a 32-bit count: a block of `capacity` live elements, of which the first
/// `size` are in use. Slots behind `size` hold default values or stale copies, never garbage.
///
/// Two removals exist side by side, and which one a caller uses decides the order that is left:
/// `removeFast` moves the last element into the gap, `removeAll` and `removeIf` keep the order.
///
/// Values passed in may be elements of the list itself. No operation but `reserve`, `clear` and assignment
/// ever gives memory back. When an allocation or the copy of an element fails, the list is as it was before
/// the call, as long as elements move without failing.
template <class Element>
class ArrayBase
{
public:
    /// How an element is named in a search: pointers as pointers to const, everything else by reference.
    using Probe =
        std::conditional_t<std::is_pointer_v<Element>, std::remove_pointer_t<Element> const*, Element const&>;

    /// What `find` returns when nothing was found.
    static constexpr unsigned int npos = 0xFFFFFFFFu;

    ArrayBase() noexcept = default;

    /// Exact fit: the copy's capacity is the other's size.
    ArrayBase(ArrayBase const& other) { assign(other); }

    /// Takes the block and leaves an empty list.
    ArrayBase(ArrayBase&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)),
          size_(std::exchange(other.size_, 0u)),
          capacity_(std::exchange(other.capacity_, 0u))
    {}

    ~ArrayBase() { delete[] data_; }

    /// Keeps the block only if its capacity is exactly the other's size; else the block is replaced by one of
    /// exactly that size, even by a smaller one.
    ArrayBase& operator=(ArrayBase const& other)
    {
        if (this != &other) assign(other);
        return *this;
    }

    /// Takes the block; the own one is given back, and the other list is left empty.
    ArrayBase& operator=(ArrayBase&& other) noexcept
    {
        ArrayBase(std::move(other)).swap(*this);
        return *this;
    }

    /// Number of elements in use.
    unsigned int size() const noexcept { return size_; }
    /// Number of slots in the block.
    unsigned int capacity() const noexcept { return capacity_; }
    /// Whether there is no element in use, whatever the capacity.
    bool isEmpty() const noexcept { return size_ == 0; }

    /// The block; null while the capacity is 0.
    Element* data() noexcept { return data_; }
    Element const* data() const noexcept { return data_; }

    /// All of them point into the block: valid until an append, `reserve`, `clear` or assignment changes it.
    Element* begin() noexcept { return data_; }
    Element* end() noexcept { return data_ + size_; }
    Element const* begin() const noexcept { return data_; }
    Element const* end() const noexcept { return data_ + size_; }

    /// REQUIRES: `index < size()`. Asserted in debug builds only.
    Element& operator[](unsigned int index)
    {
        assert(index < size_);
        return data_[index];
    }
    Element const& operator[](unsigned int index) const
    {
        assert(index < size_);
        return data_[index];
    }

    /// Amortised constant: a full block grows by an eighth and four slots.
    void append(Element const& value)
    {
        if (size_ == capacity_)
            growAndAppend(value);
        else
            data_[size_] = value;
        ++size_;
    }

    /// Appends `count` elements in order; `first` may point into this list.
    void appendRange(Element const* first, unsigned int count)
    {
        std::uint64_t const needed = std::uint64_t{size_} + count;
        if (needed <= capacity_)
        {
            copyElements(first, count, data_ + size_);
        }
        else
        {
            std::uint64_t const shortfall = needed - capacity_;
            ArrayBase grown = withCapacity(capacity_ + (shortfall > step() ? shortfall : step()));
            copyElements(first, count, grown.data_ + size_); // before the old elements move away
            replaceBlock(grown, size_);
        }
        size_ = static_cast<unsigned int>(needed);
    }

    /// Index of the first element equal to `value`, or `npos`. Linear.
    unsigned int find(Probe value) const
    {
        for (unsigned int i = 0; i < size_; ++i)
            if (data_[i] == value) return i;
        return npos;
    }

    /// Whether any element is equal to `value`. Linear.
    bool contains(Probe value) const { return find(value) != npos; }

    /// Removes the first equal element and fills its slot with the last one. Does not keep the order; does
    /// nothing if there is none.
    void removeFast(Probe value)
    {
        unsigned int const index = find(value);
        if (index != npos) removeFastAt(index);
    }

    /// `removeFast` for an index that is known. REQUIRES: `index < size()`.
    void removeFastAt(unsigned int index)
    {
        assert(index < size_);
        unsigned int const last = size_ - 1;
        if (index != last) data_[index] = std::move(data_[last]);
        vacate(last);
    }

    /// Removes every equal element and keeps the order of the others; returns how many went.
    unsigned int removeAll(Probe value)
    {
        unsigned int const first = find(value);
        if (first == npos) return 0;
        // Moving elements would change `value` if it is one of them.
        if constexpr (std::is_pointer_v<Element>)
            return compact(first, [this, value](unsigned int i) { return data_[i] == value; });
        else
            return compact(first, [this, copy = Element(value)](unsigned int i) { return data_[i] == copy; });
    }

    /// Removes the elements for which the predicate holds and keeps the order of the others. The predicate
    /// is asked once for each element, in order, before anything moves.
    template <class Predicate>
    void removeIf(Predicate predicate)
    {
        std::vector<std::uint32_t> marks((std::size_t{size_} + 31) / 32, 0u);
        for (unsigned int i = 0; i < size_; ++i)
            if (predicate(std::as_const(data_[i]))) marks[i / 32] |= std::uint32_t{1} << (i % 32);
        compact(0, [&marks](unsigned int i) { return (marks[i / 32] >> (i % 32) & 1u) != 0; });
    }

    /// Gives the block back: null data, size 0, capacity 0.
    void clear() noexcept { ArrayBase().swap(*this); }

    /// Sets the count. New elements have their default value; `setSize(0)` empties the list and keeps its
    /// block.
    void setSize(unsigned int newSize)
    {
        for (unsigned int i = size_; i < newSize && i < capacity_; ++i) data_[i] = Element();
        if (newSize > capacity_) reserve(newSize, true);
        size_ = newSize;
    }

    /// Replaces the block by one of exactly `newCapacity` slots, also by a smaller one, and cuts the size to
    /// it. `keep` says whether the elements come along or are left at their default value.
    void reserve(unsigned int newCapacity, bool keep)
    {
        ArrayBase block = withCapacity(newCapacity);
        unsigned int const kept = size_ < newCapacity ? size_ : newCapacity;
        replaceBlock(block, keep ? kept : 0);
        size_ = kept;
    }

    /// Exchanges the blocks. Constant.
    void swap(ArrayBase& other) noexcept
    {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

private:
    unsigned int step() const noexcept { return capacity_ / 8 + 4; }

    static unsigned int checked(std::uint64_t capacity)
    {
        if (capacity > 0xFFFFFFFFu) throw std::bad_array_new_length();
        return static_cast<unsigned int>(capacity);
    }

    static ArrayBase withCapacity(std::uint64_t capacity)
    {
        ArrayBase block;
        if (capacity == 0) return block;
        block.data_ = new Element[checked(capacity)]();
        block.capacity_ = static_cast<unsigned int>(capacity);
        return block;
    }

    static void copyElements(Element const* from, unsigned int count, Element* to)
    {
        for (unsigned int i = 0; i < count; ++i) to[i] = from[i];
    }

    void assign(ArrayBase const& other)
    {
        constexpr bool copyMayFail = !std::is_nothrow_copy_assignable_v<Element>;
        bool const keepsBlock = capacity_ == other.size_;
        if (keepsBlock && !(copyMayFail && std::is_nothrow_move_assignable_v<Element>))
        {
            copyElements(other.data_, other.size_, data_);
            size_ = other.size_;
            return;
        }
        ArrayBase block = withCapacity(other.size_);
        copyElements(other.data_, other.size_, block.data_);
        block.size_ = other.size_;
        if (keepsBlock)
            std::move(block.begin(), block.end(), data_);
        else
            std::swap(data_, block.data_);
        capacity_ = size_ = other.size_;
    }

    void growAndAppend(Element const& value)
    {
        ArrayBase grown = withCapacity(std::uint64_t{capacity_} + step());
        grown.data_[size_] = value; // before the old elements move away: `value` may be one of them
        replaceBlock(grown, size_);
    }

    /// Takes over the other's block after bringing the first `kept` elements along.
    void replaceBlock(ArrayBase& other, unsigned int kept)
    {
        if constexpr (std::is_nothrow_move_assignable_v<Element>)
            std::move(data_, data_ + kept, other.data_);
        else
            copyElements(data_, kept, other.data_);
        std::swap(data_, other.data_);
        std::swap(capacity_, other.capacity_);
    }

    void vacate(unsigned int last)
    {
        if constexpr (std::is_pointer_v<Element>) data_[last] = nullptr;
        size_ = last;
    }

    /// Moves the elements that stay to the front, in order, starting at `first`.
    template <class Gone>
    unsigned int compact(unsigned int first, Gone gone)
    {
        unsigned int kept = first;
        for (unsigned int i = first; i < size_; ++i)
        {
            if (gone(i)) continue;
            if (kept != i) data_[kept] = std::move(data_[i]);
            ++kept;
        }
        unsigned int const removed = size_ - kept;
        while (size_ > kept) vacate(size_ - 1);
        return removed;
    }

    Element* data_ = nullptr;
    unsigned int size_ = 0;
    unsigned int capacity_ = 0;
};

} // namespace kestrel
