// fuzz_input.hpp - cuts a fuzzer's bytes into numbers and texts.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class fuzz_input
{
public:
    fuzz_input(const std::uint8_t* data, std::size_t size)
        : left(reinterpret_cast<const char*>(data), size)
    {
    }
    bool is_empty() const
    {
        return left.empty();
    }
    /// The next byte; 0 if none is left.
    unsigned byte()
    {
        const std::string taken = bytes(1);
        return taken.empty() ? 0 : static_cast<unsigned char>(taken[0]);
    }
    /// A number from 0 to `most`, which is at most 65535: one byte if that is enough, else two.
    unsigned number(unsigned most)
    {
        const unsigned low = byte();
        return (most < 256 ? low : low | byte() << 8) % (most + 1);
    }
    bool flag()
    {
        return (byte() & 1) != 0;
    }
    /// The next bytes; fewer if fewer are left.
    std::string bytes(std::size_t count)
    {
        std::string taken{left.substr(0, count)};
        left.remove_prefix(taken.size());
        return taken;
    }
    /// The text before the next NUL, which is dropped, or else all that is left.
    std::string text()
    {
        std::string taken = bytes(std::min(left.find('\0'), left.size()));
        left.remove_prefix(left.empty() ? 0 : 1);
        return taken;
    }
    /// A text that fits in `most` bytes; a longer one is cut.
    std::string text(std::size_t most)
    {
        return text().substr(0, most);
    }
    std::string rest()
    {
        return bytes(left.size());
    }

private:
    std::string_view left;
};
