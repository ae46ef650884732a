// prompt.cpp - see prompt.hpp.
#include "ui/prompt.hpp"

#include "app/app_state.hpp"
#include "app/pause.hpp"
#include "data/owners.hpp"
#include "ui/glyphs.hpp"
#include "ui/keys.hpp"
#include "ui/popup.hpp"
#include "ui/redraw.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string_view>

namespace
{

constexpr std::time_t timeout_s = 10;
constexpr long round_us = 10'000;
constexpr int text_column = 2;

/// An open prompt. The box belongs to it alone: resizes and closing popups leave it standing.
struct prompt_box {
    const char* question;
    const char* hint;
    int max;
    char* text;
    int length = 0;
    std::time_t deadline = 0;
    WINDOW* window = nullptr; // null on a terminal too small for it
    int made_for_lines = 0;
    int made_for_columns = 0;
};

enum class prompt_outcome : std::uint8_t { editing, accepted, cancelled };

int box_inner_width(const prompt_box& box)
{
    const int for_question = static_cast<int>(std::strlen(box.question)) + 5;
    const int for_hint = static_cast<int>(std::strlen(box.hint)) + 4;
    return std::max({box.max, for_question, for_hint});
}

void box_open(prompt_box& box)
{
    const int width = box_inner_width(box);
    const int column = std::max(0, COLS / 2 - width / 2);
    const int row = std::max(0, LINES / 2 - 4);
    box.window = popup_open(width + 2, 3, column, row, true, 1, true);
    box.made_for_lines = LINES;
    box.made_for_columns = COLS;
    if (box.window != nullptr)
        keypad(box.window, TRUE);
}

/// Writes within the frame: what is longer than the room stays out of it.
void write_bounded(WINDOW* window, int row, int column, std::string_view text, int room)
{
    glyphs_write_at(window, row, column, text.substr(0, static_cast<size_t>(std::max(0, room))));
}

/// Paints the whole box, on top, so that nothing printed under it since shows through.
void box_draw(const prompt_box& box)
{
    WINDOW* window = box.window;
    if (window == nullptr)
        return;
    const int width = box_inner_width(box);
    glyphs_attribute(window, 1, false);
    wborder(window, 0, 0, 0, 0, 0, 0, 0, 0);
    line_blank(window, 1, 1, width);
    glyphs_attribute(window, 1, true);
    glyphs_write_at(window, 0, 2, "[ ");
    glyphs_write(window, box.question);
    glyphs_write(window, " ]");
    glyphs_write_at(window, 2, width - static_cast<int>(std::strlen(box.hint)) - 4, "[ ");
    glyphs_write(window, box.hint);
    glyphs_write(window, " ]");
    glyphs_attribute(window, 7, true);
    const std::string_view text{box.text, static_cast<size_t>(box.length)};
    write_bounded(window, 1, text_column, text, width - 1);
    glyphs_write_at(window, 1, text_column + box.length, "_");
    touchwin(window);
    wrefresh(window);
}

void box_close(prompt_box& box)
{
    window_erase(box.window);
    box.window = nullptr;
    redraw_all();
}

void box_follow_resize(prompt_box& box)
{
    if (box.made_for_lines == LINES && box.made_for_columns == COLS)
        return;
    if (box.window != nullptr)
        delwin(box.window);
    box_open(box);
}

prompt_outcome edit(prompt_box& box, int key)
{
    if (key == key_escape)
        return prompt_outcome::cancelled;
    if (key == key_enter)
        return prompt_outcome::accepted;
    box.deadline = std::time(nullptr) + timeout_s;
    if (key == KEY_BACKSPACE) {
        if (box.length > 0)
            box.text[--box.length] = '\0';
    } else if (box.length < box.max - 1) {
        // Function keys leave their low eight bits, like any other key.
        box.text[box.length++] = static_cast<char>(key & 0xFF);
    }
    return prompt_outcome::editing;
}

prompt_outcome run(prompt_box& box)
{
    while (true) {
        box_follow_resize(box);
        const int key = key_read_for_prompt(app_state.server_pane);
        if (key != ERR) {
            const prompt_outcome outcome = edit(box, key);
            if (outcome != prompt_outcome::editing)
                return outcome;
        }
        box_draw(box);
        if (std::time(nullptr) > box.deadline)
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
    prompt_box box{question, hint, max, text.get()};
    box.deadline = std::time(nullptr) + timeout_s;
    if (preset != nullptr) {
        box.length = std::min(static_cast<int>(std::strlen(preset)), max - 1);
        std::memcpy(text.get(), preset, static_cast<size_t>(box.length));
    }
    box_open(box);
    const prompt_outcome outcome = run(box);
    box_close(box);
    const bool has_answer = outcome == prompt_outcome::accepted && text.get()[0] != '\0';
    return has_answer ? text.release() : nullptr;
}
