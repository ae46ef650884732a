// soak_user.cpp - see soak_user.hpp: what all of the user's actions share.
#include "soak/soak_user.hpp"

#include "soak/soak_traffic.hpp"

#include <algorithm>
#include <stdexcept>

namespace
{

/// A single Escape must not meet the next key while curses waits for the rest of a key's bytes.
constexpr int escape_ms = 60;

constexpr int max_tries = 20;
constexpr int min_speed = 10;
constexpr std::chrono::milliseconds box_patience{500};

} // namespace

std::string soak_alias(int index)
{
    std::string number = std::to_string(index);
    return "s" + std::string(3 - std::min<std::size_t>(3, number.size()), '0') + number;
}

soak_user::soak_user(client_session& its_client, soak_servers& its_servers,
                     const soak_options& options)
    : client(its_client), servers(its_servers), speed(options.speed),
      polls_for_escape(1 + options.speed * escape_ms / 1000), dice(options.seed)
{
}

int soak_user::different_actions()
{
    return static_cast<int>(all_actions().size());
}

void soak_user::do_something()
{
    if (to_do.empty() && actions == 0) {
        to_do = all_actions();
        std::shuffle(to_do.begin(), to_do.end(), dice);
    }
    const std::vector<action>& all = all_actions();
    action next = all[static_cast<std::size_t>(number_from(dice, 0, different_actions() - 1))];
    if (!to_do.empty()) {
        next = to_do.back();
        to_do.pop_back();
    }
    (this->*next)();
    ++actions;
    client.terminal().forget_raw_output();
}

void soak_user::connect_all()
{
    for (int index = 0; index < servers.count(); ++index) {
        if (servers.with(index, [](auto& server) { return server.is_connected(); }))
            continue;
        select(index);
        connect_selected(index);
    }
}

bool soak_user::all_are_connected()
{
    for (int index = 0; index < servers.count(); ++index)
        if (!servers.with(index, [](auto& server) { return server.is_connected(); }))
            return false;
    return true;
}

void soak_user::hush_all()
{
    for (int index = 0; index < servers.count(); ++index)
        servers.with(index, [](auto& server) { server.set_mood(server_mood::held); });
    for (int index = 0; index < servers.count(); ++index)
        if (!servers.is_wild(index))
            hold(index);
}

/// Moves the bar key by key; the client must show it on the server.
void soak_user::select(int index)
{
    const std::string wanted = soak_alias(index);
    wait([&] { return client.bar_text().starts_with('s'); }, "the bar is on a server");
    const int from = std::stoi(client.bar_text().substr(1));
    for (int at = from; at != index; at += at < index ? 1 : -1)
        client.terminal().send_key(at < index ? named_key::down : named_key::up);
    wait([&] { return client.bar_text() == wanted; }, "the bar is on " + wanted);
}

void soak_user::disconnect_selected(int index)
{
    const int before = servers.with(index, [](auto& server) { return server.ends; });
    client.terminal().send_control('d');
    wait([&] { return servers.with(index, [&](auto& server) { return server.ends > before; }); },
         "server " + std::to_string(index) + " is left");
}

void soak_user::connect_selected(int index)
{
    for (int tries = 0; tries < max_tries; ++tries) {
        const int before = servers.with(index, [](auto& server) { return server.ends; });
        client.terminal().send_control('l');
        // A client that has heard nothing for long closes again if the greeting comes too late.
        const auto is_left = [&] {
            return servers.with(index, [&](auto& server) { return server.ends > before; });
        };
        const auto is_read = [&] {
            return servers.with(index, [](auto& server) {
                return server.is_connected() && server.has_been_polled();
            });
        };
        wait([&] { return is_left() || is_read(); },
             "server " + std::to_string(index) + " is connected");
        if (!is_left())
            return;
        ++lates;
        slow_the_clock_down();
    }
    throw std::runtime_error("server " + std::to_string(index) + " is always closed again");
}

void soak_user::hold(int index)
{
    servers.with(index, [](auto& server) { server.set_mood(server_mood::held); });
    wait([&] { return servers.with(index, [](auto& server) { return server.is_settled(); }); },
         "what server " + std::to_string(index) + " has said is read");
}

void soak_user::talk(int index)
{
    servers.with(index, [](auto& server) { server.set_mood(server_mood::talking); });
}

void soak_user::set_size(int rows, int columns)
{
    client.terminal().resize(rows, columns);
    wait_for_polls(2);
}

/// Opens the page of CTRL and the letter, and waits for its mark.
void soak_user::show_page(std::string_view mark, char control)
{
    client.terminal().send_control(control);
    wait([&] { return client.terminal().shows(mark); }, "a page with " + std::string{mark});
}

/// most: how many boxes may follow one another.
void soak_user::close_boxes(int most)
{
    for (int boxes = 0; boxes < most; ++boxes) {
        client.terminal().send("\033");
        wait_for_polls(polls_for_escape);
    }
    const testing::AssertionResult free = client.wait_for_keys();
    if (!free)
        throw std::runtime_error(free.message());
}

void soak_user::type(std::string_view keys)
{
    client.terminal().send(keys);
}

void soak_user::wait_for_polls(int count)
{
    const std::int64_t wanted = client.clock().alarms_set() + count;
    wait([&] { return client.clock().alarms_set() >= wanted; }, "servers are polled");
}

void soak_user::wait(const std::function<bool()>& holds, const std::string& what)
{
    const testing::AssertionResult result = client.terminal().wait_until(holds, what, patience(60));
    if (!result)
        throw std::runtime_error(result.message());
}

/// A greeting that comes too late has waited for the machine, which has no time for a clock so
/// fast.
void soak_user::slow_the_clock_down()
{
    speed = std::max(std::min(speed, min_speed), speed / 2);
    client.clock().set_speed(speed);
}

/// For a box that is expected: it may have closed by itself before the answer came.
bool soak_user::comes(const std::function<bool()>& holds)
{
    return bool{client.terminal().wait_until(holds, "a box", box_patience)};
}

/// A well-behaved server that is connected and sends something now and then.
int soak_user::any_talking_server()
{
    for (;;) {
        const int index = number_from(dice, 0, servers.count() - 1);
        const bool talks = servers.with(
            index, [](auto& server) { return server.is_connected() && server.is_talking(); });
        if (talks && !servers.is_wild(index))
            return index;
        if (servers.with(index, [](auto& server) { return !server.is_connected(); }))
            connect_all();
    }
}
