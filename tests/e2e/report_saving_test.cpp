// report_saving_test.cpp - saving a report: the prompt for its name, the file, and what can go
// wrong.
#include "e2e/report_session.hpp"

#include <algorithm>
#include <sys/stat.h>

namespace
{

using report_saving = report_session;

TEST_F(report_saving, is_saved_under_the_name_that_is_typed)
{
    ASSERT_TRUE(begin());
    const std::string text = "First line\nSecond line\r\n\ttabs, %s and \xfc\n";
    ASSERT_TRUE(send_report(text));
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    EXPECT_NE(terminal().raw_output().find("Save"), std::string::npos);
    expect_saved("./report.txt", text);
    EXPECT_EQ(terminal().bells(), 0);
    expect_nothing_sent();
}

TEST_F(report_saving, an_existing_file_is_replaced)
{
    client.home().write_file("report.txt", std::string(10'000, 'o'));
    ASSERT_TRUE(begin());
    ASSERT_TRUE(send_report("new"));
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    expect_saved("./report.txt", "new");
}

TEST_F(report_saving, starts_from_the_folder_for_reports)
{
    client.home().make_folder("daily");
    ASSERT_TRUE(begin({.report_folder = "daily/"}));
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(answer(save_prompt("daily/"), "report.txt"));
    expect_saved("daily/report.txt", "text");
}

TEST_F(report_saving, starts_from_the_working_folder_without_a_folder_for_reports)
{
    client_settings settings;
    settings.servers.push_back({.port = std::to_string(server.port()), .alias = "alpha"});
    std::string file = config_text(settings);
    const std::string line = "    <ReportPath>./</ReportPath>\n";
    file.erase(file.find(line), line.size());
    client.home().write_config(file);
    ASSERT_TRUE(client.start_as_it_is());
    connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(answer(save_prompt("./"), "report.txt"));
    expect_saved("./report.txt", "text");
}

TEST_F(report_saving, is_written_up_to_its_first_zero_byte)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(send_report(std::string{"before\0after", 12}));
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    expect_saved("./report.txt", "before");
}

TEST_F(report_saving, is_in_its_file_before_it_is_reported_as_saved)
{
    ASSERT_TRUE(begin());
    // A window title, which appears nowhere on the screen.
    ASSERT_TRUE(send_report("\033]2;the-text\033\\"));
    ASSERT_TRUE(prompt_is(save_prompt()));
    terminal().send_key(named_key::backspace);
    terminal().send_key(named_key::backspace);
    // The terminal gets both, one after the other.
    ASSERT_TRUE(answer(save_prompt(""), "/dev/tty"));
    ASSERT_TRUE(client.wait_for_status("Report successfully saved as '/dev/tty'", pairs::notice));
    const std::string output{terminal().raw_output()};
    EXPECT_LT(output.find("the-text"), output.find("successfully"));
}

TEST_F(report_saving, an_empty_report_makes_an_empty_file)
{
    ASSERT_TRUE(begin());
    const std::string bytes = compressed("");
    ASSERT_TRUE(announce(std::to_string(bytes.size()) + "\t1", "1"));
    send_piece(bytes);
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    expect_saved("./report.txt", "");
}

TEST_F(report_saving, escape_an_empty_line_and_a_time_out_discard_it)
{
    ASSERT_TRUE(begin());
    const std::vector<std::string> files = client.home().files();
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(escape(save_prompt()));
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(prompt_is(save_prompt()));
    terminal().send_key(named_key::backspace);
    terminal().send_key(named_key::backspace);
    ASSERT_TRUE(answer(save_prompt(""), ""));
    ASSERT_TRUE(terminal().wait_for_no_text(save_question));
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(prompt_is(save_prompt()));
    client.clock().jump(11);
    ASSERT_TRUE(dialog_ends(save_question));
    EXPECT_EQ(client.home().files(), files);
    EXPECT_FALSE(terminal().shows("successfully saved"));
    EXPECT_EQ(terminal().bells(), 0);
}

TEST_F(report_saving, a_file_that_cannot_be_created_is_reported)
{
    client.home().make_folder("folder");
    mkfifo(client.home().path_of("fifo").c_str(), 0600);
    ASSERT_TRUE(begin());
    int bells = 0;
    for (const std::string name : {"none/report.txt", "folder", "fifo", "folder/"}) {
        ASSERT_TRUE(send_report("text"));
        ASSERT_TRUE(answer(save_prompt(), name));
        ASSERT_TRUE(
            client.wait_for_status("Unable to save report as './" + name + "'", pairs::error));
        EXPECT_TRUE(terminal().wait_until(
            [&, wanted = bells + 1] { return terminal().bells() == wanted; }, "one more bell"));
        ++bells;
    }
    EXPECT_FALSE(terminal().shows("successfully saved"));
}

TEST_F(report_saving, a_name_is_used_unchanged)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(answer(save_prompt(), "%s %n 100%.txt"));
    expect_saved("./%s %n 100%.txt", "text");
}

TEST_F(report_saving, a_name_may_be_as_long_as_the_terminal_is_wide)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(answer(save_prompt(), std::string(100, 'n')));
    ASSERT_TRUE(file_holds(client, std::string(73, 'n'), "text")); // and the two of "./"
}

TEST_F(report_saving, its_prompt_spans_any_terminal)
{
    for (const auto& [rows, columns] : {std::pair{43, 132}, {25, 81}, {24, 40}}) {
        client_session other;
        SCOPED_TRACE(columns);
        ASSERT_TRUE(other.start(knowing(server), {.rows = rows, .columns = columns}));
        std::optional<server_connection> link = other.connect_selected(server);
        ASSERT_TRUE(link);
        const std::string bytes = compressed("text");
        link->send(74, std::to_string(bytes.size()) + "\t100");
        link->send({.kind = 205, .payload = bytes});
        ASSERT_TRUE(other.terminal().wait_for_text("[ " + std::string{save_question} + " ]"));
        const std::string row = other.terminal().row(rows / 2 - 3);
        EXPECT_TRUE(row.find("│ ./_") != std::string::npos) << other.terminal().description();
        EXPECT_EQ(other.terminal().cell(rows / 2 - 4, 2).text, "┌");
        const int right = 2 + std::max(columns - 4, 33) + 1;
        EXPECT_EQ(other.terminal().cell(rows / 2 - 4, right).text, "┐");
        other.terminal().send_key(named_key::escape);
        ASSERT_TRUE(other.terminal().wait_for_no_text(save_question));
    }
}

TEST_F(report_saving, its_prompt_stays_whole_through_resizes_and_delays_the_servers)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(prompt_is(save_prompt()));
    client.clock().stop();
    const std::int64_t polls = client.clock().alarms_set();
    ASSERT_TRUE(connection->send(103, "after the report"));
    terminal().send("report");
    ASSERT_TRUE(prompt_is(save_prompt("./report")));
    for (const auto& [rows, columns] : {std::pair{43, 132}, {25, 81}, {24, 80}}) {
        terminal().resize(rows, columns);
        EXPECT_TRUE(prompt_is(save_prompt("./report"))) << rows << " x " << columns;
    }
    terminal().resize(1, 1);
    terminal().resize(24, 80);
    ASSERT_TRUE(prompt_is(save_prompt("./report")));
    EXPECT_EQ(client.clock().alarms_set(), polls);
    EXPECT_FALSE(terminal().shows("after the report"));
    ASSERT_TRUE(answer(save_prompt("./report"), ".txt"));
    expect_saved("./report.txt", "text");
    EXPECT_TRUE(client.wait_for_status("after the report", pairs::plain, false));
}

TEST_F(report_saving, its_prompt_outlives_its_server)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(send_report("text"));
    ASSERT_TRUE(prompt_is(save_prompt()));
    ASSERT_TRUE(connection->send(3, "bye"));
    connection->half_close();
    ASSERT_TRUE(answer(save_prompt(), "report.txt"));
    expect_saved("./report.txt", "text");
    EXPECT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
}

} // namespace
