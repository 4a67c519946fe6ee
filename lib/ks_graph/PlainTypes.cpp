#include "PlainTypes.h"

#include <ks_graph/PlainNames.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace kestrel::graph
{

namespace
{

class PlainTypeRegistry
{
public:
    void add(std::type_info const& type)
    {
        std::lock_guard const guard(mutex_);
        if (!contains(type)) types_.push_back(&type);
        for (std::atomic<std::uintptr_t>& answer : answers_) answer.store(0, std::memory_order_relaxed);
    }

    bool isPlain(std::type_info const& type)
    {
        auto const address = reinterpret_cast<std::uintptr_t>(&type);
        std::atomic<std::uintptr_t>& answer = answers_[address / alignof(std::type_info) % answers_.size()];
        std::uintptr_t const known = answer.load(std::memory_order_relaxed);
        if ((known & ~plainBit) == address) return (known & plainBit) != 0;

        std::lock_guard const guard(mutex_);
        bool const isPlain = contains(type);
        answer.store(address | (isPlain ? plainBit : 0), std::memory_order_relaxed);
        return isPlain;
    }

private:
    // The lowest bit of an address is free: a type_info is aligned to more than one byte.
    static constexpr std::uintptr_t plainBit = 1;

    // One type may have several records, one in each module: they are equal.
    bool contains(std::type_info const& type) const
    {
        return std::any_of(types_.begin(), types_.end(),
                           [&type](std::type_info const* known) { return *known == type; });
    }

    std::mutex mutex_;
    std::vector<std::type_info const*> types_;
    // The last answers, by the address of the type's record. A scene asks once for each node that it walks.
    std::array<std::atomic<std::uintptr_t>, 64> answers_{};
};

PlainTypeRegistry& registry()
{
    static PlainTypeRegistry instance;
    return instance;
}

} // namespace

bool hasPlainFullName(GraphNodeBase const& node)
{
    GraphNodeBase const* above = &node;
    while (above != nullptr && isPlain(*above)) above = above->nodeOwner_;
    return above == nullptr;
}

bool isDeclaredPlain(std::type_info const& type)
{
    return registry().isPlain(type);
}

void detail::notePlainNames(std::type_info const& type)
{
    registry().add(type);
}

} // namespace kestrel::graph
