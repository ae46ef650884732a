// doubles.cpp - see doubles.hpp.
#include "server/inputs/doubles.hpp"

#include <utility>

namespace tovrik
{
namespace
{

/// Stands between the fields of a key. No field holds it: control characters become blanks.
constexpr char key_separator = '\0';

std::string make_key(const transmission& message)
{
    std::string key;
    for (const auto field : {&transmission::registration, &transmission::label,
                             &transmission::block_id, &transmission::message_number}) {
        key += message.*field;
        key += key_separator;
    }
    const std::string_view text = message.content;
    return key += text.substr(0, text.find_last_not_of(" \n") + 1);
}

/// Passes a message on if it is still held back.
void pass_on(heard_message& heard, std::vector<transmission>& passed)
{
    if (heard.held)
        passed.push_back(std::move(*heard.held));
    heard.held.reset();
}

void pass_due(doubles& known, time_point now, std::vector<transmission>& passed)
{
    while (known.first_held != known.remembered.end() && known.first_held->release_at <= now) {
        pass_on(*known.first_held, passed);
        ++known.first_held;
    }
}

void forget_first(doubles& known, std::vector<transmission>& passed)
{
    const auto first = known.remembered.begin();
    pass_on(*first, passed);
    if (known.first_held == first)
        ++known.first_held;
    known.remembered_bytes -= first->key.size();
    known.places.erase(first->key);
    known.remembered.pop_front();
}

void forget_old(doubles& known, time_point now, std::vector<transmission>& passed)
{
    while (!known.remembered.empty() && known.remembered.front().forget_at <= now) {
        forget_first(known, passed);
    }
}

/// Makes room for one more.
void limit_size(doubles& known, std::size_t key_bytes, std::vector<transmission>& passed)
{
    while (!known.remembered.empty() &&
           (known.remembered.size() >= max_remembered_messages ||
            known.remembered_bytes + key_bytes > max_remembered_bytes)) {
        forget_first(known, passed);
    }
}

void remember(doubles& known, heard_message heard)
{
    known.remembered_bytes += heard.key.size();
    known.remembered.push_back(std::move(heard));
    const auto place = std::prev(known.remembered.end());
    known.places.emplace(place->key, place);
    if (known.first_held == known.remembered.end())
        known.first_held = place;
}

/// Merges a double into what was heard before. Only a stronger one leaves a trace.
void merge_double(doubles& known, heard_message& heard, transmission message)
{
    ++known.merged;
    if (heard.held && message.heard.level_db > heard.held->heard.level_db)
        heard.held = std::move(message);
}

} // namespace

std::vector<transmission> doubles_take(doubles& known, std::vector<transmission> messages,
                                       bool hold_back, time_point now)
{
    std::vector<transmission> passed = doubles_on_time(known, now);
    for (transmission& message : messages) {
        std::string key = make_key(message);
        const auto found = known.places.find(key);
        if (found != known.places.end()) {
            merge_double(known, *found->second, std::move(message));
            continue;
        }
        limit_size(known, key.size(), passed);
        heard_message heard{std::move(key), std::move(message), now, now + double_window};
        if (hold_back) {
            heard.release_at += double_hold_back;
        } else {
            pass_on(heard, passed);
        }
        remember(known, std::move(heard));
    }
    return passed;
}

std::vector<transmission> doubles_on_time(doubles& known, time_point now)
{
    std::vector<transmission> passed;
    pass_due(known, now, passed);
    forget_old(known, now, passed);
    return passed;
}

std::vector<transmission> doubles_end(doubles& known)
{
    std::vector<transmission> passed;
    while (!known.remembered.empty()) {
        forget_first(known, passed);
    }
    return passed;
}

time_point doubles_next_time(const doubles& known)
{
    // Forgetting can wait until the next message comes.
    for (auto heard = known.first_held; heard != known.remembered.end(); ++heard) {
        if (heard->held)
            return heard->release_at;
    }
    return never;
}

} // namespace tovrik
