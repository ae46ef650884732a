// session_run.cpp - see session_run.hpp: the actions, and whether the client stands them.
#include "sessions/session_run.hpp"

#include "sessions/random_session.hpp"

#include <algorithm>
#include <csignal>

namespace
{

constexpr std::size_t kept_actions = 30;
constexpr std::chrono::milliseconds max_rest{300};
constexpr int usual_rows = 24;
constexpr int usual_columns = 80;
constexpr char stop_key = '\032';
constexpr std::string_view help_mark = "[ To exit press ^H ]";
constexpr std::chrono::milliseconds help_patience{500};
constexpr int most_tries = 120;

} // namespace

testing::AssertionResult random_session::type(const session_action& action)
{
    if (is_stopped)
        return testing::AssertionSuccess();
    client.terminal().send(action.bytes);
    return wait_for([&] { return !client.terminal().has_unread_keys() || !is_alive(); },
                    "the client reads its keys");
}

testing::AssertionResult random_session::resize(const session_action& action)
{
    client.terminal().resize(action.number, action.other);
    return testing::AssertionSuccess();
}

/// A stopped client that is continued behind the shell stops again.
testing::AssertionResult random_session::signal(const session_action& action)
{
    kill(program, action.number);
    return is_stopped ? wait_for([&] { return facts_of(program).state == 'T'; }, "a second stop")
                      : testing::AssertionSuccess();
}

testing::AssertionResult random_session::stop(const session_action& action)
{
    const bool is_by_key = action.number != 0;
    if (is_by_key)
        client.terminal().send({&stop_key, 1});
    else
        kill(program, SIGTSTP);
    const std::string name = "stopped-" + std::to_string(figures.stops);
    if (testing::AssertionResult stopped =
            wait_for([&] { return control.read_file(name).has_value(); }, "the client stops");
        !stopped)
        return stopped;
    is_stopped = true;
    // With the key, the system throws away what was on its way to the terminal.
    if (is_by_key)
        skip_output();
    return is_given_back();
}

testing::AssertionResult random_session::bring_back(const session_action&)
{
    control.write_file("bring-back-" + std::to_string(figures.stops), "");
    ++figures.stops;
    is_stopped = false;
    return wait_for([&] { return client.terminal().screen().alternate_screen(); },
                    "the client has the terminal again");
}

testing::AssertionResult random_session::send(const session_action& action)
{
    std::optional<server_connection>& connection =
        connections[static_cast<std::size_t>(action.number)];
    // A client that has left takes nothing.
    if (connection && connection->send_bytes(action.bytes))
        ++figures.packets;
    return testing::AssertionSuccess();
}

testing::AssertionResult random_session::hang_up(const session_action& action)
{
    std::optional<server_connection>& connection =
        connections[static_cast<std::size_t>(action.number)];
    if (connection && action.other != 0)
        connection->reset();
    connection.reset();
    return testing::AssertionSuccess();
}

testing::AssertionResult random_session::list(const session_action& action)
{
    if (!directory.has_waiting_client())
        return testing::AssertionSuccess();
    listing = directory.accept();
    if (listing)
        listing->send_bytes(action.bytes);
    if (action.number != 0)
        listing.reset();
    return testing::AssertionSuccess();
}

testing::AssertionResult random_session::jump(const session_action& action)
{
    client.clock().jump(action.number);
    return testing::AssertionSuccess();
}

/// An open box may hold the polls up, so there is a limit.
testing::AssertionResult random_session::rest(const session_action& action)
{
    const std::int64_t wanted = client.clock().alarms_set() + action.number;
    if (!is_stopped)
        static_cast<void>(client.terminal().wait_until(
            [&] { return client.clock().alarms_set() >= wanted; }, "polls", max_rest));
    return testing::AssertionSuccess();
}

/// A key of the key loop is answered on the screen, whatever the client was in. Escape closes what
/// is open; servers may have sent more boxes.
testing::AssertionResult random_session::answers_keys()
{
    for (int tries = 0; tries < most_tries; ++tries) {
        const bool was_shown = client.terminal().shows(help_mark);
        client.terminal().send("\033\010");
        if (client.terminal().wait_until(
                [&] { return client.terminal().shows(help_mark) != was_shown; }, "the help",
                help_patience))
            return testing::AssertionSuccess();
        if (testing::AssertionResult alive = is_alive(); !alive)
            return alive;
    }
    return testing::AssertionFailure() << "the help key is not answered\n"
                                       << client.terminal().description();
}

testing::AssertionResult random_session::check(const session_action&)
{
    if (is_stopped)
        if (testing::AssertionResult back = bring_back({}); !back)
            return back;
    client.terminal().resize(usual_rows, usual_columns);
    if (testing::AssertionResult answered = answers_keys(); !answered)
        return answered;
    return shows_characters_only();
}

testing::AssertionResult random_session::run(const session_action& action)
{
    using function = testing::AssertionResult (random_session::*)(const session_action&);
    // In the order of the kinds.
    constexpr function functions[] = {
        &random_session::type,    &random_session::resize,     &random_session::signal,
        &random_session::stop,    &random_session::bring_back, &random_session::send,
        &random_session::hang_up, &random_session::list,       &random_session::jump,
        &random_session::rest,    &random_session::check};
    static_assert(std::size(functions) == static_cast<std::size_t>(session_action_kind::check) + 1);
    trail.push_back(session_action_text(action));
    ++figures.actions;
    testing::AssertionResult done = (this->*functions[static_cast<int>(action.kind)])(action);
    serve();
    if (done)
        done = is_alive();
    return done ? has_written_like_curses() : done;
}

testing::AssertionResult random_session::go()
{
    if (testing::AssertionResult begun = begin(); !begun)
        return begun;
    for (const session_action& action : plan.actions)
        if (testing::AssertionResult done = run(action); !done)
            return done;
    return end();
}

std::string random_session::last_actions() const
{
    std::string text = "the last of " + std::to_string(trail.size()) + " actions:\n";
    const std::size_t first = trail.size() - std::min(trail.size(), kept_actions);
    for (std::size_t at = first; at < trail.size(); ++at)
        text += "    " + trail[at] + "\n";
    return text;
}

session_figures session_run(const session_plan& plan)
{
    random_session session{plan};
    const testing::AssertionResult done = session.go();
    EXPECT_TRUE(done) << session.last_actions() << "standard error:\n" << session.errors();
    return session.figures_so_far();
}
