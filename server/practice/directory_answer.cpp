// directory_answer.cpp - see directory_answer.hpp.
#include "server/practice/directory_answer.hpp"

#include "server/base/text_fields.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

constexpr std::string_view directory_path = "/tovrikserver.main";
constexpr std::string_view header_end = "\r\n\r\n";
constexpr std::size_t directory_field_count = 9;

std::string make_answer(const std::string& status, std::string_view body, bool announce_length)
{
    std::string answer = "HTTP/1.0 " + status +
                         "\r\nContent-Type: text/plain; "
                         "charset=ISO-8859-1\r\nConnection: close";
    if (announce_length)
        answer += "\r\nContent-Length: " + std::to_string(body.size());
    return answer.append(header_end).append(body);
}

std::string make_refusal(const std::string& status)
{
    return make_answer(status, status + "\n", true);
}

std::string make_success(std::string_view body, directory_fault fault)
{
    std::string answer = make_answer("200 OK", body, fault != directory_fault::endless);
    if (fault == directory_fault::no_header_end)
        answer.replace(answer.find(header_end), header_end.size(), "\r\n");
    return answer;
}

bool is_method(std::string_view text)
{
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

} // namespace

bool is_request_complete(std::string_view request)
{
    return request.find(header_end) != std::string_view::npos;
}

std::string directory_answer(std::string_view request, std::string_view body, directory_fault fault)
{
    const auto words = split_fields(request.substr(0, request.find("\r\n")), ' ');
    if (!is_request_complete(request) || words.size() != 3 || !is_method(words[0]) ||
        !words[1].starts_with('/') || (words[2] != "HTTP/1.0" && words[2] != "HTTP/1.1"))
        return make_refusal("400 Bad Request");
    if (words[0] != "GET")
        return make_refusal("405 Method Not Allowed");
    return words[1] == directory_path ? make_success(body, fault) : make_refusal("404 Not Found");
}

std::string own_directory_line(const server_options& options, const std::string& host,
                               std::uint16_t server_port)
{
    return host + "\t" + std::to_string(server_port) +
           "\t\tPractice\tMade-up traffic to practise " + "with\t\t" + options.name + "\t\t\n";
}

std::string directory_text_error(std::string_view text)
{
    std::size_t number = 0;
    while (!text.empty()) {
        ++number;
        const auto line_end = text.find('\n');
        if (split_fields(text.substr(0, line_end), '\t').size() != directory_field_count)
            return "line " + std::to_string(number) + " does not have nine fields";
        text.remove_prefix(line_end == std::string_view::npos ? text.size() : line_end + 1);
    }
    return number == 0 ? "holds no line" : "";
}

} // namespace tovrik
