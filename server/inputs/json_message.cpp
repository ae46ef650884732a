// json_message.cpp - see json_message.hpp.
#include "server/inputs/json_message.hpp"

#include "server/base/limits.hpp"
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

/// Converts all fields into the form that clients can carry, and cuts the content.
json_message finish_message(transmission message)
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
    json_message result;
    for (auto& part : content_parts(latin1_text(message.content))) {
        message.content = std::move(part);
        result.parts.push_back(message);
    }
    return result;
}

json_message read_flat(const json& object)
{
    const bool is_message =
        std::any_of(std::begin(flat_members), std::end(flat_members),
                    [&object](const json_member& member) { return object.contains(member.name); });
    if (!is_message)
        return {};
    transmission message = read_members(object, flat_members);
    message.time = read_time(find_member(&object, "timestamp"));
    return finish_message(std::move(message));
}

json_message read_frame(const json& frame, const json* acars)
{
    if (acars == nullptr)
        return {};
    if (!acars->is_object())
        return {{}, "its acars member is no object"};
    transmission message = read_members(*acars, acars_members);
    message.message_number += read_text(find_member(acars, "msg_num_seq"));
    message.time = read_time(find_member(find_member(&frame, "t"), "sec"));
    return finish_message(std::move(message));
}

json_message read_object(const json& object)
{
    if (const json* const vdl2 = find_member(&object, "vdl2"))
        return read_frame(*vdl2, find_member(find_member(vdl2, "avlc"), "acars"));
    if (const json* const hfdl = find_member(&object, "hfdl")) {
        const json* const packet = find_member(find_member(hfdl, "lpdu"), "hfnpdu");
        return read_frame(*hfdl, find_member(packet, "acars"));
    }
    return read_flat(object);
}

} // namespace

json_message read_json_message(std::string_view line)
{
    try {
        const json object = json::parse(as_utf8(line), nullptr, false);
        if (object.is_discarded())
            return {{}, "this is not JSON"};
        if (!object.is_object())
            return {{}, "this is no object"};
        return read_object(object);
    } catch (const json::exception& failure) {
        return {{}, failure.what()};
    }
}

} // namespace tovrik
