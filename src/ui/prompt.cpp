// prompt.cpp - see prompt.hpp.
#include "ui/prompt.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/pause.hpp"
#include "ui/glyphs.hpp"
#include "ui/keys.hpp"
#include "ui/modal_box.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string_view>

namespace
{

constexpr long round_us = 10'000;
constexpr int text_column = 2;

struct prompt_state {
    const char* question;
    const char* hint;
    int max;
    char* text;
    int length = 0;
    std::time_t deadline = 0;
    modal_box box{};
};

enum class prompt_outcome : std::uint8_t { editing, accepted, cancelled };

int inner_width(const prompt_state& prompt)
{
    const int for_question = static_cast<int>(std::strlen(prompt.question)) + 5;
    const int for_hint = static_cast<int>(std::strlen(prompt.hint)) + 4;
    return std::max({prompt.max, for_question, for_hint});
}

void write_bracketed(const modal_box& box, int row, int column, const char* text)
{
    const int length = static_cast<int>(std::strlen(text));
    modal_box_write(box, row, column, colour::frame, true, "[ ");
    modal_box_write(box, row, column + 2, colour::frame, true, text);
    modal_box_write(box, row, column + 2 + length, colour::frame, true, " ]");
}

void draw(prompt_state& prompt)
{
    const int width = inner_width(prompt);
    modal_box_fit(prompt.box, {width + 2, 3, COLS / 2 - width / 2, LINES / 2 - 4});
    if (prompt.box.window == nullptr)
        return;
    write_bracketed(prompt.box, 0, 2, prompt.question);
    write_bracketed(prompt.box, 2, width - static_cast<int>(std::strlen(prompt.hint)) - 4,
                    prompt.hint);
    const std::string_view text{prompt.text, static_cast<size_t>(prompt.length)};
    modal_box_write(prompt.box, 1, text_column, colour::label, true, text);
    // With a full line of the widest text the cursor stands on the frame.
    glyphs_write_at(prompt.box.window, 1, text_column + prompt.length, "_");
    modal_box_show(prompt.box);
}

prompt_outcome edit(prompt_state& prompt, int key)
{
    if (key == key_escape)
        return prompt_outcome::cancelled;
    if (key == key_enter)
        return prompt_outcome::accepted;
    prompt.deadline = std::time(nullptr) + modal_timeout_s;
    if (key == KEY_BACKSPACE) {
        if (prompt.length > 0)
            prompt.text[--prompt.length] = '\0';
    } else if (prompt.length < prompt.max - 1) {
        // Function keys leave their low eight bits, like any other key.
        prompt.text[prompt.length++] = static_cast<char>(key & 0xFF);
    }
    return prompt_outcome::editing;
}

prompt_outcome run(prompt_state& prompt)
{
    while (true) {
        const int key = key_read_for_prompt(app_state.server_pane);
        if (key != ERR) {
            const prompt_outcome outcome = edit(prompt, key);
            if (outcome != prompt_outcome::editing)
                return outcome;
        }
        draw(prompt);
        if (std::time(nullptr) > prompt.deadline)
            return prompt_outcome::cancelled;
        pause_for(round_us);
    }
}

} // namespace

char* prompt_input(int max, const char* question, const char* hint, const char* preset)
{
    heap_text text{static_cast<char*>(std::calloc(static_cast<size_t>(std::max(max, 1)), 1))};
    if (!text)
        return nullptr;
    prompt_state prompt{question, hint, max, text.get()};
    prompt.deadline = std::time(nullptr) + modal_timeout_s;
    if (preset != nullptr && max > 1) {
        prompt.length = std::min(static_cast<int>(std::strlen(preset)), max - 1);
        std::memcpy(text.get(), preset, static_cast<size_t>(prompt.length));
    }
    const prompt_outcome outcome = run(prompt);
    modal_box_close(prompt.box);
    const bool has_answer = outcome == prompt_outcome::accepted && text.get()[0] != '\0';
    return has_answer ? text.release() : nullptr;
}
