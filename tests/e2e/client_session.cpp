// client_session.cpp - the client in a terminal, with a home and a clock of its own.
#include "e2e/client_session.hpp"

#include "support/line_settings.hpp"

#include <fcntl.h>
#include <sys/wait.h>

namespace
{

constexpr int server_pane_columns = 27;
constexpr int name_columns = 24;
constexpr std::string_view key_line_text = "^D Disconnect, ^E Settings, ^H Help, ^I ServerInfo, "
                                           "^L Connect, ^R ServerList, ^X Exit";

/// The key line when all of it is painted.
std::string make_key_line(int columns)
{
    std::string line{key_line_text};
    line.resize(static_cast<std::size_t>(columns), ' ');
    return line;
}

constexpr int black = 0;
constexpr int red = 1;
constexpr int green = 2;
constexpr int yellow = 3;
constexpr int blue = 4;
constexpr int magenta = 5;
constexpr int cyan = 6;
constexpr int white = 7;

struct colours {
    int foreground;
    int background;
};

constexpr colours pair_colours[] = {
    {default_colour, default_colour},
    {blue, black},
    {white, black},
    {blue, white},
    {white, cyan},
    {red, black},
    {yellow, black},
    {green, black},
    {black, white},
    {white, black},
    {white, blue},
    {cyan, black},
    {red, blue},
    {blue, black},
    {white, black},
    {magenta, black},
};

std::string strip_trailing_blanks(std::string text)
{
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace

screen_cell pair_cell(int pair, bool bold, const std::string& text)
{
    const colours& seen = pair_colours[pair];
    return {
        .text = text, .foreground = seen.foreground, .background = seen.background, .bold = bold};
}

client_session::~client_session()
{
    if (session != nullptr && !left && !testing::Test::HasFailure())
        quit();
}

testing::AssertionResult client_session::start(const client_settings& settings,
                                               const client_start& how)
{
    folder.write_config(config_text(settings));
    return start_as_it_is(how);
}

testing::AssertionResult client_session::start_as_it_is(const client_start& how)
{
    launch(how);
    // The first alarm is set when everything has been drawn.
    return session->wait_until([&] { return time.alarms_set() > 0; }, "the client has started");
}

unique_fd client_session::open_terminal()
{
    const std::string path = "/proc/" + std::to_string(session->process_id()) + "/fd/0";
    unique_fd opened{open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    EXPECT_TRUE(opened);
    return opened;
}

void client_session::launch(const client_start& how)
{
    time.set_alarm_pace(how.alarm_ms_per_second);
    if (how.start_time)
        time.set(*how.start_time);
    terminal_options options{.command = how.command,
                             .rows = how.rows,
                             .columns = how.columns,
                             .home = how.home_variable,
                             .folder = folder.path(),
                             .utf8 = how.utf8,
                             .environment = time.environment(),
                             .unset = how.unset};
    for (const auto& [name, value] : how.environment)
        options.environment[name] = value;
    session = std::make_unique<terminal_session>(options);
    left = false;
}

std::optional<int> client_session::wait_for_exit()
{
    left = true;
    return session->wait_for_exit();
}

void client_session::quit()
{
    session->send("\033"); // leaves a prompt if one is open, and does nothing otherwise
    session->send_control('x');
    const std::optional<int> status = wait_for_exit();
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFEXITED(*status) && WEXITSTATUS(*status) == 0) << session->description();
    EXPECT_EQ(session->error_text(), "");
    EXPECT_EQ(line_difference(session->line_settings(), session->initial_line_settings()), "");
    EXPECT_TRUE(session->screen().cursor_visible());
    EXPECT_FALSE(session->screen().alternate_screen());
}

std::vector<std::string> client_session::status_lines()
{
    const terminal_screen& screen = session->screen();
    std::vector<std::string> lines;
    for (int row = screen.rows() - 6; row <= screen.rows() - 3; ++row)
        lines.push_back(strip_trailing_blanks(
            screen.text(row, server_pane_columns, screen.columns() - server_pane_columns - 1)));
    return lines;
}

std::vector<std::string> client_session::message_lines()
{
    const terminal_screen& screen = session->screen();
    std::vector<std::string> lines;
    for (int row = 0; row <= screen.rows() - 8; ++row)
        lines.push_back(strip_trailing_blanks(
            screen.text(row, server_pane_columns, screen.columns() - server_pane_columns - 1)));
    return lines;
}

std::string client_session::server_row(int number)
{
    return session->screen().text(number + 1, 1, server_pane_columns - 2);
}

screen_cell client_session::marker(int number)
{
    return session->cell(number + 1, 1);
}

int client_session::bar_row()
{
    const terminal_screen& screen = session->screen();
    const screen_cell look = pair_cell(pairs::bar, false, "");
    for (int number = 1; number + 1 < screen.rows() - 2; ++number) {
        const screen_cell first = screen.cell(number + 1, 2);
        const screen_cell last = screen.cell(number + 1, 1 + name_columns);
        if (first.background == look.background && last.background == look.background)
            return number;
    }
    return 0;
}

std::string client_session::bar_text()
{
    const int number = bar_row();
    return number == 0 ? "" : strip_trailing_blanks(server_row(number).substr(1));
}

testing::AssertionResult client_session::wait_for_status(std::string_view text, int pair,
                                                         std::optional<bool> bold)
{
    const auto shown = [&] {
        const terminal_screen& screen = session->screen();
        const int width = screen.columns() - server_pane_columns - 1;
        const std::string fitting{text.substr(0, static_cast<std::size_t>(width))};
        for (int row = screen.rows() - 6; row <= screen.rows() - 3; ++row) {
            const std::string line =
                strip_trailing_blanks(screen.text(row, server_pane_columns, width));
            const screen_cell first = screen.cell(row, server_pane_columns);
            if (line == fitting && first == pair_cell(pair, bold.value_or(first.bold), first.text))
                return true;
        }
        return false;
    };
    return session->wait_until(shown, "\"" + std::string{text} + "\" in the status pane in pair " +
                                          std::to_string(pair));
}

testing::AssertionResult client_session::wait_for_keys()
{
    // The bottom row is painted last, both when the help comes and when it goes.
    const auto key_line_is_shown = [&] {
        const terminal_screen& screen = session->screen();
        return screen.text(screen.rows() - 1) == make_key_line(screen.columns());
    };
    session->send_control('h');
    if (testing::AssertionResult shown =
            session->wait_until([&] { return !key_line_is_shown(); }, "the help is in front");
        !shown)
        return shown;
    session->send_control('h');
    return session->wait_until(key_line_is_shown, "the panes are back in front");
}

testing::AssertionResult client_session::wait_for_polls(int count)
{
    const std::int64_t wanted = time.alarms_set() + count;
    return session->wait_until([&] { return time.alarms_set() >= wanted; }, "servers are polled");
}

std::optional<server_connection> client_session::connect_selected(scripted_server& server)
{
    session->send_control('l');
    std::optional<server_connection> client = server.accept();
    if (!client) {
        ADD_FAILURE() << "nobody connected\n" << session->description();
        return std::nullopt;
    }
    EXPECT_EQ(client->read_packet(), (server_packet{.kind = 101, .payload = "0 02 001"}));
    EXPECT_EQ(client->read_packet(), (server_packet{.kind = 151, .payload = "CXML"}));
    const auto marked = session->wait_until(
        [&] {
            const int number = bar_row();
            return number != 0 && marker(number).text == "*";
        },
        "the server is marked as connected");
    EXPECT_TRUE(marked);
    return marked ? std::move(client) : std::nullopt;
}

client_settings knowing(const scripted_server& server, const std::string& alias)
{
    client_settings settings;
    settings.servers.push_back({.port = std::to_string(server.port()), .alias = alias});
    return settings;
}

client_settings with_aliases(const std::vector<std::string>& aliases)
{
    client_settings settings;
    // Entries with the same name are sorted by port. Nobody listens on port 1 and the next ones.
    for (std::size_t at = 0; at < aliases.size(); ++at)
        settings.servers.push_back({.port = std::to_string(at + 1), .alias = aliases[at]});
    return settings;
}
