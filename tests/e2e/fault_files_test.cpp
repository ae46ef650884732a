// fault_files_test.cpp - files that cannot be opened, written or replaced: the documented message
// comes, and nothing else is harmed.
#include "e2e/fault_session.hpp"

#include <cerrno>
#include <sys/wait.h>

namespace
{

const std::string unwritable = "Logfile 'logs/ACARS.log' cannot be written";

const std::string not_opened = "Logfile 'logs/ACARS.log' not opened";

class fault_logging : public fault_session
{
};

TEST_P(fault_logging, loses_whole_records_with_one_message)
{
    break_calls();
    ASSERT_TRUE(first->send(plain_packet(document_of({.flight = "DURING"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "DURING"})));
    ASSERT_TRUE(wait_for_hit());
    if (GetParam().line.empty()) {
        logged += text_of({.flight = "DURING"});
        EXPECT_FALSE(client.terminal().shows("cannot be written"));
    } else {
        ASSERT_TRUE(client.wait_for_status(GetParam().line, GetParam().pair));
    }
    EXPECT_EQ(client.home().read_file("logs/ACARS.log"), logged);
    expect_nothing_else_harmed();
}

INSTANTIATE_TEST_SUITE_P(
    all, fault_logging,
    testing::Values(
        fault_row{"write_ENOSPC", {faulty_call::write, ENOSPC, "ACARS.log"}, unwritable},
        fault_row{"write_EIO", {faulty_call::write, EIO, "ACARS.log"}, unwritable},
        fault_row{"write_EDQUOT", {faulty_call::write, EDQUOT, "ACARS.log"}, unwritable},
        fault_row{"write_EINTR", {faulty_call::write, EINTR, "ACARS.log", 0, 3}},
        fault_row{"write_short", {faulty_call::write, short_count, "ACARS.log", 0, 100}},
        fault_row{"tty_write_EINTR", {faulty_call::write, EINTR, "/dev/tty", 0, 3}},
        fault_row{.behaviour = "write_short_then_ENOSPC_on_a_slow_screen",
                  .wanted = {faulty_call::write, ENOSPC, "ACARS.log", 20},
                  .line = unwritable,
                  .besides = {{faulty_call::write, short_count, "ACARS.log", 0, 20},
                              {faulty_call::write, short_count, "/dev/tty", 0, every_call},
                              {faulty_call::poll, EINTR, "", 0, 20}}},
        fault_row{.behaviour = "write_EIO_and_a_length_that_stays",
                  .wanted = {faulty_call::write, EIO, "ACARS.log"},
                  .line = unwritable,
                  .besides = {{faulty_call::set_length, EINTR, "ACARS.log", 0, 3},
                              {faulty_call::read, EINTR, "", 0, 20},
                              {faulty_call::pause, EINTR, "", 0, 100}}}),
    fault_name);

/// The first connection, which each test makes, opens the log.
class fault_opening : public fault_session
{
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(start());
    }
};

TEST_P(fault_opening, is_reported_and_costs_only_the_log)
{
    break_calls();
    first = client.connect_selected(servers[0]);
    ASSERT_TRUE(first);
    ASSERT_TRUE(client.wait_for_status(GetParam().line, GetParam().pair));
    EXPECT_GT(faults.hits(), 0);
    faults.set({});
    ASSERT_TRUE(first->send(plain_packet(document_of({.flight = "DURING"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "DURING"})));
    const bool is_open = GetParam().line == log_opened;
    EXPECT_EQ(client.home().read_file("logs/ACARS.log"),
              is_open ? std::optional{text_of({.flight = "DURING"})} : std::nullopt);
    client.quit();
    EXPECT_EQ(client.home().read_config(), config_text(settings));
}

INSTANTIATE_TEST_SUITE_P(
    all, fault_opening,
    testing::Values(
        fault_row{"open_EMFILE", {faulty_call::open, EMFILE, "ACARS.log"}, not_opened, 6},
        fault_row{"open_ENOSPC", {faulty_call::open, ENOSPC, "ACARS.log"}, not_opened, 6},
        fault_row{"open_EIO", {faulty_call::open, EIO, "ACARS.log"}, not_opened, 6},
        fault_row{"open_EINTR", {faulty_call::open, EINTR, "ACARS.log", 0, 3}, log_opened, 6}),
    fault_name);

class fault_saving : public fault_session
{
};

TEST_P(fault_saving, keeps_the_old_configuration)
{
    const std::string before = config_text(settings) + "the old file\n";
    client.home().write_config(before);
    break_calls();
    client.quit();
    EXPECT_GT(faults.hits(), 0);
    EXPECT_EQ(client.home().read_config(),
              GetParam().line.empty() ? before : config_text(settings));
    EXPECT_EQ(client.home().files(),
              (std::vector<std::string>{"logs/", "logs/ACARS.log", "ncursesclient.conf"}));
    EXPECT_EQ(client.home().read_file("logs/ACARS.log"), logged);
    EXPECT_EQ(first->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
}

INSTANTIATE_TEST_SUITE_P(
    all, fault_saving,
    testing::Values(
        fault_row{"make_ENOSPC", {faulty_call::make_unique, ENOSPC}},
        fault_row{"write_ENOSPC", {faulty_call::write, ENOSPC, "unfinished"}},
        fault_row{"write_EIO", {faulty_call::write, EIO, "unfinished"}},
        fault_row{"sync_EIO", {faulty_call::sync, EIO}},
        fault_row{"rename_EIO", {faulty_call::rename, EIO}},
        fault_row{"read_EIO", {faulty_call::read, EIO, "ncursesclient.conf"}},
        fault_row{"write_EINTR", {faulty_call::write, EINTR, "unfinished", 0, 3}, "new"},
        fault_row{
            "write_short", {faulty_call::write, short_count, "unfinished", 0, every_call}, "new"},
        fault_row{"sync_EINTR", {faulty_call::sync, EINTR, "", 0, 2}, "new"},
        fault_row{.behaviour = "everything_EINTR",
                  .wanted = {faulty_call::sync, EINTR, "", 0, 2},
                  .line = "new",
                  .besides = {{faulty_call::open, EINTR, "", 0, 3},
                              {faulty_call::read, EINTR, "", 0, 3},
                              {faulty_call::write, EINTR, "", 0, 3},
                              {faulty_call::write, short_count, "unfinished", 0, every_call},
                              {faulty_call::set_owner, EINTR, "", 0, 2},
                              {faulty_call::set_mode, EINTR, "", 0, 2},
                              {faulty_call::rename, EINTR, "", 0, 2},
                              {faulty_call::send, EINTR, "", 0, 2}}},
        fault_row{.behaviour = "rename_EACCES_and_no_space_in_place",
                  .wanted = {faulty_call::rename, EACCES},
                  .besides = {{faulty_call::set_length, ENOSPC, "ncursesclient.conf"}}},
        fault_row{.behaviour = "make_EACCES_and_everything_EINTR_in_place",
                  .wanted = {faulty_call::make_unique, EACCES},
                  .line = "new",
                  .besides = {{faulty_call::open, EINTR, "ncursesclient.conf", 0, 3},
                              {faulty_call::set_length, EINTR, "ncursesclient.conf", 0, 3},
                              {faulty_call::write, EINTR, "ncursesclient.conf", 0, 3},
                              {faulty_call::sync, EINTR, "", 0, 2}}}),
    fault_name);

/// A client that is killed while it exits.
TEST(killed_client, leaves_the_old_configuration_or_the_new_one)
{
    client_settings settings = with_aliases({"alpha", "bravo"});
    settings.save_on_exit = true;
    const std::string before = config_text(settings) + "the old file\n";
    int replaced = 0;
    // An exit takes fewer steps to draw than to save.
    bool is_killed = true;
    for (int step = 1; is_killed; step += 3) {
        client_session client;
        program_faults faults;
        client_start how;
        for (const auto& [name, value] : faults.environment(CLOCK_PRELOAD))
            how.environment[name] = value;
        client.home().write_config(before);
        ASSERT_TRUE(client.start_as_it_is(how));
        faults.kill_at(step);
        client.terminal().send_control('x');
        const std::optional<int> status = client.wait_for_exit();
        ASSERT_TRUE(status);
        is_killed = WIFSIGNALED(*status);
        EXPECT_EQ(is_killed ? WTERMSIG(*status) : WEXITSTATUS(*status), is_killed ? SIGKILL : 0);
        const std::string after = client.home().read_config().value_or("");
        EXPECT_TRUE(after == before || after == config_text(settings)) << step << ":\n" << after;
        replaced += after == config_text(settings) ? 1 : 0;
    }
    EXPECT_GT(replaced, 0);
}

} // namespace
