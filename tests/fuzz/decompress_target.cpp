// decompress_target.cpp - inflating, beside zlib's own stream with a buffer that is always enough.
#include "base/limits.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/property.hpp"
#include "net/decompression.hpp"
#include "support/compressed.hpp"

#include <cstring>
#include <optional>
#include <zlib.h>

namespace
{

constexpr std::size_t max_capacity = 4UL * 65'535;

/// The text in zlib data; none if the data are broken, cut off, or longer than any request could
/// ask for.
std::optional<std::string> inflate_plainly(const std::string& data)
{
    static char text[max_capacity + 1]; // large, and only written parts of it are read
    z_stream stream = {};
    stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(data.data()));
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(text);
    stream.avail_out = sizeof text;
    require(inflateInit(&stream) == Z_OK, "zlib can be used");
    const int result = inflate(&stream, Z_FINISH);
    const std::size_t length = stream.total_out;
    inflateEnd(&stream);
    return result == Z_STREAM_END ? std::optional{std::string(text, length)} : std::nullopt;
}

/// Arbitrary data, or well-formed data, perhaps with some bytes changed and the end cut off.
std::string make_data(fuzz_input& input)
{
    if (input.flag())
        return input.rest();
    const unsigned repeats = 1 + input.number(40);
    const unsigned changes = input.number(2);
    const std::string change = input.bytes(2UL * changes);
    const unsigned cut = input.flag() ? input.number(40) : 0;
    std::string text;
    const std::string part = input.rest();
    for (unsigned count = 0; count < repeats; ++count)
        text += part;
    std::string data = compressed(text);
    for (std::size_t at = 0; at + 1 < change.size(); at += 2)
        data[static_cast<unsigned char>(change[at]) % data.size()] = change[at + 1];
    return data.substr(0, data.size() - std::min<std::size_t>(cut, data.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    fuzz_input input{bytes, size};
    // Mostly small: large buffers are slow to allocate.
    const std::uint32_t size_hint = input.number(7) > 0 ? input.number(255) : input.number(65'535);
    const std::string data = make_data(input);
    const heap_bytes text = decompress_packet(reinterpret_cast<const unsigned char*>(data.data()),
                                              size_hint, data.size());
    const std::size_t capacity = decompression_factor * size_hint;
    const std::optional<std::string> expected = inflate_plainly(data);
    // zlib itself looks one byte ahead where the buffer has no space at all.
    const bool is_edge = capacity == 0 && expected.has_value() && expected->size() == 1;
    const bool fits = expected.has_value() && expected->size() <= capacity;
    require((text != nullptr) == fits || is_edge, "data that fit are inflated, and no others");
    if (text != nullptr && fits) {
        require(std::memcmp(text.get(), expected->data(), expected->size()) == 0,
                "what was deflated comes back");
        require(text.get()[expected->size()] == 0, "the text is terminated");
    }
    return 0;
}
