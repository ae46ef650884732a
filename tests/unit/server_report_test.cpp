// server_report_test.cpp - reports that take their time, or cannot be made.
#include "server/base/limits.hpp"
#include "server/services/report_requests.hpp"
#include "server/services/server_core.hpp"
#include "server/storage/memory_store.hpp"

#include <gtest/gtest.h>

#include <deque>
#include <fcntl.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr std::time_t sample_time = 1767609000;

std::string request_of(std::time_t moment)
{
    return std::to_string(moment) + "\t*#cnam#\t#cnum#\t0\t0";
}

/// A store that makes reports when the test says so.
class store_in_no_hurry : public tovrik::memory_store
{
public:
    using tovrik::memory_store::memory_store;
    void make_report(std::time_t, tovrik::report_taker answer) override
    {
        asked.push_back(std::move(answer));
    }
    /// Makes the first report, which has some pieces.
    void make_first(std::size_t pieces)
    {
        const auto answer = std::move(asked.front());
        asked.pop_front();
        answer(std::vector<tovrik::report_part>{
            {.data = std::string(pieces * tovrik::max_payload_bytes, 'x'), .size = 1}});
    }
    std::deque<tovrik::report_taker> asked;
};

/// A server with such a store, and clients that ask for reports.
struct server_in_no_hurry {
    server_in_no_hurry()
    {
        core.store = &store;
    }
    tovrik::client_session& connect()
    {
        const int fd = open("/dev/null", O_RDWR | O_CLOEXEC);
        return core.sessions.try_emplace(fd, fd, home, ++clients).first->second;
    }
    /// Whether the server makes a report for a client.
    bool asks(tovrik::client_session& session)
    {
        const std::size_t before = store.asked.size();
        session.assured.clear();
        answer_report_request(core, session, {.kind = 70, .payload = request_of(sample_time)});
        const bool is_refused =
            !session.assured.empty() && tovrik::decode_header(*session.assured.back()).kind == 72;
        EXPECT_NE(store.asked.size() > before, is_refused);
        return !is_refused;
    }

    const tovrik::service_options options{.capabilities = {.reports = "1"}};
    tovrik::server_core core{options};
    store_in_no_hurry store{core.services, options.name};
    tovrik::channel home;
    std::uint64_t clients = 0;
};

TEST(server_report, is_under_way_until_it_is_made_and_sent)
{
    server_in_no_hurry server;
    auto& patient = server.connect();
    EXPECT_TRUE(server.asks(patient));
    for (std::size_t i = 1; i < tovrik::max_reports_at_once; ++i)
        EXPECT_TRUE(server.asks(server.connect())) << i;
    auto& late = server.connect();
    EXPECT_FALSE(server.asks(late));
    server.store.make_first(10);
    EXPECT_EQ(patient.report.size(), 11U) << "with the announcement";
    EXPECT_FALSE(server.asks(patient)) << "its own is under way";
    EXPECT_FALSE(server.asks(late));
    patient.report.clear();
    EXPECT_TRUE(server.asks(late));
}

TEST(server_report, is_made_nevertheless_for_a_client_that_has_gone)
{
    server_in_no_hurry server;
    const auto& leaving = server.connect();
    const int leaving_fd = leaving.socket.get();
    EXPECT_TRUE(server.asks(server.core.sessions.at(leaving_fd)));
    for (std::size_t i = 1; i < tovrik::max_reports_at_once; ++i)
        EXPECT_TRUE(server.asks(server.connect())) << i;
    auto& late = server.connect();
    server.core.sessions.erase(leaving_fd);
    EXPECT_FALSE(server.asks(late));
    server.store.make_first(1);
    EXPECT_TRUE(server.asks(late)) << "there is nobody to send it to";
}

/// A store whose database makes no report now.
class store_in_trouble : public tovrik::memory_store
{
public:
    using tovrik::memory_store::memory_store;
    void make_report(std::time_t moment, tovrik::report_taker answer) override
    {
        asked.push_back(moment);
        answer(std::nullopt);
    }
    std::vector<std::time_t> asked;
};

/// A server with such a store, and a client that asks for reports.
struct server_in_trouble {
    void ask(std::time_t moment)
    {
        answer_report_request(core, session, {.kind = 70, .payload = request_of(moment)});
    }

    const tovrik::service_options options{.capabilities = {.reports = "1"}};
    tovrik::server_core core{options};
    store_in_trouble store{core.services, options.name};
    tovrik::channel home;
    const int fd = open("/dev/null", O_RDWR | O_CLOEXEC);
    tovrik::client_session& session = core.sessions.try_emplace(fd, fd, home, 1).first->second;
};

TEST(server_report, that_cannot_be_made_is_not_an_empty_one)
{
    server_in_trouble server;
    server.core.store = &server.store;
    server.ask(sample_time);
    server.ask(sample_time);
    ASSERT_EQ(server.session.assured.size(), 2U) << "the next one may be made";
    for (const auto& answer : server.session.assured)
        EXPECT_EQ(tovrik::decode_header(*answer).kind, 72U);
}

TEST(server_report, is_of_no_moment_beyond_all_calendars)
{
    server_in_trouble server;
    server.core.store = &server.store;
    server.ask(std::numeric_limits<std::time_t>::min());
    server.ask(std::numeric_limits<std::time_t>::max());
    EXPECT_EQ(server.store.asked, (std::vector<std::time_t>{-253402300799, 253402300799}));
}

} // namespace
