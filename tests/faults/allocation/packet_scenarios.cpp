// packet_scenarios.cpp - every kind of packet, taken while allocations fail.
#include "faults/allocation/scenarios.hpp"

#include "support/compressed.hpp"
#include "support/server_packet.hpp"

namespace
{

using packet_list = std::vector<std::string>;

std::string packet(std::uint32_t kind, std::string_view payload, std::uint16_t extra = 0)
{
    return packet_bytes({.kind = kind, .payload = std::string{payload}, .extra = extra});
}

/// For the kinds whose payload does not matter.
template <std::uint32_t kind> packet_list plain()
{
    return {packet(kind, "x")};
}

template <std::uint32_t kind> packet_list texts()
{
    return {packet(kind, "a line of the server")};
}

template <std::uint32_t kind> packet_list several_lines()
{
    return {packet(kind, "first line\n\nsecond line\nthird line")};
}

std::string document_of(std::string_view elements)
{
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><tovrik>" + std::string{elements} +
           "</tovrik>";
}

/// A transmission with everything that one can have.
std::string transmission()
{
    return document_of(
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

std::uint16_t hint_for(std::string_view text)
{
    return static_cast<std::uint16_t>(text.size() / 4 + 1);
}

packet_list plain_transmission()
{
    return {packet(40, transmission())};
}

packet_list compressed_transmission()
{
    const std::string text = transmission();
    return {packet(204, compressed(text), hint_for(text))};
}

packet_list damaged_transmission()
{
    return {packet(204, "no zlib data", 10)};
}

packet_list capabilities(std::string_view more)
{
    return {packet(41, document_of("<Version>1.2.3</Version><ServerUUID>abc-def</ServerUUID>"
                                   "<CRCCheck>1</CRCCheck><Mailing>1</Mailing>"
                                   "<DBModify>1</DBModify><Reports>1</Reports><Pager>1</Pager>" +
                                   std::string{more}))};
}

packet_list open_capabilities()
{
    return capabilities("");
}

packet_list closed_capabilities()
{
    return capabilities("<NeedAuth>1</NeedAuth>");
}

std::string report_text()
{
    std::string text;
    for (int line = 0; line < 50; ++line)
        text += "a line of a report, number " + std::to_string(line) + '\n';
    return text;
}

packet_list report()
{
    const std::string text = report_text();
    const std::string bytes = compressed(text);
    const std::size_t half = bytes.size() / 2;
    return {packet(74, std::to_string(bytes.size()) + '\t' + std::to_string(text.size())),
            packet(205, bytes.substr(0, half)), packet(205, bytes.substr(half))};
}

packet_list pager_list()
{
    return {packet(89, "D-AIPA\tEGLL\tLH0123~^\tEDDF\t^~D-AIQA\t^\tLH0400")};
}

/// The server has to know that its password is not the one in the configuration.
void password_forget(client_rig& rig)
{
    rig_send(rig, 0, packet(83, "x"));
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
        {.name = "packet_3_close", .act = act_packets, .packets = plain<3>, .keeps_first = false},
        {.name = "packet_5_tick", .act = act_packets, .packets = plain<5>},
        {.name = "packet_25_crc_on", .act = act_packets, .packets = plain<25>},
        {.name = "packet_26_crc_off", .act = act_packets, .packets = plain<26>},
        {.name = "packet_27_replay", .act = act_packets, .packets = plain<27>},
        {.name = "packet_35_update_added", .act = act_packets, .packets = plain<35>},
        {.name = "packet_36_update_refused", .act = act_packets, .packets = plain<36>},
        {.name = "packet_40_transmission", .act = act_packets, .packets = plain_transmission},
        {.name = "packet_41_capabilities", .act = act_packets, .packets = open_capabilities},
        {.name = "packet_41_saved_password", .act = act_packets, .packets = closed_capabilities},
        {.name = "packet_41_password",
         .act = act_packets,
         .keys = "secret\n",
         .packets = closed_capabilities,
         .prepare = password_forget},
        {.name = "packet_64_server_text", .act = act_packets, .packets = several_lines<64>},
        {.name = "packet_71_report_started", .act = act_packets, .packets = plain<71>},
        {.name = "packet_72_reports_busy", .act = act_packets, .packets = plain<72>},
        {.name = "packet_73_no_messages", .act = act_packets, .packets = plain<73>},
        {.name = "packet_74_report", .act = act_packets, .keys = "report.txt\n", .packets = report},
        {.name = "packet_76_pager_blocked", .act = act_packets, .packets = plain<76>},
        {.name = "packet_78_pager_changed", .act = act_packets, .packets = plain<78>},
        {.name = "packet_79_pager_unchanged", .act = act_packets, .packets = plain<79>},
        {.name = "packet_82_password_accepted", .act = act_packets, .packets = plain<82>},
        {.name = "packet_83_password_refused", .act = act_packets, .packets = plain<83>},
        {.name = "packet_85_identification", .act = act_packets, .packets = plain<85>},
        {.name = "packet_86_identified", .act = act_packets, .packets = plain<86>},
        {.name = "packet_87_rejected", .act = act_packets, .packets = plain<87>},
        {.name = "packet_89_pager_list",
         .act = act_packets,
         .keys = "  \033\x18",
         .packets = pager_list},
        {.name = "packet_90_server_text", .act = act_packets, .packets = texts<90>},
        {.name = "packet_100_close",
         .act = act_packets,
         .packets = plain<100>,
         .keeps_first = false},
        {.name = "packet_102_close",
         .act = act_packets,
         .packets = plain<102>,
         .keeps_first = false},
        {.name = "packet_103_notice", .act = act_packets, .packets = texts<103>},
        {.name = "packet_106_updates_refused", .act = act_packets, .packets = plain<106>},
        {.name = "packet_108_error", .act = act_packets, .packets = texts<108>},
        {.name = "packet_149_still_connected", .act = act_packets, .packets = plain<149>},
        {.name = "packet_153_uptime",
         .act = act_packets,
         .packets = [] { return packet_list{packet(153, "90061\t7\t0")}; }},
        {.name = "packet_204_compressed", .act = act_packets, .packets = compressed_transmission},
        {.name = "packet_204_damaged", .act = act_packets, .packets = damaged_transmission},
        {.name = "packet_999_unknown", .act = act_packets, .packets = plain<999>},
    };
    return table;
}
