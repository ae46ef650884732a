// tovrikd_client_test.cpp - the client on a real tovrikd: what a receiver hears is seen, every
// service answers, and the end is told.
#include "e2e/directory_session.hpp"
#include "e2e/report_session.hpp"
#include "unit/tovrikd_place.hpp"

#include <csignal>
#include <ctime>
#include <sys/stat.h>

namespace
{

constexpr const char* no_more = "Connection closed by server";
constexpr const char* password_box = "[ Password required ]";

/// Today in UTC, as the client asks for it.
std::string today()
{
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[16];
    std::strftime(text, sizeof text, "%d/%m/%Y", &parts);
    return text;
}

class tovrikd_client : public service_test, protected tovrikd_place
{
protected:
    /// Starts the server, with keys and tables besides those of every test, and a client that knows
    /// it as alpha.
    void begin_on_tovrikd(const std::string& more = "")
    {
        write_configuration(more);
        program = start();
        client_settings settings;
        settings.contact_info = true;
        settings.servers.push_back({.port = std::to_string(port), .alias = "alpha"});
        ASSERT_TRUE(client.start(settings));
    }

    /// ^L, until the server has said all that it says first.
    void connect()
    {
        terminal().send_control('l');
        ASSERT_TRUE(terminal().wait_for_text("Uptime: "));
        EXPECT_EQ(client.marker(1).text, "*");
    }

    void begin_connected(const std::string& more = "")
    {
        ASSERT_NO_FATAL_FAILURE(begin_on_tovrikd(more));
        ASSERT_NO_FATAL_FAILURE(connect());
    }

    /// Makes the receiver hear a message, and waits until the client shows its text.
    void expect_shown(const std::string& text)
    {
        hear(heard_line(text));
        EXPECT_TRUE(terminal().wait_for_text(text));
    }

    testing::AssertionResult is_marked(const char* marker)
    {
        return terminal().wait_until([&, marker] { return client.marker(1).text == marker; },
                                     "the marker");
    }

    testing::AssertionResult identify_for_pagers()
    {
        testing::AssertionResult asked = answer({"Enter your email address", 50}, "me@example.com");
        return asked ? answer({"Your subscription code", 15}, "12") : asked;
    }

    void TearDown() override
    {
        if (!HasFailure())
            client.quit();
    }

    std::unique_ptr<sim_program> program;
};

TEST_F(tovrikd_client, sees_what_the_receiver_hears)
{
    ASSERT_NO_FATAL_FAILURE(begin_connected());
    expect_shown("HELLO");
    for (const char* part :
         {"ACARS mode: 2  Aircraft reg: D-AIQA", "Message label: H1 Block id: 3",
          "Message number: M01A", "Flight number: LH0400", "1 contact", "05/01/2026 10:30"})
        EXPECT_TRUE(terminal().wait_for_text(part));
}

TEST_F(tovrikd_client, finds_the_server_in_its_directory)
{
    write_configuration();
    program = start();
    ASSERT_TRUE(client.start({}, with_directory(web_port)));
    terminal().send_control('r');
    ASSERT_TRUE(terminal().wait_until([this] { return client.bar_text() == "Home"; },
                                      "its name under the bar"));
    ASSERT_NO_FATAL_FAILURE(connect());
    expect_shown("HELLO");
}

TEST_F(tovrikd_client, adds_an_airline_that_is_used_at_once)
{
    ASSERT_NO_FATAL_FAILURE(begin_connected());
    ASSERT_TRUE(choose('a', update_menu, '1'));
    ASSERT_TRUE(answer({"Enter IATA or ICAO Code", 30}, "LH"));
    ASSERT_TRUE(answer({"Enter Airline", 30}, "Airline of the test"));
    ASSERT_TRUE(
        client.wait_for_status("Your update request was successfully added", pairs::success, {}));
    expect_shown("HELLO");
    EXPECT_TRUE(terminal().wait_for_text("Operator: Airline of the test"));
}

TEST_F(tovrikd_client, is_told_of_what_its_pager_list_asks_for)
{
    ASSERT_NO_FATAL_FAILURE(begin_connected());
    ASSERT_TRUE(choose('p', pager_menu, '1'));
    ASSERT_TRUE(identify_for_pagers());
    ASSERT_TRUE(answer({"Enter Aircraft Registration", 30}, "D-AI*"));
    ASSERT_TRUE(answer({"Enter FlightNumber", 30}, "LH400"));
    ASSERT_TRUE(escape({"Enter Destination Airport (IATA)", 30}));
    ASSERT_TRUE(client.wait_for_status("Your Pager Request was successfully added/removed",
                                       pairs::success, {}));
    ASSERT_TRUE(choose('p', pager_menu, '3'));
    ASSERT_TRUE(identify_for_pagers());
    ASSERT_TRUE(list_is({.rows = {"D-AI*   |    |LH400 "}}));
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(dialog_ends("Press ESC to close"));
    hear(heard_line());
    EXPECT_TRUE(client.wait_for_status("Pager of me@example.com: D-AIQA LH0400", pairs::plain, {}));
}

TEST_F(tovrikd_client, saves_the_report_of_a_day)
{
    ASSERT_NO_FATAL_FAILURE(begin_connected());
    std::string day;
    for (int number = 1; day != today(); ++number) {
        day = today();
        expect_shown("HELLO " + std::to_string(number));
    }
    terminal().send_control('o');
    ASSERT_TRUE(answer({"Date of report (DD/MM/YYYY)", 12}, day));
    ASSERT_TRUE(answer(save_prompt(), "day.txt"));
    ASSERT_TRUE(client.wait_for_status("Report successfully saved as './day.txt'", pairs::notice));
    const std::string report = client.home().read_file("day.txt").value_or("");
    EXPECT_TRUE(report.starts_with("Messages of " + day + " from Home")) << report;
    EXPECT_NE(report.find("HELLO 1"), std::string::npos) << report;
}

TEST_F(tovrikd_client, stays_when_the_server_takes_a_new_configuration)
{
    ASSERT_NO_FATAL_FAILURE(begin_connected());
    write_configuration("show_reception = true\n");
    program->send_signal(SIGHUP);
    EXPECT_EQ(program->complaint_line(), "tovrikd: the new configuration is in use");
    expect_shown("HELLO");
    EXPECT_TRUE(terminal().wait_for_text("131.725"));
    EXPECT_EQ(client.marker(1).text, "*");
}

TEST_F(tovrikd_client, needs_the_right_password)
{
    home.write_file("passwords", "me:900150983cd24fb0d6963f7d28e17f72\n");
    ASSERT_EQ(chmod(home.path_of("passwords").c_str(), 0600), 0);
    ASSERT_NO_FATAL_FAILURE(begin_on_tovrikd("[access]\npasswords_file = \"passwords\"\n"));
    terminal().send_control('l');
    ASSERT_TRUE(terminal().wait_for_text(password_box));
    terminal().send("wrong\r");
    ASSERT_TRUE(client.wait_for_status("Your password doesnt match. MessageAccess denied",
                                       pairs::error, {}));
    terminal().send_control('d');
    ASSERT_TRUE(terminal().wait_for_text("Connection to alpha:"));
    terminal().send_control('l');
    ASSERT_TRUE(terminal().wait_for_text(password_box));
    terminal().send("abc\r");
    ASSERT_TRUE(
        client.wait_for_status("Password accepted. MessageAccess granted", pairs::success, {}));
    expect_shown("HELLO");
}

TEST_F(tovrikd_client, is_told_when_the_server_is_full)
{
    ASSERT_NO_FATAL_FAILURE(begin_on_tovrikd("max_clients = 1\n"));
    sim_raw_client first{port};
    ASSERT_TRUE(first.receive_kind(41));
    terminal().send_control('l');
    ASSERT_TRUE(client.wait_for_status(no_more, pairs::error));
    ASSERT_TRUE(is_marked(" "));
    first.hang_up();
    ASSERT_TRUE(terminal().wait_until(
        [this] { return ask_web("/metrics").find("tovrikd_clients 0\n") != std::string::npos; },
        "the first client has gone"));
    ASSERT_NO_FATAL_FAILURE(connect());
}

TEST_F(tovrikd_client, is_told_that_the_server_ends)
{
    ASSERT_NO_FATAL_FAILURE(begin_connected());
    expect_shown("HELLO");
    program->send_signal(SIGTERM);
    ASSERT_TRUE(client.wait_for_status(no_more, pairs::error));
    EXPECT_TRUE(is_marked(" "));
    EXPECT_EQ(program->status(), 0);
}

} // namespace
