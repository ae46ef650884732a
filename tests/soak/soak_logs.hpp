// soak_logs.hpp - whether the client's logs hold what the servers have said.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <string>

/// Whether `text` is all of the server's transmissions, each once and in order, and nothing else.
testing::AssertionResult log_is_complete(const std::string& text, int server,
                                         std::int64_t transmissions);

/// Cuts a log of all servers into records, and puts those of each server together in their order.
/// Records whose server cannot be told are under -1.
std::map<int, std::string> log_by_server(const std::string& text);
