// packet_scenarios.cpp - receiving every kind of packet while allocations fail.
#include "faults/allocation/scenarios.hpp"

#include "support/compressed.hpp"
#include "support/server_packet.hpp"

namespace
{

using packet_list = std::vector<std::string>;

std::string make_packet(std::uint32_t kind, std::string_view payload, std::uint16_t extra = 0)
{
    return packet_bytes({.kind = kind, .payload = std::string{payload}, .extra = extra});
}

/// For the kinds whose payload does not matter.
template <std::uint32_t kind> packet_list make_plain()
{
    return {make_packet(kind, "x")};
}

template <std::uint32_t kind> packet_list make_texts()
{
    return {make_packet(kind, "a line of the server")};
}

template <std::uint32_t kind> packet_list make_several_lines()
{
    return {make_packet(kind, "first line\n\nsecond line\nthird line")};
}

std::string make_document(std::string_view elements)
{
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><tovrik>" + std::string{elements} +
           "</tovrik>";
}

/// A transmission with every element.
std::string make_transmission()
{
    return make_document(
        "<ACARS><ACARSMode>2</ACARSMode><AircraftReg>.D-AIPA</AircraftReg>"
        "<MessageLabel>H1</MessageLabel><BlockID>7</BlockID><MessageNumber>M01A</MessageNumber>"
        "<FlightNumber>LH0123</FlightNumber><MessageDate><Day>05</Day><Month>03</Month>"
        "<Year>2004</Year><Hour>12</Hour><Minute>34</Minute></MessageDate>"
        "<Authorized><MessageContent>POSITION REPORT</MessageContent></Authorized></ACARS>"
        "<Extended><Aircraft>A320</Aircraft><Operator>Lufthansa</Operator></Extended>"
        "<FlightRouting><From>EDDF</From><To>EGLL</To></FlightRouting>"
        "<Contacts>3 contacts with this aircraft</Contacts>"
        "<ContactData><DailyFlights>17</DailyFlights></ContactData>");
}

std::uint16_t find_hint(std::string_view text)
{
    return static_cast<std::uint16_t>(text.size() / 4 + 1);
}

packet_list make_plain_transmission()
{
    return {make_packet(40, make_transmission())};
}

packet_list make_compressed_transmission()
{
    const std::string text = make_transmission();
    return {make_packet(204, compressed(text), find_hint(text))};
}

packet_list make_damaged_transmission()
{
    return {make_packet(204, "no zlib data", 10)};
}

packet_list make_capabilities(std::string_view more)
{
    return {
        make_packet(41, make_document("<Version>1.2.3</Version><ServerUUID>abc-def</ServerUUID>"
                                      "<CRCCheck>1</CRCCheck><Mailing>1</Mailing>"
                                      "<DBModify>1</DBModify><Reports>1</Reports><Pager>1</Pager>" +
                                      std::string{more}))};
}

packet_list make_open_capabilities()
{
    return make_capabilities("");
}

packet_list make_closed_capabilities()
{
    return make_capabilities("<NeedAuth>1</NeedAuth>");
}

std::string make_report_text()
{
    std::string text;
    for (int line = 0; line < 50; ++line)
        text += "a line of a report, number " + std::to_string(line) + '\n';
    return text;
}

packet_list make_report()
{
    const std::string text = make_report_text();
    const std::string bytes = compressed(text);
    const std::size_t half = bytes.size() / 2;
    return {make_packet(74, std::to_string(bytes.size()) + '\t' + std::to_string(text.size())),
            make_packet(205, bytes.substr(0, half)), make_packet(205, bytes.substr(half))};
}

packet_list make_pager_list()
{
    return {make_packet(89, "D-AIPA\tEGLL\tLH0123~^\tEDDF\t^~D-AIQA\t^\tLH0400")};
}

/// The server must know that the password in the configuration is not its own.
void forget_password(client_rig& rig)
{
    rig_send(rig, 0, make_packet(83, "x"));
    rig_poll();
}

} // namespace

bool act_packets(client_rig& rig, const scenario& which)
{
    rig_packets_take(rig, which.keys);
    return true;
}

std::span<const scenario> packet_scenarios()
{
    using enum rig_stage;
    static const scenario table[] = {
        {.name = "packet_3_close",
         .act = act_packets,
         .packets = make_plain<3>,
         .keeps_first = false},
        {.name = "packet_5_tick", .act = act_packets, .packets = make_plain<5>},
        {.name = "packet_25_crc_on", .act = act_packets, .packets = make_plain<25>},
        {.name = "packet_26_crc_off", .act = act_packets, .packets = make_plain<26>},
        {.name = "packet_27_replay", .act = act_packets, .packets = make_plain<27>},
        {.name = "packet_35_update_added", .act = act_packets, .packets = make_plain<35>},
        {.name = "packet_36_update_refused", .act = act_packets, .packets = make_plain<36>},
        {.name = "packet_40_transmission", .act = act_packets, .packets = make_plain_transmission},
        {.name = "packet_41_capabilities", .act = act_packets, .packets = make_open_capabilities},
        {.name = "packet_41_saved_password",
         .act = act_packets,
         .packets = make_closed_capabilities},
        {.name = "packet_41_password",
         .act = act_packets,
         .keys = "secret\n",
         .packets = make_closed_capabilities,
         .prepare = forget_password},
        {.name = "packet_64_server_text", .act = act_packets, .packets = make_several_lines<64>},
        {.name = "packet_71_report_started", .act = act_packets, .packets = make_plain<71>},
        {.name = "packet_72_reports_busy", .act = act_packets, .packets = make_plain<72>},
        {.name = "packet_73_no_messages", .act = act_packets, .packets = make_plain<73>},
        {.name = "packet_74_report",
         .act = act_packets,
         .keys = "report.txt\n",
         .packets = make_report},
        {.name = "packet_76_pager_blocked", .act = act_packets, .packets = make_plain<76>},
        {.name = "packet_78_pager_changed", .act = act_packets, .packets = make_plain<78>},
        {.name = "packet_79_pager_unchanged", .act = act_packets, .packets = make_plain<79>},
        {.name = "packet_82_password_accepted", .act = act_packets, .packets = make_plain<82>},
        {.name = "packet_83_password_refused", .act = act_packets, .packets = make_plain<83>},
        {.name = "packet_85_identification", .act = act_packets, .packets = make_plain<85>},
        {.name = "packet_86_identified", .act = act_packets, .packets = make_plain<86>},
        {.name = "packet_87_rejected", .act = act_packets, .packets = make_plain<87>},
        {.name = "packet_89_pager_list",
         .act = act_packets,
         .keys = "  \033\x18",
         .packets = make_pager_list},
        {.name = "packet_90_server_text", .act = act_packets, .packets = make_texts<90>},
        {.name = "packet_100_close",
         .act = act_packets,
         .packets = make_plain<100>,
         .keeps_first = false},
        {.name = "packet_102_close",
         .act = act_packets,
         .packets = make_plain<102>,
         .keeps_first = false},
        {.name = "packet_103_notice", .act = act_packets, .packets = make_texts<103>},
        {.name = "packet_106_updates_refused", .act = act_packets, .packets = make_plain<106>},
        {.name = "packet_108_error", .act = act_packets, .packets = make_texts<108>},
        {.name = "packet_149_still_connected", .act = act_packets, .packets = make_plain<149>},
        {.name = "packet_153_uptime",
         .act = act_packets,
         .packets = [] { return packet_list{make_packet(153, "90061\t7\t0")}; }},
        {.name = "packet_204_compressed",
         .act = act_packets,
         .packets = make_compressed_transmission},
        {.name = "packet_204_damaged", .act = act_packets, .packets = make_damaged_transmission},
        {.name = "packet_999_unknown", .act = act_packets, .packets = make_plain<999>},
    };
    return table;
}
