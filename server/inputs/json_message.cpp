// json_message.cpp - see json_message.hpp.
#include "server/inputs/json_message.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/inputs/iso_time.hpp"
#include "server/inputs/json_depth.hpp"
#include "server/messages/carried_text.hpp"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

namespace tovrik
{
namespace
{

using nlohmann::json;

/// A member of an object that goes into a field of a message.
struct json_member {
    const char* name;
    std::string transmission::*field;
};

constexpr json_member flat_members[] = {
    {"mode", &transmission::mode},
    {"label", &transmission::label},
    {"block_id", &transmission::block_id},
    {"tail", &transmission::registration},
    {"flight", &transmission::flight_number},
    {"msgno", &transmission::message_number},
    {"text", &transmission::content},
    {"depa", &transmission::from},
    {"dsta", &transmission::to},
};

constexpr json_member acars_members[] = {
    {"mode", &transmission::mode},
    {"label", &transmission::label},
    {"blk_id", &transmission::block_id},
    {"reg", &transmission::registration},
    {"flight", &transmission::flight_number},
    {"msg_num", &transmission::message_number},
    {"msg_text", &transmission::content},
};

constexpr json_member satellite_members[] = {
    {"mode", &transmission::mode},
    {"label", &transmission::label},
    {"block_id", &transmission::block_id},
    {"tail", &transmission::registration},
    {"flight", &transmission::flight_number},
    {"message_number", &transmission::message_number},
    {"text", &transmission::content},
};

/// What a "source" calls its link.
struct link_name {
    const char* name;
    message_link link;
};

constexpr link_name link_names[] = {
    {"vhf", message_link::vhf},           {"vdl2", message_link::vdl2},
    {"hfdl", message_link::hfdl},         {"iridium", message_link::iridium},
    {"inmarsat", message_link::inmarsat},
};

const json* find_member(const json* object, const char* name)
{
    if (object == nullptr || !object->is_object())
        return nullptr;
    const auto found = object->find(name);
    return found == object->end() ? nullptr : &*found;
}

std::string read_text(const json* value)
{
    if (value == nullptr)
        return {};
    if (value->is_string())
        return value->get_ref<const std::string&>();
    return value->is_number_integer() ? value->dump() : std::string{};
}

std::time_t read_time(const json* value)
{
    if (value == nullptr || !value->is_number())
        return 0;
    const auto seconds = value->get<double>();
    return seconds >= 1 && seconds <= max_time_s ? static_cast<std::time_t>(seconds) : 0;
}

void trim(std::string& text)
{
    text.erase(0, text.find_first_not_of(' '));
    text.erase(text.find_last_not_of(' ') + 1);
}

template <std::size_t count>
transmission read_members(const json& object, const json_member (&members)[count])
{
    transmission message;
    for (const auto& member : members) {
        message.*member.field = read_text(find_member(&object, member.name));
    }
    return message;
}

/// On the air, the second character of the label "_d" is a delete character.
void replace_delete_character(std::string& label)
{
    std::replace(label.begin(), label.end(), '\x7f', 'd');
}

/// Frequencies below are in MHz, those above in Hz: no link uses what lies between.
constexpr double max_mhz = 100000;
constexpr double hz_per_mhz = 1000000;

/// Levels are in dB. A larger number is something else.
constexpr double max_level_db = 998;

double read_mhz(const json* value)
{
    if (value == nullptr || !value->is_number())
        return 0;
    const auto number = value->get<double>();
    const double mhz = number > max_mhz ? number / hz_per_mhz : number;
    return mhz > 0 && mhz <= max_mhz ? mhz : 0;
}

double read_level(const json* value)
{
    if (value == nullptr || !value->is_number())
        return reception{}.level_db;
    const auto number = value->get<double>();
    return number >= -max_level_db && number <= max_level_db ? number : reception{}.level_db;
}

/// A station's name in the form that clients can carry, cut to max_field_bytes.
std::string read_station(const json* value)
{
    std::string station = latin1_text(read_text(value));
    std::replace(station.begin(), station.end(), '\n', ' ');
    trim(station);
    return station.substr(0, max_field_bytes);
}

bool is_false(const json* value)
{
    return value != nullptr && value->is_boolean() && !value->get<bool>();
}

bool is_true(const json* value)
{
    return value != nullptr && value->is_boolean() && value->get<bool>();
}

/// Some receivers say that a block is the last one, others that more follow.
bool is_continued(const json* message)
{
    return is_false(find_member(message, "block_end")) || is_true(find_member(message, "more"));
}

/// Converts all fields into the form that clients can carry.
json_whole finish_message(transmission message)
{
    replace_delete_character(message.label);
    for (const auto field :
         {&transmission::mode, &transmission::label, &transmission::block_id,
          &transmission::registration, &transmission::flight_number, &transmission::message_number,
          &transmission::from, &transmission::to}) {
        message.*field = latin1_text(message.*field);
        trim(message.*field);
        if ((message.*field).size() > max_field_bytes)
            return {{}, "a field is longer than " + std::to_string(max_field_bytes) + " bytes"};
    }
    auto& registration = message.registration;
    registration.erase(0, registration.find_first_not_of('.'));
    message.content = latin1_text(message.content);
    return {std::move(message), {}};
}

json_whole read_flat(const json& object)
{
    const bool is_message =
        std::any_of(std::begin(flat_members), std::end(flat_members),
                    [&object](const json_member& member) { return object.contains(member.name); });
    if (!is_message)
        return {};
    transmission message = read_members(object, flat_members);
    message.time = read_time(find_member(&object, "timestamp"));
    message.heard = {.link = message_link::vhf,
                     .station = read_station(find_member(&object, "station_id")),
                     .frequency_mhz = read_mhz(find_member(&object, "freq")),
                     .level_db = read_level(find_member(&object, "level")),
                     .continues = is_continued(&object)};
    return finish_message(std::move(message));
}

/// `frame` says when, where and how the message was heard that its "acars" member holds.
json_whole read_frame(const json& frame, const json* acars, message_link link)
{
    if (acars == nullptr)
        return {};
    if (!acars->is_object())
        return {{}, "its acars member is no object"};
    transmission message = read_members(*acars, acars_members);
    message.message_number += read_text(find_member(acars, "msg_num_seq"));
    message.time = read_time(find_member(find_member(&frame, "t"), "sec"));
    message.heard = {.link = link,
                     .station = read_station(find_member(&frame, "station")),
                     .frequency_mhz = read_mhz(find_member(&frame, "freq")),
                     .level_db = read_level(find_member(&frame, "sig_level")),
                     .continues = is_continued(acars)};
    return finish_message(std::move(message));
}

message_link read_link(const json* transport)
{
    const std::string name = read_text(transport);
    const auto* const found = std::ranges::find(link_names, name, &link_name::name);
    return found == std::end(link_names) ? message_link::unknown : found->link;
}

json_whole read_sourced(const json& object, const json& source)
{
    const json* const acars = find_member(&object, "acars");
    if (acars == nullptr)
        return {};
    if (!acars->is_object())
        return {{}, "its acars member is no object"};
    transmission message = read_members(*acars, satellite_members);
    message.time = iso_time(read_text(find_member(acars, "timestamp")));
    message.heard = {.link = read_link(find_member(&source, "transport")),
                     .station = read_station(find_member(&source, "station_id")),
                     .frequency_mhz = read_mhz(find_member(&object, "freq")),
                     .level_db = read_level(find_member(&object, "level")),
                     .continues = is_continued(acars)};
    return finish_message(std::move(message));
}

json_whole read_object(const json& object)
{
    if (const json* const vdl2 = find_member(&object, "vdl2"))
        return read_frame(*vdl2, find_member(find_member(vdl2, "avlc"), "acars"),
                          message_link::vdl2);
    if (const json* const hfdl = find_member(&object, "hfdl")) {
        const json* const packet = find_member(find_member(hfdl, "lpdu"), "hfnpdu");
        return read_frame(*hfdl, find_member(packet, "acars"), message_link::hfdl);
    }
    if (const json* const unit = find_member(&object, "isu"))
        return read_frame(object, find_member(unit, "acars"), message_link::inmarsat);
    const json* const source = find_member(&object, "source");
    if (source != nullptr && source->is_object())
        return read_sourced(object, *source);
    return read_flat(object);
}

json_whole parse_line(std::string_view line)
{
    const json object = json::parse(as_utf8(line), nullptr, false);
    if (object.is_discarded())
        return {{}, "this is not JSON"};
    if (!object.is_object())
        return {{}, "this is no object"};
    return read_object(object);
}

} // namespace

json_whole read_json_whole(std::string_view line)
{
    if (line.size() > max_json_line_bytes)
        return {{}, "it is longer than " + std::to_string(max_json_line_bytes) + " bytes"};
    if (is_too_deep(line))
        return {{}, "it is nested more than " + std::to_string(max_json_depth) + " deep"};
    try {
        return parse_line(line);
    } catch (const json::exception& failure) {
        return {{}, failure.what()};
    }
}

json_message read_json_message(std::string_view line)
{
    json_whole whole = read_json_whole(line);
    json_message read{{}, std::move(whole.error)};
    if (whole.message)
        read.parts = message_parts(std::move(*whole.message));
    return read;
}

std::vector<transmission> message_parts(transmission message)
{
    std::vector<transmission> parts;
    for (auto& part : numbered_parts(message.content)) {
        message.content = std::move(part);
        parts.push_back(message);
    }
    return parts;
}

bool is_empty_squitter(const transmission& message)
{
    return message.label == "SQ" && message.content.find_first_not_of(" \n") == std::string::npos &&
           (message.block_id.empty() || !is_digit(message.block_id.front()));
}

} // namespace tovrik
