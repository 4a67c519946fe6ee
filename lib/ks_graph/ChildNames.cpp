#include "ChildNames.h"

#include "Hashing.h"
#include "Names.h"

#include <algorithm>
#include <cctype>

namespace kestrel::graph
{

namespace
{

char lower(unsigned char byte)
{
    return static_cast<char>(std::tolower(byte));
}

std::uint32_t hashWithoutCase(std::string_view name)
{
    std::uint64_t hash = emptyTextHash;
    for (char const byte : name)
    {
        char const folded = lower(static_cast<unsigned char>(byte));
        hash = continuedHash(hash, {&folded, 1});
    }
    return shortHash(hash);
}

// The letters whose other case is not the same everywhere: those above ASCII, and I, which has two in
// Turkish.
bool dependsOnLocale(char byte)
{
    return byte == 'I' || static_cast<unsigned char>(byte) >= 0x80;
}

std::uint64_t lettersOfLocale()
{
    std::uint64_t hash = hashOf("");
    for (unsigned int byte = 0x7F; byte <= 0xFF; ++byte)
    {
        char const folded = lower(static_cast<unsigned char>(byte == 0x7F ? 'I' : byte));
        hash = continuedHash(hash, {&folded, 1});
    }
    return hash;
}

} // namespace

ChildNames::ChildNames() : letters_(lettersOfLocale()) {}

bool ChildNames::isCurrentFor(std::string_view name) const
{
    return std::none_of(name.begin(), name.end(), dependsOnLocale) || lettersOfLocale() == letters_;
}

void ChildNames::insert(GraphNodeBase& child)
{
    children_.insert(hashWithoutCase(cText(child.name_)), child.placeInList_.rank, &child);
}

void ChildNames::erase(GraphNodeBase const& child) noexcept
{
    children_.erase(hashWithoutCase(cText(child.name_)), child.placeInList_.rank);
}

GraphNodeBase* ChildNames::find(KS_String const& name, bool caseSensitive) const
{
    return children_.findFirst(hashWithoutCase(cText(name)),
                               [&](GraphNodeBase const& child)
                               {
                                   return caseSensitive ? cText(child.name_) == cText(name)
                                                        : equalIgnoringCase(cText(child.name_), cText(name));
                               });
}

} // namespace kestrel::graph
