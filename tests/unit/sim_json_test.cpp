// sim_json_test.cpp - messages of receivers, read from their JSON.
#include "sim_json_lines.hpp"

#include "server/base/limits.hpp"
#include "server/inputs/json_lines.hpp"
#include "server/inputs/json_message.hpp"
#include "server/messages/carried_text.hpp"
#include "server/messages/transmission.hpp"

#include "data/xml.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

TEST(sim_json, reads_the_flat_form)
{
    const auto message = only_part(flat);
    const tovrik::transmission expected{.mode = "2",
                                        .registration = "N827NW",
                                        .label = "H1",
                                        .block_id = "9",
                                        .message_number = "D52A",
                                        .flight_number = "NW0183",
                                        .content = "LINE ONE\nLINE TWO",
                                        .from = "EGLL",
                                        .to = "OERK",
                                        .time = 1752154097};
    EXPECT_EQ(transmission_xml(message), transmission_xml(expected));
}

TEST(sim_json, reads_frames_of_vdl2_and_hfdl)
{
    const tovrik::transmission by_vdl2{.mode = "2",
                                       .registration = "N8713M",
                                       .label = "H1",
                                       .block_id = "1",
                                       .message_number = "D45A",
                                       .flight_number = "WN0655",
                                       .content = "HELLO",
                                       .time = 1791076482};
    EXPECT_EQ(transmission_xml(only_part(vdl2)), transmission_xml(by_vdl2));
    const tovrik::transmission by_hfdl{
        .mode = "2", .registration = "N8713M", .label = "_d", .block_id = "A", .time = 1791076482};
    EXPECT_EQ(transmission_xml(only_part(hfdl)), transmission_xml(by_hfdl));
}

TEST(sim_json, does_without_any_key)
{
    for (const char* key : {"timestamp", "mode", "label", "block_id", "tail", "flight", "msgno",
                            "text", "depa", "dsta", "freq"}) {
        std::string without = flat;
        const auto at = without.find("\"" + std::string{key} + "\"");
        ASSERT_NE(at, std::string::npos) << key;
        without.replace(at + 1, 1, "_");
        const std::string xml = transmission_xml(only_part(without));
        EXPECT_EQ(xml.find("_"), std::string::npos);
    }
    const auto message = only_part(R"({"text":"x"})");
    EXPECT_EQ(message.content, "x");
    EXPECT_EQ(message.time, 0);
    EXPECT_EQ(transmission_xml(message).find("AircraftReg"), std::string::npos);
}

TEST(sim_json, takes_values_of_other_types_for_missing_but_numbers_for_texts)
{
    const auto message = only_part(
        R"({"timestamp":"now","mode":2,"label":null,"block_id":["a"],"tail":{},"flight":true,)"
        R"("msgno":1.5,"text":"x"})");
    EXPECT_EQ(message.mode, "2");
    EXPECT_EQ(message.label + message.block_id + message.registration + message.flight_number +
                  message.message_number,
              "");
    for (const char* time : {"-1", "0", "1e300", "253402300800", "-1e300"})
        EXPECT_EQ(only_part(R"({"text":"x","timestamp":)" + std::string{time} + "}").time, 0);
    EXPECT_EQ(only_part(R"({"text":"x","timestamp":253402300799})").time, 253402300799);
}

TEST(sim_json, ignores_what_is_no_message)
{
    for (const char* line :
         {"{}", R"({"app":"receiver"})", R"({"vdl2":{}})", R"({"vdl2":{"avlc":{"acars":null}}})",
          R"({"vdl2":{"avlc":{"cmd":"RR"}}})", R"({"vdl2":7})", R"({"hfdl":{"lpdu":{}}})",
          R"({"hfdl":{"lpdu":{"hfnpdu":[]}}})", R"({"vdl2":{"avlc":[1]},"text":"x"})"}) {
        const auto read = tovrik::read_json_message(line);
        const bool null_acars = std::string{line}.find("null") != std::string::npos;
        EXPECT_EQ(read.error.empty(), !null_acars) << line;
        EXPECT_TRUE(read.parts.empty()) << line;
    }
}

TEST(sim_json, says_what_is_broken)
{
    const struct {
        std::string line;
        const char* error;
    } rows[] = {
        {"{", "this is not JSON"},
        {"hello", "this is not JSON"},
        {R"({"text":"a)", "this is not JSON"},
        {R"({"text":"\ud800"})", "this is not JSON"},
        {std::string(100, '['), "this is not JSON"},
        {std::string(60000, '['), "it is nested more than 100 deep"},
        {std::string(65537, ' '), "it is longer than 65536 bytes"},
        {"[1]", "this is no object"},
        {"7", "this is no object"},
        {R"({"vdl2":{"avlc":{"acars":"x"}}})", "its acars member is no object"},
        {R"({"tail":")" + std::string(65, 'x') + R"("})", "a field is longer than 64 bytes"}};
    for (const auto& row : rows) {
        const auto read = tovrik::read_json_message(row.line);
        EXPECT_EQ(read.error, row.error) << row.line.substr(0, 40);
        EXPECT_TRUE(read.parts.empty());
    }
    std::string deep;
    for (int i = 0; i < 9000; ++i)
        deep += R"({"a":)";
    EXPECT_EQ(tovrik::read_json_message(deep + "1" + std::string(9000, '}')).error,
              "it is nested more than 100 deep");
}

TEST(sim_json, brings_texts_into_latin_1)
{
    const struct {
        const char* utf8;
        const char* text;
    } rows[] = {{"a\r\nb\rc\nd\n\re", "a\nb\nc\nd\n\ne"},
                {"M\xc3\xbcnchen", "M\xfcnchen"},
                {"\xe2\x80\x93\xe2\x80\x9cx\xe2\x80\x9d\xe2\x80\xa6", "-\"x\"..."},
                {"\xe2\x82\xac 5", "EUR 5"},
                {"\xe6\xbc\xa2\xf0\x9f\x9b\xab", "??"},
                {"a\tb\x01\x7f\xc2\x85", "a b   "},
                {"\xff", "?"},
                {"\xc3", "?"}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::latin1_text(row.utf8), row.text) << row.utf8;
    EXPECT_EQ(tovrik::latin1_text(std::string_view{"a\0b", 3}), "a b");
    EXPECT_EQ(tovrik::as_utf8("M\xfcnchen"), "M\xc3\xbcnchen") << "taken for Latin 1";
    EXPECT_EQ(tovrik::as_utf8("M\xc3\xbcnchen"), "M\xc3\xbcnchen");
    for (const char* not_utf8 : {"\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80",
                                 "\xf8\x88\x80\x80\x80", "\xe2\x82"})
        EXPECT_NE(tovrik::as_utf8(not_utf8), not_utf8);
    EXPECT_EQ(only_part("{\"text\":\"M\xfcnchen\"}").content, "M\xfcnchen");
}

TEST(sim_json, cuts_content_at_lines_where_it_can)
{
    const std::string line(100, 'x');
    std::string content = line;
    for (int i = 0; i < 11; ++i)
        content += "\n" + line;
    const auto parts = tovrik::content_parts(content);
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_EQ(parts[0] + "\n" + parts[1] + "\n" + parts[2], content);

    const std::string long_line(tovrik::max_value_bytes * 2 + 7, 'y');
    const auto pieces = tovrik::content_parts("\n" + long_line + "\nend\n\n");
    std::string together;
    for (const auto& piece : pieces) {
        EXPECT_LE(piece.size(), tovrik::max_value_bytes);
        together += piece;
    }
    EXPECT_EQ(together, "\n" + long_line + "\nend");
    EXPECT_EQ(tovrik::content_parts(std::string(tovrik::max_value_bytes, 'z')).size(), 1U);
    EXPECT_EQ(tovrik::content_parts(std::string(tovrik::max_value_bytes, 'z') + "\nx").size(), 2U);
    EXPECT_EQ(tovrik::content_parts("\n\n"), std::vector<std::string>{""});
}

TEST(sim_json, loses_nothing_of_a_long_text_on_the_way_to_the_clients_reader)
{
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += static_cast<char>('A' + i % 26);
    const auto read = tovrik::read_json_message(R"({"label":"H1","text":")" + text + R"("})");
    ASSERT_GT(read.parts.size(), 3U);
    std::string together;
    for (const auto& part : read.parts) {
        EXPECT_EQ(part.label, "H1");
        const xml_document document{xml_parse(transmission_xml(part).c_str())};
        const std::string content =
            xml_get(document.get(), "tovrik/ACARS/Authorized/MessageContent", false, false);
        const std::string mark = together.empty()
                                     ? ""
                                     : "(part " + std::to_string(&part - read.parts.data() + 1) +
                                           " of " + std::to_string(read.parts.size()) + ")\n";
        EXPECT_TRUE(content.starts_with(mark)) << content;
        together += content.substr(mark.size());
    }
    EXPECT_EQ(together, text);
}

TEST(sim_json, replaces_markup_and_percent_signs)
{
    const std::string xml = transmission_xml(only_part(R"({"text":"<b>100%</b>\u0000"})"));
    EXPECT_NE(xml.find(">(b)100/(/b) <"), std::string::npos) << xml;
}

TEST(sim_json, makes_lines_of_bytes_however_they_come)
{
    tovrik::json_lines lines{{}};
    const std::string bytes = "{\"text\":\"a\"}\r\n\n  \n{\"text\":\"b\"}\n{\"text\":\"c\"}";
    std::string heard;
    for (const char c : bytes) {
        for (const auto& message : lines.take({&c, 1}))
            heard += message.content;
    }
    EXPECT_EQ(heard, "ab");
    ASSERT_EQ(lines.take_rest().size(), 1U);
    EXPECT_EQ(lines.take_rest().size(), 0U);
    EXPECT_EQ(lines.take(bytes).size(), 2U);
    EXPECT_EQ(lines.broken(), 0U);
}

TEST(sim_json, bounds_lines_and_what_it_says_of_broken_ones)
{
    std::vector<std::string> complaints;
    tovrik::json_lines lines{
        [&complaints](const std::string& text) { complaints.push_back(text); }};
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(lines.take(std::string(60000, 'x')).empty());
    EXPECT_EQ(lines.take("\n{\"text\":\"a\"}\n").size(), 1U) << "the next line is read again";
    EXPECT_EQ(complaints, std::vector<std::string>{
                              "dropped a line of JSON (number 1 so far): it is longer than 65536 "
                              "bytes"});
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 5000; ++i)
        lines.take("no\n");
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin);
    EXPECT_EQ(lines.broken(), 5001U);
    EXPECT_LE(complaints.size(), static_cast<std::size_t>(tovrik::max_complaints_per_second) *
                                     static_cast<std::size_t>(seconds.count() + 2));
    EXPECT_GT(complaints.size(), 1U);
}

} // namespace
