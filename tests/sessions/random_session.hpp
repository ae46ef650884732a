// random_session.hpp - the client of a random session, its servers, and what is known of both.
#pragma once

#include "e2e/network_session.hpp"
#include "sessions/session_plan.hpp"
#include "sessions/session_run.hpp"
#include "support/terminal_output.hpp"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How long the client may take for what it has to do.
constexpr std::chrono::milliseconds answer_patience = patience(30);

class random_session
{
public:
    explicit random_session(const session_plan& its_plan);

    /// Runs the whole plan; the first thing that is wrong ends it.
    testing::AssertionResult go();
    std::string last_actions() const;
    /// The client's standard error.
    std::string errors() const;
    const session_figures& figures_so_far() const
    {
        return figures;
    }

private:
    testing::AssertionResult begin();
    testing::AssertionResult run(const session_action& action);
    testing::AssertionResult end();

    testing::AssertionResult type(const session_action& action);
    testing::AssertionResult resize(const session_action& action);
    testing::AssertionResult signal(const session_action& action);
    testing::AssertionResult stop(const session_action& action);
    testing::AssertionResult bring_back(const session_action& action);
    testing::AssertionResult send(const session_action& action);
    testing::AssertionResult hang_up(const session_action& action);
    testing::AssertionResult list(const session_action& action);
    testing::AssertionResult jump(const session_action& action);
    testing::AssertionResult rest(const session_action& action);
    testing::AssertionResult check(const session_action& action);

    void serve();
    testing::AssertionResult answers_keys();
    testing::AssertionResult is_alive();
    testing::AssertionResult is_given_back();
    testing::AssertionResult has_written_like_curses();
    testing::AssertionResult shows_characters_only();
    void skip_output();
    testing::AssertionResult leave();
    testing::AssertionResult has_ended_as_expected();
    testing::AssertionResult left_no_temporary_file();
    testing::AssertionResult kept_its_servers();
    testing::AssertionResult starts_again();
    testing::AssertionResult wait_for(const std::function<bool()>& holds, std::string_view what);
    client_start how_to_start() const;

    const session_plan& plan;
    listed_servers servers{session_server_count};
    scripted_server directory;
    std::array<std::optional<server_connection>, session_server_count> connections{};
    std::array<std::size_t, session_server_count> greetings_said{};
    std::optional<server_connection> listing;
    temp_home control; // where the shell and the session tell each other what happens
    client_settings settings;
    client_session client;
    pid_t program = -1;
    bool is_stopped = false;
    output_inspection inspection;
    std::size_t inspected_bytes = 0;
    std::vector<std::string> trail;
    session_figures figures;
};
