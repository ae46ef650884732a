// net_fixture.cpp - see net_fixture.hpp.
#include "unit/net_fixture.hpp"
#include "base/signal_door.hpp"
#include "base/state_lock.hpp"

#include "base/pause.hpp"
#include "net/log_files.hpp"
#include "net/poll.hpp"
#include "ui/layout.hpp"
#include "ui/pane.hpp"
#include "ui/screen.hpp"
#include "ui/server_pane.hpp"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <ostream>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr std::size_t wire_header_bytes = 12;
constexpr int screen_lines = 24;
constexpr const char* mark_text = "--mark--";

std::string make_number_bytes(std::uint32_t number, int count)
{
    std::string bytes;
    for (int index = 0; index < count; ++index)
        bytes += static_cast<char>(number >> (8 * index) & 0xFF);
    return bytes;
}

std::uint32_t read_number(std::string_view bytes, std::size_t from, std::size_t count)
{
    std::uint32_t number = 0;
    for (std::size_t index = count; index-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[from + index]);
    return number;
}

std::uint16_t read_short(std::string_view bytes, std::size_t from)
{
    return static_cast<std::uint16_t>(read_number(bytes, from, 2));
}

/// Takes signals that are still pending, so that no later test receives them.
void forget_signals()
{
    alarm(0);
    for (const int signal_number : {SIGALRM, SIGCHLD}) {
        signal_silence(signal_number);
        signal(signal_number, SIG_DFL);
    }
}

void delete_windows()
{
    WINDOW** const windows[] = {&app_state.popup_win,   &app_state.dialog_win,
                                &app_state.key_line,    &app_state.settings_win,
                                &app_state.status_pane, &app_state.message_pane,
                                &app_state.server_pane, &app_state.help_win};
    for (WINDOW** window : windows) {
        if (*window != nullptr)
            delwin(*window);
        *window = nullptr;
    }
}

void release_connection(server_entry& entry)
{
    if (entry.connect_pid > 0) {
        kill(entry.connect_pid, SIGKILL);
        waitpid(entry.connect_pid, nullptr, 0);
    }
    if (entry.socket_fd > 0)
        close(entry.socket_fd);
    close_log_file(entry);
    std::free(entry.report_buffer);
}

void release_marks()
{
    std::free(app_state.list_markers);
    app_state.list_markers = nullptr;
    app_state.list_markers_count = 0;
}

std::string trim(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first);
}

} // namespace

#if defined(__SANITIZE_THREAD__)
// Signals come in only during pauses, where handlers may allocate.
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options()
{
    return "report_signal_unsafe=0";
}
#endif

std::ostream& operator<<(std::ostream& out, const wire_packet& packet)
{
    return out << "kind " << packet.kind << " \"" << packet.text << "\" extra " << packet.extra
               << " params " << packet.param1 << ' ' << packet.param2;
}

std::string wire_bytes(const wire_packet& packet)
{
    return make_number_bytes(packet.kind, 4) +
           make_number_bytes(static_cast<std::uint32_t>(packet.text.size()), 2) +
           make_number_bytes(packet.extra, 2) + make_number_bytes(packet.param1, 2) +
           make_number_bytes(packet.param2, 2) + packet.text;
}

void server_end::send(const wire_packet& packet) const
{
    send_bytes(wire_bytes(packet));
}

void server_end::send_bytes(std::string_view bytes) const
{
    const ssize_t sent = ::send(held.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    EXPECT_EQ(sent, static_cast<ssize_t>(bytes.size())) << std::strerror(errno);
}

std::string server_end::take_bytes() const
{
    std::string all;
    char bytes[4096];
    for (ssize_t count; (count = recv(held.get(), bytes, sizeof bytes, MSG_DONTWAIT)) > 0;)
        all.append(bytes, static_cast<std::size_t>(count));
    return all;
}

wire_packets server_end::take_packets() const
{
    const std::string bytes = take_bytes();
    wire_packets packets;
    std::string_view rest = bytes;
    while (rest.size() >= wire_header_bytes) {
        const std::size_t length = read_short(rest, 4);
        packets.push_back({read_number(rest, 0, 4), std::string{rest.substr(12, length)},
                           read_short(rest, 6), read_short(rest, 8), read_short(rest, 10)});
        rest.remove_prefix(std::min(rest.size(), wire_header_bytes + length));
    }
    EXPECT_EQ(rest, "");
    return packets;
}

std::string server_end::await_bytes(std::size_t count) const
{
    std::string all;
    pollfd watched = {held.get(), POLLIN, 0};
    while (all.size() < count &&
           poll(&watched, 1, static_cast<int>(default_patience.count())) > 0) {
        const std::string more = take_bytes();
        if (more.empty())
            break;
        all += more;
    }
    return all;
}

bool server_end::await_end() const
{
    pollfd watched = {held.get(), POLLIN, 0};
    while (poll(&watched, 1, static_cast<int>(default_patience.count())) > 0) {
        if (is_ended())
            return true;
    }
    return false;
}

bool server_end::is_ended() const
{
    take_bytes();
    char byte;
    return recv(held.get(), &byte, 1, MSG_DONTWAIT) == 0;
}

void server_end::close()
{
    held = unique_fd{};
}

std::ostream& operator<<(std::ostream& out, const status_line& line)
{
    return out << '"' << line.text << "\" in pair " << line.pair;
}

signal_guard::signal_guard()
{
    pthread_sigmask(SIG_BLOCK, nullptr, &mask_before);
    is_owner = sigismember(&mask_before, SIGALRM) == 0;
    if (!is_owner)
        return;
    pause_init();
    // A poll sets the alarm, which rings in a later pause where everything takes long.
    signal(SIGALRM, [](int) {});
}

signal_guard::~signal_guard()
{
    forget_signals();
    if (!is_owner)
        return;
    state_lock_release();
    pthread_sigmask(SIG_SETMASK, &mask_before, nullptr);
}

net_test::net_test(int columns)
{
    delete_windows();
    resize_term(screen_lines, columns);
    EXPECT_EQ(screen_build(), 1);
    server_list_draw();
    mark();
}

net_test::~net_test()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index)
        release_connection(*server_at(app_state.servers, index));
    close_shared_log();
    release_marks();
    delete_windows();
}

server_entry& net_test::add_server(const char* name, const char* alias, std::int32_t port) const
{
    auto* entry = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    entry->ServerName = owned_text(name);
    entry->ServerAlias = alias != nullptr ? owned_text(alias) : nullptr;
    entry->ServerPort = port;
    EXPECT_EQ(server_add(app_state.servers, entry), -1);
    server_list_draw();
    return *entry;
}

server_end net_test::connect(server_entry& entry) const
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    entry.socket_fd = ends[0];
    entry.connected = 1;
    entry.last_data_time = std::time(nullptr);
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        if (server_at(app_state.servers, index) == &entry)
            entry.list_row = index + 1;
    }
    server_marker_write(entry.list_row + 1, marker_connected);
    return server_end{ends[1]};
}

void net_test::poll_all()
{
    do
        poll_servers(SIGALRM);
    while (app_state.poll.next != 0);
}

void net_test::mark()
{
    status_report(colour::text, "%s", mark_text);
    bells_at_mark = screen.bells();
}

status_lines net_test::said() const
{
    status_lines lines;
    for (int back = 0; back < status_row && screen.status_text(back) != mark_text; ++back) {
        const std::string text = screen.status_text(back);
        const int pair = screen.pair_at(app_state.status_pane, status_row - back, status_column);
        lines.insert(lines.begin(), {text, text.empty() ? 0 : pair});
    }
    return lines;
}

std::size_t net_test::beeps() const
{
    return screen.bells() - bells_at_mark;
}

std::string net_test::message_row(int row) const
{
    return trim(screen.row_text(app_state.message_pane, row));
}

char net_test::marker_of(const server_entry& entry) const
{
    return static_cast<char>(mvwinch(app_state.server_pane, entry.list_row + 1, 1) & A_CHARTEXT);
}

bool net_test::wait_until(const std::function<bool()>& holds)
{
    const auto deadline = std::chrono::steady_clock::now() + default_patience;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        pause_for(5'000);
    }
    return true;
}

void type_ahead(std::string_view keys)
{
    std::for_each(keys.rbegin(), keys.rend(), [](char key) { ungetch(key); });
}

char* owned_text(std::string_view text)
{
    return strndup(text.data(), text.size());
}

std::string transmission_xml(std::string_view elements)
{
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><tovrik>" + std::string{elements} +
           "</tovrik>";
}

const std::string plain_elements =
    "<ACARS><ACARSMode>2</ACARSMode><AircraftReg>.D-AIPA</AircraftReg>"
    "<MessageLabel>H1</MessageLabel><BlockID>7</BlockID><MessageNumber>M01A</MessageNumber>"
    "<FlightNumber>LH0123</FlightNumber><MessageDate><Day>05</Day><Month>03</Month>"
    "<Year>2004</Year><Hour>12</Hour><Minute>34</Minute></MessageDate></ACARS>"
    "<Extended><Aircraft>A320</Aircraft><Operator>Lufthansa</Operator></Extended>"
    "<FlightRouting><From>EDDF</From><To>EGLL</To></FlightRouting>";
const std::string content_elements = "<ACARS><Authorized><MessageContent>POSITION REPORT"
                                     "</MessageContent></Authorized></ACARS>";

const std::string plain_record = "\nACARS mode: 2  Aircraft reg: .D-AIPA [A320]"
                                 "\nMessage label: H1 Block id: 7  Message number: M01A"
                                 "\nFlight number: LH0123  Flight: EDDF-EGLL"
                                 "\nOperator: Lufthansa"
                                 "\n-------------------------------------------------"
                                 "[ 05/03/2004 12:34 ]-";
const std::string content_record = "\nACARS mode: 2  Aircraft reg: .D-AIPA [A320]"
                                   "\nMessage label: H1 Block id: 7  Message number: M01A"
                                   "\nFlight number: LH0123  Flight: EDDF-EGLL"
                                   "\nOperator: Lufthansa"
                                   "\nMessage content: -"
                                   "\nPOSITION REPORT"
                                   "\n-------------------------------------------------"
                                   "[ 05/03/2004 12:34 ]-";
