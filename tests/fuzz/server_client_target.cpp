// server_client_target.cpp - clients that send a server anything at any moment, and what it
// answers.
#include "fuzz/client_end.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "server/base/limits.hpp"
#include "server/services/publishing.hpp"
#include "server/services/requests.hpp"
#include "server/services/server_loop.hpp"

#include <list>
#include <string>
#include <sys/epoll.h>

namespace
{

namespace kind = tovrik::kind;
using std::chrono::milliseconds;

constexpr std::size_t max_clients_at_once = 4;
constexpr std::size_t max_run = 9'000;
constexpr const char* digest_of_password = "900150983cd24fb0d6963f7d28e17f72";

/// Kinds that a server acts on.
constexpr std::uint32_t asked_kinds[] = {
    kind::good_bye,       kind::add_flight,     kind::add_airline,     kind::add_airport,
    kind::add_label,      kind::add_aircraft,   kind::subscription,    kind::report_style,
    kind::report_request, kind::pager_add,      kind::password_digest, kind::pager_remove,
    kind::uplink_setting, kind::client_version, kind::heartbeat,       kind::transmission_form,
    kind::identification, kind::pager_list,
};

const char* number_text(bool is_set)
{
    return is_set ? "1" : "0";
}

tovrik::service_options make_options(fuzz_input& input)
{
    const unsigned bits = input.number(65'535);
    const auto bit = [bits](unsigned index) { return (bits >> index & 1) != 0; };
    tovrik::service_options options{
        .pace_ms = bit(0) ? 0 : 1150,
        .name = "Fuzz",
        .capabilities = {.mailing = number_text(!bit(1)),
                         .db_modify = number_text(!bit(2)),
                         .reports = number_text(!bit(3)),
                         .pager = number_text(!bit(4))},
        .access_within_ms = bit(5) ? 5'000 : 0,
        .ask_identification = bit(6),
        .send_uptime = bit(7),
        .replay_count = bit(8) ? 5U : 0U,
        .queue_limit = bit(9) ? 3U : 52U,
        .late_after_ms = bit(9) ? 60'000 : 0,
        .tell_left_out = true,
        .compressed = bit(10),
        .tick_every_ms = bit(11) ? 1'000 : 0,
        .refuses_updates = bit(12),
        .pager_hits_as_errors = bit(13),
        .pager_blocked = bit(14),
    };
    if (bit(15)) {
        options.tries_per_minute = 3;
        options.label_of_digest = [](std::string_view digest) {
            return std::string{digest == digest_of_password ? "me" : ""};
        };
    }
    return options;
}

/// A server without a port, and the far ends of its clients.
class fuzzed_server
{
public:
    explicit fuzzed_server(fuzz_input& bytes) : input(bytes), options(make_options(bytes))
    {
        require(loop_open(core).empty(), "a server waits for events");
    }

    void step()
    {
        switch (input.number(15)) {
        case 0:
            connect();
            break;
        case 1:
            publish();
            break;
        case 2:
            now += milliseconds{input.number(255) * 100};
            break;
        case 3:
            end_client();
            break;
        case 4:
            read_some();
            break;
        default:
            talk();
        }
        turn();
    }

    /// Lets time pass until all clients have read what they are to be sent, and goes.
    void finish()
    {
        loop_leave(core);
        for (int rounds = 0; rounds < 20; ++rounds) {
            now += milliseconds{1'200};
            for (client_end& each : ends)
                each.read_all();
            turn();
        }
        require(loop_is_over(core), "every connection comes to its end");
    }

private:
    void connect()
    {
        if (ends.size() == max_clients_at_once)
            return;
        if (core.channels.empty())
            core.channels.push_back({.name = "Fuzz", .uuid = "7b21"});
        ends.emplace_back();
        const int fd = ends.back().server_side.release();
        auto& session =
            core.sessions.try_emplace(fd, fd, core.channels.front(), ++core.clients_so_far)
                .first->second;
        require(tovrik::watch(core.epoll.get(), EPOLL_CTL_ADD, fd, EPOLLIN), "a client is watched");
        session.next_tick = time_after(options.tick_every_ms);
        session.access_by = time_after(options.access_within_ms);
        ends.back().fd = fd;
        ends.back().number = session.number;
        welcome_client(core, session);
    }

    tovrik::time_point time_after(int ms) const
    {
        return ms > 0 ? now + milliseconds{ms} : tovrik::never;
    }

    client_end* choose_end()
    {
        if (ends.empty())
            connect();
        return &*std::next(ends.begin(), input.number(static_cast<unsigned>(ends.size()) - 1));
    }

    void publish()
    {
        const unsigned which = input.byte();
        publish_message(core, {.registration = which & 1 ? "D-AIQA" : "N123",
                               .label = which & 2 ? "H1" : "_d",
                               .block_id = which & 4 ? "A" : "3",
                               .flight_number = which & 8 ? "LH0400" : "",
                               .content = which & 16 ? "HELLO\nWORLD" : "",
                               .to = which & 32 ? "FRA" : ""});
    }

    void talk()
    {
        client_end& end = *choose_end();
        switch (input.number(3)) {
        case 0:
            end.send(input.bytes(input.number(255)));
            break;
        case 1:
            end.send(std::string(input.number(max_run), static_cast<char>(input.byte())));
            break;
        default:
            end.send(make_packet());
        }
    }

    std::string make_packet()
    {
        constexpr auto count = static_cast<unsigned>(std::size(asked_kinds));
        return tovrik::encode_packet({.kind = asked_kinds[input.number(count - 1)],
                                      .payload = input.text(5'000),
                                      .param1 = static_cast<std::uint16_t>(input.byte())});
    }

    void read_some()
    {
        choose_end()->read_all();
    }

    void end_client()
    {
        client_end& end = *choose_end();
        switch (input.number(3)) {
        case 0:
            end.hang_up();
            break;
        case 1:
            end.stop_sending();
            break;
        default:
            if (auto* const session = core_find_client(core, end.fd, end.number))
                core_close_client(core, *session, kind::closing, now);
        }
    }

    /// One turn of the server's loop.
    void turn()
    {
        for (const client_end& each : ends) {
            if (auto* const session = core_find_client(core, each.fd, each.number))
                receive(*session);
        }
        loop_on_time(core, now);
        require(loop_wait_ms(core, tovrik::never, now) != 0, "the loop does not spin");
        for (const auto& [fd, session] : core.sessions)
            check_session(session);
        check_services();
        ends.remove_if([this](const client_end& each) {
            return core_find_client(core, each.fd, each.number) == nullptr;
        });
    }

    void receive(tovrik::client_session& session)
    {
        const bool was_closing = session.closing;
        const auto before = core.services.reference.size() + core.services.pagers.size() +
                            core.memory.subscriptions.size() + session.assured.size();
        require(loop_on_event(core, session.socket.get()), "a client's event is taken");
        const auto after = core.services.reference.size() + core.services.pagers.size() +
                           core.memory.subscriptions.size() + session.assured.size();
        require(!was_closing || (session.closing && before == after), "what is closed stays so");
    }

    void check_session(const tovrik::client_session& session) const
    {
        require(!session.gone, "who is gone is removed");
        require(session.input.size() < tovrik::header_bytes + tovrik::max_payload_bytes,
                "no more than a packet is kept");
        require(session.assured.size() <= tovrik::max_assured_packets, "answers have a bound");
        require(session.traffic.messages.size() <= options.queue_limit, "messages have a bound");
        require(session.changes <= tovrik::max_changes_per_client, "changes have a bound");
        require(session.unanswered_requests == 0, "a store in memory answers at once");
        require(session.pager_owners.size() <= tovrik::max_pager_lists_per_client,
                "a client's lists have a bound");
    }

    void check_services() const
    {
        require(core.services.reference.size() <= tovrik::max_reference_entries,
                "reference data have a bound");
        require(core.services.pagers.size() <= tovrik::max_pager_lists, "lists have a bound");
        require(core.memory.subscriptions.size() <= tovrik::max_subscriptions,
                "subscriptions have a bound");
        require(core.history.size() <= options.replay_count, "the replay has a bound");
    }

    fuzz_input& input;
    const tovrik::service_options options;
    tovrik::server_core core{options};
    tovrik::time_point now = tovrik::steady_clock::now();
    std::list<client_end> ends;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const world_visit visit;
    fuzz_input input{data, size};
    fuzzed_server server{input};
    while (!input.is_empty())
        server.step();
    server.finish();
    return 0;
}
