// text_target.cpp - the string functions beside the same in std::string.
#include "base/owners.hpp"
#include "data/text.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"

#include <vector>

namespace
{

constexpr std::size_t max_slots = 12;

std::string replace(const std::string& text, const std::string& pattern,
                    const std::string& replacement)
{
    std::string made;
    std::size_t from = 0;
    for (std::size_t at; !pattern.empty() && (at = text.find(pattern, from)) != std::string::npos;
         from = at + pattern.size())
        made.append(text, from, at - from).append(replacement);
    return made.append(text, from);
}

void try_append_and_replace(fuzz_input& input)
{
    const std::string text = input.text();
    const std::string pattern = input.text(64);
    const std::string other = input.text(64);
    heap_text made{str_dup(text.c_str())};
    require(text == made.get(), "a copy is like the original");
    made.reset(str_append(made.release(), other.c_str()));
    require(text + other == made.get(), "what is appended stands at the end");
    made.reset(str_replace(made.release(), pattern.c_str(), other.c_str()));
    const std::string expected = replace(text + other, pattern, other);
    require(expected == made.get(), "every pattern is replaced once");
    made.reset(str_replace(made.release(), pattern.c_str(), nullptr));
    require(replace(expected, pattern, "") == made.get(), "nothing is a replacement too");
}

/// The fields of a text, and which of their ends are separators where a splitter may cut.
struct plain_field {
    std::size_t start;
    std::size_t end;
};

std::vector<plain_field> split_plainly(const std::string& text, const std::string& separators)
{
    const bool is_blank_mode = separators.empty();
    const bool runs_count_once = separators.size() != 1;
    const std::string set = is_blank_mode ? " \t" : separators;
    std::vector<plain_field> fields;
    std::size_t at = is_blank_mode ? std::min(text.find_first_not_of(set), text.size()) : 0;
    if (at == text.size())
        return fields;
    while (true) {
        const std::size_t end = std::min(text.find_first_of(set, at), text.size());
        fields.push_back({at, end});
        if (end == text.size())
            return fields;
        at = runs_count_once ? std::min(text.find_first_not_of(set, end), text.size()) : end + 1;
        if (is_blank_mode && at == text.size())
            return fields;
    }
}

void try_split(fuzz_input& input)
{
    const std::size_t slots = 1 + input.number(max_slots - 1);
    const std::string separators = input.text(4);
    const std::string text = input.text();
    const heap_text cut{str_dup(text.c_str())};
    char* const untouched = cut.get() + text.size();
    std::vector<char*> fields(slots + 1, untouched);
    const int count =
        str_split(cut.get(), fields.data(), static_cast<int>(slots), separators.c_str());
    const std::vector<plain_field> expected = split_plainly(text, separators);
    require(count == static_cast<int>(expected.size()), "every field is counted");
    require(fields[slots] == untouched, "no more fields are stored than there is room for");
    for (std::size_t index = 0; index < slots; ++index) {
        if (index >= expected.size()) {
            require(fields[index] == untouched, "slots without a field are left alone");
            continue;
        }
        const bool is_open = index + 1 == slots && expected.size() > slots;
        const std::size_t end = is_open ? text.size() : expected[index].end;
        require(fields[index] == cut.get() + expected[index].start, "a field begins at its start");
        require(text.substr(expected[index].start, end - expected[index].start) == fields[index],
                "a field ends at its separator");
    }
}

void try_strip(fuzz_input& input)
{
    std::string text = input.text();
    const heap_text stripped{str_dup(text.c_str())};
    require(strip_trailing_slash(stripped.get()) == stripped.get(), "stripping moves nothing");
    if (text.ends_with('/'))
        text.pop_back();
    require(text == stripped.get(), "one slash at most is cut off");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_input input{data, size};
    switch (input.number(2)) {
    case 0:
        try_append_and_replace(input);
        break;
    case 1:
        try_split(input);
        break;
    default:
        try_strip(input);
    }
    return 0;
}
