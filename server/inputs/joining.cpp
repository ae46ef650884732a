// joining.cpp - see joining.hpp.
#include "server/inputs/joining.hpp"

#include "server/base/text_fields.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace tovrik
{
namespace
{

/// Length of a message number without the letter of its block.
constexpr std::size_t number_length = 3;

char find_id(const transmission& message)
{
    return message.block_id.size() == 1 ? message.block_id.front() : '\0';
}

char find_letter(const transmission& message)
{
    return message.message_number.size() == number_length + 1 ? message.message_number.back()
                                                              : '\0';
}

std::string_view find_number(const transmission& message)
{
    return std::string_view{message.message_number}.substr(0, number_length);
}

bool is_letter(char c)
{
    return c >= 'A' && c <= 'Z';
}

/// The id after `id`; NUL if `id` is none.
char next_of_id(char id)
{
    if (is_digit(id))
        return id == '9' ? '0' : static_cast<char>(id + 1);
    if (is_letter(id))
        return id == 'Z' ? 'A' : static_cast<char>(id + 1);
    return '\0';
}

bool is_next_letter(char last, char letter)
{
    return last == '\0' || letter == '\0' || letter == last + 1;
}

/// Whether a message may be a block of one that others belong to.
bool may_join(const transmission& message)
{
    return !message.registration.empty() && next_of_id(find_id(message)) != '\0';
}

bool is_of_same_message(const transmission& one, const transmission& other)
{
    return one.heard.link == other.heard.link && one.registration == other.registration &&
           one.label == other.label && find_number(one) == find_number(other) &&
           is_digit(find_id(one)) == is_digit(find_id(other));
}

bool is_repeated(const unfinished_message& unfinished, const transmission& block)
{
    const std::string_view text = unfinished.message.content;
    return find_id(block) == unfinished.last_id && find_letter(block) == unfinished.last_letter &&
           text.substr(text.size() - unfinished.last_size) == block.content;
}

bool is_next_block(const unfinished_message& unfinished, const transmission& block)
{
    return find_id(block) == next_of_id(unfinished.last_id) &&
           is_next_letter(unfinished.last_letter, find_letter(block)) &&
           unfinished.message.content.size() + block.content.size() <= max_joined_bytes;
}

void append_block(unfinished_message& unfinished, const transmission& block)
{
    unfinished.message.content += block.content;
    unfinished.message.heard.continues = block.heard.continues;
    unfinished.last_id = find_id(block);
    unfinished.last_letter = find_letter(block);
    unfinished.last_size = block.content.size();
}

void wait_for_next(joining& state, unfinished_message unfinished, time_point now,
                   std::vector<transmission>& passed)
{
    if (state.waiting.size() >= max_unfinished_messages) {
        passed.push_back(std::move(state.waiting.front().message));
        state.waiting.pop_front();
    }
    unfinished.give_up_at = now + join_patience;
    state.waiting.push_back(std::move(unfinished));
}

void begin_message(joining& state, transmission block, time_point now,
                   std::vector<transmission>& passed)
{
    if (!block.heard.continues || !may_join(block)) {
        passed.push_back(std::move(block));
        return;
    }
    unfinished_message begun{{}, find_id(block), find_letter(block), block.content.size(), never};
    begun.message = std::move(block);
    wait_for_next(state, std::move(begun), now, passed);
}

void take_block(joining& state, transmission block, time_point now,
                std::vector<transmission>& passed)
{
    const auto found = std::find_if(state.waiting.begin(), state.waiting.end(),
                                    [&block](const unfinished_message& unfinished) {
                                        return is_of_same_message(unfinished.message, block);
                                    });
    if (found == state.waiting.end() || !may_join(block)) {
        begin_message(state, std::move(block), now, passed);
        return;
    }
    if (is_repeated(*found, block))
        return;
    unfinished_message unfinished = std::move(*found);
    state.waiting.erase(found);
    if (!is_next_block(unfinished, block)) {
        passed.push_back(std::move(unfinished.message));
        begin_message(state, std::move(block), now, passed);
        return;
    }
    ++state.joined;
    append_block(unfinished, block);
    if (unfinished.message.heard.continues) {
        wait_for_next(state, std::move(unfinished), now, passed);
    } else {
        passed.push_back(std::move(unfinished.message));
    }
}

} // namespace

std::vector<transmission> joining_take(joining& state, std::vector<transmission> messages,
                                       time_point now)
{
    std::vector<transmission> passed = joining_on_time(state, now);
    for (transmission& message : messages) {
        take_block(state, std::move(message), now, passed);
    }
    return passed;
}

std::vector<transmission> joining_on_time(joining& state, time_point now)
{
    std::vector<transmission> passed;
    while (!state.waiting.empty() && state.waiting.front().give_up_at <= now) {
        passed.push_back(std::move(state.waiting.front().message));
        state.waiting.pop_front();
    }
    return passed;
}

std::vector<transmission> joining_end(joining& state)
{
    return joining_on_time(state, never);
}

time_point joining_next_time(const joining& state)
{
    return state.waiting.empty() ? never : state.waiting.front().give_up_at;
}

} // namespace tovrik
