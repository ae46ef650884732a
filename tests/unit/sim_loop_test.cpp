// sim_loop_test.cpp - the practice server's loop and its sockets: it sleeps until something is due,
// rests when the system has no descriptor left, and leaves signals and addresses to others.
#include "sim_raw_client.hpp"

#include "server/base/limits.hpp"
#include "server/practice/directory.hpp"
#include "server/services/server_loop.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace
{

using namespace std::chrono_literals;

TEST(sim_loop, sleeps_until_what_is_next_is_due)
{
    const tovrik::service_options options;
    const tovrik::server_core core{options};
    constexpr tovrik::time_point now{1000s};
    EXPECT_EQ(loop_wait_ms(core, tovrik::never, now), -1) << "nothing is ever due";
    const struct {
        std::chrono::nanoseconds until;
        int wait_ms;
    } rows[] = {{1ns, 1},        {300us, 1}, {1ms, 1},  {1ms + 1ns, 2},
                {1999us, 2},     {0ns, 0},   {-5ms, 0}, {59'999ms + 1us, 60'000},
                {3'600s, 60'000}};
    for (const auto& row : rows) {
        const auto next =
            now + std::chrono::duration_cast<tovrik::steady_clock::duration>(row.until);
        EXPECT_EQ(loop_wait_ms(core, next, now), row.wait_ms) << row.until.count() << " ns";
    }
    EXPECT_EQ(loop_wait_ms(core, tovrik::time_point::min(), now), 0) << "there is more to read";
}

/// While it lives, the test program gets no further descriptor.
class no_more_descriptors
{
public:
    no_more_descriptors()
    {
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
        const int lowest_free = dup(STDERR_FILENO);
        EXPECT_GE(lowest_free, 0);
        close(lowest_free);
        rlimit limit = before;
        limit.rlim_cur = static_cast<rlim_t>(lowest_free);
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    ~no_more_descriptors()
    {
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    }
    no_more_descriptors(const no_more_descriptors&) = delete;
    no_more_descriptors& operator=(const no_more_descriptors&) = delete;

private:
    rlimit before = {};
};

TEST(sim_listener, rests_while_the_system_is_short_of_descriptors)
{
    tovrik::tcp_listener listener;
    ASSERT_EQ(listener_open(listener, "127.0.0.1", 0), "");
    const unique_fd epoll{epoll_create1(EPOLL_CLOEXEC)};
    ASSERT_TRUE(tovrik::watch(epoll.get(), EPOLL_CTL_ADD, listener.socket.get(), EPOLLIN));
    const auto is_woken = [&] {
        epoll_event event;
        return epoll_wait(epoll.get(), &event, 1, 0) == 1;
    };
    const sim_raw_client waiting{listener.port};
    ASSERT_TRUE(wait_for_socket(listener.socket.get(), POLLIN, default_patience));
    ASSERT_TRUE(is_woken());
    const tovrik::time_point before = tovrik::steady_clock::now();
    {
        const no_more_descriptors shortage;
        EXPECT_FALSE(listener_accept(listener, epoll.get()));
    }
    EXPECT_FALSE(is_woken()) << "the client that waits would wake the loop again and again";
    const tovrik::time_point resume_at = listener.accept_again_at;
    EXPECT_GE(resume_at, before + std::chrono::milliseconds{tovrik::accept_retry_ms});
    EXPECT_NE(resume_at, tovrik::never);
    listener_resume(listener, epoll.get(), resume_at - 1ms);
    EXPECT_FALSE(is_woken());
    listener_resume(listener, epoll.get(), resume_at);
    EXPECT_TRUE(is_woken());
    EXPECT_EQ(listener.accept_again_at, tovrik::never);
    EXPECT_TRUE(listener_accept(listener, epoll.get()));
}

TEST(sim_directory_connection, is_closed_by_the_client_so_that_nothing_sent_is_lost)
{
    tovrik::server_options options = quick_server();
    options.directory_port = 0;
    tovrik::directory_service directory;
    const unique_fd epoll{epoll_create1(EPOLL_CLOEXEC)};
    ASSERT_EQ(directory_open(directory, options, epoll.get(), 2202), "");
    sim_raw_client client{directory.listener.port};
    const auto handle_next = [&] {
        epoll_event event;
        ASSERT_EQ(epoll_wait(epoll.get(), &event, 1, static_cast<int>(default_patience.count())),
                  1);
        directory_on_event(directory, options, epoll.get(), event.data.fd);
        directory_on_time(directory, epoll.get(), tovrik::steady_clock::now());
    };
    ASSERT_NO_FATAL_FAILURE(handle_next());
    ASSERT_TRUE(client.send_bytes("GET /tovrikserver.main HTTP/1.0\r\n\r\nand more"));
    while (!directory.connections.empty() && !directory.connections.begin()->second.answering)
        ASSERT_NO_FATAL_FAILURE(handle_next());
    EXPECT_TRUE(client.ends()) << "the server's side";
    ASSERT_EQ(directory.connections.size(), 1U);
    client.hang_up();
    ASSERT_NO_FATAL_FAILURE(handle_next());
    EXPECT_TRUE(directory.connections.empty());
}

TEST(sim_listener, gets_its_address_again_at_once_after_closing_connections)
{
    auto options = quick_server();
    tovrik::practice_server first{options};
    ASSERT_TRUE(first.start());
    options.port = first.port();
    sim_raw_client client{first.port()};
    ASSERT_TRUE(client.receive());
    // The side that closes first keeps the connection's address for a minute.
    first.stop();
    ASSERT_TRUE(client.ends());
    client.hang_up();
    tovrik::practice_server second{options};
    EXPECT_TRUE(second.start()) << second.error();
}

/// The threads of the test program.
std::set<std::string> find_threads()
{
    std::set<std::string> threads;
    for (const auto& thread : std::filesystem::directory_iterator{"/proc/self/task"})
        threads.insert(thread.path());
    return threads;
}

/// The signals that a thread blocks, one bit for each from 1 on.
unsigned long read_blocked_signals(const std::string& thread)
{
    std::ifstream status{thread + "/status"};
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigBlk:"))
            return std::stoul(line.substr(line.find('\t') + 1), nullptr, 16);
    }
    ADD_FAILURE() << "no mask of " << thread;
    return 0;
}

TEST(sim_loop, leaves_all_signals_to_the_programs_own_threads)
{
    sigset_t mask_before;
    sigset_t mask_after;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask_before);
    // The thread sanitizer starts a thread of its own beside the first one.
    std::thread{[] {}}.join();
    const std::set<std::string> before = find_threads();
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    pthread_sigmask(SIG_BLOCK, nullptr, &mask_after);
    // A new thread blocks everything until it has begun to run.
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    int started = 0;
    for (const std::string& thread : find_threads()) {
        if (before.contains(thread))
            continue;
        ++started;
        const unsigned long blocked = read_blocked_signals(thread);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGCHLD, SIGWINCH,
                                 SIGTSTP, SIGCONT, SIGPIPE, SIGUSR1, SIGUSR2})
            EXPECT_NE(blocked & 1UL << (number - 1), 0U) << number;
    }
    EXPECT_EQ(started, 1);
    for (const int number : {SIGINT, SIGTERM, SIGALRM, SIGPIPE})
        EXPECT_EQ(sigismember(&mask_after, number), sigismember(&mask_before, number)) << number;
}

} // namespace
