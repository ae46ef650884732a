// soak_traffic.cpp - see soak_traffic.hpp.
#include "soak/soak_traffic.hpp"

#include "e2e/network_session.hpp"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace
{

constexpr std::uint32_t greeting_kind = 41;

struct side_kind {
    std::uint32_t kind;
    const char* text;
};

constexpr side_kind side_kinds[] = {
    {5, "."},
    {25, "on"},
    {26, "off"},
    {27, "replay"},
    {35, "added"},
    {36, "refused"},
    {64, "one line of text"},
    {64, "two lines\n\nof text"},
    {71, "started"},
    {72, "busy"},
    {73, "empty"},
    {74, "100\t400"},
    {76, "blocked"},
    {78, "done"},
    {79, "failed"},
    {82, "accepted"},
    {83, "refused"},
    {85, "who is there?"},
    {86, "known"},
    {87, "unknown"},
    {90, "first\nsecond\nthird\nfourth\nfifth"},
    {103, "a notice that is long enough to be cut at the frame of a status pane of eighty columns"},
    {106, "not allowed"},
    {108, "an error"},
    {149, "still here"},
    {153, "90061\t12\tx"},
    {9, ""},
    {7777, "a kind that nobody knows"},
};

constexpr std::uint32_t close_kinds[] = {3, 100, 102};
constexpr std::uint32_t box_kinds[] = {greeting_kind, 89, 205};

std::string format_number(const char* format, std::int64_t number)
{
    char text[40];
    std::snprintf(text, sizeof text, format, static_cast<long>(number));
    return text;
}

acars_message make_transmission(int server, std::int64_t number)
{
    std::minstd_rand dice(static_cast<unsigned>(server * 7919L + number % 1'000'003 + 1));
    dice.discard(2);
    acars_message message{
        .registration = format_number("S%03ld", server),
        .number = format_number("%09ld", number),
    };
    const auto chance = dice() % 8;
    if (chance < 5) {
        const std::size_t length = chance == 0 ? 500 : 20 + dice() % 150;
        for (std::size_t at = 0; at < length; ++at)
            message.content += at % 60 == 59 && at + 1 < length
                                   ? '\n'
                                   : static_cast<char>('A' + (at + chance) % 26);
    }
    if (chance % 2 == 0)
        message.contacts = "12 contacts with this aircraft";
    if (chance % 3 == 0)
        message.daily_flights = std::to_string(chance + 3);
    return message;
}

} // namespace

int number_from(std::mt19937& dice, int least, int most)
{
    return std::uniform_int_distribution<int>{least, most}(dice);
}

std::string transmission_text(int server, std::int64_t number)
{
    return text_of(make_transmission(server, number));
}

server_packet transmission_packet(int server, std::int64_t number)
{
    const std::string document = document_of(make_transmission(server, number));
    return number % 2 == 0 ? plain_packet(document) : compressed_packet(document);
}

server_packet greeting_packet(int server, bool needs_password)
{
    return capabilities_packet(
        "<Version>1.2.3</Version><ServerUUID>" + format_number("server-%ld", server) +
        "</ServerUUID><Mailing>1</Mailing><DBModify>1</DBModify><Reports>1</Reports>"
        "<Pager>1</Pager>" +
        (needs_password ? "<NeedAuth>1</NeedAuth>" : ""));
}

server_packet side_packet(std::mt19937& dice)
{
    const int at = number_from(dice, 0, static_cast<int>(std::size(side_kinds)) - 1);
    return {.kind = side_kinds[at].kind, .payload = side_kinds[at].text, .param1 = 25};
}

server_packet wild_packet(std::mt19937& dice)
{
    if (number_from(dice, 0, 400) == 0)
        return {.kind = close_kinds[number_from(dice, 0, 2)], .payload = "bye"};
    server_packet packet{.kind = static_cast<std::uint32_t>(number_from(dice, 0, 220)),
                         .extra = static_cast<std::uint16_t>(number_from(dice, 0, 3000))};
    if (std::ranges::find(box_kinds, packet.kind) != std::end(box_kinds) ||
        std::ranges::find(close_kinds, packet.kind) != std::end(close_kinds))
        packet.kind = 40;
    const int length =
        number_from(dice, 0, 3) == 0 ? number_from(dice, 0, 4096) : number_from(dice, 0, 200);
    packet.payload.resize(static_cast<std::size_t>(length));
    for (char& byte : packet.payload)
        byte = static_cast<char>(number_from(dice, 0, 255));
    return packet;
}
