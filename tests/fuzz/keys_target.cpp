// keys_target.cpp - the key loop: keys, packets, resizes, finished connects and silence in any
// order, and ^X at the end.
#include "app/app_state.hpp"
#include "app/main_loop.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "net/connect_attempt.hpp"

#include <algorithm>
#include <csignal>
#include <vector>

namespace
{

constexpr int max_steps = 150;
constexpr int max_servers = 40;
constexpr long us_per_second = 1'000'000;
constexpr unsigned passing_kinds[] = {3, 5, 26, 27, 40, 41, 64, 74, 83, 89, 102, 103, 153, 205};

/// A session of the program, driven from inside its pauses.
struct key_session {
    fuzz_input input;
    std::vector<fuzz_connection> connections{};
    int steps = 0;
    bool is_polling = false; // a handler's own signal stays blocked through its pauses
    bool is_resizing = false;
    bool is_reaping = false;

    void make_servers()
    {
        const unsigned count = input.number(max_servers);
        for (unsigned number = 0; number < count; ++number)
            server_add_new("10.0.0." + std::to_string(number + 1), number % 3 == 0 ? "alias" : "");
        const unsigned connected = std::min(3U, count);
        for (unsigned index = 0; index < connected; ++index)
            connections.emplace_back(
                *server_at(app_state.servers, static_cast<std::int32_t>(index)));
    }
    void poll()
    {
        if (std::exchange(is_polling, true))
            return;
        servers_poll();
        is_polling = false;
    }
    void send_packet()
    {
        const unsigned kind = passing_kinds[input.number(std::size(passing_kinds) - 1)];
        const std::string text = input.text(300);
        if (!connections.empty())
            connections[input.number(255) % connections.size()].send(
                packet_bytes(kind, 0, 0, 0, text));
        poll();
    }
    void resize()
    {
        const int lines = 1 + static_cast<int>(input.number(50));
        const int columns = 2 + static_cast<int>(input.number(120));
        if (std::exchange(is_resizing, true))
            return;
        screen_resize(lines, columns);
        is_resizing = false;
    }
    void end_connect()
    {
        if (!child_end(input.flag()) || std::exchange(is_reaping, true))
            return;
        on_connect_result(SIGCHLD);
        is_reaping = false;
    }
    void step()
    {
        const unsigned what = input.number(31);
        if (what < 20)
            keys_type(input.bytes(1 + what % 4));
        else if (what < 26)
            send_packet();
        else if (what < 28)
            end_connect();
        else if (what < 30)
            clock_advance(input.number(1'000) * us_per_second);
        else if (what == 30)
            poll();
        else
            resize();
    }
    /// The user when nothing else comes: leaves whatever is open, and the program.
    void leave()
    {
        keys_type(world.pauses % 2 == 0 ? "\033" : "\x18");
        clock_advance(us_per_second);
    }
    void pause()
    {
        if (world.pauses % 16 == 1)
            screen_check();
        if (keys_wait())
            return;
        if (input.is_empty() || ++steps > max_steps)
            leave();
        else
            step();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    key_session session{{data, size}};
    app_state.setting_flags = session.input.number(255);
    session.make_servers();
    const std::int32_t count = app_state.servers->count;
    world.on_pause = [&session] { session.pause(); };
    main_loop();
    require(app_state.servers->count == count, "no key changes the list of servers");
    for (const fuzz_connection& connection : session.connections)
        connection.take();
    screen_check();
    servers_check();
    return 0;
}
