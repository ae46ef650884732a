// session_packets.cpp - see session_packets.hpp.
#include "sessions/session_packets.hpp"

#include "e2e/network_session.hpp"
#include "support/compressed.hpp"
#include "support/server_packet.hpp"

#include <algorithm>
#include <cstdint>

namespace
{

constexpr int max_kind = 260;
constexpr int max_payload_bytes = 4096;
constexpr int max_length = 65'535;
constexpr std::size_t max_list_bytes = 30'000;
constexpr std::uint32_t report_header_kind = 74;
constexpr std::uint32_t report_piece_kind = 205;

/// What a terminal would obey, what printf would obey, what XML would obey, and plain words.
constexpr const char* words[] = {"\033]0;OWNED\a",
                                 "\033[31337m",
                                 "\033c",
                                 "\033[6n",
                                 "\033P1;2q#OWNED\033\\",
                                 "\23331337m",
                                 "\2350;OWNED",
                                 "\016",
                                 "\005",
                                 "\b\b\b\b",
                                 "\v\f\x7F",
                                 "%s%n%*d",
                                 "%",
                                 "%]",
                                 "\t",
                                 "\n",
                                 "\n\n",
                                 "\r",
                                 "<",
                                 ">",
                                 "</tovrik>",
                                 "<ACARS>",
                                 "<>",
                                 "?>",
                                 "&amp;",
                                 "~",
                                 "^",
                                 "\xE9\xFC",
                                 "LH400",
                                 "Frankfurt, Germany",
                                 "0",
                                 "1",
                                 "-1",
                                 "99999999999",
                                 "DROP TABLE",
                                 " ",
                                 "a word and another one, and one more for a long line of text"};

std::string make_text(session_dice& dice, int most_words = 6)
{
    std::string text;
    for (int left = dice.number(1, most_words); left > 0; --left)
        text += dice.once_in(12) ? dice.noise(dice.number(1, 30)) : dice.any_of(words);
    if (dice.once_in(25))
        text.resize(static_cast<std::size_t>(dice.number(1, max_payload_bytes)), 'W');
    return text;
}

/// An ordinary value, or now and then any text.
std::string make_value(session_dice& dice, const char* usual)
{
    return dice.once_in(5) ? make_text(dice) : usual;
}

std::string make_element(const std::string& name, const std::string& value)
{
    return std::string{}.append("<").append(name).append(">").append(value).append("</").append(
               name) +
           ">";
}

std::string make_document(session_dice& dice)
{
    return document_of({.registration = make_value(dice, "D-AIQA"),
                        .aircraft = make_value(dice, "A320"),
                        .flight = make_value(dice, "LH0400"),
                        .operator_name = make_value(dice, "Lufthansa"),
                        .content = dice.once_in(3) ? "" : make_value(dice, "SOME WORDS\nIN LINES"),
                        .contacts = dice.once_in(2) ? "" : make_value(dice, "12"),
                        .daily_flights = dice.once_in(2) ? "" : make_value(dice, "345")});
}

std::string make_capabilities(session_dice& dice, int server)
{
    std::string elements = make_element("Version", make_value(dice, "1.2.3"));
    if (!dice.once_in(6))
        elements +=
            make_element("ServerUUID", make_value(dice, "server-") + std::to_string(server));
    for (const char* name : {"Mailing", "DBModify", "Reports", "Pager"})
        if (!dice.once_in(5))
            elements += make_element(name, make_value(dice, "1"));
    for (const char* name : {"NeedAuth", "CRCCheck", "ModifyFlags", "Unknown"})
        if (dice.once_in(5))
            elements += make_element(name, make_value(dice, "1"));
    return capabilities_packet(elements).payload;
}

std::string make_pager_list(session_dice& dice)
{
    std::string list;
    for (int left = dice.number(0, dice.once_in(4) ? 100 : 4); left >= 0; --left)
        list += make_value(dice, "D-AIQA\tFRA\tLH0400") + (dice.once_in(3) ? "~^" : "~");
    list.resize(std::min<std::size_t>(list.size(), max_list_bytes));
    return list;
}

std::string make_uptime(session_dice& dice)
{
    return make_value(dice, "90061") + "\t" + make_value(dice, "12") + "\t" + make_value(dice, "x");
}

constexpr std::uint32_t bare_kinds[] = {5,  25, 26, 27, 35, 36, 71, 72,  73, 76,
                                        78, 79, 82, 83, 85, 86, 87, 106, 149};
constexpr std::uint32_t text_kinds[] = {64, 90, 103, 108};
constexpr std::uint32_t closing_kinds[] = {3, 100, 102};

server_packet make_bare_packet(session_dice& dice)
{
    return {.kind = dice.any_of(bare_kinds),
            .payload = dice.once_in(4) ? make_text(dice) : "^",
            .param1 = static_cast<std::uint16_t>(dice.number(0, max_length)),
            .param2 = static_cast<std::uint16_t>(dice.number(0, 3))};
}

server_packet make_text_packet(session_dice& dice)
{
    return {.kind = dice.any_of(text_kinds), .payload = make_text(dice, 12)};
}

server_packet make_plain_transmission(session_dice& dice)
{
    return plain_packet(make_document(dice));
}

server_packet make_compressed_transmission(session_dice& dice)
{
    return compressed_packet(make_document(dice), dice.once_in(6) ? dice.number(0, 3000) : -1);
}

/// Of any kind, with any payload.
server_packet make_any_packet(session_dice& dice)
{
    return {.kind = static_cast<std::uint32_t>(dice.number(0, max_kind)),
            .payload = dice.once_in(2) ? make_text(dice) : dice.noise(dice.number(1, 300)),
            .extra = static_cast<std::uint16_t>(dice.once_in(2) ? 0 : dice.number(0, 3000))};
}

server_packet make_service_packet(session_dice& dice)
{
    switch (dice.number(1, 3)) {
    case 1:
        return {.kind = 89, .payload = make_pager_list(dice)};
    case 2:
        return {.kind = 153, .payload = make_uptime(dice)};
    default:
        return {.kind = 41, .payload = make_capabilities(dice, dice.number(1, 3))};
    }
}

server_packet make_packet(session_dice& dice)
{
    using maker = server_packet (*)(session_dice&);
    constexpr maker makers[] = {make_plain_transmission,
                                make_plain_transmission,
                                make_compressed_transmission,
                                make_compressed_transmission,
                                make_text_packet,
                                make_text_packet,
                                make_bare_packet,
                                make_bare_packet,
                                make_service_packet,
                                make_any_packet};
    if (dice.once_in(60))
        return {.kind = dice.any_of(closing_kinds), .payload = "Good Bye"};
    return dice.any_of(makers)(dice);
}

/// The packet with a slip in its payload or in a field that says how to read it.
server_packet add_slip(session_dice& dice, server_packet packet)
{
    const int place = dice.number(0, std::max(0, static_cast<int>(packet.payload.size()) - 1));
    switch (dice.number(1, 5)) {
    case 1:
        packet.payload.resize(static_cast<std::size_t>(place));
        break;
    case 2:
        packet.payload.insert(static_cast<std::size_t>(place), dice.noise(dice.number(1, 4)));
        break;
    case 3:
        packet.extra = static_cast<std::uint16_t>(dice.number(0, max_length));
        break;
    case 4:
        packet.kind = static_cast<std::uint32_t>(dice.number(0, max_kind));
        break;
    default:
        packet.payload += packet.payload;
    }
    return packet;
}

/// The header announces another length than there is.
std::string make_lying_packet(session_dice& dice)
{
    const server_packet packet = make_packet(dice);
    const int length = dice.once_in(2)
                           ? static_cast<int>(packet.payload.size()) + dice.number(-9, 9)
                           : dice.number(0, max_length);
    return header_bytes(packet, static_cast<std::uint16_t>(std::max(0, length))) + packet.payload;
}

/// A report in its packets, sometimes not whole.
std::vector<std::string> make_report(session_dice& dice)
{
    std::string text;
    for (int left = dice.number(0, 400); left >= 0; --left)
        text += make_text(dice, 1);
    const std::string packed = compressed(text);
    std::vector<std::string> packets;
    const std::string total = std::to_string(packed.size() + (dice.once_in(6) ? 100 : 0));
    const std::string size = std::to_string(text.size() / (dice.once_in(6) ? 100 : 1));
    packets.push_back(packet_bytes(
        {.kind = report_header_kind, .payload = total + "\t" + make_value(dice, size.c_str())}));
    for (std::size_t at = 0; at < packed.size() && !dice.once_in(30);) {
        const auto length = static_cast<std::size_t>(dice.number(1, max_payload_bytes));
        packets.push_back(
            packet_bytes({.kind = report_piece_kind, .payload = packed.substr(at, length)}));
        at += length;
    }
    return packets;
}

std::vector<std::string> cut(session_dice& dice, const std::string& bytes)
{
    const auto place = static_cast<std::size_t>(dice.number(1, static_cast<int>(bytes.size())));
    return {bytes.substr(0, place), bytes.substr(place)};
}

std::vector<std::string> make_whole_packet(session_dice& dice)
{
    const server_packet packet = make_packet(dice);
    return {packet_bytes(dice.once_in(6) ? add_slip(dice, packet) : packet)};
}

std::vector<std::string> make_two_pieces(session_dice& dice)
{
    return cut(dice, packet_bytes(make_packet(dice)));
}

/// After this, and after the next two, the client may never find a packet's beginning again.
std::vector<std::string> make_first_piece(session_dice& dice)
{
    return {make_two_pieces(dice).front()};
}

std::vector<std::string> make_lie(session_dice& dice)
{
    return {make_lying_packet(dice)};
}

std::vector<std::string> make_noise(session_dice& dice)
{
    return {dice.noise(dice.number(1, 5000))};
}

struct traffic {
    int odds;
    std::vector<std::string> (*make)(session_dice&);
};

constexpr traffic all_traffic[] = {{50, make_whole_packet}, {4, make_two_pieces}, {3, make_report},
                                   {1, make_first_piece},   {1, make_lie},        {1, make_noise}};

constexpr const char* directory_names[] = {"listed", "also </Alias> listed", ""};

} // namespace

std::string session_greeting(session_dice& dice, int server)
{
    return packet_bytes({.kind = 41, .payload = make_capabilities(dice, server)});
}

std::vector<std::string> session_traffic(session_dice& dice)
{
    return dice.by_odds(all_traffic).make(dice);
}

std::string session_directory_answer(session_dice& dice)
{
    std::string answer = dice.once_in(8) ? "" : "HTTP/1.0 200 OK\r\n\r\n";
    for (int lines = dice.number(0, 3); lines > 0; --lines) {
        if (dice.once_in(4)) {
            answer += make_text(dice) + "\n";
            continue;
        }
        // Host and alias choose the folder of a log, which must stay within the test's own.
        answer += "127.0.1." + std::to_string(dice.number(1, 9)) + "\t" + make_value(dice, "1") +
                  "\tx\t" + make_value(dice, "Berlin") + "\t" + make_text(dice) + "\tx\t" +
                  dice.any_of(directory_names) + "\tx\tx\n";
    }
    return answer;
}
