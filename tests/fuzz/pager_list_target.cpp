// pager_list_target.cpp - pager lists of any kind, beside their expected rows.
#include "app/app_state.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "services/pager_list.hpp"

#include <algorithm>
#include <vector>

namespace
{

constexpr std::size_t inner_width = 25; // up to the box's last column, over its frame
constexpr int top_row = 4;
constexpr int max_pauses_of_a_list = 60;

using texts = std::vector<std::string>;

texts split(const std::string& text, char separator, std::size_t most)
{
    texts parts;
    std::size_t from = 0;
    while (parts.size() < most) {
        const std::size_t end = std::min(text.find(separator, from), text.size());
        parts.push_back(text.substr(from, end - from));
        if (end == text.size())
            break;
        from = end + 1;
    }
    return parts;
}

texts split_records(const std::string& text, std::size_t most)
{
    if (text.empty())
        return {};
    texts records = split(text, '~', most);
    // The last record that fits contains everything that follows.
    std::size_t place = 0;
    for (std::size_t index = 0; index + 1 < records.size(); ++index)
        place += records[index].size() + 1;
    if (records.size() == most)
        records.back() = text.substr(place);
    return records;
}

char show(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    if (byte == '\t' || byte == '\r' || byte == '\n')
        return ' ';
    return byte < 0x20 || (byte >= 0x7F && byte < 0xA0) ? '?' : character;
}

/// A record as a row of the box: fields padded, cut only at the edge.
std::string make_row(const std::string& record)
{
    constexpr std::size_t widths[] = {8, 4, 6};
    texts fields = record.empty() ? texts{} : split(record, '\t', 3);
    fields.resize(3);
    std::string row;
    for (std::size_t index = 0; index < 3; ++index) {
        std::string value = fields[index].starts_with('^') ? "" : fields[index];
        value.resize(std::max(value.size(), widths[index]), ' ');
        row += (index > 0 ? "|" : "") + value;
    }
    row = row.substr(0, inner_width);
    std::transform(row.begin(), row.end(), row.begin(), show);
    return row;
}

void check_rows(const texts& records)
{
    const auto column = static_cast<std::size_t>(COLS / 2 - 13 + 1);
    // A list that does not fit below its top row is shown as far as possible.
    const int visible = std::min(static_cast<int>(records.size()), LINES - top_row - 2);
    for (int index = 0; index < visible; ++index) {
        const std::string expected = make_row(records[static_cast<std::size_t>(index)]);
        require(screen_row(top_row + 2 + index).substr(column, expected.size()) == expected,
                "a record stands on its row");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    const std::string keys = input.text(32);
    const std::string text = input.text();
    const texts records = split_records(text, static_cast<std::size_t>(LINES - 4));
    world.on_pause = [&] {
        if (world.pauses == 1) {
            screen_check();
            check_rows(records);
        }
        idle_pause();
    };
    keys_type(keys);
    pager_list_show(text.c_str());
    require(world.pauses < max_pauses_of_a_list, "a list closes by itself");
    require(app_state.popup_win == nullptr, "a list leaves no window");
    screen_check();
    return 0;
}
