// soak_logs.hpp - whether the client's logs hold everything that the servers sent.
#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <string>

/// Whether `text` is all of the server's transmissions, each once and in order, and nothing else.
testing::AssertionResult log_is_complete(const std::string& text, int server,
                                         std::int64_t transmissions);

/// Cuts a log of all servers into records, and joins those of each server in their order. Records
/// of an unknown server are under -1.
std::map<int, std::string> log_by_server(const std::string& text);
