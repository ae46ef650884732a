// fuzz_session.cpp - see fuzz_session.hpp.
#include "fuzz/fuzz_session.hpp"

#include "app/app_state.hpp"
#include "base/limits.hpp"
#include "fuzz/property.hpp"
#include "net/packet_kind.hpp"
#include "net/poll.hpp"
#include "ui/server_pane.hpp"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <ctime>
#include <sys/socket.h>

namespace
{

constexpr sent_packet_kind sent_kinds[] = {
    sent_good_bye,
    sent_add_flight,
    sent_add_airline,
    sent_add_airport,
    sent_add_mode,
    sent_add_aircraft,
    sent_subscription,
    sent_report_style,
    sent_report_request,
    sent_pager_add,
    sent_password,
    sent_identification,
    sent_pager_remove,
    sent_pager_list_request,
    sent_uplink_setting,
    sent_client_version,
    sent_transmission_format,
    sent_heartbeat,
};

unsigned read_number(std::string_view bytes, std::size_t from, std::size_t count)
{
    unsigned number = 0;
    while (count-- > 0)
        number = number << 8 | static_cast<unsigned char>(bytes[from + count]);
    return number;
}

std::string make_number_bytes(unsigned number, int count)
{
    std::string bytes;
    for (int index = 0; index < count; ++index)
        bytes += static_cast<char>(number >> (8 * index) & 0xFF);
    return bytes;
}

std::size_t check_packet(std::string_view bytes)
{
    require(bytes.size() >= packet_header_bytes, "a header is sent whole");
    const unsigned kind = read_number(bytes, 0, 4);
    const std::size_t length = read_number(bytes, 4, 2);
    require(std::ranges::find(sent_kinds, kind) != std::end(sent_kinds),
            "only known kinds are sent");
    require(length <= packet_max_sent_text_bytes, "a sent text has its bound");
    require(read_number(bytes, 6, 2) == 0, "nothing is sent with a size hint");
    require(bytes.size() >= packet_header_bytes + length, "a payload is sent whole");
    const std::string_view payload = bytes.substr(packet_header_bytes, length);
    require(payload.find('\0') == std::string_view::npos, "what is sent is text");
    return packet_header_bytes + length;
}

} // namespace

char* owned_or_none(std::string_view text)
{
    return text.empty() ? nullptr : strndup(text.data(), text.size());
}

server_entry& server_add_new(std::string_view name, std::string_view alias)
{
    auto* entry = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    require(entry != nullptr, "there is memory for a server");
    entry->ServerName = owned_or_none(name);
    entry->ServerAlias = owned_or_none(alias);
    require(server_add(app_state.servers, entry) == -1, "a new server is added");
    server_list_draw();
    return *entry;
}

fuzz_connection::fuzz_connection(server_entry& entry)
{
    int ends[2] = {-1, -1};
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "there are sockets");
    entry.socket_fd = ends[0];
    entry.connected = 1;
    entry.last_data_time = std::time(nullptr);
    held = unique_fd{ends[1]};
    server_marker_write(entry.list_row + 1, marker_connected);
}

void fuzz_connection::send(std::string_view bytes) const
{
    if (held)
        ::send(held.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

int fuzz_connection::take() const
{
    std::string all;
    char piece[8192];
    for (ssize_t count; held && (count = recv(held.get(), piece, sizeof piece, MSG_DONTWAIT)) > 0;)
        all.append(piece, static_cast<std::size_t>(count));
    int packets = 0;
    for (std::string_view left = all; !left.empty(); ++packets)
        left.remove_prefix(check_packet(left));
    return packets;
}

void fuzz_connection::close()
{
    held = unique_fd{};
}

std::string packet_bytes(unsigned kind, unsigned extra, unsigned param1, unsigned param2,
                         std::string_view payload)
{
    const std::string_view sent = payload.substr(0, 0xFFFF);
    return make_number_bytes(kind, 4) + make_number_bytes(static_cast<unsigned>(sent.size()), 2) +
           make_number_bytes(extra, 2) + make_number_bytes(param1, 2) +
           make_number_bytes(param2, 2) + std::string{sent};
}

void servers_poll()
{
    do
        poll_servers(SIGALRM);
    while (app_state.poll.next != 0);
}

void servers_check()
{
    const collection& servers = *app_state.servers;
    require(servers.count <= servers.capacity, "every server has a slot");
    for (std::int32_t index = 1; index < servers.count; ++index)
        require(server_compare(server_at(&servers, index - 1), server_at(&servers, index)) < 0,
                "the list stays sorted");
    const bool is_none = app_state.selected == -1;
    require(is_none ||
                (app_state.selected >= 1 && app_state.selected <= std::max(1, servers.count)),
            "the selection lies within the list");
}
