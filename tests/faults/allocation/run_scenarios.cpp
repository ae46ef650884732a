// run_scenarios.cpp - the client from start to shutdown, while allocations fail.
#include "faults/allocation/scenarios.hpp"

#include "app/app_state.hpp"
#include "app/start_stop.hpp"
#include "base/pause.hpp"
#include "faults/allocation/virtual_time.hpp"
#include "net/server_list_fetch.hpp"
#include "support/loopback.hpp"
#include "ui/screen.hpp"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace
{

constexpr long silence_before_heartbeat_s = 601;
constexpr long silence_before_close_s = 301;

bool act_start(client_rig& rig, const scenario&)
{
    if (!rig_start())
        return false;
    rig_directory_serve(rig);
    rig_type("");
    return true;
}

bool act_connect(client_rig& rig, const scenario&)
{
    rig_connect(rig, 0);
    return true;
}

/// Gives the first server a name that has to be looked up.
void make_name_long(client_rig&)
{
    server_entry* entry = rig_entry(0);
    std::free(entry->ServerName);
    entry->ServerName = strdup("localhost");
}

/// Like make_name_long, but with a name that is known to be wrong without a look-up.
void make_name_wrong(client_rig&)
{
    server_entry* entry = rig_entry(0);
    std::free(entry->ServerName);
    entry->ServerName = strdup("no such name");
}

/// Gives the first server a port on which nobody listens.
void close_port(client_rig&)
{
    rig_entry(0)->ServerPort = port_of(bind_free_port("127.0.0.9"));
}

bool act_fetch(client_rig& rig, const scenario&)
{
    start_server_list_fetch();
    rig_directory_serve(rig);
    return true;
}

template <unsigned short rows, unsigned short columns> bool act_resize(client_rig&, const scenario&)
{
    rig_resize(rows, columns);
    return true;
}

bool act_resume(client_rig&, const scenario&)
{
    screen_resume();
    return true;
}

bool act_silence(client_rig&, const scenario&)
{
    for (const long silence_s : {silence_before_heartbeat_s, silence_before_close_s}) {
        clock_advance(silence_s);
        rig_poll();
    }
    return true;
}

bool act_shutdown(client_rig&, const scenario&)
{
    app_shutdown();
    return true;
}

} // namespace

std::span<const scenario> run_scenarios()
{
    using enum rig_stage;
    static const scenario table[] = {
        {.name = "start", .stage = not_started, .act = act_start},
        {.name = "connect", .stage = started, .act = act_connect},
        {.name = "connect_by_name",
         .stage = started,
         .act = act_connect,
         .prepare = make_name_long},
        {.name = "connect_wrong_name",
         .stage = started,
         .act = act_connect,
         .prepare = make_name_wrong},
        {.name = "connect_refused", .stage = started, .act = act_connect, .prepare = close_port},
        {.name = "connect_again", .act = act_keys, .keys = "\x0C"},
        {.name = "disconnect", .act = act_keys, .keys = "\x04", .keeps_first = false},
        {.name = "disconnect_again", .stage = started, .act = act_keys, .keys = "\x04"},
        {.name = "select", .act = act_keys, .keys = "\x80\x81", .allocates = false},
        {.name = "fetch", .act = act_fetch},
        {.name = "idle_rule", .act = act_silence, .keeps_first = false, .keeps_second = false},
        {.name = "resize_larger", .act = act_resize<40, 132>},
        {.name = "resize_smaller", .act = act_resize<12, 60>},
        {.name = "resize_tiny", .act = act_resize<5, 20>},
        {.name = "resume", .act = act_resume, .allocates = false},
        {.name = "shutdown", .act = act_shutdown},
    };
    return table;
}
