// sim_directory_test.cpp - the practice server's directory of servers over HTTP.
#include "sim_raw_client.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/practice/directory_answer.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr const char* request = "GET /tovrikserver.main HTTP/1.0\r\nHost: localhost\r\n"
                                "Accept: */*\r\n\r\n";
constexpr const char* two_lines = "one.example\t2202\t\tBerlin\tfirst\t\tOne\t\t\n"
                                  "two.example\t0\t\t\t\t\tTwo\t\t\n";

class sim_directory : public testing::Test
{
protected:
    void start(tovrik::directory_fault fault = tovrik::directory_fault::none, int delay_ms = 0,
               std::optional<std::string> text = two_lines)
    {
        auto options = quick_server();
        options.directory_port = 0;
        options.directory_text = std::move(text);
        options.directory_answers = fault;
        options.directory_delay_ms = delay_ms;
        options.name = "practice";
        server = std::make_unique<tovrik::practice_server>(options);
        ASSERT_TRUE(server->start());
        ASSERT_NE(server->directory_port(), 0);
    }

    std::string answer_to(const std::string& bytes)
    {
        sim_raw_client client{server->directory_port()};
        EXPECT_TRUE(client.send_bytes(bytes));
        return all_of(client);
    }

    static std::string all_of(sim_raw_client& client)
    {
        const auto text = client.receive_all();
        EXPECT_TRUE(text) << "the stream did not end";
        return text.value_or("");
    }

    static std::string body_of(const std::string& answer)
    {
        const auto end = answer.find("\r\n\r\n");
        return end == std::string::npos ? "no header end" : answer.substr(end + 4);
    }

    std::unique_ptr<tovrik::practice_server> server;
};

TEST(sim_directory_of_its_own, names_the_address_that_the_asker_came_to)
{
    auto options = quick_server();
    options.directory_port = 0;
    options.bind_address = "0.0.0.0";
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start()) << server.error();
    for (const std::string address : {"127.0.0.1", "127.0.0.2"}) {
        sim_raw_client client{server.directory_port(), address};
        ASSERT_TRUE(client.send_bytes(request));
        std::string answer;
        char c = 0;
        while (wait_for_socket(client.fd, POLLIN, default_patience) && read(client.fd, &c, 1) == 1)
            answer += c;
        const std::string line = "\r\n\r\n" + address + "\t" + std::to_string(server.port()) + "\t";
        EXPECT_NE(answer.find(line), std::string::npos) << answer;
    }
}

TEST_F(sim_directory, gives_its_text_to_both_versions_of_http)
{
    start();
    for (const char* bytes : {request, "GET /tovrikserver.main HTTP/1.1\r\nHost: x\r\n\r\n"}) {
        const std::string answer = answer_to(bytes);
        EXPECT_TRUE(answer.starts_with("HTTP/1.0 200 OK\r\n")) << answer;
        EXPECT_EQ(body_of(answer), two_lines);
    }
}

TEST_F(sim_directory, names_the_server_itself_where_told_nothing_else)
{
    start(tovrik::directory_fault::none, 0, std::nullopt);
    const std::string line = body_of(answer_to(request));
    ASSERT_TRUE(line.ends_with('\n'));
    const auto fields =
        tovrik::split_fields(std::string_view{line}.substr(0, line.size() - 1), '\t');
    ASSERT_EQ(fields.size(), 9U);
    EXPECT_EQ(fields[0], "127.0.0.1");
    EXPECT_EQ(fields[1], std::to_string(server->port()));
    EXPECT_FALSE(fields[3].empty());
    EXPECT_FALSE(fields[4].empty());
    EXPECT_EQ(fields[6], "practice");
}

TEST_F(sim_directory, refuses_what_it_does_not_have_or_understand)
{
    start();
    const struct {
        std::string bytes;
        const char* status;
    } rows[] = {{"GET / HTTP/1.0\r\n\r\n", "404 Not Found"},
                {"GET /tovrikserver.mai HTTP/1.0\r\n\r\n", "404 Not Found"},
                {"GET /tovrikserver.main/ HTTP/1.1\r\n\r\n", "404 Not Found"},
                {"POST /tovrikserver.main HTTP/1.0\r\n\r\n", "405 Method Not Allowed"},
                {"GET /tovrikserver.main\r\n\r\n", "400 Bad Request"},
                {"GET /tovrikserver.main HTTP/2\r\n\r\n", "400 Bad Request"},
                {"GET  /tovrikserver.main HTTP/1.0\r\n\r\n", "400 Bad Request"},
                {"get /tovrikserver.main HTTP/1.0\r\n\r\n", "400 Bad Request"},
                {"\r\n\r\n", "400 Bad Request"},
                {std::string("\0\xff\r\n\r\n", 6), "400 Bad Request"},
                {std::string(tovrik::max_directory_request_bytes + 1, 'x'), "400 Bad Request"}};
    for (const auto& row : rows) {
        const std::string answer = answer_to(row.bytes);
        EXPECT_TRUE(answer.starts_with("HTTP/1.0 " + std::string{row.status} + "\r\n"))
            << row.bytes.substr(0, 60) << ": " << answer;
        EXPECT_EQ(answer.find("one.example"), std::string::npos);
    }
}

TEST_F(sim_directory, takes_a_request_in_pieces_and_from_one_who_says_no_more)
{
    start();
    sim_raw_client client{server->directory_port()};
    for (const char* at = request; *at != '\0'; ++at)
        ASSERT_TRUE(client.send_bytes(std::string(1, *at)));
    shutdown(client.fd, SHUT_WR);
    EXPECT_EQ(body_of(all_of(client)), two_lines);
}

TEST_F(sim_directory, answers_one_who_has_said_no_more_for_a_while)
{
    start(tovrik::directory_fault::none, 100);
    sim_raw_client client{server->directory_port()};
    ASSERT_TRUE(client.send_bytes(request));
    shutdown(client.fd, SHUT_WR);
    EXPECT_EQ(body_of(all_of(client)), two_lines);
}

TEST_F(sim_directory, gives_out_large_texts_whole_and_to_many)
{
    std::string text;
    while (text.size() < 5'000'000)
        text += "host" + std::to_string(text.size()) + "\t2202\t\tplace\tinfo\t\talias\t\t\n";
    start(tovrik::directory_fault::none, 0, text);
    std::vector<sim_raw_client> clients;
    clients.reserve(5);
    for (int i = 0; i < 5; ++i) {
        clients.emplace_back(server->directory_port());
        ASSERT_TRUE(clients.back().send_bytes(request));
    }
    for (auto& client : clients)
        EXPECT_TRUE(body_of(all_of(client)) == text);
}

TEST_F(sim_directory, serves_its_clients_while_it_is_asked_and_flooded)
{
    start(tovrik::directory_fault::endless);
    sim_raw_client reader{server->directory_port()};
    ASSERT_TRUE(reader.send_bytes(request));
    sim_raw_client client{server->port()};
    ASSERT_TRUE(client.receive());
    client.send_text(148, "^");
    EXPECT_EQ(client.receive()->kind, 5U);
}

TEST_F(sim_directory, hangs_up_on_more_than_it_takes)
{
    start();
    std::vector<sim_raw_client> silent;
    silent.reserve(tovrik::max_directory_connections);
    for (std::size_t i = 0; i < tovrik::max_directory_connections; ++i)
        silent.emplace_back(server->directory_port());
    sim_raw_client last{server->directory_port()};
    EXPECT_TRUE(last.ends());
    silent.clear();
    // Only when the server has noticed is there room again.
    std::string answer;
    for (int i = 0; i < 1000 && answer.empty(); ++i)
        answer = answer_to(request);
    EXPECT_EQ(body_of(answer), two_lines);
}

TEST_F(sim_directory, can_be_endless)
{
    start(tovrik::directory_fault::endless);
    sim_raw_client client{server->directory_port()};
    ASSERT_TRUE(client.send_bytes(request));
    std::string text;
    char block[65536];
    while (text.size() < 2'000'000 && wait_for_socket(client.fd, POLLIN, default_patience)) {
        const ssize_t count = recv(client.fd, block, sizeof block, 0);
        ASSERT_GT(count, 0);
        text.append(block, static_cast<std::size_t>(count));
    }
    const std::string body = body_of(text);
    const std::string lines = two_lines;
    for (std::size_t at = 0; at + lines.size() <= body.size(); at += lines.size())
        ASSERT_EQ(body.compare(at, lines.size(), lines), 0) << at;
}

TEST_F(sim_directory, can_lack_its_header_end)
{
    start(tovrik::directory_fault::no_header_end);
    const std::string answer = answer_to(request);
    EXPECT_EQ(answer.find("\r\n\r\n"), std::string::npos) << answer;
    EXPECT_TRUE(answer.ends_with(two_lines)) << answer;
}

TEST_F(sim_directory, can_be_late)
{
    start(tovrik::directory_fault::none, 50);
    EXPECT_EQ(body_of(answer_to(request)), two_lines);
}

TEST_F(sim_directory, lets_a_client_go_that_leaves_before_its_answer)
{
    start(tovrik::directory_fault::none, 3'600'000);
    for (std::size_t i = 0; i < 2 * tovrik::max_directory_connections; ++i) {
        sim_raw_client client{server->directory_port()};
        ASSERT_TRUE(client.send_bytes(request));
        const linger at_once{1, 0};
        setsockopt(client.fd, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        shutdown(client.fd, SHUT_WR);
    }
    // Only when the server has noticed is there room again.
    bool has_room = false;
    for (int i = 0; i < 1000 && !has_room; ++i) {
        sim_raw_client next{server->directory_port()};
        has_room = next.send_bytes(request) &&
                   !wait_for_socket(next.fd, POLLIN, std::chrono::milliseconds{50});
    }
    EXPECT_TRUE(has_room) << "new clients are hung up on instead of having to wait";
}

TEST_F(sim_directory, can_be_silent_until_the_server_stops)
{
    start(tovrik::directory_fault::silent);
    sim_raw_client client{server->directory_port()};
    ASSERT_TRUE(client.send_bytes(request));
    EXPECT_FALSE(wait_for_socket(client.fd, POLLIN, std::chrono::milliseconds{200}));
    server->stop();
    EXPECT_TRUE(client.ends());
    EXPECT_EQ(server->directory_port(), 0);
}

TEST_F(sim_directory, says_why_it_cannot_listen)
{
    start();
    auto options = quick_server();
    options.directory_port = server->directory_port();
    tovrik::practice_server second{options};
    EXPECT_FALSE(second.start());
    EXPECT_EQ(second.error(),
              "cannot listen on 127.0.0.1:" + std::to_string(server->directory_port()) +
                  ": Address already in use");
}

TEST(sim_directory_text, has_nine_fields_in_every_line)
{
    EXPECT_EQ(tovrik::directory_text_error(two_lines), "");
    EXPECT_EQ(tovrik::directory_text_error("a\tb\tc\td\te\tf\tg\th\ti"), "");
    EXPECT_EQ(tovrik::directory_text_error(""), "holds no line");
    EXPECT_EQ(tovrik::directory_text_error(std::string{two_lines} + "\n"),
              "line 3 does not have nine fields");
    EXPECT_EQ(tovrik::directory_text_error("a\tb\n"), "line 1 does not have nine fields");
    EXPECT_EQ(tovrik::directory_text_error("a\tb\tc\td\te\tf\tg\th\ti\tj\n"),
              "line 1 does not have nine fields");
}

} // namespace
