// random_session.cpp - see random_session.hpp: the beginning and the end of a session, and what
// must hold at any time.
#include "sessions/random_session.hpp"

#include "support/line_settings.hpp"
#include "support/sanitizer_options.hpp"

#include <algorithm>
#include <csignal>
#include <sys/wait.h>

namespace
{

constexpr int status_of_signal = 128; // plus its number: how shells report a death by signal
constexpr std::chrono::milliseconds exit_key_patience{2000};
constexpr int most_tries = 60;
constexpr const char* error_file = "errors";
constexpr const char* end_file = "ended";

/// Whenever the client stops, its shell waits until it is asked to bring the client back. What the
/// shell itself says, such as "Hangup", is not among the client's errors.
constexpr const char* script = R"sh(
trap : INT QUIT
wait_for() { while [ ! -e "$1" ]; do sleep 0.02; done; }
tell() { echo "$2" >"$CONTROL/$1.new"; mv "$CONTROL/$1.new" "$CONTROL/$1"; }
sh -c 'exec "$CLIENT" 2>"$CONTROL/errors"'
status=$?
round=0
while [ "$status" -ge 147 ] && [ "$status" -le 150 ]; do
    tell "stopped-$round" "$status"
    wait_for "$CONTROL/bring-back-$round"
    fg >/dev/null
    status=$?
    round=$((round + 1))
done
tell ended "$status"
)sh";

bool is_control(const std::string& text)
{
    if (text.size() == 1)
        return static_cast<unsigned char>(text[0]) < ' ' || text[0] == '\x7F';
    return text.size() == 2 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
}

} // namespace

random_session::random_session(const session_plan& its_plan)
    : plan(its_plan), inspection(its_plan.utf8)
{
    settings = servers.settings();
    settings.acars_log = plan.acars_log;
    settings.save_to_one = plan.save_to_one;
    settings.contact_info = plan.contact_info;
    settings.flight_stats = plan.flight_stats;
    settings.save_passwords = plan.save_passwords;
    settings.save_on_exit = plan.save_on_exit;
    settings.log_folder = "logs";
    settings.report_folder = "reports";
}

std::string random_session::errors() const
{
    return control.read_file(error_file).value_or("");
}

testing::AssertionResult random_session::wait_for(const std::function<bool()>& holds,
                                                  std::string_view what)
{
    return client.terminal().wait_until(holds, what, answer_patience);
}

client_start random_session::how_to_start() const
{
    client_start how{.rows = plan.rows,
                     .columns = plan.columns,
                     .alarm_ms_per_second = plan.ms_per_alarm,
                     .utf8 = plan.utf8};
    how.environment = {
        {"LD_PRELOAD", std::string{CLOCK_PRELOAD} + ":" + REDIRECT_PRELOAD},
        {"TEST_DIRECTORY_PORT", std::to_string(directory.port())},
        {"TERM", plan.terminal},
        {"LC_ALL", plan.utf8 ? "C.UTF-8" : "C"},
    };
    return how;
}

testing::AssertionResult random_session::begin()
{
    client_start how = how_to_start();
    how.command = {"sh", "-mc", script};
    how.environment["CLIENT"] = CLIENT_BINARY;
    how.environment["CONTROL"] = control.path();
    for (const std::string& folder :
         {settings.log_folder, settings.report_folder, alias_of(0), alias_of(1), alias_of(2)})
        client.home().make_folder(folder);
    client.home().write_config(config_text(settings));
    client.clock().set_speed(plan.speed);
    client.launch(how);
    return wait_for(
        [&] {
            const std::vector<pid_t> below = children_of(client.terminal().process_id());
            program = below.empty() ? -1 : below.front();
            return client.clock().alarms_set() > 0 && program > 0;
        },
        "the client has started");
}

/// Accepts clients, and takes in what they say.
void random_session::serve()
{
    for (std::size_t index = 0; index < connections.size(); ++index) {
        while (servers[index].has_waiting_client()) {
            connections[index] = servers[index].accept();
            const std::vector<std::string>& greetings = plan.greetings[index];
            if (connections[index])
                connections[index]->send_bytes(
                    greetings[greetings_said[index]++ % greetings.size()]);
            ++figures.connections;
        }
        if (connections[index])
            connections[index]->has_unread_bytes();
    }
}

testing::AssertionResult random_session::is_alive()
{
    const char state = facts_of(program).state;
    if (state != ' ' && state != 'Z')
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the client is gone, with status "
                                       << control.read_file(end_file).value_or("unknown") << "\n"
                                       << client.terminal().description();
}

testing::AssertionResult random_session::is_given_back()
{
    return wait_for(
        [&] {
            const terminal_screen& screen = client.terminal().screen();
            return screen.cursor_visible() && !screen.alternate_screen() &&
                   line_difference(client.terminal().line_settings(),
                                   client.terminal().initial_line_settings())
                       .empty();
        },
        "the terminal is given back");
}

testing::AssertionResult random_session::has_written_like_curses()
{
    const std::string& raw = client.terminal().raw_output();
    inspection.feed(std::string_view{raw}.substr(inspected_bytes));
    inspected_bytes = raw.size();
    if (inspection.fault().empty())
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "written to the terminal: " << inspection.fault();
}

/// Leaves out what has been written since the last look, which may have lost bytes.
void random_session::skip_output()
{
    inspected_bytes = client.terminal().raw_output().size();
    inspection = output_inspection{plan.utf8};
}

testing::AssertionResult random_session::shows_characters_only()
{
    const terminal_screen& screen = client.terminal().screen();
    for (int row = 0; row < screen.rows(); ++row)
        for (int column = 0; column < screen.columns(); ++column)
            if (is_control(screen.cell(row, column).text))
                return testing::AssertionFailure()
                       << "a control character in row " << row << ", column " << column;
    return testing::AssertionSuccess();
}

/// Makes the client leave as planned.
testing::AssertionResult random_session::leave()
{
    const bool wants_exit = plan.end == session_end::exit_key || plan.end == session_end::hurried;
    if (wants_exit)
        if (testing::AssertionResult well = check({}); !well)
            return well;
    if (plan.end == session_end::signal_behind && !is_stopped)
        if (testing::AssertionResult stopped = stop({}); !stopped)
            return stopped;
    const auto has_ended = [&] { return control.read_file(end_file).has_value(); };
    if (plan.end == session_end::hurried)
        client.terminal().send("\033\030");
    if (plan.end != session_end::exit_key) {
        kill(program, plan.end_signal);
        if (is_stopped)
            control.write_file("bring-back-" + std::to_string(figures.stops), "");
        return wait_for(has_ended, "the signal ends the client");
    }
    // A server may have opened a box meanwhile, which takes the key.
    for (int tries = 0; tries < most_tries && is_alive(); ++tries) {
        client.terminal().send("\033\030");
        if (client.terminal().wait_until([&] { return has_ended() || !is_alive(); }, "the end",
                                         exit_key_patience))
            break;
    }
    return wait_for(has_ended, "the exit key ends the client");
}

testing::AssertionResult random_session::has_ended_as_expected()
{
    const std::string status = control.read_file(end_file).value_or("");
    const std::string by_signal = std::to_string(status_of_signal + plan.end_signal) + "\n";
    const bool may_exit = plan.end == session_end::exit_key || plan.end == session_end::hurried;
    if ((may_exit && status == "0\n") || (plan.end != session_end::exit_key && status == by_signal))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the client has ended with status " << status;
}

/// Reports and logs have names that the session knows: no other name has a dot.
testing::AssertionResult random_session::left_no_temporary_file()
{
    for (const std::string& file : client.home().files())
        if (file != "ncursesclient.conf" && !file.ends_with(".log") &&
            file.find('.') != std::string::npos)
            return testing::AssertionFailure() << "a file is left: " << file;
    return testing::AssertionSuccess();
}

testing::AssertionResult random_session::kept_its_servers()
{
    const std::string saved = client.home().read_config().value_or("");
    const std::string before = config_text(settings);
    if (saved == before)
        return testing::AssertionSuccess();
    if (control.read_file(end_file) != "0\n")
        return testing::AssertionFailure() << "a signal has changed the configuration:\n" << saved;
    for (const server_settings& server : settings.servers) {
        std::string block = "<ServerName>" + server.name + "</ServerName>\n";
        block += "        <ServerPort>" + server.port + "</ServerPort>\n";
        block += "        <ServerAlias>" + server.alias + "</ServerAlias>\n";
        if (saved.find(block) == std::string::npos)
            return testing::AssertionFailure() << server.alias << " is not in\n" << saved;
    }
    return starts_again();
}

/// With the configuration that was saved.
testing::AssertionResult random_session::starts_again()
{
    directory.stop_listening();
    client_start how = how_to_start();
    how.rows = 40;
    how.columns = 80;
    client.launch(how);
    testing::AssertionResult lists_all = wait_for(
        [&] {
            return std::ranges::all_of(settings.servers, [&](const server_settings& server) {
                return client.terminal().shows(server.alias);
            });
        },
        "all servers are in the list again");
    if (lists_all)
        client.quit();
    return lists_all;
}

testing::AssertionResult random_session::end()
{
    if (testing::AssertionResult left = leave(); !left)
        return left;
    if (!client.wait_for_exit())
        return testing::AssertionFailure() << "the shell does not end";
    if (!errors().empty())
        return testing::AssertionFailure() << "the client has complained";
    using rule = testing::AssertionResult (random_session::*)();
    for (const rule holds :
         {&random_session::has_ended_as_expected, &random_session::is_given_back,
          &random_session::has_written_like_curses, &random_session::left_no_temporary_file,
          &random_session::kept_its_servers, &random_session::left_no_temporary_file})
        if (testing::AssertionResult held = (this->*holds)(); !held)
            return held;
    return testing::AssertionSuccess();
}
