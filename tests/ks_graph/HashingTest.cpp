#include <ks_graph/Hashing.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

namespace kestrel::graph::test
{

namespace
{

// The published values of the 64-bit FNV-1a.
TEST(Hashing, OfATextIsTheWellKnownOne)
{
    EXPECT_EQ(hashOf(std::string_view("")), 0xCBF29CE484222325u);
    EXPECT_EQ(hashOf(std::string_view("a")), 0xAF63DC4C8601EC8Cu);
    EXPECT_EQ(hashOf(std::string_view("foobar")), 0x85944171F73967E8u);
}

TEST(Hashing, OfATextContinuesThatOfItsBeginning)
{
    EXPECT_EQ(continuedHash(hashOf(std::string_view("root.")), "node\xFF"),
              hashOf(std::string_view("root.node\xFF")));
}

// A table takes some bits of the hash.
TEST(Hashing, OfNumbersThatDifferInOneBitDifferInTheUpperHalfAndInTheLowerOne)
{
    for (unsigned int half : {0u, 32u})
    {
        SCOPED_TRACE(half);
        std::set<std::uint32_t> seen{static_cast<std::uint32_t>(spread(0) >> half)};
        for (unsigned int bit = 0; bit < 64; ++bit)
        {
            std::uint64_t const hash = spread(std::uint64_t{1} << bit);
            EXPECT_TRUE(seen.insert(static_cast<std::uint32_t>(hash >> half)).second) << bit;
        }
    }
}

} // namespace
} // namespace kestrel::graph::test
