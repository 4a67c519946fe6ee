/// @file
/// Internal: hash values of texts, which can be continued, and of numbers and pointers.
#pragma once

#include <cstdint>
#include <string_view>

namespace kestrel::graph
{

/// The hash of the empty text.
constexpr std::uint64_t emptyTextHash = 0xcbf29ce484222325u;

/// FNV-1a: the hash of "<text><more>" from that of "<text>". So the hash of a full name continues its
/// owner's.
constexpr std::uint64_t continuedHash(std::uint64_t hash, std::string_view more)
{
    for (char const byte : more) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3u;
    return hash;
}

constexpr std::uint64_t hashOf(std::string_view text)
{
    return continuedHash(emptyTextHash, text);
}

/// What the entries of a table keep of a hash: short entries are found sooner, and few texts share half a
/// hash.
constexpr std::uint32_t shortHash(std::uint64_t hash)
{
    return static_cast<std::uint32_t>(hash);
}

/// A text that is looked up, with its hash.
struct HashedText
{
    HashedText(std::string_view looked) : text(looked), hash(hashOf(looked)) {} // NOLINT: a text is one
    HashedText(std::string_view looked, std::uint64_t itsHash) : text(looked), hash(itsHash) {}

    std::string_view text;
    std::uint64_t hash;
};

/// Spreads numbers that differ in a few bits over all of them.
constexpr std::uint64_t spread(std::uint64_t number)
{
    number *= 0x9E3779B97F4A7C15u;
    number ^= number >> 32;
    return number * 0xD6E8FEB86659FD93u;
}

inline std::uint64_t hashOf(void const* pointer)
{
    return spread(reinterpret_cast<std::uintptr_t>(pointer));
}

} // namespace kestrel::graph
