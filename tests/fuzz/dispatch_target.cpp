// dispatch_target.cpp - packets of every kind from three servers, through polling and dispatch to
// the screen, with a user who types something meanwhile.
#include "app/app_state.hpp"
#include "base/limits.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "net/log_files.hpp"
#include "support/compressed.hpp"

#include <algorithm>
#include <vector>

namespace
{

/// The kinds with the most code are repeated, to come up more often.
constexpr unsigned known_kinds[] = {
    3,  5,  25, 26, 27, 35, 36, 40,  41,  64,  71,  72,  73,  74,  76,  78,  79,  82,  83, 85,
    86, 87, 89, 90, 40, 41, 74, 205, 100, 102, 103, 106, 108, 149, 153, 204, 205, 204, 40, 41};
constexpr unsigned close_kinds[] = {3, 41, 100, 102}; // 41: a server that is connected already
constexpr int max_packets = 12;

struct fuzz_server {
    server_entry* entry;
    fuzz_connection connection;
    bool is_in_step = true; // every packet's bytes are read as its own
};
using fuzz_servers = std::vector<fuzz_server>;

fuzz_servers connect_servers()
{
    fuzz_servers servers;
    for (const char* name : {"c.example", "b.example", "a.example"}) {
        server_entry& entry = server_add_new(name, name[0] == 'b' ? "bee" : "");
        servers.push_back({&entry, fuzz_connection{entry}});
    }
    return servers;
}

void choose_settings(fuzz_input& input, fuzz_servers& servers)
{
    app_state.setting_flags = input.number(255);
    const unsigned more = input.number(255);
    app_state.settings_shown = (more & 0x70) == 0x70 ? 1 : 0;
    app_state.help_shown = (more & 0x0E) == 0x0E ? 1 : 0;
    servers[0].entry->Password = owned_or_none((more & 1) != 0 ? "secret" : "");
    for (fuzz_server& server : servers)
        open_log_files(*server.entry);
}

struct made_up_packet {
    unsigned kind;
    std::string bytes;
    bool takes_next; // waits for a payload of no bytes, so that what follows is out of step
};

made_up_packet make_packet(fuzz_input& input)
{
    const unsigned choice = input.number(255);
    const bool is_known = choice < 240;
    const unsigned kind = is_known ? known_kinds[choice % std::size(known_kinds)]
                                   : input.number(65'535) << (choice % 16);
    const bool has_numbers = input.flag();
    const unsigned extra = has_numbers ? input.number(65'535) : 200;
    const unsigned param1 = has_numbers ? input.number(65'535) : 1;
    const std::string text = input.text();
    const bool is_deflated = kind == 204 && !has_numbers;
    const std::string payload = is_deflated ? compressed(text) : text;
    return {kind, packet_bytes(kind, extra, param1, 0, payload), payload.empty() && extra != 0};
}

void handle_packet(fuzz_server& server, fuzz_input& input)
{
    const made_up_packet packet = make_packet(input);
    if (input.flag())
        keys_type(input.text(100));
    const std::int32_t count = app_state.servers->count;
    const bool was_connected = server.entry->socket_fd != 0;
    server.connection.send(packet.bytes);
    // A packet longer than can be kept takes several reads.
    const std::size_t reads = packet.bytes.size() / packet_max_payload_bytes + 1;
    for (std::size_t read = 0; read < reads; ++read)
        servers_poll();
    server.is_in_step = server.is_in_step && !packet.takes_next;
    const bool may_close =
        !server.is_in_step || std::ranges::find(close_kinds, packet.kind) != std::end(close_kinds);
    require(may_close || (server.entry->socket_fd != 0) == was_connected,
            "only a farewell ends a connection");
    require(app_state.servers->count == count, "no packet changes the list of servers");
    require(server.entry->report_buffer == nullptr ||
                server.entry->report_received < server.entry->report_total ||
                server.entry->report_total == 0,
            "a report never outgrows its announcement");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    fuzz_servers servers = connect_servers();
    choose_settings(input, servers);
    for (int packets = 0; packets < max_packets && !input.is_empty(); ++packets) {
        handle_packet(servers[input.number(2)], input);
        screen_check();
    }
    servers_check();
    for (const fuzz_server& server : servers)
        server.connection.take();
    return 0;
}
