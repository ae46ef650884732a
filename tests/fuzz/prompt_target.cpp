// prompt_target.cpp - keys of every kind typed into a prompt, beside plain editing where the keys
// are plain.
#include "base/owners.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "ui/prompt.hpp"

#include <algorithm>
#include <cstring>

namespace
{

constexpr std::size_t max_keys = 200;
constexpr char backspace = 127;

/// Bytes that are always a key of their own.
bool is_plain(char key)
{
    const auto byte = static_cast<unsigned char>(key);
    return byte < 0x80 && byte != 27;
}

/// The answer that plain keys produce; empty for none.
std::string edit(const std::string& keys, std::string text, std::size_t capacity)
{
    for (const char key : keys) {
        if (key == '\n' || key == '\r') // curses turns one into the other
            return text.c_str();
        if (key == backspace)
            text.resize(text.size() - std::min<std::size_t>(1, text.size()));
        else if (text.size() < capacity)
            text += key;
    }
    return "";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    if (input.number(255) > 250)
        screen_resize(1 + static_cast<int>(input.number(40)),
                      2 + static_cast<int>(input.number(120)));
    const int max = static_cast<int>(input.number(99));
    const std::string question = input.text(100);
    const std::string hint = input.text(100);
    const std::string preset = input.text(120);
    const std::string keys = input.rest().substr(0, max_keys);
    world.on_pause = [] {
        if (world.pauses % 16 == 1)
            screen_check();
        idle_pause();
    };
    keys_type(keys);
    prompt_asker asker{question};
    const heap_text answer{prompt_input(max, question.c_str(), hint.c_str(),
                                        preset.empty() ? nullptr : preset.c_str(), &asker)};
    const std::size_t capacity = max > 0 ? static_cast<std::size_t>(max) - 1 : 0;
    const std::string typed = answer ? answer.get() : "";
    require(!answer || !typed.empty(), "an answer is not empty");
    require(typed.size() <= capacity, "an answer fits into its buffer");
    if (std::all_of(keys.begin(), keys.end(), is_plain))
        require(typed == edit(keys, preset.substr(0, capacity), capacity),
                "plain keys edit the text");
    screen_check();
    return 0;
}
