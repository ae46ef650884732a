// packet_input_target.cpp - a stream of packets cut into any pieces, beside the receiver's model.
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "models/receiver_pair.hpp"

namespace
{

constexpr std::size_t max_run = 9'000;
constexpr const char* taken = "the socket takes what is sent";

void receive(receiver_pair& both)
{
    const char* broken = both.receive();
    require(broken == nullptr, broken);
}

std::string make_packet(fuzz_input& input)
{
    const unsigned kind = input.flag() ? 40U + input.number(165) : input.number(65'535) << 12;
    const unsigned length = input.number(65'535);
    const unsigned announced = input.flag() ? length : input.number(5'000);
    const unsigned extra = input.flag() ? 0 : input.number(65'535);
    const std::string payload(std::min<std::size_t>(length, max_run),
                              static_cast<char>(input.byte()));
    return wire_packet(kind, announced, extra, payload);
}

void step(receiver_pair& both, fuzz_input& input)
{
    switch (input.number(7)) {
    case 0:
        require(both.feed(make_packet(input)), taken);
        break;
    case 1:
        require(both.feed(std::string(input.number(max_run), static_cast<char>(input.byte()))),
                taken);
        break;
    case 2:
    case 3:
        require(both.feed(input.bytes(input.number(255))), taken);
        break;
    case 4:
        if (input.number(15) == 0)
            both.end();
        break;
    default:
        receive(both);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const world_visit visit;
    fuzz_input input{data, size};
    receiver_pair both;
    while (!input.is_empty())
        step(both, input);
    for (int rounds = 0; rounds < 4; ++rounds)
        receive(both);
    return 0;
}
