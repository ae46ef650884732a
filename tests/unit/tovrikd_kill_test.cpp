// tovrikd_kill_test.cpp - a tovrikd that is killed at any moment, under load, has lost nothing that
// it acknowledged to a client.
//
// Several servers run at once, since each client gets only one answer a second. TOVRIKD_KILLS=1000
// makes it a long test.
#include "client_crowd.hpp"
#include "storage_fixture.hpp"
#include "tovrikd_place.hpp"

#include "server/base/random_source.hpp"
#include "server/protocol/packet.hpp"
#include "server/storage/kept_pagers.hpp"
#include "server/storage/kept_subscriptions.hpp"
#include "server/storage/kept_updates.hpp"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <map>
#include <set>

namespace
{

namespace kind = tovrik::kind;
using std::chrono::milliseconds;

constexpr int servers_at_once = 12;
constexpr std::size_t clients_per_server = 24;

/// After so many kills, a server begins without a database.
constexpr int kills_per_folder = 10;

/// The pause after a packet to a client. Later than that, an answer leaves as soon as it is made.
constexpr milliseconds pace{1150};

int number_of_kills()
{
    const char* wanted = std::getenv("TOVRIKD_KILLS");
    return wanted != nullptr ? std::atoi(wanted) : 4 * servers_at_once;
}

/// What a client asks for, one after the other.
enum class request { update, pager, subscription };

/// What a client has asked for, and what it was told.
struct asker {
    tovrik::time_point next_at = tovrik::never; ///< of its next requests; never: it is not welcomed
    std::size_t answers_read = 0;               ///< of what has come to it
    std::deque<std::pair<request, int>> asked{};
};

/// One server, what it has acknowledged since its folder was new, and when it is to be killed.
struct doomed_server {
    tovrikd_place place{};
    std::unique_ptr<sim_program> program{};
    std::vector<asker> askers{};
    std::map<std::string, int> updates{}; ///< the latest number of each name
    std::set<std::pair<std::string, std::string>> pagers{};
    std::set<std::string> subscriptions{};
    std::size_t answers = 0; ///< in this round
    std::size_t kill_after_answers = 0;
    tovrik::time_point kill_at = tovrik::never;
};

std::string name_of(std::size_t client)
{
    return "C" + std::to_string(client);
}

std::string address_of(std::size_t client, int number)
{
    return name_of(client) + "." + std::to_string(number) + "@example.org";
}

server_packet packet_of(request what, std::size_t client, int number)
{
    const std::string name = name_of(client);
    const std::string value = std::to_string(number);
    switch (what) {
    case request::update:
        return {.kind = kind::add_airline, .payload = name + "\t" + value};
    case request::pager:
        return {.kind = kind::pager_add, .payload = name + "\tN" + value + "\t\t"};
    case request::subscription:
        return {.kind = kind::subscription, .payload = address_of(client, number)};
    }
    return {};
}

class killed_tovrikd : public testing::Test
{
protected:
    void begin_round(int round)
    {
        crowd.clients.clear();
        for (int i = 0; i < servers_at_once; ++i) {
            if (round % kills_per_folder == 0)
                servers[i] = std::make_unique<doomed_server>();
            doomed_server& server = *servers[i];
            configure(server);
            kill_while_it_starts(server);
            server.program = server.place.start();
            server.answers = 0;
            server.askers.assign(clients_per_server, {});
            crowd.connect(server.place.port, static_cast<std::size_t>(i), clients_per_server);
            choose_end(server);
        }
    }

    /// Somebody else may have taken a port since the kill, so each start takes a free one.
    static void configure(doomed_server& server)
    {
        server.place.port = 0;
        server.place.web_port = 0;
        server.place.input.clear();
        server.place.offers_mailings = true;
        server.place.write_configuration();
    }

    void kill_while_it_starts(const doomed_server& server)
    {
        const auto program = server.place.launch();
        usleep(random.below(40000));
        ++kills;
    }

    /// Most servers are killed with one of their first answers, some before them.
    void choose_end(doomed_server& server)
    {
        server.kill_at = tovrik::never;
        server.kill_after_answers = 1 + random.below(2 * clients_per_server);
        if (random.chance(20))
            server.kill_at = tovrik::steady_clock::now() + milliseconds{random.below(2500)};
    }

    /// Puts all servers under load until each is killed.
    void run_round()
    {
        const auto end = tovrik::steady_clock::now() + default_patience;
        while (has_living()) {
            ASSERT_LT(tovrik::steady_clock::now(), end) << "they do not answer";
            constexpr int short_wait_ms = 2;
            crowd.take_in(short_wait_ms);
            for (std::size_t i = 0; i < crowd.clients.size(); ++i)
                serve(crowd.clients[i], i % clients_per_server);
        }
    }

    bool has_living() const
    {
        return std::ranges::any_of(servers,
                                   [](const auto& each) { return each->program != nullptr; });
    }

    void serve(crowd_client& client, std::size_t number)
    {
        doomed_server& server = *servers[client.server];
        if (!server.program)
            return;
        asker& asking = server.askers[number];
        const auto now = tovrik::steady_clock::now();
        read_answers(server, client, number);
        if (asking.next_at == tovrik::never && client.count_kind(kind::uptime) == 1)
            asking.next_at = now + pace + milliseconds{random.below(500)};
        if (now >= asking.next_at && asking.asked.empty())
            ask(server, client, number);
        if (now < server.kill_at && server.answers < server.kill_after_answers)
            return;
        server.program = nullptr;
        ++kills;
    }

    void ask(doomed_server& server, crowd_client& client, std::size_t number)
    {
        server.askers[number].next_at += pace;
        for (const request what : {request::update, request::pager, request::subscription}) {
            const std::string bytes = packet_bytes(packet_of(what, number, ++next));
            send(client.socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            server.askers[number].asked.emplace_back(what, next);
        }
    }

    void read_answers(doomed_server& server, const crowd_client& client, std::size_t number)
    {
        asker& asking = server.askers[number];
        for (; asking.answers_read < client.taken.size(); ++asking.answers_read) {
            const std::uint32_t answer = client.taken[asking.answers_read].kind;
            if (answer == kind::capabilities || answer == kind::uptime)
                continue;
            ASSERT_FALSE(asking.asked.empty()) << answer;
            note(server, asking.asked.front(), number, answer);
            asking.asked.pop_front();
        }
    }

    void note(doomed_server& server, std::pair<request, int> asked, std::size_t number,
              std::uint32_t answer)
    {
        constexpr std::uint32_t granted[] = {kind::update_accepted, kind::pager_done, kind::notice};
        const auto [what, value] = asked;
        ASSERT_EQ(answer, granted[static_cast<int>(what)]);
        ++server.answers;
        ++acknowledged;
        if (what == request::update)
            server.updates[name_of(number)] = value;
        else if (what == request::pager)
            server.pagers.insert({name_of(number), "N" + std::to_string(value)});
        else
            server.subscriptions.insert(address_of(number, value));
    }

    static void expect_all(const doomed_server& server)
    {
        const std::string path = server.place.home.path_of("state/tovrikd.sqlite");
        tovrik::database in;
        ASSERT_EQ(database_open(in, path, tovrik::storage_schema()), "");
        ASSERT_EQ(integrity_of(in), "ok");
        tovrik::reference_data reference;
        tovrik::pager_lists lists;
        ASSERT_EQ(updates_read(in, reference), "");
        ASSERT_EQ(pagers_read(in, lists), "");
        for (const auto& [name, number] : server.updates) {
            const auto* const entry = reference.find(kind::add_airline, name);
            ASSERT_NE(entry, nullptr) << name;
            EXPECT_GE(std::stoi(entry->fields.at(1)), number) << name;
        }
        for (const auto& [owner, registration] : server.pagers)
            EXPECT_EQ(std::ranges::count(lists.list({owner, 0}), registration,
                                         &tovrik::pager_entry::registration),
                      1)
                << owner << " " << registration;
        for (const std::string& address : server.subscriptions) {
            tovrik::mail_subscription found;
            EXPECT_EQ(subscription_read(in, address, found), "");
            EXPECT_NE(found.code, 0) << address;
        }
    }

    /// Starts the servers once more, and asks each for a list that it acknowledged.
    void expect_lists()
    {
        crowd.clients.clear();
        for (std::size_t i = 0; i < servers_at_once; ++i) {
            configure(*servers[i]);
            servers[i]->program = servers[i]->place.start();
            crowd.connect(servers[i]->place.port, i, servers[i]->pagers.empty() ? 0 : 1);
        }
        EXPECT_TRUE(have_all(kind::capabilities));
        for (const crowd_client& client : crowd.clients) {
            const std::string bytes =
                packet_bytes({.kind = kind::pager_list,
                              .payload = servers[client.server]->pagers.begin()->first});
            send(client.socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        }
        EXPECT_TRUE(have_all(kind::pager_list));
        for (const crowd_client& client : crowd.clients)
            EXPECT_NE(("~" + client.taken.back().payload)
                          .find("~" + servers[client.server]->pagers.begin()->second + "\t"),
                      std::string::npos);
    }

    bool have_all(std::uint32_t wanted)
    {
        return crowd.take_in_until([&] {
            return std::ranges::all_of(
                crowd.clients, [&](const auto& client) { return client.count_kind(wanted) == 1; });
        });
    }

    tovrik::random_source random{1};
    std::unique_ptr<doomed_server> servers[servers_at_once];
    client_crowd crowd;
    int next = 0;
    int kills = 0;
    std::size_t acknowledged = 0;
};

TEST_F(killed_tovrikd, has_lost_nothing_that_it_acknowledged)
{
    for (int round = 0; kills < number_of_kills() && !HasFailure(); ++round) {
        begin_round(round);
        run_round();
        for (const auto& server : servers)
            expect_all(*server);
    }
    EXPECT_GT(acknowledged, 0U);
    RecordProperty("kills", kills);
    RecordProperty("acknowledged", static_cast<int>(acknowledged));
    expect_lists();
}

} // namespace
