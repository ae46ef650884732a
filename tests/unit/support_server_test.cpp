// support_server_test.cpp - the scripted server, the homes and the clock of the tests do what they
// promise.
#include "support/config_text.hpp"
#include "support/loopback.hpp"
#include "support/sanitizer_options.hpp"
#include "support/scripted_server.hpp"
#include "support/temp_home.hpp"
#include "support/terminal_session.hpp"
#include "support/test_clock.hpp"

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// A client of the tests' own, connected to `server`.
server_connection connect_to(const scripted_server& server)
{
    return server_connection{begin_connect("127.0.0.1", server.port())};
}

int read_connect_error(int fd)
{
    int error = 0;
    socklen_t length = sizeof error;
    getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length);
    return error;
}

TEST(support_server, writes_packets_little_endian)
{
    const server_packet packet{
        .kind = 0x01020304, .payload = "hi", .extra = 0x0506, .param1 = 0x0708, .param2 = 0x090A};
    EXPECT_EQ(packet_bytes(packet),
              std::string("\x04\x03\x02\x01\x02\x00\x06\x05\x08\x07\x0A\x09hi", 14));
    std::size_t length = 0;
    const server_packet header = parse_header(packet_bytes(packet), length);
    EXPECT_EQ(length, 2U);
    EXPECT_EQ(header.kind, packet.kind);
    EXPECT_EQ(header.param2, packet.param2);
}

TEST(support_server, exchanges_packets_in_pieces)
{
    scripted_server server;
    server_connection client = connect_to(server);
    std::optional<server_connection> accepted = server.accept();
    ASSERT_TRUE(accepted);
    const server_packet packet{.kind = 40, .payload = "text"};
    ASSERT_TRUE(accepted->send_bytes(packet_bytes(packet).substr(0, 5)));
    EXPECT_FALSE(client.read_packet(std::chrono::milliseconds{1}));
    ASSERT_TRUE(accepted->send_bytes(packet_bytes(packet).substr(5)));
    EXPECT_EQ(client.read_packet(), packet);
    ASSERT_TRUE(client.send(2, "Good Bye"));
    EXPECT_EQ(accepted->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    client.close();
    EXPECT_TRUE(accepted->wait_for_close());
    EXPECT_EQ(accepted->received().size(), 20U);
    EXPECT_EQ(accepted->received_packets().size(), 1U);
}

TEST(support_server, ends_connections_in_three_ways)
{
    scripted_server server;
    for (const int way : {0, 1, 2}) {
        server_connection client = connect_to(server);
        std::optional<server_connection> accepted = server.accept();
        ASSERT_TRUE(accepted);
        if (way == 0)
            accepted->close();
        else if (way == 1)
            accepted->half_close();
        else
            accepted->reset();
        EXPECT_TRUE(client.wait_for_close());
        EXPECT_EQ(client.send(1, "x") && accepted->read_packet().has_value(), way == 1);
    }
}

TEST(support_server, closed_ports_refuse_and_silent_ports_stay_silent)
{
    const closed_port refusing;
    const int refused = begin_connect("127.0.0.1", refusing.port());
    if (refused >= 0) {
        ASSERT_TRUE(wait_for_socket(refused, POLLOUT, default_patience));
        EXPECT_EQ(read_connect_error(refused), ECONNREFUSED);
        close(refused);
    }
    const silent_port silent;
    const int hanging = begin_connect("127.0.0.1", silent.port());
    ASSERT_GE(hanging, 0);
    EXPECT_FALSE(wait_for_socket(hanging, POLLOUT, std::chrono::milliseconds{50}));
    close(hanging);
}

TEST(support_home, keeps_files_and_leaves_nothing)
{
    std::string path;
    {
        const temp_home home;
        path = home.path();
        home.write_config("configuration");
        home.make_folder("logs");
        home.write_file("logs/a.log", "line\n");
        EXPECT_EQ(home.read_config(), "configuration");
        EXPECT_EQ(home.read_file("logs/a.log"), "line\n");
        EXPECT_FALSE(home.read_file("absent"));
        EXPECT_EQ(home.files(),
                  (std::vector<std::string>{"logs/", "logs/a.log", "ncursesclient.conf"}));
    }
    EXPECT_NE(access(path.c_str(), F_OK), 0);
}

TEST(support_home, writes_the_configuration_file_format)
{
    client_settings settings{.save_on_exit = true, .log_folder = "/logs"};
    settings.servers.push_back({.name = "a.example", .port = "2203", .alias = "A"});
    EXPECT_EQ(config_text(settings), R"(<?xml version="1.0" encoding="ISO-8859-1"?>
<clientconf version="1.02">
    <ACARSLog>0</ACARSLog>
    <ContactInfo>0</ContactInfo>
    <SavePasswords>0</SavePasswords>
    <FlightStats>0</FlightStats>
    <SaveToOne>0</SaveToOne>
    <NoUplinks>0</NoUplinks>
    <FetchOnStart>0</FetchOnStart>
    <SaveOnExit>1</SaveOnExit>
    <LogFilePath>/logs</LogFilePath>
    <ReportPath>./</ReportPath>
    <Server1>
        <ServerName>a.example</ServerName>
        <ServerPort>2203</ServerPort>
        <ServerAlias>A</ServerAlias>
        <Location></Location>
        <Info></Info>
        <Password></Password>
        <SubCode></SubCode>
        <UseEMail></UseEMail>
    </Server1>
</clientconf>
)");
}

terminal_options make_options(const test_clock& clock, const std::string& script)
{
    return {.command = {"bash", "-c", script}, .home = "/", .environment = clock.environment()};
}

TEST(support_clock, jumps_while_the_program_runs)
{
    test_clock clock;
    terminal_session session{make_options(clock, "while read go; do printf '<%(%s)T>' -1; done")};
    const auto asked_time = [&session] {
        session.forget_raw_output();
        session.send("\r");
        EXPECT_TRUE(session.wait_until(
            [&] { return session.raw_output().find('>') != std::string::npos; }, "the time"));
        const std::string& shown = session.raw_output();
        return std::atoll(shown.c_str() + shown.find('<') + 1);
    };
    const long long before = asked_time();
    clock.jump(100'000);
    EXPECT_GE(asked_time(), before + 100'000);
    clock.jump(-200'000);
    EXPECT_LT(asked_time(), before);
}

TEST(support_clock, shows_any_time)
{
    test_clock clock;
    clock.set(1000);
    terminal_session session{make_options(clock, "printf '<%(%s)T>' -1; read end")};
    ASSERT_TRUE(session.wait_for_text(">"));
    EXPECT_EQ(session.row(0).substr(0, 2), "<1") << "within a thousand seconds from 1000";
}

TEST(support_clock, alarms_may_be_suppressed)
{
    test_clock clock{0};
    terminal_session session{
        make_options(clock, "perl -e '$| = 1; $SIG{ALRM} = sub { print \"rang\"; alarm(1) }; "
                            "alarm(1); print \"armed\"; sleep 1 while 1'")};
    ASSERT_TRUE(session.wait_for_text("armed"));
    ASSERT_EQ(clock.alarms_set(), 1);
    EXPECT_FALSE(session.shows("rang"));
    clock.set_alarm_pace(1);
    session.send_signal(SIGALRM);
    ASSERT_TRUE(session.wait_for_text("rangrangrang"));
    EXPECT_GE(clock.alarms_set(), 3);
}

TEST(support_clock, real_time_passes_without_a_jump)
{
    const test_clock clock;
    const long long before = std::time(nullptr);
    terminal_session session{make_options(clock, "printf '%(%s)T ' -1; read end")};
    ASSERT_TRUE(session.wait_for_text(" "));
    ASSERT_TRUE(session.wait_until([&] { return session.raw_output().size() > 9; }, "the time"));
    EXPECT_GE(std::atoll(session.raw_output().c_str()), before);
    EXPECT_LE(std::atoll(session.raw_output().c_str()), std::time(nullptr));
}

TEST(support_clock, alarms_may_come_early)
{
    const test_clock clock{10};
    terminal_session session{
        make_options(clock, "perl -e '$SIG{ALRM} = sub { print \"rang\\n\"; exit 3 }; alarm(120); "
                            "sleep 3600'")};
    const std::optional<int> status = session.wait_for_exit(patience(60));
    ASSERT_TRUE(status);
    EXPECT_EQ(WEXITSTATUS(*status), 3);
    EXPECT_EQ(clock.alarms_set(), 1);
}

TEST(support_clock, loads_beside_the_sanitizers_of_this_build)
{
    const test_clock clock;
    terminal_session session{terminal_options{
        .command = {"/proc/self/exe", "--gtest_list_tests", "--gtest_filter=support_clock.jumps*"},
        .home = "/",
        .environment = clock.environment()}};
    const std::optional<int> status = session.wait_for_exit();
    ASSERT_TRUE(status);
    EXPECT_EQ(*status, 0) << session.description();
    EXPECT_TRUE(session.shows("jumps_while_the_program_runs"));
    EXPECT_EQ(session.error_text(), "");
}

TEST(support_sanitizer, reports_are_recognised)
{
    EXPECT_TRUE(has_sanitizer_report("==7==ERROR: AddressSanitizer: heap-use-after-free"));
    EXPECT_TRUE(has_sanitizer_report("==7==ERROR: LeakSanitizer: detected memory leaks"));
    EXPECT_TRUE(has_sanitizer_report("WARNING: ThreadSanitizer: data race (pid=7)"));
    EXPECT_TRUE(has_sanitizer_report("a.cpp:3:5: runtime error: signed integer overflow"));
    EXPECT_FALSE(has_sanitizer_report("Unable to init ncurses library\n"));
}

} // namespace
