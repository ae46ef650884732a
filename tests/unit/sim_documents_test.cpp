// sim_documents_test.cpp - the practice server's documents, read with the client's own reader.
#include "server/messages/transmission.hpp"
#include "server/practice/traffic_generator.hpp"
#include "server/protocol/capabilities.hpp"
#include "server/protocol/packet.hpp"
#include "server/protocol/xml_text.hpp"
#include "unit/sim_sample_message.hpp"

#include "data/xml.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace
{

/// The value at a path, or of a name; empty when there is none.
std::string value_of(const std::string& xml, const char* key, bool by_name = false)
{
    const xml_document document(xml_parse(xml.c_str()));
    const heap_text value(xml_get(document.get(), key, by_name, true));
    return value ? value.get() : "";
}

tovrik::transmission full_message()
{
    tovrik::transmission message = sample_message();
    message.contacts = 12;
    message.daily_flights = 34;
    return message;
}

TEST(sim_documents, carries_every_field_of_a_message_at_its_path)
{
    const std::string xml = transmission_xml(full_message());
    const struct {
        const char* path;
        const char* value;
    } fields[] = {
        {"tovrik/ACARS/ACARSMode", "2"},
        {"tovrik/ACARS/AircraftReg", "D-AIQA"},
        {"tovrik/ACARS/MessageLabel", "H1"},
        {"tovrik/ACARS/BlockID", "7"},
        {"tovrik/ACARS/MessageNumber", "M07A"},
        {"tovrik/ACARS/FlightNumber", "LH0400"},
        {"tovrik/ACARS/MessageDate/Day", "10"},
        {"tovrik/ACARS/MessageDate/Month", "07"},
        {"tovrik/ACARS/MessageDate/Year", "2025"},
        {"tovrik/ACARS/MessageDate/Hour", "11"},
        {"tovrik/ACARS/MessageDate/Minute", "47"},
        {"tovrik/ACARS/Authorized/MessageContent", "LINE ONE\nLINE TWO"},
        {"tovrik/FlightRouting/From", "FRA"},
        {"tovrik/FlightRouting/To", "JFK"},
        {"tovrik/Extended/Aircraft", "Airbus A320-211"},
        {"tovrik/Extended/Operator", "Lufthansa"},
        {"tovrik/Contacts", "12 contacts with this aircraft"},
        {"tovrik/ContactData/DailyFlights", "34"},
    };
    for (const auto& field : fields)
        EXPECT_EQ(value_of(xml, field.path), field.value) << field.path;
    EXPECT_EQ(value_of(xml, "MessageContent", true), "LINE ONE\nLINE TWO");
}

TEST(sim_documents, leaves_out_what_is_not_known)
{
    const std::string xml = tovrik::transmission_xml({.mode = "2", .time = sample_time});
    for (const char* name : {"AircraftReg", "MessageContent", "Authorized", "Operator", "Contacts",
                             "ContactData", "From"})
        EXPECT_EQ(xml.find("<" + std::string{name} + ">"), std::string::npos) << name;
    EXPECT_EQ(value_of(xml, "tovrik/ACARS/ACARSMode"), "2");
}

TEST(sim_documents, replaces_what_the_reader_or_a_template_would_take_for_something_else)
{
    EXPECT_EQ(tovrik::value_text("a<b>c%d\x1b[0m\x9f\ne\xe9"), "a(b)c/d [0m \ne\xe9");
    EXPECT_EQ(tovrik::value_text(std::string(600, 'x')).size(), 511U);
}

TEST(sim_documents, calls_a_message_with_a_letter_as_block_id_an_uplink)
{
    const struct {
        const char* xml;
        bool uplink;
    } cases[] = {{"<BlockID>A</BlockID>", true},
                 {"<BlockID>z</BlockID>", true},
                 {"<BlockID>4</BlockID>", false},
                 {"<BlockID></BlockID>", false},
                 {"<MessageLabel>A</MessageLabel>", false},
                 {"<BlockID>", false},
                 {"", false}};
    for (const auto& row : cases)
        EXPECT_EQ(tovrik::is_uplink(row.xml), row.uplink) << row.xml;
}

TEST(sim_documents, names_every_capability_that_has_a_text)
{
    tovrik::capability_texts texts;
    texts.version = "2.1";
    texts.server_uuid = "abc-1";
    texts.crc_check = "yes";
    texts.mailing = "1";
    texts.db_modify = "2";
    texts.modify_flags = "3";
    texts.reports = "4";
    texts.pager = "5";
    texts.need_auth = "6";
    const std::string xml = tovrik::capabilities_xml(texts);
    EXPECT_TRUE(xml.starts_with("<?xml version=\"1.0\""));
    const struct {
        const char* name;
        const char* value;
    } elements[] = {{"Version", "2.1"}, {"ServerUUID", "abc-1"}, {"CRCCheck", "yes"},
                    {"Mailing", "1"},   {"DBModify", "2"},       {"ModifyFlags", "3"},
                    {"Reports", "4"},   {"Pager", "5"},          {"NeedAuth", "6"}};
    for (const auto& element : elements)
        EXPECT_EQ(value_of(xml, element.name, true), element.value) << element.name;
}

TEST(sim_documents, leaves_out_a_capability_without_a_text)
{
    tovrik::capability_texts texts;
    texts.crc_check = "";
    texts.pager = std::nullopt;
    const std::string xml = tovrik::capabilities_xml(texts);
    EXPECT_NE(xml.find("<CRCCheck></CRCCheck>"), std::string::npos);
    EXPECT_EQ(xml.find("<Pager>"), std::string::npos);
    EXPECT_EQ(value_of(xml, "CRCCheck", true), "");
}

TEST(sim_traffic, is_the_same_for_the_same_seed_and_differs_for_another)
{
    tovrik::traffic_generator first{42};
    tovrik::traffic_generator again{42};
    tovrik::traffic_generator other{43};
    int different = 0;
    for (int i = 0; i < 200; ++i) {
        const std::string xml = transmission_xml(first.next(sample_time));
        ASSERT_EQ(transmission_xml(again.next(sample_time)), xml) << i;
        different += transmission_xml(other.next(sample_time)) != xml;
    }
    EXPECT_GT(different, 190);
}

/// Saved screens depend on it: a change of the generator must be meant.
TEST(sim_traffic, begins_seed_1_with_a_known_message)
{
    tovrik::traffic_generator traffic{1};
    const tovrik::transmission message = traffic.next(sample_time);
    EXPECT_EQ(message.registration + "|" + message.aircraft + "|" + message.operator_name + "|" +
                  message.label + "|" + message.block_id + "|" + message.flight_number + "|" +
                  message.from + "-" + message.to + "|" + message.content,
              "EI-DEZ|Airbus A321-131|Aer Lingus|QR|8|EI0347|DUB-BCN|DUBBCN1147");
}

TEST(sim_traffic, reaches_the_client_whole_whatever_it_says)
{
    tovrik::traffic_generator traffic{7};
    for (int i = 0; i < 3000; ++i) {
        const tovrik::transmission message = traffic.next(sample_time + std::time_t{i} * 60);
        const std::string xml = transmission_xml(message);
        ASSERT_TRUE(tovrik::plain_transmission(xml)) << xml;
        ASSERT_EQ(value_of(xml, "tovrik/ACARS/Authorized/MessageContent"), message.content);
        ASSERT_EQ(value_of(xml, "tovrik/ACARS/AircraftReg"), message.registration);
        ASSERT_EQ(value_of(xml, "tovrik/FlightRouting/To"), message.to);
        ASSERT_EQ(value_of(xml, "tovrik/ContactData/DailyFlights"),
                  std::to_string(message.daily_flights));
        ASSERT_EQ(message.content.find_first_of("{}%<>"), std::string::npos) << message.content;
    }
}

TEST(sim_traffic, is_varied_and_keeps_count)
{
    tovrik::traffic_generator traffic{3};
    std::set<std::string> labels;
    std::set<std::string> operators;
    int uplinks = 0;
    int with_content = 0;
    std::uint32_t flights = 0;
    std::uint32_t max_contacts = 0;
    for (int i = 0; i < 1000; ++i) {
        const tovrik::transmission message = traffic.next(sample_time);
        labels.insert(message.label);
        operators.insert(message.operator_name);
        const bool uplink = tovrik::is_uplink(transmission_xml(message));
        uplinks += uplink;
        with_content += !message.content.empty();
        EXPECT_EQ(uplink, message.message_number.empty());
        EXPECT_FALSE(message.registration.empty());
        EXPECT_GE(message.daily_flights, flights);
        flights = message.daily_flights;
        max_contacts = std::max(max_contacts, message.contacts);
    }
    EXPECT_GE(labels.size(), 12U);
    EXPECT_GE(operators.size(), 12U);
    EXPECT_GT(uplinks, 50);
    EXPECT_LT(uplinks, 250);
    EXPECT_GT(with_content, 300);
    EXPECT_LT(with_content, 900);
    EXPECT_GT(flights, 40U);
    EXPECT_GT(max_contacts, 10U);
}

} // namespace
