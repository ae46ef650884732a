// directory_answer.hpp - what the directory says to a request, byte for byte.
#pragma once

#include "sim/options.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace sim
{

/// Whether the blank line that ends a request has come.
bool is_request_complete(std::string_view request);

/// The whole answer: 200 with `body` to a GET of "/tovrikserver.main", 404 to one of anything else,
/// 405 to other methods and 400 to what is no request of HTTP 1.0 or 1.1. A fault applies to the
/// first of these only.
std::string directory_answer(std::string_view request, std::string_view body,
                             directory_fault fault);

/// The directory's line about a server itself, with its line feed.
std::string own_directory_line(const server_options& options, std::uint16_t server_port);

/// What is wrong with a directory's text: a line that does not have nine fields, or none at all.
/// Empty when all is well.
std::string directory_text_error(std::string_view text);

} // namespace sim
