// http_desk.cpp - see http_desk.hpp.
#include "server/web/http_desk.hpp"

#include <algorithm>
#include <csignal>
#include <exception>
#include <httplib.h>

namespace tovrik
{
namespace
{

/// One request and its answer in memory, where httplib expects a connection.
class exchange : public httplib::Stream
{
public:
    exchange(std::string asked, const std::string& own_address)
        : request(std::move(asked)), reached(own_address)
    {
    }

    bool is_readable() const override
    {
        return true;
    }
#ifdef CPPHTTPLIB_VERSION_NUM // since 0.20
    bool wait_readable() const override
    {
        return true;
    }
    bool wait_writable() const override
    {
        return true;
    }
    time_t duration() const override
    {
        return 0;
    }
#else
    bool is_writable() const override
    {
        return true;
    }
#endif
    ssize_t read(char* bytes, std::size_t size) override
    {
        const std::size_t count = request.copy(bytes, size, position);
        position += count;
        return static_cast<ssize_t>(count);
    }
    ssize_t write(const char* bytes, std::size_t size) override
    {
        answer.append(bytes, size);
        return static_cast<ssize_t>(size);
    }
    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string& address, int&) const override
    {
        address = reached;
    }
    socket_t socket() const override
    {
        return INVALID_SOCKET;
    }

    std::string answer;

private:
    const std::string request;
    std::size_t position = 0;
    const std::string& reached;
};

std::string read_lower_case(std::string_view text)
{
    std::string lower{text};
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    return lower;
}

/// The request without its wish for parts of a page. httplib reads that wish with a regular
/// expression, whose recursion needs more stack the longer the wish is, and sends a page as many
/// times as is wished.
std::string drop_ranges(std::string_view request)
{
    std::string rest{request};
    constexpr std::string_view range = "\nrange";
    const std::string lower = read_lower_case(request);
    for (auto at = lower.find(range); at != std::string::npos; at = lower.find(range, at + 1))
        rest[at + 1] = 'X';
    return rest;
}

void set_text(httplib::Response& response, int status, const std::string& text)
{
    response.status = status;
    response.set_content(text + '\n', "text/plain; charset=utf-8");
}

constexpr const char* internal_error = "500 Internal Server Error";

struct error_text {
    int status;
    const char* text;
};

constexpr error_text error_texts[] = {
    {400, "400 Bad Request"},
    {404, "404 Not Found"},
    {414, "414 URI Too Long"},
};

} // namespace

bool is_request_whole(std::string_view request)
{
    return request.find("\n\r\n") != std::string_view::npos ||
           request.find("\n\n") != std::string_view::npos;
}

std::string http_refusal(const std::string& status)
{
    return "HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Type: text/plain\r\n" +
           "Content-Length: " + std::to_string(status.size() + 1) + "\r\n\r\n" + status + '\n';
}

struct http_desk::desk : httplib::Server {
    explicit desk(page_finder find) : find_page(std::move(find))
    {
        // No script, nothing from elsewhere, no copies.
        set_default_headers({
            {"Content-Security-Policy",
             "default-src 'none'; style-src 'unsafe-inline'; img-src 'self' data:"},
            {"X-Content-Type-Options", "nosniff"},
            {"X-Frame-Options", "DENY"},
            {"Cache-Control", "no-store"},
            {"Referrer-Policy", "no-referrer"},
        });
        set_pre_routing_handler([this](const httplib::Request& asked, httplib::Response& answer) {
            fill_answer(asked, answer);
            return HandlerResponse::Handled;
        });
        set_error_handler([](const httplib::Request&, httplib::Response& answer) {
            const auto* const found =
                std::ranges::find(error_texts, answer.status, &error_text::status);
            if (answer.body.empty() && found != std::end(error_texts))
                set_text(answer, found->status, found->text);
        });
        set_exception_handler(
            [](const httplib::Request&, httplib::Response& answer, const std::exception_ptr&) {
                set_text(answer, 500, internal_error);
            });
    }

    void fill_answer(const httplib::Request& asked, httplib::Response& answer)
    {
        if (asked.method != "GET" && asked.method != "HEAD") {
            answer.set_header("Allow", "GET, HEAD");
            set_text(answer, 405, "405 Method Not Allowed");
            return;
        }
        const web_page page = find_page(asked.path, reached);
        answer.status = page.status;
        answer.set_content(page.text, page.type);
    }

    /// httplib has had two forms of this call.
    template <typename server> static void process(server& self, exchange& both)
    {
        bool ignored = false;
        // Compressing a page takes a hundred times as long as making it, and all others would wait.
        const auto prepare = [](httplib::Request& asked) {
            asked.headers.erase("Accept-Encoding");
        };
        if constexpr (requires { self.process_request(both, true, ignored, prepare); }) {
            self.process_request(both, true, ignored, prepare);
        } else {
            self.process_request(both, "", 0, self.reached, 0, true, ignored, prepare);
        }
    }

    page_finder find_page;
    std::string reached;
};

http_desk::http_desk(page_finder find_page)
{
    // httplib's server ignores SIGPIPE for the whole process, which is for the program to decide.
    struct sigaction before {
    };
    sigaction(SIGPIPE, nullptr, &before);
    held = std::make_unique<desk>(std::move(find_page));
    sigaction(SIGPIPE, &before, nullptr);
}

http_desk::~http_desk() = default;

std::string http_desk::answer(std::string_view request, const std::string& reached)
try {
    exchange both{drop_ranges(request), reached};
    held->reached = reached;
    desk::process(*held, both);
    return std::move(both.answer);
} catch (const std::exception&) {
    return http_refusal(internal_error);
}

} // namespace tovrik
