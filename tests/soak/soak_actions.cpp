// soak_actions.cpp - the actions of the user at a soak's terminal.
#include "soak/soak_user.hpp"

#include "e2e/network_session.hpp"
#include "soak/soak_traffic.hpp"

#include <iterator>
#include <string_view>

namespace
{

constexpr std::uint32_t report_header_kind = 74;
constexpr std::uint32_t report_piece_kind = 205;
constexpr std::uint32_t pager_list_kind = 89;
constexpr std::uint32_t close_kinds[] = {3, 100, 102};

constexpr std::string_view service_keys = "\001\012\017\020"; // ^A, Enter, ^O, ^P

constexpr std::size_t report_bytes = 60'000;

/// The usual sizes of terminals, up to the largest.
constexpr int min_rows = 20;
constexpr int max_rows = 60;
constexpr int min_columns = 80;
constexpr int max_columns = 200;

/// A menu and its prompts, one for each answer.
constexpr int max_service_boxes = 8;

/// Keys that are no command of the key loop, no hot key and no signal; their effect in a box does
/// not matter.
constexpr std::string_view harmless_keys =
    "\002\006\013\016\024\025\027\031 0123456789abcXYZ~\\<%&";

} // namespace

const std::vector<soak_user::action>& soak_user::all_actions()
{
    static const std::vector<action> actions = {
        &soak_user::reconnect,
        &soak_user::be_dropped_by_notice,
        &soak_user::be_dropped_by_end,
        &soak_user::be_dropped_by_reset,
        &soak_user::leave_alone,
        &soak_user::leave_alone_for_long,
        &soak_user::resize,
        &soak_user::resize_to_little,
        &soak_user::open_settings,
        &soak_user::open_help,
        &soak_user::open_server_info,
        &soak_user::use_services,
        &soak_user::receive_report,
        &soak_user::receive_pager_list,
        &soak_user::give_password,
        &soak_user::connect_again,
        &soak_user::type_nonsense,
    };
    return actions;
}

void soak_user::reconnect()
{
    const int index = any_talking_server();
    hold(index);
    select(index);
    disconnect_selected(index);
    connect_selected(index);
    talk(index);
}

/// client_sees_it: the client closes its end by itself; otherwise ^D does.
void soak_user::drop_and_connect(int index, const std::function<void(soak_server&)>& drop,
                                 bool client_sees_it)
{
    hold(index);
    const int before = servers.with(index, [](auto& server) { return server.ends; });
    servers.with(index, drop);
    select(index);
    if (client_sees_it)
        wait(
            [&] { return servers.with(index, [&](auto& server) { return server.ends > before; }); },
            "a closed connection is left");
    else
        client.terminal().send_control('d');
    connect_selected(index);
    talk(index);
}

void soak_user::be_dropped_by_notice()
{
    const std::uint32_t kind = close_kinds[number_from(dice, 0, 2)];
    drop_and_connect(
        any_talking_server(),
        [kind](soak_server& server) { server.say({.kind = kind, .payload = "bye"}); }, true);
}

void soak_user::be_dropped_by_end()
{
    drop_and_connect(
        any_talking_server(), [](soak_server& server) { server.hang_up(false); }, false);
}

void soak_user::be_dropped_by_reset()
{
    drop_and_connect(
        any_talking_server(), [](soak_server& server) { server.hang_up(true); }, false);
}

void soak_user::leave_alone()
{
    servers.with(any_talking_server(), [](auto& server) { server.set_mood(server_mood::silent); });
}

void soak_user::leave_alone_for_long()
{
    servers.with(any_talking_server(),
                 [](auto& server) { server.set_mood(server_mood::stubborn); });
}

void soak_user::resize()
{
    set_size(max_rows, max_columns);
    for (int times = number_from(dice, 1, 5); times > 0; --times)
        set_size(number_from(dice, min_rows, max_rows),
                 number_from(dice, min_columns, max_columns));
    set_size(soak_rows, soak_columns);
    close_boxes();
}

void soak_user::resize_to_little()
{
    set_size(number_from(dice, 1, min_rows - 1), number_from(dice, 1, min_columns - 1));
    set_size(soak_rows, soak_columns);
    close_boxes();
}

void soak_user::open_settings()
{
    constexpr std::string_view mark = "Settings ]";
    show_page(mark, 'e');
    for (const char hot_key : {'i', 'h', 'f', 'd', 'e', 's'}) {
        client.terminal().send_meta(hot_key);
        client.terminal().send_meta(hot_key);
    }
    wait_for_polls(number_from(dice, 1, 20));
    client.terminal().send_control('e');
    wait([&] { return !client.terminal().shows(mark); }, "the settings are closed");
}

void soak_user::open_help()
{
    const testing::AssertionResult done = client.wait_for_keys();
    wait([&] { return bool{done}; }, "the help comes and goes");
}

void soak_user::open_server_info()
{
    select(any_talking_server());
    client.terminal().send("\t");
    wait_for_polls(number_from(dice, 1, 3));
    client.terminal().send("\t");
    close_boxes();
}

void soak_user::use_services()
{
    select(any_talking_server());
    const int at = number_from(dice, 0, static_cast<int>(service_keys.size()) - 1);
    client.terminal().send(service_keys.substr(static_cast<std::size_t>(at), 1));
    wait_for_polls(1);
    for (const std::string_view answer :
         {"2", "1/2/2026", "\n", "someone@example.org", "\n", "1234", "\177\177", "\n", "D-AIQA",
          "\n", "LH0400", "\n", "FRA", "\n"})
        client.terminal().send(answer);
    close_boxes(max_service_boxes);
}

void soak_user::receive_report()
{
    // Always the same size: the largest block ever freed decides how much the C library keeps, and
    // a larger one after hours would look like growth.
    const std::string text(report_bytes, 'r');
    const std::string packed = compressed_packet(text).payload;
    const int index = any_talking_server();
    const auto say = [&](std::uint32_t kind, const std::string& payload) {
        hold(index);
        servers.with(index, [&](auto& server) { server.say({.kind = kind, .payload = payload}); });
    };
    say(report_header_kind, std::to_string(packed.size()) + "\t" + std::to_string(text.size()));
    const std::size_t half = packed.size() / 2;
    say(report_piece_kind, packed.substr(0, half));
    say(report_piece_kind, packed.substr(half));
    if (comes([&] { return client.terminal().shows("Save ZOBE"); }))
        client.terminal().send("report.txt\n");
    close_boxes();
    talk(index);
}

void soak_user::receive_pager_list()
{
    const int index = any_talking_server();
    hold(index);
    servers.with(index, [](auto& server) {
        server.say({.kind = pager_list_kind, .payload = "D-AIQA\tFRA\tLH0400~^\tJFK\t^~a\tb\tc"});
    });
    comes([&] { return client.terminal().shows("Press ESC to close"); });
    close_boxes();
    talk(index);
}

void soak_user::give_password()
{
    const int index = any_talking_server();
    hold(index);
    select(index);
    disconnect_selected(index);
    servers.with(index, [](auto& server) { server.ask_next_for_password(); });
    client.terminal().send_control('l');
    if (comes([&] { return client.terminal().shows("Password required"); }))
        client.terminal().send("secret\n");
    close_boxes();
    if (!servers.with(index, [](auto& server) { return server.is_connected(); }))
        connect_selected(index);
    talk(index);
}

void soak_user::connect_again()
{
    select(any_talking_server());
    client.terminal().send_control('l');
    close_boxes();
}

void soak_user::type_nonsense()
{
    for (int keys = number_from(dice, 1, 60); keys > 0; --keys) {
        if (number_from(dice, 0, 9) == 0)
            client.terminal().send_key(named_key::function_1);
        const int at = number_from(dice, 0, static_cast<int>(harmless_keys.size()) - 1);
        client.terminal().send(harmless_keys.substr(static_cast<std::size_t>(at), 1));
    }
    close_boxes();
}
