// report_reception.cpp - see report_reception.hpp.
#include "net/report_reception.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

void report_reception_begin(server_entry& entry, std::uint32_t total)
{
    report_reception_drop(entry);
    entry.report_total = total;
    entry.report_buffer = std::calloc(std::size_t{total} + 1, 1);
}

void report_reception_append(server_entry& entry, const unsigned char* bytes, std::size_t length)
{
    if (entry.report_buffer == nullptr)
        return;
    const std::size_t missing = entry.report_total - entry.report_received;
    const std::size_t taken = std::min(length, missing);
    std::memcpy(static_cast<unsigned char*>(entry.report_buffer) + entry.report_received, bytes,
                taken);
    entry.report_received += static_cast<std::uint32_t>(taken);
}

bool report_reception_ends_with(const server_entry& entry, std::size_t length)
{
    return entry.report_buffer != nullptr && entry.report_total - entry.report_received <= length;
}

bool report_reception_is_complete(const server_entry& entry)
{
    return entry.report_buffer != nullptr && entry.report_received == entry.report_total;
}

void report_reception_drop(server_entry& entry)
{
    std::free(entry.report_buffer);
    entry.report_buffer = nullptr;
    entry.report_received = 0;
}
