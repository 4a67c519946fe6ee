#include "Expect.h"

#include <foundation/Array.h>
#include <foundation/ArrayOfPtr.h>
#include <foundation/KS_String.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrel::fuzz
{

namespace
{

/// Longer ones would only be slow.
constexpr unsigned int longestList = 4096;

// Few different values, so that many are equal.

void take(FuzzedDataProvider& input, int& value)
{
    value = input.ConsumeIntegralInRange(0, 7);
}

void take(FuzzedDataProvider& input, KS_String& value)
{
    value = KS_String(std::string(input.ConsumeIntegralInRange<std::size_t>(0, 3), 'x'));
}

void take(FuzzedDataProvider& input, int*& value)
{
    static int pointees[7];
    unsigned int const index = input.ConsumeIntegralInRange(0u, 7u);
    value = index < 7 ? &pointees[index] : nullptr;
}

/// Lists of one kind, each beside the vector and the capacity that it must have, and operations on them as
/// the input wants them. Arguments are often elements of the very list that changes.
template <class List>
class Lists
{
public:
    using Element = std::remove_cvref_t<decltype(std::declval<List&>()[0])>;

    explicit Lists(FuzzedDataProvider& input) : input_(input) {}

    void run()
    {
        while (input_.remaining_bytes() != 0)
        {
            target_ = input_.ConsumeIntegralInRange<std::size_t>(0, count - 1);
            other_ = input_.ConsumeIntegralInRange<std::size_t>(0, count - 1);
            (this->*input_.PickValueInArray(operations))();
            for (std::size_t i = 0; i < count; ++i) expectEqual(lists_[i], models_[i]);
            if (model().capacity > longestList) clear();
        }
    }

private:
    static constexpr std::size_t count = 3;

    struct Model
    {
        std::vector<Element> elements = {};
        unsigned int capacity = 0;

        unsigned int size() const { return static_cast<unsigned int>(elements.size()); }
        unsigned int step() const { return capacity / 8 + 4; }
    };

    static void expectEqual(List const& list, Model const& model)
    {
        FUZZ_EXPECT(list.size() == model.size());
        FUZZ_EXPECT(list.capacity() == model.capacity);
        FUZZ_EXPECT(list.isEmpty() == model.elements.empty());
        FUZZ_EXPECT((list.data() == nullptr) == (model.capacity == 0));
        FUZZ_EXPECT(list.begin() == list.data() && list.end() - list.begin() == std::ptrdiff_t{list.size()});
        FUZZ_EXPECT(std::equal(list.begin(), list.end(), model.elements.begin(), model.elements.end()));
        for (unsigned int i = 0; i < list.size(); ++i) FUZZ_EXPECT(list[i] == model.elements[i]);
    }

    static void expectExactCopy(List const& list, Model const& model)
    {
        expectEqual(list, {model.elements, model.size()});
    }

    List& list() { return lists_[target_]; }
    Model& model() { return models_[target_]; }
    List& otherList() { return lists_[other_]; }
    Model& otherModel() { return models_[other_]; }

    unsigned int someIndex() { return input_.ConsumeIntegralInRange(0u, model().size() - 1); }

    /// A value of its own, or an element of the list itself.
    Element const& someValue()
    {
        take(input_, value_);
        return input_.ConsumeBool() && model().size() != 0 ? list()[someIndex()] : value_;
    }

    // ---- Making and assigning

    void assignCopy()
    {
        list() = std::as_const(otherList());
        if (target_ != other_) model() = {otherModel().elements, otherModel().size()};
    }

    void assignMoved()
    {
        list() = std::move(otherList());
        if (target_ != other_) model() = std::exchange(otherModel(), Model());
    }

    void copyAndMove()
    {
        List const copy(list());
        expectExactCopy(copy, model());
        List moved(std::move(list()));
        expectEqual(moved, model());
        expectEqual(list(), Model());
        list().swap(moved);
    }

    void swap()
    {
        list().swap(otherList());
        std::swap(model(), otherModel());
    }

    void clear()
    {
        list().clear();
        model() = Model();
    }

    // ---- Adding and changing

    void append()
    {
        Element const& value = someValue();
        Element const copy = value;
        list().append(value);
        if (model().size() == model().capacity) model().capacity += model().step();
        model().elements.push_back(copy);
    }

    void appendRange()
    {
        unsigned int const start = input_.ConsumeIntegralInRange(0u, otherModel().size());
        unsigned int const length = input_.ConsumeIntegralInRange(0u, otherModel().size() - start);
        std::vector<Element> const added(otherModel().elements.begin() + start,
                                         otherModel().elements.begin() + start + length);
        list().appendRange(otherList().data() + start, length);
        unsigned int const needed = model().size() + length;
        if (needed > model().capacity)
            model().capacity += std::max(needed - model().capacity, model().step());
        model().elements.insert(model().elements.end(), added.begin(), added.end());
    }

    void change()
    {
        if (model().size() == 0) return;
        unsigned int const index = someIndex();
        take(input_, value_);
        list()[index] = value_;
        model().elements[index] = value_;
    }

    void setSize()
    {
        unsigned int const size = someSize();
        list().setSize(size);
        model().elements.resize(size);
        model().capacity = std::max(model().capacity, size);
    }

    void reserve()
    {
        unsigned int const capacity = someSize();
        bool const keep = input_.ConsumeBool();
        list().reserve(capacity, keep);
        model().elements.resize(std::min(model().size(), capacity));
        if (!keep) model().elements.assign(model().size(), Element());
        model().capacity = capacity;
    }

    /// In, at and behind the ends of the elements and of the block.
    unsigned int someSize()
    {
        unsigned int const limits[] = {0, model().size(), model().size() + 1, model().capacity,
                                       model().capacity + 1};
        return input_.ConsumeBool() ? input_.PickValueInArray(limits)
                                    : input_.ConsumeIntegralInRange(0u, 300u);
    }

    // ---- Searching

    void find()
    {
        Element const& value = someValue();
        auto const found = std::find(model().elements.begin(), model().elements.end(), value);
        bool const isThere = found != model().elements.end();
        FUZZ_EXPECT(list().contains(value) == isThere);
        FUZZ_EXPECT(list().find(value) ==
                    (isThere ? static_cast<unsigned int>(found - model().elements.begin()) : List::npos));
    }

    // ---- Removing

    void removeFast()
    {
        Element const& value = someValue();
        auto const found = std::find(model().elements.begin(), model().elements.end(), value);
        list().removeFast(value);
        if (found == model().elements.end()) return;
        *found = model().elements.back();
        model().elements.pop_back();
        expectNulled(1);
    }

    void removeFastAt()
    {
        if (model().size() == 0) return;
        unsigned int const index = someIndex();
        list().removeFastAt(index);
        model().elements[index] = model().elements.back();
        model().elements.pop_back();
        expectNulled(1);
    }

    void removeAll()
    {
        Element const& value = someValue();
        Element const copy = value;
        unsigned int const removed = list().removeAll(value);
        FUZZ_EXPECT(removed == static_cast<unsigned int>(std::erase(model().elements, copy)));
        expectNulled(removed);
    }

    void removeIf()
    {
        // One answer for each element, whatever its value.
        std::vector<bool> answers;
        for (unsigned int i = 0; i < model().size(); ++i) answers.push_back(input_.ConsumeBool());
        std::size_t asked = 0;
        list().removeIf([&](Element const&) { return answers[asked++]; });
        FUZZ_EXPECT(asked == answers.size());
        std::vector<Element> kept;
        for (unsigned int i = 0; i < model().size(); ++i)
            if (!answers[i]) kept.push_back(model().elements[i]);
        unsigned int const removed = model().size() - static_cast<unsigned int>(kept.size());
        model().elements = std::move(kept);
        expectNulled(removed);
    }

    /// A pointer is gone when it is removed: not even behind the end does the list go on holding it.
    void expectNulled(unsigned int removed)
    {
        if constexpr (std::is_pointer_v<Element>)
            for (unsigned int i = 0; i < removed; ++i) FUZZ_EXPECT(list().end()[i] == nullptr);
    }

    static constexpr void (Lists::*operations[])() = {
        &Lists::assignCopy,  &Lists::assignMoved, &Lists::copyAndMove,  &Lists::swap,
        &Lists::clear,       &Lists::append,      &Lists::append,       &Lists::append,
        &Lists::appendRange, &Lists::change,      &Lists::setSize,      &Lists::reserve,
        &Lists::find,        &Lists::removeFast,  &Lists::removeFastAt, &Lists::removeAll,
        &Lists::removeIf};

    FuzzedDataProvider& input_;
    std::array<List, count> lists_;
    std::array<Model, count> models_;
    std::size_t target_ = 0;
    std::size_t other_ = 0;
    Element value_{};
};

} // namespace

} // namespace kestrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    using namespace kestrel;
    FuzzedDataProvider input(data, size);
    switch (input.ConsumeIntegralInRange(0, 2))
    {
    case 0:
        fuzz::Lists<Array<int>>(input).run();
        break;
    case 1:
        fuzz::Lists<Array<KS_String>>(input).run();
        break;
    default:
        fuzz::Lists<ArrayOfPtr<int>>(input).run();
        break;
    }
    return 0;
}
