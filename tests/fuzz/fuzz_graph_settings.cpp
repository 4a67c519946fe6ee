#include "Expect.h"
#include "GraphSettingList.h"

#include <ks_graph/GraphSettings.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

namespace kestrel::fuzz
{

namespace
{

using Color = Color4<float>;
using FloatPair = Tuple2<float, float>;
using IntPair = Tuple2<int, int>;

// What a value is, bit for bit: a number that is not a number is a value like any other.

std::string bitsOf(bool value)
{
    return value ? "true" : "false";
}

std::string bitsOf(int value)
{
    return std::to_string(value);
}

std::string bitsOf(float value)
{
    return std::to_string(std::bit_cast<std::uint32_t>(value));
}

std::string bitsOf(Color const& value)
{
    return bitsOf(value.red) + ' ' + bitsOf(value.green) + ' ' + bitsOf(value.blue) + ' ' +
           bitsOf(value.alpha);
}

template <class Number>
std::string bitsOf(Tuple2<Number, Number> const& value)
{
    return bitsOf(value.first) + ' ' + bitsOf(value.second);
}

std::string bitsOf(KS_String const& value)
{
    return std::string(value);
}

void take(FuzzedDataProvider& input, bool& value)
{
    value = input.ConsumeBool();
}

void take(FuzzedDataProvider& input, int& value)
{
    value = input.ConsumeIntegral<int>();
}

void take(FuzzedDataProvider& input, float& value)
{
    value = std::bit_cast<float>(input.ConsumeIntegral<std::uint32_t>());
}

void take(FuzzedDataProvider& input, Color& value)
{
    for (float* const component : {&value.red, &value.green, &value.blue, &value.alpha})
        take(input, *component);
}

template <class Number>
void take(FuzzedDataProvider& input, Tuple2<Number, Number>& value)
{
    take(input, value.first);
    take(input, value.second);
}

void take(FuzzedDataProvider& input, KS_String& value)
{
    value = KS_String(input.ConsumeRandomLengthString(100));
}

/// One setting: how it is read as text and how it takes values of the input, by `set` and then by `ref`.
struct Setting
{
    std::string (*get)(graph::GraphSettings const& settings);
    std::string (*set)(graph::GraphSettings& settings, FuzzedDataProvider& input);
};

template <class Value>
std::string take(graph::GraphSettings& settings, void (graph::GraphSettings::*set)(Value const&),
                 Value& (graph::GraphSettings::*ref)(), FuzzedDataProvider& input)
{
    Value value{};
    take(input, value);
    (settings.*set)(value);
    FUZZ_EXPECT(bitsOf((settings.*ref)()) == bitsOf(value));
    take(input, value);
    (settings.*ref)() = value;
    return bitsOf(value);
}

#define SETTING(Type, Name)                                                                                  \
    {[](graph::GraphSettings const& settings) { return bitsOf(settings.get##Name()); },                      \
     [](graph::GraphSettings& settings, FuzzedDataProvider& input)                                           \
     {                                                                                                       \
         return take<Type>(settings, &graph::GraphSettings::set##Name, &graph::GraphSettings::ref##Name,     \
                           input);                                                                           \
     }},
Setting const allSettings[] = {FOR_EACH_GRAPH_SETTING(SETTING)};
#undef SETTING

constexpr std::size_t settingCount = std::size(allSettings);
static_assert(settingCount == 172);

using Values = std::array<std::string, settingCount>;

Values valuesOf(graph::GraphSettings const& settings)
{
    Values values;
    for (std::size_t i = 0; i < settingCount; ++i) values[i] = allSettings[i].get(settings);
    return values;
}

/// Two records and the values that they must hold, and operations on them as the input wants them: each
/// setting keeps its value whatever happens to all the others.
class Records
{
public:
    explicit Records(FuzzedDataProvider& input) : input_(input) {}

    void run()
    {
        while (input_.remaining_bytes() != 0)
        {
            target_ = input_.ConsumeBool();
            (this->*input_.PickValueInArray(operations))();
        }
        for (std::size_t i = 0; i < 2; ++i)
        {
            FUZZ_EXPECT(valuesOf(records_[i]) == values_[i]);
            FUZZ_EXPECT(records_[i].toXml() == "<GraphSettings>\n</GraphSettings>\n");
        }
    }

private:
    static Values const& defaults()
    {
        static Values const values = valuesOf(graph::GraphSettings());
        return values;
    }

    graph::GraphSettings& record() { return records_[target_]; }
    Values& values() { return values_[target_]; }

    void setOne() { set(input_.ConsumeIntegralInRange<std::size_t>(0, settingCount - 1)); }

    void setAll()
    {
        for (std::size_t index = 0; index < settingCount; ++index) set(index);
    }

    void set(std::size_t index)
    {
        values()[index] = allSettings[index].set(record(), input_);
        FUZZ_EXPECT(allSettings[index].get(record()) == values()[index]);
    }

    void initialize()
    {
        record().initialize();
        values() = defaults();
    }

    void assign()
    {
        record() = std::as_const(records_[1 - target_]);
        values() = values_[1 - target_];
    }

    void assignItself()
    {
        graph::GraphSettings const& itself = record();
        record() = itself;
    }

    void copyAndMove()
    {
        graph::GraphSettings copy(record());
        FUZZ_EXPECT(valuesOf(copy) == values());
        graph::GraphSettings moved(std::move(copy));
        record() = std::move(moved);
    }

    static constexpr void (Records::*operations[])() = {
        &Records::setOne, &Records::setOne,       &Records::setAll,     &Records::initialize,
        &Records::assign, &Records::assignItself, &Records::copyAndMove};

    FuzzedDataProvider& input_;
    std::array<graph::GraphSettings, 2> records_;
    std::array<Values, 2> values_{defaults(), defaults()};
    std::size_t target_ = 0;
};

} // namespace

} // namespace kestrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    kestrel::fuzz::Records(input).run();
    return 0;
}
