// hostile_documents.cpp - see hostile_documents.hpp.
#include "bench/hostile_documents.hpp"

#include <cstdio>
#include <string_view>

namespace
{

constexpr std::size_t largest_inflated = 262'140;
constexpr std::size_t longest_name = 63;
constexpr std::size_t longest_text = 511;
constexpr const char* declaration = "<?xml?>";

std::string repeat(std::string_view piece, std::size_t size)
{
    std::string text;
    while (text.size() + piece.size() <= size)
        text += piece;
    return text;
}

/// A document that begins like this and is filled up with these pieces.
std::string fill_up(const std::string& begin, std::string_view piece)
{
    const std::string text = declaration + begin;
    return text + repeat(piece, largest_inflated - text.size());
}

/// Elements in each other until the path is full of one letter.
std::string make_full_path()
{
    std::string text;
    for (int level = 0; level < 16; ++level)
        text += '<' + std::string(longest_name, 'a') + '>';
    return text;
}

/// As many different placeholders as a value has space for. They lead nowhere.
std::string make_placeholders(int from)
{
    std::string text;
    for (int number = from; text.size() + 8 < longest_text; ++number) {
        char placeholder[16];
        std::snprintf(placeholder, sizeof placeholder, "%%%x%%", number);
        text += placeholder;
    }
    return text;
}

/// A transmission whose values name placeholders. first: the value that is filled in first.
std::string make_transmission(const std::string& first, const std::string& flight)
{
    return "<tovrik><ACARS><ACARSMode>" + first + "</ACARSMode><AircraftReg>" +
           make_placeholders(1'000) + "</AircraftReg><MessageLabel>" + make_placeholders(2'000) +
           "</MessageLabel><BlockID>" + make_placeholders(3'000) + "</BlockID><FlightNumber>" +
           flight + "</FlightNumber></ACARS></tovrik>";
}

/// The text becomes long at once, and then has many placeholders left.
std::string make_long_text()
{
    const std::string long_value = "%v%";
    return make_transmission("%tovrik/ACARS/FlightNumber%", repeat(long_value, 62UL * 3)) + "<v>" +
           repeat("%a", longest_text) + "</v>";
}

/// Paths as long as one that is looked up again and again, and different from it only at their end.
std::string make_similar_paths()
{
    std::string path;
    std::string open;
    for (int level = 0; level < 7; ++level) {
        const std::string name(longest_name, 'a');
        path += name + '/';
        open += '<' + name + '>';
    }
    return "<v>%" + path + "cy%%v%</v>" + make_transmission("%v%", "") + open;
}

} // namespace

std::span<const hostile_document> hostile_documents()
{
    static const hostile_document documents[] = {
        {"long_paths", fill_up("<a>", "<>")},
        {"many_nodes", fill_up(make_transmission(make_placeholders(0), ""), "<>")},
        {"deep_look_ups", fill_up(make_transmission(make_placeholders(0), ""), "<a>")},
        {"similar_paths", fill_up(make_similar_paths(), "<by></by>")},
        {"end_tags", fill_up(make_full_path(), "</ab>")},
        {"long_text", fill_up(make_long_text(), "<a>")},
    };
    return documents;
}
