// http_desk.hpp - answers requests of HTTP: the bytes of one in, the bytes of its answer out.
//
// cpp-httplib reads the request and writes the answer. It never sees a socket: its own server gives
// each connection a thread for as long as that connection likes to be slow, and refuses sockets
// numbered above 1023.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tovrik
{

/// What is found at a path.
struct web_page {
    int status = 200;
    std::string type = "text/plain; charset=utf-8";
    std::string text = {};
};

/// Finds the page at a path; it is called for GET and HEAD only. `reached` is the address that the
/// asker came to.
using page_finder = std::function<web_page(const std::string& path, const std::string& reached)>;

/// Whether the head of a request, which ends with an empty line, is there. What follows is ignored.
bool is_request_whole(std::string_view request);

/// An answer in plain text, with no httplib in it, for what is no request: `status` is such as
/// "408 Request Timeout".
std::string http_refusal(const std::string& status);

class http_desk
{
public:
    explicit http_desk(page_finder find_page);
    ~http_desk();
    http_desk(const http_desk&) = delete;
    http_desk& operator=(const http_desk&) = delete;

    /// The whole answer to `request`, after which the connection ends: what `find_page` returns,
    /// 405 to other methods than GET and HEAD, 400 to what is no request, 500 if finding the page
    /// throws or memory is short. Empty for an empty request.
    std::string answer(std::string_view request, const std::string& reached);

private:
    struct desk;
    std::unique_ptr<desk> held;
};

} // namespace tovrik
