// report_reception.hpp - the compressed report that a server is sending, as far as it has come.
//
// Owns the report fields of a server_entry, except report_size: only decompression needs that one.
#pragma once

#include "data/server_registry.hpp"

#include <cstddef>
#include <cstdint>

/// Prepares for a report of `total` compressed bytes and drops one that was under way. When out of
/// memory, none is under way.
void report_reception_begin(server_entry& entry, std::uint32_t total);

/// Keeps the bytes of one piece, cut where they would exceed the total. Without a report under way
/// they are dropped.
void report_reception_append(server_entry& entry, const unsigned char* bytes, std::size_t length);

/// Whether a report is under way and all its bytes have come.
bool report_reception_is_complete(const server_entry& entry);

/// Whether the report under way is complete with a piece of this length.
bool report_reception_ends_with(const server_entry& entry, std::size_t length);

/// Drops the report under way, if there is one.
void report_reception_drop(server_entry& entry);
