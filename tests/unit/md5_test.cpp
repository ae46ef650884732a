// md5_test.cpp - digests against published vectors and against an independent tool's results.
#include "base/md5.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace
{

std::string digest_of(std::string_view bytes)
{
    char hex[33] = {};
    md5_hex(bytes, hex);
    EXPECT_EQ(hex[32], '\0');
    return hex;
}

TEST(md5, gives_the_published_digests)
{
    const struct {
        std::string_view text;
        const char* digest;
    } vectors[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const auto& row : vectors)
        EXPECT_EQ(digest_of(row.text), row.digest) << row.text;
}

TEST(md5, pads_correctly_at_every_length_around_a_block_border)
{
    const struct {
        std::size_t length;
        const char* digest; // of this many letters x
    } vectors[] = {
        {1, "9dd4e461268c8034f5c8564e155c67a6"},    {54, "61ea0974c662328da964d977a8253873"},
        {55, "04364420e25c512fd958a70738aa8f72"},   {56, "668a72d5ba17f08e62dabcafad6db14b"},
        {57, "693037871c4a9d3d8685018905cb530a"},   {63, "7dc2ca208106a2f703567bdff99d8981"},
        {64, "c1bb4f81d892b2d57947682aeb252456"},   {65, "1bc932052302d074bdec39795fe00cf6"},
        {118, "c4f72b17b220485eb076ff8dac35e70a"},  {119, "ab347a5f68c8a443cfcddc633f12c24f"},
        {120, "fb98667f98096de92620b64f46e1c5b5"},  {127, "a0b28c1da68705c2ff883fe279b72753"},
        {128, "d69cb61a6ee87200676eb0d4b90edbcb"},  {129, "3926841d393c00c3f36260e5ace10dc1"},
        {1000, "398533d48111e9f664b1f64cb10c4b63"},
    };
    for (const auto& row : vectors)
        EXPECT_EQ(digest_of(std::string(row.length, 'x')), row.digest) << row.length;
}

TEST(md5, digests_every_byte_value)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    EXPECT_EQ(digest_of(all), "e2c865db4162bed963bfaa9ef6ac18f0");
}

TEST(md5, accepts_a_view_of_nothing)
{
    EXPECT_EQ(digest_of(std::string_view()), "d41d8cd98f00b204e9800998ecf8427e");
}

} // namespace
