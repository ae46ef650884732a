// menu_target.cpp - the dialogs of the service menus, with keys of every kind, while their server
// keeps sending.
#include "app/app_state.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "services/database_update.hpp"
#include "services/mailing.hpp"
#include "services/pager.hpp"
#include "services/report.hpp"

namespace
{

constexpr std::size_t max_keys = 400;
constexpr int max_packets = 8;
constexpr unsigned passing_kinds[] = {5, 35, 64, 78, 85, 103, 106, 40};

void (*const dialogs[])(server_entry& entry) = {add_entries_dialog, mailing_dialog, pager_dialog,
                                                report_request};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    server_entry& entry = server_add_new("a.example", "a");
    const fuzz_connection connection{entry};
    entry.UseEMail = owned_or_none(input.text(80));
    entry.SubCode = owned_or_none(input.text(80));
    const unsigned choice = input.number(3);
    const unsigned packets = input.number(max_packets);
    const unsigned kind = passing_kinds[input.number(std::size(passing_kinds) - 1)];
    keys_type(input.rest().substr(0, max_keys));
    world.on_pause = [&, sent = 0U]() mutable {
        if (sent < packets && world.pauses % 3 == 0) {
            ++sent;
            connection.send(packet_bytes(kind, 0, 0, 0, "a passing text\nof two lines"));
            servers_poll();
        }
        if (world.pauses % 16 == 1)
            screen_check();
        idle_pause();
    };
    dialogs[choice](entry);
    require(connection.take() <= 1 + max_packets, "a dialog sends one request at most");
    require(entry.socket_fd > 0, "no dialog ends a connection");
    require(app_state.popup_win == nullptr, "a dialog leaves no window");
    screen_check();
    servers_check();
    return 0;
}
