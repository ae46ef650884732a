// sim_report_test.cpp - the practice server's reports of a day.
#include "sim_raw_client.hpp"

#include "server/base/limits.hpp"
#include "server/messages/read_transmission.hpp"
#include "server/services/report_requests.hpp"
#include "server/services/server_core.hpp"
#include "server/storage/memory_store.hpp"
#include "unit/sim_sample_message.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <optional>
#include <string>
#include <vector>
#include <zlib.h>

namespace
{

std::string request_of(std::time_t moment)
{
    return std::to_string(moment) + "\t*#cnam#\t#cnum#\t0\t0";
}

/// A report as a client receives it; other kinds in between are skipped.
struct received_report {
    std::size_t total = 0;
    std::size_t size = 0;
    std::string data;

    std::string text(int expected_result) const
    {
        std::string unpacked(4 * size, '\0');
        uLongf length = unpacked.size();
        EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(unpacked.data()), &length,
                             reinterpret_cast<const Bytef*>(data.data()), data.size()),
                  expected_result);
        return unpacked.substr(0, expected_result == Z_OK ? length : 0);
    }
};

received_report receive_report(sim_raw_client& client)
{
    received_report report;
    EXPECT_TRUE(client.receive_kind(71));
    const auto header = client.receive_kind(74);
    EXPECT_TRUE(header);
    if (!header)
        return report;
    report.total = std::stoul(header->payload);
    report.size = std::stoul(header->payload.substr(header->payload.find('\t') + 1));
    while (report.data.size() < report.total) {
        const auto piece = client.receive_kind(205);
        EXPECT_TRUE(piece);
        if (!piece)
            break;
        report.data += piece->payload;
    }
    return report;
}

tovrik::server_options reporting_server()
{
    auto options = quick_server();
    options.capabilities.reports = "1";
    return options;
}

TEST(sim_report, shows_the_messages_of_its_day)
{
    tovrik::message_archive archive;
    tovrik::reference_data reference;
    ASSERT_TRUE(reference.add(33, "FRA\tFrankfurt, Germany"));
    archive.add(sample_message("D-AIQA"), sample_time, reference);
    archive.add({.registration = "D-AIQB"}, sample_time + 86400, reference);
    EXPECT_EQ(archive.report_of({10, 7, 2025}, "practice"),
              "Messages of 10/07/2025 from practice\n"
              "1 message. Times are UTC.\n\n"
              "11:47  D-AIQA  Airbus A320-211  Lufthansa\n"
              "       Flight LH0400  FRA (Frankfurt, Germany) - JFK\n"
              "       Mode 2  Label H1  Block 7  Message M07A\n"
              "       LINE ONE\n"
              "       LINE TWO\n\n");
    EXPECT_EQ(archive.report_of(tovrik::local_day(sample_time + 86400), "practice").substr(37),
              "1 message. Times are UTC.\n\n--:--  D-AIQB\n\n");
    EXPECT_EQ(archive.report_of({10, 7, 2024}, "practice"), "");
    EXPECT_EQ(archive.report_of({}, "practice"), "") << "a moment beyond all calendars";
}

TEST(sim_report, takes_messages_that_are_dated_or_were_sent_on_its_day)
{
    tovrik::message_archive archive;
    archive.add(sample_message("D-AIQA"), sample_time + 100L * 86400, {});
    EXPECT_NE(archive.report_of({10, 7, 2025}, ""), "");
    EXPECT_NE(archive.report_of(tovrik::local_day(sample_time + 100L * 86400), ""), "");
}

TEST(sim_report, is_bounded_and_says_so)
{
    tovrik::message_archive archive;
    auto message = sample_message("D-FIRST");
    message.content = std::string(500, 'x');
    archive.add(message, sample_time, {});
    const std::size_t count = tovrik::max_report_bytes / 500 + 100;
    message.registration = "D-LATER";
    for (std::size_t i = 0; i < count; ++i)
        archive.add(message, sample_time, {});
    const std::string report = archive.report_of({10, 7, 2025}, "practice");
    EXPECT_LE(report.size(), tovrik::max_report_bytes + 200);
    EXPECT_GT(report.size(), tovrik::max_report_bytes - 2000);
    EXPECT_NE(report.find(std::to_string(count + 1) + " messages, of which the latest "),
              std::string::npos);
    EXPECT_EQ(report.find("D-FIRST"), std::string::npos) << "the oldest are left out";
}

TEST(sim_report, archive_drops_the_oldest_messages)
{
    tovrik::message_archive archive;
    for (std::size_t i = 0; i < tovrik::max_archived_messages + 10; ++i)
        archive.add({.registration = "D"}, sample_time, {});
    EXPECT_EQ(archive.size(), tovrik::max_archived_messages);
    auto message = sample_message("D-AIQA");
    message.content = std::string(4000, 'x');
    for (std::size_t i = 0; i < tovrik::max_archived_bytes / 4000 + 200; ++i)
        archive.add(message, sample_time, {});
    EXPECT_LT(archive.size(), tovrik::max_archived_bytes / 4000);
}

TEST(sim_report, reads_messages_back_from_their_documents)
{
    const auto message = sample_message("D-AIQA");
    const auto read = tovrik::read_transmission(transmission_xml(message));
    EXPECT_EQ(transmission_xml(read), transmission_xml(message));
    EXPECT_EQ(read.time, sample_time);
    for (const char* xml : {"", "<?xml?>", "no document",
                            "<?xml?><tovrik><ACARS><MessageDate>"
                            "<Day>32</Day><Month>1</Month>"}) {
        const auto nothing = tovrik::read_transmission(xml);
        EXPECT_EQ(nothing.time, 0) << xml;
        EXPECT_EQ(nothing.registration, "");
    }
}

TEST(sim_report, comes_in_pieces_that_decompress_to_what_was_sent)
{
    tovrik::practice_server server{reporting_server()};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    std::uint32_t state = 1;
    std::string last;
    for (int i = 0; i < 60; ++i) {
        auto message = sample_message("D-AIQA");
        message.content.clear();
        while (message.content.size() < 400) {
            state = state * 1664525 + 1013904223;
            message.content += static_cast<char>('A' + (state >> 24) % 26);
        }
        last = message.content;
        ASSERT_TRUE(server.push_transmission(transmission_xml(message)));
    }
    client.send_text(70, request_of(std::time(nullptr)));
    const auto report = receive_report(client);
    EXPECT_GT(report.total, 4096U) << "more than one piece";
    EXPECT_EQ(report.data.size(), report.total);
    const std::string text = report.text(Z_OK);
    EXPECT_EQ(text.size(), report.size) << "clients show the size of the text";
    EXPECT_TRUE(text.starts_with("Messages of ")) << text.substr(0, 100);
    EXPECT_NE(text.find("60 messages. "), std::string::npos);
    EXPECT_NE(text.find(last), std::string::npos);
}

TEST(sim_report, finds_a_day_by_any_moment_of_it)
{
    tovrik::practice_server server{reporting_server()};
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(server.push_transmission(transmission_xml(sample_message("D-AIQA"))));
    sim_raw_client client{server.port()};
    const std::time_t today = std::time(nullptr);
    std::tm day{};
    ASSERT_NE(localtime_r(&today, &day), nullptr);
    day.tm_hour = day.tm_min = 0;
    day.tm_sec = 1;
    day.tm_isdst = 0; // as clients reckon it
    client.send_text(70, request_of(mktime(&day)));
    EXPECT_NE(receive_report(client).text(Z_OK).find("D-AIQA"), std::string::npos);
}

TEST(sim_report, includes_the_messages_that_were_there_from_the_start)
{
    auto options = reporting_server();
    options.replay_count = 5;
    options.fixed_time = sample_time;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    client.send_text(70, request_of(sample_time));
    EXPECT_NE(receive_report(client).text(Z_OK).find("5 messages"), std::string::npos);
}

TEST(sim_report, is_refused_on_days_without_messages_and_for_requests_without_sense)
{
    tovrik::practice_server server{reporting_server()};
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(server.push_transmission(transmission_xml(sample_message("D-AIQA"))));
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    const struct {
        std::string text;
        std::uint32_t answer;
    } rows[] = {{request_of(0), 73},
                {request_of(-1), 73},
                {request_of(9223372036854775807), 73},
                {request_of(-9223372036854775807), 73},
                {"9223372036854775808\t*#cnam#\t#cnum#\t0\t0", 108},
                {"\t*#cnam#\t#cnum#\t0\t0", 108},
                {"x\t*#cnam#\t#cnum#\t0\t0", 108},
                {"1x\t*#cnam#\t#cnum#\t0\t0", 108},
                {"1752148020", 108},
                {"1752148020\tx\ty\t0\t0", 108},
                {"", 108}};
    for (const auto& row : rows) {
        client.send_text(70, row.text);
        const auto answer = client.receive();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->kind, row.answer) << row.text;
        EXPECT_FALSE(answer->payload.empty()) << row.text;
    }
}

class sim_report_answers : public testing::Test
{
protected:
    void start(tovrik::report_answer answer)
    {
        auto options = reporting_server();
        options.reports = answer;
        server = std::make_unique<tovrik::practice_server>(options);
        ASSERT_TRUE(server->start());
        ASSERT_TRUE(server->push_transmission(transmission_xml(sample_message("D-AIQA"))));
        client = std::make_unique<sim_raw_client>(server->port());
        ASSERT_TRUE(client->receive());
        client->send_text(70, request_of(sample_time));
    }

    std::unique_ptr<tovrik::practice_server> server;
    std::unique_ptr<sim_raw_client> client;
};

TEST_F(sim_report_answers, say_busy_or_empty)
{
    start(tovrik::report_answer::busy);
    EXPECT_EQ(client->receive()->kind, 72U);
    start(tovrik::report_answer::empty);
    EXPECT_EQ(client->receive()->kind, 73U);
}

TEST_F(sim_report_answers, spoil_the_data)
{
    start(tovrik::report_answer::corrupt);
    receive_report(*client).text(Z_DATA_ERROR);
    start(tovrik::report_answer::tight);
    receive_report(*client).text(Z_BUF_ERROR);
}

TEST_F(sim_report_answers, leave_the_last_piece_out)
{
    start(tovrik::report_answer::unfinished);
    EXPECT_EQ(next_kinds(*client, 2), (std::vector<std::uint32_t>{71, 74}));
    client->send_text(148, "^");
    EXPECT_EQ(client->receive()->kind, 5U) << "and no piece before it";
}

TEST(sim_report, lets_other_messages_pass_and_no_second_report_begin)
{
    auto options = reporting_server();
    options.pace_ms = 20;
    options.queue_limit = 1000;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    auto message = sample_message("D-AIQA");
    std::uint32_t state = 1;
    for (int i = 0; i < 400; ++i) {
        message.content.clear();
        while (message.content.size() < 500) {
            state = state * 1664525 + 1013904223;
            message.content += static_cast<char>('A' + (state >> 24) % 26);
        }
        ASSERT_TRUE(server.push_transmission(transmission_xml(message)));
    }
    sim_raw_client client{server.port()};
    client.send_text(70, request_of(sample_time));
    ASSERT_TRUE(client.receive_kind(205));
    for (int i = 0; i < 3; ++i)
        server.push_transmission(transmission_xml(message));
    client.send_text(70, request_of(sample_time));
    std::string order;
    while (order.size() < 7) {
        const auto received = client.receive();
        ASSERT_TRUE(received);
        order += received->kind == 205 ? 'r' : received->kind == 40 ? 't' : 'b';
        ASSERT_TRUE(order.back() != 'b' || received->kind == 72) << received->kind;
    }
    EXPECT_NE(order.find("trt"), std::string::npos) << order;
    EXPECT_NE(order.find('b'), std::string::npos) << order;
}

TEST(sim_report, is_under_way_for_a_bounded_number_of_clients)
{
    const tovrik::service_options options{.capabilities = reporting_server().capabilities};
    tovrik::server_core core{options};
    tovrik::channel home;
    core.memory.archive.add(sample_message("D-AIQA"), sample_time, core.services.reference);
    std::vector<tovrik::client_session*> sessions;
    for (std::size_t count = 1; count <= tovrik::max_reports_at_once + 2; ++count) {
        const int fd = open("/dev/null", O_RDWR | O_CLOEXEC);
        tovrik::client_session& session =
            core.sessions.try_emplace(fd, fd, home, count).first->second;
        answer_report_request(core, session, {.kind = 70, .payload = request_of(sample_time)});
        const bool is_among_the_first = count <= tovrik::max_reports_at_once;
        EXPECT_NE(session.report.empty(), is_among_the_first) << count;
        ASSERT_FALSE(session.assured.empty());
        EXPECT_EQ(tovrik::decode_header(*session.assured.front()).kind,
                  is_among_the_first ? 71U : 72U);
        sessions.push_back(&session);
    }
    sessions.front()->report.clear();
    answer_report_request(core, *sessions.back(), {.kind = 70, .payload = request_of(sample_time)});
    EXPECT_FALSE(sessions.back()->report.empty()) << "another one has ended";
}

} // namespace
