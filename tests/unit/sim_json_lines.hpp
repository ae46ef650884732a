// sim_json_lines.hpp - lines of JSON as receivers print them, for the tests of both halves.
#pragma once

#include "server/inputs/json_message.hpp"
#include "server/messages/transmission.hpp"

#include <gtest/gtest.h>

#include <string>

inline constexpr const char* flat =
    R"({"timestamp":1752154097.83,"station_id":"X","channel":2,"freq":131.825,"level":-34.6,)"
    R"("error":3,"mode":"2","label":"H1","block_id":"9","ack":false,"tail":"N827NW",)"
    R"("flight":"NW0183","msgno":"D52A","text":"LINE ONE\r\nLINE TWO\r\n","depa":"EGLL",)"
    R"("dsta":"OERK"})";
inline constexpr const char* vdl2 =
    R"({"vdl2":{"t":{"sec":1791076482,"usec":507244},"freq":136975000,"station":"X",)"
    R"("avlc":{"src":{"addr":"DC5068","type":"Aircraft"},"acars":{"err":false,"crc_ok":true,)"
    R"("more":false,"reg":".N8713M","mode":"2","label":"H1","blk_id":"1","ack":"!",)"
    R"("flight":"WN0655","msg_num":"D45","msg_num_seq":"A","msg_text":"HELLO"}}}})";
inline constexpr const char* hfdl =
    R"({"hfdl":{"t":{"sec":1791076482,"usec":1},"lpdu":{"hfnpdu":{"acars":{"reg":"..N8713M",)"
    R"("mode":"2","label":"_)"
    "\\u007f"
    R"(","blk_id":"A","msg_text":""}}}}})";

/// The one message of a line.
inline tovrik::transmission only_part(const std::string& line)
{
    const auto read = tovrik::read_json_message(line);
    EXPECT_EQ(read.error, "") << line;
    EXPECT_EQ(read.parts.size(), 1U) << line;
    return read.parts.empty() ? tovrik::transmission{} : read.parts.front();
}
