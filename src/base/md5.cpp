// md5.cpp - the MD5 digest of RFC 1321, with that document's names for the four words.
#include "base/md5.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace
{

constexpr std::size_t block_size = 64;
constexpr std::size_t length_size = 8; // bytes at the end of the last block

/// The whole parts of 2^32 times the absolute sines of 1 to 64.
constexpr std::uint32_t sines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

/// Bits to rotate by, for the four steps that each of the four rounds repeats.
constexpr int rotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

using digest_words = std::array<std::uint32_t, 4>;

std::uint32_t read_word(const unsigned char* bytes)
{
    return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

std::uint32_t mix(unsigned round, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    switch (round) {
    case 0:
        return (b & c) | (~b & d);
    case 1:
        return (b & d) | (c & ~d);
    case 2:
        return b ^ c ^ d;
    default:
        return c ^ (b | ~d);
    }
}

/// The number of the block's word that a step adds.
std::size_t choose_word(unsigned round, unsigned step)
{
    constexpr std::size_t strides[4] = {1, 5, 3, 7};
    constexpr std::size_t starts[4] = {0, 1, 5, 0};
    return (starts[round] + strides[round] * step) % 16;
}

void add_block(digest_words& words, const unsigned char* block)
{
    auto [a, b, c, d] = words;
    for (unsigned step = 0; step < 64; ++step) {
        const unsigned round = step / 16;
        const std::uint32_t sum =
            a + mix(round, b, c, d) + sines[step] + read_word(block + 4 * choose_word(round, step));
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, rotations[round][step % 4]);
    }
    words = {words[0] + a, words[1] + b, words[2] + c, words[3] + d};
}

/// Adds what is left after the whole blocks, then the marking bit and the length in bits.
void add_tail(digest_words& words, std::string_view rest, std::uint64_t total_bytes)
{
    unsigned char tail[2 * block_size] = {};
    std::copy(rest.begin(), rest.end(), tail);
    tail[rest.size()] = 0x80;
    const bool one_block = rest.size() < block_size - length_size;
    const std::size_t tail_size = one_block ? block_size : 2 * block_size;
    for (std::size_t i = 0; i < length_size; ++i)
        tail[tail_size - length_size + i] = static_cast<unsigned char>(total_bytes * 8 >> 8 * i);
    for (std::size_t at = 0; at < tail_size; at += block_size)
        add_block(words, tail + at);
}

} // namespace

void md5_hex(std::string_view bytes, char (&hex)[33])
{
    digest_words words = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    std::string_view rest = bytes;
    for (; rest.size() >= block_size; rest.remove_prefix(block_size))
        add_block(words, reinterpret_cast<const unsigned char*>(rest.data()));
    add_tail(words, rest, bytes.size());

    char* digit = hex;
    for (const std::uint32_t word : words) {
        for (int shift = 0; shift < 32; shift += 8) {
            *digit++ = "0123456789abcdef"[word >> (shift + 4) & 0xF];
            *digit++ = "0123456789abcdef"[word >> shift & 0xF];
        }
    }
    *digit = '\0';
}
