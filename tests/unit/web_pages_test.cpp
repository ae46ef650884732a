// web_pages_test.cpp - which page stands where, and how requests of HTTP are answered.
#include "web_sample_report.hpp"

#include "server/web/http_desk.hpp"
#include "server/web/web_pages.hpp"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>

namespace
{

using namespace std::chrono_literals;
using tovrik::web_page;

constexpr auto max_age = 10'000ms;

web_page page_at(const std::string& path, const tovrik::server_report& report,
                 std::chrono::milliseconds age = 0ms)
{
    return tovrik::web_pages_find(path, "host.example", {&report, age}, max_age);
}

TEST(web_pages, have_their_types)
{
    const std::pair<const char*, const char*> rows[] = {
        {"/", "text/html; charset=utf-8"},
        {"/tovrikserver.main", "text/plain; charset=ISO-8859-1"},
        {"/metrics", "text/plain; version=0.0.4; charset=utf-8"},
        {"/healthz", "text/plain; charset=utf-8"},
    };
    for (const auto& [path, type] : rows) {
        const web_page page = page_at(path, sample_report());
        EXPECT_EQ(page.status, 200) << path;
        EXPECT_EQ(page.type, type) << path;
        EXPECT_FALSE(page.text.empty()) << path;
    }
    EXPECT_TRUE(page_at("/tovrikserver.main", sample_report()).text.starts_with("host.example\t"));
}

TEST(web_pages, are_not_found_elsewhere)
{
    for (const char* path :
         {"", "//", "/index.html", "/../etc/passwd", "/metrics/", "/METRICS", "*"})
        EXPECT_EQ(page_at(path, sample_report()).status, 404) << path;
}

TEST(web_pages, tell_whether_the_server_is_well)
{
    auto report = sample_report();
    EXPECT_EQ(page_at("/healthz", report, max_age).text, "ok\n");
    report.is_healthy = false;
    report.trouble = "M\xFChle:\nno space\t<left>";
    const web_page ill = page_at("/healthz", report);
    EXPECT_EQ(ill.status, 503);
    EXPECT_EQ(ill.text, "M\xC3\xBChle: no space  left \n");
    report.trouble = "";
    EXPECT_EQ(page_at("/healthz", report).text, "The server is in trouble\n");
}

TEST(web_pages, tell_of_a_server_that_hangs)
{
    const web_page health = page_at("/healthz", sample_report(), max_age + 2500ms);
    EXPECT_EQ(health.status, 503);
    EXPECT_EQ(health.text, "The server has not moved for 12 seconds\n");
    const web_page status = page_at("/", sample_report(), max_age + 2500ms);
    EXPECT_EQ(status.status, 200);
    EXPECT_NE(status.text.find("The server has not moved for 12 seconds"), std::string::npos);
}

TEST(web_pages, wait_for_the_first_report)
{
    for (const char* path : {"/", "/tovrikserver.main", "/metrics", "/healthz"}) {
        const web_page page = tovrik::web_pages_find(path, "host", {}, max_age);
        EXPECT_EQ(page.status, 503) << path;
        EXPECT_EQ(page.text, "The server has only just started\n");
    }
}

std::string ask_desk(const std::string& request)
{
    static tovrik::http_desk desk{[](const std::string& path, const std::string& reached) {
        if (path == "/broken")
            throw std::runtime_error{"secret"};
        return web_page{.text = path + " at " + reached};
    }};
    return desk.answer(request, "192.0.2.7");
}

std::string body_of(const std::string& answer)
{
    return answer.substr(std::min(answer.find("\r\n\r\n"), answer.size() - 4) + 4);
}

TEST(http_desk, answers_both_versions_and_then_closes)
{
    for (const char* version : {"HTTP/1.0", "HTTP/1.1"}) {
        const auto answer =
            ask_desk(std::string{"GET /a?b=c "} + version + "\r\nConnection: keep-alive\r\n\r\n");
        EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer;
        EXPECT_NE(answer.find("\r\nConnection: close\r\n"), std::string::npos);
        EXPECT_NE(answer.find("\r\nContent-Length: 15\r\n"), std::string::npos);
        EXPECT_EQ(body_of(answer), "/a at 192.0.2.7");
    }
}

TEST(http_desk, forbids_browsers_whatever_the_pages_do_not_need)
{
    for (const char* path : {"/", "/broken", "/\xFF"}) {
        const auto answer = ask_desk(std::string{"GET "} + path + " HTTP/1.1\r\n\r\n");
        for (const char* header :
             {"Content-Security-Policy: default-src 'none'; style-src 'unsafe-inline'; "
              "img-src 'self' data:",
              "X-Content-Type-Options: nosniff", "Cache-Control: no-store",
              "Referrer-Policy: no-referrer"})
            EXPECT_NE(answer.find(std::string{"\r\n"} + header + "\r\n"), std::string::npos)
                << header << " is not in " << answer;
        EXPECT_EQ(answer.find("Server:"), std::string::npos);
    }
}

TEST(http_desk, answers_head_without_the_page)
{
    const auto answer = ask_desk("HEAD /a HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n"));
    EXPECT_NE(answer.find("\r\nContent-Length: 15\r\n"), std::string::npos);
    EXPECT_EQ(body_of(answer), "");
}

TEST(http_desk, allows_no_other_methods)
{
    for (const std::string method : {"POST", "PUT", "DELETE", "OPTIONS", "PATCH", "TRACE"}) {
        const auto answer = ask_desk(method + " / HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc");
        EXPECT_TRUE(answer.starts_with("HTTP/1.1 405 ")) << answer;
        EXPECT_NE(answer.find("\r\nAllow: GET, HEAD\r\n"), std::string::npos);
        EXPECT_EQ(body_of(answer), "405 Method Not Allowed\n");
    }
}

TEST(http_desk, refuses_what_is_no_request_in_plain_text)
{
    for (const std::string request :
         {"nonsense\r\n\r\n", "GET /\r\n\r\n", "GET / HTTP/2.0\r\n\r\n", "BREW / HTTP/1.1\r\n\r\n",
          "GET / HTTP/1.1\n\n", "\r\n\r\n", "GET / HTTP/1.1\r\nno end", "\x16\x03\x01\n\n"}) {
        const auto answer = ask_desk(request);
        EXPECT_TRUE(answer.starts_with("HTTP/1.1 400 ")) << request << " -> " << answer;
        EXPECT_EQ(body_of(answer), "400 Bad Request\n");
    }
    EXPECT_EQ(ask_desk(""), "");
}

TEST(http_desk, sends_whole_pages_only_and_as_they_are)
{
    std::string ranges = "bytes=0-0";
    for (int i = 0; i < 2000; ++i)
        ranges += ",0-0";
    const auto answer =
        ask_desk("GET /a HTTP/1.1\r\nRaNge: " + ranges + "\r\nAccept-Encoding: gzip, br\r\n\r\n");
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer;
    EXPECT_EQ(body_of(answer), "/a at 192.0.2.7");
}

TEST(http_desk, keeps_the_reason_of_a_failure_to_itself)
{
    const auto answer = ask_desk("GET /broken HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 500 ")) << answer;
    EXPECT_EQ(answer.find("secret"), std::string::npos);
    EXPECT_EQ(body_of(answer), "500 Internal Server Error\n");
}

TEST(http_desk, leaves_the_signal_of_broken_pipes_as_it_is)
{
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    const tovrik::http_desk desk{[](const std::string&, const std::string&) { return web_page{}; }};
    EXPECT_EQ(std::signal(SIGPIPE, before), SIG_DFL);
}

} // namespace
