// web_service_test.cpp - the service over real sockets, with askers that are no friends of it.
#include "sim_raw_client.hpp"
#include "web_sample_report.hpp"

#include "server/base/limits.hpp"
#include "server/web/web_service.hpp"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace
{

using namespace std::chrono_literals;
using steady = std::chrono::steady_clock;

/// Far below what a silent asker gets, so that nobody has waited for one; and long enough for a
/// busy machine.
constexpr auto max_wait = 3s;

class web_service : public testing::Test
{
protected:
    void start(tovrik::web_options options = {})
    {
        ASSERT_EQ(service.start(options), "");
        ASSERT_NE(service.port(), 0);
        service.publish(std::make_shared<const tovrik::server_report>(sample_report()));
    }

    std::string ask(const std::string& path)
    {
        return answer_to("GET " + path + " HTTP/1.0\r\n\r\n");
    }

    std::string answer_to(const std::string& request)
    {
        sim_raw_client client{service.port()};
        EXPECT_TRUE(client.send_bytes(request));
        return rest_of(client);
    }

    static std::string rest_of(sim_raw_client& client)
    {
        const auto answer = client.receive_all();
        EXPECT_TRUE(answer) << "the stream did not end";
        return answer.value_or("");
    }

    std::vector<sim_raw_client> connect_many(std::size_t count)
    {
        std::vector<sim_raw_client> clients;
        for (std::size_t i = 0; i < count; ++i)
            clients.emplace_back(service.port());
        return clients;
    }

    tovrik::web_service service;
};

TEST_F(web_service, gives_out_its_pages)
{
    start();
    EXPECT_NE(ask("/").find("<h1>Home</h1>"), std::string::npos);
    EXPECT_NE(ask("/metrics").find("\ntovrikd_clients 14\n"), std::string::npos);
    EXPECT_TRUE(ask("/healthz").ends_with("\r\n\r\nok\n"));
    EXPECT_TRUE(ask("/other").starts_with("HTTP/1.1 404 "));
}

TEST_F(web_service, tells_what_was_published_last)
{
    start();
    auto report = sample_report();
    report.clients = 15;
    service.publish(std::make_shared<const tovrik::server_report>(report));
    EXPECT_NE(ask("/metrics").find("\ntovrikd_clients 15\n"), std::string::npos);
}

TEST_F(web_service, says_so_while_nothing_is_published)
{
    start({.max_report_age = 100ms});
    const auto is_well = [this] { return ask("/healthz").ends_with("\r\n\r\nok\n"); };
    const auto limit = steady::now() + default_patience;
    while (is_well() && steady::now() < limit)
        std::this_thread::sleep_for(10ms);
    EXPECT_TRUE(ask("/healthz").starts_with("HTTP/1.1 503 "));
    bool is_well_again = false;
    while (!is_well_again && steady::now() < limit) {
        service.publish(std::make_shared<const tovrik::server_report>(sample_report()));
        is_well_again = is_well();
    }
    EXPECT_TRUE(is_well_again);
}

TEST_F(web_service, names_the_address_that_the_asker_reached)
{
    start({.bind = "0.0.0.0"});
    for (const std::string address : {"127.0.0.1", "127.0.0.9"}) {
        sim_raw_client client{service.port()};
        client.hang_up();
        client.fd = begin_connect(address, service.port());
        EXPECT_TRUE(client.send_bytes("GET /tovrikserver.main HTTP/1.0\r\nHost: liar\r\n\r\n"));
        const std::string answer = rest_of(client);
        EXPECT_NE(answer.find("\r\n\r\n" + address + "\t2202\t"), std::string::npos) << answer;
        EXPECT_EQ(answer.find("0.0.0.0"), std::string::npos);
    }
}

TEST_F(web_service, names_its_public_name_if_it_has_one)
{
    start({.public_name = "acars.example"});
    EXPECT_NE(ask("/tovrikserver.main").find("\r\n\r\nacars.example\t2202\t"), std::string::npos);
}

TEST_F(web_service, takes_a_request_in_any_pieces)
{
    start();
    const std::string request = "GET /healthz HTTP/1.1\r\nHost: x\r\n\r\n";
    sim_raw_client client{service.port()};
    for (const char c : request)
        ASSERT_TRUE(client.send_bytes({c}));
    EXPECT_TRUE(rest_of(client).ends_with("ok\n"));
}

TEST_F(web_service, refuses_a_head_without_end)
{
    start();
    const std::string begin = "GET / HTTP/1.1\r\nX: ";
    EXPECT_TRUE(answer_to(begin + std::string(tovrik::max_web_request_bytes, 'x'))
                    .starts_with("HTTP/1.1 431 "));
}

TEST_F(web_service, refuses_what_ends_before_the_request_does)
{
    start();
    sim_raw_client client{service.port()};
    ASSERT_TRUE(client.send_bytes("GET / HT"));
    shutdown(client.fd, SHUT_WR);
    EXPECT_TRUE(rest_of(client).starts_with("HTTP/1.1 400 "));
}

TEST_F(web_service, answers_a_request_whose_body_it_does_not_read)
{
    start();
    sim_raw_client client{service.port()};
    ASSERT_TRUE(client.send_bytes("POST / HTTP/1.1\r\nContent-Length: 1000000\r\n\r\n" +
                                  std::string(60'000, 'x')));
    EXPECT_TRUE(rest_of(client).starts_with("HTTP/1.1 405 "));
}

TEST_F(web_service, lets_nobody_wait_for_those_who_are_silent_or_slow)
{
    start();
    const auto silent = connect_many(50);
    auto slow = connect_many(50);
    for (auto& client : slow)
        ASSERT_TRUE(client.send_bytes("GET / HTTP/1.1\r\nX-"));
    for (int i = 0; i < 20; ++i) {
        const auto begun = steady::now();
        EXPECT_TRUE(ask("/healthz").ends_with("ok\n"));
        EXPECT_LT(steady::now() - begun, max_wait);
    }
}

TEST_F(web_service, gives_the_place_of_the_oldest_asker_to_a_new_one)
{
    start();
    auto silent = connect_many(tovrik::max_web_connections + 10);
    EXPECT_TRUE(ask("/healthz").ends_with("ok\n"));
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_EQ(rest_of(silent[i]), "") << "not told that its time is over";
    auto& last = silent.back();
    ASSERT_TRUE(last.send_bytes("GET /healthz HTTP/1.0\r\n\r\n"));
    EXPECT_TRUE(rest_of(last).ends_with("ok\n"));
}

TEST_F(web_service, ends_its_patience_with_the_silent)
{
    start();
    sim_raw_client silent{service.port()};
    EXPECT_TRUE(rest_of(silent).starts_with("HTTP/1.1 408 "));
}

TEST_F(web_service, gives_a_large_directory_to_a_slow_reader)
{
    start({.max_report_age = 60s}); // a sanitizer takes its time for so many servers
    auto report = sample_report();
    // More than the system holds for both ends of a connection.
    report.listed.assign(20'000, {.host = "host.example", .description = std::string(1000, 'x')});
    service.publish(std::make_shared<const tovrik::server_report>(report));
    sim_raw_client client{service.port()};
    ASSERT_TRUE(client.send_bytes("GET /tovrikserver.main HTTP/1.0\r\n\r\n"));
    EXPECT_TRUE(ask("/healthz").ends_with("ok\n")) << "others do not wait meanwhile";
    const std::string answer = rest_of(client);
    EXPECT_EQ(std::ranges::count(answer.substr(answer.find("\r\n\r\n")), '\t'), 160'000);
}

TEST_F(web_service, stops_within_a_second_whatever_its_askers_do)
{
    start();
    auto silent = connect_many(20);
    auto deaf = connect_many(20);
    for (auto& client : deaf)
        ASSERT_TRUE(client.send_bytes("GET / HTTP/1.1\r\n\r\n"));
    EXPECT_TRUE(ask("/healthz").ends_with("ok\n"));
    const auto begun = steady::now();
    service.stop();
    EXPECT_LT(steady::now() - begun, max_wait);
    EXPECT_EQ(service.port(), 0);
    for (auto& client : silent)
        EXPECT_TRUE(client.ends());
}

TEST_F(web_service, starts_again_on_the_same_port)
{
    start();
    EXPECT_TRUE(ask("/healthz").ends_with("ok\n"));
    const auto port = service.port();
    start({.port = port});
    EXPECT_EQ(service.port(), port);
    EXPECT_TRUE(ask("/healthz").ends_with("ok\n"));
}

TEST_F(web_service, says_why_it_cannot_start)
{
    start();
    tovrik::web_service second;
    const auto port = service.port();
    EXPECT_NE(second.start({.port = port}).find("127.0.0.1:" + std::to_string(port)),
              std::string::npos);
    EXPECT_EQ(second.port(), 0);
    EXPECT_NE(second.start({.bind = "localhost"}).find("localhost"), std::string::npos);
    second.publish(nullptr);
    second.stop();
}

/// The signals, as bits, that are blocked in the threads of this process; without the main one.
std::vector<unsigned long long> blocked_signals_of_threads()
{
    std::vector<unsigned long long> masks;
    for (const auto& task : std::filesystem::directory_iterator{"/proc/self/task"}) {
        if (task.path().filename() == std::to_string(getpid()))
            continue;
        std::ifstream status{task.path() / "status"};
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("SigBlk:\t"))
                masks.push_back(std::stoull(line.substr(8), nullptr, 16));
    }
    return masks;
}

TEST_F(web_service, takes_no_signals_from_the_program)
{
    const auto before = blocked_signals_of_threads().size();
    start();
    EXPECT_TRUE(ask("/healthz").ends_with("ok\n")) << "a thread that begins takes no signals yet";
    const auto masks = blocked_signals_of_threads();
    ASSERT_GT(masks.size(), before) << "a sanitizer may have one of its own, too";
    for (const int signal_number : {SIGTERM, SIGINT, SIGHUP, SIGCHLD, SIGALRM, SIGPIPE, SIGUSR1})
        EXPECT_TRUE(masks.back() >> (signal_number - 1) & 1) << signal_number;
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGTERM), 0) << "the starter's own are as they were";
}

} // namespace
