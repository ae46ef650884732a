// server_box.hpp - the boxes that a server opens: whether it may, and whose they are.
//
// A box holds up every other server while it is open. So the user's patience has an end: after two
// boxes in a row that ran out of time, those of the next minute do not open. Whatever the user asks
// of the server restores it.
//
// Owns the two patience fields of a server_entry.
#pragma once

#include "data/server_registry.hpp"

#include <ctime>
#include <string_view>

/// How many boxes in a row may run out of time.
constexpr std::int32_t server_box_max_unanswered = 2;
/// How long the server's boxes do not open then, from the end of the last one.
constexpr std::time_t server_box_quiet_s = 60;

/// Whether a box of the server may open now; if not, it counts as answered with nothing.
bool server_box_may_open(server_entry& server, std::time_t now);

/// Notes that a box of the server has closed. was_answered: by a key, Escape included; false if its
/// time ran out.
void server_box_closed(server_entry& server, bool was_answered, std::time_t now);

/// Restores the patience: the user has asked something of the server, and waits for its box.
void server_box_expect(server_entry& server);

/// The name on the server's boxes: what it is called elsewhere, without blanks around it, or its
/// host if no letter is left. Borrowed from the entry.
std::string_view server_box_name(const server_entry& server);

/// A prompt of the server, with its name on the lower frame; otherwise as prompt_input. Null, and
/// no box, if it may not open.
char* server_box_prompt(server_entry& server, int size, const char* question, const char* preset);
