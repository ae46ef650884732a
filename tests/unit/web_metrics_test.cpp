// web_metrics_test.cpp - the figures, read as strictly as Prometheus' text form asks.
#include "web_sample_report.hpp"

#include "server/web/metrics_page.hpp"
#include "support/temp_home.hpp"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>

namespace
{

struct seen_metrics {
    std::map<std::string, std::string> types;        // by name
    std::map<std::string, std::uint64_t> samples;    // by name and labels
    std::map<std::string, std::size_t> sample_count; // by name
};

/// Reads a page, every line of which must be a HELP, the TYPE of the same name after it, or a
/// sample of that name.
seen_metrics read_metrics(const std::string& page)
{
    static const std::regex help{R"(# HELP (tovrikd_[a-z_]+) [^\n\\]+)"};
    static const std::regex type{R"(# TYPE (tovrikd_[a-z_]+) (counter|gauge))"};
    static const std::regex sample{
        R"((tovrikd_[a-z_]+)(\{[a-z]+="(?:[^"\\]|\\\\|\\"|\\n)*"(?:,[a-z]+="(?:[^"\\]|\\\\|\\"|\\n)*")*\})? ([0-9]+))"};
    seen_metrics seen;
    std::string helped;
    std::string typed;
    std::istringstream lines{page};
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_match(line, match, help)) {
            helped = match[1];
        } else if (std::regex_match(line, match, type)) {
            typed = match[1];
            EXPECT_EQ(typed, helped);
            EXPECT_TRUE(seen.types.emplace(typed, match[2]).second) << "again: " << typed;
        } else if (std::regex_match(line, match, sample)) {
            EXPECT_EQ(match[1], typed);
            ++seen.sample_count[typed];
            EXPECT_TRUE(
                seen.samples.emplace(match[1].str() + match[2].str(), std::stoull(match[3])).second)
                << "again: " << line;
        } else {
            ADD_FAILURE() << line;
        }
    }
    EXPECT_TRUE(page.ends_with('\n'));
    return seen;
}

TEST(web_metrics, are_lines_of_the_text_form)
{
    const seen_metrics seen = read_metrics(tovrik::metrics_page(sample_report()));
    EXPECT_GE(seen.types.size(), 30U);
    for (const auto& [name, type] : seen.types)
        EXPECT_EQ(type, name.ends_with("_total") ? "counter" : "gauge") << name;
}

TEST(web_metrics, tell_every_number_of_the_report)
{
    const auto samples = read_metrics(tovrik::metrics_page(sample_report())).samples;
    const std::map<std::string, std::uint64_t> wanted = {
        {R"(tovrikd_info{name="Home",uuid="5b0c3f0e",version="1.2.3"})", 1},
        {"tovrikd_healthy", 1},
        {"tovrikd_start_time_seconds", sample_now - 12 * 86400 - 4 * 3600 - 77},
        {"tovrikd_report_time_seconds", sample_now},
        {"tovrikd_clients", 14},
        {"tovrikd_max_clients", 1000},
        {"tovrikd_connections_total", 20418},
        {"tovrikd_refused_full_total", 31},
        {"tovrikd_refused_passwords_total", 3},
        {"tovrikd_doubles_total", 5127},
        {"tovrikd_archived_messages", 1240331},
        {"tovrikd_archive_waiting_messages", 2},
        {"tovrikd_archive_lost_messages_total", 7},
        {"tovrikd_updates_total", 18},
        {"tovrikd_pager_lists", 41},
        {"tovrikd_pager_hits_total", 1207},
        {"tovrikd_subscriptions", 9},
        {"tovrikd_mails_total", 108},
        {"tovrikd_mails_failed_total", 4},
        {"tovrikd_reports_total", 77},
        {R"(tovrikd_receiver_connected{input="1",receiver="roof",type="udp"})", 1},
        {R"(tovrikd_receiver_silent{input="1",receiver="roof",type="udp"})", 0},
        {R"(tovrikd_receiver_silent{input="2",receiver="hangar",type="mqtt"})", 1},
        {R"(tovrikd_receiver_last_message_time_seconds{input="1",receiver="roof",type="udp"})",
         sample_now - 2},
        {R"(tovrikd_receiver_messages_total{input="1",receiver="roof",type="udp"})", 402117},
        {R"(tovrikd_receiver_bytes_total{input="1",receiver="roof",type="udp"})", 181204412},
        {R"(tovrikd_receiver_broken_total{input="1",receiver="roof",type="udp"})", 12},
        {"tovrikd_receiver_refused_total{input=\"3\",receiver=\"m\xC3\xBChle\",type=\"tcp-"
         "connect\"}",
         9},
        {"tovrikd_receiver_lost_total{input=\"3\",receiver=\"m\xC3\xBChle\",type=\"tcp-connect\"}",
         18},
        {R"(tovrikd_receiver_reconnections_total{input="2",receiver="hangar",type="mqtt"})", 4},
        {R"(tovrikd_channel_clients{channel="Home",port="2202"})", 11},
        {R"(tovrikd_channel_messages_total{channel="Home VDL2",port="2203"})", 201877},
        {R"(tovrikd_channel_sent_total{channel="Home",port="2202"})", 4120448},
        {R"(tovrikd_channel_left_out_total{channel="Home",port="2202"})", 214},
    };
    for (const auto& [name, value] : wanted) {
        ASSERT_TRUE(samples.contains(name)) << name;
        EXPECT_EQ(samples.at(name), value) << name;
    }
}

TEST(web_metrics, keep_their_lines_whatever_the_names_are)
{
    for (const std::string text : hostile_texts) {
        const auto seen = read_metrics(tovrik::metrics_page(sample_report_of(text)));
        EXPECT_EQ(seen.sample_count.at("tovrikd_receiver_messages_total"), 3U)
            << "receivers of the same name are told apart";
    }
}

TEST(web_metrics, tell_of_trouble_and_of_receivers_that_were_never_heard)
{
    auto report = sample_report();
    report.is_healthy = false;
    report.receivers[0].is_connected = false;
    report.receivers[0].last_message = 0;
    const auto samples = read_metrics(tovrik::metrics_page(report)).samples;
    EXPECT_EQ(samples.at("tovrikd_healthy"), 0U);
    const std::string labels = R"({input="1",receiver="roof",type="udp"})";
    EXPECT_EQ(samples.at("tovrikd_receiver_connected" + labels), 0U);
    EXPECT_EQ(samples.at("tovrikd_receiver_last_message_time_seconds" + labels), 0U);
}

TEST(web_metrics, pass_the_check_of_prometheus_itself)
{
    if (std::system("promtool --version >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "promtool is not installed";
    const temp_home home;
    home.write_file("metrics", tovrik::metrics_page(sample_report()));
    const std::string command = "promtool check metrics <" + home.path_of("metrics");
    EXPECT_EQ(std::system(command.c_str()), 0);
}

} // namespace
