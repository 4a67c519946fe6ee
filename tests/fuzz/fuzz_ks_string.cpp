#include "Expect.h"

#include <foundation/KS_String.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kestrel::fuzz
{

namespace
{

constexpr unsigned int npos = KS_String::npos;

/// Longer ones would only be slow.
constexpr std::size_t longestText = 1u << 18;

std::string upToNul(std::string const& bytes)
{
    return bytes.substr(0, bytes.find('\0'));
}

/// What a text must be: its bytes without the final NUL, and the size of its buffer, which only a moved-from
/// text does not have.
struct Model
{
    std::string bytes;
    unsigned int capacity = 1;

    unsigned int length() const { return static_cast<unsigned int>(bytes.size()); }
    unsigned int size() const { return capacity == 0 ? 0 : length() + 1; }

    /// Of exactly the needed size, as of a copy.
    static Model exact(std::string bytes)
    {
        Model model{std::move(bytes)};
        model.capacity = model.length() + 1;
        return model;
    }

    void assign(std::string newBytes)
    {
        bytes = std::move(newBytes);
        capacity = std::max(capacity, length() + 1);
    }

    void append(std::string const& more) { assign(bytes + more); }

    void becomeEmpty() { bytes.clear(); }
};

int sign(std::strong_ordering order)
{
    return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

int compared(std::string const& a, std::string const& b)
{
    return sign(std::strcmp(a.c_str(), b.c_str()) <=> 0);
}

bool replaceAll(std::string& text, std::string const& from, std::string const& to)
{
    if (from.empty()) return false;
    bool replaced = false;
    std::size_t end = text.find('\0'); // what is behind it is never searched
    if (end == std::string::npos) end = text.size();
    for (std::size_t at = text.find(from); at != std::string::npos && at + from.size() <= end;
         at = text.find(from, at + to.size()))
    {
        text.replace(at, from.size(), to);
        end += to.size() - from.size();
        replaced = true;
    }
    return replaced;
}

/// A host's own stream: `claimed` is the count that it gives, `bytes` is all that arrives.
class CountedBytes
{
public:
    bool readValue(unsigned int& value)
    {
        if (!claimed) return false;
        value = *claimed;
        return true;
    }

    std::size_t read(void* out, std::size_t count)
    {
        count = std::min(count, bytes.size() - position);
        std::memcpy(out, bytes.data() + position, count);
        position += count;
        return count;
    }

    bool writeValue(unsigned int value)
    {
        if (room < 4) return false;
        room -= 4;
        claimed = value;
        return true;
    }

    std::size_t write(void const* in, std::size_t count)
    {
        count = std::min(count, room);
        bytes.append(static_cast<char const*>(in), count);
        room -= count;
        return count;
    }

    std::optional<unsigned int> claimed;
    std::string bytes;
    std::size_t position = 0;
    std::size_t room = std::string::npos;
};

/// Some texts and what they must be, and operations on them as the input wants them. Their arguments are
/// often parts of the very text that changes.
class Texts
{
public:
    explicit Texts(FuzzedDataProvider& input) : input_(input) {}

    void run()
    {
        while (input_.remaining_bytes() != 0)
        {
            choose();
            (this->*input_.PickValueInArray(operations))();
            for (std::size_t i = 0; i < count; ++i) expectEqual(texts_[i], models_[i]);
            forgetLongOnes();
        }
    }

private:
    static constexpr std::size_t count = 3;

    /// A C text that an operation is called with, and a copy of it from before the call. Null is empty.
    struct Argument
    {
        char const* pointer;
        std::string bytes;
    };

    static void expectEqual(KS_String const& text, Model const& model)
    {
        FUZZ_EXPECT(text.length() == model.length());
        FUZZ_EXPECT(text.size() == model.size());
        FUZZ_EXPECT(text.capacity() == model.capacity);
        FUZZ_EXPECT(text.isEmpty() == model.bytes.empty());
        FUZZ_EXPECT(std::memcmp(text.c_str(), model.bytes.c_str(), model.bytes.size() + 1) == 0);
    }

    static void expectExact(KS_String const& text, std::string const& bytes)
    {
        expectEqual(text, Model::exact(bytes));
    }

    void choose()
    {
        target_ = input_.ConsumeIntegralInRange<std::size_t>(0, count - 1);
        other_ = input_.ConsumeIntegralInRange<std::size_t>(0, count - 1);
    }

    KS_String& text() { return texts_[target_]; }
    Model& model() { return models_[target_]; }
    KS_String& otherText() { return texts_[other_]; }
    Model& otherModel() { return models_[other_]; }

    void forgetLongOnes()
    {
        for (std::size_t i = 0; i < count; ++i)
            if (models_[i].capacity > longestText)
            {
                texts_[i] = KS_String();
                models_[i] = Model();
            }
    }

    std::string someBytes() { return input_.ConsumeRandomLengthString(40); }

    /// In, at and behind the end of the text.
    unsigned int someIndex()
    {
        unsigned int const length = model().length();
        unsigned int const limits[] = {0, 1, length - 1, length, length + 1, length + 2, npos - 1, npos};
        return input_.ConsumeBool() ? input_.PickValueInArray(limits)
                                    : input_.ConsumeIntegralInRange<unsigned int>(0, length);
    }

    Argument someArgument()
    {
        unsigned int const kind = input_.ConsumeIntegralInRange<unsigned int>(0, 5);
        if (kind == 0) return {nullptr, {}};
        if (kind <= 2) return pointerInto(text(), model());
        if (kind == 3) return pointerInto(otherText(), otherModel());
        kept_ = someBytes();
        return {kept_.c_str(), upToNul(kept_)};
    }

    Argument pointerInto(KS_String const& text, Model const& model)
    {
        char const* const pointer =
            text.c_str() + input_.ConsumeIntegralInRange<unsigned int>(0, model.length());
        return {pointer, pointer};
    }

    // ---- Making and assigning

    void makeFromCText()
    {
        Argument const argument = someArgument();
        text() = argument.pointer;
        model() = Model::exact(argument.bytes);
    }

    void makeFromView()
    {
        std::string const bytes = someBytes();
        text() = KS_String(bytes);
        model() = Model::exact(bytes);
    }

    void assignPartOfItself()
    {
        unsigned int const start = input_.ConsumeIntegralInRange<unsigned int>(0, model().length());
        unsigned int const length = someIndex();
        text() = std::string_view(text()).substr(start, length);
        model() = Model::exact(model().bytes.substr(start, length));
    }

    void assignCopy()
    {
        text() = std::as_const(otherText());
        if (target_ != other_) model() = Model::exact(otherModel().bytes);
    }

    void assignMoved()
    {
        text() = std::move(otherText());
        if (target_ == other_) return;
        model() = otherModel();
        otherModel() = {"", 0};
    }

    void copyAndMove()
    {
        KS_String const copy(text());
        expectExact(copy, model().bytes);
        Model const before = model();
        KS_String moved(std::move(text()));
        expectEqual(moved, before);
        expectEqual(text(), {"", 0});
        if (input_.ConsumeBool())
            text().swap(moved);
        else
            model() = {"", 0};
    }

    void swap()
    {
        text().swap(otherText());
        std::swap(model(), otherModel());
    }

    void becomeDefault()
    {
        text() = KS_String();
        model() = Model();
    }

    // ---- Changing

    void appendText()
    {
        text() += otherText();
        model().append(std::string(otherModel().bytes));
    }

    void appendCText()
    {
        Argument const argument = someArgument();
        text() += argument.pointer;
        model().append(argument.bytes);
    }

    void appendByte()
    {
        unsigned int const bytes = input_.ConsumeIntegralInRange<unsigned int>(1, 20);
        for (unsigned int i = 0; i < bytes; ++i)
        {
            char const byte = input_.ConsumeIntegral<char>();
            text() += byte;
            if (model().size() == model().capacity) model().capacity += model().capacity / 8 + 4;
            model().append(std::string(1, byte));
        }
    }

    void changeByte()
    {
        if (model().bytes.empty()) return;
        unsigned int const index = input_.ConsumeIntegralInRange<unsigned int>(0, model().length() - 1);
        char const byte = input_.ConsumeIntegral<char>();
        text()[index] = byte;
        model().bytes[index] = byte;
        FUZZ_EXPECT(std::as_const(text())[index] == byte);
        FUZZ_EXPECT(std::as_const(text())[model().length()] == '\0');
    }

    void replace()
    {
        Argument from = someArgument();
        std::string const keptFrom = from.bytes; // a second argument of its own takes the first one's place
        if (from.pointer == kept_.c_str()) from.pointer = keptFrom.c_str();
        Argument const to = someArgument();
        if (longestReplacement(keptFrom, to.bytes) > longestText) return;
        bool const replaced = text().replace(from.pointer, to.pointer);
        std::string expected = model().bytes;
        FUZZ_EXPECT(replaced == replaceAll(expected, keptFrom, to.bytes));
        if (replaced) model().assign(expected);
    }

    std::size_t longestReplacement(std::string const& from, std::string const& to) const
    {
        std::size_t const length = models_[target_].bytes.size();
        return length + (from.empty() ? 0 : length / from.size() * to.size());
    }

    void reserve()
    {
        unsigned int const sizes[] = {0, 1, model().length(), model().length() + 1, model().length() + 2};
        unsigned int const capacity = input_.ConsumeBool()
                                          ? input_.PickValueInArray(sizes)
                                          : input_.ConsumeIntegralInRange<unsigned int>(0, 5000);
        bool const keep = input_.ConsumeBool();
        text().reserve(capacity, keep);
        model().capacity = capacity;
        model().bytes.resize(keep && capacity != 0 ? std::min<std::size_t>(model().bytes.size(), capacity - 1)
                                                   : 0);
    }

    void format()
    {
        std::string const expected = formatted([this](auto... arguments) { text().format(arguments...); });
        model().assign(expected);
    }

    void appendFormat()
    {
        std::string const expected =
            formatted([this](auto... arguments) { text().appendFormat(arguments...); });
        model().append(expected);
    }

    /// Calls the operation with a format and its arguments and returns what `printf` makes of them.
    template <class Operation>
    std::string formatted(Operation operation)
    {
        Argument const argument = someArgument();
        char const* const text = argument.pointer != nullptr ? argument.pointer : "";
        int const number = input_.ConsumeIntegral<int>();
        // Around the length that is formatted without touching the heap.
        int const width = input_.ConsumeIntegralInRange<int>(240, 270);
        auto const both = [&](auto... arguments)
        {
            std::string expected(static_cast<std::size_t>(std::snprintf(nullptr, 0, arguments...)), '\0');
            std::snprintf(expected.data(), expected.size() + 1, arguments...);
            operation(arguments...);
            return expected;
        };
        switch (input_.ConsumeIntegralInRange(0, 5))
        {
        case 0:
            return both("%s", text);
        case 1:
            return both("%s.%s", text, text);
        case 2:
            return both("%d%%%c%s", number, static_cast<char>(number), text);
        case 3:
            return both("%0*d", width, number);
        case 4:
            return both("%-*s|", width, text);
        default:
            return both("%.3f%x", static_cast<double>(number) / 7.0, static_cast<unsigned int>(number));
        }
    }

    // ---- Parts and copies

    void cut()
    {
        unsigned int const start = someIndex();
        unsigned int const length = someIndex();
        std::string const rest = start < model().length() ? model().bytes.substr(start) : std::string();
        expectExact(text().left(length), model().bytes.substr(0, length));
        expectExact(text().mid(start, length), rest.substr(0, length));
        expectExact(text().mid(start), rest);
    }

    void joinIntoNewText()
    {
        Argument const argument = someArgument();
        expectExact(text() + otherText(), model().bytes + otherModel().bytes);
        expectExact(text() + argument.pointer, model().bytes + argument.bytes);
        expectExact(KS_String::concatenated({text(), otherText(), argument.bytes, text()}),
                    model().bytes + otherModel().bytes + argument.bytes + model().bytes);
        expectExact(KS_String::concatenated({}), "");
    }

    void lower()
    {
        std::string lowered = model().bytes;
        for (char& byte : lowered) byte = static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
        expectExact(text().toLower(), lowered);
    }

    void convert()
    {
        FUZZ_EXPECT(std::string(text()) == model().bytes);
        expectExact(KS_String(std::string(text())), model().bytes);
    }

    // ---- Searching and comparing

    void find()
    {
        char const wanted = input_.ConsumeBool() && !model().bytes.empty()
                                ? model().bytes[someIndex() % model().length()]
                                : input_.ConsumeIntegral<char>();
        std::string const searched = upToNul(model().bytes) + '\0';
        FUZZ_EXPECT(text().find(wanted) == static_cast<unsigned int>(searched.find(wanted)));
        FUZZ_EXPECT(text().findLast(wanted) == static_cast<unsigned int>(searched.rfind(wanted)));
    }

    void startsWith()
    {
        KS_String const prefix = text().left(someIndex());
        FUZZ_EXPECT(text().startsWith(prefix));
        FUZZ_EXPECT(text().startsWith(otherText()) ==
                    upToNul(model().bytes).starts_with(upToNul(otherModel().bytes)));
    }

    void compare()
    {
        KS_String const& a = text();
        KS_String const& b = otherText();
        int const order = compared(model().bytes, otherModel().bytes);
        FUZZ_EXPECT((a == b) == (order == 0));
        FUZZ_EXPECT((a != b) == (order != 0));
        FUZZ_EXPECT((a < b) == (order < 0));
        FUZZ_EXPECT((a > b) == (order > 0));
        FUZZ_EXPECT((a <= b) == (order <= 0));
        FUZZ_EXPECT((a >= b) == (order >= 0));
        expectComparesAs(order, std::string_view(otherModel().bytes));
        expectComparesAs(order, b.c_str());
        Argument const argument = someArgument();
        expectComparesAs(compared(model().bytes, argument.bytes), argument.pointer);
    }

    template <class Other>
    void expectComparesAs(int order, Other other)
    {
        FUZZ_EXPECT((text() == other) == (order == 0));
        FUZZ_EXPECT((other == text()) == (order == 0));
        FUZZ_EXPECT(sign(text() <=> other) == order);
        FUZZ_EXPECT(sign(other <=> text()) == -order);
    }

    // ---- The stream form

    /// Around the sizes of the buffer and of the pieces in which a text is read.
    unsigned int someCount()
    {
        unsigned int const counts[] = {0,
                                       1,
                                       model().capacity - 1,
                                       model().capacity,
                                       model().capacity + 1,
                                       65535,
                                       65536,
                                       65537,
                                       131072,
                                       131073,
                                       0x80000000u,
                                       npos};
        return input_.ConsumeBool() ? input_.PickValueInArray(counts)
                                    : input_.ConsumeIntegralInRange<unsigned int>(0, 300);
    }

    void read()
    {
        CountedBytes stream;
        if (input_.ConsumeIntegralInRange(0, 9) != 0) stream.claimed = someCount();
        unsigned int const wanted = stream.claimed.value_or(0);
        std::string const end = someBytes();
        bool const cut = wanted > longestText / 2 || input_.ConsumeIntegralInRange(0, 3) == 0;
        stream.bytes.assign(cut ? input_.ConsumeIntegralInRange<std::size_t>(
                                      0, std::min<std::size_t>(wanted, longestText / 2))
                                : wanted,
                            'x');
        std::size_t const tail = std::min(end.size(), stream.bytes.size());
        stream.bytes.replace(stream.bytes.size() - tail, tail, end, 0, tail);

        bool const whole = stream.claimed && stream.bytes.size() >= wanted;
        FUZZ_EXPECT(text().read(stream) == whole);
        if (!whole || wanted == 0)
            model().becomeEmpty();
        else
            takeRead(stream.bytes.substr(0, wanted));
    }

    void takeRead(std::string bytes)
    {
        unsigned int const arrived = static_cast<unsigned int>(bytes.size());
        if (bytes.back() == '\0') bytes.pop_back();
        model().capacity = std::max(model().capacity, arrived);
        model().assign(std::move(bytes));
    }

    void write()
    {
        CountedBytes stream;
        std::size_t const needed = 4 + model().bytes.size() + 1;
        stream.room = input_.ConsumeBool() ? needed : input_.ConsumeIntegralInRange<std::size_t>(0, needed);
        bool const fits = stream.room >= needed;
        FUZZ_EXPECT(text().write(stream) == fits);
        if (!fits) return;
        FUZZ_EXPECT(stream.claimed == model().length() + 1);
        FUZZ_EXPECT(stream.bytes == model().bytes + '\0');
        KS_String again;
        FUZZ_EXPECT(again.read(stream));
        expectExact(again, model().bytes);
    }

    static constexpr void (Texts::*operations[])() = {
        &Texts::makeFromCText, &Texts::makeFromView,  &Texts::assignPartOfItself,
        &Texts::assignCopy,    &Texts::assignMoved,   &Texts::copyAndMove,
        &Texts::swap,          &Texts::becomeDefault, &Texts::appendText,
        &Texts::appendCText,   &Texts::appendByte,    &Texts::changeByte,
        &Texts::replace,       &Texts::reserve,       &Texts::format,
        &Texts::appendFormat,  &Texts::cut,           &Texts::joinIntoNewText,
        &Texts::lower,         &Texts::convert,       &Texts::find,
        &Texts::startsWith,    &Texts::compare,       &Texts::read,
        &Texts::write};

    FuzzedDataProvider& input_;
    std::array<KS_String, count> texts_;
    std::array<Model, count> models_;
    std::size_t target_ = 0;
    std::size_t other_ = 0;
    std::string kept_; // what the newest argument of its own points into
};

} // namespace

} // namespace kestrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    kestrel::fuzz::Texts(input).run();
    return 0;
}
