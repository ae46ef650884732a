// directory_answer.hpp - what the directory answers to a request, byte for byte.
#pragma once

#include "server/practice/options.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace tovrik
{

/// Whether the request contains the blank line that ends it.
bool is_request_complete(std::string_view request);

/// The complete answer: 200 with `body` to a GET of "/tovrikserver.main", 404 to a GET of anything
/// else, 405 to other methods, and 400 to what is not a request of HTTP 1.0 or 1.1. A fault changes
/// only the first of these.
std::string directory_answer(std::string_view request, std::string_view body,
                             directory_fault fault);

/// The directory's line about the server itself, with its line feed. `host` is where askers find
/// it.
std::string own_directory_line(const server_options& options, const std::string& host,
                               std::uint16_t server_port);

/// What is wrong with a directory's text: a line does not have nine fields, or there is no line.
/// Empty if the text is right.
std::string directory_text_error(std::string_view text);

} // namespace tovrik
