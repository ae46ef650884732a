// sim_program_inputs_test.cpp - what tovriksim takes in and gives out besides its clients' road.
#include "sim_program.hpp"
#include "sim_raw_client.hpp"

#include "base/owners.hpp"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <termios.h>
#include <vector>

namespace
{

/// The port in a line that begins with `start`; 0 when there is none.
std::uint16_t port_in(const std::string& line, const std::string& start)
{
    EXPECT_TRUE(line.starts_with(start)) << line;
    return static_cast<std::uint16_t>(
        std::atoi(line.substr(std::min(start.size(), line.size())).c_str()));
}

std::string written_file(const std::string& text)
{
    std::string path = testing::TempDir() + "sim_program_XXXXXX";
    const unique_fd file{mkstemp(path.data())};
    EXPECT_EQ(write(file.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    return path;
}

/// Sends a datagram to a port of this machine.
void send_datagram(std::uint16_t port, const std::string& bytes)
{
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const unique_fd sender{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    EXPECT_EQ(sendto(sender.get(), bytes.data(), bytes.size(), 0,
                     reinterpret_cast<const sockaddr*>(&place), sizeof place),
              static_cast<ssize_t>(bytes.size()));
}

TEST(sim_program, answers_services_by_option)
{
    sim_program program{{"--port", "0", "--pace-ms", "0", "--rate", "0", "--reports", "--pager",
                         "--report-answer", "busy", "--pager-blocked"}};
    sim_raw_client client{program.port()};
    ASSERT_TRUE(client.receive());
    client.send_text(70, "0\t*#cnam#\t#cnum#\t0\t0");
    EXPECT_EQ(client.receive()->kind, 72U);
    client.send_text(89, "me@here");
    EXPECT_EQ(client.receive()->kind, 76U);
}

TEST(sim_program, gives_the_directory_out_by_option)
{
    const std::string path = written_file("h\t1\t\tp\ti\t\ta\t\t");
    sim_program program{{"--port", "0", "--http-port", "0", "--directory", path}};
    ASSERT_NE(program.port(), 0);
    const std::uint16_t port = port_in(program.line(), "tovriksim: directory on 127.0.0.1:");
    ASSERT_NE(port, 0);
    unlink(path.c_str());
    sim_raw_client reader{port};
    reader.send_bytes("GET /tovrikserver.main HTTP/1.0\r\n\r\n");
    std::string answer;
    char c = 0;
    while (wait_for_socket(reader.fd, POLLIN, default_patience) && read(reader.fd, &c, 1) == 1)
        answer += c;
    EXPECT_TRUE(answer.ends_with("\r\n\r\nh\t1\t\tp\ti\t\ta\t\t\n")) << answer;
}

TEST(sim_program, refuses_a_directory_with_wrong_lines)
{
    const std::string path = written_file("one\ttwo\n");
    sim_program program{{"--port", "0", "--http-port", "0", "--directory", path}};
    EXPECT_EQ(program.complaint(), "tovriksim: " + path + ": line 1 does not have nine fields\n");
    EXPECT_EQ(program.status(), 1);
    unlink(path.c_str());
}

TEST(sim_program, takes_datagrams_by_option_and_makes_nothing_up)
{
    sim_program program{{"--port", "0", "--pace-ms", "0", "--json-udp", "0"}};
    sim_raw_client client{program.port()};
    const std::uint16_t port = port_in(program.line(), "tovriksim: JSON on 127.0.0.1:");
    ASSERT_TRUE(client.receive());
    send_datagram(port, "broken\n{\"text\":\"heard\"}");
    const auto received = client.receive();
    ASSERT_TRUE(received);
    EXPECT_NE(received->payload.find(">heard<"), std::string::npos) << received->payload;
    client.hang_up();
    program.send_signal(SIGTERM);
    EXPECT_EQ(program.complaint(),
              "tovriksim: dropped a line of JSON (number 1 so far): this is not JSON\n");
    EXPECT_EQ(program.status(), 0);
}

TEST(sim_program, serves_and_ends_beside_a_terminal_that_is_stopped)
{
    const unique_fd terminal{posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
    ASSERT_TRUE(terminal && grantpt(terminal.get()) == 0 && unlockpt(terminal.get()) == 0);
    const unique_fd line{open(ptsname(terminal.get()), O_RDWR | O_NOCTTY | O_CLOEXEC)};
    ASSERT_TRUE(line && tcflow(line.get(), TCOOFF) == 0);
    sim_program program{{"--port", "0", "--pace-ms", "0", "--json-udp", "0"}, nullptr, line.get()};
    sim_raw_client client{program.port()};
    const std::uint16_t port = port_in(program.line(), "tovriksim: JSON on 127.0.0.1:");
    ASSERT_TRUE(client.receive());
    send_datagram(port, "broken\n");
    send_datagram(port, "{\"text\":\"heard\"}");
    const auto received = client.receive();
    ASSERT_TRUE(received);
    EXPECT_NE(received->payload.find(">heard<"), std::string::npos) << received->payload;
    program.send_signal(SIGTERM);
    EXPECT_TRUE(client.receive_kind(100));
    client.hang_up();
    EXPECT_EQ(program.status(), 0);
    EXPECT_EQ(fcntl(line.get(), F_GETFL) & O_NONBLOCK, 0) << "the terminal is a shell's, too";
}

/// A run of the program whose standard input is a pipe.
struct piped_program {
    unique_fd writer;
    std::unique_ptr<sim_program> program;
    explicit piped_program(std::vector<std::string> options)
    {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const unique_fd reader{ends[0]};
        writer = unique_fd{ends[1]};
        options.insert(options.begin(), {"--port", "0", "--pace-ms", "20", "--json-file", "-"});
        program = std::make_unique<sim_program>(options, nullptr, -1, reader.get());
    }
    void write_lines(const std::string& text) const
    {
        EXPECT_EQ(write(writer.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void end_input()
    {
        writer = unique_fd{};
    }
};

TEST(sim_program, ends_with_its_only_input_once_all_is_sent)
{
    const struct {
        std::string lines;
        int status;
        std::string complaint;
    } rows[] = {
        {"", 0, "tovriksim: standard input has ended\n"},
        {"broken\n", 3,
         "tovriksim: dropped a line of JSON (number 1 so far): this is not JSON\n"
         "tovriksim: standard input has ended; broken lines: 1\n"},
    };
    for (const auto& row : rows) {
        piped_program run{{}};
        sim_raw_client client{run.program->port()};
        ASSERT_TRUE(client.receive());
        run.write_lines(row.lines);
        for (int i = 0; i < 50; ++i)
            run.write_lines("{\"text\":\"number " + std::to_string(i) + "\"}\n");
        run.end_input();
        for (int i = 0; i < 50; ++i) {
            const auto received = client.receive_kind(40);
            ASSERT_TRUE(received) << i;
            EXPECT_NE(received->payload.find(">number " + std::to_string(i) + "<"),
                      std::string::npos)
                << received->payload;
        }
        EXPECT_TRUE(client.receive_kind(100));
        client.hang_up();
        EXPECT_EQ(run.program->complaint(), row.complaint);
        EXPECT_EQ(run.program->status(), row.status);
    }
}

TEST(sim_program, serves_on_after_the_end_of_one_of_its_inputs)
{
    for (const std::vector<std::string>& other :
         {std::vector<std::string>{"--rate", "6000"}, {"--json-udp", "0", "--ticks", "0.01"}}) {
        piped_program run{other};
        sim_raw_client client{run.program->port()};
        run.end_input();
        EXPECT_EQ(run.program->complaint_line(), "tovriksim: standard input has ended");
        ASSERT_TRUE(client.receive());
        EXPECT_TRUE(client.receive());
        EXPECT_FALSE(run.program->has_ended());
        run.program->send_signal(SIGTERM);
        EXPECT_TRUE(client.receive_kind(100));
        client.hang_up();
        EXPECT_EQ(run.program->status(), 0);
    }
}

/// The kinds of what a new client of a program with these options gets at once.
std::vector<std::uint32_t> first_kinds(std::vector<std::string> options, std::size_t count)
{
    options.insert(options.begin(), {"--port", "0", "--pace-ms", "0", "--json-udp", "0",
                                     "--announce-replay", "2", "--ticks", "0.01"});
    sim_program program{options};
    sim_raw_client client{program.port()};
    return next_kinds(client, count);
}

TEST(sim_program, makes_no_past_messages_up_for_a_receiver)
{
    using kinds = std::vector<std::uint32_t>;
    EXPECT_EQ(first_kinds({}, 3), (kinds{41, 5, 5}));
    EXPECT_EQ(first_kinds({"--rate", "0"}, 3), (kinds{41, 5, 5}));
    EXPECT_EQ(first_kinds({"--rate", "1"}, 4), (kinds{41, 27, 40, 40})) << "it was asked for them";
}

TEST(sim_program, sends_a_file_of_json_at_its_rate)
{
    const std::string path = written_file("{\"text\":\"recorded\"}\n");
    sim_program program{{"--port", "0", "--pace-ms", "0", "--rate", "6000", "--json-file", path}};
    sim_raw_client client{program.port()};
    unlink(path.c_str());
    ASSERT_TRUE(client.receive());
    for (int i = 0; i < 3; ++i)
        EXPECT_NE(client.receive()->payload.find(">recorded<"), std::string::npos);
}

TEST(sim_program, reads_json_from_a_pipe_whose_writers_come_and_go)
{
    const std::string path = written_file("");
    unlink(path.c_str());
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    sim_program program{{"--port", "0", "--pace-ms", "0", "--json-file", path}};
    sim_raw_client client{program.port()};
    ASSERT_TRUE(client.receive());
    for (const std::string text : {"one", "two"}) {
        const unique_fd pipe{open(path.c_str(), O_WRONLY | O_CLOEXEC)};
        const std::string line = "{\"text\":\"" + text + "\"}\n";
        ASSERT_GT(write(pipe.get(), line.data(), line.size()), 0);
        EXPECT_NE(client.receive()->payload.find(">" + text + "<"), std::string::npos);
    }
    unlink(path.c_str());
}

} // namespace
