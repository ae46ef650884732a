// inputs_json_test.cpp - the five forms of messages, where they were heard, and their bounds.
#include "sim_json_lines.hpp"

#include "server/base/limits.hpp"
#include "server/inputs/iso_time.hpp"
#include "server/inputs/json_depth.hpp"
#include "server/inputs/json_lines.hpp"
#include "server/inputs/json_message.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

using tovrik::message_link;

constexpr const char* iridium =
    R"({"app":{"name":"x"},"source":{"transport":"iridium","protocol":"acars",)"
    R"("station_id":"roof"},"acars":{"timestamp":"2026-01-05T10:30:00+0000","errors":0,)"
    R"("link_direction":"downlink","block_end":true,"mode":"2","tail":".D-AIBC",)"
    R"("flight":"LH0400","label":"2T","block_id":"7","message_number":"M06","ack":"!",)"
    R"("text":"HELLO\r\nTHERE"}})";
constexpr const char* inmarsat =
    R"({"app":{"name":"y"},"isu":{"acars":{"mode":"2","ack":"!","blk_id":"7","label":"B6",)"
    R"("reg":".D-AIBC","flight":"LH0400","msg_num":"F10","msg_num_seq":"A","msg_text":"HI"}},)"
    R"("station":"dish","t":{"sec":1767609000,"usec":5}})";

tovrik::transmission whole_of(const std::string& line)
{
    const auto read = tovrik::read_json_whole(line);
    EXPECT_EQ(read.error, "") << line;
    EXPECT_TRUE(read.message.has_value()) << line;
    return read.message.value_or(tovrik::transmission{});
}

TEST(inputs_json, reads_the_forms_of_satellites)
{
    const tovrik::transmission by_iridium{.mode = "2",
                                          .registration = "D-AIBC",
                                          .label = "2T",
                                          .block_id = "7",
                                          .message_number = "M06",
                                          .flight_number = "LH0400",
                                          .content = "HELLO\nTHERE",
                                          .time = 1767609000};
    EXPECT_EQ(transmission_xml(whole_of(iridium)), transmission_xml(by_iridium));
    const tovrik::transmission by_inmarsat{.mode = "2",
                                           .registration = "D-AIBC",
                                           .label = "B6",
                                           .block_id = "7",
                                           .message_number = "F10A",
                                           .flight_number = "LH0400",
                                           .content = "HI",
                                           .time = 1767609000};
    EXPECT_EQ(transmission_xml(whole_of(inmarsat)), transmission_xml(by_inmarsat));
}

struct heard_row {
    const char* what;
    std::string line;
    message_link link;
    const char* station;
    double frequency_mhz;
    double level_db;
    bool continues;
};

TEST(inputs_json, says_where_and_how_a_message_was_heard)
{
    const heard_row rows[] = {
        {"VHF", flat, message_link::vhf, "X", 131.825, -34.6, false},
        {"VHF without anything", R"({"text":"x"})", message_link::vhf, "", 0, -999, false},
        {"a VHF block that is not the last", R"({"text":"x","block_end":false})", message_link::vhf,
         "", 0, -999, true},
        {"a VHF block that is", R"({"text":"x","block_end":true})", message_link::vhf, "", 0, -999,
         false},
        {"VDL2", vdl2, message_link::vdl2, "X", 136.975, -999, false},
        {"VDL2 with a level and more to come",
         R"({"vdl2":{"sig_level":-22.5,"avlc":{"acars":{"more":true}}}})", message_link::vdl2, "",
         0, -22.5, true},
        {"HFDL",
         R"({"hfdl":{"freq":8927000,"station":"hill","sig_level":-9,"lpdu":{"hfnpdu":{)"
         R"("acars":{"msg_text":"x"}}}}})",
         message_link::hfdl, "hill", 8.927, -9, false},
        {"Iridium", iridium, message_link::iridium, "roof", 0, -999, false},
        {"Iridium with more to come",
         R"({"source":{"transport":"iridium"},"freq":1626.1,"level":-3,)"
         R"("acars":{"block_end":false}})",
         message_link::iridium, "", 1626.1, -3, true},
        {"a source with an unknown link", R"({"source":{"transport":"smoke"},"acars":{}})",
         message_link::unknown, "", 0, -999, false},
        {"Inmarsat", inmarsat, message_link::inmarsat, "dish", 0, -999, false},
        {"values of wrong types",
         R"({"text":"x","station_id":{},"freq":"1","level":"loud","block_end":0,"more":1})",
         message_link::vhf, "", 0, -999, false},
        {"values without sense", R"({"text":"x","station_id":"a\r\nb","freq":-1,"level":1e300})",
         message_link::vhf, "a b", 0, -999, false},
        {"a long name", R"({"text":"x","station_id":")" + std::string(65, 'y') + R"("})",
         message_link::vhf, "yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy", 0,
         -999, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto heard = whole_of(row.line).heard;
        EXPECT_EQ(heard.link, row.link);
        EXPECT_EQ(heard.station, row.station);
        EXPECT_DOUBLE_EQ(heard.frequency_mhz, row.frequency_mhz);
        EXPECT_DOUBLE_EQ(heard.level_db, row.level_db);
        EXPECT_EQ(heard.continues, row.continues);
    }
}

TEST(inputs_json, finds_no_message_of_a_satellite_in_other_frames)
{
    for (const char* line : {R"({"isu":{}})", R"({"isu":7})", R"({"isu":{"c":[]},"station":"x"})",
                             R"({"source":{}})", R"({"source":{"transport":"iridium"}})"}) {
        const auto read = tovrik::read_json_whole(line);
        EXPECT_EQ(read.error, "") << line;
        EXPECT_FALSE(read.message) << line;
    }
    for (const char* line : {R"({"isu":{"acars":"x"}})", R"({"source":{},"acars":[]})"})
        EXPECT_EQ(tovrik::read_json_whole(line).error, "its acars member is no object") << line;
}

TEST(inputs_json, reads_written_times_strictly)
{
    const struct {
        const char* text;
        std::time_t time;
    } rows[] = {{"2026-01-05T10:30:00+0000", 1767609000},
                {"2026-01-05T10:30:00Z", 1767609000},
                {"2026-01-05T12:00:00+0130", 1767609000},
                {"2026-01-05T00:30:00-1000", 1767609000},
                {"2024-02-29T00:00:00Z", 1709164800},
                {"9999-12-31T23:59:59Z", 253402300799},
                {"1970-01-01T00:00:00Z", 0},
                {"1969-12-31T23:59:59Z", 0},
                {"0000-00-00T00:00:00Z", 0},
                {"2026-02-29T00:00:00Z", 0},
                {"2026-13-01T00:00:00Z", 0},
                {"2026-00-01T00:00:00Z", 0},
                {"2026-01-32T00:00:00Z", 0},
                {"2026-01-05T24:00:00Z", 0},
                {"2026-01-05T10:60:00Z", 0},
                {"2026-01-05T10:30:60Z", 0},
                {"2026-01-05T10:30:00", 0},
                {"2026-01-05T10:30:00+00:00", 0},
                {"2026-01-05T10:30:00+2400", 0},
                {"2026-01-05T10:30:00+0060", 0},
                {"2026-01-05T10:30:00+000", 0},
                {"2026-01-05T10:30:00 0000", 0},
                {"2026-01-05T10:30:00ZZ", 0},
                {"2026-01-05 10:30:00Z", 0},
                {" 2026-01-05T10:30:00Z", 0},
                {"2026-01-05T10:30:+1Z", 0},
                {"2026-01-05T10:30:00.5Z", 0},
                {"+026-01-05T10:30:00Z", 0},
                {"", 0}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::iso_time(row.text), row.time) << row.text;
}

TEST(inputs_json, knows_empty_squitters_of_ground_stations)
{
    const struct {
        const char* line;
        bool is_squitter;
    } rows[] = {{R"({"label":"SQ","block_id":"A","text":""})", true},
                {R"({"label":"SQ"})", true},
                {R"({"label":"SQ","text":" \r\n"})", true},
                {R"({"label":"SQ","text":"02XSFRA"})", false},
                {R"({"label":"SQ","block_id":"3"})", false},
                {R"({"label":"_d","block_id":"A"})", false}};
    for (const auto& row : rows)
        EXPECT_EQ(is_empty_squitter(whole_of(row.line)), row.is_squitter) << row.line;
}

TEST(inputs_json, bounds_depth_before_it_reads)
{
    const auto nested = [](std::size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    EXPECT_FALSE(tovrik::is_too_deep(nested(tovrik::max_json_depth)));
    EXPECT_TRUE(tovrik::is_too_deep(nested(tovrik::max_json_depth + 1)));
    std::string wide;
    for (std::size_t i = 0; i < 2 * tovrik::max_json_depth; ++i)
        wide += "{}";
    EXPECT_FALSE(tovrik::is_too_deep(wide)) << "side by side";
    const std::string brackets(2 * tovrik::max_json_depth, '[');
    EXPECT_EQ(whole_of(R"({"text":"\"\\)" + brackets + "\"}").content, R"("\)" + brackets);
    EXPECT_FALSE(tovrik::is_too_deep("]]]]\"\\")) << "no JSON, but no trouble";
    EXPECT_TRUE(tovrik::is_too_deep("]]]]" + nested(tovrik::max_json_depth + 1)));
}

TEST(inputs_json, refuses_giants_and_reads_those_just_below)
{
    const std::string start = R"({"label":"H1","text":")";
    const std::string end = R"("})";
    const std::string text(tovrik::max_json_line_bytes - start.size() - end.size(), 'x');
    EXPECT_EQ(whole_of(start + text + end).content, text);
    EXPECT_EQ(tovrik::read_json_whole(start + text + "x" + end).error,
              "it is longer than 65536 bytes");
}

TEST(inputs_json, numbers_the_parts_of_long_texts_after_the_first)
{
    std::string text;
    for (int line = 0; line < 30; ++line)
        text += "line " + std::to_string(line) + std::string(30, '.') + "\n";
    auto message = whole_of(flat);
    message.content = text;
    const auto parts = tovrik::message_parts(message);
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_TRUE(parts[0].content.starts_with("line 0"));
    EXPECT_TRUE(parts[1].content.starts_with("(part 2 of 3)\nline ")) << parts[1].content;
    EXPECT_TRUE(parts[2].content.starts_with("(part 3 of 3)\nline ")) << parts[2].content;
    std::string together = parts[0].content;
    for (const auto& part : {parts[1], parts[2]}) {
        EXPECT_LE(part.content.size(), tovrik::max_value_bytes);
        EXPECT_EQ(part.message_number, message.message_number);
        EXPECT_EQ(part.heard.station, message.heard.station);
        together += part.content.substr(part.content.find('\n'));
    }
    EXPECT_EQ(together + "\n", text);
}

TEST(inputs_json, numbers_even_the_most_parts_within_the_bound)
{
    auto message = whole_of(flat);
    message.content = std::string(16 * tovrik::max_json_line_bytes, 'y');
    for (const auto& part : tovrik::message_parts(message))
        EXPECT_LE(part.content.size(), tovrik::max_value_bytes);
}

TEST(inputs_json, keeps_long_texts_whole_by_option)
{
    const std::string text(3000, 'z');
    const std::string line = R"({"text":")" + text + "\"}\nbroken\n";
    tovrik::json_lines whole{{}, tovrik::long_texts::whole};
    const auto messages = whole.take(line);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].content, text);
    tovrik::json_lines in_parts{{}};
    EXPECT_GT(in_parts.take(line).size(), 5U);
    for (const auto* lines : {&whole, &in_parts}) {
        EXPECT_EQ(lines->messages(), 1U);
        EXPECT_EQ(lines->broken(), 1U);
    }
}

} // namespace
