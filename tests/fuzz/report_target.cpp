// report_target.cpp - a report's announcement and its pieces, and the resulting file.
#include "app/app_state.hpp"
#include "base/limits.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "net/report_reception.hpp"
#include "support/compressed.hpp"
#include "unit/report_replies.hpp"

#include <algorithm>
#include <cstring>

namespace
{

constexpr std::size_t max_piece = 4096;

/// The announcement of a header, as far as it is within bounds.
struct announcement {
    bool is_refused = false;
    bool has_total = false;
    long total = 0;
    long size = 0;
};

announcement parse_header(const std::string& header)
{
    announcement result;
    const std::size_t tab = header.find('\t');
    result.has_total = tab != std::string::npos;
    const std::string size = result.has_total ? header.substr(tab + 1) : header;
    result.size = std::strtol(size.c_str(), nullptr, 10);
    if (result.has_total)
        result.total = std::strtol(header.substr(0, tab).c_str(), nullptr, 10);
    result.is_refused = result.size < 0 || result.size > report_max_size || result.total < 0 ||
                        result.total > report_max_total_bytes;
    return result;
}

void take_header(server_entry& entry, const std::string& header)
{
    const bool was_receiving = entry.report_buffer != nullptr;
    report_header(entry, header.c_str());
    const announcement expected = parse_header(header);
    if (expected.is_refused) {
        require(entry.report_buffer == nullptr, "a refused report is not received");
        return;
    }
    require(entry.report_size == static_cast<std::uint32_t>(expected.size), "the size is kept");
    if (!expected.has_total) {
        require((entry.report_buffer != nullptr) == was_receiving,
                "a size alone begins and ends nothing");
        return;
    }
    require(entry.report_buffer != nullptr && entry.report_received == 0 &&
                entry.report_total == static_cast<std::uint32_t>(expected.total),
            "an announced report begins anew");
}

/// Pieces beyond the total are cut; the piece that reaches it ends the reception.
void take_piece(server_entry& entry, const std::string& piece)
{
    const bool was_receiving = entry.report_buffer != nullptr;
    const std::size_t before = entry.report_received;
    const std::size_t left = was_receiving ? entry.report_total - before : 0;
    const std::size_t taken = std::min(left, piece.size());
    // A buffer of exactly this size, so that a read beyond it is noticed.
    const std::unique_ptr<unsigned char[]> bytes{new unsigned char[piece.size()]};
    std::copy(piece.begin(), piece.end(), bytes.get());
    report_piece(entry, bytes.get(), piece.size());
    if (!was_receiving || taken == left) {
        require(entry.report_buffer == nullptr, "with its last byte a report is finished");
        return;
    }
    require(entry.report_received == before + taken, "bytes of a report are counted");
    require(std::memcmp(static_cast<char*>(entry.report_buffer) + before, piece.data(), taken) == 0,
            "a piece follows the one before");
}

/// A report that is announced correctly, sent in pieces of one size and saved under a name.
void take_whole_report(server_entry& entry, fuzz_input& input)
{
    const std::size_t piece = 1 + input.number(300);
    const bool is_refused = input.number(15) == 0;
    const std::string text = input.rest();
    const std::string data = compressed(text);
    take_header(entry, std::to_string(data.size()) + '\t' + std::to_string(text.size() / 4 + 1));
    writing_refuse(is_refused);
    keys_type("name\n");
    for (std::size_t at = 0; at < data.size(); at += piece)
        take_piece(entry, data.substr(at, piece));
    const std::string expected = is_refused ? "" : text.substr(0, text.find('\0'));
    require(written() == expected, "a report is saved up to its first zero byte");
}

void step(server_entry& entry, fuzz_input& input)
{
    const unsigned what = input.number(7);
    if (what < 2)
        take_header(entry, input.text());
    else if (what == 2)
        take_header(entry, std::to_string(input.number(9'000)) + '\t' +
                               std::to_string(input.number(9'000)));
    else if (what == 3)
        keys_type(input.text(60));
    else if (what == 4)
        report_reception_drop(entry);
    else if (what == 5)
        take_piece(entry, std::string(input.number(max_piece), 'x'));
    else
        take_piece(entry, input.bytes(input.number(255)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    server_entry& entry = server_add_new("a.example", "");
    if (input.number(3) == 0)
        take_whole_report(entry, input);
    while (!input.is_empty())
        step(entry, input);
    screen_check();
    return 0;
}
