// json_target.cpp - lines of JSON from receivers, and what they become on their way to clients.
#include "fuzz/property.hpp"

#include "server/base/limits.hpp"
#include "server/inputs/doubles.hpp"
#include "server/inputs/joining.hpp"
#include "server/inputs/json_lines.hpp"
#include "server/inputs/json_message.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using tovrik::transmission;

/// The lines' messages, when the bytes come in pieces of this size.
std::vector<transmission> read_in_pieces(std::string_view bytes, std::size_t size)
{
    tovrik::json_lines lines{{}, tovrik::long_texts::whole};
    std::vector<transmission> messages;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(size, bytes.size())))
        append_messages(messages, lines.take(bytes.substr(0, size)));
    append_messages(messages, lines.take_rest());
    require(messages.size() == lines.messages(), "every message is counted");
    return messages;
}

bool is_carried(const std::string& text, std::size_t limit)
{
    return text.size() <= limit && std::ranges::none_of(text, [](unsigned char c) {
               return c != '\n' && (c < 0x20 || (c >= 0x7F && c < 0xA0));
           });
}

void check_message(const transmission& message)
{
    for (const auto* field :
         {&message.mode, &message.registration, &message.label, &message.block_id,
          &message.message_number, &message.flight_number, &message.heard.station})
        require(is_carried(*field, tovrik::max_field_bytes), "fields are short and clean");
    require(message.time >= 0, "times are not before the epoch");
    require(message.heard.frequency_mhz >= 0, "frequencies are not negative");
    require(message.heard.level_db >= -999, "levels are numbers");
    for (const auto& part : message_parts(message))
        require(is_carried(part.content, tovrik::max_value_bytes), "parts can be carried");
}

/// How long all texts are together.
std::size_t text_bytes(const std::vector<transmission>& messages)
{
    std::size_t bytes = 0;
    for (const auto& message : messages)
        bytes += message.content.size();
    return bytes;
}

void check_joining(const std::vector<transmission>& messages)
{
    tovrik::doubles known;
    tovrik::joining blocks;
    const tovrik::time_point now{};
    auto single = doubles_take(known, messages, true, now);
    append_messages(single, doubles_end(known));
    require(single.size() + known.merged == messages.size(), "doubles are merged, no more");
    const std::size_t bytes = text_bytes(single);
    auto passed = joining_take(blocks, single, now);
    append_messages(passed, joining_end(blocks));
    require(passed.size() + blocks.joined <= single.size(), "blocks make fewer messages");
    require(text_bytes(passed) <= bytes, "no text is added");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes{reinterpret_cast<const char*>(data), size};
    const auto messages = read_in_pieces(bytes, bytes.size());
    require(read_in_pieces(bytes, 7).size() == messages.size(), "pieces make no difference");
    for (const auto& message : messages)
        check_message(message);
    check_joining(messages);
    return 0;
}
