// web_status_page_test.cpp - the page for people: whole, safe, and plain about what is wrong.
#include "unit/document_text.hpp"
#include "web_sample_report.hpp"

#include "server/web/status_page.hpp"
#include "server/web/status_style.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <expat.h>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <memory>

namespace
{

using tovrik::server_report;
using tovrik::status_page;

/// A page as an XML parser reads it.
struct seen_page {
    std::string error = {};
    std::vector<std::string> elements = {};
    std::vector<std::pair<std::string, std::string>> attributes = {};
    std::map<std::string, std::string> texts = {}; // of each kind of element
    std::vector<std::string> open = {};
};

void on_begin(void* user, const XML_Char* name, const XML_Char** attributes)
{
    auto& seen = *static_cast<seen_page*>(user);
    seen.elements.push_back(name);
    seen.open.push_back(name);
    for (; *attributes != nullptr; attributes += 2)
        seen.attributes.emplace_back(attributes[0], attributes[1]);
}

void on_end(void* user, const XML_Char*)
{
    static_cast<seen_page*>(user)->open.pop_back();
}

void on_text(void* user, const XML_Char* text, int length)
{
    auto& seen = *static_cast<seen_page*>(user);
    seen.texts[seen.open.back()].append(text, static_cast<std::size_t>(length));
}

seen_page read_page(const std::string& text)
{
    seen_page seen;
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser{
        XML_ParserCreate("UTF-8"), XML_ParserFree};
    XML_SetUserData(parser.get(), &seen);
    XML_SetElementHandler(parser.get(), on_begin, on_end);
    XML_SetCharacterDataHandler(parser.get(), on_text);
    if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK)
        seen.error = XML_ErrorString(XML_GetErrorCode(parser.get()));
    return seen;
}

/// The page's body without its tags, with one blank in place of each run of white space.
std::string text_of_page(const std::string& page)
{
    const std::string body = text_between(page, "<body>", "</body>");
    const std::string text = std::regex_replace(body, std::regex{"<[^>]*>"}, " ");
    return std::regex_replace(text, std::regex{"\\s+"}, " ");
}

TEST(web_status_page, is_well_formed_and_needs_nothing_from_elsewhere)
{
    const std::string page = status_page(sample_report(), "");
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n"));
    const seen_page seen = read_page(page);
    EXPECT_EQ(seen.error, "");
    for (const char* element : {"script", "iframe", "object", "embed", "img", "form", "base"})
        EXPECT_EQ(std::ranges::count(seen.elements, element), 0) << element;
    EXPECT_EQ(std::ranges::count(seen.elements, "style"), 1);
    for (const auto& [name, value] : seen.attributes) {
        EXPECT_FALSE(name.starts_with("on")) << name;
        EXPECT_NE(name, "src");
        EXPECT_TRUE(name != "href" || value.starts_with('/') || value == "data:,") << value;
    }
    for (const char* outside : {"url(", "@import", "expression("})
        EXPECT_EQ(page.find(outside), std::string::npos) << outside;
    EXPECT_NE(page.find("<meta charset=\"utf-8\" />"), std::string::npos);
}

TEST(web_status_page, has_each_name_of_an_anchor_once)
{
    const seen_page seen = read_page(status_page(sample_report(), ""));
    std::map<std::string, int> names;
    for (const auto& [name, value] : seen.attributes) {
        if (name == "id")
            ++names[value];
    }
    EXPECT_TRUE(std::ranges::all_of(names, [](const auto& entry) { return entry.second == 1; }));
    for (const auto& [name, value] : seen.attributes) {
        if (name != "aria-labelledby")
            continue;
        for (const auto& match : all_matches(value, "[^ ]+"))
            EXPECT_TRUE(names.contains(match.front())) << match.front();
    }
}

TEST(web_status_page, shows_hostile_texts_as_texts)
{
    const seen_page usual = read_page(status_page(sample_report(), "trouble"));
    for (const std::string text : hostile_texts) {
        const seen_page seen = read_page(status_page(sample_report_of(text), text));
        EXPECT_EQ(seen.error, "") << text;
        EXPECT_EQ(seen.elements, usual.elements) << text;
        EXPECT_EQ(seen.attributes.size(), usual.attributes.size()) << text;
    }
    const seen_page seen = read_page(status_page(sample_report_of("<b>\"M\xFChle' & Co\n"), ""));
    EXPECT_EQ(seen.texts.at("h1"), "<b>\"M\xC3\xBChle' & Co ");
}

TEST(web_status_page, stays_well_formed_with_every_character_and_extreme_number)
{
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    server_report report = sample_report_of(all);
    report.hourly.fill(std::numeric_limits<std::uint64_t>::max() / 24);
    report.now = std::numeric_limits<std::time_t>::max();
    report.started = 0;
    report.receivers[0].last_message = std::numeric_limits<std::time_t>::max();
    report.receivers[0].messages = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(read_page(status_page(report, all)).error, "");
    EXPECT_EQ(read_page(status_page(server_report{}, "")).error, "") << "nothing to tell";
}

TEST(web_status_page, says_when_each_receiver_was_last_heard)
{
    const std::string text = text_of_page(status_page(sample_report(), ""));
    EXPECT_NE(text.find("roof udp Receiving Just now 10:30:10 UTC 402,117 12 0 0 0"),
              std::string::npos);
    EXPECT_NE(text.find("hangar mqtt Silent 42 minutes ago 09:48:12 UTC 77,204 0 0 0 4"),
              std::string::npos);
    EXPECT_NE(
        text.find("m\xC3\xBChle tcp-connect Receiving 3 minutes ago 10:27:05 UTC 31,877 1 9 18 0"),
        std::string::npos);
    EXPECT_NE(text.find("Receivers heard 2 of 3"), std::string::npos);
    EXPECT_NE(text.find("In order 1 of 3 receivers not heard"), std::string::npos);
    EXPECT_NE(text.find("Not heard: hangar"), std::string::npos);
}

TEST(web_status_page, tells_the_states_of_a_receiver_apart_in_words)
{
    server_report report = sample_report();
    report.receivers[0].last_message = 0;
    report.receivers[1].last_message = sample_now - 86400 * 3;
    report.receivers[2].is_connected = false;
    report.receivers[2].last_message = sample_now + 3600;
    const std::string text = text_of_page(status_page(report, ""));
    EXPECT_NE(text.find("roof udp Waiting None yet"), std::string::npos);
    EXPECT_NE(text.find("hangar mqtt Silent 3 days ago 2026-01-02 10:30 UTC"), std::string::npos);
    EXPECT_NE(text.find("tcp-connect Not connected Just now"), std::string::npos)
        << "a clock that jumped is no reason for nonsense";
    EXPECT_NE(text.find("Receivers heard 0 of 3"), std::string::npos);
}

TEST(web_status_page, shows_trouble_first)
{
    const std::string page = status_page(sample_report(), "The disk is full");
    EXPECT_NE(text_of_page(page).find("Home Trouble The disk is full"), std::string::npos);
    EXPECT_EQ(page.find("In order"), std::string::npos);
}

TEST(web_status_page, draws_a_bar_and_a_number_for_each_hour)
{
    const std::string page = status_page(sample_report(), "");
    const std::string plot = text_between(page, "<svg", "</svg>");
    EXPECT_EQ(all_matches(plot, "<rect class=\"bar( present)?\"").size(), 24U);
    EXPECT_EQ(all_matches(plot, "<rect class=\"bar present\"").size(), 1U);
    const auto heights = all_matches(plot, "y=\"([0-9]+)\" height=\"([0-9]+)\"");
    ASSERT_EQ(heights.size(), 24U);
    EXPECT_EQ(heights[11], (std::vector<std::string>{"22", "168"})) << "the peak fills the plot";
    for (const auto& height : heights)
        EXPECT_EQ(std::stoi(height[0]) + std::stoi(height[1]), 190) << "all stand on one line";
    EXPECT_EQ(std::stoi(heights[0][1]), 168 * 412 / 1310);
    EXPECT_NE(plot.find("<title>22:00 to 23:00 UTC: 1,310 messages</title>"), std::string::npos);
    EXPECT_NE(plot.find("<title>since 10:00 UTC: 348 messages</title>"), std::string::npos);
    EXPECT_NE(plot.find("<title id=\"plot-title\">Messages of the last 24 hours</title>"),
              std::string::npos);
    EXPECT_NE(plot.find("19,625 messages in all. Busiest hour: 22:00 to 23:00 UTC with 1,310."),
              std::string::npos);
    const std::string numbers = text_of_page(page);
    EXPECT_NE(numbers.find("2026-01-05 since 10:00 UTC 348 2026-01-05 09:00 to 10:00 UTC 640"),
              std::string::npos);
}

TEST(web_status_page, draws_a_day_without_messages)
{
    server_report report = sample_report();
    report.hourly.fill(0);
    const std::string plot = text_between(status_page(report, ""), "<svg", "</svg>");
    EXPECT_EQ(plot.find("<rect"), std::string::npos);
    EXPECT_NE(plot.find("There were no messages."), std::string::npos);
    report.hourly[5] = 1;
    report.hourly[6] = 1000;
    const std::string next = text_between(status_page(report, ""), "<svg", "</svg>");
    EXPECT_NE(next.find("height=\"2\""), std::string::npos) << "one message can be seen";
}

TEST(web_status_page, shows_channels_services_and_losses)
{
    const std::string text = text_of_page(status_page(sample_report(), ""));
    for (const char* part :
         {"Home 2202 11 511,198 4,120,448 214", "Home VDL2 2203 3 201,877 0 0",
          "Clients 14 of 1,000 at most", "Messages in 24 hours 19,625",
          "Messages in the archive 1,240,331", "Running for 12 days 4 hours",
          "since 2025-12-24 06:28 UTC", "20,418 connections", "tovrikd 1.2.3",
          "Updates of the database 18 Pager lists 41 Pager hits 1,207 "
          "Subscriptions to mailings 9 Mails sent 108 Reports made 77 "
          "Doubles merged into one 5,127 Waiting for the archive 2",
          "Lost before they were read 18 Broken, no message in them 13 "
          "From addresses that are not allowed 9 Left out for slow clients 214 "
          "Not kept in the archive 7 Mails not taken 4 Clients turned away, server full 31 "
          "Wrong passwords 3"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nis not in\n" << text;
}

using colour_set = std::map<std::string, double>; // luminance by name

double luminance_of(const std::string& hex)
{
    double sum = 0;
    constexpr std::array weights = {0.2126, 0.7152, 0.0722};
    for (std::size_t i = 0; i < weights.size(); ++i) {
        const double part = std::stoi(hex.substr(i * 2, 2), nullptr, 16) / 255.0;
        sum +=
            weights[i] * (part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4));
    }
    return sum;
}

double contrast_of(double one, double other)
{
    return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

TEST(web_status_page, has_colours_that_can_be_read_in_light_and_dark)
{
    const std::string style = tovrik::status_style;
    const auto dark = style.find("@media (prefers-color-scheme: dark)");
    ASSERT_NE(dark, std::string::npos);
    for (const std::string& part :
         {style.substr(0, dark), text_between(style.substr(dark), "{", "}")}) {
        colour_set colours;
        for (const auto& found : all_matches(part, "--([a-z]+): #([0-9a-f]{6});"))
            colours[found[0]] = luminance_of(found[1]);
        ASSERT_EQ(colours.size(), 9U);
        for (const char* text : {"text", "muted", "accent", "good", "bad"})
            for (const char* ground : {"page", "card", "warn"})
                EXPECT_GE(contrast_of(colours.at(text), colours.at(ground)), 4.5)
                    << text << " on " << ground;
        EXPECT_GE(contrast_of(colours.at("card"), colours.at("bad")), 4.5) << "filled pills";
    }
    const std::string rest = style.substr(style.find("* {"));
    EXPECT_TRUE(all_matches(rest, "#[0-9a-f]{3,6}").empty()) << "other colours";
}

} // namespace
